/// @file
/// Converts the values of options between the text that users write and the types that programs
/// use.
///
///     int port = 0;
///     const std::string problem = option_value<int>::read("80x", port);  // "\"80x\" is not a ..."
///
/// All functions are pure; threads may share their arguments.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/checked.hpp>

#include <algorithm>
#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace TOVA_2_18 {
namespace extras {
namespace _private {

inline std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

inline std::string lower_case(std::string text) {
    for (char& byte : text)
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte - 'A' + 'a');
    return text;
}

// `read` sets the value and returns an empty string, or returns the error in the text. `write`
// returns a text that reads back as the value. `kind` is the name of the value in a help text.
template <typename Value, typename Enable = void>
struct option_value {
    static_assert(sizeof(Value) == 0,
                  "an option holds a bool, an integer, a floating-point number, "
                  "a std::string, or a std::vector of one of them");
};

template <>
struct option_value<bool> {
    static std::string read(const std::string& text, bool& value) {
        const std::string lower = lower_case(text);
        value = lower == "yes" || lower == "on" || lower == "true" || lower == "1";
        const bool is_false = lower == "no" || lower == "off" || lower == "false" || lower == "0";
        return value || is_false ? std::string() : quoted(text) + " is neither yes nor no";
    }
    static std::string write(bool value) { return value ? "yes" : "no"; }
    static const char* kind() { return "yes|no"; }
};

template <typename Integer>
struct option_value<Integer, typename std::enable_if<std::is_integral<Integer>::value>::type> {
    // Accepts decimal numbers, and the prefixes of the library's own conversions. A leading 0 is
    // rejected, because it means octal there and decimal elsewhere.
    static std::string read(const std::string& text, Integer& value) {
        const std::size_t sign =
            text.compare(0, 1, "-") == 0 || text.compare(0, 1, "+") == 0 ? 1 : 0;
        const std::string prefix = lower_case(text.substr(sign, 2));
        const unsigned radix = prefix == "0x" ? 16 : prefix == "0b" ? 2 : 10;
        std::string digits = text;
        if (radix != 10)
            digits.erase(sign, 2);
        else if (prefix.size() == 2 && prefix[0] == '0' && prefix[1] >= '0' && prefix[1] <= '9')
            return quoted(text) + " has a leading 0, which could mean octal";
        if (digits.size() > sign && (digits[sign] == '-' || digits[sign] == '+'))
            return quoted(text) + " is not a whole number";
        const checked<Integer> parsed = try_parse<Integer>(digits, radix);
        if (parsed.code() == check_error::out_of_range)
            return quoted(text) + " is out of range";
        if (!parsed)
            return quoted(text) + " is not a whole number";
        value = parsed.value();
        return std::string();
    }
    static std::string write(Integer value) { return std::to_string(value); }
    static const char* kind() { return "NUMBER"; }
};

template <typename Floating>
struct option_value<Floating,
                    typename std::enable_if<std::is_floating_point<Floating>::value>::type> {
    static std::string read(const std::string& text, Floating& value) {
        const checked<Floating> parsed = try_parse<Floating>(text);
        if (parsed.code() == check_error::out_of_range)
            return quoted(text) + " is out of range";
        if (!parsed)
            return quoted(text) + " is not a number";
        value = parsed.value();
        return std::string();
    }
    static std::string write(Floating value) { return exact(value); }
    static const char* kind() { return "NUMBER"; }
};

template <>
struct option_value<std::string> {
    static std::string read(const std::string& text, std::string& value) {
        value = text;
        return std::string();
    }
    static std::string write(const std::string& value) { return value; }
    static const char* kind() { return "TEXT"; }
};

// One value or a list of values, as the texts of its elements.
template <typename Value>
struct option_type {
    typedef Value element;
    static constexpr bool is_list = false;
    static std::vector<std::string> write(const Value& value) {
        return {option_value<Value>::write(value)};
    }
    static Value read(const std::vector<std::string>& texts) {
        Value value{};
        option_value<Value>::read(texts.at(0), value);
        return value;
    }
};

template <typename Value>
struct option_type<std::vector<Value>> {
    typedef Value element;
    static constexpr bool is_list = true;
    static std::vector<std::string> write(const std::vector<Value>& values) {
        std::vector<std::string> texts;
        for (const auto& value : values)
            texts.push_back(option_value<Value>::write(value));
        return texts;
    }
    static std::vector<Value> read(const std::vector<std::string>& texts) {
        std::vector<Value> values;
        for (const std::string& text : texts) {
            Value value{};
            option_value<Value>::read(text, value);
            values.push_back(value);
        }
        return values;
    }
};

// The number of edits that turn one name into the other: a byte added, removed or replaced, or two
// neighbors swapped.
inline std::size_t name_distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> before_last(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t changed = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, changed});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        before_last.swap(last);
        last.swap(row);
    }
    return last[to.size()];
}

// Returns the name that was probably meant: the nearest one, at a distance of up to a third of its
// length, or an empty string. The last part of a name, after a dot, is compared as well.
inline std::string nearest_name(const std::string& name, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t smallest = std::max<std::size_t>(1, name.size() / 3) + 1;
    for (const std::string& candidate : names) {
        const std::string last_part = candidate.substr(candidate.rfind('.') + 1);
        const std::size_t distance =
            std::min(name_distance(name, candidate), name_distance(name, last_part));
        if (distance < smallest) {
            smallest = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18
