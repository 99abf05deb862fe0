#include <tova/i18n/format.hpp>

#include <tova/generic/convert/x_to_str.hpp>

#include "i18n/rendering.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace TOVA_2_18 {
namespace i18n {

namespace {

// Contract: the mark of a faulty format string. Items of a message show "?invalid?" in its place.
const char failure_marker[] = "-0";

// A run of characters within a format string, not owned. Behind it stands a separator or the
// terminator of the whole string.
struct token {
    const char* text;
    std::size_t size;
};

// Walks the tokens of a format string where it lies. They are those of `split_string`: an empty
// token within the list counts, an empty tail is none.
class token_reader {
public:
    explicit token_reader(token format)
        : m_position(format.text), m_end(format.text + format.size) {}

    // Contract: an odd number of tokens is a fault, whatever the tokens say. As an empty last value
    // is no token, "base" 0x01 at the end of an item is a fault as well.
    bool comes_in_pairs() const {
        auto tokens = std::count(m_position, m_end, detail::data_separator);
        if (m_position != m_end && m_end[-1] != detail::data_separator)
            ++tokens;
        return tokens % 2 == 0;
    }

    bool next(token& key, token& value) {
        if (m_position == m_end)
            return false;
        key = take();
        value = take();
        return true;
    }

private:
    token take() {
        const char* const end = std::find(m_position, m_end, detail::data_separator);
        const token result = {m_position, static_cast<std::size_t>(end - m_position)};
        m_position = end == m_end ? end : end + 1;
        return result;
    }

    const char* m_position;
    const char* m_end;
};

token whole(const std::string& text) {
    const token result = {text.c_str(), text.size()};
    return result;
}

// Contract: a word may be cut to any prefix, so the empty token is every word, and the first one
// that is asked for wins.
template <std::size_t Size>
bool shortens(token t, const char (&word)[Size]) {
    return t.size < Size && std::memcmp(t.text, word, t.size) == 0;
}

// Contract: text that is no number is 0, and a number is cut to 32 bits: 4294967298 reads as 2.
// What stands behind the token ends the number, so it needs no copy with a terminator. `atol` in
// its long form: compilers take for granted that the short one leaves errno alone, and drop the
// store.
int read_number(token t) {
    const int caller_errno = errno;
    const long value = std::strtol(t.text, nullptr, 10);
    errno = caller_errno;
    return static_cast<int>(value);
}

// Integers

struct int_options {
    int base = 10;
    int fieldsize = 0;
    int prefix_length = 0;
    bool spaced = false;
};

bool read_base(token word, int_options& options) {
    if (shortens(word, "dec") || shortens(word, "default")) {
        options.base = 10;
    } else if (shortens(word, "spaced_dec")) {
        options.base = 10;
        options.spaced = true;
    } else if (shortens(word, "hex")) {
        options.base = 16;
        options.prefix_length = 2;
    } else if (shortens(word, "oct")) {
        options.base = 8;
        options.prefix_length = 1;
    } else if (shortens(word, "bin")) {
        options.base = 2;
        options.prefix_length = 1;
    } else {
        return false;
    }
    return true;
}

// Contract: a later base leaves what an earlier one set beside the base. The prefix length of "hex"
// still counts in the field of a decimal number, and "spaced_dec" groups the digits of any base.
bool read_options(token format, int_options& options) {
    token_reader reader(format);
    if (!reader.comes_in_pairs())
        return false;
    token key, value;
    while (reader.next(key, value)) {
        if (shortens(key, "base")) {
            if (!read_base(value, options))
                return false;
        } else if (shortens(key, "fieldsize")) {
            options.fieldsize = read_number(value);
        } else {
            return false;
        }
    }
    return true;
}

// The radix complement of a negative number. Everything wraps at 64 bits: where the power leaves
// them nothing is added, and the number stays negative.
//
// Contract: without a field there is room for the sign in the top digit, and base 16 fills whole
// groups of four digits. With a field the complement has as many digits as the number or the field,
// whatever is more, and a top digit doesn't tell the sign: -5 in four characters of base 2 is 11b.
long complement(long value, const int_options& options) {
    const auto base = static_cast<unsigned long>(options.base);
    unsigned long power = 1;
    long digits = 0;
    for (unsigned long rest = 0UL - static_cast<unsigned long>(value); rest != 0; rest /= base) {
        power *= base;
        ++digits;
    }

    if (options.fieldsize == 0) {
        if (value < -(static_cast<long>(power) / 2)) {
            power *= base;
            ++digits;
        }
        for (; base == 16 && digits % 4 != 0; ++digits)
            power *= base;
    } else {
        const long width = static_cast<long>(options.fieldsize) - options.prefix_length;
        for (; digits < width && power != 0; ++digits)
            power *= base;
    }
    return static_cast<long>(static_cast<unsigned long>(value) + power);
}

// Groups of three from the right, with one blank between them, behind the sign.
void append_spaced(std::string& text, const char* digits, std::size_t length) {
    if (*digits == '-') {
        text += '-';
        ++digits;
        --length;
    }
    for (std::size_t i = 0; i < length; ++i) {
        if (i != 0 && (length - i) % 3 == 0)
            text += ' ';
        text += digits[i];
    }
}

bool append_int(std::string& text, long value, token format) {
    int_options options;
    if (!read_options(format, options))
        return false;

    // Stays true when the complement has made the value positive: complements get no zeros.
    const bool negative = value < 0;
    if (negative && options.base != 10)
        value = complement(value, options);

    char digits[72];  // a sign, 64 digits in base 2 and the terminator
    generic::convert::lltoa(value, digits, static_cast<unsigned int>(options.base));
    const long length = static_cast<long>(std::strlen(digits));

    long prefix_length = options.prefix_length;
    if (options.spaced)
        prefix_length = (value < 0 ? length - 2 : length - 1) / 3;

    // Contract: the field is a limit for a decimal number, which is never padded. A negative field
    // has room for nothing.
    const long field = options.fieldsize;
    if (field != 0 && length + prefix_length > field)
        return false;

    if (options.base == 8)
        text += 'o';  // the letter: a leading zero would be one more digit
    else if (options.base == 16)
        text += "0x";

    if (!negative && options.base != 10) {
        // In base 2 the prefix length stands for the letter at the end.
        const long zeros = field == 0 && options.base == 16 ? (4 - length % 4) % 4
                                                            : field - prefix_length - length;
        if (zeros > 0)
            text.append(static_cast<std::size_t>(zeros), '0');
    }

    if (options.spaced)
        append_spaced(text, digits, static_cast<std::size_t>(length));
    else
        text.append(digits, static_cast<std::size_t>(length));

    if (options.base == 2)
        text += 'b';
    return true;
}

// Floating-point numbers

struct double_options {
    int precision = 2;
    int fieldsize = 0;
};

bool read_options(token format, double_options& options) {
    token_reader reader(format);
    if (!reader.comes_in_pairs())
        return false;
    token key, value;
    while (reader.next(key, value)) {
        if (shortens(key, "precision"))
            options.precision = read_number(value);
        else if (shortens(key, "fieldsize"))
            options.fieldsize = read_number(value);
        else
            return false;
    }
    return true;
}

// Numbers are printed into a fixed buffer, without the blanks of their field.
const int buffer_size = 64;
const int longest_number = buffer_size - 1;

// More decimals never fit the buffer, and are not worked out.
const int most_decimals = buffer_size;

// In scientific notation a number has no more decimals than these, so those beyond are zeros. A
// smaller limit would round where a cut text shows it.
const int most_exact_decimals = 767;

// So many decimals leave room for a sign, a digit, the point and a three-digit exponent.
const int most_scientific_decimals = longest_number - 8;

struct printed_number {
    char text[buffer_size];
    int length;        // what stands in `text`
    long full_length;  // what the number would take
};

void print_scientific(printed_number& number, double value, int precision) {
    number.full_length = std::snprintf(number.text, sizeof number.text, "%.*e",
                                       std::min(precision, most_exact_decimals), value);
    number.length = static_cast<int>(std::min<long>(number.full_length, longest_number));
}

// A number that doesn't fit the buffer loses decimals; if that isn't enough it shows in scientific
// notation, where a cut would take digits in front of the point and show another number.
void print_fixed(printed_number& number, double value, int precision) {
    int decimals = std::min(precision, most_decimals);
    const int length = std::snprintf(number.text, sizeof number.text, "%.*f", decimals, value);
    number.length = length;
    number.full_length = static_cast<long>(length) + (precision - decimals);
    if (length <= longest_number)
        return;

    if (decimals < 0)
        decimals = 6;  // what printf takes a negative precision for
    const int left = decimals - (length - longest_number);
    if (left >= 0) {
        const int shorter = std::snprintf(number.text, sizeof number.text, "%.*f", left, value);
        number.length = std::min(shorter, longest_number);  // rounding may have added a digit
        return;
    }
    const long full_length = number.full_length;
    print_scientific(number, value, std::min(decimals, most_scientific_decimals));
    number.full_length = full_length;
}

// Contract: the hundreds of a three-digit exponent are dropped, so that every exponent has two
// digits: 1.50e+123 shows as 1.50e+23. A text without an exponent (infinity, not a number) stays.
void drop_hundreds_of_exponent(printed_number& number) {
    char* const end = number.text + number.length;
    char* const exponent = std::find(number.text, end, 'e');
    if (end - exponent <= 4)
        return;
    std::copy(exponent + 3, end, exponent + 2);
    --number.length;
}

void append_blanks(std::string& text, long count) {
    if (count > 0)
        text.append(static_cast<std::size_t>(count), ' ');
}

// Contract: a positive field is never exceeded. What doesn't fit goes to scientific notation and is
// cut to the field then, be it in the middle of the exponent. A negative field aligns to the left
// and holds everything.
void append_double(std::string& text, double value, const double_options& options) {
    const long field = options.fieldsize;
    printed_number number;
    print_fixed(number, value, options.precision);

    if (field <= 0) {
        text.append(number.text, static_cast<std::size_t>(number.length));
        append_blanks(text, -field - number.length);
        return;
    }
    if (number.full_length > field) {
        print_scientific(number, value, options.precision);
        drop_hundreds_of_exponent(number);
        number.length = static_cast<int>(std::min<long>(number.length, field));
    }
    append_blanks(text, field - number.length);
    text.append(number.text, static_cast<std::size_t>(number.length));
}

bool append_double(std::string& text, double value, token format) {
    double_options options;
    if (!read_options(format, options))
        return false;
    append_double(text, value, options);
    return true;
}

// Durations

struct duration_options {
    token precision = {"2", 1};
    bool short_form = false;
};

// Contract: "false" for the short form leaves an earlier "true" as it is.
bool read_options(token format, duration_options& options) {
    token_reader reader(format);
    if (!reader.comes_in_pairs())
        return false;
    token key, value;
    while (reader.next(key, value)) {
        if (shortens(key, "precision")) {
            options.precision = value;
        } else if (shortens(key, "short_form")) {
            if (shortens(value, "true"))
                options.short_form = true;
            else if (!shortens(value, "false"))
                return false;
        } else {
            return false;
        }
    }
    return true;
}

// What the processor's conversion gives: the least number stands for everything that doesn't fit.
long truncated(double value) {
    const double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<long>(value) : -0x7FFFFFFFFFFFFFFF - 1;
}

// Takes the whole units of so many seconds off the rest.
long take_units(double& rest, long seconds) {
    const long units = truncated(rest) / seconds;
    rest -= static_cast<double>(units * seconds);
    return units;
}

// The number is cut to 32 bits.
void append_unit(std::string& text, long units, const char* word) {
    char digits[16];
    generic::convert::ltoa(static_cast<int>(units), digits, 10);
    text += digits;
    text += word;
}

bool append_duration(std::string& text, double seconds, token format) {
    duration_options options;
    if (!read_options(format, options))
        return false;

    double rest = seconds;
    const long days = take_units(rest, 86400);
    const long hours = take_units(rest, 3600);
    const long minutes = take_units(rest, 60);

    const bool is_short = options.short_form;
    if (days != 0)
        append_unit(text, days, is_short ? "d " : " dy ");
    if (days != 0 || hours != 0)
        append_unit(text, hours, is_short ? "h " : " hr ");
    if (days != 0 || hours != 0 || minutes != 0)
        append_unit(text, minutes, is_short ? "m " : " min ");

    // Contract: an empty precision faults the seconds alone, behind the larger units: the whole
    // then isn't the failure marker, and shows as it is in a message.
    if (options.precision.size == 0) {
        text += failure_marker;
    } else {
        double_options number_options;
        number_options.precision = read_number(options.precision);
        append_double(text, rest, number_options);
    }
    text += is_short ? "s" : " sec";
    return true;
}

// Memory sizes and metric quantities

// Powers of 1000 between which a number is scaled.
struct scale_options {
    int base = 0;
    int target = 0;
    bool has_target = false;
    int precision = 0;  // 0: work in integers
    token precision_text = {"0", 1};
    token fieldsize_text = {"0", 1};
};

void multiply(double& number) {
    number *= 1000;
}

void multiply(unsigned long& number) {
    number *= 1000;
}

void multiply(long& number) {
    number = static_cast<long>(static_cast<unsigned long>(number) * 1000);
}

// Scales and gives the power that is left to show. Without a target that grows up to `last`.
template <typename Number>
int scale(Number& number, const scale_options& options, int last) {
    if (!options.has_target) {
        int power = options.base;
        for (; number >= 1000 && power < last; ++power)
            number /= 1000;
        return power;
    }
    for (int power = options.base; power < options.target; ++power)
        number /= 1000;
    for (int power = options.base; power > options.target; --power)
        multiply(number);
    return options.target;
}

// Contract: the texts pass through a format string with ";" for the separator. A ";" in one of them
// makes more tokens, and an empty field in the middle of a list makes an odd number of them.
bool append_scaled(std::string& text, double value, const scale_options& options) {
    std::string format = "precision;";
    format.append(options.precision_text.text, options.precision_text.size);
    format += ";fieldsize;";
    format.append(options.fieldsize_text.text, options.fieldsize_text.size);
    std::replace(format.begin(), format.end(), ';', detail::data_separator);
    return append_double(text, value, whole(format));
}

void append_scaled(std::string& text, unsigned long value) {
    char digits[24];
    generic::convert::ulltoa(value, digits, 10);
    text += digits;
}

// From 1: the characters in front of the "B".
const char memory_prefixes[] = " KMGTPEZY";
const int last_memory_index = 8;

int memory_index(token unit) {
    if (unit.size == 1 && *unit.text == 'B')
        return 0;
    if (unit.size < 2 || unit.text[1] != 'B')
        return -1;
    for (int index = 1; index <= last_memory_index; ++index)
        if (memory_prefixes[index] == *unit.text)
            return index;
    return -1;
}

bool read_memory_unit(token unit, int& index) {
    index = memory_index(unit);
    return index != -1;
}

bool read_memory_options(token format, scale_options& options) {
    token_reader reader(format);
    if (!reader.comes_in_pairs())
        return false;
    token key, value;
    while (reader.next(key, value)) {
        if (shortens(key, "target_unit")) {
            // Contract: the words that leave the target open are looked for in the key. Only the
            // empty key matches them here, and it sets the target to bytes whatever the value says;
            // a value "any" is an unknown unit.
            options.has_target = true;
            if (key.size == 0)
                options.target = 0;
            else if (!read_memory_unit(value, options.target))
                return false;
        } else if (shortens(key, "base_unit")) {
            if (!read_memory_unit(value, options.base))
                return false;
        } else if (shortens(key, "precision")) {
            options.precision = read_number(value);
            options.precision_text = value;
        } else if (shortens(key, "fieldsize")) {
            options.fieldsize_text = value;
        } else {
            return false;
        }
    }
    return true;
}

// Here and below: `unit` comes in empty, and stays empty after a fault.
bool append_memory(std::string& text, const types::variant& value, token format,
                   std::string& unit) {
    scale_options options;
    if (!read_memory_options(format, options))
        return false;

    int index;
    if (options.precision != 0) {
        double number = value.as_double();
        index = scale(number, options, last_memory_index);
        if (!append_scaled(text, number, options))
            return false;
    } else {
        // Contract: the integer form takes the value as unsigned, so -1 shows as 18 EB.
        unsigned long number = value.as_uint64();
        index = scale(number, options, last_memory_index);
        append_scaled(text, number);
    }
    if (index > 0)
        unit += memory_prefixes[index];
    unit += 'B';
    return true;
}

const int unknown_prefix = -1000;
const int first_power = -6;
const int last_scaled_power = 4;  // Contract: what is larger still shows in tera

const char* const metric_symbols[] = {"a", "f", "p", "n", "mc", "m", "", "k",
                                      "M", "G", "T", "P", "E",  "Z", "Y"};
const char* const metric_names[] = {"atto",  "femto", "pico", "nano",  "micro",
                                    "milli", "",      "kilo", "mega",  "giga",
                                    "tera",  "peta",  "exa",  "zetta", "yotta"};

int metric_power(token prefix) {
    if (shortens(prefix, "base"))
        return 0;
    int power = first_power;
    for (const char* symbol : metric_symbols) {
        if (std::strlen(symbol) == prefix.size &&
            std::memcmp(symbol, prefix.text, prefix.size) == 0)
            return power;
        ++power;
    }
    return unknown_prefix;
}

bool read_metric_prefix(token prefix, int& power) {
    power = metric_power(prefix);
    return power != unknown_prefix;
}

// Unlike in a duration, "false" for the short form takes back an earlier "true".
bool read_short_form(token word, bool& short_form) {
    if (shortens(word, "true"))
        short_form = true;
    else if (shortens(word, "false"))
        short_form = false;
    else
        return false;
    return true;
}

bool read_metric_options(token format, scale_options& options, bool& short_form) {
    token_reader reader(format);
    if (!reader.comes_in_pairs())
        return false;
    token key, value;
    while (reader.next(key, value)) {
        if (shortens(key, "base_unit")) {
            if (!read_metric_prefix(value, options.base))
                return false;
        } else if (shortens(key, "target_unit")) {
            options.has_target = true;
            if (!read_metric_prefix(value, options.target))
                return false;
        } else if (shortens(key, "short_form")) {
            if (!read_short_form(value, short_form))
                return false;
        } else if (shortens(key, "precision")) {
            options.precision = read_number(value);
            options.precision_text = value;
        } else if (shortens(key, "fieldsize")) {
            options.fieldsize_text = value;
        } else {
            return false;
        }
    }
    return true;
}

bool append_metric(std::string& text, const types::variant& value, token format,
                   std::string& unit) {
    scale_options options;
    options.precision = 3;
    options.precision_text = {"3", 1};
    bool short_form = true;
    if (!read_metric_options(format, options, short_form))
        return false;

    int power;
    if (options.precision != 0) {
        double number = value.as_double();
        power = scale(number, options, last_scaled_power);
        if (!append_scaled(text, number, options))
            return false;
    } else {
        // Contract: the integer form scales the value as signed and prints it as unsigned.
        long number = value.as_int64();
        power = scale(number, options, last_scaled_power);
        append_scaled(text, static_cast<unsigned long>(number));
    }
    unit = (short_form ? metric_symbols : metric_names)[power - first_power];
    return true;
}

typedef bool (*append_with_unit)(std::string& text, const types::variant& value, token format,
                                 std::string& unit);

bool append_number(append_with_unit append, std::string& text, const types::variant& value,
                   token format) {
    std::string unit;
    return append(text, value, format, unit);
}

// A number that reads like the failure marker stands for a fault here.
bool append_unit(append_with_unit append, std::string& text, const types::variant& value,
                 token format) {
    std::string number;
    std::string unit;
    if (!append(number, value, format, unit) || number == failure_marker)
        return false;
    text += unit;
    return true;
}

strings::ustring8 text_or_marker(bool good, strings::ustring8 text) {
    if (!good)
        text = failure_marker;
    return text;
}

}  // namespace

namespace detail {

bool append_value(std::string& text, message_item::type_t type, const types::variant& value,
                  const strings::ustring8& data) {
    const auto separator = data.find(data_separator);
    const auto begin = separator == std::string::npos ? data.size() : separator + 1;
    const token format = {data.c_str() + begin, data.size() - begin};
    switch (type) {
    case message_item::type_int:
        return append_int(text, value.as_int64(), format);
    case message_item::type_double:
        return append_double(text, value.as_double(), format);
    case message_item::type_memory:
        return append_number(append_memory, text, value, format);
    case message_item::type_memory_unit:
        return append_unit(append_memory, text, value, format);
    case message_item::type_metric:
        return append_number(append_metric, text, value, format);
    case message_item::type_metric_unit:
        return append_unit(append_metric, text, value, format);
    case message_item::type_duration:
        return append_duration(text, value.as_double(), format);
    default:
        return true;
    }
}

}  // namespace detail

strings::ustring8 format_value(message_item::type_t type, types::variant value,
                               strings::ustring8 const& data) {
    strings::ustring8 text;
    const bool good = detail::append_value(text, type, value, data);
    return text_or_marker(good, std::move(text));
}

namespace _private {

strings::ustring8 format_int(long value, strings::ustring8 const& format) {
    strings::ustring8 text;
    const bool good = append_int(text, value, whole(format));
    return text_or_marker(good, std::move(text));
}

strings::ustring8 format_double(double value, strings::ustring8 const& format) {
    strings::ustring8 text;
    const bool good = append_double(text, value, whole(format));
    return text_or_marker(good, std::move(text));
}

strings::ustring8 format_duration(double seconds, strings::ustring8 const& format) {
    strings::ustring8 text;
    const bool good = append_duration(text, seconds, whole(format));
    return text_or_marker(good, std::move(text));
}

strings::ustring8 format_memory(types::variant value, strings::ustring8 const& format,
                                strings::ustring8& unit) {
    unit.clear();
    strings::ustring8 text;
    const bool good = append_memory(text, value, whole(format), unit);
    return text_or_marker(good, std::move(text));
}

strings::ustring8 format_metric(types::variant value, strings::ustring8 const& format,
                                strings::ustring8& unit) {
    unit.clear();
    strings::ustring8 text;
    const bool good = append_metric(text, value, whole(format), unit);
    return text_or_marker(good, std::move(text));
}

int mem_prefix_index(strings::ustring8 const& unit) {
    return memory_index(whole(unit));
}

int thousands(strings::ustring8 const& prefix) {
    return metric_power(whole(prefix));
}

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
