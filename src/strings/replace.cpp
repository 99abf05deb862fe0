#include <tova/strings/replace.hpp>

namespace TOVA_2_18 {
namespace strings {

namespace {

// A replacement that is no longer than what it replaces: the string is compacted in place. The
// write position never passes the read position, so what is searched has not been written to.
template <typename String>
unsigned int replace_in_place(String& text, const String& search, const String& replacement,
                              typename String::size_type match) {
    typedef typename String::traits_type traits;
    typename String::size_type written = match;
    unsigned int count = 0;
    while (match != String::npos) {
        traits::copy(&text[0] + written, replacement.data(), replacement.size());
        written += replacement.size();
        ++count;

        const typename String::size_type begin = match + search.size();
        match = text.find(search, begin);
        const typename String::size_type end = match == String::npos ? text.size() : match;
        traits::move(&text[0] + written, text.data() + begin, end - begin);
        written += end - begin;
    }
    text.resize(written);
    return count;
}

template <typename String>
unsigned int count_matches(const String& text, const String& search,
                           typename String::size_type match) {
    unsigned int count = 0;
    for (; match != String::npos; match = text.find(search, match + search.size()))
        ++count;
    return count;
}

// A longer replacement: a new string is written, into room of its final size. Both forms take
// linear time, where one insertion or removal for each match would take quadratic time.
template <typename String>
unsigned int replace_growing(String& text, const String& search, const String& replacement,
                             typename String::size_type match) {
    const unsigned int count = count_matches(text, search, match);
    String result;
    result.reserve(text.size() + count * (replacement.size() - search.size()));
    typename String::size_type begin = 0;
    while (match != String::npos) {
        result.append(text, begin, match - begin).append(replacement);
        begin = match + search.size();
        match = text.find(search, begin);
    }
    result.append(text, begin, String::npos);
    text.swap(result);
    return count;
}

// Contract: matches don't overlap and inserted units are not searched again, so "aa" replaced by
// "a" in "aaaa" is "aa". `gh2::replace_all` differs for an empty search alone.
template <typename String>
unsigned int replace(String& text, const String& search, const String& replacement) {
    if (search.empty())
        return 0;
    const typename String::size_type match = text.find(search);
    if (match == String::npos)
        return 0;
    if (replacement.size() <= search.size())
        return replace_in_place(text, search, replacement, match);
    return replace_growing(text, search, replacement, match);
}

}  // namespace

unsigned int replace_all(std::string& text, const std::string& search,
                         const std::string& replacement) {
    return replace(text, search, replacement);
}

unsigned int replace_all(std::wstring& text, const std::wstring& search,
                         const std::wstring& replacement) {
    return replace(text, search, replacement);
}

unsigned int replace_all(ustring8& text, const ustring8& search, const ustring8& replacement) {
    return replace(text, search, replacement);
}

unsigned int replace_all(ustring16& text, const ustring16& search, const ustring16& replacement) {
    return replace(text, search, replacement);
}

unsigned int replace_all(ustring32& text, const ustring32& search, const ustring32& replacement) {
    return replace(text, search, replacement);
}

}  // namespace strings
}  // namespace TOVA_2_18
