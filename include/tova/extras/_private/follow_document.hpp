/// @file
/// Turns the bytes of one followed document into events. `follow.hpp` is the interface.
///
/// `follow_document::feed` consumes the complete constructs in the bytes one by one (`step`), and
/// writes each in the form that the stream parser reads without loss:
///
/// - comments and instructions are left out, since the parser loses the byte after a comment;
/// - each text becomes an element "_t", so an element may contain texts anywhere, and several of
///   them;
/// - references become characters and are written as the entities that the parser reads;
/// - empty elements get an end tag, and names are encoded, since the parser rejects ":", "-" and
///   "." in names.
///
/// `deliver` appends a batch of this output to a temporary file, which the parser follows. A batch
/// fits into the parser's buffer, so the parser always reads it to its end and never has to resume
/// inside a construct. The parser checks the nesting and the attributes. It reports each child of
/// the root, with all of its content, when it closes; `take` turns its nodes into events.
///
/// Each decision depends only on the bytes before it, never on how many bytes follow. So the events
/// do not depend on how the writer splits its output.
///
/// An object belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/follow_event.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace extras {
namespace _private {

// A file descriptor that closes itself.
class descriptor {
public:
    descriptor() = default;
    descriptor(int number, const std::string& what) : m_number(number) {
        if (number < 0)
            throw std::system_error(errno, std::generic_category(), what);
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    ~descriptor() { reset(-1); }

    int get() const { return m_number; }
    void reset(int number) {
        if (m_number >= 0)
            ::close(m_number);
        m_number = number;
    }

private:
    int m_number = -1;
};

// The temporary file that the stream parser reads. The parser fetches each byte once, so the disk
// space of old ones is released.
class follow_spool {
public:
    follow_spool() : m_path(pattern()), m_file(::mkstemp(&m_path[0]), m_path) {
        try {
            // The parser requires a declaration and at least 50 bytes.
            append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + std::string(20, ' '));
        } catch (...) {
            ::unlink(m_path.c_str());
            throw;
        }
    }
    follow_spool(const follow_spool&) = delete;
    follow_spool& operator=(const follow_spool&) = delete;
    ~follow_spool() { ::unlink(m_path.c_str()); }

    const std::string& path() const { return m_path; }
    unsigned long size() const { return m_size; }

    void append(const std::string& bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_file.get(), bytes.data() + done, bytes.size() - done);
            if (count < 0 && errno != EINTR)
                throw std::system_error(errno, std::generic_category(), m_path);
            done += count < 0 ? 0 : static_cast<std::size_t>(count);
        }
        if (m_size - m_released > 1048576) {
            // A file system that cannot do this keeps the bytes.
            const unsigned long whole_pages = m_size / 4096 * 4096;
            static_cast<void>(::fallocate(m_file.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE,
                                          0, static_cast<off_t>(whole_pages)));
            m_released = whole_pages;
        }
        m_size += bytes.size();
    }

private:
    static std::string pattern() {
        const char* const folder = std::getenv("TMPDIR");
        return std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") +
               "/tova-follow-XXXXXX";
    }

    std::string m_path;
    descriptor m_file;
    unsigned long m_size = 0;
    unsigned long m_released = 0;
};

inline bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
inline bool is_name_byte(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == ':' || c == '-' || c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

// Encodes a name in the bytes that the parser accepts. The parser treats "include" specially. No
// name becomes "_t".
inline std::string encode_name(const std::string& name) {
    if (name == "include")
        return "_include";
    std::string result;
    for (const char c : name) {
        if (c == '_' || c == ':' || c == '-' || c == '.')
            result += '_';
        result += c == ':' ? 'c' : c == '-' ? 'd' : c == '.' ? 'p' : c;
    }
    return result;
}

inline strings::ustring8 decode_name(const std::string& name) {
    std::string result;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '_' || i + 1 == name.size()) {
            result += name[i];
            continue;
        }
        const char code = name[++i];
        result += code == 'c' ? ':' : code == 'd' ? '-' : code == 'p' ? '.' : code;
    }
    return result;
}

// Encodes a text or value so that the parser reads it back unchanged. At the beginning of a text
// the parser would drop whitespace and reject a `>`.
inline std::string encode_text(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (i == 0 && is_space(c))
            result += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c;
    }
    return result;
}

inline void append_utf8(std::string& text, unsigned long code) {
    const auto put = [&text](unsigned long byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
        return;
    }
    if (code < 0x800) {
        put(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            put(0xE0 | code >> 12);
        } else {
            put(0xF0 | code >> 18);
            put(0x80 | (code >> 12 & 0x3F));
        }
        put(0x80 | (code >> 6 & 0x3F));
    }
    put(0x80 | (code & 0x3F));
}

// Appends the text that the reference `&body;` means. Returns false if it is not a valid reference.
inline bool append_reference(std::string& text, const std::string& body) {
    static const struct {
        const char* name;
        char meaning;
    } entities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"apos", '\''}, {"quot", '"'}};
    for (const auto& entity : entities)
        if (body == entity.name) {
            text += entity.meaning;
            return true;
        }
    if (body.empty() || body[0] != '#')
        return false;
    const bool is_hexadecimal = body.size() > 1 && body[1] == 'x';
    const std::string digits = body.substr(is_hexadecimal ? 2 : 1);
    const char* const allowed = is_hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
    if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos)
        return false;
    const unsigned long code = std::strtoul(digits.c_str(), nullptr, is_hexadecimal ? 16 : 10);
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
        return false;
    append_utf8(text, code);
    return true;
}

class follow_document {
public:
    // Events are appended to `events`. After an error, input is skipped up to an element named in
    // `resume_at`.
    follow_document(const std::vector<strings::ustring8>& resume_at,
                    std::deque<follow_event>& events)
        : m_resume_at(resume_at), m_events(&events) {
        new_parser();
    }

    // Processes bytes that were added to the file.
    void feed(const char* bytes, std::size_t count) {
        if (m_has_failed)
            return;
        m_data.append(bytes, count);
        for (;;) {
            const outcome found = step();
            if (found == outcome::taken && m_batch.size() < batch_bytes())
                continue;
            // An error that the parser finds comes first, because its construct comes first.
            const bool is_fine = deliver();
            if (is_fine && found == outcome::failed) {
                fail(m_error, m_line, !m_has_ended);
                if (!m_has_failed)
                    consume(1);
            }
            if (m_has_failed || (is_fine && found == outcome::incomplete))
                break;
        }
        m_data.erase(0, m_at);
        m_at = 0;
        m_marks.clear();
    }

    // Ends the file. An open root is not an error, because logs are rotated before it closes.
    void finish() {
        const bool is_complete =
            m_depth <= 1 && m_data.empty() && m_section == nullptr && !m_has_text;
        if (!m_has_failed && !m_is_skipping && !is_complete)
            add_error(follow_error::incomplete, m_line);
    }

private:
    enum class outcome { taken, incomplete, failed };

    // Where a tag ends, in the temporary file and in `m_data`.
    struct mark {
        unsigned long spool_end;
        std::size_t end;
        unsigned first_line;
        unsigned last_line;
    };

    struct open_element {
        unsigned long id;
        strings::ustring8 name;
        unsigned line;
    };

    // Together less than the 65536 bytes of the parser's buffer.
    static constexpr std::size_t batch_bytes() { return 30000; }
    static constexpr std::size_t tag_bytes() { return 30000; }
    static constexpr std::size_t text_bytes() { return 4000; }  // up to six times that if encoded
    static constexpr std::size_t declaration_bytes() { return 1000; }
    static constexpr std::size_t reference_bytes() { return 12; }

    // --- Reading the file ------------------------------------------------------------------------

    outcome fails(follow_error error) {
        m_error = error;
        return outcome::failed;
    }

    void consume(std::size_t count) {
        const auto begin = m_data.begin() + static_cast<std::ptrdiff_t>(m_at);
        m_line += static_cast<unsigned>(
            std::count(begin, begin + static_cast<std::ptrdiff_t>(count), '\n'));
        m_at += count;
    }

    // Whether the bytes at the current position are `word`. `incomplete` if they end inside it.
    outcome matches(const char* word) const {
        const std::size_t length = std::strlen(word);
        const std::size_t count = std::min(length, m_data.size() - m_at);
        if (m_data.compare(m_at, count, word, count) != 0)
            return outcome::failed;
        return count == length ? outcome::taken : outcome::incomplete;
    }

    // Consumes the next construct, or a part of it that can be consumed safely.
    outcome step() {
        if (m_is_skipping)
            return skip();
        if (m_section != nullptr)
            return section();
        if (!m_has_begun)
            return begin();
        if (m_at == m_data.size())
            return outcome::incomplete;
        return m_data[m_at] == '<' ? markup() : characters();
    }

    // A byte order mark, whitespace and the declaration.
    outcome begin() {
        if (m_is_at_start) {
            const outcome found = matches("\xEF\xBB\xBF");
            if (found == outcome::incomplete)
                return found;
            m_at += found == outcome::taken ? 3 : 0;
            m_is_at_start = false;
        }
        while (m_at < m_data.size() && is_space(m_data[m_at]))
            consume(1);
        if (m_at == m_data.size())
            return outcome::incomplete;
        if (m_data[m_at] != '<')
            return fails(follow_error::not_xml);

        const outcome found = matches("<?xml");
        const bool ends_after_name = found == outcome::taken && m_at + 5 == m_data.size();
        if (found == outcome::incomplete || ends_after_name)
            return outcome::incomplete;
        if (found == outcome::taken && is_space(m_data[m_at + 5])) {
            const std::size_t end = m_data.find("?>", m_at);
            if (std::min(end, m_data.size()) - m_at > declaration_bytes())
                return fails(follow_error::syntax_error);
            if (end == std::string::npos)
                return outcome::incomplete;
            if (!has_known_encoding(m_data.substr(m_at, end - m_at)))
                return fails(follow_error::unsupported_encoding);
            consume(end + 2 - m_at);
        }
        m_has_begun = true;
        return outcome::taken;
    }

    static bool has_known_encoding(const std::string& declaration) {
        std::size_t at = declaration.find("encoding");
        if (at == std::string::npos)
            return true;
        at = declaration.find_first_of("'\"", at);
        if (at == std::string::npos)
            return false;
        std::string encoding =
            declaration.substr(at + 1, declaration.find(declaration[at], at + 1) - at - 1);
        for (char& c : encoding)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        return encoding == "utf-8" || encoding == "utf8" || encoding == "us-ascii" ||
               encoding == "ascii";
    }

    outcome markup() {
        if (m_data.size() - m_at < 2)
            return outcome::incomplete;
        if (m_data[m_at + 1] == '?') {
            consume(2);
            m_section = "?>";
            return outcome::taken;
        }
        return m_data[m_at + 1] == '!' ? declaration() : text_or_tag();
    }

    // A comment, a CDATA section or the document type, which is allowed only before the root.
    outcome declaration() {
        const outcome comment = matches("<!--");
        const outcome data = matches("<![CDATA[");
        if (comment == outcome::incomplete || data == outcome::incomplete)
            return outcome::incomplete;
        if (comment == outcome::taken) {
            consume(4);
            m_section = "--";
            return outcome::taken;
        }
        if (data == outcome::taken && m_depth > 0) {
            begin_text();
            m_has_text = true;
            consume(9);
            m_section = "]]>";
            return outcome::taken;
        }
        if (m_has_ended)
            return fails(follow_error::data_after_root);
        return m_has_root || data == outcome::taken ? fails(follow_error::syntax_error)
                                                    : document_type();
    }

    // Ends at the first `>` outside of quotes, comments and inner declarations.
    outcome document_type() {
        unsigned depth = 0;
        char quote = '\0';
        const std::size_t limit = std::min(m_data.size(), m_at + tag_bytes() + 1);
        for (std::size_t at = m_at; at < limit; ++at) {
            const char c = m_data[at];
            if (quote != '\0') {
                quote = c == quote ? '\0' : quote;
            } else if (m_data.compare(at, 4, "<!--") == 0) {
                const std::size_t end = m_data.find("-->", at + 4);
                at = end == std::string::npos ? limit : end + 2;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '<') {
                ++depth;
            } else if (c == '>' && --depth == 0) {
                consume(at + 1 - m_at);
                return outcome::taken;
            }
        }
        return need_more(limit);
    }

    // Returns the outcome for a tag that does not end before `limit`.
    outcome need_more(std::size_t limit) {
        return limit - m_at > tag_bytes() ? fails(follow_error::too_long) : outcome::incomplete;
    }

    // Consumes the rest of a comment, an instruction or a CDATA section, as far as it is there.
    outcome section() {
        const std::size_t length = std::strlen(m_section);
        const std::size_t found = m_data.find(m_section, m_at);
        const bool is_comment = m_section[0] == '-';
        if (found == std::string::npos || (is_comment && found + 2 == m_data.size())) {
            const std::size_t keep = is_comment ? 2 : length - 1;
            const std::size_t rest = m_data.size() - m_at;
            take_section(rest > keep ? rest - keep : 0);
            return outcome::incomplete;
        }
        take_section(found - m_at);
        if (is_comment && m_data[found + 2] != '>')
            return fails(follow_error::syntax_error);
        consume(is_comment ? 3 : length);
        m_section = nullptr;
        return outcome::taken;
    }

    void take_section(std::size_t count) {
        if (m_section[0] == ']')
            m_text.append(m_data, m_at, count);
        consume(count);
    }

    void begin_text() {
        if (m_text.empty())
            m_text_line = m_line;
    }

    // Consumes a reference, or text up to the next reference or tag. The text is collected until a
    // tag follows.
    outcome characters() {
        if (m_depth == 0) {
            if (!is_space(m_data[m_at]))
                return fails(m_has_ended ? follow_error::data_after_root
                                         : follow_error::syntax_error);
            consume(1);
            return outcome::taken;
        }
        begin_text();
        if (m_data[m_at] == '&') {
            std::size_t at = m_at;
            const outcome found = reference(at, m_data.size(), m_text);
            if (found == outcome::taken) {
                m_has_text = true;
                consume(at - m_at);
            }
            return found;
        }
        const std::size_t end = std::min(m_data.find_first_of("<&", m_at), m_data.size());
        for (std::size_t at = m_at; at < end && !m_has_text; ++at)
            m_has_text = !is_space(m_data[at]);
        m_text.append(m_data, m_at, end - m_at);
        consume(end - m_at);
        return outcome::taken;
    }

    // Appends the text that the reference at `at` means, and moves `at` past it.
    outcome reference(std::size_t& at, std::size_t limit, std::string& text) {
        std::size_t end = at + 1;
        while (end < limit && end - at <= reference_bytes() &&
               (m_data[end] == '#' || is_name_byte(m_data[end])))
            ++end;
        if (end - at > reference_bytes())
            return fails(follow_error::invalid_reference);
        if (end == limit)
            return outcome::incomplete;
        if (m_data[end] != ';' || !append_reference(text, m_data.substr(at + 1, end - at - 1)))
            return fails(follow_error::invalid_reference);
        at = end + 1;
        return outcome::taken;
    }

    // Writes the text before a tag, one piece at a time, and then the tag.
    outcome text_or_tag() {
        if (m_has_ended)
            return fails(follow_error::data_after_root);
        if (m_has_text && !m_text.empty()) {
            const std::size_t length = std::min(m_text.size() - m_text_at, text_bytes());
            m_batch += "<_t>" + encode_text(m_text.substr(m_text_at, length)) + "</_t>";
            m_lines.push_back(m_text_line);
            m_text_at += length;
            if (m_text_at < m_text.size())
                return outcome::taken;
        }
        forget_text();
        return m_data[m_at + 1] == '/' ? end_tag() : start_tag();
    }

    void forget_text() {
        m_text.clear();
        m_text_at = 0;
        m_has_text = false;
    }

    // A tag is read from its beginning each time, up to this limit: the end of the data, or the
    // point at which the tag is too long.
    std::size_t tag_limit() const { return std::min(m_data.size(), m_at + tag_bytes() + 1); }

    std::string read_name(std::size_t& at, std::size_t limit) const {
        const std::size_t begin = at;
        while (at < limit && is_name_byte(m_data[at]))
            ++at;
        return m_data.substr(begin, at - begin);
    }
    void skip_spaces(std::size_t& at, std::size_t limit) const {
        while (at < limit && is_space(m_data[at]))
            ++at;
    }

    outcome end_tag() {
        const std::size_t limit = tag_limit();
        std::size_t at = m_at + 2;
        const std::string name = read_name(at, limit);
        if (at < limit && name.empty())
            return fails(follow_error::syntax_error);
        skip_spaces(at, limit);
        if (at == limit)
            return need_more(limit);
        if (m_data[at] != '>')
            return fails(follow_error::syntax_error);
        if (m_depth == 0)
            return fails(follow_error::mismatched_end_tag);
        --m_depth;
        write("</" + encode_name(name) + ">", at + 1);
        return outcome::taken;
    }

    outcome start_tag() {
        const std::size_t limit = tag_limit();
        std::size_t at = m_at + 1;
        const std::string name = read_name(at, limit);
        if (at < limit && name.empty())
            return fails(follow_error::syntax_error);
        std::string tag = "<" + encode_name(name);
        bool is_empty = false;
        const outcome found = attributes(at, limit, tag, is_empty);
        if (found != outcome::taken)
            return found == outcome::failed ? found : need_more(limit);
        tag += is_empty ? "></" + encode_name(name) + ">" : ">";
        if (tag.size() > tag_bytes())
            return fails(follow_error::too_long);

        if (!m_has_root)
            m_root = name;
        m_has_root = true;
        m_depth += is_empty ? 0 : 1;
        m_lines.push_back(m_line);
        write(tag, at);
        return outcome::taken;
    }

    // Appends the attributes to `tag`. `incomplete` means that the tag does not end before `limit`.
    outcome attributes(std::size_t& at, std::size_t limit, std::string& tag, bool& is_empty) {
        for (;;) {
            const std::size_t end_of_last = at;
            skip_spaces(at, limit);
            if (at == limit)
                return outcome::incomplete;
            if (m_data[at] == '>') {
                ++at;
                return outcome::taken;
            }
            if (m_data[at] == '/') {
                if (at + 1 == limit)
                    return outcome::incomplete;
                is_empty = true;
                at += 2;
                return m_data[at - 1] == '>' ? outcome::taken : fails(follow_error::syntax_error);
            }
            const std::string name = read_name(at, limit);
            if (at < limit && (name.empty() || at - name.size() == end_of_last))
                return fails(follow_error::syntax_error);
            std::string value;
            const outcome found = attribute_value(at, limit, value);
            if (found != outcome::taken)
                return found;
            tag += " " + encode_name(name) + "=\"" + encode_text(value) + "\"";
        }
    }

    // Reads the `=` and the value after the name of an attribute.
    outcome attribute_value(std::size_t& at, std::size_t limit, std::string& value) {
        skip_spaces(at, limit);
        if (at < limit && m_data[at] != '=')
            return fails(follow_error::missing_equals);
        at += at < limit ? 1 : 0;
        skip_spaces(at, limit);
        if (at == limit)
            return outcome::incomplete;
        const char quote = m_data[at++];
        if (quote != '"' && quote != '\'')
            return fails(follow_error::missing_quote);
        while (at < limit && m_data[at] != quote) {
            if (m_data[at] == '<')
                return fails(follow_error::syntax_error);
            if (m_data[at] != '&') {
                value += m_data[at++];
                continue;
            }
            const outcome found = reference(at, limit, value);
            if (found != outcome::taken)
                return found;
        }
        return at++ < limit ? outcome::taken : outcome::incomplete;
    }

    // Adds a tag that ends before `end` to the batch. `m_depth` is already the depth after the tag.
    void write(const std::string& tag, std::size_t end) {
        const unsigned first_line = m_line;
        m_batch += tag;
        consume(end - m_at);
        m_marks.push_back({m_spool->size() + m_batch.size(), m_at, first_line, m_line});
        if (m_depth == 0) {
            m_has_ended = true;
            m_end_line = first_line;
        }
    }

    // --- Errors ----------------------------------------------------------------------------------

    // Reports an error. If there are names to search for, the document continues after it.
    void fail(follow_error error, unsigned line, bool can_resume) {
        add_error(error, line);
        if (m_resume_at.empty() || !m_is_root_reported || !can_resume) {
            m_has_failed = true;
            m_at = m_data.size();
            return;
        }
        // Start a new parser and open the root again. The elements that were open inside it are
        // abandoned.
        new_parser();
        m_batch = "<" + encode_name(m_root) + ">";
        m_lines.assign(1, m_line);
        m_section = nullptr;
        forget_text();
        m_depth = 1;
        m_has_ended = false;
        m_is_skipping = true;
    }

    // Skips everything up to the start tag of one of the names, or the end tag of the root.
    outcome skip() {
        consume(std::min(m_data.find('<', m_at), m_data.size()) - m_at);
        const std::size_t limit = tag_limit();
        std::size_t at = m_at + 1;
        if (at >= limit)
            return outcome::incomplete;
        const bool is_end = m_data[at] == '/';
        at += is_end ? 1 : 0;
        const std::string name = read_name(at, limit);
        if (at == m_data.size())
            return outcome::incomplete;
        const bool is_known =
            is_end ? name == m_root
                   : std::find(m_resume_at.begin(), m_resume_at.end(), name) != m_resume_at.end();
        if (is_known)
            m_is_skipping = false;
        else
            consume(1);
        return outcome::taken;
    }

    void add_error(follow_error error, unsigned line) {
        follow_event event;
        event.kind = follow_event::error;
        event.error_code = error;
        event.line = line;
        m_events->push_back(event);
    }

    // --- The parser and its nodes ----------------------------------------------------------------

    void new_parser() {
        m_parser.reset();
        m_spool.reset(new follow_spool());
        m_parser.reset(new parser::xml_stream_parser(strings::ustring8(m_spool->path()), 1));
        m_marks.clear();
        m_lines.clear();
        m_open.clear();
        m_has_node_text = false;
    }

    // Lets the parser read the batch. Returns false after an error.
    bool deliver() {
        if (m_batch.empty())
            return true;
        m_spool->append(m_batch);
        m_batch.clear();
        for (;;) {
            const unsigned long before = m_parser->parse_offset();
            m_parser->parse();
            bool has_nodes = false;
            for (; !m_parser->node_queue_empty(); has_nodes = true)
                take(m_parser->node_queue_pop());
            const parser::xml_stream_parser::error_type status = m_parser->error();
            if (status >= parser::xml_stream_parser::internal_failure)
                throw std::runtime_error("cannot read " + m_spool->path());
            const bool is_stuck =
                !has_nodes && m_parser->parse_offset() == before && before < m_spool->size();
            if (status >= parser::xml_stream_parser::mismatched_end_tag || is_stuck) {
                fail_in_parser(status);
                return false;
            }
            if (status == parser::xml_stream_parser::end_of_document ||
                m_parser->parse_offset() >= m_spool->size())
                break;
        }
        if (m_text_at == 0)  // otherwise the rest of a text follows
            close_down_to(0);
        return true;
    }

    // The parser stopped in the first tag that ends after the committed position.
    void fail_in_parser(parser::xml_stream_parser::error_type status) {
        const unsigned long offset = m_parser->parse_offset();
        close_down_to(0);  // the nodes before the error are complete
        mark failed = {0, m_at, m_line, m_line};
        for (auto tag = m_marks.rbegin(); tag != m_marks.rend() && tag->spool_end > offset; ++tag)
            failed = *tag;
        m_at = failed.end;
        m_line = failed.last_line;
        const bool is_duplicate = status == parser::xml_stream_parser::duplicate_attribute;
        const bool is_mismatch = status == parser::xml_stream_parser::mismatched_end_tag;
        fail(is_duplicate  ? follow_error::duplicate_attribute
             : is_mismatch ? follow_error::mismatched_end_tag
                           : follow_error::syntax_error,
             failed.first_line, true);
    }

    void take(const parser::xml_stream_parser::node& node) {
        if (node.type == parser::xml_stream_parser::end_of_document) {
            close_down_to(0);
            add_end(m_root, 1, m_end_line);
            return;
        }
        const unsigned line = m_lines.front();
        m_lines.pop_front();
        if (node.type == parser::xml_stream_parser::out_of_data) {
            if (!m_is_root_reported)
                add_start(node, 1, line);
            m_is_root_reported = true;
            return;
        }
        // The elements that are open here have been closed in the document, except the parent.
        std::size_t depth = m_open.size();
        while (depth > 0 && m_open[depth - 1].id != node.parent)
            --depth;
        if (depth < m_open.size())
            close_down_to(depth);
        if (node.name == "_t") {
            if (!m_has_node_text)
                m_node_text_line = line;
            m_has_node_text = true;
            m_node_text += node.text;
            return;
        }
        end_text();
        m_open.push_back({node.id, decode_name(node.name), line});
        add_start(node, m_open.size() + 1, line);
    }

    void close_down_to(std::size_t depth) {
        end_text();
        for (; m_open.size() > depth; m_open.pop_back())
            add_end(m_open.back().name, m_open.size() + 1, m_open.back().line);
    }

    void end_text() {
        if (!m_has_node_text)
            return;
        follow_event event;
        event.kind = follow_event::text;
        event.name = m_open.empty() ? strings::ustring8(m_root) : m_open.back().name;
        event.content = m_node_text;
        event.depth = static_cast<unsigned>(m_open.size() + 1);
        event.line = m_node_text_line;
        m_events->push_back(std::move(event));
        m_node_text.clear();
        m_has_node_text = false;
    }

    void add_start(const parser::xml_stream_parser::node& node, std::size_t depth, unsigned line) {
        follow_event event;
        event.kind = follow_event::start;
        event.name = decode_name(node.name);
        for (const auto& attribute : node.attributes)
            event.attributes.emplace_back(decode_name(attribute.first), attribute.second);
        event.depth = static_cast<unsigned>(depth);
        event.line = line;
        m_events->push_back(std::move(event));
    }

    void add_end(const strings::ustring8& name, std::size_t depth, unsigned line) {
        follow_event event;
        event.kind = follow_event::end;
        event.name = name;
        event.depth = static_cast<unsigned>(depth);
        event.line = line;
        m_events->push_back(std::move(event));
    }

    std::vector<strings::ustring8> m_resume_at;
    std::deque<follow_event>* m_events;

    // The bytes of the file that are not consumed yet, and the state of the reader.
    std::string m_data;
    std::size_t m_at = 0;             // in m_data
    unsigned m_line = 1;              // at m_at
    const char* m_section = nullptr;  // the end of the comment, instruction or CDATA section
    std::string m_text;               // text before the next tag, references replaced
    std::size_t m_text_at = 0;        // how many bytes of it are written
    unsigned m_text_line = 1;         // the line in which it begins
    bool m_has_text = false;          // whether it is more than whitespace between tags
    unsigned m_depth = 0;             // open elements
    std::string m_root;               // name of the root
    unsigned m_end_line = 1;          // of the end tag of the root
    bool m_is_at_start = true;        // a byte order mark may follow
    bool m_has_begun = false;         // the declaration has been read
    bool m_has_root = false;          // the start tag of the root has been read
    bool m_has_ended = false;         // its end tag has been read
    bool m_is_skipping = false;       // after an error
    bool m_has_failed = false;        // no more events
    follow_error m_error = follow_error::none;

    // The output for the parser.
    std::unique_ptr<follow_spool> m_spool;
    std::unique_ptr<parser::xml_stream_parser> m_parser;
    std::string m_batch;
    std::vector<mark> m_marks;     // tags that were written since m_data was last shortened
    std::deque<unsigned> m_lines;  // of the elements that the parser has not reported

    // The state of the nodes that the parser has reported.
    bool m_is_root_reported = false;
    std::vector<open_element> m_open;  // inside the root, outermost first
    bool m_has_node_text = false;
    strings::ustring8 m_node_text;
    unsigned m_node_text_line = 1;
};

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18
