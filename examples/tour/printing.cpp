// Output of strings of every width, dates, colors and errors.

#include <iomanip>
#include <iostream>
#include <string>

#include <tova/extras/stream.hpp>
#include <tova/tova.hpp>

using tova::strings::utf8_to_utf16;
using tova::strings::utf8_to_utf32;
using tova::system::date_time::date;
using tova::system::date_time::date_time_t;
using tova::system::date_time::time_duration;
using tova::types::color_t;
using time_of_day = tova::system::date_time::time;

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: printing\n\nWrites values to a stream.\n\nExit status: 0.\n";
        return 0;
    }
    using namespace tova::extras;  // nothing changes without this line

    const date due(3, 2, 2026);
    std::cout << "16 bits   " << utf8_to_utf16("Grüße") << '\n'
              << "32 bits   " << utf8_to_utf32("Ж ≤ 日本") << '\n'
              << "a date    " << due << '\n'
              << "a time    " << time_of_day(9, 5, 0, 250) << '\n'
              << "both      " << date_time_t(due, time_of_day(9, 5, 0, 0)) << '\n'
              << "a span    " << time_duration(-1, -2, -3, -4) << '\n'
              << "a color   " << color_t(200, 64, 0) << '\n';

    // Width and fill apply to the whole value.
    std::cout << "aligned  |" << std::setw(12) << std::setfill('.') << due << "|\n";

    tova::i18n::message_catalogs catalogs;
    auto result = catalogs.load("no such folder", "en");
    std::cout << "an error  " << result.type << '\n' << result << '\n';
}
