// Messages built in code, and the format of each kind of argument.

#include <iostream>
#include <string>
#include <vector>

#include <tova/tova.hpp>

using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::strings::ustring8;
using tova::types::variant;

namespace {

// The data of an item is the argument's name, then keys and values, each after a byte 0x01.
void show(const char* title, message_item::type_t type, const variant& value, const char* options) {
    std::cout << title << tova::i18n::format_value(type, value, ustring8("x") + options) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: formats\n\n"
                     "Formats values as message items do, and renders a message.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    show("int          ", message_item::type_int, 1234567, "");
    show("spaced       ", message_item::type_int, 1234567, "\1base\1spaced_dec");
    show("hexadecimal  ", message_item::type_int, 255, "\1base\1hex");
    show("double       ", message_item::type_double, 3.14159,
         "\1precision\1"
         "3");
    show("duration     ", message_item::type_duration, 3725.5,
         "\1precision\1"
         "1");
    show("short form   ", message_item::type_duration, 3725.5, "\1short_form\1true");
    show("memory       ", message_item::type_memory, 48318382080ul,
         "\1precision\1"
         "1");
    show("its unit     ", message_item::type_memory_unit, 48318382080ul,
         "\1precision\1"
         "1");
    show("metric       ", message_item::type_metric, 2750,
         "\1precision\1"
         "2");
    show("its prefix   ", message_item::type_metric_unit, 2750,
         "\1precision\1"
         "2");

    const message_t greeting("greeting", std::vector<message_item>{
                                             message_item("Dear "),
                                             message_item("name", message_item::type_string),
                                             message_item(", you have "),
                                             message_item("mails", message_item::type_int),
                                             message_item(" new mails."),
                                         });
    std::cout << greeting.as_string(varg_list(argument("mails", 3), argument("name", "Mia")))
              << '\n';
    // An argument that is missing shows in its place, and the rest of the text is still there.
    std::cout << greeting.as_string(varg_list(argument("name", "Mia"))) << '\n';
}
