// Code points, invalid input and byte order: what to check before a conversion.

#include <iomanip>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::strings::ustring16;
using tova::strings::ustring8;

namespace {

// Walks over the code points of a string. `unichar` sets `advance` to the units of each.
void print_code_points(const ustring8& text) {
    std::cout << '"' << text << "\"\n";
    unsigned long advance = 0;
    for (unsigned long index = 0; index < text.size(); index += advance) {
        const unsigned int code = tova::strings::unichar(text.data(), text.size(), index, advance);
        if (advance == static_cast<unsigned long>(-1)) {
            std::cout << "  invalid byte at " << index << '\n';
            return;
        }
        std::cout << "  U+" << std::hex << std::uppercase << std::setw(4) << std::setfill('0')
                  << code << std::dec << ", " << advance << " bytes at " << index << '\n';
    }
}

// A conversion of invalid input returns the string "-1" and does not raise, so check first.
bool is_valid(const ustring8& text) {
    namespace gh2 = tova::strings::gh2;
    for (unsigned long index = 0; index < text.size();) {
        const char* const rest = text.data() + index;
        const unsigned long length = gh2::get_utf8_length(rest, text.size() - index);
        if (length == 0 || !gh2::validate_utf8(rest, text.size() - index))
            return false;
        index += length;
    }
    return true;
}

void convert_checked(const ustring8& text) {
    if (is_valid(text))
        std::cout << "valid, " << tova::strings::utf8_to_utf16(text).size() << " units\n";
    else
        std::cout << "invalid UTF-8, not converted\n";
}

// A file in the other byte order begins with the unit 0xFFFE.
void read_swapped() {
    ustring16 text = {0xFFFE, 0x4800, 0x6900};
    tova::strings::check_BOM_and_modify_swap(text);
    text = tova::strings::remove_BOM(text);
    std::cout << "swapped text says " << tova::strings::utf16_to_utf8(text) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: unicode\n\n"
                     "Walks over code points, checks UTF-8 and reads swapped UTF-16.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    print_code_points("aé€🌍");
    print_code_points("a\xE9");
    convert_checked("Łódź");
    convert_checked("\xC5");
    read_swapped();
}
