// A value of one of eighteen types that converts to each of the others.

#include <iostream>
#include <string>
#include <typeinfo>
#include <vector>

#include <tova/tova.hpp>

using tova::types::variant;

namespace {

const char* name_of(const variant& value) {
    const std::type_info& type = value.type();
    return type == typeid(int)                       ? "int"
           : type == typeid(double)                  ? "double"
           : type == typeid(bool)                    ? "bool"
           : type == typeid(tova::strings::ustring8) ? "ustring8"
           : type == typeid(tova::types::nil_t)      ? "nil"
                                                     : "another type";
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: variant\n\n"
                     "Stores values of several types in one list and converts them.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    const std::vector<variant> values = {42, 2.75, true, "17 days", "0x10", variant()};
    for (const variant& value : values)
        std::cout << name_of(value) << ": string \"" << value.as_string() << "\", int "
                  << value.as_int() << ", double " << value.as_double() << ", bool "
                  << (value.as_bool() ? "true" : "false") << '\n';

    // Copies share one body that never changes, so a copy of a long text costs nothing.
    variant text(std::string(1000, 'x'));
    const variant copy = text;
    text = 1;
    std::cout << "the copy still has " << copy.as_string().size() << " bytes\n";

    text = tova::types::nil;
    std::cout << "nil: " << (text == tova::types::nil ? "yes" : "no") << '\n';

    // Conversions never fail: numbers are cast, strings saturate at the limits of the type.
    std::cout << "300 as int8: " << static_cast<int>(variant(300).as_int8()) << '\n'
              << "\"300\" as int8: " << static_cast<int>(variant("300").as_int8()) << '\n';
}
