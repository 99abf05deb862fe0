#include <tova/strings/code_page.hpp>

#include <algorithm>
#include <cerrno>
#include <iconv.h>
#include <langinfo.h>

#include <tova/exceptions/exceptions.hpp>
#include <tova/strings/unicode.hpp>

namespace TOVA_2_18 {
namespace strings {

namespace {

const char source_path[] = "strings/code_page";  // path below src/, no extension
const unsigned int to_system_type_line = 589;    // published; it stays when the code moves

const std::size_t iconv_failed = static_cast<std::size_t>(-1);

// The published places of one direction's faults.
struct places {
    const char* function;
    unsigned int not_supported_line;
    unsigned int open_failed_line;
    unsigned int unknown_error_line;
    unsigned int close_failed_line;
};

const places encode_places = {"encode", 222, 225, 305, 316};
const places as_utf8_places = {"as_utf8", 370, 373, 452, 463};

[[noreturn]] void raise(const char* message, unsigned int line, const places& at) {
    throw exceptions::runtime_error(message, line, source_path, at.function);
}

// An open iconv descriptor.
class descriptor {
public:
    descriptor(const char* to, const char* from, const places& at)
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

    // Leaves the handle to nobody.
    iconv_t release() {
        const iconv_t handle = m_handle;
        m_handle = closed();
        return handle;
    }

private:
    // What iconv_open gives for no descriptor.
    static iconv_t closed() {
        return reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)
    }

    iconv_t m_handle;
};

// The output of a conversion: a text, the offset up to which it is filled, and the room that iconv
// may fill next, which can be less than what the text has left.
class output_buffer {
public:
    explicit output_buffer(std::size_t size) : m_text(size, '\0'), m_offset(0), m_room(size) {}

    std::size_t room() const { return m_room; }

    std::size_t convert(iconv_t handle, char*& input, std::size_t& input_left) {
        char* position = &m_text[0] + m_offset;
        const std::size_t result = iconv(handle, &input, &input_left, &position, &m_room);
        m_offset = static_cast<std::size_t>(position - &m_text[0]);
        return result;
    }

    // Contract: the room becomes exactly twice the input left, also if the text has more. What a
    // cut sequence at the end of the input gives depends on it.
    void grow(std::size_t input_left) {
        m_text.resize(m_text.size() + 2 * input_left);
        m_room = 2 * input_left;
    }

    void use_all_room() { m_room = m_text.size() - m_offset; }

    void put(char unit) {
        m_text[m_offset++] = unit;
        --m_room;
    }

    // The input ends in the middle of a sequence.
    //
    // Contract: with room left the text just ends here. Without room it gains two NUL bytes.
    void end_in_sequence() {
        if (m_room == 0) {
            m_text.resize(m_text.size() + 2);
            m_offset += 2;
        }
    }

    std::string take() {
        m_text.resize(m_offset);
        return std::move(m_text);
    }

private:
    std::string m_text;
    std::size_t m_offset;
    std::size_t m_room;
};

std::string convert(const char* to, const char* from, const std::string& text, const places& at) {
    descriptor handle(to, from, at);
    output_buffer output(text.size());
    char* input = const_cast<char*>(text.data());  // iconv doesn't write there
    std::size_t input_left = text.size();
    bool grown = false;  // by the previous turn, and nothing converted since

    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    while (input_left > 0) {
        const std::size_t left_before = input_left;
        const std::size_t room_before = output.room();
        if (output.convert(handle, input, input_left) != iconv_failed)
            continue;
        switch (errno) {
        case E2BIG: {
            const bool stands_still =
                grown && input_left == left_before && output.room() == room_before;
            output.grow(input_left);
            // A last byte can need three, for which twice the input left is never enough.
            if (stands_still)
                output.use_all_room();
            grown = true;
            break;
        }
        case EILSEQ:
            if (output.room() == 0)
                output.grow(std::max<std::size_t>(input_left, 1));
            // Some tables of iconv step over what they refuse (A2 E8 of CP949), so that at the end
            // of the text no byte is left to skip. The mark still stands for the character.
            if (input_left > 0) {
                ++input;
                --input_left;
            }
            output.put('?');
            grown = false;
            break;
        case EINVAL:
            output.end_in_sequence();
            input_left = 0;
            break;
        default:
            // Contract: the descriptor stays open, as its state is not known.
            handle.release();
            raise("Unknown iconv error", at.unknown_error_line, at);
        }
    }

    // No flush: a stateful code page keeps what it holds back.
    std::string result = output.take();
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
    // Contract: nil is a number outside the enumeration here, though assigning nil sets 0. An
    // object that was assigned nil doesn't equal nil.
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
    switch (value) {
    case encoding_ansi:
    case encoding_locale_2:
    case encoding_locale_3:
        return nl_langinfo(CODESET);
    case encoding_utf8:
        return "UTF-8";
    case encoding_932:
        return "WINDOWS-31J";
    case encoding_936:
        return "GBK";
    case encoding_949:
        return "CP949";
    case encoding_950:
        return "BIG5";
    case encoding_1250:
        return "CP1250";
    case encoding_1251:
        return "CP1251";
    case encoding_1252:
        return "CP1252";
    case encoding_1253:
        return "CP1253";
    case encoding_1254:
        return "CP1254";
    case encoding_1255:
        return "CP1255";
    case encoding_1256:
        return "CP1256";
    case encoding_1257:
        return "CP1257";
    case encoding_1258:
        return "CP1258";
    case encoding_20866:
        return "KOI8-R";
    case encoding_21866:
        return "KOI8-U";
    case encoding_28591:
        return "ISO-8859-1";
    case encoding_28592:
        return "ISO-8859-2";
    case encoding_28593:
        return "ISO-8859-3";
    case encoding_28594:
        return "ISO-8859-4";
    case encoding_28595:
        return "ISO-8859-5";
    case encoding_28596:
        return "ISO-8859-6";
    case encoding_28597:
        return "ISO-8859-7";
    case encoding_28598:
        return "ISO-8859-8";
    case encoding_28599:
        return "ISO-8859-9";
    case encoding_28605:
        return "ISO-8859-15";
    case encoding_125100:
        return "ANSI_X3.4-1968";
    case encoding_default:
        break;
    }
    throw exceptions::invalid_argument_value("Not valid code_page type", to_system_type_line,
                                             source_path, "to_system_type");
}

std::string code_page::encode(const ustring8& text) const {
    const std::string to = to_system_type(m_type);
    return convert(to.c_str(), "UTF-8", text, encode_places);
}

std::string code_page::encode(const ustring16& text) const {
    return encode(utf16_to_utf8(text));
}

std::string code_page::encode(const ustring32& text) const {
    return encode(utf32_to_utf8(text));
}

ustring8 code_page::as_utf8(const std::string& text) const {
    const std::string from = to_system_type(m_type);
    return convert("UTF-8", from.c_str(), text, as_utf8_places);
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
