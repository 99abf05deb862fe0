// Value formatting: turns a variant into the text of a message argument.
//
//     item data            "size" 01 "precision" 01 "1" 01 "fieldsize" 01 "8"
//     split                 name  |  format string            append_value
//     read the options      keys and values, in pairs         read_options, *_options::set
//     render the value      append to the caller's buffer     render_int, render_double, ...
//
// There is one options struct and one renderer for each kind of value. A renderer returns false for
// an invalid format string and for an integer that doesn't fit its field. It detects both before it
// appends anything, so the caller's buffer is unchanged on failure. Only the published functions
// turn false into the failure marker "-0", and only items turn the marker into "?invalid?".
//
// Memory sizes and metric quantities are scaled by powers of 1000 first and share that code. One
// renderer returns both the number and the unit, since a message shows them in two separate items.
//
// Nothing here keeps state. append_number.cpp writes digits, format_options.hpp reads format
// strings.
#include <tova/i18n/format.hpp>

#include "generic/convert/number_locale.hpp"
#include "generic/convert/number_string.hpp"
#include "i18n/append_number.hpp"
#include "i18n/format_options.hpp"
#include "i18n/rendering.hpp"
#include "types/truncate.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace TOVA_2_18 {
namespace i18n {

namespace {

using detail::abbreviates;
using detail::append_decimal;
using detail::failure_marker;
using detail::read_flag;
using detail::read_number;
using detail::read_options;
using detail::text_buffer;
using detail::token;
using detail::whole;

// --- Integers ----------------------------------------------------------------------------------

const struct base_row {
    const char* word;
    int base;
    int prefix_length;
    bool spaced;
} bases[] = {
    // In the order in which an abbreviation is matched.
    {"dec", 10, 0, false}, {"default", 10, 0, false}, {"spaced_dec", 10, 0, true},
    {"hex", 16, 2, false}, {"oct", 8, 1, false},      {"bin", 2, 1, false},
};

// An options struct starts with the defaults, and `set` tests the keys in a fixed order. The order
// matters only for the empty key, which matches the first word tested.
struct int_options {
    int base = 10;
    int fieldsize = 0;
    int prefix_length = 0;  // characters of the field that are not digits: "0x", "o", a final "b"
    bool spaced = false;

    bool set(token key, token value) {
        if (abbreviates(key, "base"))
            return set_base(value);
        if (!abbreviates(key, "fieldsize"))
            return false;
        fieldsize = read_number(value);
        return true;
    }

    // Contract: a later base changes only the base. The prefix length of an earlier "hex" still
    // counts toward the field of a decimal number, and "spaced_dec" groups the digits in any base.
    bool set_base(token word) {
        const auto row = std::find_if(std::begin(bases), std::end(bases),
                                      [&](const base_row& r) { return abbreviates(word, r.word); });
        if (row == std::end(bases))
            return false;
        base = row->base;
        if (row->prefix_length != 0)
            prefix_length = row->prefix_length;
        spaced = spaced || row->spaced;
        return true;
    }
};

// The radix complement of a negative number: the value plus a power of the base.
//
// All arithmetic wraps at 64 bits. A power that doesn't fit becomes 0, so nothing is added and the
// number stays negative.
//
// Contract: without a field the top digit has room for the sign, and base 16 fills whole groups of
// four digits. With a field the complement has as many digits as the number or the field, whichever
// is more, and the top digit doesn't show the sign: -5 in base 2 with a field of four characters is
// 11b.
long complement(long value, const int_options& options) {
    const auto base = static_cast<unsigned long>(options.base);
    unsigned long power = 1;
    long digits = 0;
    // The magnitude, in unsigned arithmetic: the smallest long has no positive counterpart.
    for (unsigned long rest = 0UL - static_cast<unsigned long>(value); rest != 0; rest /= base) {
        power *= base;
        ++digits;
    }

    if (options.fieldsize == 0) {
        // Half of the power is the last value whose top digit still shows the sign.
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

// The number of leading zeros for a number that isn't negative, in a base other than 10. Without a
// field, base 16 is padded to groups of four digits and other bases are not padded.
long leading_zeros(const int_options& options, long prefix_length, long length) {
    if (options.fieldsize == 0)
        return options.base == 16 ? (4 - length % 4) % 4 : 0;
    return options.fieldsize - prefix_length - length;
}

// The sign, then groups of three digits counted from the right, with a space between them.
void append_grouped(text_buffer& text, const char* digits, long length) {
    if (*digits == '-') {
        text += '-';
        ++digits;
        --length;
    }
    for (long i = 0; i < length; ++i) {
        if (i != 0 && (length - i) % 3 == 0)
            text += ' ';
        text += digits[i];
    }
}

bool render_int(text_buffer& text, long value, token format) {
    int_options options;
    if (!read_options(format, options))
        return false;

    // Remembered because the complement makes the value positive; a complement has no leading
    // zeros.
    const bool negative = value < 0;
    if (negative && options.base != 10)
        value = complement(value, options);

    char digits[detail::digit_buffer_size];
    const long length = static_cast<long>(detail::write_digits(digits, value, options.base));

    // Grouped digits count their separators instead of the prefix, in every base.
    long prefix_length = options.prefix_length;
    if (options.spaced)
        prefix_length = (value < 0 ? length - 2 : length - 1) / 3;

    // Contract: for a decimal number the field is only a limit, without padding. Nothing fits a
    // negative field.
    const long field = options.fieldsize;
    if (field != 0 && length + prefix_length > field)
        return false;

    if (options.base == 8)
        text += 'o';  // the letter: a leading zero would look like another digit
    else if (options.base == 16)
        text += "0x";

    if (!negative && options.base != 10) {
        const long zeros = leading_zeros(options, prefix_length, length);
        if (zeros > 0)
            text.append(static_cast<std::size_t>(zeros), '0');
    }

    if (options.spaced)
        append_grouped(text, digits, length);
    else
        text.append(digits, static_cast<std::size_t>(length));

    if (options.base == 2)
        text += 'b';
    return true;
}

// --- Floating-point numbers --------------------------------------------------------------------

struct double_options {
    int precision = 2;
    int fieldsize = 0;

    bool set(token key, token value) {
        if (abbreviates(key, "precision"))
            precision = read_number(value);
        else if (abbreviates(key, "fieldsize"))
            fieldsize = read_number(value);
        else
            return false;
        return true;
    }
};

bool render_double(text_buffer& text, double value, token format) {
    double_options options;
    if (!read_options(format, options))
        return false;
    detail::append_double(text, value, options.precision, options.fieldsize);
    return true;
}

// --- Durations ---------------------------------------------------------------------------------

struct duration_options {
    token precision = {"2", 1};
    bool short_form = false;

    // Contract: "false" does not reset an earlier "true". In metric quantities it does.
    bool set(token key, token value) {
        if (abbreviates(key, "precision")) {
            precision = value;
            return true;
        }
        bool flag;
        if (!abbreviates(key, "short_form") || !read_flag(value, flag))
            return false;
        short_form = short_form || flag;
        return true;
    }
};

// Returns how many whole units of `seconds` seconds are in `rest`, and subtracts them. The fraction
// stays in `rest`; if `rest` is negative, so is the result.
long take_units(double& rest, long seconds) {
    const long units = types::detail::truncate<long>(rest) / seconds;
    rest -= static_cast<double>(units * seconds);
    return units;
}

bool render_duration(text_buffer& text, double seconds, token format) {
    duration_options options;
    if (!read_options(format, options))
        return false;

    double rest = seconds;
    const long days = take_units(rest, 86400);
    const long hours = take_units(rest, 3600);
    const long minutes = take_units(rest, 60);
    const struct {
        long count;
        const char* short_word;
        const char* long_word;
    } units[] = {{days, "d ", " dy "}, {hours, "h ", " hr "}, {minutes, "m ", " min "}};

    // All units from the first one that isn't 0 are shown. Counts are cut to 32 bits.
    bool started = false;
    for (const auto& unit : units) {
        started = started || unit.count != 0;
        if (!started)
            continue;
        append_decimal(text, static_cast<int>(unit.count));
        text += options.short_form ? unit.short_word : unit.long_word;
    }

    // Contract: an empty precision makes only the seconds fail: they show as the failure marker
    // after the larger units. The text as a whole isn't the marker then, so a message shows it
    // unchanged.
    if (options.precision.size == 0)
        text += failure_marker;
    else
        detail::append_double(text, rest, read_number(options.precision), 0);
    text += options.short_form ? "s" : " sec";
    return true;
}

// --- Scaling by powers of 1000 -----------------------------------------------------------------

// Options that memory sizes and metric quantities share. Units are powers of 1000.
struct scale_options {
    explicit scale_options(token default_precision) : precision(default_precision) {}

    int base = 0;             // the unit of the value
    int target = 0;           // the unit to show, if has_target
    bool has_target = false;  // otherwise the unit follows from the size

    // Contract: both are passed on unparsed, see append_with_decimals.
    token precision;
    token fieldsize = {"0", 1};

    bool set_number(token key, token value) {
        if (abbreviates(key, "precision"))
            precision = value;
        else if (abbreviates(key, "fieldsize"))
            fieldsize = value;
        else
            return false;
        return true;
    }
};

void multiply(double& number) {
    number *= 1000;
}

void multiply(unsigned long& number) {
    number *= 1000;
}

// Wraps, like the unsigned form.
void multiply(long& number) {
    number = static_cast<long>(static_cast<unsigned long>(number) * 1000);
}

// Scales the number and returns the power to show. Without a target the power goes up to `last` at
// most.
template <typename Number>
int scale(Number& number, const scale_options& options, int last) {
    int power = options.base;
    if (!options.has_target) {
        for (; number >= 1000 && power < last; ++power)
            number /= 1000;
        return power;
    }
    for (; power < options.target; ++power)
        number /= 1000;
    for (; power > options.target; --power)
        multiply(number);
    return power;
}

// Contract: precision and field are put into a second format string with ";" as the separator, so a
// ";" in one of them produces extra tokens. An empty field leaves an odd number of tokens, which is
// invalid. That happens only if another pair follows the field in the item, since otherwise the
// empty value is not a token.
bool append_with_decimals(text_buffer& text, double value, const scale_options& options) {
    std::string format = "precision;";
    format.append(options.precision.text, options.precision.size);
    format += ";fieldsize;";
    format.append(options.fieldsize.text, options.fieldsize.size);
    std::replace(format.begin(), format.end(), ';', detail::data_separator);
    return render_double(text, value, whole(format));
}

// Appends the scaled number and sets the power to show.
//
// Contract: a precision of 0 doesn't round. The number is scaled as an integer, by truncating
// divisions; the field is ignored, and the 64 bits of a negative number are shown as unsigned.
template <typename Integer>
bool append_scaled(text_buffer& text, const types::variant& value,
                   Integer (types::variant::*as_integer)() const, const scale_options& options,
                   int last, int& power) {
    if (read_number(options.precision) != 0) {
        double number = value.as_double();
        power = scale(number, options, last);
        return append_with_decimals(text, number, options);
    }
    Integer number = (value.*as_integer)();
    power = scale(number, options, last);
    append_decimal(text, static_cast<unsigned long>(number));
    return true;
}

// --- Memory sizes ------------------------------------------------------------------------------

const int unknown_unit = -1;
const char memory_prefixes[] = " KMGTPEZY";  // prefix of the "B", by index; 0 has none
const int last_memory_index = 8;

// Only two characters are examined, so "KBytes" is read as "KB".
int memory_index(token unit) {
    if (unit.size == 1 && *unit.text == 'B')
        return 0;
    if (unit.size < 2 || unit.text[1] != 'B')
        return unknown_unit;
    for (int index = 1; index <= last_memory_index; ++index)
        if (memory_prefixes[index] == *unit.text)
            return index;
    return unknown_unit;
}

struct memory_options : scale_options {
    memory_options() : scale_options({"0", 1}) {}

    bool set(token key, token value) {
        if (abbreviates(key, "target_unit")) {
            // Contract: "any" and "default", the words that leave the choice of the unit open, are
            // compared with the key instead of the value. Only the empty key matches them here, and
            // it sets the target to bytes whatever the value is. The value "any" is an unknown
            // unit.
            has_target = true;
            target = key.size == 0 ? 0 : memory_index(value);
            return target != unknown_unit;
        }
        if (abbreviates(key, "base_unit")) {
            base = memory_index(value);
            return base != unknown_unit;
        }
        return set_number(key, value);
    }
};

// `unit` must be empty on entry, here and in render_metric. It stays empty for an invalid format
// string.
bool render_memory(text_buffer& text, const types::variant& value, token format,
                   std::string& unit) {
    memory_options options;
    int index;
    // Contract: the integer form is unsigned, so -1 is shown as 18 EB.
    if (!read_options(format, options) ||
        !append_scaled(text, value, &types::variant::as_uint64, options, last_memory_index, index))
        return false;
    if (index > 0)
        unit += memory_prefixes[index];
    unit += 'B';
    return true;
}

// --- Metric quantities -------------------------------------------------------------------------

const int unknown_prefix = -1000;
const int first_power = -6;

// Contract: scaling by size stops at tera, though larger prefixes exist.
const int last_scaled_power = 4;

// By power, starting with the smallest.
const char* const metric_symbols[] = {"a", "f", "p", "n", "mc", "m", "", "k",
                                      "M", "G", "T", "P", "E",  "Z", "Y"};
const char* const metric_names[] = {"atto",  "femto", "pico", "nano",  "micro",
                                    "milli", "",      "kilo", "mega",  "giga",
                                    "tera",  "peta",  "exa",  "zetta", "yotta"};

// The tokens "b" to "base" and the empty token mean no prefix. Names such as "kilo" appear only in
// output.
int metric_power(token prefix) {
    if (abbreviates(prefix, "base"))
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

struct metric_options : scale_options {
    bool short_form = true;

    metric_options() : scale_options({"3", 1}) {}

    bool set(token key, token value) {
        if (abbreviates(key, "base_unit")) {
            base = metric_power(value);
            return base != unknown_prefix;
        }
        if (abbreviates(key, "target_unit")) {
            has_target = true;
            target = metric_power(value);
            return target != unknown_prefix;
        }
        if (abbreviates(key, "short_form"))
            return read_flag(value, short_form);
        return set_number(key, value);
    }
};

bool render_metric(text_buffer& text, const types::variant& value, token format,
                   std::string& unit) {
    metric_options options;
    int power;
    // Contract: the integer form is scaled as signed and shown as unsigned.
    if (!read_options(format, options) ||
        !append_scaled(text, value, &types::variant::as_int64, options, last_scaled_power, power))
        return false;
    unit = (options.short_form ? metric_symbols : metric_names)[power - first_power];
    return true;
}

// --- One of the two results --------------------------------------------------------------------

typedef bool (*renderer)(text_buffer& text, const types::variant& value, token format,
                         std::string& unit);

bool render_number_only(renderer render, text_buffer& text, const types::variant& value,
                        token format) {
    std::string unit;
    return render(text, value, format, unit);
}

// Contract: a number that reads like the failure marker counts as a failure here.
bool render_unit_only(renderer render, text_buffer& text, const types::variant& value,
                      token format) {
    text_buffer number;
    std::string unit;
    if (!render(number, value, format, unit) || number.string() == failure_marker)
        return false;
    text += unit;
    return true;
}

// Returns the text that a renderer appends to an empty string, or the failure marker.
template <typename Render>
strings::ustring8 text_or_marker(Render render) {
    text_buffer text;
    if (!render(text))
        text += failure_marker;
    return text.string();
}

}  // namespace

namespace detail {

// The other types have no format: nothing is appended, and that is not a failure.
namespace {

bool append_any_value(text_buffer& text, message_item::type_t type, const types::variant& value,
                      token format) {
    switch (type) {
    case message_item::type_int:
        return render_int(text, value.as_int64(), format);
    case message_item::type_double:
        return render_double(text, value.as_double(), format);
    case message_item::type_memory:
        return render_number_only(render_memory, text, value, format);
    case message_item::type_memory_unit:
        return render_unit_only(render_memory, text, value, format);
    case message_item::type_metric:
        return render_number_only(render_metric, text, value, format);
    case message_item::type_metric_unit:
        return render_unit_only(render_metric, text, value, format);
    case message_item::type_duration:
        return render_duration(text, value.as_double(), format);
    default:
        return true;
    }
}

}  // namespace

// Most numbers have no format string, and then the options are the defaults.
bool append_plain_number(text_buffer& text, message_item::type_t type,
                         const types::variant& value) {
    if (type == message_item::type_int) {
        append_decimal(text, value.as_int64());
        return true;
    }
    if (type != message_item::type_double)
        return false;
    const double_options defaults;
    append_double(text, value.as_double(), defaults.precision, defaults.fieldsize);
    return true;
}

bool append_value(text_buffer& text, message_item::type_t type, const types::variant& value,
                  token format) {
    return (format.size == 0 && append_plain_number(text, type, value)) ||
           append_any_value(text, type, value, format);
}

}  // namespace detail

strings::ustring8 format_value(message_item::type_t type, types::variant value,
                               const strings::ustring8& data) {
    const token format = detail::format_after(data, detail::name_size(data));
    return text_or_marker(
        [&](text_buffer& text) { return detail::append_value(text, type, value, format); });
}

namespace _private {

strings::ustring8 format_int(long value, const strings::ustring8& format) {
    return text_or_marker(
        [&](text_buffer& text) { return render_int(text, value, whole(format)); });
}

// Without options, a number of usual size is written where it stays.
strings::ustring8 format_double(double value, const strings::ustring8& format) {
    if (format.empty() && generic::convert::detail::has_c_decimal_point()) {
        strings::ustring8 text = generic::convert::detail::two_decimals_string(value);
        if (!text.empty())
            return text;
    }
    return text_or_marker(
        [&](text_buffer& text) { return render_double(text, value, whole(format)); });
}

strings::ustring8 format_duration(double seconds, const strings::ustring8& format) {
    return text_or_marker(
        [&](text_buffer& text) { return render_duration(text, seconds, whole(format)); });
}

// Contract: here and below the unit is cleared before the format is read, so a caller that passes
// the same string for both gets the defaults.
strings::ustring8 format_memory(types::variant value, const strings::ustring8& format,
                                strings::ustring8& unit) {
    unit.clear();
    return text_or_marker(
        [&](text_buffer& text) { return render_memory(text, value, whole(format), unit); });
}

strings::ustring8 format_metric(types::variant value, const strings::ustring8& format,
                                strings::ustring8& unit) {
    unit.clear();
    return text_or_marker(
        [&](text_buffer& text) { return render_metric(text, value, whole(format), unit); });
}

int mem_prefix_index(const strings::ustring8& unit) {
    return memory_index(whole(unit));
}

int thousands(const strings::ustring8& prefix) {
    return metric_power(whole(prefix));
}

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
