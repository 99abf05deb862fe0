/// @file
/// All messages of a set of files, small enough to keep: what must agree between locales.
///
/// Names are kept once, and an entry is a few numbers, so that millions of messages fit. The place
/// of a message is its offset; its line is counted again for the few that a finding names.
#pragma once

#include "support/findings.hpp"
#include "xmc/model/document.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tova_programs::xmc {

/// Strings by number, each kept once.
class string_pool {
public:
    std::uint32_t number_of(std::string_view text);
    const std::string& text(std::uint32_t number) const { return *m_texts[number]; }
    std::size_t size() const { return m_texts.size(); }

private:
    std::unordered_map<std::string, std::uint32_t> m_numbers;
    std::vector<const std::string*> m_texts;
    std::string m_searched;
};

class message_index {
public:
    void add(const document& file);

    /// Whether a catalog has the locale.
    bool has_locale(const std::string& locale) const;

    /// Whether a catalog has any locale that a translator writes for: not "." and not none.
    bool has_languages() const;

    /// The findings of the rules about duplicates and arguments, with their places. `read` returns
    /// the bytes of a file again.
    std::vector<finding> findings(const std::string& reference,
                                  const std::function<std::string(const std::string&)>& read);

private:
    struct entry {
        std::uint32_t catalog;
        std::uint32_t key;
        std::uint32_t locale;  // as the loader compares it
        std::uint32_t file;
        std::uint32_t offset;
        std::uint32_t size;
        std::uint32_t arguments;
    };
    using iterator = std::vector<entry>::const_iterator;

    std::uint32_t arguments_of(const document& file, const message& each);
    void find_plurals(std::uint32_t reference);
    const entry* general_form(const entry& each) const;
    void find_duplicates(iterator begin, iterator end, std::vector<finding>& found) const;
    void find_mismatches(iterator begin, iterator end, std::uint32_t reference,
                         std::vector<finding>& found) const;
    finding at(const entry& each, const char* id, std::string text, const entry& other,
               std::string other_text) const;

    string_pool m_names;
    string_pool m_files;
    std::set<std::string> m_locales;
    std::vector<entry> m_entries;
    // In the reference locale: the entry `files.other` of a plural, by its catalog and `files`.
    std::map<std::pair<std::uint32_t, std::string>, const entry*> m_plurals;
};

}  // namespace tova_programs::xmc
