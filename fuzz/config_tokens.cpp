// The tokenizer of the configuration: the tokens follow one another without gap or overlap, and
// each has the text of its bytes. `make_key_value` and `set` take any line.
//
// Input: the text.
#include <tova/config/user_item.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstdint>
#include <string>

using fuzz_support::require;
using tova::config::config_token;
using tova::config::user_item;
using tova::strings::ustring8;

namespace {

// What the text of a token must be, from the bytes that it covers and the text of the token before.
std::string expected_text(const config_token& token, const std::string& bytes,
                          const std::string& before) {
    switch (token.type) {
    case config_token::T_SPACE:
        require(bytes.find_first_not_of(' ') == std::string::npos);
        return before;
    case config_token::T_NEWLINE:
        require(bytes == "\n" || bytes == "\r\n");
        return "\n";
    case config_token::T_STRING: {
        require(bytes[0] == '"');
        std::string content = bytes.substr(1, token.text.size());
        require(bytes.size() == content.size() + 2 || bytes.size() == content.size() + 1);
        return content;
    }
    default:
        return bytes;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const ustring8 text(reinterpret_cast<const char*>(data), size);
    user_item item;
    config_token token;
    unsigned position = 0;
    std::string joined;
    for (;;) {
        const unsigned start = position;
        const std::string before = token.text;
        const config_token::tok_types type = item.get_token(text, position, token);
        token.CvtTokStr();
        if (type == config_token::T_END) {
            require(position == size && start == size && token.text == before);
            break;
        }
        require(token.start == start && token.end == position && start < position);
        require(position <= size);
        require(type == token.type ||
                (type == config_token::T_FSFS && token.type == config_token::T_COMMENT_END));
        require(token.text == expected_text(token, text.substr(start, position - start), before));
        joined += text.substr(start, position - start);
    }
    require(joined == text);

    for (int stop = -1; stop < 33; ++stop) {
        const auto entry = item.make_key_value(text, static_cast<config_token::tok_types>(stop));
        require(entry.first.size() + entry.second.as_string().size() <= size);
    }
    item.set(text, 0);
    return 0;
}
