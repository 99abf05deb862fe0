/// @file
/// A place among the tokens of an XMC file.
///
/// The grammar accesses tokens only through these few operations, so it doesn't depend on how they
/// are stored: in the list that is passed to the operations of `xmc_file_loader`, or contiguously,
/// as in a load. A cursor belongs to one thread.
#pragma once

#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "parser/flat_tokens.hpp"
#include "parser/piece.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using parser::detail::piece;

// The common part of both kinds. `Position` is an iterator or a reference to the caller's iterator.
template <typename Position, typename End>
class basic_token_cursor {
public:
    using token = _private::xmc_file_loader::token;

    basic_token_cursor(Position position, const End& end) : m_position(position), m_end(end) {}

    bool at_end() const { return m_position == m_end; }

    // The token at the cursor. There must be one. The value is valid as long as the tokens are.
    token::token_type type() const { return m_position->type(); }
    piece value() const { return piece(m_position->value()); }

    // Whether there is a token with that type and value.
    template <std::size_t Size>
    bool is_at(token::token_type wanted, const char (&name)[Size]) const {
        return !at_end() && type() == wanted && value().is(name);
    }

    // Moves to the next token, or to the end. There must be a token.
    void next() { ++m_position; }

private:
    Position m_position;
    End m_end;
};

// The caller owns the position: it moves with the cursor, and after an exception it shows where the
// walk stopped.
using list_cursor = basic_token_cursor<_private::xmc_file_loader::token_iterator&,
                                       _private::xmc_file_loader::token_iterator>;

// A copy does not move with the original, so a message can be read again from there.
using flat_cursor = basic_token_cursor<const parser::detail::flat_tokens::token*,
                                       const parser::detail::flat_tokens::token*>;

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
