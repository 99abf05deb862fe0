// `xml_token_stream`: any document. Attribute names and values alternate, and every start tag is
// ended exactly once, at the latest before the next event.
//
// Input: the document.
#include <tova/parser/xml_token_stream.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>

namespace {

using fuzz_support::require;
using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;
using token = xml_token_stream::token;

void check(const xml_token_stream& stream) {
    bool tag_open = false;
    unsigned long count = 0;
    auto last = token::character;
    for (const token& one : stream) {
        ++count;
        require((one.type() == token::attribute_value) == (last == token::attribute_name));
        switch (one.type()) {
        case token::element_start:
            require(!tag_open && !one.value().empty());
            tag_open = true;
            break;
        case token::start_tag_end:
            require(tag_open && one.value().empty());
            tag_open = false;
            break;
        case token::attribute_name:
            require(!one.value().empty());
            break;
        case token::attribute_value:
        case token::comment:
            break;
        case token::element_end:
        case token::space:
        case token::character:
            require(!tag_open);
            break;
        }
        last = one.type();
    }
    require(count == stream.size() && last != token::attribute_name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const ustring8 text(reinterpret_cast<const char*>(data), size);
    xml_token_stream stream;
    stream.parse(text);
    check(stream);
    const auto count = stream.size();
    stream.parse(text.begin(), text.end());
    require(stream.size() >= count);
    return 0;
}
