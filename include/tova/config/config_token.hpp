/// @file
/// The tokens of configuration files, command lines and environment strings.
///
///     config_token token;
///     unsigned int position = 0;
///     while (item.get_token(text, position, token) != config_token::T_END)
///         std::cout << token.CvtTokStr() << '\n';
///
/// A plain value: threads may share one that nobody changes.
#pragma once

#include <tova/abi.hpp>

#include <string>

namespace TOVA_2_18 {
namespace config {

/// A token, as `base_config_item::get_token` reads it. Indexes count bytes. A plain value: copies
/// share nothing.
class TOVA_API config_token {
public:
    /// The types of tokens. The numbers are part of the interface.
    enum tok_types : int {
        T_VAR = 0,        ///< A run of letters.
        T_NUM = 1,        ///< A run of digits.
        T_NEWLINE = 2,    ///< A line feed, or a carriage return and a line feed; the text is "\n".
        T_TABCHAR = 3,    ///< One tab.
        T_UNKNOWN = 4,    ///< A carriage return alone.
        T_END = 5,        ///< The end of the input.
        T_SPACE = 6,      ///< A run of spaces.
        T_EQ = 7,         ///< `=`
        T_EQEQ = 8,       ///< `==`
        T_GT = 9,         ///< `>`
        T_GTEQ = 10,      ///< `>=`
        T_LT = 11,        ///< `<`
        T_LTEQ = 12,      ///< `<=`
        T_COLON = 13,     ///< `:`
        T_COLONEQ = 14,   ///< `:=`
        T_POUND = 15,     ///< `#`, which starts a comment in files.
        T_FSFS = 16,      ///< `//`, which starts a comment in files.
        T_DOT = 17,       ///< `.`
        T_SBRACKET = 18,  ///< `[`
        T_EBRACKET = 19,  ///< `]`
        T_PLUS = 20,      ///< `+`
        T_MINUS = 21,     ///< `-`
        T_PLUSEQ = 22,    ///< `+=`
        T_MINUSEQ = 23,   ///< `-=`
        T_COMMENT_END = 24,    ///< The two characters that end a comment in C.
        T_UNUSED = 25,         ///< Never produced.
        T_TIMES = 26,          ///< `*`
        T_DIV = 27,            ///< `/`
        T_TIMESEQ = 28,        ///< `*=`
        T_DIVEQ = 29,          ///< `/=`
        T_STRING = 30,         ///< A string in double quotes; the text excludes the quotes.
        T_NON_ALPHA_NUM = 31,  ///< Any other single character.
    };

    /// The text of the token. `T_SPACE` and `T_END` leave it alone, so it is then still the text of
    /// the token before.
    std::string text;
    unsigned int end = 0;    ///< Index of the byte after the token. `T_END` leaves it alone.
    unsigned int start = 0;  ///< Index of the token's first byte. `T_END` leaves it alone.
    tok_types type = T_END;  ///< What the token is.

    /// The name of the type for debugging, such as "T_EQ". The names of `T_VAR`, `T_UNKNOWN`,
    /// `T_STRING` and `T_NON_ALPHA_NUM` are followed by the text in brackets. "unknown type" for
    /// `T_COMMENT_END`, `T_UNUSED` and any other number.
    std::string CvtTokStr();
};

}  // namespace config
}  // namespace TOVA_2_18
