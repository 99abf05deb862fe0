/// @file
/// A plain second implementation of the conversions of `code_page`: it calls iconv with the rest of
/// the input until nothing is left.
///
///     code_page_oracle::convert("CP1252", "UTF-8", text)
///
/// Its time is quadratic in the number of characters that the target lacks. Threads may call it at
/// the same time.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iconv.h>
#include <stdexcept>
#include <string>

namespace code_page_oracle {

class descriptor {
public:
    descriptor(const std::string& to, const std::string& from)
        : m_handle(iconv_open(to.c_str(), from.c_str())) {
        if (m_handle == reinterpret_cast<iconv_t>(-1))
            throw std::runtime_error("iconv_open failed");
    }
    ~descriptor() { iconv_close(m_handle); }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;

    operator iconv_t() const { return m_handle; }

private:
    iconv_t m_handle;
};

inline std::string convert(const std::string& to, const std::string& from, std::string text) {
    const descriptor handle(to, from);
    std::string output(text.size(), '\0');
    char* input = &text[0];
    std::size_t left = text.size();
    std::size_t offset = 0;
    std::size_t room = output.size();
    std::size_t left_when_full = 0, room_when_full = 0;
    bool was_full = false;  // since the last "?"

    const auto grow = [&](std::size_t size) {
        output.resize(output.size() + 2 * size);
        room = 2 * size;
    };
    while (left > 0) {
        char* position = &output[offset];
        const bool done =
            iconv(handle, &input, &left, &position, &room) != static_cast<std::size_t>(-1);
        offset = static_cast<std::size_t>(position - &output[0]);
        if (done)
            continue;
        if (errno == E2BIG) {
            const bool in_vain = was_full && left == left_when_full && room == room_when_full;
            grow(left);
            if (in_vain)
                room = output.size() - offset;
            was_full = true;
            left_when_full = left;
            room_when_full = room;
        } else if (errno == EILSEQ) {
            if (room == 0)
                grow(std::max<std::size_t>(left, 1));
            if (left > 0) {
                ++input;
                --left;
            }
            output[offset++] = '?';
            --room;
            was_full = false;
        } else if (errno == EINVAL) {
            if (room == 0) {
                output.resize(output.size() + 2);
                offset += 2;
            }
            left = 0;
        } else {
            throw std::runtime_error("iconv failed");
        }
    }
    output.resize(offset);
    return output;
}

}  // namespace code_page_oracle
