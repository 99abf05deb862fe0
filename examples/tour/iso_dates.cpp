// Compares dates, counts days, and reads and writes ISO 8601.

#include <chrono>
#include <iostream>
#include <string>

#include <tova/extras/dates.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::system::date_time::date;

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: iso_dates\n\nReads, compares and writes dates.\n\nExit status: 0.\n";
        return 0;
    }
    using namespace tova::extras;  // for the comparisons

    const date today(27, 2, 2028);
    for (const char* text : {"2028-03-01", "2028-02-25", "2028-02-30", "tomorrow"}) {
        const auto due = ex::date_from_iso(text);
        std::cout << text << ": ";
        if (!due)
            std::cout << "no date, see byte " << due.offset << '\n';
        else if (due.value < today)
            std::cout << ex::days_between(due.value, today) << " days late\n";
        else
            std::cout << "due in " << ex::days_between(today, due.value) << " days\n";
    }

    // From and to the clock of the standard library, in UTC.
    const auto start = ex::date_time_from_iso("2028-02-29T23:59:30.5");
    const auto later = ex::to_time_point(start.value) + std::chrono::minutes(1);
    std::cout << ex::to_iso(ex::from_time_point(later)) << '\n';

    // A message can put the parts of a date into the order of its language.
    tova::generic::varg_list arguments;
    ex::push_date(arguments, "due", today);
    const message_t message("due",
                            {message_item("on "), message_item("due.day", message_item::type_int),
                             message_item("."), message_item("due.month", message_item::type_int),
                             message_item(".")});
    std::cout << message.as_string(arguments) << '\n';
}
