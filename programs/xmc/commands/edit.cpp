#include "xmc/commands/edit.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/files.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/model/writer.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;

// A message as it counts when messages are compared.
struct content {
    std::string meta;
    std::string text;  // as the content of a `msg` element
    std::string place;
};

using message_id = std::tuple<std::string, std::string, std::string>;  // catalog, key, locale

std::string shown(const message_id& id) {
    return std::get<0>(id) + '/' + readable_key(std::get<1>(id)) + " [" + std::get<2>(id) + ']';
}

// The first message of each id, as the loader keeps it.
std::map<message_id, content> contents_of(const std::string& path) {
    std::map<message_id, content> result;
    const documents files = read_documents({path});
    for (const placed_message& each : all_messages(files)) {
        const message_id id(each.of->name, each.what->name, normalized_locale(each.of->locale));
        result.insert({id,
                       {std::string(each.what->meta), content_of(pieces_of(*each.file, *each.what)),
                        place_of(each)}});
    }
    return result;
}

}  // namespace

int run_fmt(const fmt_options& options, std::ostream& out, std::ostream& errors) {
    int code = exit_clean;
    json list = json::array();
    for (const std::string& path : catalog_files(options.paths)) {
        const document file(path, read_file(path));
        const std::string text = formatted(file);
        if (options.as_json) {
            json one = {{"file", path}, {"changed", text != file.bytes()}};
            if (options.shows)
                one["text"] = text;
            list.push_back(std::move(one));
        }
        if (options.shows) {
            if (!options.as_json)
                out << text;
        } else if (text != file.bytes()) {
            if (options.checks) {
                if (!options.as_json)
                    out << path << '\n';
                code = exit_findings;
            } else {
                write_file(path, text);
                if (!options.as_json)
                    errors << path << ": formatted\n";
            }
        }
    }
    if (options.as_json)
        write_json(out, list);
    return code;
}

int run_diff(const diff_options& options, std::ostream& out, const style& colors) {
    const auto before = contents_of(options.before);
    const auto after = contents_of(options.after);
    json all = json::array();
    const auto report = [&](const char* what, const message_id& id, const content* old,
                            const content* fresh) {
        json one = {{"change", what},
                    {"catalog", std::get<0>(id)},
                    {"key", std::get<1>(id)},
                    {"locale", std::get<2>(id)}};
        if (old != nullptr)
            one["before"] = old->text;
        if (fresh != nullptr)
            one["after"] = fresh->text;
        all.push_back(std::move(one));
        if (options.as_json)
            return;
        out << what << ' ' << colors.bold(shown(id)) << '\n';
        if (old != nullptr)
            out << colors.red("  - " + old->text) << '\n';
        if (fresh != nullptr)
            out << colors.green("  + " + fresh->text) << '\n';
    };
    for (const auto& each : before) {
        const auto found = after.find(each.first);
        if (found == after.end())
            report("removed", each.first, &each.second, nullptr);
        else if (found->second.text != each.second.text || found->second.meta != each.second.meta)
            report("changed", each.first, &each.second, &found->second);
    }
    for (const auto& each : after)
        if (before.find(each.first) == before.end())
            report("added", each.first, nullptr, &each.second);
    if (options.as_json)
        write_json(out, all);
    return all.empty() ? exit_clean : exit_findings;
}

namespace {

// Joins messages; catalogs and messages keep the order in which they first appear.
class merger {
public:
    explicit merger(const std::string& prefer) : m_prefer(prefer) {}

    void add(const placed_message& each) {
        const std::pair<std::string, std::string> id(each.of->name,
                                                     normalized_locale(each.of->locale));
        if (m_messages.find(id) == m_messages.end())
            m_catalogs.push_back(id);
        std::vector<kept>& list = m_messages[id];
        const std::string text = content_of(pieces_of(*each.file, *each.what));
        const message_id full(id.first, each.what->name, id.second);
        const auto added = m_known.emplace(full, list.size());
        if (added.second) {
            list.push_back({each, text});
            return;
        }
        kept& first = list[added.first->second];
        if (first.text == text && first.from.what->meta == each.what->meta)
            return;
        if (m_prefer.empty()) {
            m_conflicts.push_back({full, place_of(each), place_of(first.from)});
        } else if (m_prefer == "last") {
            first = {each, text};
        }
    }

    struct conflict {
        message_id id;
        std::string place;
        std::string other_place;
    };

    const std::vector<conflict>& conflicts() const { return m_conflicts; }
    std::size_t messages() const { return m_known.size(); }

    std::string text() {
        writer result;
        for (const auto& id : m_catalogs) {
            result.begin_catalog(id.first, id.second);
            for (const kept& each : m_messages[id])
                result.message(each.from.what->name, each.from.what->meta,
                               pieces_of(*each.from.file, *each.from.what));
            result.end_catalog();
        }
        return result.text();
    }

private:
    struct kept {
        placed_message from;
        std::string text;
    };

    const std::string& m_prefer;
    std::vector<std::pair<std::string, std::string>> m_catalogs;
    std::map<std::pair<std::string, std::string>, std::vector<kept>> m_messages;
    std::map<message_id, std::size_t> m_known;
    std::vector<conflict> m_conflicts;
};

}  // namespace

int run_merge(const merge_options& options, std::ostream& out, std::ostream& errors) {
    const documents files = read_documents(options.paths);
    merger joined(options.prefer);
    for (const placed_message& each : all_messages(files))
        joined.add(each);
    if (options.as_json) {
        json about = {{"messages", joined.messages()}, {"conflicts", json::array()}};
        for (const merger::conflict& each : joined.conflicts())
            about["conflicts"].push_back({{"catalog", std::get<0>(each.id)},
                                          {"key", std::get<1>(each.id)},
                                          {"locale", std::get<2>(each.id)},
                                          {"place", each.place},
                                          {"other", each.other_place}});
        if (!joined.conflicts().empty()) {
            write_json(out, about);
            return exit_findings;
        }
        write_json_result(options.output, joined.text(), std::move(about), out);
        return exit_clean;
    }
    for (const merger::conflict& each : joined.conflicts())
        errors << each.place << ": " << shown(each.id) << " differs from " << each.other_place
               << '\n';
    if (!joined.conflicts().empty()) {
        errors << "tova-xmc: " << joined.conflicts().size()
               << (joined.conflicts().size() == 1 ? " conflict" : " conflicts")
               << "; --prefer first or --prefer last decides\n";
        return exit_findings;
    }
    write_result(options.output, joined.text(), out);
    return exit_clean;
}

std::string pseudo_text(const std::string& text) {
    static const std::map<char, const char*> accented = {
        {'a', "\xC3\xA5"}, {'e', "\xC3\xA9"}, {'i', "\xC3\xAE"}, {'o', "\xC3\xB6"},
        {'u', "\xC3\xBB"}, {'c', "\xC3\xA7"}, {'n', "\xC3\xB1"}, {'s', "\xC5\xA1"},
        {'y', "\xC3\xBD"}, {'z', "\xC5\xBE"}, {'A', "\xC3\x85"}, {'E', "\xC3\x89"},
        {'I', "\xC3\x8E"}, {'O', "\xC3\x96"}, {'U', "\xC3\x9B"}, {'C', "\xC3\x87"},
        {'N', "\xC3\x91"}, {'S', "\xC5\xA0"}, {'Y', "\xC3\x9D"}, {'Z', "\xC5\xBD"},
    };
    std::string result;
    for (const char c : text) {
        const auto found = accented.find(c);
        if (found == accented.end())
            result += c;
        else
            result += found->second;
    }
    return result;
}

int run_pseudo(const pseudo_options& options, std::ostream& out) {
    const documents files = read_documents(options.paths);
    require_locale(locales_of(files), options.from);
    writer result;
    std::size_t count = 0;
    for (const auto& file : files)
        for (const catalog& of : file->catalogs()) {
            if (normalized_locale(of.locale) != normalized_locale(options.from))
                continue;
            result.begin_catalog(of.name, options.to);
            for (const message& each : file->messages(of)) {
                std::vector<piece> pieces = pieces_of(*file, each);
                std::size_t length = 0;
                for (piece& one : pieces)
                    if (!one.is_argument) {
                        length += one.text.size();
                        one.text = pseudo_text(one.text);
                    }
                // Translations are about a third longer than English.
                piece begin;
                begin.text = "[";
                piece end;
                end.text = std::string(length / 3, '~') + "]";
                if (!pieces.empty() && !pieces.front().is_argument)
                    pieces.front().text.insert(0, begin.text);
                else
                    pieces.insert(pieces.begin(), begin);
                if (!pieces.back().is_argument)
                    pieces.back().text += end.text;
                else
                    pieces.push_back(end);
                result.message(each.name, each.meta, pieces);
                ++count;
            }
            result.end_catalog();
        }
    if (options.as_json)
        write_json_result(options.output, result.text(),
                          {{"locale", options.to}, {"messages", count}}, out);
    else
        write_result(options.output, result.text(), out);
    return exit_clean;
}

}  // namespace tova_programs::xmc
