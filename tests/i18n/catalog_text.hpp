// Pieces of XMC files for tests, and what a loader has read from them, in readable form.
#pragma once

#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/types/nil.hpp>

#include <map>
#include <string>

namespace test_support {

using loaded_catalogs = std::map<tova::strings::ustring8,
                                 tova::memory::pointers::shared_pointer<tova::i18n::catalog_t>>;

// A complete file around the content of its root.
inline std::string xmc(const std::string& content) {
    return "<?xml version=\"1.0\"?><xmc version=\"1.1\">" + content + "</xmc>";
}

inline std::string catalog(const std::string& name, const std::string& lang,
                           const std::string& content) {
    return "<catalog name=\"" + name + "\" lang=\"" + lang + "\">" + content + "</catalog>";
}

inline std::string msg(const std::string& name, const std::string& content) {
    return "<msg name=\"" + name + "\">" + content + "</msg>";
}

// The items as "type:data", each in brackets, with the separator byte 0x01 shown as "|".
inline std::string items_of(const tova::i18n::message_t& message) {
    std::string result;
    for (const auto& item : message) {
        result += "[" + std::to_string(static_cast<int>(item.type())) + ":" + item.data() + "]";
    }
    for (char& c : result)
        if (c == '\x01')
            c = '|';
    return result;
}

// What a loader has read, merged into an empty set.
inline loaded_catalogs combined(tova::i18n::_private::xmc_file_loader& loader) {
    loaded_catalogs result;
    loader.combine_data(result, {});
    return result;
}

// A message rendered without arguments; "(none)" if there is no such message.
inline std::string text_of(const loaded_catalogs& catalogs, const std::string& catalog_name,
                           const std::string& key) {
    const auto entry = catalogs.find(catalog_name);
    if (entry == catalogs.end() || !entry->second->has_message(key))
        return "(none)";
    return entry->second->message(key).as_string(tova::generic::varg_list());
}

// The complete content of a set, in one string.
template <typename Catalogs>
std::string everything_in(const Catalogs& catalogs) {
    std::string all;
    for (const auto& entry : catalogs) {
        all += entry.first + " = " + entry.second->name() + "\n";
        for (const auto& keyed : *entry.second)
            all += keyed.first + " = " + keyed.second.name() + ", " + keyed.second.meta() + ", " +
                   keyed.second._orginal_locale() + ": " + items_of(keyed.second) + "\n";
    }
    return all;
}

}  // namespace test_support
