#include <tova/strings/split.hpp>

#include "strings/byte_kernels.hpp"
#include "strings/matches.hpp"
#include "strings/unfilled.hpp"

#include <algorithm>
#include <cstdint>

namespace TOVA_2_18 {
namespace strings {

namespace {

// Appends the field whose end is `rest` units before the end of the string.
template <typename String>
void append_field(std::vector<String>& fields, const typename String::value_type* begin,
                  std::size_t size, std::size_t rest) {
    if (detail::fits_in_place<String>(size) && (size + rest) * sizeof(*begin) >= 16) {
        fields.emplace_back();
        detail::fill_in_place(fields.back(), begin, size);
    } else {
        detail::append_copy(fields, begin, size);
    }
}

// Finds the positions of one byte, 1024 positions at a time.
class byte_places {
public:
    static const std::size_t words = 16;

    byte_places(const char* text, std::size_t size, char wanted)
        : m_text(text), m_size(size), m_wanted(wanted) {}

    // Stores the next positions in `masks` and returns the number of words; 0 at the end.
    std::size_t next(std::uint64_t (&masks)[words]) {
        const std::size_t size = std::min(m_size - m_begin, 64 * words);
        if (size > 0)
            kernels::bytes().find(m_text + m_begin, size, m_wanted, m_wanted, 0, masks);
        m_begin += size;
        return (size + 63) / 64;
    }

private:
    const char* m_text;
    std::size_t m_size;
    char m_wanted;
    std::size_t m_begin = 0;
};

// Counts the bits of up to 16 masks: in each byte of a mask first, and then the sums of these,
// which fit into a byte. Not all processors have an instruction for it.
std::size_t count_bits(const std::uint64_t (&masks)[byte_places::words], std::size_t words) {
    const std::uint64_t twos = 0x3333333333333333u;
    std::uint64_t sums = 0;
    for (std::size_t i = 0; i < words; ++i) {
        std::uint64_t bits = masks[i];
        bits -= (bits >> 1) & 0x5555555555555555u;
        bits = (bits & twos) + ((bits >> 2) & twos);
        sums += (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
    }
    const std::uint64_t pairs = (sums & 0x00FF00FF00FF00FFu) + ((sums >> 8) & 0x00FF00FF00FF00FFu);
    return static_cast<std::size_t>((pairs * 0x0001000100010001u) >> 48);
}

std::size_t count_bytes(const char* text, std::size_t size, char wanted) {
    byte_places places(text, size, wanted);
    std::uint64_t masks[byte_places::words];
    std::size_t count = 0;
    while (const std::size_t words = places.next(masks))
        count += count_bits(masks, words);
    return count;
}

// Appends the fields before the first `splits` separators of one byte. Returns where the last field
// begins. The loop takes less time than the searches for longer separators. It is flattened,
// because a call for each field would cost as much as the field.
template <typename String>
__attribute__((flatten)) std::size_t append_fields(std::vector<String>& fields, const char* text,
                                                   std::size_t size, char separator,
                                                   std::size_t splits) {
    byte_places places(text, size, separator);
    std::uint64_t masks[byte_places::words];
    std::size_t position = 0;
    std::size_t begin = 0;
    while (splits > 0) {
        const std::size_t words = places.next(masks);
        for (std::size_t i = 0; i < words; ++i, begin += 64)
            for (std::uint64_t mask = masks[i]; mask != 0 && splits > 0; mask &= mask - 1) {
                const std::size_t match = begin + static_cast<std::size_t>(__builtin_ctzll(mask));
                append_field(fields, text + position, match - position, size - match);
                position = match + 1;
                --splits;
            }
    }
    return position;
}

// Returns where the last field begins.
template <typename String>
std::size_t append_fields_by_search(std::vector<String>& fields, const String& text,
                                    const String& separator, int limit) {
    typedef detail::matches<typename String::value_type> matches;

    // Contract: the limit is compared after a split, so a limit of 0 or less never matches and
    // means no limit.
    std::size_t splits = 0;
    matches counted(text.data(), text.size(), separator.data(), separator.size());
    while (counted.next() != detail::not_found &&
           (++splits, limit <= 0 || splits != static_cast<std::size_t>(limit))) {
    }
    fields.reserve(splits + 1);

    matches all(text.data(), text.size(), separator.data(), separator.size());
    std::size_t position = 0;
    for (; splits > 0; --splits) {
        const std::size_t match = all.next();
        append_field(fields, text.data() + position, match - position, text.size() - match);
        position = match + separator.size();
    }
    return position;
}

// Returns where the last field begins.
template <typename Unit, typename String>
std::size_t append_fields(std::vector<String>& fields, const String& text, const String& separator,
                          int limit, Unit) {
    return append_fields_by_search(fields, text, separator, limit);
}

template <typename String>
std::size_t append_fields(std::vector<String>& fields, const String& text, const String& separator,
                          int limit, char) {
    if (separator.size() > 1)
        return append_fields_by_search(fields, text, separator, limit);
    const char byte = separator[0];
    std::size_t splits = count_bytes(text.data(), text.size(), byte);
    if (limit > 0)
        splits = std::min(splits, static_cast<std::size_t>(limit));
    fields.reserve(splits + 1);
    return append_fields(fields, text.data(), text.size(), byte, splits);
}

template <typename String>
std::vector<String> split(const String& text, const String& separator, int limit) {
    std::vector<String> fields;
    if (separator.empty()) {
        fields.push_back(text);
        return fields;
    }
    const std::size_t position =
        append_fields(fields, text, separator, limit, typename String::value_type());

    // Contract: a trailing separator does not start another field, although a leading one does. A
    // list written as "field, separator" in a loop splits back into the fields written.
    if (position < text.size())
        append_field(fields, text.data() + position, text.size() - position, 0);
    return fields;
}

}  // namespace

std::vector<std::string> split_string(const std::string& text, const std::string& separator,
                                      int limit) {
    return split(text, separator, limit);
}

std::vector<std::wstring> split_string(const std::wstring& text, const std::wstring& separator,
                                       int limit) {
    return split(text, separator, limit);
}

std::vector<ustring8> split_string(const ustring8& text, const ustring8& separator, int limit) {
    return split(text, separator, limit);
}

std::vector<ustring16> split_string(const ustring16& text, const ustring16& separator, int limit) {
    return split(text, separator, limit);
}

std::vector<ustring32> split_string(const ustring32& text, const ustring32& separator, int limit) {
    return split(text, separator, limit);
}

std::vector<ustring8> split_string(const ustring8& text, const char* separator, int limit) {
    return split_string(text, ustring8(separator), limit);
}

}  // namespace strings
}  // namespace TOVA_2_18
