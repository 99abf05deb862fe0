// Dates, times and spans: what month ends, midnight and day numbers do.

#include <iomanip>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::system::date_time::date;
using tova::system::date_time::date_duration;
using tova::system::date_time::time_duration;

// `time` is also a function of the C library, so the class goes by another name here.
using time_of_day = tova::system::date_time::time;

namespace {

std::ostream& operator<<(std::ostream& out, const date& day) {
    return out << std::setfill('0') << std::setw(4) << day.year() << '-' << std::setw(2)
               << day.month() << '-' << std::setw(2) << day.day();
}

std::ostream& operator<<(std::ostream& out, const time_of_day& moment) {
    return out << std::setfill('0') << std::setw(2) << moment.hour() << ':' << std::setw(2)
               << moment.minute() << ':' << std::setw(2) << moment.second();
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: dates\n\n"
                     "Moves dates and times and measures the days between two dates.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    date invoice(31, 1, 2026);  // day, month, year
    std::cout << "invoice  " << invoice << '\n';

    date due = invoice;
    due += date_duration(30);
    std::cout << "due      " << due << '\n';
    std::cout << "days     " << due.pJulian_day_number() - invoice.pJulian_day_number() << '\n';

    // The stored day outlives a shorter month.
    date end_of_month(31, 1, 2028);
    for (unsigned int month = 1; month <= 4; ++month) {
        end_of_month.month(month);
        std::cout << "month    " << end_of_month << '\n';
    }

    time_of_day train(23, 30, 0, 0);
    train += time_duration(1, 15, 0, 0);  // no date moves along
    std::cout << "arrives  " << train << '\n';

    const time_duration ride = time_of_day(17, 5, 30, 0) - time_of_day(9, 0, 0, 0);
    std::cout << "ride     " << ride.hour() << " h " << ride.minute() << " min, "
              << ride.total_seconds() << " s\n";

    try {
        due.month(13);
    } catch (const tova::exceptions::out_of_range& error) {
        std::cout << "month 13: " << error.get_message() << "; still " << due << '\n';
    }
}
