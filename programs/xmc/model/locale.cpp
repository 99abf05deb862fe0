#include "xmc/model/locale.hpp"

#include <algorithm>
#include <cstddef>

namespace tova_programs::xmc {

namespace {

bool is_lower(char c) {
    return c >= 'a' && c <= 'z';
}
bool is_upper(char c) {
    return c >= 'A' && c <= 'Z';
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_alphanumeric(char c) {
    return is_lower(c) || is_upper(c) || is_digit(c);
}

bool consists_of(std::string_view text, bool (*is_it)(char)) {
    return !text.empty() && std::all_of(text.begin(), text.end(), is_it);
}

// A script, a country, or a variant of five letters or more.
bool is_further_part(std::string_view part) {
    if (part.size() == 2)
        return consists_of(part, is_upper);
    if (part.size() == 3)
        return consists_of(part, is_digit);
    if (part.size() == 4)
        return (is_upper(part[0]) && consists_of(part.substr(1), is_lower)) || is_digit(part[0]);
    return part.size() >= 5 && part.size() <= 8 && consists_of(part, is_alphanumeric);
}

}  // namespace

std::string normalized_locale(std::string_view locale) {
    std::string result(locale);
    if (result.size() != 1)
        for (char& c : result)
            if (c == '.' || c == '-')
                c = '_';
    return result;
}

std::vector<std::string> locale_chain(std::string_view wanted) {
    const std::string name = normalized_locale(wanted);
    std::vector<std::string> chain = {".", "en"};
    if (name.empty())
        return chain;
    // A trailing separator starts no part, but an empty part in the middle is one.
    for (std::size_t end = name.find('_');; end = name.find('_', end + 1)) {
        const std::string prefix = name.substr(0, end);
        if (chain.size() > 2 || prefix != "en")
            chain.push_back(prefix);
        if (end == name.npos || end + 1 == name.size())
            return chain;
    }
}

unsigned int locale_weight(const std::vector<std::string>& chain, std::string_view locale) {
    const auto found = std::find(chain.begin(), chain.end(), normalized_locale(locale));
    return found == chain.end() ? 0 : static_cast<unsigned int>(found - chain.begin() + 1);
}

bool is_usual_locale(std::string_view locale) {
    if (locale == ".")
        return true;
    const auto at = locale.find('@');
    if (at != locale.npos && !consists_of(locale.substr(at + 1), is_alphanumeric))
        return false;
    const std::string name = normalized_locale(locale.substr(0, at));
    const auto end = name.find('_');
    const std::string_view language = std::string_view(name).substr(0, end);
    if (language.size() < 2 || language.size() > 3 || !consists_of(language, is_lower))
        return false;
    for (std::size_t from = end; from != name.npos;) {
        const std::size_t next = name.find('_', from + 1);
        if (!is_further_part(std::string_view(name).substr(from + 1, next - from - 1)))
            return false;
        from = next;
    }
    return true;
}

}  // namespace tova_programs::xmc
