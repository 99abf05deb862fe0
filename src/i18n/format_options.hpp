/// @file
/// The syntax of format strings: alternating keys and values, separated by the byte 0x01.
///
///     struct my_options {
///         int precision = 2;
///         bool set(token key, token value) {  // false for an unknown key or an invalid value
///             if (!abbreviates(key, "precision"))
///                 return false;
///             precision = read_number(value);
///             return true;
///         }
///     };
///     my_options options;
///     if (!read_options(format, options)) ...  // the format string is invalid
///
/// Tokens are views into the string that holds them, so reading does not allocate. Functions
/// without state: any number of threads may call them at once.
#pragma once

#include "generic/convert/decimal_digits.hpp"
#include "i18n/rendering.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

/// The whole string as a single token.
inline token whole(const std::string& text) {
    return {text.c_str(), text.size()};
}

/// Whether the token is a prefix of the word, byte for byte.
///
/// Contract: a keyword may be abbreviated to any prefix, so the empty token matches every word.
/// Callers test their words in a fixed order, and the first match wins.
inline bool abbreviates(token t, const char* word) {
    return t.size <= std::strlen(word) && std::memcmp(t.text, word, t.size) == 0;
}

/// The number at the beginning of the token. The character after the token ends the number, so no
/// copy with a terminator is needed.
///
/// Contract: a token that is not a number is 0, and the number is cut to 32 bits: 4294967298 is 2.
inline int read_number(token t) {
    // Nearly all tokens are a few digits, in which every locale agrees.
    if (t.size != 0 && t.size <= 8) {
        const unsigned long word = generic::convert::detail::load_up_to_eight(t.text, t.size);
        const int count = static_cast<int>(t.size);
        if (generic::convert::detail::count_digits(word) == count)
            return static_cast<int>(generic::convert::detail::leading_digits(word, count));
    }
    // This is `atol` without its effect on errno. The call is spelled `strtol` because compilers
    // assume that `atol` leaves errno alone, and then drop the store that restores it.
    const int caller_errno = errno;
    const long value = std::strtol(t.text, nullptr, 10);
    errno = caller_errno;
    return static_cast<int>(value);
}

/// Reads the words "true" and "false", in this order. False for any other word.
inline bool read_flag(token word, bool& flag) {
    if (abbreviates(word, "true"))
        flag = true;
    else if (abbreviates(word, "false"))
        flag = false;
    else
        return false;
    return true;
}

/// Walks a format string pair by pair. Its tokens are those of `split_string`: an empty token
/// counts, except at the end.
class pair_reader {
public:
    // The format is not empty.
    explicit pair_reader(token format)
        : m_position(format.text), m_end(format.text + format.size) {}

    /// Whether every key has a value. Call this before the first `next`.
    ///
    /// Contract: an odd number of tokens is always invalid. An empty value at the very end is not a
    /// token, so "base" 0x01 is invalid, too.
    bool comes_in_pairs() const {
        auto tokens = std::count(m_position, m_end, data_separator);
        if (m_end[-1] != data_separator)
            ++tokens;
        return tokens % 2 == 0;
    }

    /// Reads the next key and its value. Returns false after the last pair.
    bool next(token& key, token& value) {
        if (m_position == m_end)
            return false;
        key = take();
        value = take();
        return true;
    }

private:
    token take() {
        const char* const end = std::find(m_position, m_end, data_separator);
        const token result = {m_position, static_cast<std::size_t>(end - m_position)};
        m_position = end == m_end ? end : end + 1;
        return result;
    }

    const char* m_position;
    const char* m_end;
};

/// Passes each pair to `options.set(key, value)`, in order, so a later pair overrides an earlier
/// one. Returns false for an odd number of tokens, and as soon as `set` rejects a pair.
template <typename Options>
bool read_options(token format, Options& options) {
    if (format.size == 0)
        return true;
    pair_reader pairs(format);
    if (!pairs.comes_in_pairs())
        return false;
    token key, value;
    while (pairs.next(key, value))
        if (!options.set(key, value))
            return false;
    return true;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
