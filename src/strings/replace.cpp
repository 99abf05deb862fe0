#include <tova/strings/replace.hpp>

#include "strings/search.hpp"

namespace TOVA_2_18 {
namespace strings {

namespace {

// For a replacement that is no longer than what it replaces: the string is compacted in place. The
// write position never passes the read position, so the part still to be searched is unchanged.
template <typename String, typename Searcher>
unsigned int replace_in_place(String& text, const String& search, const String& replacement,
                              Searcher& searcher, std::size_t match) {
    typedef typename String::traits_type traits;
    std::size_t written = match;
    unsigned int count = 0;
    while (match != detail::not_found) {
        traits::copy(&text[0] + written, replacement.data(), replacement.size());
        written += replacement.size();
        ++count;

        const std::size_t begin = match + search.size();
        match = searcher.find(text.data(), text.size(), begin);
        const std::size_t end = match == detail::not_found ? text.size() : match;
        traits::move(&text[0] + written, text.data() + begin, end - begin);
        written += end - begin;
    }
    text.resize(written);
    return count;
}

// For a longer replacement: a new string is allocated in its final size and written. Both forms
// take linear time; inserting or removing for each match would take quadratic time.
template <typename String, typename Searcher>
unsigned int replace_growing(String& text, const String& search, const String& replacement,
                             Searcher& searcher, std::size_t match) {
    const std::size_t first = match;
    unsigned int count = 0;
    for (; match != detail::not_found; ++count)
        match = searcher.find(text.data(), text.size(), match + search.size());

    String result;
    result.reserve(text.size() + count * (replacement.size() - search.size()));
    std::size_t begin = 0;
    for (match = first; match != detail::not_found;) {
        result.append(text, begin, match - begin).append(replacement);
        begin = match + search.size();
        match = searcher.find(text.data(), text.size(), begin);
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
    detail::searcher<typename String::value_type> searcher(search.data(), search.size());
    const std::size_t match = searcher.find(text.data(), text.size(), 0);
    if (match == detail::not_found)
        return 0;
    if (replacement.size() <= search.size())
        return replace_in_place(text, search, replacement, searcher, match);
    return replace_growing(text, search, replacement, searcher, match);
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
