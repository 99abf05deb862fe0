// XML as events: handlers of elements, attributes and text, called while the parser walks.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::strings::ustring8;

namespace {

// Prints the tree. Its member functions are bound to the parser's delegates.
class printer {
public:
    xml_parser::parse_error read(const ustring8& text) {
        using one_string = member_function_t<printer, void(const ustring8&)>;
        using two_strings = member_function_t<printer, void(const ustring8&, const ustring8&)>;
        xml_parser parser;
        parser.on_element_start = one_string(this, &printer::start);
        parser.on_element_end = one_string(this, &printer::end);
        parser.on_attribute = two_strings(this, &printer::attribute);
        parser.on_character = one_string(this, &printer::character);
        return parser.parse(text);
    }

private:
    void start(const ustring8& name) { line("<" + name + ">", m_depth++); }
    void end(const ustring8&) { --m_depth; }
    void attribute(const ustring8& name, const ustring8& value) {
        line(name + " = " + value, m_depth);
    }
    void character(const ustring8& text) { line("\"" + text + "\"", m_depth); }
    static void line(const std::string& text, int depth) {
        std::cout << std::string(2 * static_cast<std::size_t>(depth), ' ') << text << '\n';
    }

    int m_depth = 0;
};

void print(const ustring8& text) {
    const xml_parser::parse_error result = printer().read(text);
    if (result.type != xml_parser::parse_error::no_error)
        std::cout << "error " << result.type << " in line " << result.line + 1 << ", at \""
                  << result.text << "\"\n";
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: xml_events\n\n"
                     "Prints the events of an XML document, and of one with an error.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    print("<?xml version='1.0'?>"
          "<menu day='Monday'><dish price='4.50'>Fish &amp; chips</dish><dish/></menu>");
    print("<?xml version='1.0'?>\n<menu>\n<dish></menu>");
}
