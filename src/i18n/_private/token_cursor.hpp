/// @file
/// A place among the tokens of an XMC file.
///
/// The grammar accesses tokens only through these few operations, so it doesn't depend on how they
/// are stored. A cursor belongs to one thread.
#pragma once

#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

class token_cursor {
public:
    using token = _private::xmc_file_loader::token;
    using iterator = _private::xmc_file_loader::token_iterator;

    // The caller owns the position: it moves with the cursor, and after an exception it shows how
    // far the walk got.
    token_cursor(iterator& position, const iterator& end) : m_position(position), m_end(end) {}

    bool at_end() const { return m_position == m_end; }

    // The token at the cursor. There must be one.
    token::token_type type() const { return m_position->type(); }
    const strings::ustring8& value() const { return m_position->value(); }

    // Whether there is a token with that type and value.
    bool is_at(token::token_type wanted, const char* name) const {
        return !at_end() && type() == wanted && value() == name;
    }

    // Moves to the next token, or to the end. There must be a token.
    void next() { ++m_position; }

private:
    iterator& m_position;
    const iterator m_end;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
