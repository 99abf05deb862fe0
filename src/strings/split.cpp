#include <tova/strings/split.hpp>

#include "strings/matches.hpp"
#include "strings/unfilled.hpp"

namespace TOVA_2_18 {
namespace strings {

namespace {

// Appends the field that ends `rest` units before the end of the string.
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

template <typename String>
std::vector<String> split(const String& text, const String& separator, int limit) {
    typedef detail::matches<typename String::value_type> matches;
    std::vector<String> fields;
    if (separator.empty()) {
        fields.push_back(text);
        return fields;
    }

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
