#include "xmc/lsp/cursor.hpp"
#include "xmc/lsp/features.hpp"
#include "xmc/lsp/lookup.hpp"
#include "xmc/lsp/uri.hpp"
#include "xmc/lsp/vocabulary.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/files.hpp"
#include "xmc/model/options.hpp"
#include "xmc/model/writer.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

// One function for each kind of place. What the catalogs themselves offer comes before the words of
// the format: arguments of the original message, keys that this locale lacks, known locales.

namespace tova_programs::xmc::lsp {

namespace {

// The numbers of the protocol.
enum completion_kind {
    kind_field = 5,
    kind_variable = 6,
    kind_class = 7,
    kind_property = 10,
    kind_value = 12,
    kind_enum_member = 20,
    kind_snippet = 15,
    kind_file = 17
};

const std::size_t most_items = 500;

std::string without_places(std::string text) {
    for (std::size_t at = text.find('$'); at != text.npos; at = text.find('$', at))
        text.erase(at, 2);
    return text;
}

class completer {
public:
    explicit completer(const request_place& at)
        : m_at(at), m_text(at.in->file.bytes()), m_cursor(cursor_at(m_text, at.offset)),
          m_lines(m_text, at.client.units) {}

    json run() {
        switch (m_cursor.kind) {
        case cursor::element:
            complete_element();
            break;
        case cursor::end_tag:
            if (!m_cursor.open.empty())
                add("</" + innermost() + '>', kind_class, "",
                    "</" + innermost() + (m_cursor.is_finished ? "" : ">"));
            break;
        case cursor::attribute_name:
            complete_attribute_name();
            break;
        case cursor::attribute_value:
            complete_value();
            break;
        case cursor::elsewhere:
            if (m_text.find('<') == m_text.npos)
                add_element("xmc");
        }
        return {{"isIncomplete", m_is_cut}, {"items", std::move(m_items)}};
    }

private:
    std::string innermost() const { return m_cursor.open.empty() ? "" : m_cursor.open.back(); }

    // The client filters by the bytes that are replaced, which for an element begin with '<'.
    json& add(const std::string& label, int kind, const std::string& text,
              const std::string& inserted, bool is_snippet = false) {
        static json ignored;
        if (m_items.size() == most_items)
            m_is_cut = true;
        if (m_is_cut || !is_utf8(inserted))
            return ignored = nullptr;
        const bool has_places = is_snippet && m_at.client.has_snippets;
        const std::string order = std::to_string(10000 + m_items.size());
        json item = {
            {"label", label},
            {"kind", kind},
            {"sortText", order},
            {"textEdit",
             {{"range", range_json(m_lines, m_cursor.begin, m_cursor.end)},
              {"newText", is_snippet && !has_places ? without_places(inserted) : inserted}}}};
        if (m_cursor.kind == cursor::element)
            item["filterText"] = '<' + label;
        if (!text.empty())
            item["documentation"] = text;
        if (has_places)
            item["insertTextFormat"] = 2;
        m_items.push_back(std::move(item));
        return m_items.back();
    }

    const std::vector<document_pointer>& documents() {
        if (m_documents.empty())
            m_documents = m_at.files.documents(m_at.in);
        return m_documents;
    }

    found_message original() {
        return original_of(messages_of(documents(), m_cursor.catalog, m_cursor.key),
                           m_at.files.options().reference, m_cursor.locale);
    }

    void add_element(const char* name) {
        const element_words& words = *find_element(name);
        std::string source = words.source;
        if (m_cursor.is_finished)
            source = std::string("<") + name;
        else if (m_cursor.open.empty() && m_text.find("<?xml") == m_text.npos)
            source.insert(0, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
        add(name, kind_class, words.text, source, !m_cursor.is_finished);
    }

    void complete_element() {
        const element_words* const parent = find_element(innermost());
        if (parent == nullptr)
            return;
        if (innermost() == "msg" && !m_cursor.is_finished)
            add_original_arguments();
        for (const char* const child : parent->children)
            add_element(child);
        if (innermost() == "catalog" && !m_cursor.is_finished)
            add_missing_messages();
        if (!m_cursor.open.empty() && !m_cursor.is_finished)
            add('/' + innermost(), kind_class, "", "</" + innermost() + '>');
    }

    // Whole arguments, as the original message has them.
    void add_original_arguments() {
        const found_message from = original();
        if (!from)
            return;
        std::set<std::string> known;
        for (const item& each : from.in->file.items(*from.what)) {
            const std::string source(from.in->file.source(each.bytes));
            if (!each.is_argument || !known.insert(source).second)
                continue;
            add("arg " + std::string(each.text), kind_variable,
                readable_text(from.in->file, *from.what), source)["detail"] = name_of(each.type);
        }
    }

    // The messages of the original locale that the locale here lacks.
    std::map<std::string, found_message> missing_messages() {
        std::map<std::string, found_message> result;
        std::set<std::string> present;
        const std::string reference = normalized_locale(m_at.files.options().reference);
        const std::string own = normalized_locale(m_cursor.locale);
        for (const document_pointer& in : documents())
            for (const catalog& of : in->file.catalogs()) {
                const std::string locale = normalized_locale(of.locale);
                if (of.name != m_cursor.catalog || (locale != own && locale != reference))
                    continue;
                for (const message& each : in->file.messages(of)) {
                    const std::string key(each.name);
                    if (locale == own)
                        present.insert(key);
                    else if (!key.empty())
                        result[key] = {in, &of, &each};
                }
            }
        for (const std::string& key : present)
            result.erase(key);
        return result;
    }

    void add_missing_messages() {
        for (const auto& each : missing_messages()) {
            const document& file = each.second.in->file;
            const std::string content = content_of(pieces_of(file, *each.second.what));
            add("msg " + each.first, kind_snippet, readable_text(file, *each.second.what),
                "<msg name=\"" + escaped_attribute(each.first) + "\">" + content + "</msg>");
        }
    }

    bool has_attribute(std::string_view name) const {
        return std::any_of(m_cursor.attributes.begin(), m_cursor.attributes.end(),
                           [name](const auto& each) { return each.first == name; });
    }

    item_type type_here() const {
        item_type type = item_type::string;
        for (const auto& each : m_cursor.attributes)
            if (each.first == "type")
                parse_type(each.second, type);
        return type;
    }

    void add_attribute(const char* name, const char* text) {
        if (has_attribute(name))
            return;
        if (m_cursor.is_finished)
            add(name, kind_property, text, name);
        else
            add(name, kind_property, text, std::string(name) + "=\"$1\"", true);
    }

    // Options before the name would be lost.
    void complete_attribute_name() {
        const element_words* const words = find_element(m_cursor.tag);
        if (words == nullptr)
            return;
        for (const described_word& each : words->attributes)
            add_attribute(each.name, each.text);
        if ((m_cursor.tag != "arg" && m_cursor.tag != "argument") || !m_cursor.follows_name)
            return;
        for (const option_rule& each : options_of(type_here()))
            if (each.kind != option_kind::nothing)
                add_attribute(each.name, option_text(each.name));
    }

    void add_value(const std::string& value, int kind, const std::string& text) {
        const std::string end = m_cursor.needs_quote ? std::string(1, m_cursor.quote) : "";
        add(value, kind, text, escaped_attribute(value) + end);
    }

    void complete_value() {
        const std::string& tag = m_cursor.tag;
        const std::string& name = m_cursor.attribute;
        if (tag == "arg" || tag == "argument")
            complete_value_of_argument();
        else if (tag == "xmc" && name == "version")
            add_value("1.1", kind_value, "");
        else if (tag == "catalog" && (name == "name" || name == "lang"))
            add_catalog_values(name == "name");
        else if (tag == "msg" && name == "name")
            for (const auto& each : missing_messages())
                add_value(each.first, kind_value,
                          readable_text(each.second.in->file, *each.second.what));
        else if (tag == "include" && name == "file" && !path_of(m_at.uri).empty())
            add_files();
    }

    void complete_value_of_argument() {
        if (m_cursor.attribute == "name") {
            add_argument_names();
        } else if (m_cursor.attribute == "type") {
            for (const described_word& each : described_types())
                add_value(each.name, kind_enum_member, each.text);
        } else {
            for (const option_rule& each : options_of(type_here()))
                if (each.name == m_cursor.attribute && each.kind != option_kind::nothing)
                    for (const std::string& word : words_of(each))
                        add_value(word, kind_enum_member, "");
        }
    }

    // Those that the message here still lacks come first.
    void add_argument_names() {
        const found_message from = original();
        if (!from)
            return;
        std::map<std::string, item_type> types;
        std::vector<std::string> names;
        for (const item& each : from.in->file.items(*from.what))
            if (each.is_argument && each.type != item_type::text &&
                types.insert({std::string(each.text), each.type}).second)
                names.emplace_back(each.text);
        std::stable_partition(names.begin(), names.end(), [this](const std::string& name) {
            const auto& here = m_cursor.arguments;
            return std::find(here.begin(), here.end(), name) == here.end();
        });
        for (const std::string& name : names)
            add_value(name, kind_variable,
                      std::string(name_of(types[name])) + ", " + std::string(from.of->locale) +
                          ": " + readable_text(from.in->file, *from.what));
    }

    void add_catalog_values(bool are_names) {
        std::set<std::string> values;
        for (const document_pointer& in : documents())
            for (const catalog& each : in->file.catalogs())
                values.emplace(are_names ? each.name : each.locale);
        // What is written here is no suggestion.
        values.erase(m_text.substr(m_cursor.begin, m_cursor.end - m_cursor.begin));
        values.erase("");
        for (const std::string& each : values)
            add_value(each, kind_value, "");
    }

    // Files that a program does not read by themselves.
    void add_files() {
        std::set<std::string> names;
        std::error_code error;
        const std::filesystem::path folder =
            std::filesystem::path(m_at.in->file.path()).parent_path();
        for (const auto& each : std::filesystem::directory_iterator(folder, error))
            if (each.is_regular_file(error) && !has_catalog_extension(each.path().native()))
                names.insert(each.path().filename().native());
        for (const std::string& name : names)
            add_value(name, kind_file, "");
    }

    const request_place& m_at;
    const std::string& m_text;
    const cursor m_cursor;
    const line_map m_lines;
    std::vector<document_pointer> m_documents;
    json m_items = json::array();
    bool m_is_cut = false;
};

}  // namespace

json completion(const request_place& at) {
    return completer(at).run();
}

}  // namespace tova_programs::xmc::lsp
