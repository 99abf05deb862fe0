// The readers of the three encodings, compared with plain readers that copy what they look at.
//
// Input: two bytes for the size of the content, the content, and one byte for each call.
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "../tests/serialization/tree_model.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using namespace tova;
using fuzz_support::require;
using serialization::labeled_serialize_buffer;
using serialization::labeled_text_buffer;
using serialization::serialize_binary_buf;
using serialization::serialize_buffer;
using serialization::serialize_text_buf;
using test_support::tree_model;
using types::radix_t;

// What a call returned, in a form that can be compared: the bytes of a number, a string, a marker.
typedef std::string result;

template <typename Number>
result of_number(Number value) {
    return result(reinterpret_cast<const char*>(&value), sizeof value);
}

const char raised[] = "raised";
const char null_buffer[] = "null";

// The text encoding, read step by step with `find` and `substr`.
class plain_text {
public:
    explicit plain_text(const std::string& text) : m_text(text), m_position(0) {}

    bool at_end() const { return m_position == std::string::npos || m_position >= m_text.size(); }
    void reset() { m_position = 0; }
    void append(const std::string& text) { m_text += text; }
    void assign(const std::string& text) { m_text = text; }

    std::string field() {
        if (m_position == std::string::npos)
            return std::string();
        const std::size_t next = m_text.find('\001', m_position);
        const std::size_t from = m_position;
        m_position = next;
        const std::string found = m_text.substr(from, next - from);
        if (m_position != std::string::npos)
            ++m_position;
        return found;
    }
    template <typename Number>
    result number(Number (*parse)(const char*, unsigned long, radix_t::base, bool)) {
        const std::string digits = field();
        return of_number<Number>(
            digits.empty() ? Number()
                           : parse(digits.c_str(), digits.size(), radix_t::detect, false));
    }
    template <typename Number>
    result floating(Number (*parse)(const strings::ustring8&)) {
        return of_number<Number>(parse(strings::ustring8(field())));
    }
    std::string string() {
        if (m_position == std::string::npos)
            return std::string();
        const std::string digits = field();
        const long length = digits.empty()
                                ? 0
                                : generic::convert::str_to_int32(digits.c_str(), digits.size(),
                                                                 radix_t::detect, false);
        const std::size_t start = m_position;
        m_position = start + static_cast<std::size_t>(length) + 1;
        return length == 0 ? std::string() : m_text.substr(start, static_cast<std::size_t>(length));
    }

    // One call by its number, in the order of the slots.
    result call(int number) {
        namespace convert = generic::convert;
        switch (number) {
        case 0:
            return this->number<signed char>(convert::str_to_int8);
        case 1:
            return this->number<short>(convert::str_to_int16);
        case 2:
            return this->number<int>(convert::str_to_int32);
        case 3:
            return this->number<long>(convert::str_to_int64);
        case 4:
            return this->number<unsigned char>(convert::str_to_uint8);
        case 5:
            return this->number<unsigned short>(convert::str_to_uint16);
        case 6:
            return this->number<unsigned int>(convert::str_to_uint32);
        case 7:
            return this->number<unsigned long>(convert::str_to_uint64);
        case 8:
            return floating<float>(convert::str_to_float);
        case 9:
            return floating<double>(convert::str_to_double);
        default:
            return string();
        }
    }

private:
    std::string m_text;
    std::size_t m_position;
};

// The binary encoding, read from a copy with zeros after it.
class plain_binary {
public:
    explicit plain_binary(const std::string& text) : m_text(text), m_position(0) {}

    bool at_end() const { return m_position >= m_text.size(); }
    void reset() { m_position = 0; }
    void append(const std::string& text) { m_text += text; }
    void assign(const std::string& text) { m_text = text; }

    result fixed(std::size_t size) {
        if (at_end())
            return result(size, '\0');
        const result found = (m_text + std::string(8, '\0')).substr(m_position, size);
        m_position += size;
        return found;
    }
    result string(const char* at_the_end) {
        if (at_end())
            return at_the_end;
        std::uint32_t length;
        std::memcpy(&length, fixed(4).data(), 4);
        if (at_end())
            return at_the_end;
        const result found = m_text.substr(m_position, length);
        m_position += length;
        return found;
    }
    result call(int number) {
        const std::size_t sizes[] = {1, 2, 4, 8, 1, 2, 4, 8, 4, 8};
        return number < 10 ? fixed(sizes[number]) : string(number == 10 ? "" : null_buffer);
    }

private:
    std::string m_text;
    std::size_t m_position;
};

result call(const serialize_buffer& buffer, int number) {
    switch (number) {
    case 0:
        return of_number(buffer.read_int8());
    case 1:
        return of_number(buffer.read_int16());
    case 2:
        return of_number(buffer.read_int32());
    case 3:
        return of_number(buffer.read_int64());
    case 4:
        return of_number(buffer.read_uint8());
    case 5:
        return of_number(buffer.read_uint16());
    case 6:
        return of_number(buffer.read_uint32());
    case 7:
        return of_number(buffer.read_uint64());
    case 8:
        return of_number(buffer.read_float());
    case 9:
        return of_number(buffer.read_double());
    case 10:
        return buffer.read_string();
    default: {
        const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
        return nested == nullptr ? result(null_buffer) : nested->as_str();
    }
    }
}

template <typename Reader>
result guarded(Reader&& reader, int number) {
    try {
        return reader(number);
    } catch (const std::out_of_range& error) {
        return std::string(raised) + error.what();
    }
}

template <typename Buffer, typename Plain>
void compare(const std::string& content, const std::string& calls) {
    Buffer buffer(content);
    Plain plain(content);
    for (char byte : calls) {
        const int number = static_cast<unsigned char>(byte) % 15;
        switch (number) {
        case 12:
            buffer.reset_read();
            plain.reset();
            break;
        case 13: {
            Buffer more;
            more.append_uint16(static_cast<unsigned char>(byte));
            const std::string now = buffer.as_str() + more.as_str();
            buffer.append_uint16(static_cast<unsigned char>(byte));
            plain.append(more.as_str());
            require(buffer.as_str() == now);
            break;
        }
        case 14: {
            const std::string half = content.substr(0, content.size() / 2);
            buffer.assign(half);
            plain.assign(half);
            break;
        }
        default:
            require(guarded([&](int n) { return call(buffer, n); }, number) ==
                    guarded([&](int n) { return plain.call(n); }, number));
        }
        require(buffer.at_end() == plain.at_end());
    }
}

// The tree, compared with the recursive model. Content on which the reader never ends is left out.
void compare_tree(const std::string& content) {
    tree_model model;
    const tree_model::outcome outcome = model.read(content);
    if (outcome == tree_model::endless)
        return;
    labeled_text_buffer buffer;
    bool thrown = false;
    try {
        buffer.assign(content);
    } catch (const std::out_of_range&) {
        thrown = true;
    }
    require(thrown == (outcome == tree_model::raises));
    require(model.matches(buffer));
    labeled_text_buffer copy(buffer);
    copy.overlay(buffer);
    require(model.matches(copy));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size < 2)
        return 0;
    const std::string input(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::size_t split = (data[0] + 256u * data[1]) % (input.size() + 1);
    const std::string content = input.substr(0, split);
    const std::string calls = input.substr(split);
    compare<serialize_text_buf, plain_text>(content, calls);
    compare<serialize_binary_buf, plain_binary>(content, calls);
    compare_tree(content);
    compare_tree(input);
    return 0;
}
