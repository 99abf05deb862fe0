// `replace_all`, `split_string` and `gh2` in all widths, compared with plain forms.
//
// Input: one byte for the limit, one for the width, one for the size of the search string, one for
// that of the replacement; then the three strings. They consist of few different units, so matches
// are common.
#include <tova/strings/gh2.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using fuzz_support::require;
using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;

// Whether `text` has `search` at the position, compared unit by unit.
template <typename String>
bool is_at(const String& text, std::size_t place, const String& search) {
    if (search.size() > text.size() - place)
        return false;
    for (std::size_t i = 0; i < search.size(); ++i)
        if (text[place + i] != search[i])
            return false;
    return true;
}

template <typename String>
String plainly_replaced(const String& text, const String& search, const String& replacement,
                        unsigned& count) {
    String result;
    count = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (!search.empty() && is_at(text, i, search)) {
            result += replacement;
            i += search.size();
            ++count;
        } else {
            result += text[i++];
        }
    }
    return result;
}

template <typename String>
std::vector<String> plainly_split(const String& text, const String& separator, int limit) {
    if (separator.empty())
        return std::vector<String>(1, text);
    std::vector<String> fields;
    String field;
    int splits = 0;
    for (std::size_t i = 0; i < text.size();) {
        if ((limit <= 0 || splits < limit) && is_at(text, i, separator)) {
            fields.push_back(field);
            field.clear();
            i += separator.size();
            ++splits;
        } else {
            field += text[i++];
        }
    }
    if (!field.empty())
        fields.push_back(field);
    return fields;
}

template <typename String>
void compare(const std::string& text, const std::string& search, const std::string& replacement,
             int limit) {
    const String wide(text.begin(), text.end());
    const String wide_search(search.begin(), search.end());
    const String wide_replacement(replacement.begin(), replacement.end());
    unsigned count;
    const String expected = plainly_replaced(wide, wide_search, wide_replacement, count);
    String changed = wide;
    require(tova::strings::replace_all(changed, wide_search, wide_replacement) == count);
    require(changed == expected);
    require(tova::strings::split_string(wide, wide_search, limit) ==
            plainly_split(wide, wide_search, limit));
}

void compare_gh2(const std::string& text, const std::string& search,
                 const std::string& replacement) {
    namespace gh2 = tova::strings::gh2;
    if (!search.empty()) {
        unsigned count;
        const std::string expected = plainly_replaced(text, search, replacement, count);
        std::string changed = text;
        require(gh2::replace_all(changed, search, replacement) == count && changed == expected);
    }
    // In the C locale, only ASCII letters change.
    const std::string upper = gh2::toupper(text);
    const std::string lower = gh2::tolower(text);
    require(upper.size() == text.size() && lower.size() == text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char byte = text[i];
        require(upper[i] == (byte >= 'a' && byte <= 'z' ? byte - 32 : byte));
        require(lower[i] == (byte >= 'A' && byte <= 'Z' ? byte + 32 : byte));
    }
    // The structure of one sequence.
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    const unsigned char first = bytes.empty() ? 0 : bytes[0];
    const unsigned long length = bytes.empty()        ? 0
                                 : first < 0x80       ? 1
                                 : first >> 5 == 0x06 ? 2
                                 : first >> 4 == 0x0E ? 3
                                 : first >> 3 == 0x1E ? 4
                                                      : 0;
    require(gh2::get_utf8_length(bytes.data(), bytes.size()) == length);
    bool is_valid = length != 0 && bytes.size() >= length;
    for (std::size_t i = 1; is_valid && i < length; ++i)
        is_valid = bytes[i] >> 6 == 2;
    require(gh2::validate_utf8(bytes.data(), bytes.size()) == is_valid);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size < 4)
        return 0;
    const int limit = static_cast<signed char>(data[0]);
    const unsigned char width = data[1];
    std::string text(reinterpret_cast<const char*>(data) + 4, size - 4);
    if ((width & 0x10) == 0)
        for (char& byte : text)
            byte = static_cast<char>('a' + (byte & 1));
    const std::string search = text.substr(0, data[2]);
    text.erase(0, search.size());
    const std::string replacement = text.substr(0, data[3]);
    text.erase(0, replacement.size());
    switch (width & 7) {
    case 0:
        compare<std::string>(text, search, replacement, limit);
        break;
    case 1:
        compare<std::wstring>(text, search, replacement, limit);
        break;
    case 2:
        compare<ustring8>(text, search, replacement, limit);
        break;
    case 3:
        compare<ustring16>(text, search, replacement, limit);
        break;
    case 4:
        compare<ustring32>(text, search, replacement, limit);
        break;
    case 5:
        if (search.find('\0') == std::string::npos)
            require(tova::strings::split_string(ustring8(text), search.c_str(), limit) ==
                    plainly_split(ustring8(text), ustring8(search), limit));
        break;
    default:
        compare_gh2(text, search, replacement);
        break;
    }
    return 0;
}
