// Code pages, converted by the C library's iconv. Both directions go through UTF-8 and run the same
// loop, `convert`:
//
//   to_system_type -> iconv_open -> reset -> iconv, until no input is left -> iconv_close
//
// iconv converts as far as it can. If it stops before the end of the input, its errno selects the
// next step:
//
//   E2BIG   the output is full                      make room and continue
//   EILSEQ  a character that the target lacks, or   skip one byte of input, write "?", continue
//           a byte that the source doesn't know
//   EINVAL  the input ends within a character       drop the rest
//   other   iconv is broken                         raise
//
// After an error iconv is given a small window of the input, then larger ones, because the cost of
// a call depends on the size of its input, not on how much it converts.
//
// A `conversion` holds the state of the loop: the input not yet read, the output so far, and the
// room that iconv may fill next. Invariant: offset + room <= size of the output. The room can be
// less than the output has left, see `make_room`.
//
// Most long strings are converted in another way: iconv converts each different character once, and
// a table keeps the results for the rest of the conversion, see `learned_page`. Everything that the
// table lacks goes through the loop above. Nothing is kept between conversions: each one opens its
// own descriptor, and the modules that iconv loads may change between two of them.
#include <tova/strings/code_page.hpp>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/unicode.hpp>

#include "strings/ascii_run.hpp"
#include "strings/learned_page.hpp"
#include "strings/utf8.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <langinfo.h>
#include <memory>

namespace TOVA_2_18 {
namespace strings {

namespace {

const char source_path[] = "strings/code_page";  // path below src/, no extension
const unsigned int to_system_type_line = 589;    // published; it stays the same when the code moves

const std::size_t iconv_failed = static_cast<std::size_t>(-1);

// The names of the pages in iconv. The three locale values are missing: their name is looked up on
// each conversion.
const struct {
    code_page::encoding_type page;
    const char* name;
} page_names[] = {
    {code_page::encoding_utf8, "UTF-8"},
    {code_page::encoding_932, "WINDOWS-31J"},
    {code_page::encoding_936, "GBK"},
    {code_page::encoding_949, "CP949"},
    {code_page::encoding_950, "BIG5"},
    {code_page::encoding_1250, "CP1250"},
    {code_page::encoding_1251, "CP1251"},
    {code_page::encoding_1252, "CP1252"},
    {code_page::encoding_1253, "CP1253"},
    {code_page::encoding_1254, "CP1254"},
    {code_page::encoding_1255, "CP1255"},
    {code_page::encoding_1256, "CP1256"},
    {code_page::encoding_1257, "CP1257"},
    {code_page::encoding_1258, "CP1258"},
    {code_page::encoding_20866, "KOI8-R"},
    {code_page::encoding_21866, "KOI8-U"},
    {code_page::encoding_28591, "ISO-8859-1"},
    {code_page::encoding_28592, "ISO-8859-2"},
    {code_page::encoding_28593, "ISO-8859-3"},
    {code_page::encoding_28594, "ISO-8859-4"},
    {code_page::encoding_28595, "ISO-8859-5"},
    {code_page::encoding_28596, "ISO-8859-6"},
    {code_page::encoding_28597, "ISO-8859-7"},
    {code_page::encoding_28598, "ISO-8859-8"},
    {code_page::encoding_28599, "ISO-8859-9"},
    {code_page::encoding_28605, "ISO-8859-15"},
    {code_page::encoding_125100, "ANSI_X3.4-1968"},
};

// The size, in bytes, from which converting each different character once takes less time.
const std::size_t worth_learning = 4096;

// Whether no character of the page depends on the characters before it. CP1255 and CP1258 compose
// letters, and nothing is known about a page that only the locale names. UTF-8 has too many
// characters.
bool can_be_learned(const std::string& page) {
    if (page == "UTF-8" || page == "CP1255" || page == "CP1258")
        return false;
    for (const auto& known : page_names)
        if (page == known.name)
            return true;
    return false;
}

// The published locations of the exceptions of one direction.
struct locations {
    const char* function;
    unsigned int not_supported_line;
    unsigned int open_failed_line;
    unsigned int unknown_error_line;
    unsigned int close_failed_line;
};

const locations encode_locations = {"encode", 222, 225, 305, 316};
const locations as_utf8_locations = {"as_utf8", 370, 373, 452, 463};

[[noreturn]] void raise(const char* message, unsigned int line, const locations& at) {
    throw exceptions::runtime_error(message, line, source_path, at.function);
}

// An open iconv descriptor.
class descriptor {
public:
    descriptor(const char* to, const char* from, const locations& at)
        : m_handle(iconv_open(to, from)) {
        if (m_handle == closed()) {
            if (errno == EINVAL)
                raise("convertions not supported", at.not_supported_line, at);
            raise("Unknown failure on iconv open", at.open_failed_line, at);
        }
    }
    ~descriptor() {
        if (m_handle != closed())
            iconv_close(m_handle);
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;

    operator iconv_t() const { return m_handle; }

    // Gives up the handle without closing it.
    iconv_t release() {
        const iconv_t handle = m_handle;
        m_handle = closed();
        return handle;
    }

private:
    // What iconv_open returns on failure.
    static iconv_t closed() {
        return reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
    }

    iconv_t m_handle;
};

class conversion {
public:
    conversion(const std::string& source, bool from_utf8)
        : m_input(const_cast<char*>(source.data())),  // iconv doesn't write there
          m_input_left(source.size()), m_output(source.size(), '\0'), m_offset(0),
          m_room(source.size()), m_from_utf8(from_utf8), m_window(unlimited), m_made_room(false),
          m_run_left(source.size()), m_run_room(source.size()) {}

    bool has_input() const { return m_input_left > 0; }

    // Converts as much as iconv can. Returns false if it stopped; errno then has the reason.
    //
    // After an error the rest of the input is passed in windows that start small and double in
    // size. iconv decodes a large block of its input before it notices that the target lacks the
    // first character, and it would do so again for each such character. A character cut by the end
    // of a window is passed again with the next window.
    //
    // While a page is being learned, one window is enough; true then means that the window was
    // converted.
    bool run(iconv_t handle, bool one_window) {
        if (one_window)
            m_window = window_after_error;
        for (;;) {
            std::size_t offered = std::min(m_input_left, m_window);
            const std::size_t not_offered = m_input_left - offered;
            char* position = &m_output[0] + m_offset;
            const bool done = iconv(handle, &m_input, &offered, &position, &m_room) != iconv_failed;
            m_offset = static_cast<std::size_t>(position - &m_output[0]);
            m_input_left = not_offered + offered;
            if (not_offered == 0 || !(done || errno == EINVAL))
                return done;
            if (one_window)
                return true;
            if (m_window <= unlimited / 2)
                m_window *= 2;
        }
    }

    // Converts as far as the table goes, with the same results in the same room as iconv, see
    // `make_room`. iconv must convert the character after that.
    template <bool FromUtf8>
    void run(detail::learned_page<FromUtf8>& page) {
        while (m_input_left > 0) {
            copy_single_bytes(page);
            copy_known(page);
            if (m_input_left == 0)
                return;
            std::size_t taken;
            const unsigned char* const text = reinterpret_cast<const unsigned char*>(m_input);
            const detail::learned_character* const known = page.find(text, m_input_left, taken);
            if (known == nullptr)
                return;
            if (known->kind == detail::learned_character::refused) {
                for (std::size_t marks = known->size; marks > 0; --marks)
                    write_mark();
            } else {
                make_room();  // for lack of it, `copy_known` stopped here
            }
        }
    }

    // Converts characters while there is room. The bytes written could alias any object, so the
    // state is kept in local variables.
    template <bool FromUtf8>
    void copy_known(detail::learned_page<FromUtf8>& page) {
        const unsigned char* text = reinterpret_cast<const unsigned char*>(m_input);
        const unsigned char* const end = text + m_input_left;
        char* to = &m_output[0] + m_offset;
        char* const last = &m_output[0] + m_output.size();
        std::size_t room = m_room;
        bool has_marks = false;
        while (text != end) {
            if (end - text >= 8 && room >= 8 && detail::all_ascii(text)) {
                std::memcpy(to, text, 8);
                text += 8;
                to += 8;
                room -= 8;
                continue;
            }
            std::size_t taken;
            const detail::learned_character* const known =
                page.find(text, static_cast<std::size_t>(end - text), taken);
            if (known == nullptr || known->size > room)
                break;
            if (known->kind == detail::learned_character::refused) {
                has_marks = true;
                taken = known->size;
            }
            // A copy of a fixed size costs less; the next character overwrites the rest.
            if (last - to >= 4)
                std::memcpy(to, known->bytes, 4);
            else
                std::memcpy(to, known->bytes, known->size);
            text += taken;
            to += known->size;
            room -= known->size;
        }
        if (has_marks)
            m_made_room = false;
        m_input_left = static_cast<std::size_t>(end - text);
        m_input += text - reinterpret_cast<const unsigned char*>(m_input);
        m_offset = static_cast<std::size_t>(to - &m_output[0]);
        m_room = room;
    }

    void copy_single_bytes(detail::learned_page<true>&) {}

    // Converts single-byte characters of a page while there is room for any character. No branch
    // depends on the string unless a byte is new or begins a longer character.
    void copy_single_bytes(detail::learned_page<false>& page) {
        typedef detail::learned_page<false> learned;
        const unsigned char* text = reinterpret_cast<const unsigned char*>(m_input);
        const unsigned char* const end = text + m_input_left;
        char* to = &m_output[0] + m_offset;
        char* const last = to + m_room;
        std::uint32_t seen = 0;
        for (;;) {
            while (end - text >= 4 && last - to >= 16) {
                const std::uint32_t w0 = page.single_byte(text[0]);
                const std::uint32_t w1 = page.single_byte(text[1]);
                const std::uint32_t w2 = page.single_byte(text[2]);
                const std::uint32_t w3 = page.single_byte(text[3]);
                if ((w0 & w1 & w2 & w3 & learned::single_bit) == 0)
                    break;
                seen |= w0 | w1 | w2 | w3;
                to = learned::write(w3,
                                    learned::write(w2, learned::write(w1, learned::write(w0, to))));
                text += 4;
            }
            std::size_t taken;
            if (text == end || last - to < 4)
                break;
            const detail::learned_character* const known =
                page.find(text, static_cast<std::size_t>(end - text), taken);
            if (known == nullptr)
                break;
            if (known->kind == detail::learned_character::refused) {
                seen |= learned::refused_bit;
                taken = 1;
            }
            std::memcpy(to, known->bytes, 4);
            to += known->size;
            text += taken;
        }
        if ((seen & learned::refused_bit) != 0)
            m_made_room = false;
        m_input_left = static_cast<std::size_t>(end - text);
        m_input += text - reinterpret_cast<const unsigned char*>(m_input);
        m_room = static_cast<std::size_t>(last - to);
        m_offset = static_cast<std::size_t>(to - &m_output[0]);
    }

    // Contract: the output grows by twice the input left, and the room becomes exactly that, even
    // if the output has more. The result for a string that ends within a character depends on this.
    //
    // One case needs more: a last byte that becomes three would get room for only two forever. If
    // nothing could be converted since room was last made, the rest of the output becomes room.
    void make_room() {
        const bool in_vain = m_made_room && m_input_left == m_run_left && m_room == m_run_room;
        grow(m_input_left);
        if (in_vain)
            m_room = m_output.size() - m_offset;
        m_made_room = true;
        m_run_left = m_input_left;
        m_run_room = m_room;
    }

    // Writes "?" for the byte at the input.
    //
    // Contract: one "?" for each byte, so a character of three bytes that the target lacks becomes
    // three of them. A page that composes characters may still hold a letter back; it is written
    // after the "?".
    void replace_invalid_byte() {
        write_mark();
        // If windows are used, the rest of a UTF-8 character needs no call: iconv would reject it
        // byte by byte, because no character begins with a continuation byte.
        while (m_from_utf8 && m_input_left > window_after_error &&
               detail::is_continuation(static_cast<unsigned char>(*m_input)))
            write_mark();
    }

    // The input ends within a character.
    //
    // Contract: if room is left, the output just ends here. If not, two NUL bytes are appended.
    void end_within_character() {
        if (m_room == 0) {
            m_output.resize(m_output.size() + 2);
            m_offset += 2;
        }
        m_input_left = 0;
    }

    std::string take_output() {
        m_output.resize(m_offset);
        return std::move(m_output);
    }

private:
    static const std::size_t unlimited = static_cast<std::size_t>(-1);
    // Longer than any character, so that each window makes progress.
    static const std::size_t window_after_error = 16;

    void write_mark() {
        // Some iconv tables advance past bytes that they reject (A2 E8 in CP949), so at the end of
        // the input there may be no byte left to skip. The "?" still replaces the character.
        if (m_room == 0)
            grow(std::max<std::size_t>(m_input_left, 1));
        if (m_input_left > 0) {
            ++m_input;
            --m_input_left;
        }
        m_output[m_offset++] = '?';
        --m_room;
        m_made_room = false;
        m_window = window_after_error;
    }

    void grow(std::size_t input_left) {
        m_output.resize(m_output.size() + 2 * input_left);
        m_room = 2 * input_left;
    }

    char* m_input;
    std::size_t m_input_left;
    std::string m_output;
    std::size_t m_offset;  // bytes of output so far
    std::size_t m_room;    // bytes that iconv may write next
    const bool m_from_utf8;
    std::size_t m_window;  // bytes of input that iconv is offered at most
    bool m_made_room;      // since the last "?"
    // The input left and the room when room was made; if both are the same, nothing was converted.
    std::size_t m_run_left;
    std::size_t m_run_room;
};

// The learned characters of a page in one direction, if the source is long enough.
template <bool FromUtf8>
std::unique_ptr<detail::learned_page<FromUtf8>> learn(iconv_t handle, const std::string& page,
                                                      const std::string& source) {
    std::unique_ptr<detail::learned_page<FromUtf8>> learned;
    if (source.size() >= worth_learning && can_be_learned(page))
        learned.reset(new detail::learned_page<FromUtf8>(handle));
    if (learned && !learned->usable())
        learned.reset();
    return learned;
}

template <bool FromUtf8>
std::string convert(const std::string& page, const std::string& source, const locations& at) {
    descriptor handle(FromUtf8 ? page.c_str() : "UTF-8", FromUtf8 ? "UTF-8" : page.c_str(), at);
    conversion work(source, FromUtf8);

    iconv(handle, nullptr, nullptr, nullptr, nullptr);  // back to the initial shift state
    const auto learned = learn<FromUtf8>(handle, page, source);
    while (work.has_input()) {
        if (learned) {
            work.run(*learned);
            if (!work.has_input())
                break;
        }
        if (work.run(handle, learned != nullptr))
            continue;
        switch (errno) {
        case E2BIG:
            work.make_room();
            break;
        case EILSEQ:
            work.replace_invalid_byte();
            break;
        case EINVAL:
            work.end_within_character();
            break;
        default:
            // Contract: the descriptor stays open, as its state is unknown.
            handle.release();
            raise("Unknown iconv error", at.unknown_error_line, at);
        }
    }

    // Contract: iconv is not flushed. A page that composes characters never writes its last letter,
    // and a stateful page never writes its last shift sequence.
    std::string result = work.take_output();
    if (iconv_close(handle.release()) != 0)
        raise("iconv failed to close", at.close_failed_line, at);
    return result;
}

}  // namespace

code_page::code_page() : m_type(encoding_default) {}

code_page::code_page(const types::nil_t&) : m_type(encoding_default) {}

code_page::code_page(const encoding_type& value) : m_type(value) {}

code_page::code_page(const code_page& other) : m_type(other.m_type) {}

code_page::~code_page() TOVA_NOTHROW {}

const code_page::encoding_type& code_page::type() const {
    return m_type;
}

code_page::encoding_type& code_page::type() {
    return m_type;
}

code_page::encoding_type& code_page::type(const encoding_type& value) {
    m_type = value;
    return m_type;
}

code_page& code_page::operator=(const types::nil_t& nil) {
    return assign(nil);
}

code_page& code_page::operator=(const code_page& other) {
    return assign(other);
}

code_page& code_page::operator=(const encoding_type& value) {
    return assign(value);
}

code_page& code_page::assign(const types::nil_t&) {
    m_type = encoding_default;
    return *this;
}

code_page& code_page::assign(const code_page& other) {
    m_type = other.m_type;
    return *this;
}

code_page& code_page::assign(const encoding_type& value) {
    m_type = value;
    return *this;
}

bool code_page::equal(const types::nil_t&) const {
    // Contract: here nil means a number outside the enumeration, although assigning nil sets 0. An
    // object to which nil was assigned doesn't equal nil.
    return static_cast<int>(m_type) < 0;
}

bool code_page::equal(const code_page& other) const {
    return m_type == other.m_type;
}

bool code_page::equal(const encoding_type& value) const {
    return m_type == value;
}

bool code_page::operator==(const types::nil_t& nil) const {
    return equal(nil);
}

bool code_page::operator==(const code_page& other) const {
    return equal(other);
}

bool code_page::operator==(const encoding_type& value) const {
    return equal(value);
}

bool code_page::operator!=(const code_page& other) const {
    return !equal(other);
}

bool code_page::operator!=(const encoding_type& value) const {
    return !equal(value);
}

std::string code_page::to_system_type(encoding_type value) const {
    if (value == encoding_ansi || value == encoding_locale_2 || value == encoding_locale_3)
        return nl_langinfo(CODESET);
    for (const auto& known : page_names)
        if (known.page == value)
            return known.name;
    throw exceptions::invalid_argument_value("Not valid code_page type", to_system_type_line,
                                             source_path, "to_system_type");
}

std::string code_page::encode(const ustring8& text) const {
    return convert<true>(to_system_type(m_type), text, encode_locations);
}

std::string code_page::encode(const ustring16& text) const {
    return encode(utf16_to_utf8(text));
}

std::string code_page::encode(const ustring32& text) const {
    return encode(utf32_to_utf8(text));
}

ustring8 code_page::as_utf8(const std::string& text) const {
    return convert<false>(to_system_type(m_type), text, as_utf8_locations);
}

ustring16 code_page::as_utf16(const std::string& text) const {
    return utf8_to_utf16(as_utf8(text));
}

ustring32 code_page::as_utf32(const std::string& text) const {
    return utf8_to_utf32(as_utf8(text));
}

std::string code_page::as_ustring(const std::string& text) const {
    return as_utf8(text);
}

}  // namespace strings
}  // namespace TOVA_2_18
