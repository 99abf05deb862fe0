// Text to numbers and numbers to text: radixes, saturation, range errors, locales.

#include <iostream>
#include <locale>
#include <string>

#include <tova/tova.hpp>

using tova::strings::ustring8;
using tova::types::radix_t;

namespace convert = tova::generic::convert;

namespace {

long parse(const std::string& text, radix_t::base radix) {
    return convert::str_to_long(text.data(), text.size(), radix, false);
}

void parse_integers() {
    std::cout << "\"  -42 apples\"  " << parse("  -42 apples", radix_t::decimal) << '\n'
              << "\"0xFF\"          " << parse("0xFF", radix_t::detect) << '\n'
              << "\"0b1010\"        " << parse("0b1010", radix_t::detect) << '\n'
              << "\"0755\"          " << parse("0755", radix_t::detect) << '\n'
              << "\"zz\", radix 36  " << parse("zz", radix_t::highest) << '\n'
              << "\"none\"          " << parse("none", radix_t::decimal) << '\n';
}

// A number that does not fit gives the nearest limit, or raises if the caller asks for that.
void parse_out_of_range(const std::string& text) {
    std::cout << text << " as 8 bits: "
              << static_cast<int>(
                     convert::str_to_int8(text.data(), text.size(), radix_t::decimal, false))
              << '\n';
    try {
        convert::str_to_int8(text.data(), text.size(), radix_t::decimal, true);
    } catch (const tova::exceptions::overflow_error& error) {
        std::cout << "  raised: " << error.get_message() << '\n';
    }
}

void print_integers() {
    char buffer[67];  // room for the 64 digits of radix 2, a sign and the terminator
    convert::lltoa(-255, buffer, 16);
    std::cout << "-255 in hexadecimal: " << buffer << '\n';
    convert::ulltoa(10, buffer, 2);
    std::cout << "10 in binary:        " << buffer << '\n';
    std::cout << "to_str(0.1):         " << convert::to_str(0.1) << '\n';
}

void parse_floating_point() {
    std::cout << "\"2.5e3 m\"   " << convert::str_to_double("2.5e3 m") << '\n'
              << "\"1e999\"     " << convert::str_to_double("1e999", std::locale::classic())
              << " (out of range)\n"
              << "\"yes\"       " << convert::str_to_bool(tova::strings::utf8_to_utf16("yes"))
              << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: numbers\n\n"
                     "Converts between text and numbers.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    parse_integers();
    parse_out_of_range("1000");
    print_integers();
    parse_floating_point();
}
