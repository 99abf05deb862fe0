/// @file
/// The results of iconv for single characters, learned while a long string is converted.
///
///     detail::learned_page<true> page(handle);     // from UTF-8
///     if (page.usable())
///         page.find(text, left, taken);  // calls iconv once for each different character
///
/// If the characters of a page don't depend on each other, a table can hold them, and most strings
/// have few different characters. Nothing outlives the conversion. A character that iconv treats in
/// an unusual way is left to iconv. An object belongs to one thread.
#pragma once

#include "strings/utf8.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <memory>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

struct learned_character {
    enum result_kind : unsigned char {
        unknown,    // not tried yet
        converted,  // becomes `size` bytes
        refused,    // rejected; becomes a "?" for each of `size` bytes of the source
        ask         // anything else, which iconv must convert
    };

    result_kind kind;
    unsigned char size;  // at most four
    char bytes[6];       // more than four, so that iconv never lacks room
};

template <bool FromUtf8>
class learned_page {
public:
    // The handle is in its initial state, and remains in it.
    explicit learned_page(iconv_t handle);

    // Whether there is memory for the table and ASCII is the same on both sides.
    bool usable() const { return m_usable; }

    // The character that begins at `text` and has `taken` bytes; null if it is incomplete or must
    // be converted by iconv.
    const learned_character* find(const unsigned char* text, std::size_t left, std::size_t& taken) {
        const std::size_t at = place_of(text, left, taken);
        if (at == nowhere)
            return nullptr;
        learned_character& known = m_table.get()[at];
        if (known.kind == learned_character::unknown)
            ask_iconv(text, taken, known);
        return known.kind == learned_character::ask ? nullptr : &known;
    }

    // The entry of a byte that is a complete character of a page: its output bytes, the first one
    // lowest, and in the top byte their number, whether the byte is rejected, and a bit that is
    // always set. 0 for any other byte, and before `find` was called for it.
    std::uint32_t single_byte(unsigned char byte) const { return m_single_bytes[byte]; }

    static const std::uint32_t single_bit = 0x40000000u;
    static const std::uint32_t refused_bit = 0x80000000u;

    // Writes such an entry as four bytes, and returns the end of the bytes that count.
    static char* write(std::uint32_t single, char* to) {
        std::memcpy(to, &single, sizeof single);
        return to + (single >> 24 & 3);
    }

private:
    // The characters of a page are indexed by their bytes, and those of UTF-8 by their value up to
    // U+FFFF. All others share the entries after these, and each entry records its value.
    static const std::size_t places = 0x10000;
    static const std::size_t shared_places = 0x400;
    static const std::size_t nowhere = static_cast<std::size_t>(-1);

    struct free_memory {
        void operator()(learned_character* table) const { std::free(table); }
    };

    // With branches, `taken` is known before the table is read.
    std::size_t place_of(const unsigned char* text, std::size_t left, std::size_t& taken) {
        return FromUtf8 ? place_of_sequence(text, left, taken) : place_of_bytes(text, left, taken);
    }

    std::size_t place_of_sequence(const unsigned char* text, std::size_t left, std::size_t& taken) {
        const unsigned int b = text[0];
        if (b < 0x80) {
            taken = 1;
            return b;
        }
        if (b >= 0xC2 && b < 0xE0 && left >= 2 && is_continuation(text[1])) {
            taken = 2;
            return (b & 0x1F) << 6 | (text[1] & 0x3Fu);
        }
        if (b > 0xE0 && b < 0xF0 && b != 0xED && left >= 3 && is_continuation(text[1]) &&
            is_continuation(text[2])) {
            taken = 3;
            return (b & 0x0F) << 12 | (text[1] & 0x3Fu) << 6 | (text[2] & 0x3Fu);
        }
        return place_of_rare_sequence(text, left, taken);
    }

    // One byte, or two if the first is a lead byte.
    std::size_t place_of_bytes(const unsigned char* text, std::size_t left, std::size_t& taken) {
        const unsigned char first = text[0];
        if (m_first[first] == not_asked)
            learn_first(text);
        if (m_first[first] == single) {
            taken = 1;
            return first;
        }
        taken = 2;
        if (m_first[first] == leads && left >= 2)
            return static_cast<std::size_t>(first) << 8 | text[1];
        return nowhere;
    }

    std::size_t place_of_rare_sequence(const unsigned char* text, std::size_t left,
                                       std::size_t& taken);
    void learn_first(const unsigned char* text);
    bool keeps_ascii();
    int ask_iconv(const unsigned char* text, std::size_t size, learned_character& answer);

    iconv_t m_handle;
    bool m_usable;
    // Zeroed memory from the system: only the used part costs time.
    std::unique_ptr<learned_character, free_memory> m_table;
    unsigned int m_owner[shared_places] = {};
    std::uint32_t m_single_bytes[256] = {};
    enum : unsigned char { not_asked, single, leads, neither } m_first[256] = {};
};

extern template class learned_page<true>;
extern template class learned_page<false>;

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
