// Strings, dates and colors as keys of unordered containers, and lookups that create no string.

#include <iostream>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include <tova/extras/hash.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::ustring8;
using tova::system::date_time::date;
using tova::types::color_t;

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: hashing\n\nUses types of the library as keys.\n\nExit status: 0.\n";
        return 0;
    }
    // Strings need only the header.
    std::unordered_map<ustring8, int> seats;
    seats["Mia"] = 12;
    seats["Zoë"] = 14;
    std::cout << "Zoë sits on " << seats["Zoë"] << '\n';

    // Dates have no comparison operators, so the container gets a comparison as well.
    std::unordered_set<date, std::hash<date>, ex::equal_to> holidays;
    holidays.insert(date(25, 12, 2026));
    holidays.insert(date(1, 1, 2027));
    std::cout << "closed on 25 December: " << holidays.count(date(25, 12, 2026)) << '\n'
              << "closed on 27 December: " << holidays.count(date(27, 12, 2026)) << '\n';

    std::unordered_map<color_t, std::string> names = {{color_t(255, 0, 0), "red"},
                                                      {color_t(0, 0, 255), "blue"}};
    std::cout << "255, 0, 0 is " << names[color_t(255, 0, 0)] << '\n';

    // `less` looks up a literal or a std::string without creating a ustring8 from it.
    std::map<ustring8, int, ex::less> rooms = {{"library", 3}, {"office", 1}};
    std::cout << "the office is on floor " << rooms.find("office")->second << '\n';
}
