#include "strings/learned_page.hpp"

#include <cerrno>
#include <cstring>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

template <bool FromUtf8>
learned_page<FromUtf8>::learned_page(iconv_t handle)
    : m_handle(handle), m_usable(false), m_table(static_cast<learned_character*>(std::calloc(
                                             places + shared_places, sizeof(learned_character)))) {
    m_usable = m_table != nullptr && keeps_ascii();
}

template <bool FromUtf8>
bool learned_page<FromUtf8>::keeps_ascii() {
    char ascii[128];
    for (int i = 0; i < 128; ++i)
        ascii[i] = static_cast<char>(i);
    char result[128];
    char* from = ascii;
    char* to = result;
    std::size_t left = sizeof ascii;
    std::size_t room = sizeof result;
    return iconv(m_handle, &from, &left, &to, &room) == 0 && left == 0 && room == 0 &&
           std::memcmp(ascii, result, sizeof ascii) == 0;
}

// Any sequence that iconv accepts: the shortest form of a Unicode value that is not a surrogate.
template <bool FromUtf8>
std::size_t learned_page<FromUtf8>::place_of_rare_sequence(const unsigned char* text,
                                                           std::size_t left, std::size_t& taken) {
    unsigned int point = 0;
    taken = read_sequence(text, left, point);
    if (taken < 3 || point < 0x800 || (point >= 0xD800 && point <= 0xDFFF))
        return nowhere;
    if (taken == 3)
        return point;
    if (point < 0x10000 || point >= 0x110000)
        return nowhere;
    const std::size_t shared = point % shared_places;
    if (m_owner[shared] != point) {
        m_owner[shared] = point;
        m_table.get()[places + shared].kind = learned_character::unknown;
    }
    return places + shared;
}

// After a lead byte, iconv needs more input.
template <bool FromUtf8>
void learned_page<FromUtf8>::learn_first(const unsigned char* text) {
    learned_character& alone = m_table.get()[text[0]];
    const int error = ask_iconv(text, 1, alone);
    m_first[text[0]] = alone.kind != learned_character::ask ? single
                       : error == EINVAL                    ? leads
                                                            : neither;
    // A byte without output is left to `find`.
    if (m_first[text[0]] != single || alone.size == 0 || alone.size > 3)
        return;
    std::uint32_t& word = m_single_bytes[text[0]];
    std::memcpy(&word, alone.bytes, alone.size);
    word |= single_bit | static_cast<std::uint32_t>(alone.size) << 24;
    if (alone.kind == learned_character::refused)
        word |= refused_bit;
}

// Converts one character. Returns errno, or 0.
template <bool FromUtf8>
int learned_page<FromUtf8>::ask_iconv(const unsigned char* text, std::size_t size,
                                      learned_character& answer) {
    char* from = reinterpret_cast<char*>(const_cast<unsigned char*>(text));
    char* to = answer.bytes;
    std::size_t left = size;
    std::size_t room = sizeof answer.bytes;
    const bool done = iconv(m_handle, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
    const int error = done ? 0 : errno;
    const std::size_t written = sizeof answer.bytes - room;
    answer.kind = learned_character::ask;
    if (done && left == 0 && written <= (FromUtf8 ? size : 4)) {
        answer.kind = learned_character::converted;
        answer.size = static_cast<unsigned char>(written);
    } else if (error == EILSEQ && left == size && written == 0) {
        // iconv rejects a UTF-8 character byte by byte, but a page's character only by its first
        // byte.
        answer.kind = learned_character::refused;
        answer.size = static_cast<unsigned char>(FromUtf8 ? size : 1);
        std::memset(answer.bytes, '?', sizeof answer.bytes);
    } else {
        // No state of this character may remain in the descriptor.
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
    }
    return error;
}

template class learned_page<true>;
template class learned_page<false>;

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
