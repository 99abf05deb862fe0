// Prints the tables of a code page as hexadecimal digits, for comparisons in other languages:
//
//     code_page_tables 932
//     decode 8140 E38080
//     encode 3000 8140
//
// "decode" lines hold bytes and the UTF-8 they become: each byte, and for pages of more than one
// byte or with letters that compose, each pair of bytes. "encode" lines hold each code point up to
// U+FFFF but the surrogates, and its bytes.
#include "strings/code_page_units.hpp"

#include <tova/strings/code_page.hpp>

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

using namespace code_page_units;

void print(const char* kind, const std::string& from, const std::string& to) {
    std::cout << kind << ' ' << from << ' ' << (to.empty() ? "-" : to) << '\n';
}

}  // namespace

int main(int argument_count, char* arguments[]) {
    if (argument_count != 2)
        return 2;
    const auto number = std::atoi(arguments[1]);
    const page_type page(static_cast<page_type::encoding_type>(number));
    for (const std::string& bytes : inputs_of(number))
        print("decode", hexadecimal(bytes), hexadecimal(decoded(page, bytes)));
    for (unsigned point = 0; point < 0x10000; ++point)
        if (!is_surrogate(point))
            print("encode", code_point_name(point), hexadecimal(encoded(page, point)));
}
