// The program that all consumers build, outside the source tree. It uses each family once, and
// everything that crosses the boundary of the library: strings, exceptions, callbacks, type
// information.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <unordered_map>

#include <tova/extras.hpp>
#include <tova/tova.hpp>

namespace {

struct element_counter {
    void begin(const tova::strings::ustring8& name) { names += name + " "; }
    tova::strings::ustring8 names;
};

void show_message(const std::string& folder) {
    const std::string file = folder + "/greetings.xmc";
    std::ofstream(file) << "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" "
                           "lang=\"en\"><msg name=\"hello\">Hello <arg name=\"who\"/></msg>"
                           "</catalog></xmc>";
    tova::i18n::message_catalogs catalogs;
    const tova::i18n::message_catalogs::result_type result =
        catalogs.load(tova::strings::ustring8(file.c_str()), tova::strings::ustring8("en_GB"));
    std::remove(file.c_str());

    tova::generic::varg_list arguments;
    arguments.push_back("who", "world");
    std::cout << result.type << ' ' << catalogs.message("app", "hello").as_string(arguments)
              << '\n';
}

void show_values() {
    const tova::types::variant value("0x10");
    std::cout << value.as_int() << ' ' << (value.type() == typeid(tova::strings::ustring8)) << ' '
              << tova::strings::utf8_to_utf16("Gr\xC3\xBC\xC3\x9F").size() << '\n';

    tova::serialization::serialize_text_buf buffer;
    buffer.append_int32(42);
    std::cout << buffer.read_int32() << '\n';

    const std::unordered_map<tova::strings::ustring8, int> ages = {{"Mia", 7}};
    std::cout << ages.at("Mia") << '\n';
}

void show_exceptions() {
    try {
        tova::system::date_time::date(32, 1, 2026);
    } catch (const tova::exceptions::logic_error& error) {
        std::cout << error.get_message() << '\n';
    }
    try {
        const tova::generic::varg_list list;
        list.at(3);
    } catch (const std::out_of_range&) {
        std::cout << "std::out_of_range\n";
    }
}

void show_callback() {
    typedef tova::functor::member_function_t<element_counter, void(const tova::strings::ustring8&)>
        member;
    element_counter counter;
    tova::parser::xml_parser parser;
    parser.on_element_start = member(&counter, &element_counter::begin);
    parser.parse("<?xml version='1.0'?><a><b/><c/></a>");
    std::cout << counter.names << '\n';
}

void show_settings() {
    tova::config::config_tree tree;
    tree.set_node("Server.Port", 8080, 1);
    std::cout << tree.get_node("server/port")->second.as_int() << '\n';
}

}  // namespace

// The argument is a directory to write to.
int main(int argc, char** argv) {
    show_message(argc > 1 ? argv[1] : ".");
    show_values();
    show_exceptions();
    show_callback();
    show_settings();
}
