// The library's values as arguments of {fmt}.

#include <iostream>
#include <string>

#include <fmt/format.h>

#include <tova/extras/format.hpp>  // after {fmt}
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::ustring8;
using tova::system::date_time::date;
using tova::types::color_t;
using tova::types::variant;

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: formatting\n\nFormats values.\n\nExit status: 0.\n";
        return 0;
    }
    const struct {
        ustring8 name;
        date due;
        variant hours;
        color_t label;
    } tasks[] = {
        {"Water the plants", date(3, 2, 2026), variant(0.5), color_t(0, 128, 0)},
        {"Tax return", date(31, 5, 2026), variant(12), color_t(200, 0, 0)},
    };
    // Fill, alignment, width and precision work as for strings.
    for (const auto& task : tasks)
        std::cout << fmt::format("{:<18}{:>12}{:.>6} h  {:.7}\n", task.name, task.due, task.hours,
                                 task.label);

    // Strings of the other widths are converted to UTF-8.
    std::cout << fmt::format("{}\n", ex::utf8(tova::strings::utf8_to_utf16("fin, 終わり")));
}
