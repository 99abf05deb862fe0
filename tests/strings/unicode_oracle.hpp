// The conversions in their simplest form, to compare the fast ones with.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace unicode_oracle {

typedef std::vector<long> points;  // code points or units as numbers

struct answer {
    bool good;
    points values;
};

inline int leading_ones(unsigned char byte) {
    int ones = 0;
    for (int bit = 7; bit >= 0 && (byte >> bit & 1) != 0; --bit)
        ++ones;
    return ones;
}

// The number of bytes of the sequence at an offset, or 0. Bytes past the end read as 0.
inline std::size_t sequence_at(const std::string& text, std::size_t at, long& point) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i])
                               : static_cast<unsigned char>(0);
    };
    const int ones = leading_ones(byte(at));
    if (ones == 0) {
        point = byte(at);
        return 1;
    }
    if (ones == 1 || ones > 4)
        return 0;
    point = byte(at) % (1 << (7 - ones));
    for (int i = 1; i < ones; ++i) {
        if (leading_ones(byte(at + i)) != 1)
            return 0;
        point = point * 64 + byte(at + i) % 64;
    }
    return ones;
}

inline points utf8_to_utf32(const std::string& text) {
    points result;
    for (std::size_t at = 0; at < text.size();) {
        long point = '?';
        const std::size_t taken = sequence_at(text, at, point);
        result.push_back(taken == 0 ? '?' : point);
        at += taken == 0 ? 1 : taken;
    }
    return result;
}

inline answer utf8_to_utf16(const std::string& text) {
    answer result = {true, {}};
    for (std::size_t at = 0; at < text.size();) {
        long point = 0;
        const std::size_t taken = sequence_at(text, at, point);
        if (taken == 0)
            return answer{false, {'-', '1'}};
        if (taken < 4) {
            result.values.push_back(point);
        } else {
            result.values.push_back((0xD800 - 64 + point / 1024) % 0x10000);
            result.values.push_back(0xDC00 + point % 1024);
        }
        at += taken;
    }
    return result;
}

inline bool is_high(long unit) {
    return unit / 1024 == 0xD800 / 1024;
}

inline bool is_low(long unit) {
    return unit / 1024 == 0xDC00 / 1024;
}

// To code points. The string must not begin with 0xFFFE.
inline answer utf16_to_utf32(const points& units) {
    answer result = {true, {}};
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (is_low(units[i]))
            return answer{false, {'-', '1'}};
        if (!is_high(units[i])) {
            result.values.push_back(units[i]);
            continue;
        }
        if (i + 1 == units.size() || !is_low(units[i + 1]))
            return answer{false, {'-', '1'}};
        result.values.push_back(0x10000 + (units[i] - 0xD800) * 1024 + (units[i + 1] - 0xDC00));
        ++i;
    }
    return result;
}

inline std::string utf8_of(long point) {
    if (point < 0x80)
        return std::string(1, static_cast<char>(point));
    const int bytes = point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
    std::string result;
    for (int i = 1; i < bytes; ++i, point /= 64)
        result.insert(result.begin(), static_cast<char>(0x80 + point % 64));
    const int marks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    result.insert(result.begin(), static_cast<char>(marks[bytes] + point));
    return result;
}

inline std::string utf16_to_utf8(const points& units) {
    const answer decoded = utf16_to_utf32(units);
    std::string result;
    for (const long point : decoded.values)
        result += utf8_of(point);
    return result;
}

inline std::string utf32_to_utf8(const points& text) {
    std::string result;
    for (const long point : text) {
        if (point >= 0xD800 && point < 0xE000)
            return "-1";
        if (point < 0x110000)
            result += utf8_of(point);
    }
    return result;
}

inline points utf32_to_utf16(const points& text) {
    points result;
    for (const long point : text) {
        if (point >= 0x110000 || (point >= 0xD800 && point < 0xE000))
            return {'-', '1'};
        if (point < 0xFFFF) {
            result.push_back(((point % 0x10000) + 0x10000) % 0x10000);
        } else {
            result.push_back(0xD800 + point / 1024);
            result.push_back(0xDC00 + point % 1024);
        }
    }
    return result;
}

const std::size_t none = static_cast<std::size_t>(-1);

inline std::size_t character_index(const std::string& text, std::size_t character) {
    if (character >= text.size())
        return none;
    std::size_t at = 0;
    for (; character != 0; --character) {
        long point = 0;
        const std::size_t taken = sequence_at(text, at, point);
        if (taken == 0)
            return none;
        at += taken;
    }
    return at;
}

inline std::size_t character_index(const points& units, std::size_t character) {
    if (character >= units.size())
        return none;
    const auto unit = [&](std::size_t i) { return i < units.size() ? units[i] : 0; };
    std::size_t at = 0;
    for (; character != 0; --character) {
        if (is_high(unit(at))) {
            if (!is_low(unit(at + 1)))
                return none;
            at += 2;
        } else if (is_low(unit(0))) {
            return none;
        } else {
            at += 1;
        }
    }
    return at;
}

}  // namespace unicode_oracle
