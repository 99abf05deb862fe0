#include "xmc/exchange/po.hpp"

#include "support/text_file.hpp"
#include "xmc/exchange/foreign_format.hpp"
#include "xmc/exchange/plural_forms.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/version.hpp"

#include <iconv.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

// Writing: messages become entries, one or several messages each. Reading: lines become entries,
// and entries become messages, by the rules of a file of our own or by those of a foreign one.

namespace tova_programs::xmc {

namespace {

const char not_in_reference[] = "not in the reference";
const char note_prefix[] = "Note: ";
// Each plural has `other`. Where whole numbers do not use it, the last form is the best one.
const char* const substitutes_for_other[] = {"many", "few", "two", "one", "zero"};
const std::vector<std::string> all_categories = {"zero", "one", "two", "few", "many", "other"};

// A string in PO syntax, with one line of the file for each line of the text.
std::string po_string(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c == '"' || c == '\\')
            lines.back() += '\\';
        if (c == '\n') {
            lines.back() += "\\n";
            lines.emplace_back();
        } else if (c == '\t') {
            lines.back() += "\\t";
        } else {
            lines.back() += c;
        }
    }
    if (lines.size() > 1 && lines.back().empty())
        lines.pop_back();
    if (lines.size() == 1)
        return '"' + lines[0] + "\"\n";
    std::string result = "\"\"\n";
    for (const std::string& each : lines)
        result += '"' + each + "\"\n";
    return result;
}

std::string context_of(const std::string& catalog, const std::string& key) {
    return portable(catalog, "/") + '/' + portable(key);
}

class po_writer {
public:
    explicit po_writer(const exchange& all) : m_all(all) {}

    std::string run() {
        find_plurals();
        write_header();
        for (std::size_t i = 0; i < m_all.messages.size(); ++i) {
            const auto plural = m_plurals.find(i);
            if (plural != m_plurals.end())
                write_plural(plural->second);
            else if (m_in_plural.count(i) == 0)
                write_single(m_all.messages[i]);
        }
        return m_text;
    }

private:
    // The messages of a plural: those of the source, and those of the target by form.
    struct plural_message {
        std::string key;
        const exchanged_message* one = nullptr;
        const exchanged_message* other = nullptr;
        std::vector<const exchanged_message*> forms;
    };
    using message_map = std::map<std::pair<std::string, std::string>, std::size_t>;

    // Messages are joined to a plural where nothing is lost: the source has the forms of 1 and of
    // other numbers, the target those of its whole numbers, and all have the same note.
    void find_plurals() {
        m_header = plural_header_for(m_all.locale.empty() ? m_all.reference : m_all.locale);
        if (m_header.empty())
            return;
        message_map known;
        for (std::size_t i = 0; i < m_all.messages.size(); ++i)
            known[{m_all.messages[i].catalog, m_all.messages[i].key}] = i;
        for (const auto& each : known) {
            const std::string& key = each.first.second;
            if (key.size() > 6 && key.compare(key.size() - 6, 6, ".other") == 0)
                find_plural(each.first.first, key.substr(0, key.size() - 6), known);
        }
    }

    void find_plural(const std::string& catalog, const std::string& key, const message_map& known) {
        const auto find = [&](const std::string& name) {
            const auto found = known.find({catalog, key + '.' + name});
            return found == known.end() ? nullptr : &m_all.messages[found->second];
        };
        plural_message result;
        result.key = key;
        const std::string singular = category_of(m_all.reference, 1);
        result.one = find(singular);
        result.other = find("other");
        if (singular == "other" || result.one == nullptr || !is_text(result.one->source) ||
            !is_text(result.other->source) || find("*") != nullptr)
            return;
        std::set<std::string> wanted;  // of the target
        for (const auto& names : categories_of_forms(
                 plural_header(m_header), m_all.locale.empty() ? m_all.reference : m_all.locale)) {
            wanted.insert(names[0]);
            result.forms.push_back(find(names[0]));
        }
        // Messages of the target that are no form of a whole number stay messages of their own.
        const bool has_target =
            std::any_of(result.forms.begin(), result.forms.end(),
                        [](const auto* each) { return each != nullptr && each->target.exists; });
        if (has_target && !result.other->target.exists)
            return;
        std::set<std::string> metas;  // of the target
        for (const std::string& name : all_categories) {
            const exchanged_message* const each = find(name);
            if (each == nullptr)
                continue;
            const bool is_source = each == result.one || each == result.other;
            const bool is_form = wanted.count(name) != 0;
            if (each->source.exists != is_source ||
                (is_source && each->source.meta != result.one->source.meta) ||
                (is_form && each->target.exists && !add_meta(metas, each->target.meta)) ||
                (each->target.exists && (!is_form || !is_text(each->target)) && name != "other") ||
                (each->target.exists && is_form && each->target.pieces.empty()))
                return;
        }
        take_plural(result, known, catalog, wanted);
    }

    void take_plural(const plural_message& found, const message_map& known,
                     const std::string& catalog, const std::set<std::string>& wanted) {
        std::size_t first = m_all.messages.size();
        for (const std::string& name : all_categories) {
            const auto each = known.find({catalog, found.key + '.' + name});
            // The target's `other` may be for fractions only. It is an entry of its own as well,
            // unless reading the plural makes it again.
            if (each == known.end() ||
                (name == "other" && wanted.count(name) == 0 && found.other->target.exists &&
                 !is_equal(found.other->target, substitute(catalog, found.key, known))))
                continue;
            first = std::min(first, each->second);
            m_in_plural.insert(each->second);
        }
        m_plurals[first] = found;
    }

    // What a reader takes for a missing `other`.
    const exchanged_text* substitute(const std::string& catalog, const std::string& key,
                                     const message_map& known) const {
        for (const char* const name : substitutes_for_other) {
            const auto each = known.find({catalog, key + '.' + name});
            if (each != known.end() && m_all.messages[each->second].target.exists)
                return &m_all.messages[each->second].target;
        }
        return nullptr;
    }

    static bool is_equal(const exchanged_text& text, const exchanged_text* other) {
        return other != nullptr && text.meta == other->meta &&
               content_of(text.pieces) == content_of(other->pieces);
    }

    static bool add_meta(std::set<std::string>& metas, const std::string& meta) {
        metas.insert(meta);
        return metas.size() == 1;
    }

    static bool is_text(const exchanged_text& text) { return text.exists && !text.pieces.empty(); }

    void write_header() {
        std::string text = "Project-Id-Version: messages\n"
                           "Report-Msgid-Bugs-To: \n"
                           "PO-Revision-Date: 2000-01-01 00:00+0000\n"
                           "Last-Translator: unknown\n"
                           "Language-Team: none\n";
        text +=
            "Language: " +
            (is_usual_locale(m_all.locale) && m_all.locale != "." ? normalized_locale(m_all.locale)
                                                                  : "") +
            "\n"
            "MIME-Version: 1.0\n"
            "Content-Type: text/plain; charset=UTF-8\n"
            "Content-Transfer-Encoding: 8bit\n";
        if (!m_header.empty() && !m_all.locale.empty())
            text += "Plural-Forms: " + m_header + '\n';
        text += std::string("X-Generator: tova-xmc ") + version + '\n';
        text += "X-Tova-Reference: " + portable(m_all.reference) + '\n';
        text += "X-Tova-Locale: " + portable(m_all.locale) + '\n';
        m_text = "msgid \"\"\nmsgstr " + po_string(text);
    }

    void write_comments(const exchanged_text& source, const exchanged_text* target,
                        const placeholders& codes) {
        m_text += '\n';
        if (target != nullptr && !target->meta.empty())
            m_text += std::string("# ") + note_prefix + portable(target->meta) + '\n';
        for (const std::string& each : codes.target_definitions())
            m_text += "# " + each + '\n';
        if (!source.meta.empty())
            m_text += std::string("#. ") + note_prefix + portable(source.meta) + '\n';
        if (!source.exists)
            m_text += std::string("#. ") + not_in_reference + '\n';
        for (const std::string& each : codes.source_definitions())
            m_text += "#. " + each + '\n';
        if (codes.any())
            m_text += "#, python-brace-format\n";
    }

    void write_single(const exchanged_message& each) {
        const placeholders codes({&each.source}, {&each.target});
        write_comments(each.source, &each.target, codes);
        m_text += "msgctxt " + po_string(context_of(each.catalog, each.key));
        const std::string id =
            each.source.exists ? codes.source_text(each.source) : portable(each.key);
        m_text += "msgid " + po_string(id);
        m_text += "msgstr " + po_string(codes.target_text(each.target));
    }

    void write_plural(const plural_message& each) {
        std::vector<const exchanged_text*> targets;
        for (const exchanged_message* form : each.forms)
            if (form != nullptr)
                targets.push_back(&form->target);
        const placeholders codes({&each.other->source, &each.one->source}, targets);
        const auto target = std::find_if(targets.begin(), targets.end(),
                                         [](const auto* one) { return one->exists; });
        write_comments(each.one->source, target == targets.end() ? nullptr : *target, codes);
        m_text += "msgctxt " + po_string(context_of(each.one->catalog, each.key + ".*"));
        m_text += "msgid " + po_string(codes.source_text(each.one->source));
        m_text += "msgid_plural " + po_string(codes.source_text(each.other->source));
        for (std::size_t i = 0; i < each.forms.size(); ++i)
            m_text +=
                "msgstr[" + std::to_string(i) + "] " +
                po_string(each.forms[i] == nullptr ? "" : codes.target_text(each.forms[i]->target));
    }

    const exchange& m_all;
    std::string m_header;
    std::map<std::size_t, plural_message> m_plurals;  // by their first message
    std::set<std::size_t> m_in_plural;
    std::string m_text;
};

struct entry {
    std::size_t line = 0;
    std::vector<std::string> comments;   // "#" without a mark
    std::vector<std::string> extracted;  // "#."
    std::set<std::string> flags;
    bool has_context = false;
    bool is_obsolete = false;
    bool has_id = false;
    bool has_plural = false;
    std::string context;
    std::string id;
    std::string plural;
    std::map<std::size_t, std::string> texts;
};

// The entries of a file, in UTF-8 if that is what its header says.
class po_parser {
public:
    po_parser(const std::string& bytes, const std::string& path) : m_path(path) {
        std::string_view text = bytes;
        if (text.substr(0, 3) == "\xEF\xBB\xBF")
            text.remove_prefix(3);
        while (!text.empty()) {
            const auto end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            ++m_line;
            while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
                line.remove_suffix(1);
            while (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
                line.remove_prefix(1);
            take(line);
        }
        finish();
    }

    std::vector<entry> entries;

private:
    [[noreturn]] void fail(const std::string& reason) const {
        throw file_error(m_path + ':' + std::to_string(m_line) + ": " + reason);
    }

    void finish() {
        if (m_now.has_id && !m_now.is_obsolete)
            entries.push_back(std::move(m_now));
        m_now = entry();
        m_string = nullptr;
    }

    void take(std::string_view line) {
        if (line.empty())
            return;
        if (line.substr(0, 2) == "#~") {
            if (m_now.has_id && !m_now.is_obsolete)
                finish();
            m_now.is_obsolete = true;
            return;
        }
        if (m_now.is_obsolete)
            finish();
        if (line[0] == '#')
            take_comment(line);
        else if (line[0] == '"')
            take_string(line);
        else
            take_keyword(line);
    }

    void take_comment(std::string_view line) {
        if (!m_now.texts.empty())
            finish();
        const char mark = line.size() > 1 ? line[1] : ' ';
        const std::string_view rest = line.substr(std::min<std::size_t>(line.size(), 2));
        if (mark == ',') {
            for (std::size_t begin = 0; begin <= rest.size();) {
                const auto end = std::min(rest.find(',', begin), rest.size());
                std::string_view flag = rest.substr(begin, end - begin);
                while (!flag.empty() && flag.front() == ' ')
                    flag.remove_prefix(1);
                m_now.flags.emplace(flag);
                begin = end + 1;
            }
        } else if (mark == '.') {
            m_now.extracted.emplace_back(rest.substr(0, 1) == " " ? rest.substr(1) : rest);
        } else if (mark == ' ') {
            m_now.comments.emplace_back(rest);
        }
    }

    void take_keyword(std::string_view line) {
        const auto begins = [&](std::string_view word) {
            if (line.substr(0, word.size()) != word)
                return false;
            line.remove_prefix(word.size());
            return true;
        };
        if (begins("msgctxt")) {
            if (!m_now.texts.empty())
                finish();
            m_now.has_context = true;
            m_string = &m_now.context;
        } else if (begins("msgid_plural")) {
            m_now.has_plural = true;
            m_string = &m_now.plural;
        } else if (begins("msgid")) {
            if (!m_now.texts.empty())
                finish();
            m_now.has_id = true;
            m_now.line = m_line;
            m_string = &m_now.id;
        } else if (begins("msgstr")) {
            if (!m_now.has_id)
                fail("\"msgstr\" without \"msgid\"");
            std::size_t number = 0;
            if (begins("[")) {
                while (!line.empty() && line[0] >= '0' && line[0] <= '9' && number < 1000) {
                    number = number * 10 + static_cast<std::size_t>(line[0] - '0');
                    line.remove_prefix(1);
                }
                if (!begins("]"))
                    fail("\"]\" is missing");
            }
            m_string = &m_now.texts[number];
        } else {
            fail("neither a comment, a keyword nor a string");
        }
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
            line.remove_prefix(1);
        take_string(line);
    }

    void take_string(std::string_view line) {
        if (m_string == nullptr || line.size() < 2 || line.front() != '"' || line.back() != '"')
            fail(line.empty() || line.front() != '"' || m_string == nullptr
                     ? "a string in quotes is missing"
                     : "the string is not closed: \" is missing");
        line = line.substr(1, line.size() - 2);
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"')
                fail("a quote within a string: write \\\"");
            if (line[i] != '\\') {
                *m_string += line[i];
                continue;
            }
            if (++i == line.size())
                fail("\"\\\" at the end of a string");
            *m_string += escaped(line, i);
        }
    }

    // The character of an escape; `i` is left at its last byte.
    char escaped(std::string_view line, std::size_t& i) const {
        const char* const names = "abfnrtv";
        const char* const found = std::strchr(names, line[i]);
        if (found != nullptr)
            return "\a\b\f\n\r\t\v"[found - names];
        const bool is_hex = line[i] == 'x';
        if (!is_hex && (line[i] < '0' || line[i] > '7'))
            return line[i];
        const std::size_t begin = i + is_hex;
        const std::size_t most = is_hex ? 2 : 3;
        std::size_t end = begin;
        const std::string_view digits = is_hex ? "0123456789abcdefABCDEF" : "01234567";
        while (end < line.size() && end < begin + most && digits.find(line[end]) != digits.npos)
            ++end;
        i = end - 1;
        return static_cast<char>(std::strtoul(std::string(line.substr(begin, end - begin)).c_str(),
                                              nullptr, is_hex ? 16 : 8));
    }

    const std::string& m_path;
    std::size_t m_line = 0;
    entry m_now;
    std::string* m_string = nullptr;
};

// The header as its fields.
std::map<std::string, std::string> header_fields(const std::string& text) {
    std::map<std::string, std::string> result;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const auto colon = line.find(':');
        if (colon != line.npos) {
            const auto value = line.find_first_not_of(' ', colon + 1);
            result[line.substr(0, colon)] = value == line.npos ? "" : line.substr(value);
        }
        begin = end + 1;
    }
    return result;
}

const entry* header_of(const std::vector<entry>& entries) {
    const auto found = std::find_if(entries.begin(), entries.end(), [](const entry& each) {
        return each.id.empty() && !each.has_context;
    });
    return found == entries.end() || found->texts.empty() ? nullptr : &*found;
}

std::string charset_of(const std::map<std::string, std::string>& fields) {
    const auto type = fields.find("Content-Type");
    const auto at = type == fields.end() ? std::string::npos : type->second.find("charset=");
    return at == std::string::npos ? "" : type->second.substr(at + 8);
}

std::string to_utf8(const std::string& bytes, const std::string& charset, const std::string& path) {
    const iconv_t converter = ::iconv_open("UTF-8", charset.c_str());
    // POSIX defines the descriptor of a failure as this number.
    if (converter == reinterpret_cast<iconv_t>(-1))  // NOLINT(performance-no-int-to-ptr)
        throw file_error(path + ": unknown charset \"" + charset + '"');
    std::string result(bytes.size() * 4 + 4, '\0');
    std::string input = bytes;
    char* from = &input[0];
    char* to = &result[0];
    std::size_t from_size = input.size();
    std::size_t to_size = result.size();
    const bool is_good =
        ::iconv(converter, &from, &from_size, &to, &to_size) != static_cast<std::size_t>(-1);
    ::iconv_close(converter);
    if (!is_good)
        throw file_error(path + ": is not in the charset \"" + charset + "\" of its header");
    result.resize(result.size() - to_size);
    return result;
}

bool is_utf8_name(std::string charset) {
    std::transform(charset.begin(), charset.end(), charset.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return charset.empty() || charset == "utf-8" || charset == "utf8" || charset == "us-ascii" ||
           charset == "ascii" || charset == "charset";
}

class po_reader {
public:
    po_reader(const std::string& bytes, const std::string& path, const po_defaults& defaults)
        : m_defaults(defaults) {
        m_entries = po_parser(bytes, path).entries;
        read_header();
        const std::string charset = charset_of(m_fields);
        if (!is_utf8_name(charset)) {
            m_entries = po_parser(to_utf8(bytes, charset, path), path).entries;
            read_header();
        }
        const auto own = m_fields.find("X-Tova-Locale");
        m_is_own = own != m_fields.end();
        const std::string& reference = m_fields["X-Tova-Reference"];
        m_result.all.reference =
            m_is_own && !reference.empty() ? from_portable(reference) : defaults.reference;
        m_result.all.locale = !defaults.locale.empty() ? defaults.locale
                              : m_is_own && !own->second.empty()
                                  ? from_portable(own->second)
                                  : with_underscores(m_fields["Language"]);
        if (m_result.all.locale.empty())
            throw file_error(path + ": does not name its language; give it with --lang");
    }

    imported run() {
        for (const entry& each : m_entries) {
            if (each.id.empty() && !each.has_context)
                continue;
            m_entry = &each;
            m_is_fuzzy = each.flags.count("fuzzy") != 0;
            m_result.fuzzy += m_is_fuzzy;
            const std::string key = entry_key(each);
            if (!m_read.insert(key).second)
                report(key, appears_again);
            else if (m_is_own)
                read_own();
            else
                read_other();
        }
        if (m_is_own)
            complete_plurals();
        return std::move(m_result);
    }

private:
    void read_header() {
        const entry* const header = header_of(m_entries);
        m_fields = header_fields(header == nullptr ? std::string() : header->texts.begin()->second);
    }

    // Once for an entry: its source and its translations often say the same.
    void report(const std::string& subject, const std::string& text) {
        for (auto each = m_result.problems.rbegin();
             each != m_result.problems.rend() && each->line == m_entry->line; ++each)
            if (each->text == text)
                return;
        m_result.problems.push_back({m_entry->line, subject, text});
    }

    // The identity of an entry. In a file of our own it is the context alone.
    std::string entry_key(const entry& each) const {
        return m_is_own ? each.context : foreign_key(each) + (each.has_plural ? ".*" : "");
    }

    // As programs ask for the locale; other programs also write "-".
    static std::string with_underscores(std::string locale) {
        std::replace(locale.begin(), locale.end(), '-', '_');
        return locale;
    }

    static std::string foreign_key(const entry& each) {
        return each.id + (each.has_context ? '@' + each.context : std::string());
    }

    // The translation of a form, or none.
    const std::string* text(std::size_t form) const {
        const auto found = m_entry->texts.find(form);
        return m_is_fuzzy || found == m_entry->texts.end() || found->second.empty()
                   ? nullptr
                   : &found->second;
    }

    // The message of a key. One that appears again, as a plural's `other` may, is the same.
    exchanged_message& message(const std::string& catalog, const std::string& key) {
        const auto added = m_known.insert({{catalog, key}, m_result.all.messages.size()});
        if (added.second) {
            m_result.all.messages.emplace_back();
            m_result.all.messages.back().catalog = catalog;
            m_result.all.messages.back().key = key;
        }
        return m_result.all.messages[added.first->second];
    }

    void read_own() {
        const auto slash = m_entry->context.find('/');
        if (!m_entry->has_context || slash == std::string::npos) {
            report(m_entry->id, "the context is not CATALOG/KEY");
            return;
        }
        const std::string catalog = from_portable(m_entry->context.substr(0, slash));
        std::string key = from_portable(m_entry->context.substr(slash + 1));
        const bool is_brace = m_entry->flags.count("python-brace-format") != 0;
        const auto read = [&](const std::string& from, bool is_target) {
            exchanged_text result;
            std::string problem;
            if (is_brace) {
                definitions codes;
                for (const std::string& line : m_entry->extracted)
                    codes.add(line);
                for (const std::string& line : m_entry->comments)
                    if (is_target)
                        codes.add(line);
                result = codes.read(from, problem);
            } else {
                result.exists = true;
                add_text(result.pieces, from);
            }
            for (const std::string& line : is_target ? m_entry->comments : m_entry->extracted)
                if (line.compare(0, sizeof note_prefix - 1, note_prefix) == 0)
                    result.meta = from_portable(line.substr(sizeof note_prefix - 1));
            if (!problem.empty())
                report(key, problem);
            return result;
        };
        const bool is_in_reference = std::find(m_entry->extracted.begin(), m_entry->extracted.end(),
                                               not_in_reference) == m_entry->extracted.end();
        if (!m_entry->has_plural) {
            exchanged_message& one = message(catalog, key);
            if (is_in_reference)
                one.source = read(m_entry->id, false);
            const std::string* const target = text(0);
            if (target != nullptr)
                one.target = read(*target, true);
            m_result.untranslated += target == nullptr;
            return;
        }
        key = key.substr(0, key.rfind('.'));
        m_plurals.emplace_back(catalog, key);
        take_forms(catalog, key, read);
    }

    // The forms of a plural as messages.
    template <typename Read>
    void take_forms(const std::string& catalog, const std::string& key, Read read) {
        const auto take = [&](const std::string& name) -> exchanged_message& {
            return message(catalog, key + '.' + name);
        };
        const std::string singular = category_of(m_result.all.reference, 1);
        if (singular != "other")
            take(singular).source = read(m_entry->id, false);
        take("other").source = read(m_entry->plural, false);
        plural_header header(m_fields["Plural-Forms"]);
        const bool has_text =
            std::any_of(m_entry->texts.begin(), m_entry->texts.end(),
                        [this](const auto& each) { return text(each.first) != nullptr; });
        if (!header.is_valid() && !has_text) {
            ++m_result.untranslated;
            return;
        }
        if (!header.is_valid()) {
            header = plural_header(plural_header_for(m_result.all.locale));
            const bool fits = header.is_valid() && m_entry->texts.size() == header.count();
            report(key, std::string("no valid Plural-Forms in the header; ") +
                            (fits ? "the usual plural forms of " + m_result.all.locale + " are used"
                                  : "plural entries are left out"));
            if (!fits)
                return;
        }
        const auto forms = categories_of_forms(header, m_result.all.locale);
        bool is_complete = true;
        for (std::size_t i = 0; i < forms.size(); ++i) {
            const std::string* const form = text(i);
            is_complete = is_complete && form != nullptr;
            if (form == nullptr)
                continue;
            if (forms[i].empty())
                report(key,
                       "form " + std::to_string(i) + " is of no whole number in this language");
            for (const std::string& name : forms[i])
                take(name).target = read(*form, true);
        }
        m_result.untranslated += !is_complete;
    }

    void complete_plural(const std::string& catalog, const std::string& key) {
        exchanged_message& other = message(catalog, key + ".other");
        if (other.target.exists)
            return;
        for (const char* const name : substitutes_for_other) {
            const auto found = m_known.find({catalog, key + '.' + name});
            if (found == m_known.end() || !m_result.all.messages[found->second].target.exists)
                continue;
            other.target = m_result.all.messages[found->second].target;
            return;
        }
    }

    void complete_plurals() {
        for (const auto& each : m_plurals)
            complete_plural(each.first, each.second);
    }

    // The flag decides. Without one a `%` is text, unless the caller knows better.
    foreign_format format_of(const entry& each) {
        const auto has = [&](const char* flag) { return each.flags.count(flag) != 0; };
        if (has("python-brace-format"))
            return foreign_format::python_brace;
        if (has("python-format"))
            return foreign_format::python;
        if (has("c-format") || has("possible-c-format") || has("objc-format") || has("php-format"))
            return foreign_format::c;
        const std::string_view end = "-format";
        for (const std::string& flag : each.flags)
            if (flag.size() > end.size() &&
                flag.compare(flag.size() - end.size(), end.size(), end) == 0)
                return foreign_format::none;
        if (m_defaults.is_c_format)
            return foreign_format::c_unflagged;
        m_result.unflagged += has_conversion(each.id) || has_conversion(each.plural);
        return foreign_format::none;
    }

    void read_other() {
        const std::string key = foreign_key(*m_entry);
        const foreign_format format = format_of(*m_entry);
        const auto read = [&](const std::string& from, bool is_target) {
            std::vector<std::string> unknown;
            exchanged_text result = read_foreign(from, format, unknown);
            for (const std::string& each : unknown)
                report(key, each);
            for (const std::string& line : m_entry->extracted)
                if (!is_target)
                    result.meta += (result.meta.empty() ? "" : " ") + line;
            return result;
        };
        if (m_entry->has_plural) {
            take_forms(m_defaults.catalog, key, read);
            complete_plural(m_defaults.catalog, key);
            return;
        }
        exchanged_message& one = message(m_defaults.catalog, key);
        one.source = read(m_entry->id, false);
        const std::string* const target = text(0);
        if (target != nullptr)
            one.target = read(*target, true);
        m_result.untranslated += target == nullptr;
    }

    const po_defaults& m_defaults;
    std::vector<entry> m_entries;
    std::map<std::string, std::string> m_fields;
    bool m_is_own = false;
    bool m_is_fuzzy = false;
    const entry* m_entry = nullptr;
    std::set<std::string> m_read;  // the entries so far
    std::map<std::pair<std::string, std::string>, std::size_t> m_known;
    std::vector<std::pair<std::string, std::string>> m_plurals;
    imported m_result;
};

}  // namespace

std::string po_text(const exchange& all) {
    return po_writer(all).run();
}

imported read_po(const std::string& bytes, const std::string& path, const po_defaults& defaults) {
    return po_reader(bytes, path, defaults).run();
}

std::string po_language(const std::string& bytes) {
    // The header is the first entry. Its fields are strings of their own, or follow a written \n.
    const auto begin = bytes.find("msgid");
    const std::string_view header =
        std::string_view(bytes).substr(0, begin == bytes.npos ? 0 : bytes.find("\nmsgid", begin));
    const std::string_view field = "Language:";
    for (auto at = header.find(field); at != header.npos; at = header.find(field, at + 1)) {
        if (at == 0 || (header[at - 1] != '"' && header[at - 1] != 'n'))
            continue;
        const auto value = header.find_first_not_of(' ', at + field.size());
        if (value != header.npos)
            return std::string(
                header.substr(value, header.find_first_of("\\\" \n", value) - value));
    }
    return {};
}

}  // namespace tova_programs::xmc
