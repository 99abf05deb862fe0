// A second renderer of formatted values. It follows the documentation of the formats and uses plain
// strings, `printf` and digit-by-digit arithmetic. The tests and the fuzz targets compare
// `format_value` and messages with it.
#pragma once

#include <tova/i18n/message_item.hpp>
#include <tova/types/variant.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class format_model {
public:
    typedef tova::i18n::message_item item;

    // Returns the text of a value. `is_open` says whether the documentation leaves the text open:
    // for a number of more than 63 characters, or a unit past the end of its table.
    std::string value(int type, const tova::types::variant& value, const std::string& data) {
        is_open = false;
        const std::size_t separator = data.find('\1');
        const std::string format = separator == std::string::npos ? "" : data.substr(separator + 1);
        std::string unit;
        std::string number;
        switch (type) {
        case item::type_int:
            return integer(value.as_int64(), format);
        case item::type_double:
            return floating(value.as_double(), format);
        case item::type_duration:
            return duration(value.as_double(), format);
        case item::type_memory:
        case item::type_memory_unit:
            number = memory(value, format, unit);
            return type == item::type_memory || number == marker ? number : unit;
        case item::type_metric:
        case item::type_metric_unit:
            number = metric(value, format, unit);
            return type == item::type_metric || number == marker ? number : unit;
        default:
            return "";
        }
    }

    // Returns the text that an item shows for an existing value.
    std::string shown(int type, const tova::types::variant& given, const std::string& data) {
        is_open = false;
        if (type == item::type_text)
            return data;
        if (type == item::type_string)
            return given.as_string();
        if (type != item::type_int && type != item::type_double &&
            !(type >= item::type_memory && type <= item::type_duration))
            return "?invalid?";
        const std::string text = value(type, given, data);
        return text == marker ? "?invalid?" : text;
    }

    bool is_open = false;

private:
    const std::string marker = "-0";
    typedef std::vector<std::pair<std::string, std::string>> pairs;

    // Returns false for an odd number of tokens. A separator at the very end starts no token.
    static bool split(const std::string& format, pairs& result) {
        std::vector<std::string> tokens;
        std::size_t begin = 0;
        while (begin < format.size()) {
            const std::size_t end = std::min(format.find('\1', begin), format.size());
            tokens.push_back(format.substr(begin, end - begin));
            begin = end + 1;
        }
        for (std::size_t i = 0; i + 1 < tokens.size(); i += 2)
            result.emplace_back(tokens[i], tokens[i + 1]);
        return tokens.size() % 2 == 0;
    }

    static bool abbreviates(const std::string& token, const std::string& word) {
        return word.compare(0, token.size(), token) == 0 && token.size() <= word.size();
    }
    static int number(const std::string& token) {
        return static_cast<int>(std::atol(token.c_str()));
    }

    static std::string digits_of(unsigned long value, unsigned base) {
        std::string text;
        do
            text.insert(0, 1, "0123456789abcdef"[value % base]);
        while ((value /= base) != 0);
        return text;
    }
    static std::string digits_of(long value, unsigned base) {
        const unsigned long size = static_cast<unsigned long>(value);
        return value < 0 ? "-" + digits_of(0 - size, base) : digits_of(size, base);
    }

    std::string integer(long given, const std::string& format) const {
        unsigned base = 10;
        int field = 0;
        int prefix = 0;
        bool spaced = false;
        pairs options;
        if (!split(format, options))
            return marker;
        for (const auto& option : options) {
            const std::string& word = option.second;
            if (abbreviates(option.first, "base")) {
                if (abbreviates(word, "dec") || abbreviates(word, "default"))
                    base = 10;
                else if (abbreviates(word, "spaced_dec"))
                    base = 10, spaced = true;
                else if (abbreviates(word, "hex"))
                    base = 16, prefix = 2;
                else if (abbreviates(word, "oct"))
                    base = 8, prefix = 1;
                else if (abbreviates(word, "bin"))
                    base = 2, prefix = 1;
                else
                    return marker;
            } else if (abbreviates(option.first, "fieldsize")) {
                field = number(word);
            } else {
                return marker;
            }
        }

        const bool negative = given < 0;
        unsigned long value = static_cast<unsigned long>(given);
        if (base != 10 && negative)
            value = complement(value, base, field, prefix);
        const std::string text = digits_of(static_cast<long>(value), base);
        const long length = static_cast<long>(text.size());
        if (spaced)
            prefix = static_cast<int>((length - (text[0] == '-' ? 2 : 1)) / 3);
        if (field != 0 && length + prefix > field)
            return marker;
        std::string result = base == 8 ? "o" : base == 16 ? "0x" : "";
        if (!negative && base != 10) {
            long zeros = 0;
            if (field == 0 && base == 16)
                zeros = (4 - length % 4) % 4;
            else
                zeros = std::max(0L, field - prefix - length);
            result.append(static_cast<std::size_t>(zeros), '0');
        }
        if (spaced) {
            std::string grouped = text;
            const long first = text[0] == '-' ? 1 : 0;
            for (long at = length - 3; at > first; at -= 3)
                grouped.insert(static_cast<std::size_t>(at), " ");
            result += grouped;
        } else {
            result += text;
        }
        return base == 2 ? result + "b" : result;
    }

    // All arithmetic is in 64 bits and wraps.
    static unsigned long complement(unsigned long value, unsigned base, int field, int prefix) {
        long digits = static_cast<long>(digits_of(0 - value, base).size());
        unsigned long power = 1;
        for (long i = 0; i < digits; ++i)
            power *= base;
        if (field == 0) {
            if (static_cast<long>(value) < -(static_cast<long>(power) / 2)) {
                power *= base;
                ++digits;
            }
            for (; base == 16 && digits % 4 != 0; ++digits)
                power *= base;
        } else {
            for (; field - prefix > digits; ++digits)
                power *= base;
        }
        return value + power;
    }

    std::string print(const char* form, int width, int precision, double value) {
        std::vector<char> room(2000 + std::abs(static_cast<long>(width)) + std::max(precision, 0));
        const int size = std::snprintf(room.data(), room.size(), form, width, precision, value);
        return std::string(room.data(), static_cast<std::size_t>(size));
    }

    std::string floating(double value, const std::string& format) {
        int precision = 2;
        int field = 0;
        pairs options;
        if (!split(format, options))
            return marker;
        for (const auto& option : options) {
            if (abbreviates(option.first, "precision"))
                precision = number(option.second);
            else if (abbreviates(option.first, "fieldsize"))
                field = number(option.second);
            else
                return marker;
        }
        if (field == 0) {
            std::string text = print("%-*.*f", 32, precision, value);
            text.erase(text.find_last_not_of(' ') + 1);
            is_open = is_open || text.size() > 63;
            return text;
        }
        std::string text = print("%*.*f", field, precision, value);
        is_open = is_open || text.size() > 63;
        const std::size_t most = static_cast<std::size_t>(std::abs(static_cast<long>(field)));
        if (field < 0 || text.size() <= most)
            return text;
        text = print("%*.*e", field, precision, value);
        is_open = is_open || text.size() > 63;
        const std::size_t e = text.find('e');
        std::string result;
        if (e == std::string::npos)
            is_open = true;
        else if (text.size() - e > 4) {
            text.erase(e + 2, 1);
            if (text.size() < most)
                result = " ";
        }
        return result + text.substr(0, most);
    }

    std::string duration(double seconds, const std::string& format) {
        std::string precision = "2";
        bool is_short = false;
        pairs options;
        if (!split(format, options))
            return marker;
        for (const auto& option : options) {
            if (abbreviates(option.first, "precision")) {
                precision = option.second;
            } else if (abbreviates(option.first, "short_form")) {
                if (abbreviates(option.second, "true"))
                    is_short = true;
                else if (!abbreviates(option.second, "false"))
                    return marker;
            } else {
                return marker;
            }
        }
        // The text of a value that no integer can hold is left open.
        if (!(seconds > -9e18 && seconds < 9e18)) {
            is_open = true;
            return "";
        }
        const long days = static_cast<long>(seconds) / 86400;
        double rest = seconds - static_cast<double>(days) * 86400;
        const long hours = static_cast<long>(rest) / 3600;
        rest -= static_cast<double>(hours) * 3600;
        const long minutes = static_cast<long>(rest) / 60;
        rest -= static_cast<double>(minutes) * 60;
        std::string result;
        const auto write = [&result](long count, const char* word) {
            if (count != 0 || !result.empty())
                result += std::to_string(static_cast<int>(count)) + word;
        };
        write(days, is_short ? "d " : " dy ");
        write(hours, is_short ? "h " : " hr ");
        write(minutes, is_short ? "m " : " min ");
        return result + floating(rest, "prec\1" + precision) + (is_short ? "s" : " sec");
    }

    static int memory_index(const std::string& token) {
        if (token == "B")
            return 0;
        const std::size_t index = token.size() < 2 || token[1] != 'B'
                                      ? std::string::npos
                                      : std::string("KMGTPEZY").find(token[0]);
        return index == std::string::npos ? -1 : static_cast<int>(index) + 1;
    }

    // Returns the scaled number. With decimals, it has the format of a double, in which a ";" is
    // also a separator.
    std::string decimals(double value, const std::string& precision, const std::string& field) {
        std::string format = "precision;" + precision + ";fieldsize;" + field;
        std::replace(format.begin(), format.end(), ';', '\1');
        return floating(value, format);
    }

    std::string memory(const tova::types::variant& value, const std::string& format,
                       std::string& unit) {
        int base = 0;
        int target = -1;
        std::string precision = "0";
        std::string field = "0";
        pairs options;
        if (!split(format, options))
            return marker;
        for (const auto& option : options) {
            if (option.first.empty()) {
                target = 0;
            } else if (abbreviates(option.first, "target_unit")) {
                if ((target = memory_index(option.second)) == -1)
                    return marker;
            } else if (option.first == "any" || option.first == "default") {
                return marker;
            } else if (abbreviates(option.first, "base_unit")) {
                if ((base = memory_index(option.second)) == -1)
                    return marker;
            } else if (abbreviates(option.first, "precision")) {
                precision = option.second;
            } else if (abbreviates(option.first, "fieldsize")) {
                field = option.second;
            } else {
                return marker;
            }
        }
        int index = target == -1 ? base : target;
        std::string text;
        if (number(precision) != 0) {
            double x = value.as_double();
            if (target == -1)
                for (; x >= 1000 && index < 9; ++index)
                    x /= 1000;
            for (int i = base; target != -1 && i < target; ++i)
                x /= 1000;
            for (int i = target; target != -1 && i < base; ++i)
                x *= 1000;
            text = decimals(x, precision, field);
        } else {
            unsigned long n = value.as_uint64();
            if (target == -1)
                for (; n >= 1000 && index < 9; ++index)
                    n /= 1000;
            for (int i = base; target != -1 && i < target; ++i)
                n /= 1000;
            for (int i = target; target != -1 && i < base; ++i)
                n *= 1000;
            text = std::to_string(n);
        }
        is_open = is_open || index > 8;
        unit = index > 0 && index < 9 ? std::string(1, " KMGTPEZY"[index]) + "B" : "B";
        return text;
    }

    static int thousands(const std::string& token) {
        if (abbreviates(token, "base"))
            return 0;
        if (token == "mc")
            return -2;
        static const std::pair<char, int> symbols[] = {
            {'a', -6}, {'f', -5}, {'p', -4}, {'n', -3}, {'m', -1}, {'k', 1}, {'M', 2},
            {'G', 3},  {'T', 4},  {'P', 5},  {'E', 6},  {'Z', 7},  {'Y', 8}};
        for (const auto& one : symbols)
            if (token.size() == 1 && token[0] == one.first)
                return one.second;
        return -1000;
    }

    std::string metric(const tova::types::variant& value, const std::string& format,
                       std::string& unit) {
        int base = 0;
        int target = 0;
        bool has_target = false;
        bool is_short = true;
        std::string precision = "3";
        std::string field = "0";
        pairs options;
        if (!split(format, options))
            return marker;
        for (const auto& option : options) {
            if (abbreviates(option.first, "base_unit")) {
                if ((base = thousands(option.second)) == -1000)
                    return marker;
            } else if (abbreviates(option.first, "target_unit")) {
                if ((target = thousands(option.second)) == -1000)
                    return marker;
                has_target = true;
            } else if (abbreviates(option.first, "short_form")) {
                if (abbreviates(option.second, "true"))
                    is_short = true;
                else if (abbreviates(option.second, "false"))
                    is_short = false;
                else
                    return marker;
            } else if (abbreviates(option.first, "precision")) {
                precision = option.second;
            } else if (abbreviates(option.first, "fieldsize")) {
                field = option.second;
            } else {
                return marker;
            }
        }
        int index = has_target ? target : base;
        std::string text;
        if (number(precision) != 0) {
            double x = value.as_double();
            for (; !has_target && x >= 1000 && index < 4; ++index)
                x /= 1000;
            for (int i = base; has_target && i < target; ++i)
                x /= 1000;
            for (int i = target; has_target && i < base; ++i)
                x *= 1000;
            text = decimals(x, precision, field);
        } else {
            long n = value.as_int64();
            for (; !has_target && n >= 1000 && index < 4; ++index)
                n /= 1000;
            for (int i = base; has_target && i < target; ++i)
                n /= 1000;
            for (int i = target; has_target && i < base; ++i)
                n = static_cast<long>(static_cast<unsigned long>(n) * 1000);
            text = std::to_string(static_cast<unsigned long>(n));
        }
        static const char* const symbols[] = {"a", "f", "p", "n", "mc", "m", "", "k",
                                              "M", "G", "T", "P", "E",  "Z", "Y"};
        static const char* const names[] = {"atto",  "femto", "pico", "nano",  "micro",
                                            "milli", "",      "kilo", "mega",  "giga",
                                            "tera",  "peta",  "exa",  "zetta", "yotta"};
        unit = is_short ? symbols[index + 6] : names[index + 6];
        return text;
    }
};

}  // namespace test_support
