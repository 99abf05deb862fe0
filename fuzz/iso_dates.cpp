// `date_from_iso`, `time_from_iso` and `date_time_from_iso`: any string, compared with a plain
// reader that looks at fixed positions. What was read is written as the plain reader writes it.
//
// Input: the string.
#include <tova/extras/dates.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using fuzz_support::require;
namespace extras = tova::extras;

// Whether each 'd' of the pattern is a digit in the string, and all other bytes are the same.
bool matches(const std::string& text, const std::string& pattern) {
    if (text.size() != pattern.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (pattern[i] == 'd' ? text[i] < '0' || text[i] > '9' : text[i] != pattern[i])
            return false;
    return true;
}

int number_at(const std::string& text, std::size_t begin, std::size_t size) {
    return std::stoi(text.substr(begin, size));
}

int length_of_month(int year, int month) {
    if (month == 2)
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

bool is_date(const std::string& text) {
    if (!matches(text, "dddd-dd-dd"))
        return false;
    const int month = number_at(text, 5, 2);
    const int day = number_at(text, 8, 2);
    return month >= 1 && month <= 12 && day >= 1 &&
           day <= length_of_month(number_at(text, 0, 4), month);
}

// The complete form of a time, "09:05:07.250", without the milliseconds if there are none. It is
// empty for a string that is no time.
std::string complete_time(const std::string& text) {
    const std::size_t mark = text.find_first_of(".,");
    std::string whole = text.substr(0, mark);
    std::string fraction;
    if (mark != std::string::npos) {
        fraction = text.substr(mark + 1);
        if (whole.size() != 8 || fraction.empty() ||
            fraction.find_first_not_of("0123456789") != std::string::npos)
            return "";
    }
    if (matches(whole, "dd:dd"))
        whole += ":00";
    if (!matches(whole, "dd:dd:dd") || number_at(whole, 0, 2) > 23 || number_at(whole, 3, 2) > 59 ||
        number_at(whole, 6, 2) > 59)
        return "";
    fraction.resize(3, '0');
    return fraction == "000" ? whole : whole + '.' + fraction;
}

template <typename Value>
void check(const extras::parsed<Value>& read, const std::string& text,
           const std::string& expected) {
    require(read.is_valid == !expected.empty() && static_cast<bool>(read) == read.is_valid);
    require(read.offset <= text.size());
    if (read.is_valid)
        require(read.offset == text.size() && extras::to_iso(read.value) == expected);
    else
        require(extras::equal_to()(read.value, Value()));
}

void check(const std::string& text) {
    const std::string time = complete_time(text);
    check(extras::date_from_iso(text), text, is_date(text) ? text : "");
    check(extras::time_from_iso(text), text, time);
    std::string both;
    if (text.size() > 10 && (text[10] == 'T' || text[10] == ' ') && is_date(text.substr(0, 10)))
        both = complete_time(text.substr(11));
    if (!both.empty())
        both = text.substr(0, 10) + 'T' + both;
    check(extras::date_time_from_iso(text), text, both);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const std::string text(reinterpret_cast<const char*>(data), size);
    check(text);
    // The beginning and the end of a date and time are often one of them alone.
    check(text.substr(0, 10));
    check(text.substr(text.size() < 11 ? 0 : 11));
    return 0;
}
