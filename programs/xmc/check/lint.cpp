#include "xmc/check/lint.hpp"

#include "support/suggestion.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/model/options.hpp"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

// Three passes: over the bytes, over the catalogs and the tokens of each message, and over the
// arguments of each message. Every rule is a member function or a few lines of one.

namespace tova_programs::xmc {

namespace {

const int widest_field = 100;

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The bytes of the first character that is not valid UTF-8, or an empty span at the end.
span first_invalid(std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes[at]);
        if (lead < 0x80) {
            ++at;
            continue;
        }
        const std::size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
        const unsigned char second =
            at + 1 < bytes.size() ? static_cast<unsigned char>(bytes[at + 1]) : 0;
        bool is_valid = lead >= 0xC2 && lead <= 0xF4 && at + following < bytes.size();
        // Overlong forms, surrogates, and what is beyond the last character.
        is_valid = is_valid && !(lead == 0xE0 && second < 0xA0) &&
                   !(lead == 0xED && second > 0x9F) && !(lead == 0xF0 && second < 0x90) &&
                   !(lead == 0xF4 && second > 0x8F);
        for (std::size_t i = 1; is_valid && i <= following; ++i)
            is_valid = (static_cast<unsigned char>(bytes[at + i]) & 0xC0) == 0x80;
        if (!is_valid)
            return {static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(at + 1)};
        at += following + 1;
    }
    return {static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(at)};
}

// A character as UTF-8; empty for a number that is none, and for control characters above 127: that
// number was meant in another character set.
std::string utf8_of(unsigned long character) {
    std::string result;
    if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF) ||
        (character >= 0x80 && character < 0xA0))
        return result;
    if (character < 0x80)
        return std::string(1, static_cast<char>(character));
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    static const unsigned char leads[] = {0, 0xC0, 0xE0, 0xF0};
    result += static_cast<char>(leads[following] | character >> 6 * following);
    for (int i = following - 1; i >= 0; --i)
        result += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
    return result;
}

class linter {
public:
    explicit linter(const document& file) : m_file(file), m_found(file.problems()) {}

    std::vector<problem> run() {
        check_bytes();
        check_references();
        for (const catalog& each : m_file.catalogs())
            check_catalog(each);
        for (m_message = 0; m_message < m_file.messages().size(); ++m_message) {
            const message& each = m_file.messages()[m_message];
            check_message(each);
            check_whitespace(each);
            check_arguments(each);
        }
        name_messages();
        return std::move(m_found);
    }

private:
    problem& report(const char* rule, span bytes, std::string text) {
        problem found;
        found.rule = rule;
        found.bytes = bytes;
        found.message = m_message;
        found.text = std::move(text);
        m_found.push_back(std::move(found));
        return m_found.back();
    }

    // A problem within the bytes of a message belongs to that message.
    void name_messages() {
        const std::vector<message>& messages = m_file.messages();
        for (problem& each : m_found) {
            if (each.message != problem::no_message)
                continue;
            auto after = std::upper_bound(
                messages.begin(), messages.end(), each.bytes.begin,
                [](std::uint32_t offset, const message& one) { return offset < one.bytes.begin; });
            if (after != messages.begin() && each.bytes.begin < (--after)->bytes.end)
                each.message = static_cast<std::uint32_t>(after - messages.begin());
        }
    }

    void check_bytes() {
        const std::string_view bytes = m_file.bytes();
        const span invalid = first_invalid(bytes);
        if (invalid.size() != 0)
            report("not-utf8", invalid, "the file is not UTF-8 from here on");
        const auto nul = bytes.find('\0');
        if (nul != bytes.npos)
            report("nul-byte", at(nul, 1), "a NUL byte");
        const auto crlf = bytes.find("\r\n");
        if (crlf != bytes.npos)
            report("crlf", at(crlf, 2), "the lines end in CR and LF");
    }

    static span at(std::size_t begin, std::size_t size) {
        return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(begin + size)};
    }

    void check_references() {
        for (const odd_reference& each : m_file.tokens().odd_references()) {
            const std::string source(m_file.source(each.bytes));
            const bool is_hexadecimal = source[2] == 'x';
            const std::string digits = source.substr(is_hexadecimal ? 3 : 2);
            if (each.kind == odd_reference::octal) {
                report("octal-reference", each.bytes,
                       source + " is octal and stands for the byte " + std::to_string(each.value));
                continue;
            }
            const unsigned long number =
                std::strtoul(digits.c_str(), nullptr, is_hexadecimal ? 16 : 10);
            const std::string character = digits.size() > 9 ? "" : utf8_of(number);
            problem& found = report("reference-above-127", each.bytes,
                                    source + " stands for the byte " + std::to_string(each.value) +
                                        (character.empty() ? "" : ", not for " + character));
            if (!character.empty() && digits[0] != '0')
                found.fix.push_back({each.bytes, character});
        }
    }

    void check_catalog(const catalog& each) {
        if (!each.has_name || each.name.empty())
            report("catalog-without-name", each.tag, "a catalog without a name");
        if (!each.has_locale || each.locale.empty()) {
            report("lang-missing", each.tag, "a catalog without lang is never read");
            return;
        }
        if (!is_usual_locale(each.locale))
            report("lang-never-matches", each.locale_bytes,
                   "lang " + quoted(each.locale) + " is read only by a program that asks for it " +
                       "in exactly this form: write de or de_AT");
        if (each.locale.size() > 1 && each.locale.find_first_of("-.") != each.locale.npos)
            report("lang-separator", each.locale_bytes,
                   "lang " + quoted(each.locale) +
                       " is read, but not found by programs that ask "
                       "which locales a catalog has")
                .fix.push_back({each.locale_bytes, normalized_locale(each.locale)});
        if (each.locale.find('@') != each.locale.npos)
            report("lang-modifier", each.locale_bytes,
                   "lang " + quoted(each.locale) + " is found by exactly that locale only");
    }

    void check_message(const message& each) {
        if (each.name.empty())
            report("key-missing", each.tag, "a message without a name");
        if (m_file.items(each).empty())
            report("empty-message", each.tag, "the message has no text");
    }

    bool is_section(const token& piece) const {
        return piece.kind == token_kind::character && piece.bytes.size() > 9 &&
               m_file.source(piece.bytes).substr(0, 9) == "<![CDATA[";
    }

    // Walks the tokens between the start tag and the end.
    void check_whitespace(const message& each) {
        const std::vector<token>& tokens = m_file.tokens().tokens();
        const std::size_t end = each.tokens.first + each.tokens.count;
        std::size_t i = each.tokens.first;
        while (i < end && tokens[i].kind != token_kind::start_tag_end)
            ++i;
        const std::size_t first = ++i;
        // A message without its end has no space at its end either.
        const bool has_end = tokens[end - 1].bytes.size() != 0;
        bool has_content = false;         // a text or an argument came before
        bool follows_argument = false;    // directly, or with comments between
        std::uint32_t comment_begin = 0;  // of the first of these comments
        for (; i + 1 < end; ++i) {
            const token& piece = tokens[i];
            const bool is_last = has_end && i + 2 >= end;
            if (piece.kind == token_kind::comment) {
                if (follows_argument && comment_begin == 0)
                    comment_begin = piece.bytes.begin;
                continue;
            }
            if (piece.kind == token_kind::space) {
                const bool is_before_section = is_section(tokens[i + 1]);
                // Before a comment, the space keeps the comment from the tag.
                check_space(piece, i == first && tokens[i + 1].kind != token_kind::comment, is_last,
                            has_content && !is_before_section,
                            follows_argument ? comment_begin : 0);
                if (follows_argument && comment_begin == 0)
                    follows_argument = false;
            } else if (piece.kind == token_kind::character) {
                if (is_section(piece) && i > first && tokens[i - 1].kind == token_kind::space)
                    report("cdata-space", tokens[i - 1].bytes,
                           "whitespace before a section is shown as it is written");
                else if (!is_section(piece))
                    check_line_ends(piece, is_last);
                follows_argument = false;
                has_content = true;
            } else if (piece.kind == token_kind::element_end) {
                follows_argument = piece.value == "arg" || piece.value == "argument";
                has_content = true;
            }
            if (piece.kind != token_kind::space || !follows_argument)
                comment_begin = 0;
        }
    }

    void check_space(const token& space, bool is_first, bool is_last, bool has_content,
                     std::uint32_t comment_begin) {
        const std::string_view source = m_file.source(space.bytes);
        const bool has_line_end = source.find('\n') != source.npos;
        if (comment_begin != 0) {
            problem& found = report("comment-swallows-space", space.bytes,
                                    "the space after the comment is lost");
            found.fix.push_back({{comment_begin, comment_begin}, " "});
            found.fix.push_back({space.bytes, ""});
        } else if (is_last && has_content && has_line_end) {
            report("trailing-space", space.bytes, "the message ends in a space")
                .fix.push_back({space.bytes, ""});
        } else if (is_first && !has_line_end && !is_last) {
            report("leading-space-lost", space.bytes, "the space at the beginning is not shown");
        } else if (has_content && !has_line_end && space.bytes.size() > 1) {
            report("double-space-lost", space.bytes,
                   std::to_string(space.bytes.size()) + " spaces are shown as one");
        }
    }

    void check_line_ends(const token& text, bool is_last) {
        const std::string_view source = m_file.source(text.bytes);
        for (auto feed = source.find('\n'); feed != source.npos;
             feed = source.find('\n', feed + 1)) {
            const span bytes = at(text.bytes.begin + feed, 1);
            if (feed + 1 < source.size())
                report("line-end-kept", bytes, "the line end is shown");
            else if (is_last && feed != 0)
                report("trailing-space", bytes, "the message ends in a line end")
                    .fix.push_back({bytes, ""});
        }
    }

    void check_arguments(const message& each) {
        const auto items = m_file.items(each);
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (!items[i].is_argument)
                continue;
            check_name_and_type(items[i]);
            check_options(items[i]);
            check_pair(items, i);
        }
    }

    span whole(const attribute& each) const {
        return {each.name_bytes.begin, each.value_bytes.end + 1};
    }

    void check_name_and_type(const item& argument) {
        const auto attributes = m_file.attributes(argument);
        const attribute* name = nullptr;
        for (const attribute& each : attributes) {
            item_type type;
            if (each.name == "name")
                name = &each;
            else if (each.name == "type" && !parse_type(each.value, type))
                report("unknown-type", each.value_bytes,
                       "unknown type " + quoted(each.value) + " is read as string" +
                           did_you_mean(each.value, {"value", "string", "int", "double", "memory",
                                                     "memory_unit", "mem", "mem_unit", "metric",
                                                     "metric_unit", "duration"}));
            else if (each.name == "type" && is_reserved(type))
                report("reserved-type", each.value_bytes,
                       "type " + quoted(each.value) + " is always shown as ?invalid?");
        }
        if (argument.text.empty() && argument.type != item_type::text)
            report("arg-without-name", argument.bytes, "an argument without a name");
        if (name == nullptr)
            return;
        for (const attribute* each = attributes.begin(); each != name; ++each) {
            if (each->name == "type" || each->name == "name")
                continue;
            problem& found = report("attribute-before-name", each->name_bytes,
                                    quoted(each->name) + " is lost, because it comes before name");
            if (m_file.tokens().error().kind == xml_error::none)
                move_name_to_front(found, attributes[0], *name);
        }
    }

    void move_name_to_front(problem& found, const attribute& first, const attribute& name) {
        span old = whole(name);
        while (is_space(m_file.bytes()[old.begin - 1]))
            --old.begin;
        const std::uint32_t front = first.name_bytes.begin;
        found.fix.push_back({{front, front}, std::string(m_file.source(whole(name))) + ' '});
        found.fix.push_back({old, ""});
    }

    void check_options(const item& argument) {
        const std::vector<attribute> options = m_file.options(argument);
        if (options.empty() || is_reserved(argument.type))
            return;
        if (!is_formatted(argument.type)) {
            for (const attribute& each : options)
                report("unread-option", each.name_bytes,
                       argument.type == item_type::text
                           ? quoted(each.name) + " is shown as part of the text"
                           : quoted(each.name) + " has no effect on a string");
            return;
        }
        std::vector<const option_rule*> seen;
        for (const attribute& each : options) {
            const option_rule* const option = find_option(argument.type, each.name);
            if (option == nullptr) {
                report_unknown_option(argument, each);
                continue;
            }
            const bool is_repeated = std::find(seen.begin(), seen.end(), option) != seen.end();
            if (is_repeated)
                report("repeated-option", each.name_bytes,
                       quoted(option->name) + " is given twice");
            seen.push_back(option);
            const bool is_one_of_several =
                std::count_if(options.begin(), options.end(), [&](const attribute& other) {
                    return find_option(argument.type, other.name) == option;
                }) > 1;
            check_option(*option, each, is_one_of_several);
        }
        check_fieldsize_is_read(argument, options);
    }

    void report_unknown_option(const item& argument, const attribute& each) {
        std::vector<std::string> names;
        for (const option_rule& option : options_of(argument.type))
            if (option.kind != option_kind::nothing)
                names.push_back(option.name);
        std::string text = "type " + quoted(name_of(argument.type)) + " has no option " +
                           quoted(each.name) + did_you_mean(each.name, names) +
                           ": the argument is shown as ?invalid?";
        report("unknown-option", each.name_bytes, std::move(text));
    }

    // The full name of a repeated option would be an attribute that appears twice.
    void check_option(const option_rule& option, const attribute& each, bool is_repeated) {
        if (option.kind == option_kind::nothing) {
            report("unread-option", each.name_bytes, quoted(each.name) + " has no effect");
            return;
        }
        if (each.name != option.name) {
            problem& found = report("shortened-option", each.name_bytes,
                                    quoted(each.name) + " means " + quoted(option.name));
            if (!is_repeated)
                found.fix.push_back({each.name_bytes, option.name});
        }
        if (each.value.empty()) {
            report("empty-option", each.name_bytes, quoted(option.name) + " has no value");
            return;
        }
        const std::string word = word_of(option, each.value);
        if (word.empty()) {
            report("bad-option-value", each.value_bytes,
                   quoted(option.name) + " has no value " + quoted(each.value) +
                       did_you_mean(each.value, words_of(option)));
        } else if (option.kind == option_kind::natural || option.kind == option_kind::integer) {
            const long width = std::strtol(word.c_str(), nullptr, 10);
            if (width > widest_field || width < -widest_field)
                report("wide-field", each.value_bytes,
                       quoted(option.name) + " is " + word + ": more than " +
                           std::to_string(widest_field));
        } else if (word != each.value) {
            report("shortened-option", each.value_bytes,
                   quoted(each.value) + " means " + quoted(word))
                .fix.push_back({each.value_bytes, word});
        }
    }

    void check_fieldsize_is_read(const item& argument, const std::vector<attribute>& options) {
        const bool is_memory = argument.type == item_type::memory;
        if (!is_memory && argument.type != item_type::metric)
            return;
        long precision = is_memory ? 0 : 3;
        const attribute* field = nullptr;
        for (const attribute& each : options) {
            const option_rule* const option = find_option(argument.type, each.name);
            if (option != nullptr && option->name == std::string_view("precision"))
                precision = std::strtol(std::string(each.value).c_str(), nullptr, 10);
            if (option != nullptr && option->name == std::string_view("fieldsize"))
                field = &each;
        }
        if (precision == 0 && field != nullptr)
            report("unread-option", field->name_bytes,
                   "\"fieldsize\" has no effect where the precision is 0");
    }

    // What decides on the unit, written out and in order.
    std::map<std::string, std::string> unit_options(const item& argument) const {
        std::map<std::string, std::string> result;
        for (const attribute& each : m_file.options(argument)) {
            const option_rule* const option = find_option(argument.type, each.name);
            if (option == nullptr || option->kind == option_kind::nothing ||
                option->name == std::string_view("fieldsize") ||
                option->name == std::string_view("short_form"))
                continue;
            const std::string word = word_of(*option, each.value);
            result[option->name] = word.empty() ? std::string(each.value) : word;
        }
        return result;
    }

    // A unit belongs to the nearest number of the same name.
    void check_pair(const part<item>& items, std::size_t unit) {
        const item_type type = items[unit].type;
        if (type != item_type::memory_unit && type != item_type::metric_unit)
            return;
        const item_type wanted =
            type == item_type::memory_unit ? item_type::memory : item_type::metric;
        const item* nearest = nullptr;
        std::size_t nearest_distance = items.size();
        for (std::size_t i = 0; i < items.size(); ++i) {
            const std::size_t distance = i < unit ? unit - i : i - unit;
            if (items[i].is_argument && items[i].type == wanted &&
                items[i].text == items[unit].text && distance < nearest_distance) {
                nearest = &items[i];
                nearest_distance = distance;
            }
        }
        if (nearest != nullptr && unit_options(*nearest) != unit_options(items[unit]))
            report("unit-pair", items[unit].bytes,
                   "the number and the unit of " + quoted(items[unit].text) +
                       " have different options");
    }

    const document& m_file;
    std::vector<problem> m_found;
    std::uint32_t m_message = problem::no_message;
};

}  // namespace

std::vector<problem> lint(const document& file) {
    return linter(file).run();
}

}  // namespace tova_programs::xmc
