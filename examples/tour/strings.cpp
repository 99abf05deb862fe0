// Strings in three widths: split, replace, change case, and convert between the widths.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;

namespace {

void split_a_line() {
    const ustring8 line = "name,city,,born";
    std::cout << "split \"" << line << "\"\n";
    for (const ustring8& field : tova::strings::split_string(line, ",", 0))
        std::cout << "  [" << field << "]\n";

    std::cout << "at most one split\n";
    for (const ustring8& field : tova::strings::split_string(line, ",", 1))
        std::cout << "  [" << field << "]\n";
}

void replace_a_word() {
    ustring8 sentence = "one fish, two fish";
    const unsigned int count = tova::strings::replace_all(sentence, "fish", "birds");
    std::cout << "replaced " << count << " words: " << sentence << '\n';
}

void change_case() {
    // Only A to Z change in the locale that a program starts with; "é" stays as it is.
    std::cout << "upper case: " << tova::strings::to_upper(ustring8("Café au lait")) << '\n'
              << "lower case: " << tova::strings::to_lower(ustring8("READ ME")) << '\n';
}

void convert_between_widths() {
    const ustring8 narrow = "Grüße, 世界 🌍";
    const ustring16 medium = tova::strings::utf8_to_utf16(narrow);
    const ustring32 wide = tova::strings::utf8_to_utf32(narrow);
    std::cout << narrow << '\n'
              << "  8-bit units:  " << narrow.size() << '\n'
              << "  16-bit units: " << medium.size() << '\n'
              << "  32-bit units: " << wide.size() << '\n';

    const bool is_same = tova::strings::utf16_to_utf8(medium) == narrow &&
                         tova::strings::utf32_to_utf8(wide) == narrow;
    std::cout << "  both convert back: " << (is_same ? "yes" : "no") << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: strings\n\n"
                     "Splits, replaces and converts strings of three widths.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    split_a_line();
    replace_a_word();
    change_case();
    convert_between_widths();
}
