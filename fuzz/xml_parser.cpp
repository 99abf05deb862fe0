// `xml_parser`: any document. Its events and its result are those of a second parser, written from
// the grammar. A run does not depend on the bytes after its range, and leaves a parser that accepts
// the next document. The operations for single constructs read the same names and values as a run.
//
// Input: the document.
#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_parser.hpp>

#include "../tests/parser/token_model.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using fuzz_support::require;
using test_support::token_model;
using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::strings::ustring8;
using parse_error = xml_parser::parse_error;

// All events of a run in one string.
class transcript {
public:
    transcript() = default;
    explicit transcript(xml_parser& parser) {
        using text_handler = member_function_t<transcript, void(const ustring8&)>;
        using attribute_handler =
            member_function_t<transcript, void(const ustring8&, const ustring8&)>;
        parser.on_element_start = text_handler(this, &transcript::element_start);
        parser.on_element_end = text_handler(this, &transcript::element_end);
        parser.on_attribute = attribute_handler(this, &transcript::attribute);
        parser.on_character = text_handler(this, &transcript::character);
        parser.on_space = text_handler(this, &transcript::space);
        parser.on_comment = text_handler(this, &transcript::comment);
    }

    void element_start(const ustring8& name) { add("start", name, name); }
    void element_end(const ustring8& name) { add("end", name, name); }
    void attribute(const ustring8& name, const ustring8& value) { add("attribute", name, value); }
    void character(const ustring8& text) { add("text", "n", text); }
    void comment(const ustring8& text) { add("comment", "n", text); }
    void space(const ustring8& text) {
        require(!text.empty() && text.find_first_not_of(" \t\r\n") == ustring8::npos);
        add("space", "n", text);
    }

    std::string text;

private:
    void add(const char* kind, const ustring8& name, const ustring8& value) {
        require(!name.empty());
        text += kind;
        text += ' ' + name + ' ' + std::to_string(value.size()) + ' ' + value + '\n';
    }
};

// The events of the tokens that the second parser finds.
std::string events_of(const token_model& model) {
    transcript events;
    std::string attribute;
    for (const auto& one : model.found()) {
        switch (one.first) {
        case token_model::token::element_start:
            events.element_start(one.second);
            break;
        case token_model::token::element_end:
            events.element_end(one.second);
            break;
        case token_model::token::attribute_name:
            attribute = one.second;
            break;
        case token_model::token::attribute_value:
            events.attribute(attribute, one.second);
            break;
        case token_model::token::character:
            events.character(one.second);
            break;
        case token_model::token::space:
            events.space(one.second);
            break;
        case token_model::token::comment:
            events.comment(one.second);
            break;
        default:
            break;  // the end of a start tag is no event
        }
    }
    return events.text;
}

std::string result_of(xml_parser& parser, ustring8::const_iterator begin,
                      ustring8::const_iterator end) {
    transcript events(parser);
    const parse_error result = parser.parse(begin, end);
    require(result.type >= parse_error::no_error && result.type <= parse_error::data_after_root);
    require(result.type != parse_error::unexpected_character || result.text.size() == 1);
    require(result.type != parse_error::no_error || (result.line == 0 && result.text.empty()));
    return events.text + std::to_string(result.type) + ' ' + std::to_string(result.line) + ' ' +
           result.text;
}

// Compares a run with the second parser. The byte that an error in the name of an entity shows is
// left open.
void check_against_model(const std::string& result, const ustring8& text) {
    token_model model(text);
    const token_model::outcome expected = model.parse();
    const std::string whole = events_of(model) + std::to_string(expected.type) + ' ' +
                              std::to_string(expected.line) + ' ';
    if (model.reference_failed())
        require(result.compare(0, whole.size(), whole) == 0 && result.size() == whole.size() + 1);
    else
        require(result == whole + expected.text);
}

// The events and the result of a run on one document.
std::string result_of(const ustring8& elements) {
    const ustring8 document = "<?xml?>" + elements;
    xml_parser parser;
    return result_of(parser, document.begin(), document.end());
}

// One construct at the beginning of a text: where the operation leaves the cursor, and its error.
struct construct {
    construct(ustring8 (xml_parser::*take)(xml_parser::iterator&, xml_parser::iterator&),
              const ustring8& text) {
        xml_parser parser;
        xml_parser::iterator cursor = text.begin();
        xml_parser::iterator end = text.end();
        try {
            content = (parser.*take)(cursor, end);
            is_taken = true;
        } catch (const parse_error& raised) {
            error = std::to_string(raised.type) + " 0 " + raised.text;
        }
        reaches_end = cursor == end;
        if (!reaches_end)
            source.assign(text.begin(), cursor + 1);
    }

    bool is_taken = false;
    bool reaches_end = false;
    ustring8 content;
    ustring8 source;  // up to the byte that the cursor is on
    std::string error;
};

void check_name(const ustring8& text) {
    const construct name(&xml_parser::parse_name, text);
    require(name.is_taken || name.error.substr(0, 2) == "5 ");
    if (name.is_taken)
        require(result_of("<" + name.source + "/>") ==
                "start " + name.content + " " + std::to_string(name.content.size()) + " " +
                    name.content + "\nend " + name.content + " " +
                    std::to_string(name.content.size()) + " " + name.content + "\n0 0 ");
}

// The whitespace before a value is not the operation's.
void check_value(const ustring8& text) {
    const construct value(&xml_parser::parse_attrib_value, text);
    const std::string start = "start a 1 a\n";
    if (!value.is_taken)
        require(result_of("<a b=" + text) == start + value.error);
    else if (!value.reaches_end)
        require(result_of("<a b=" + value.source + "/>") ==
                start + "attribute b " + std::to_string(value.content.size()) + " " +
                    value.content + "\nend a 1 a\n0 0 ");
}

void check_reference(const ustring8& text) {
    const construct reference(&xml_parser::parse_character, text);
    const construct value(&xml_parser::parse_attrib_value, "'" + text);
    if (reference.is_taken)
        require(reference.content.size() == 1 &&
                (!value.is_taken || value.content.front() == reference.content.front()));
    else
        require(text.empty() || text[0] != '&' || value.error == reference.error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const ustring8 text(reinterpret_cast<const char*>(data), size);
    xml_parser parser;
    const std::string result = result_of(parser, text.begin(), text.end());
    check_against_model(result, text);
    for (const char* after : {">", "/>", "='x'>", ";", "-->"}) {
        const ustring8 longer = text + after;
        xml_parser another;
        require(result == result_of(another, longer.begin(),
                                    longer.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    // The same parser again, with whatever it kept, on the two halves of the document.
    const auto middle = text.begin() + static_cast<std::ptrdiff_t>(size / 2);
    result_of(parser, text.begin(), middle);
    result_of(parser, middle, text.end());

    check_name(text);
    const std::size_t quote = text.find_first_of("\"'");
    if (quote != ustring8::npos)
        check_value(text.substr(quote));
    check_reference(text);
    const std::size_t reference = text.find('&');
    if (reference != ustring8::npos)
        check_reference(text.substr(reference));
    return 0;
}
