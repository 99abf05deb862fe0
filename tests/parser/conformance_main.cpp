// Reads every document of a list with the three parsers, for ./run prove:
//
//     conformance FOLDER < LIST
//
// Each line of LIST is a path below FOLDER. For each one, the program requires that
//
// - `xml_parser`, a second run of it, `xml_token_stream` and its plain model find the same events
// and
//   end with the same result;
// - `xml_stream_parser` and its plain model find the same nodes, with the file there at once and
// with
//   a file that grows by pieces.
//
// It prints the result of the run and the events as hexadecimal digits, for a comparison with
// another parser:
//
//     file RESULT PATH
//     start NAME
//     attribute NAME VALUE
//     text PIECE
//     space PIECE
//     comment STRING
//     end NAME
//
// Where two do not agree it prints a line "DIFFERENCE WHAT" and ends with the status 1.
#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include "parser/plain_stream_parser.hpp"
#include "parser/token_model.hpp"
#include "support/temporary_directory.hpp"

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using test_support::plain_stream_parser;
using test_support::token_model;
using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::parser::xml_stream_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;
using token = xml_token_stream::token;
using events = std::vector<std::pair<int, std::string>>;

struct run {
    events found;
    int type;
    unsigned line;
    std::string text;

    bool operator==(const run& other) const {
        return found == other.found && type == other.type && line == other.line &&
               text == other.text;
    }
};

class recorder {
public:
    explicit recorder(const std::string& document) {
        using one = member_function_t<recorder, void(const ustring8&)>;
        using two = member_function_t<recorder, void(const ustring8&, const ustring8&)>;
        xml_parser parser;
        parser.on_element_start = one(this, &recorder::start);
        parser.on_element_end = one(this, &recorder::end);
        parser.on_attribute = two(this, &recorder::attribute);
        parser.on_character = one(this, &recorder::character);
        parser.on_space = one(this, &recorder::space);
        parser.on_comment = one(this, &recorder::comment);
        const auto error = parser.parse(ustring8(document));
        m_run.type = error.type;
        m_run.line = error.line;
        m_run.text = error.text;
    }

    const run& result() const { return m_run; }

private:
    void start(const ustring8& name) { add(token::element_start, name); }
    void end(const ustring8& name) { add(token::element_end, name); }
    void attribute(const ustring8& name, const ustring8& value) {
        add(token::attribute_name, name);
        add(token::attribute_value, value);
    }
    void character(const ustring8& piece) { add(token::character, piece); }
    void space(const ustring8& piece) { add(token::space, piece); }
    void comment(const ustring8& text) { add(token::comment, text); }
    void add(int type, const std::string& value) { m_run.found.emplace_back(type, value); }

    run m_run{};
};

run tokens_of(const std::string& document) {
    xml_token_stream stream;
    const auto error = stream.parse(ustring8(document));
    run result{{}, error.type, error.line, error.text};
    for (const auto& each : stream)
        result.found.emplace_back(each.type(), each.value());
    return result;
}

// The tokens that the stream adds to the events of its parser.
events without_tag_ends(const events& all) {
    events result;
    for (const auto& each : all)
        if (each.first != token::start_tag_end)
            result.push_back(each);
    return result;
}

const char* difference_of_trees(const std::string& document, const run& result) {
    if (!(recorder(document).result() == result))
        return "a second run of xml_parser";
    run tokens = tokens_of(document);
    token_model model(document);
    const auto expected = model.parse();
    if (tokens.found != model.found() || tokens.type != expected.type ||
        tokens.line != expected.line || (!model.reference_failed() && tokens.text != expected.text))
        return "the model of xml_token_stream";
    tokens.found = without_tag_ends(tokens.found);
    return tokens == result ? nullptr : "xml_token_stream";
}

// Appends the document by pieces to a file that the parser and its model follow.
const char* difference_of_streams(const std::string& document, const std::string& path,
                                  std::size_t piece) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    std::string bytes;
    plain_stream_parser model(bytes, 1);
    xml_stream_parser parser(path, 1);
    const auto same_state = [&] {
        return static_cast<int>(parser.error()) == model.status && parser.line() == model.line &&
               parser.root() == model.root && parser.parse_offset() == model.parse_offset() &&
               parser.node_queue_size() == model.queue_size();
    };
    for (std::size_t begin = 0; begin < document.size(); begin += piece) {
        const std::string part = document.substr(begin, piece);
        bytes += part;
        file << part << std::flush;
        model.parse();
        parser.parse();
        if (!same_state())
            return "the model of xml_stream_parser";
        while (model.has_node()) {
            const auto expected = model.pop();
            const auto found = parser.node_queue_pop();
            if (found.type != expected.type || found.name != expected.name ||
                found.line != expected.line || found.id != expected.id ||
                found.parent != expected.parent || found.attributes != expected.attributes ||
                found.text != expected.text || !same_state())
                return "the model of xml_stream_parser, in a node";
        }
    }
    return nullptr;
}

std::string hexadecimal(const std::string& bytes) {
    const char digits[] = "0123456789abcdef";
    std::string result;
    for (const char byte : bytes) {
        result += digits[static_cast<unsigned char>(byte) / 16];
        result += digits[static_cast<unsigned char>(byte) % 16];
    }
    return result;
}

void print(const events& all) {
    const char* const names[] = {"start", "end", "attribute", "", "", "comment", "space", "text"};
    for (const auto& each : all)
        if (each.first == token::attribute_value)
            std::cout << ' ' << hexadecimal(each.second) << '\n';
        else
            std::cout << names[each.first] << ' ' << hexadecimal(each.second)
                      << (each.first == token::attribute_name ? "" : "\n");
}

}  // namespace

int main(int argument_count, char* arguments[]) {
    if (argument_count != 2)
        return 2;
    const test_support::temporary_directory folder;
    bool is_same = true;
    for (std::string path; std::getline(std::cin, path);) {
        std::ifstream file(arguments[1] + ("/" + path), std::ios::binary);
        if (!file)
            return 2;
        const std::string document{std::istreambuf_iterator<char>(file), {}};
        const run result = recorder(document).result();
        std::cout << "file " << result.type << ' ' << path << '\n';
        print(result.found);
        std::vector<const char*> differences{difference_of_trees(document, result)};
        for (const std::size_t piece : {document.size() + 1, std::size_t(997), std::size_t(7)})
            differences.push_back(
                difference_of_streams(document, folder.path("document.xml"), piece));
        for (const char* each : differences)
            if (each != nullptr) {
                std::cout << "DIFFERENCE " << each << '\n';
                is_same = false;
            }
        std::cout << std::flush;  // what ends the program is after the last line
    }
    return is_same ? 0 : 1;
}
