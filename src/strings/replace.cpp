#include <tova/strings/replace.hpp>

#include "strings/matches.hpp"
#include "strings/unfilled.hpp"

#include <algorithm>

namespace TOVA_2_18 {
namespace strings {

namespace {

// For a replacement that is no longer than what it replaces: the string is compacted in place. The
// write position never passes the read position, so the part still to be searched is unchanged.
template <typename String>
unsigned int replace_in_place(String& text, const String& search, const String& replacement) {
    typedef typename String::value_type unit;
    typedef typename String::traits_type traits;
    detail::matches<unit> all(text.data(), text.size(), search.data(), search.size());
    std::size_t match = all.next();
    if (match == detail::not_found)
        return 0;
    unit* const units = &text[0];
    const bool moves = replacement.size() < search.size();
    std::size_t written = match;
    unsigned int count = 0;
    while (match != detail::not_found) {
        traits::copy(units + written, replacement.data(), replacement.size());
        written += replacement.size();
        ++count;

        const std::size_t begin = match + search.size();
        match = all.next();
        const std::size_t end = match == detail::not_found ? text.size() : match;
        // The units between both positions may be overwritten, and the units after them may be
        // read.
        if (moves)
            detail::copy_ahead(units + written, units + begin, end - begin,
                               std::min(begin - written, text.size() - end) * sizeof(unit));
        written += end - begin;
    }
    text.resize(written);
    return count;
}

// For a longer replacement: a new string is allocated in its final size and written. Both forms
// take linear time; inserting or removing for each match would take quadratic time.
template <typename String>
unsigned int replace_growing(String& text, const String& search, const String& replacement) {
    typedef typename String::value_type unit;
    typedef typename String::traits_type traits;
    detail::matches<unit> counted(text.data(), text.size(), search.data(), search.size());
    unsigned int count = 0;
    while (counted.next() != detail::not_found)
        ++count;
    if (count == 0)
        return 0;

    String result;
    const std::size_t size = text.size() + count * (replacement.size() - search.size());
    result.reserve(size);
    detail::append_unfilled(result, size, [&](unit* to) {
        detail::matches<unit> all(text.data(), text.size(), search.data(), search.size());
        std::size_t begin = 0;
        std::size_t written = 0;
        for (unsigned int left = count;; --left) {
            const std::size_t end = left == 0 ? text.size() : all.next();
            // At least as much is left of the result as of the string.
            detail::copy_ahead(to + written, text.data() + begin, end - begin,
                               (text.size() - end) * sizeof(unit));
            written += end - begin;
            if (left == 0)
                return written;
            traits::copy(to + written, replacement.data(), replacement.size());
            written += replacement.size();
            begin = end + search.size();
        }
    });
    text.swap(result);
    return count;
}

// Contract: matches don't overlap and inserted units are not searched again, so "aa" replaced by
// "a" in "aaaa" is "aa". `gh2::replace_all` differs for an empty search alone.
template <typename String>
unsigned int replace(String& text, const String& search, const String& replacement) {
    if (search.empty())
        return 0;
    if (replacement.size() <= search.size())
        return replace_in_place(text, search, replacement);
    return replace_growing(text, search, replacement);
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
