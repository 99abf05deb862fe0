#include "xmc/exchange/xliff.hpp"

#include "support/text_file.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace tova_programs::xmc {

namespace {

const char name_space[] = "urn:tova:xmc";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

std::string attribute_text(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + escaped_attribute(value) + '"';
}

// A locale as XLIFF names languages: "de-AT". The root locale has no language.
std::string language_tag(const std::string& locale) {
    std::string result = locale.substr(0, locale.find('@'));
    std::replace(result.begin(), result.end(), '_', '-');
    const bool is_tag = result.size() > 1 && std::all_of(result.begin(), result.end(), [](char c) {
                            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                   (c >= '0' && c <= '9') || c == '-';
                        });
    return is_tag ? result : "und";
}

// The codes of one message. Equal ones of source and target share their number, each occurrence
// with its partner.
class code_numbers {
public:
    void begin_text() { m_used.clear(); }

    // The number of an occurrence.
    std::size_t occurrence(const std::string& code) {
        std::vector<std::size_t>& list = m_numbers[code];
        const std::size_t which = m_used[code]++;
        if (which == list.size())
            list.push_back(++m_count);
        return list[which];
    }

    // The number of the code itself.
    std::size_t data(const std::string& code) {
        const auto found = std::find(m_codes.begin(), m_codes.end(), code);
        if (found != m_codes.end())
            return static_cast<std::size_t>(found - m_codes.begin()) + 1;
        m_codes.push_back(code);
        return m_codes.size();
    }

    const std::vector<std::string>& codes() const { return m_codes; }

private:
    std::map<std::string, std::vector<std::size_t>> m_numbers;
    std::map<std::string, std::size_t> m_used;
    std::vector<std::string> m_codes;
    std::size_t m_count = 0;
};

std::string content_1_2(const exchanged_text& from, code_numbers& numbers) {
    std::string result;
    numbers.begin_text();
    for (const chunk& each : chunks_of(from.pieces)) {
        if (!each.is_code)
            result += escaped(each.text);
        else
            result += "<ph" + attribute_text("id", std::to_string(numbers.occurrence(each.text))) +
                      attribute_text("ctype", "x-xmc") +
                      attribute_text("equiv-text", '{' + each.name + '}') + '>' +
                      escaped(each.text) + "</ph>";
    }
    return result;
}

std::string content_2_0(const exchanged_text& from, code_numbers& numbers) {
    std::string result;
    numbers.begin_text();
    for (const chunk& each : chunks_of(from.pieces)) {
        if (!each.is_code)
            result += escaped(each.text);
        else
            result += "<ph" + attribute_text("id", std::to_string(numbers.occurrence(each.text))) +
                      attribute_text("dataRef", 'd' + std::to_string(numbers.data(each.text))) +
                      attribute_text("equiv", '{' + each.name + '}') +
                      attribute_text("disp", '{' + each.name + '}') + "/>";
    }
    return result;
}

std::string unit_1_2(const exchanged_message& each) {
    code_numbers numbers;
    std::string text = "      <trans-unit" + attribute_text("id", portable(each.key)) +
                       attribute_text("resname", portable(each.key)) + " xml:space=\"preserve\"";
    // A message without a source has its own name there, because the format asks for one.
    if (!each.source.exists)
        text += " t:source=\"none\"";
    text += ">\n        <source>" +
            (each.source.exists ? content_1_2(each.source, numbers) : escaped(portable(each.key))) +
            "</source>\n";
    if (each.target.exists)
        text +=
            "        <target state=\"final\">" + content_1_2(each.target, numbers) + "</target>\n";
    for (const bool is_target : {false, true}) {
        const std::string& meta = is_target ? each.target.meta : each.source.meta;
        if (!meta.empty())
            text += std::string("        <note annotates=\"") + (is_target ? "target" : "source") +
                    "\">" + escaped(portable(meta)) + "</note>\n";
    }
    return text + "      </trans-unit>\n";
}

std::string unit_2_0(const exchanged_message& each, std::size_t number) {
    code_numbers numbers;
    const std::string source =
        each.source.exists ? content_2_0(each.source, numbers) : escaped(portable(each.key));
    const std::string target = content_2_0(each.target, numbers);
    std::string text = "    <unit" + attribute_text("id", 'u' + std::to_string(number)) +
                       attribute_text("name", portable(each.key));
    if (!each.source.exists)
        text += " t:source=\"none\"";
    text += ">\n";
    std::string notes;
    for (const bool is_target : {false, true}) {
        const std::string& meta = is_target ? each.target.meta : each.source.meta;
        if (!meta.empty())
            notes += std::string("        <note appliesTo=\"") + (is_target ? "target" : "source") +
                     "\">" + escaped(portable(meta)) + "</note>\n";
    }
    if (!notes.empty())
        text += "      <notes>\n" + notes + "      </notes>\n";
    if (!numbers.codes().empty()) {
        text += "      <originalData>\n";
        for (std::size_t i = 0; i < numbers.codes().size(); ++i)
            text += "        <data" + attribute_text("id", 'd' + std::to_string(i + 1)) + '>' +
                    escaped(numbers.codes()[i]) + "</data>\n";
        text += "      </originalData>\n";
    }
    text += std::string("      <segment state=\"") + (each.target.exists ? "final" : "initial") +
            "\">\n        <source xml:space=\"preserve\">" + source + "</source>\n";
    if (each.target.exists)
        text += "        <target xml:space=\"preserve\">" + target + "</target>\n";
    return text + "      </segment>\n    </unit>\n";
}

class reader {
public:
    reader(const std::string& bytes, const std::string& path, const xliff_defaults& defaults)
        : m_bytes(bytes), m_path(path), m_defaults(defaults) {
        const auto parsed = m_document.load_buffer(bytes.data(), bytes.size(),
                                                   pugi::parse_default | pugi::parse_ws_pcdata);
        if (!parsed)
            throw file_error(path + ':' + std::to_string(line_of(parsed.offset)) + ": " +
                             parsed.description());
        m_root = m_document.document_element();
        if (std::strcmp(m_root.name(), "xliff") != 0)
            throw file_error(path + ": is no XLIFF file");
        m_is_2 = m_root.attribute("version").value()[0] == '2';
        const pugi::xml_node file = m_root.child("file");
        exchange& all = m_result.all;
        all.locale =
            locale("t:locale", m_is_2 ? m_root : file, m_is_2 ? "trgLang" : "target-language");
        all.reference =
            locale("t:reference", m_is_2 ? m_root : file, m_is_2 ? "srcLang" : "source-language");
        if (all.reference.empty())
            all.reference = "en";
        if (!defaults.locale.empty())
            all.locale = defaults.locale;
        if (all.locale.empty())
            throw file_error(path + ": names no target language; say it with --lang");
    }

    imported run() {
        for (const pugi::xml_node file : m_root.children("file")) {
            m_catalog = m_defaults.catalog.empty()
                            ? from_portable(file.attribute("original").value())
                            : m_defaults.catalog;
            read_units(file, 0);
        }
        return std::move(m_result);
    }

private:
    std::size_t line_of(std::ptrdiff_t offset) const {
        const auto end = m_bytes.begin() + std::min<std::ptrdiff_t>(
                                               offset, static_cast<std::ptrdiff_t>(m_bytes.size()));
        return 1 + static_cast<std::size_t>(std::count(m_bytes.begin(), end, '\n'));
    }

    std::string locale(const char* own, const pugi::xml_node& node, const char* name) const {
        if (m_root.attribute(own))
            return from_portable(m_root.attribute(own).value());
        std::string result = node.attribute(name).value();
        std::replace(result.begin(), result.end(), '-', '_');
        return result;
    }

    void report(const pugi::xml_node& node, const std::string& subject, const std::string& text) {
        m_result.problems.push_back({line_of(node.offset_debug()), subject, text});
    }

    // The elements in each other that are followed. A translation has far fewer.
    void require_depth(std::size_t depth) const {
        if (depth > 200)
            throw file_error(m_path + ": the elements are nested too deeply");
    }

    // Groups may hold units at any depth.
    void read_units(const pugi::xml_node& parent, std::size_t depth) {
        require_depth(depth);
        for (const pugi::xml_node node : parent.children()) {
            if (std::strcmp(node.name(), m_is_2 ? "unit" : "trans-unit") == 0)
                read_unit(node);
            else
                read_units(node, depth + 1);
        }
    }

    void read_unit(const pugi::xml_node& unit) {
        exchanged_message one;
        one.catalog = m_catalog;
        one.key = from_portable(m_is_2 ? name_or_id(unit) : unit.attribute("id").value());
        if (!m_known.insert({one.catalog, one.key}).second) {
            report(unit, one.key, appears_again);
            return;
        }
        const bool has_source = std::strcmp(unit.attribute("t:source").value(), "none") != 0;
        bool is_translated = true;
        for (const pugi::xml_node part : parts_of(unit)) {
            const pugi::xml_node target = part.child("target");
            if (has_source)
                add(unit, part.child("source"), one.key, 0, one.source);
            const std::string state = (m_is_2 ? part : target).attribute("state").value();
            if (target && (target.first_child() || state == "final"))
                add(unit, target, one.key, 0, one.target);
            else if (std::strcmp(part.name(), "ignorable") == 0)
                add(unit, part.child("source"), one.key, 0, one.target);
            else
                is_translated = false;
        }
        for (const pugi::xml_node note : (m_is_2 ? unit.child("notes") : unit).children("note")) {
            const std::string of = note.attribute(m_is_2 ? "appliesTo" : "annotates").value();
            (of == "target" ? one.target : one.source).meta = from_portable(note.child_value());
        }
        if (!is_translated)
            one.target = exchanged_text();
        m_result.untranslated += !is_translated;
        m_result.all.messages.push_back(std::move(one));
    }

    // What holds a source and a target. A unit of version 2 may have several segments, and there
    // may be something between them that is not translated.
    std::vector<pugi::xml_node> parts_of(const pugi::xml_node& unit) const {
        if (!m_is_2)
            return {unit};
        std::vector<pugi::xml_node> result;
        for (const pugi::xml_node node : unit.children())
            if (std::strcmp(node.name(), "segment") == 0 ||
                std::strcmp(node.name(), "ignorable") == 0)
                result.push_back(node);
        return result;
    }

    static const char* name_or_id(const pugi::xml_node& unit) {
        return unit.attribute("name") ? unit.attribute("name").value()
                                      : unit.attribute("id").value();
    }

    void add(const pugi::xml_node& unit, const pugi::xml_node& from, const std::string& key,
             std::size_t depth, exchanged_text& text) {
        require_depth(depth);
        text.exists = true;
        for (const pugi::xml_node node : from.children()) {
            if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
                add_text(text.pieces, node.value());
                continue;
            }
            if (node.type() != pugi::node_element)
                continue;
            const std::string code = code_of(unit, node);
            if (!code.empty() && add_code(text.pieces, code))
                continue;
            // Marks around a text are left out, other codes become the text that they show.
            const std::string name = node.name();
            if (name == "mrk" || name == "g" || name == "pc") {
                add(unit, node, key, depth + 1, text);
                continue;
            }
            std::string shown = node.attribute(m_is_2 ? "disp" : "equiv-text").value();
            if (shown.empty())
                shown = m_is_2 ? data_of(unit, node) : node.child_value();
            std::string problem = '<' + name + "> is read as the text \"";
            problem.append(shown).append(1, '"');
            report(node, key, problem);
            add_text(text.pieces, shown);
        }
    }

    static std::string data_of(const pugi::xml_node& unit, const pugi::xml_node& node) {
        const char* const wanted = node.attribute("dataRef").value();
        return unit.child("originalData")
            .find_child_by_attribute("data", "id", wanted)
            .child_value();
    }

    // The code as a catalog has it, or nothing: any argument, and what we wrote.
    std::string code_of(const pugi::xml_node& unit, const pugi::xml_node& node) const {
        if (std::strcmp(node.name(), "ph") != 0)
            return "";
        const bool is_own = m_root.attribute("xmlns:t") &&
                            std::strcmp(m_root.attribute("xmlns:t").value(), name_space) == 0;
        const std::string code = m_is_2 ? data_of(unit, node) : node.child_value();
        return is_own || code.compare(0, 4, "<arg") == 0 ? code : "";
    }

    const std::string& m_bytes;
    const std::string& m_path;
    const xliff_defaults& m_defaults;
    pugi::xml_document m_document;
    pugi::xml_node m_root;
    bool m_is_2 = false;
    std::string m_catalog;
    std::set<std::pair<std::string, std::string>> m_known;
    imported m_result;
};

}  // namespace

std::string xliff_text(const exchange& all, xliff_version version) {
    const bool is_2 = version == xliff_version::v2_0;
    const std::string source = language_tag(all.reference);
    const std::string target = all.locale.empty() ? "" : language_tag(all.locale);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xliff";
    text += attribute_text("version", is_2 ? "2.0" : "1.2");
    text += attribute_text("xmlns", std::string("urn:oasis:names:tc:xliff:document:") +
                                        (is_2 ? "2.0" : "1.2"));
    text += attribute_text("xmlns:t", name_space);
    if (is_2)
        text += attribute_text("srcLang", source) +
                (target.empty() ? "" : attribute_text("trgLang", target));
    text += attribute_text("t:reference", portable(all.reference)) +
            (target.empty() ? "" : attribute_text("t:locale", portable(all.locale))) + ">\n";
    const std::string* open = nullptr;
    std::size_t files = 0;
    std::size_t units = 0;
    const std::string end = is_2 ? "  </file>\n" : "    </body>\n  </file>\n";
    for (const exchanged_message& each : all.messages) {
        if (open == nullptr || *open != each.catalog) {
            text += open == nullptr ? "" : end;
            open = &each.catalog;
            if (is_2)
                text += "  <file" + attribute_text("id", 'f' + std::to_string(++files)) +
                        attribute_text("original", portable(each.catalog)) + ">\n";
            else
                text += "  <file" + attribute_text("original", portable(each.catalog)) +
                        attribute_text("source-language", source) +
                        (target.empty() ? "" : attribute_text("target-language", target)) +
                        attribute_text("datatype", "xml") + ">\n    <body>\n";
        }
        text += is_2 ? unit_2_0(each, ++units) : unit_1_2(each);
    }
    return text + (open == nullptr ? "" : end) + "</xliff>\n";
}

imported read_xliff(const std::string& bytes, const std::string& path,
                    const xliff_defaults& defaults) {
    return reader(bytes, path, defaults).run();
}

}  // namespace tova_programs::xmc
