#include "xmc/check/message_index.hpp"

#include "support/text_file.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/rules.hpp"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

namespace tova_programs::xmc {

namespace {

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

// The arguments of a message in one string: names and types in order, each ended by a line feed.
using argument_types = std::map<std::string, std::set<std::string>>;

argument_types parsed(const std::string& arguments) {
    argument_types result;
    for (std::size_t begin = 0; begin < arguments.size();) {
        const auto middle = arguments.find('\1', begin);
        const auto end = arguments.find('\n', middle);
        result[arguments.substr(begin, middle - begin)].insert(
            arguments.substr(middle + 1, end - middle - 1));
        begin = end + 1;
    }
    return result;
}

// A number and its unit are one kind of value.
const char* kind_of(item_type type) {
    switch (type) {
    case item_type::memory_unit:
        return "memory";
    case item_type::metric_unit:
        return "metric";
    default:
        return name_of(type);
    }
}

std::string joined(const std::set<std::string>& words) {
    std::string result;
    for (const std::string& word : words)
        result += (result.empty() ? "" : " and ") + word;
    return result;
}

// The part of a key before a last part that names a plural form, or the empty string.
std::string before_form(const std::string& key, std::initializer_list<std::string_view> forms) {
    const auto dot = key.rfind('.');
    const std::string_view form = std::string_view(key).substr(dot + 1);
    return dot != key.npos && std::find(forms.begin(), forms.end(), form) != forms.end()
               ? key.substr(0, dot)
               : std::string();
}

}  // namespace

std::uint32_t string_pool::number_of(std::string_view text) {
    m_searched.assign(text);
    const auto added = m_numbers.emplace(m_searched, static_cast<std::uint32_t>(m_texts.size()));
    if (added.second)
        m_texts.push_back(&added.first->first);
    return added.first->second;
}

std::uint32_t message_index::arguments_of(const document& file, const message& each) {
    std::vector<std::pair<std::string_view, const char*>> arguments;
    for (const item& one : file.items(each))
        if (one.is_argument && one.type != item_type::text)
            arguments.emplace_back(one.text, kind_of(one.type));
    if (arguments.empty())
        return m_names.number_of({});
    std::sort(arguments.begin(), arguments.end(), [](const auto& a, const auto& b) {
        return std::make_pair(a.first, std::string_view(a.second)) <
               std::make_pair(b.first, std::string_view(b.second));
    });
    arguments.erase(std::unique(arguments.begin(), arguments.end()), arguments.end());
    std::string text;
    for (const auto& argument : arguments)
        (((text += argument.first) += '\1') += argument.second) += '\n';
    return m_names.number_of(text);
}

void message_index::add(const document& file) {
    const std::uint32_t path = m_files.number_of(file.path());
    for (const catalog& of : file.catalogs()) {
        const std::uint32_t catalog_name = m_names.number_of(of.name);
        const std::uint32_t locale = m_names.number_of(normalized_locale(of.locale));
        m_locales.insert(m_names.text(locale));
        for (const message& each : file.messages(of)) {
            entry fresh;
            fresh.catalog = catalog_name;
            fresh.key = m_names.number_of(each.name);
            fresh.locale = locale;
            fresh.file = path;
            fresh.offset = each.tag.begin;
            fresh.size = static_cast<std::uint32_t>(each.tag.size());
            fresh.arguments = arguments_of(file, each);
            m_entries.push_back(fresh);
        }
    }
}

bool message_index::has_locale(const std::string& locale) const {
    return m_locales.count(normalized_locale(locale)) != 0;
}

bool message_index::has_languages() const {
    return std::any_of(m_locales.begin(), m_locales.end(),
                       [](const std::string& each) { return !each.empty() && each != "."; });
}

// The other entry is the one that it disagrees with.
finding message_index::at(const entry& each, const char* id, std::string text, const entry& other,
                          std::string other_text) const {
    finding found(*rules().find(id), m_files.text(each.file), each.offset, each.size);
    found.subject = m_names.text(each.key);
    found.text = std::move(text);
    found.related.push_back(
        {m_files.text(other.file), other.offset, other.size, std::move(other_text)});
    return found;
}

// The entries of one key, in the order of their locales.
void message_index::find_duplicates(iterator begin, iterator end,
                                    std::vector<finding>& found) const {
    for (iterator each = begin; each != end; ++each) {
        if (each == begin || each->locale != (each - 1)->locale)
            continue;
        const entry& first = *(each - 1);
        found.push_back(
            at(*each, "duplicate-key",
               "the message is given again for locale " + quoted(m_names.text(each->locale)) +
                   (first.file == each->file ? ", and this one is not used"
                                             : "; it is also in " + m_files.text(first.file)),
               first, "the other message"));
    }
}

void message_index::find_plurals(std::uint32_t reference) {
    for (const entry& each : m_entries) {
        if (each.locale != reference)
            continue;
        std::string base = before_form(m_names.text(each.key), {"other"});
        if (!base.empty())
            m_plurals.emplace(std::make_pair(each.catalog, std::move(base)), &each);
    }
}

// The form `files.other` of the reference for a form that is of few numbers.
const message_index::entry* message_index::general_form(const entry& each) const {
    const std::string base = before_form(m_names.text(each.key), {"zero", "one", "two"});
    const auto found = base.empty() ? m_plurals.end() : m_plurals.find({each.catalog, base});
    return found == m_plurals.end() ? nullptr : found->second;
}

// The forms `zero`, `one` and `two` of a plural may say their number in words, "one file", and in
// another language they may be of more numbers than one and need it. So such a form may lack one
// number, and may have what `other` has.
void message_index::find_mismatches(iterator begin, iterator end, std::uint32_t reference,
                                    std::vector<finding>& found) const {
    const iterator original = std::find_if(
        begin, end, [reference](const entry& each) { return each.locale == reference; });
    if (original == end)
        return;
    const argument_types expected = parsed(m_names.text(original->arguments));
    const entry* const general = general_form(*original);
    const argument_types allowed =
        general == nullptr ? argument_types() : parsed(m_names.text(general->arguments));
    const std::string locale = m_names.text(reference);
    const std::string there = "the message in " + locale;
    for (iterator each = begin; each != end; ++each) {
        if (each->arguments == original->arguments || each->locale == reference)
            continue;
        const argument_types actual = parsed(m_names.text(each->arguments));
        bool may_lack_number = general != nullptr;
        for (const auto& argument : expected) {
            const auto same = actual.find(argument.first);
            if (same == actual.end()) {
                if (may_lack_number && argument.second == std::set<std::string>{"int"})
                    may_lack_number = false;
                else
                    found.push_back(
                        at(*each, "argument-mismatch",
                           "argument " + quoted(argument.first) + " of " + locale + " is missing",
                           *original, there));
            } else if (same->second != argument.second) {
                found.push_back(at(*each, "argument-type-mismatch",
                                   "argument " + quoted(argument.first) + " is " +
                                       joined(same->second) + ", but " + joined(argument.second) +
                                       " in " + locale,
                                   *original, there));
            }
        }
        for (const auto& argument : actual)
            if (expected.find(argument.first) == expected.end() &&
                allowed.find(argument.first) == allowed.end())
                found.push_back(at(*each, "argument-mismatch",
                                   "argument " + quoted(argument.first) + " is not in " + locale,
                                   *original, there));
    }
}

std::vector<finding>
message_index::findings(const std::string& reference,
                        const std::function<std::string(const std::string&)>& read) {
    // Numbers in the order of files and offsets keep the first of two equal messages first.
    std::sort(m_entries.begin(), m_entries.end(), [](const entry& a, const entry& b) {
        return std::tie(a.catalog, a.key, a.locale, a.file, a.offset) <
               std::tie(b.catalog, b.key, b.locale, b.file, b.offset);
    });
    std::vector<finding> found;
    const std::uint32_t reference_locale = m_names.number_of(normalized_locale(reference));
    find_plurals(reference_locale);
    for (iterator begin = m_entries.begin(); begin != m_entries.end();) {
        const iterator end = std::find_if(begin, iterator(m_entries.end()), [&](const entry& each) {
            return each.catalog != begin->catalog || each.key != begin->key;
        });
        find_duplicates(begin, end, found);
        find_mismatches(begin, end, reference_locale, found);
        begin = end;
    }

    // Few files have such findings, and each is read again once for their lines.
    std::stable_sort(found.begin(), found.end(),
                     [](const finding& a, const finding& b) { return a.file < b.file; });
    std::string bytes;
    std::unique_ptr<line_index> lines;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (i == 0 || found[i].file != found[i - 1].file) {
            bytes = read(found[i].file);
            lines = std::make_unique<line_index>(bytes);
        }
        place_finding(found[i], *lines);
    }
    return found;
}

}  // namespace tova_programs::xmc
