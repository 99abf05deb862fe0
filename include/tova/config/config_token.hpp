#pragma once

#include <string>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace config {

/// A piece of configuration text, as `base_config_item::get_token` cuts it.
class TOVA_API config_token {
public:
    /// The kinds of pieces. The numbers are part of the interface.
    enum tok_types : int {
        T_VAR = 0,             ///< A run of letters.
        T_NUM = 1,             ///< A run of digits.
        T_NEWLINE = 2,         ///< A line feed, or carriage return and line feed; the text is "\n".
        T_TABCHAR = 3,         ///< One tab.
        T_UNKNOWN = 4,         ///< A carriage return alone.
        T_END = 5,             ///< The end of the text.
        T_SPACE = 6,           ///< A run of blanks.
        T_EQ = 7,              ///< `=`
        T_EQEQ = 8,            ///< `==`
        T_GT = 9,              ///< `>`
        T_GTEQ = 10,           ///< `>=`
        T_LT = 11,             ///< `<`
        T_LTEQ = 12,           ///< `<=`
        T_COLON = 13,          ///< `:`
        T_COLONEQ = 14,        ///< `:=`
        T_POUND = 15,          ///< `#`, which begins a comment in files.
        T_FSFS = 16,           ///< `//`, which begins a comment in files.
        T_DOT = 17,            ///< `.`
        T_SBRACKET = 18,       ///< `[`
        T_EBRACKET = 19,       ///< `]`
        T_PLUS = 20,           ///< `+`
        T_MINUS = 21,          ///< `-`
        T_PLUSEQ = 22,         ///< `+=`
        T_MINUSEQ = 23,        ///< `-=`
        T_COMMENT_END = 24,    ///< The two characters of a comment's end in C.
        T_UNUSED = 25,         ///< Never produced.
        T_TIMES = 26,          ///< `*`
        T_DIV = 27,            ///< `/`
        T_TIMESEQ = 28,        ///< `*=`
        T_DIVEQ = 29,          ///< `/=`
        T_STRING = 30,         ///< A text in double quotes; without the quotes.
        T_NON_ALPHA_NUM = 31,  ///< Any other single character.
    };

    /// The text of the piece. `T_SPACE` and `T_END` leave it as it was, so that it then still is
    /// the text of the piece before.
    std::string text;
    unsigned int end = 0;    ///< Index of the byte behind the piece. Not set by `T_END`.
    unsigned int start = 0;  ///< Index of the first byte of the piece. Not set by `T_END`.
    tok_types type = T_END;

    /// The name of the kind, for people who look for faults: "T_EQ". `T_VAR`, `T_UNKNOWN`,
    /// `T_STRING` and `T_NON_ALPHA_NUM` show their text behind it, in brackets. "unknown type" for
    /// `T_COMMENT_END`, `T_UNUSED` and for a number that is no kind.
    std::string CvtTokStr();
};

}  // namespace config
}  // namespace TOVA_2_18
