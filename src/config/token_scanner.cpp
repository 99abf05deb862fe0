// The tokenizer. The first byte of a token decides what it is:
//
//     first byte                        token
//     space                             T_SPACE: the run of spaces
//     "                                 T_STRING: up to the closing quote or the end of the source
//     # [ ] . tab line feed             that byte alone
//     carriage return                   T_NEWLINE with a line feed after it, else T_UNKNOWN
//     < > = : + - * /                   with a `=` after it a two-byte token, else that byte;
//                                       "//" and "*/" are tokens of their own
//     digit, letter                     T_NUM, T_VAR: the run of the same class
//     any other byte                    T_NON_ALPHA_NUM: that byte alone
//
// One byte of lookahead is enough. The only state is the position. Readers that append each token
// to a key or a value skip the tokenizer for runs of bytes that cannot end or start anything.
#include "config/token_scanner.hpp"

#include "config/character_classes.hpp"

#include <algorithm>
#include <limits>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {
namespace detail {

namespace {

typedef config_token::tok_types tok_types;
typedef ustring8::size_type size_type;

// Positions are 32 bits wide. A longer source ends at the largest position: if positions wrapped
// around to 0, a caller would never reach the end.
const size_type last_position = std::numeric_limits<unsigned int>::max();

// Returns the index of the quote that closes the string opened at `start`, or the size of the
// source.
//
// Contract: the byte after a backslash is skipped without being examined, and both stay in the
// text: an escaped quote keeps its backslash.
size_type closing_quote(const ustring8& source, size_type start) {
    size_type at = start + 1;
    while (at < source.size() && source[at] != '"')
        at += source[at] == '\\' ? 2 : 1;
    return std::min(at, source.size());
}

template <bool (*IsInClass)(char)>
size_type end_of_run(const ustring8& source, size_type start) {
    size_type at = start + 1;
    while (at < source.size() && IsInClass(source[at]))
        ++at;
    return at;
}

// A token that starts with a punctuation character. A size of 0 means that there is none.
struct punctuation {
    tok_types type;
    size_type size;  // bytes of the source
};

punctuation alone_or_with_equals(char next, tok_types alone, tok_types with_equals) {
    return next == '=' ? punctuation{with_equals, 2} : punctuation{alone, 1};
}

// One flat switch, with a row for each character. At the end of the source `next` is the
// terminator, which completes no pair.
punctuation punctuation_at(char character, char next) {
    switch (character) {
    case ']':
        return {config_token::T_EBRACKET, 1};
    case '[':
        return {config_token::T_SBRACKET, 1};
    case '.':
        return {config_token::T_DOT, 1};
    case '#':
        return {config_token::T_POUND, 1};
    case '\t':
        return {config_token::T_TABCHAR, 1};
    case '\n':
        return {config_token::T_NEWLINE, 1};
    case '\r':
        if (next == '\n')
            return {config_token::T_NEWLINE, 2};
        return {config_token::T_UNKNOWN, 1};
    case '>':
        return alone_or_with_equals(next, config_token::T_GT, config_token::T_GTEQ);
    case '<':
        return alone_or_with_equals(next, config_token::T_LT, config_token::T_LTEQ);
    case '=':
        return alone_or_with_equals(next, config_token::T_EQ, config_token::T_EQEQ);
    case ':':
        return alone_or_with_equals(next, config_token::T_COLON, config_token::T_COLONEQ);
    case '+':
        return alone_or_with_equals(next, config_token::T_PLUS, config_token::T_PLUSEQ);
    case '-':
        return alone_or_with_equals(next, config_token::T_MINUS, config_token::T_MINUSEQ);
    case '/':
        if (next == '/')
            return {config_token::T_FSFS, 2};
        return alone_or_with_equals(next, config_token::T_DIV, config_token::T_DIVEQ);
    case '*':
        if (next == '/')
            return {config_token::T_COMMENT_END, 2};
        return alone_or_with_equals(next, config_token::T_TIMES, config_token::T_TIMESEQ);
    default:
        return {config_token::T_NON_ALPHA_NUM, 0};
    }
}

// The bytes that end a run, depending on the place. Spaces, line ends and quotes end every run. In
// a key, so do `=` and every byte that forms a token with a following `=`; in a value, so do the
// bytes that start a comment. All other bytes may belong to any token, because a reader that
// appends them does not need the ends and types of tokens.
class run_ends {
public:
    constexpr run_ends() : m_places() {
        add(" \t\n\r\"*/",
            bits(run_place::key) | bits(run_place::value) | bits(run_place::element));
        add("=<>:+-", bits(run_place::key));
        add("#", bits(run_place::value) | bits(run_place::element));
        add(",", bits(run_place::element));
    }
    constexpr bool contain(char byte, run_place place) const {
        return (m_places[static_cast<unsigned char>(byte)] & bits(place)) != 0;
    }

private:
    static constexpr unsigned char bits(run_place place) {
        return static_cast<unsigned char>(place);
    }
    constexpr void add(const char* bytes, int places) {
        for (; *bytes != '\0'; ++bytes)
            m_places[static_cast<unsigned char>(*bytes)] |= static_cast<unsigned char>(places);
    }

    unsigned char m_places[256];
};

}  // namespace

bool token_scanner::append_run(ustring8& target, run_place place) {
    static constexpr run_ends ends;
    const size_type size = std::min(m_source.size(), last_position);
    size_type at = m_position;
    while (at < size && !ends.contain(m_source[at], place))
        ++at;
    if (at <= m_position)
        return false;
    target.append(m_source, m_position, at - m_position);
    m_position = static_cast<unsigned int>(at);
    return true;
}

scanned_token token_scanner::next() {
    const size_type start = m_position;
    if (start >= std::min(m_source.size(), last_position))
        return {config_token::T_END, config_token::T_END, start, 0};

    const auto token = [&](tok_types type, size_type begin, size_type text_end, size_type end) {
        m_position = static_cast<unsigned int>(std::min(end, last_position));
        return scanned_token{type, type, begin, text_end - begin};
    };
    const char character = m_source[start];
    if (is_space(character)) {
        const size_type end = end_of_run<is_space>(m_source, start);
        return token(config_token::T_SPACE, start, end, end);
    }
    if (character == '"') {
        const size_type quote = closing_quote(m_source, start);
        return token(config_token::T_STRING, start + 1, quote,
                     std::min(quote + 1, m_source.size()));
    }
    const punctuation sign = punctuation_at(character, m_source[start + 1]);
    if (sign.size != 0) {
        const size_type end = start + sign.size;
        const size_type begin = sign.type == config_token::T_NEWLINE ? end - 1 : start;
        scanned_token found = token(sign.type, begin, end, end);
        // Contract: "*/" is returned as the start of a comment but stored as its own type. The
        // readers in this folder use the returned type, so "*/" starts a comment in a file.
        if (sign.type == config_token::T_COMMENT_END)
            found.type = config_token::T_FSFS;
        return found;
    }
    if (is_digit(character)) {
        const size_type end = end_of_run<is_digit>(m_source, start);
        return token(config_token::T_NUM, start, end, end);
    }
    if (is_letter(character)) {
        const size_type end = end_of_run<is_letter>(m_source, start);
        return token(config_token::T_VAR, start, end, end);
    }
    return token(config_token::T_NON_ALPHA_NUM, start, start + 1, start + 1);
}

void token_scanner::skip_to_line_end() {
    for (;;) {
        const unsigned int start = m_position;
        const tok_types type = next().type;
        if (type == config_token::T_END)
            return;
        if (type == config_token::T_NEWLINE) {
            // The line end is left to the caller: it may end a value.
            m_position = start;
            return;
        }
    }
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
