// Converts between the strings of the standard library and the library's own, in every encoding.

#include <iostream>
#include <stdexcept>
#include <string>

#include <tova/extras/views.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::ustring16;
using tova::strings::ustring8;

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: views\n\nConverts standard strings.\n\nExit status: 0.\n";
        return 0;
    }
    // Literals of every kind become UTF-8.
    const ustring8 from16 = ex::to_ustring8(u"Zoë");
    const ustring8 from32 = ex::to_ustring8(U"Zoë");
    std::cout << from16 << ", " << (from16 == from32 ? "the same" : "another name") << '\n';

    // NULs inside a literal are kept.
    std::cout << ex::to_ustring8("a\0b").size() << " bytes\n";

    // And back.
    const std::u16string wide = ex::to_u16string(from16);
    const ustring16 ours = ex::to_ustring16(wide);
    std::cout << wide.size() << " units, " << ex::to_u32string(from16).size() << " characters, "
              << ours.size() << " units again\n";

    // Invalid input is an error with a position, never the string "-1".
    try {
        ex::to_u16string(ustring8("caf\xE9 au lait"));
    } catch (const std::invalid_argument& error) {
        std::cout << error.what() << '\n';
    }
    const char16_t half_a_pair[] = {u'a', 0xD83D, 0};
    try {
        ex::to_ustring8(std::u16string(half_a_pair));
    } catch (const std::invalid_argument& error) {
        std::cout << error.what() << '\n';
    }
    // In C++17, `view(text)` is a std::string_view, and `to_ustring8` accepts every view.
}
