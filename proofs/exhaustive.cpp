// Compares the library with plain forms on every input of a domain: `proof_exhaustive DOMAIN BEGIN
// END [SEED ONE_IN]` tests the inputs from BEGIN to END, or only one in ONE_IN blocks of them,
// chosen at random by SEED. It prints the number of tested inputs, and stops at the first
// difference. `proof_exhaustive --list` prints the domains with their sizes.
#include <tova/tova.hpp>

#include "strings/unicode_oracle.hpp"
#include "system/date_time/calendar_oracle.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace tova;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

// Inputs are tested in blocks. Only the blocks at the ends of the range may be incomplete.
const std::uint64_t block = 4096;

void require(bool condition, const char* what, std::uint64_t input) {
    if (condition)
        return;
    std::cout << "different: " << what << " of input " << input << '\n';
    std::exit(1);
}

// A pseudorandom number for each input: the mixing steps of splitmix64.
std::uint64_t hash(std::uint64_t mixed) {
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
    return mixed ^ (mixed >> 31);
}

// ---- every sequence of four bytes

// Decodes four bytes followed by an ASCII character. Each byte that does not begin a sequence
// becomes '?' in 32 bits, and makes the whole string invalid in 16 bits. Only the structure of a
// sequence matters: the number of bytes that the first byte requires, and their continuation marks.
struct decoded {
    wchar_t points[4];
    unsigned count;
    bool is_valid;
};

decoded decode(const unsigned char* bytes) {
    decoded result = {{0, 0, 0, 0}, 0, true};
    for (unsigned at = 0; at < 4;) {
        const unsigned char first = bytes[at];
        const unsigned length = first < 0x80   ? 1
                                : first < 0xC0 ? 0
                                : first < 0xE0 ? 2
                                : first < 0xF0 ? 3
                                : first < 0xF8 ? 4
                                               : 0;
        bool is_sequence = length != 0 && at + length <= 4;
        unsigned point = length < 2 ? first : first & (0x7Fu >> length);
        for (unsigned i = 1; is_sequence && i < length; ++i) {
            is_sequence = (bytes[at + i] & 0xC0) == 0x80;
            point = point << 6 | (bytes[at + i] & 0x3F);
        }
        result.points[result.count++] = static_cast<wchar_t>(is_sequence ? point : '?');
        result.is_valid &= is_sequence;
        at += is_sequence ? length : 1;
    }
    return result;
}

void append_units(ustring16& text, const decoded& all) {
    for (unsigned i = 0; i < all.count; ++i) {
        const unsigned point = static_cast<unsigned>(all.points[i]);
        // A sequence of four bytes is a pair, whatever its value.
        if (all.count == 1) {
            text += static_cast<unsigned short>(0xD800 - 64 + (point >> 10));
            text += static_cast<unsigned short>(0xDC00 + (point & 0x3FF));
        } else {
            text += static_cast<unsigned short>(point);
        }
    }
}

// All inputs of a block form one string, so that the vector kernels see them at every offset. The
// valid inputs form another string for 16 bits, and each invalid input is converted alone.
void check_four_bytes(std::uint64_t begin, std::uint64_t end) {
    ustring8 all;
    ustring8 valid;
    ustring32 expected;
    ustring16 expected_units;
    ustring8 one("an ASCII string of 32 characters????.");
    const std::size_t place = one.size() - 5;
    for (std::uint64_t input = begin; input < end; ++input) {
        const unsigned char bytes[] = {
            static_cast<unsigned char>(input >> 24), static_cast<unsigned char>(input >> 16),
            static_cast<unsigned char>(input >> 8), static_cast<unsigned char>(input)};
        const decoded result = decode(bytes);
        const char* const chars = reinterpret_cast<const char*>(bytes);
        all.append(chars, 4);
        all += '.';
        expected.append(result.points, result.count);
        expected += L'.';
        if (result.is_valid) {
            valid.append(chars, 4);
            valid += '.';
            append_units(expected_units, result);
            expected_units += '.';
        } else {
            std::memcpy(&one[place], bytes, 4);
            const ustring16 units = strings::utf8_to_utf16(one);
            require(units.size() == 2 && units[0] == '-' && units[1] == '1', "16 bits, invalid",
                    input);
        }
    }
    require(strings::utf8_to_utf32(all) == expected, "32 bits, in the block", begin);
    require(strings::utf8_to_utf16(valid) == expected_units, "16 bits, in the block", begin);
}

// ---- every code point

void check_conversions(std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t input = begin; input < end; ++input) {
        const unicode_oracle::points point = {static_cast<long>(input)};
        const ustring32 wide(1, static_cast<wchar_t>(input));
        const ustring8 narrow = strings::utf32_to_utf8(wide);
        require(narrow == unicode_oracle::utf32_to_utf8(point), "32 to 8 bits", input);
        const ustring16 units = strings::utf32_to_utf16(wide);
        const unicode_oracle::points expected = unicode_oracle::utf32_to_utf16(point);
        require(unicode_oracle::points(units.begin(), units.end()) == expected, "32 to 16 bits",
                input);
        const ustring32 decoded = strings::utf8_to_utf32(narrow);
        require(unicode_oracle::points(decoded.begin(), decoded.end()) ==
                    unicode_oracle::utf8_to_utf32(narrow),
                "8 to 32 bits", input);
        const ustring16 from_narrow = strings::utf8_to_utf16(narrow);
        require(unicode_oracle::points(from_narrow.begin(), from_narrow.end()) ==
                    unicode_oracle::utf8_to_utf16(narrow).values,
                "8 to 16 bits", input);
        if (input == 0xFFFE)
            continue;  // as 16 bits, a byte order mark of the other order: endless recursion
        require(strings::utf16_to_utf8(units) == unicode_oracle::utf16_to_utf8(expected),
                "16 to 8 bits", input);
        const ustring32 back = strings::utf16_to_utf32(units);
        require(unicode_oracle::points(back.begin(), back.end()) ==
                    unicode_oracle::utf16_to_utf32(expected).values,
                "16 to 32 bits", input);
    }
}

// All pages that have a name. The three of the locale are ASCII here, as in any program that does
// not set one.
std::vector<strings::code_page::encoding_type> pages() {
    std::vector<strings::code_page::encoding_type> all;
    for (int number = 0; number < 1 << 17; ++number) {
        const auto page = static_cast<strings::code_page::encoding_type>(number);
        try {
            strings::code_page(page).to_system_type(page);
            all.push_back(page);
        } catch (const exceptions::invalid_argument_value&) {
        }
    }
    return all;
}

class converter {
public:
    converter(const std::string& to, const std::string& from)
        : m_handle(::iconv_open(to.c_str(), from.c_str())) {
        if (m_handle == reinterpret_cast<iconv_t>(-1))
            throw std::runtime_error("iconv_open failed for " + to);
    }
    ~converter() { ::iconv_close(m_handle); }
    converter(const converter&) = delete;
    converter& operator=(const converter&) = delete;

    // Converts one character. One that the page lacks becomes a "?" for each of its bytes.
    void append(std::string& target, std::string one) {
        std::array<char, 16> result;
        char* from = &one[0];
        char* to = result.data();
        std::size_t left = one.size();
        std::size_t room = result.size();
        const bool done =
            ::iconv(m_handle, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
        target.append(result.data(), to);
        if (!done)
            target += std::string(left, '?');
    }

    // Converts some bytes. Each one at which iconv stops becomes a "?".
    void append_bytes(std::string& target, std::string bytes) {
        char* from = &bytes[0];
        std::size_t left = bytes.size();
        while (left > 0) {
            std::array<char, 32> result;
            char* to = result.data();
            std::size_t room = result.size();
            const bool done =
                ::iconv(m_handle, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
            target.append(result.data(), to);
            if (done)
                continue;
            target += '?';
            if (left > 0) {  // iconv may have skipped the bytes that it rejects
                ++from;
                --left;
            }
        }
    }

private:
    iconv_t m_handle;
};

void check_page(strings::code_page::encoding_type page, std::uint64_t begin, std::uint64_t end) {
    const strings::code_page ours(page);
    converter plain(ours.to_system_type(page), "UTF-8");
    std::string text;
    std::string expected;
    for (std::uint64_t point = begin; point < end; ++point) {
        const std::string one = unicode_oracle::utf8_of(static_cast<long>(point));
        text += one;
        plain.append(expected, one);
    }
    require(ours.encode(ustring8(text)) == expected, "a page", begin);
}

void check_pages(std::uint64_t begin, std::uint64_t end) {
    static const std::vector<strings::code_page::encoding_type> all = pages();
    for (const auto page : all)
        check_page(page, begin, end);
}

// Decodes each code, the single bytes first and then the pairs. A line feed follows each of them.
// It completes a pair that lacks its second byte, and makes iconv write a letter that it holds
// back.
void check_codes(strings::code_page::encoding_type page, std::uint64_t begin, std::uint64_t end) {
    const strings::code_page ours(page);
    converter plain("UTF-8", ours.to_system_type(page));
    std::string text;
    std::string expected;
    for (std::uint64_t input = begin; input < end; ++input) {
        std::string code;
        if (input >= 256)
            code += static_cast<char>((input - 256) >> 8);
        code += static_cast<char>(input < 256 ? input : input - 256);
        code += '\n';
        text += code;
        plain.append_bytes(expected, code);
        // Short strings take another way than the block does.
        if (input < 256 || input % 64 == 0) {
            std::string alone;
            plain.append_bytes(alone, code);
            require(ours.as_utf8(code) == alone, "a code of a page, alone", input);
        }
    }
    require(ours.as_utf8(text) == expected, "the codes of a page", begin);
}

void check_codes_of_pages(std::uint64_t begin, std::uint64_t end) {
    static const std::vector<strings::code_page::encoding_type> all = pages();
    for (const auto page : all)
        check_codes(page, begin, end);
}

// ---- every integer of 32 bits, and every float

void check_integers(std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t input = begin; input < end; ++input) {
        const int value = static_cast<int>(static_cast<std::uint32_t>(input));
        // The digits from the last to the first, in 64 bits.
        char digits[16];
        char* first = digits + sizeof digits - 1;
        *first = '\0';
        std::uint64_t rest = static_cast<std::uint64_t>(std::llabs(value));
        do {
            *--first = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        if (value < 0)
            *--first = '-';
        char written[80];
        generic::convert::ltoa(value, written, 10);
        require(std::strcmp(written, first) == 0, "ltoa", input);
        const std::size_t length = std::strlen(first);
        require(generic::convert::str_to_int(first, length, types::radix_t::decimal, true) == value,
                "str_to_int", input);
        require(types::variant(value).as_string() == first, "a variant", input);
        generic::convert::ultoa(static_cast<unsigned>(input), written, 16);
        require(generic::convert::str_to_uint32(written, std::strlen(written),
                                                types::radix_t::hexadecimal,
                                                true) == static_cast<unsigned>(input),
                "hexadecimal", input);
    }
}

bool are_same(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Nine digits identify every float. The plain form is that of the C library.
void check_floats(std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t input = begin; input < end; ++input) {
        const std::uint32_t bits = static_cast<std::uint32_t>(input);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        char expected[40];
        std::snprintf(expected, sizeof expected, "%.9g", static_cast<double>(value));
        serialization::serialize_text_buf buffer;
        buffer.append_float(value, 9);
        require(buffer.as_str() == expected + std::string("\1"), "text", input);
        // The readers do not know the names of infinity and NaN; what is no number is 0.
        const float back = std::isfinite(value) ? value : 0.0f;
        require(are_same(buffer.read_float(), back), "text and back", input);
        require(are_same(generic::convert::str_to_float(ustring8(expected)), back), "str_to_float",
                input);
    }
}

// ---- doubles, of which there are too many

// Half of the doubles have random bits. The others have few digits, as most numbers in strings do:
// they are ties for some precision, or exact.
double double_of(std::uint64_t input) {
    const std::uint64_t bits = hash((input + 1) * 0x9E3779B97F4A7C15u);
    if (input % 2 == 0) {
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    const int digits = static_cast<int>(bits >> 59) % 17 + 1;
    const std::uint64_t limit = static_cast<std::uint64_t>(std::pow(10, digits));
    const int exponent = static_cast<int>(bits >> 54 & 31) - 20;
    return static_cast<double>((bits & ~(~std::uint64_t(0) << 54)) % limit) *
           (bits >> 62 != 0 ? std::pow(10, exponent) : std::ldexp(1, exponent));
}

bool are_same(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The plain forms are those of the C library.
void check_doubles(std::uint64_t begin, std::uint64_t end) {
    static const ustring8 two_decimals;
    for (std::uint64_t input = begin; input < end; ++input) {
        const double value = double_of(input);
        char expected[400];
        std::snprintf(expected, sizeof expected, "%.6g", value);
        require(types::variant(value).as_string() == expected, "a variant", input);
        if (!std::isfinite(value)) {
            require(are_same(generic::convert::str_to_double(ustring8(expected)), 0.0), "no number",
                    input);
            continue;
        }
        require(are_same(generic::convert::str_to_double(ustring8(expected)),
                         std::strtod(expected, nullptr)),
                "six digits", input);
        std::snprintf(expected, sizeof expected, "%.17g", value);
        require(are_same(generic::convert::str_to_double(ustring8(expected)), value),
                "seventeen digits", input);
        // Numbers of more than 63 characters lose decimals.
        if (std::abs(value) > 1e58)
            continue;
        std::snprintf(expected, sizeof expected, "%.2f", value);
        require(i18n::_private::format_double(value, two_decimals) == expected, "two decimals",
                input);
    }
}

// ---- every day of 800 years

void check_days(std::uint64_t begin, std::uint64_t end) {
    using test_support::calendar_day;
    for (std::uint64_t input = begin; input < end; ++input) {
        const unsigned number = static_cast<unsigned>(input) + 1;  // 1 is 1 March of year 0
        const calendar_day day = test_support::day_with(number);
        system::date_time::date date(day.day, day.month, day.year);
        require(date.pJulian_day_number() == number, "the number of a day", input);
        date.pJulian_day_number(number);
        // By contract, 29 February becomes 1 March.
        const bool moves = day.month == 2 && day.day == 29;
        const calendar_day back = {date.year(), date.month(), date.day()};
        require(back == (moves ? test_support::next_day(day) : day), "the day of a number", input);
        date += system::date_time::date_duration(1);
        const calendar_day next = test_support::day_with(moves ? number + 2 : number + 1);
        const calendar_day reached = {date.year(), date.month(), date.day()};
        const bool next_moves = next.month == 2 && next.day == 29;
        require(reached == (next_moves ? test_support::next_day(next) : next), "the next day",
                input);
    }
}

// ---- all of them

const struct domain {
    const char* name;
    const char* title;
    std::uint64_t size;
    void (*check)(std::uint64_t begin, std::uint64_t end);
} domains[] = {
    {"four_bytes", "four bytes, decoded to 16 and 32 bits", std::uint64_t(1) << 32,
     check_four_bytes},
    {"conversions", "code points through every conversion", 0x110000, check_conversions},
    {"pages", "code points encoded in every code page", 0x110000, check_pages},
    {"page_codes", "single bytes and pairs decoded from every code page", 256 + 65536,
     check_codes_of_pages},
    {"integers", "32-bit integers to text and back", std::uint64_t(1) << 32, check_integers},
    {"floats", "floats to text and back (infinity and NaN, whose names no reader knows, to 0)",
     std::uint64_t(1) << 32, check_floats},
    {"doubles", "doubles to text and back", 100000000, check_doubles},
    {"days", "days of 800 years", 2 * 146097, check_days},
};

// Whether a sample contains this block.
bool is_chosen(std::uint64_t number, std::uint64_t seed, std::uint64_t one_in) {
    return hash(number + seed * 0x9E3779B97F4A7C15u) % one_in == 0;
}

void run(const domain& one, std::uint64_t begin, std::uint64_t end, std::uint64_t seed,
         std::uint64_t one_in) {
    std::uint64_t taken = 0;
    for (std::uint64_t first = begin; first < end;) {
        const std::uint64_t number = first / block;
        const std::uint64_t last = std::min(end, (number + 1) * block);
        if (is_chosen(number, seed, one_in)) {
            one.check(first, last);
            taken += last - first;
        }
        first = last;
    }
    std::cout << taken << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count == 2 && std::strcmp(words[1], "--list") == 0) {
        for (const domain& one : domains)
            std::cout << one.name << '\t' << one.size << '\t' << one.title << '\n';
        return 0;
    }
    const auto number = [&](int index) { return std::strtoull(words[index], nullptr, 10); };
    if (count == 4 || count == 6)
        for (const domain& one : domains)
            if (std::strcmp(words[1], one.name) == 0) {
                run(one, number(2), number(3), count == 6 ? number(4) : 0,
                    count == 6 ? number(5) : 1);
                return 0;
            }
    std::cerr << "usage: proof_exhaustive --list | DOMAIN BEGIN END [SEED ONE_IN]\n";
    return 2;
}
