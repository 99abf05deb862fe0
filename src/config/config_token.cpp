#include <tova/config/config_token.hpp>

namespace TOVA_2_18 {
namespace config {

// Long because each type has its own row. A `switch` without a default lets the compiler report a
// missing type.
//
// Contract: `T_COMMENT_END` has no name of its own.
std::string config_token::CvtTokStr() {
    switch (type) {
    case T_VAR:
        return "T_VAR :[" + text + "]";
    case T_NUM:
        return "T_NUM";
    case T_NEWLINE:
        return "T_NEWLINE";
    case T_TABCHAR:
        return "T_TABCHAR";
    case T_UNKNOWN:
        return "T_UNKNOWN:[" + text + "]";
    case T_END:
        return "T_END";
    case T_SPACE:
        return "T_SPACE";
    case T_EQ:
        return "T_EQ";
    case T_EQEQ:
        return "T_EQEQ";
    case T_GT:
        return "T_GT";
    case T_GTEQ:
        return "T_GTEQ";
    case T_LT:
        return "T_LT";
    case T_LTEQ:
        return "T_LTEQ";
    case T_COLON:
        return "T_COLON";
    case T_COLONEQ:
        return "T_COLONEQ";
    case T_POUND:
        return "T_POUND";
    case T_FSFS:
        return "T_FSFS";
    case T_DOT:
        return "T_DOT";
    case T_SBRACKET:
        return "T_SBRACKET";
    case T_EBRACKET:
        return "T_EBRACKET";
    case T_PLUS:
        return "T_PLUS";
    case T_MINUS:
        return "T_MINUS";
    case T_PLUSEQ:
        return "T_PLUSEQ";
    case T_MINUSEQ:
        return "T_MINUSEQ";
    case T_TIMES:
        return "T_TIMES";
    case T_DIV:
        return "T_DIV";
    case T_TIMESEQ:
        return "T_TIMESEQ";
    case T_DIVEQ:
        return "T_DIVEQ";
    case T_STRING:
        return "T_STRING:[" + text + "]";
    case T_NON_ALPHA_NUM:
        return "T_NON_ALPHA_NUM:[" + text + "]";
    case T_COMMENT_END:
    case T_UNUSED:
        break;
    }
    return "unknown type";
}

}  // namespace config
}  // namespace TOVA_2_18
