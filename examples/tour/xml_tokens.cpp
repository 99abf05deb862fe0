// XML as a list of tokens: parse first, then walk, look ahead and search with std algorithms.

#include <algorithm>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::parser::xml_parser;
using tova::parser::xml_token_stream;

using token = xml_token_stream::token;

namespace {

const char* name_of(token::token_type type) {
    static const char* const names[] = {"element_start",   "element_end",   "attribute_name",
                                        "attribute_value", "start_tag_end", "comment",
                                        "space",           "character"};
    return names[type];
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: xml_tokens\n\n"
                     "Reads an XML document into a list of tokens and searches it.\n\n"
                     "Exit status: 0, or 1 if the document has an error.\n";
        return 0;
    }
    xml_token_stream tokens;
    const xml_parser::parse_error error =
        tokens.parse("<?xml version='1.0'?>"
                     "<shelf><!-- by author --><book id='7'>Emma</book> <book id='9'/></shelf>");
    if (error.type != xml_parser::parse_error::no_error) {
        std::cerr << "error " << error.type << " in line " << error.line + 1 << '\n';
        return 1;
    }

    std::cout << tokens.size() << " tokens\n";
    for (const token& one : tokens)
        std::cout << "  " << name_of(one.type()) << " \"" << one.value() << "\"\n";

    const auto is_id = [](const token& one) {
        return one.type() == token::attribute_name && one.value() == "id";
    };
    auto found = std::find_if(tokens.begin(), tokens.end(), is_id);
    while (found != tokens.end()) {
        ++found;  // the value is the next token
        std::cout << "id " << found->value() << '\n';
        found = std::find_if(found, tokens.end(), is_id);
    }
}
