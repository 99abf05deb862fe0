#include "i18n/locale_list.hpp"

#include <tova/strings/split.hpp>

#include <algorithm>
#include <cstddef>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using strings::ustring8;

namespace {

bool is_taken_as_it_is(const ustring8& name) {
    return name.size() == 1;
}

char normalized(char c) {
    return c == '.' || c == '-' ? '_' : c;
}

// The weight is computed for each message, so the name is compared without making a normalized
// copy.
bool equals_normalized(const ustring8& entry, const ustring8& name) {
    if (is_taken_as_it_is(name))
        return entry == name;
    return entry.size() == name.size() &&
           std::equal(entry.begin(), entry.end(), name.begin(),
                      [](char listed, char asked) { return listed == normalized(asked); });
}

}  // namespace

ustring8 normalized_locale(const ustring8& name) {
    ustring8 result(name);
    if (!is_taken_as_it_is(name))
        std::transform(result.begin(), result.end(), result.begin(), normalized);
    return result;
}

void append_wanted_locale(locale_list& list, const ustring8& wanted) {
    const ustring8 name = normalized_locale(wanted);
    list.push_back(".");
    list.push_back("en");
    if (name.empty())
        return;

    // Contract: an empty part is an entry like any other, so that "_DE" also accepts catalogs
    // without a locale. A trailing separator starts no part. English is already in the list.
    const std::vector<ustring8> parts = strings::split_string(name, ustring8("_"), 0);
    ustring8 prefix = parts.front();
    if (prefix != "en")
        list.push_back(prefix);
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        prefix += "_" + *part;
        list.push_back(prefix);
    }
}

unsigned int locale_weight(const locale_list& list, const ustring8& name) {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (equals_normalized(list[i], name))
            return static_cast<unsigned int>(i + 1);
    return 0;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
