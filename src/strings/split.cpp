#include <tova/strings/split.hpp>

#include "strings/search.hpp"

namespace TOVA_2_18 {
namespace strings {

namespace {

template <typename String>
std::vector<String> split(const String& text, const String& separator, int limit) {
    std::vector<String> fields;
    if (separator.empty()) {
        fields.push_back(text);
        return fields;
    }

    detail::searcher<typename String::value_type> search(separator.data(), separator.size());
    std::size_t position = 0;
    int count = 0;
    for (;;) {
        const std::size_t match = search.find(text.data(), text.size(), position);
        if (match == detail::not_found)
            break;
        fields.emplace_back(text, position, match - position);
        position = match + separator.size();
        // Contract: the limit is compared after a split, so a limit of 0 or less never matches and
        // means no limit; the splits aren't counted then.
        if (limit > 0 && ++count == limit)
            break;
    }

    // Contract: a trailing separator does not start another field, although a leading one does. A
    // list written as "field, separator" in a loop splits back into the fields written.
    if (position < text.size())
        fields.emplace_back(text, position);
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
