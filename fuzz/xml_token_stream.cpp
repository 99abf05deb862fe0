// `xml_token_stream`: any document, compared token by token with a second tokenizer, and as a range
// inside a longer string.
//
// Input: the document.
#include <tova/parser/xml_token_stream.hpp>

#include "../tests/parser/token_model.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using fuzz_support::require;
using test_support::token_model;
using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;

void compare(const xml_token_stream& stream, const xml_parser::parse_error& error,
             const token_model& model, const token_model::outcome& expected) {
    require(stream.size() == model.found().size());
    auto wanted = model.found().begin();
    for (const auto& token : stream) {
        require(token.type() == wanted->first && token.value() == wanted->second);
        ++wanted;
    }
    require(error.type == expected.type && error.line == expected.line);
    require(model.reference_failed() || error.text == expected.text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const ustring8 text(reinterpret_cast<const char*>(data), size);
    token_model model(text);
    const token_model::outcome expected = model.parse();

    xml_token_stream stream;
    compare(stream, stream.parse(text), model, expected);

    // The parser must not look past the ends of its range.
    const ustring8 longer = "<x" + text + ">--]]>";
    xml_token_stream inner;
    compare(inner, inner.parse(longer.begin() + 2, longer.begin() + 2 + static_cast<long>(size)),
            model, expected);

    // A second parse appends.
    stream.parse(text);
    require(stream.size() >= model.found().size());
    return 0;
}
