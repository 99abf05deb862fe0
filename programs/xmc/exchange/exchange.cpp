#include "xmc/exchange/exchange.hpp"

#include "xmc/model/locale.hpp"
#include "xmc/scanner/verdict.hpp"

#include <algorithm>
#include <map>
#include <tuple>

// Three parts: the messages of two locales side by side, texts as chunks, and chunks as text with
// `{name}`. An empty text that exists is `{empty}`, a code without content, because formats take an
// empty text for one that is not translated.

namespace tova_programs::xmc {

namespace {

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_identifier(std::string_view text) {
    return !text.empty() && is_letter(text[0]) && std::all_of(text.begin(), text.end(), [](char c) {
        return is_letter(c) || is_digit(c);
    });
}

std::string hex(char c) {
    const char* const digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    return {digits[byte / 16], digits[byte % 16]};
}

// The bytes of the character at a position that every format can carry, or 0: control characters,
// surrogates, the two noncharacters that XML forbids, and what is not UTF-8.
std::size_t carried_length(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) -> unsigned {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0;
    };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const unsigned first = byte(0);
    if (first < 0x80)
        return (first >= ' ' && first != 0x7F) || first == '\n' || first == '\t' ? 1 : 0;
    if (first >= 0xC2 && first < 0xE0)
        return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first < 0xF0) {
        const unsigned code = (first & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        const bool is_carried = code >= 0x800 && (code < 0xD800 || code > 0xDFFF) && code < 0xFFFE;
        return follows(1) && follows(2) && is_carried ? 3 : 0;
    }
    if (first >= 0xF0 && first < 0xF5) {
        const unsigned high = (first & 0x07) << 6 | (byte(1) & 0x3F);
        return follows(1) && follows(2) && follows(3) && high >= 0x10 && high < 0x110 ? 4 : 0;
    }
    return 0;
}

std::string byte_reference(char c) {
    return "&#" + std::to_string(static_cast<unsigned char>(c)) + ';';
}

// An argument as it is written in a catalog, with references for bytes that cannot be carried.
std::string argument_code(const piece& argument) {
    const std::string content = content_of({argument});
    std::string result;
    for (std::size_t i = 0; i < content.size();) {
        const std::size_t length = carried_length(content, i);
        result += length == 0 ? byte_reference(content[i]) : content.substr(i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

std::string identifier_for(std::string_view name) {
    std::string result;
    for (const char c : name)
        result += is_letter(c) || is_digit(c) ? c : '_';
    return result.empty() || is_digit(result[0]) ? "arg_" + result : result;
}

// What `{name}` means without a definition.
std::string plain_code(const std::string& name) {
    return "<arg name=\"" + name + "\"/>";
}

const char empty_code[] = "<empty/>";

std::vector<chunk> chunks_of(const exchanged_text& from) {
    if (from.exists && from.pieces.empty())
        return {{true, empty_code, "empty"}};
    return chunks_of(from.pieces);
}

}  // namespace

const char appears_again[] = "the message appears again; the first one counts";

exchange collect(const documents& files, const std::string& locale, const std::string& reference) {
    exchange result;
    result.locale = locale;
    result.reference = reference;
    const std::string wanted = normalized_locale(locale);
    const std::string origin = normalized_locale(reference);
    std::vector<std::string> catalogs;
    std::map<std::string, std::vector<exchanged_message>> messages;
    std::map<std::pair<std::string, std::string>, std::size_t> known;
    for (const placed_message& each : all_messages(files)) {
        const std::string of = normalized_locale(each.of->locale);
        const bool is_target = !locale.empty() && of == wanted;
        if (!is_target && of != origin)
            continue;
        const std::string catalog(each.of->name);
        const std::string key(each.what->name);
        if (messages.find(catalog) == messages.end())
            catalogs.push_back(catalog);
        std::vector<exchanged_message>& list = messages[catalog];
        const auto added = known.insert({{catalog, key}, list.size()});
        if (added.second) {
            list.emplace_back();
            list.back().catalog = catalog;
            list.back().key = key;
        }
        exchanged_message& one = list[added.first->second];
        const exchanged_text text = {true, pieces_of(*each.file, *each.what),
                                     std::string(each.what->meta)};
        if (is_target && !one.target.exists)
            one.target = text;
        if (of == origin && !one.source.exists)
            one.source = text;
    }
    for (const std::string& catalog : catalogs)
        for (exchanged_message& each : messages[catalog])
            result.messages.push_back(std::move(each));
    return result;
}

namespace {

void write_side(writer& out, const exchange& all, const std::string& locale,
                exchanged_text exchanged_message::*side) {
    const std::string* open = nullptr;
    for (const exchanged_message& each : all.messages) {
        if (!(each.*side).exists)
            continue;
        if (open == nullptr || *open != each.catalog) {
            if (open != nullptr)
                out.end_catalog();
            out.begin_catalog(each.catalog, locale);
            open = &each.catalog;
        }
        out.message(each.key, (each.*side).meta, (each.*side).pieces);
    }
    if (open != nullptr)
        out.end_catalog();
}

}  // namespace

std::string catalogs_of(const exchange& all, bool with_sources) {
    writer out;
    write_side(out, all, all.locale, &exchanged_message::target);
    if (with_sources)
        write_side(out, all, all.reference, &exchanged_message::source);
    // A file without a catalog would not load.
    if (out.is_empty()) {
        out.begin_catalog(all.messages.empty() ? "messages" : all.messages[0].catalog, all.locale);
        out.end_catalog();
    }
    return out.text();
}

std::vector<chunk> chunks_of(const std::vector<piece>& pieces) {
    std::vector<chunk> result;
    for (const piece& each : pieces) {
        if (each.is_argument) {
            result.push_back({true, argument_code(each), identifier_for(each.text)});
            continue;
        }
        for (std::size_t i = 0; i < each.text.size();) {
            const std::size_t length = carried_length(each.text, i);
            if (length == 0) {
                const char byte = each.text[i++];
                result.push_back({true, byte_reference(byte), "byte_" + hex(byte)});
                continue;
            }
            if (result.empty() || result.back().is_code)
                result.emplace_back();
            result.back().text += each.text.substr(i, length);
            i += length;
        }
    }
    return result;
}

void add_text(std::vector<piece>& pieces, std::string_view text) {
    if (text.empty())
        return;
    if (pieces.empty() || pieces.back().is_argument)
        pieces.emplace_back();
    pieces.back().text += text;
}

bool add_code(std::vector<piece>& pieces, const std::string& content) {
    if (content == empty_code)
        return true;
    const document file("", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a\" "
                            "lang=\"en\"><msg name=\"m\">" +
                                content + "</msg></catalog></xmc>");
    if (verdict_of(file.tokens(), [](auto, auto) { return true; }).kind != load_kind::no_error ||
        file.messages().size() != 1 || file.catalogs().size() != 1)
        return false;
    for (piece& each : pieces_of(file, file.messages()[0])) {
        if (each.is_argument)
            pieces.push_back(std::move(each));
        else
            add_text(pieces, each.text);
    }
    return true;
}

std::string portable(std::string_view text, std::string_view also) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = carried_length(text, i);
        const char c = text[i];
        const bool is_end = i == 0 || i + 1 == text.size();
        if (length == 0 || c == '\n' || c == '\t' || c == '\\' || (c == ' ' && is_end) ||
            also.find(c) != also.npos)
            result += "\\x" + hex(c);
        else
            result += text.substr(i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

std::string from_portable(std::string_view text) {
    const auto digit = [](char c) {
        return is_digit(c) ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    };
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x' &&
            digit(text[i + 2]) >= 0 && digit(text[i + 3]) >= 0) {
            result += static_cast<char>(digit(text[i + 2]) * 16 + digit(text[i + 3]));
            i += 3;
        } else {
            result += text[i];
        }
    }
    return result;
}

placeholders::placeholders(const std::vector<const exchanged_text*>& sources,
                           const std::vector<const exchanged_text*>& targets) {
    for (const exchanged_text* each : sources)
        for (const chunk& one : chunks_of(*each))
            if (one.is_code)
                add_source(one);
    std::vector<chunk> chunks;
    for (const exchanged_text* each : targets)
        for (const chunk& one : chunks_of(*each))
            if (one.is_code)
                chunks.push_back(one);
    add_targets(chunks);
}

placeholders::code& placeholders::add(const std::string& base) {
    std::string name = base;
    const auto is_taken = [this](const std::string& wanted) {
        return std::any_of(m_codes.begin(), m_codes.end(),
                           [&](const code& each) { return each.name == wanted; });
    };
    for (int number = 2; is_taken(name); ++number)
        name = base + '_' + std::to_string(number);
    m_codes.emplace_back();
    m_codes.back().name = name;
    m_codes.back().base = base;
    return m_codes.back();
}

void placeholders::add_source(const chunk& each) {
    const bool is_known = std::any_of(m_codes.begin(), m_codes.end(),
                                      [&](const code& one) { return one.source == each.text; });
    if (!is_known)
        add(each.name).source = each.text;
}

// Codes that the source also has come first. Each of the others takes the name of a source code
// that the target lacks, if one has the same argument.
void placeholders::add_targets(const std::vector<chunk>& chunks) {
    for (const chunk& each : chunks)
        for (code& one : m_codes)
            if (one.source == each.text)
                one.is_in_target = true;
    for (const chunk& each : chunks) {
        const auto is_same = [&](const code& one) {
            return one.target.empty() ? one.source == each.text : one.target == each.text;
        };
        if (std::any_of(m_codes.begin(), m_codes.end(), is_same))
            continue;
        const auto other = std::find_if(m_codes.begin(), m_codes.end(), [&](const code& one) {
            return !one.is_in_target && one.base == each.name;
        });
        code& one = other == m_codes.end() ? add(each.name) : *other;
        one.target = each.text;
        one.is_in_target = true;
    }
}

std::string placeholders::text(const exchanged_text& from, bool is_target) const {
    std::string result;
    for (const chunk& each : chunks_of(from)) {
        if (each.is_code) {
            const auto found = std::find_if(m_codes.begin(), m_codes.end(), [&](const code& one) {
                return (is_target && !one.target.empty() ? one.target : one.source) == each.text;
            });
            result += '{' + found->name + '}';
            continue;
        }
        for (const char c : each.text)
            result += any() && (c == '{' || c == '}') ? std::string(2, c) : std::string(1, c);
    }
    return result;
}

std::vector<std::string> placeholders::source_definitions() const {
    std::vector<std::string> result;
    for (const code& each : m_codes)
        if (!each.source.empty() && each.source != plain_code(each.name))
            result.push_back('{' + each.name + "} = " + each.source);
    return result;
}

std::vector<std::string> placeholders::target_definitions() const {
    std::vector<std::string> result;
    for (const code& each : m_codes)
        if (!each.target.empty() && (!each.source.empty() || each.target != plain_code(each.name)))
            result.push_back('{' + each.name + "} = " + each.target);
    return result;
}

bool definitions::add(std::string_view line) {
    const auto end = line.find("} = ");
    if (line.empty() || line[0] != '{' || end == line.npos ||
        !is_identifier(line.substr(1, end - 1)))
        return false;
    m_codes.emplace_back(line.substr(1, end - 1), line.substr(end + 4));
    return true;
}

exchanged_text definitions::read(std::string_view text, std::string& problem) const {
    exchanged_text result;
    result.exists = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if ((c == '{' || c == '}') && i + 1 < text.size() && text[i + 1] == c) {
            add_text(result.pieces, text.substr(i++, 1));
            continue;
        }
        const auto end = c == '{' ? text.find('}', i) : text.npos;
        const std::string name(end == text.npos ? "" : text.substr(i + 1, end - i - 1));
        if ((c == '{' || c == '}') && !is_identifier(name)) {
            problem = c == '{' && end != text.npos
                          ? "\"{" + name + "}\" is no argument"
                          : std::string("a single \"") + c + "\": write two for the character";
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        if (c != '{') {
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        const auto found = std::find_if(m_codes.rbegin(), m_codes.rend(),
                                        [&](const auto& each) { return each.first == name; });
        if (!add_code(result.pieces, found == m_codes.rend() ? plain_code(name) : found->second))
            problem = "the definition of \"{" + name + "}\" is no content of a message";
        i = end;
    }
    return result;
}

}  // namespace tova_programs::xmc
