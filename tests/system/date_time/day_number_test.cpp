#include <tova/system/date_time/date.hpp>

#include <gtest/gtest.h>

namespace {

using tova::system::date_time::date;

struct fields {
    unsigned year;
    unsigned month;
    unsigned day;
};

bool operator==(const fields& left, const fields& right) {
    return left.year == right.year && left.month == right.month && left.day == right.day;
}

// Divides by 400 years, centuries, leap cycles, years and then pairs of months. The counts have no
// upper limit, so the last day of a cycle begins the next one.
fields fields_by_division(unsigned number) {
    unsigned rest = number - 1;
    unsigned year = rest / 146097 * 400;
    rest %= 146097;
    year += rest / 36524 * 100;
    rest %= 36524;
    year += rest / 1461 * 4;
    rest %= 1461;
    year += rest / 365;
    const unsigned day = rest % 365 + 1;

    const unsigned pair = (day - (day >= 184 ? 1 : 0) - 1) / 61;
    const unsigned day_of_pair = day - pair * 61 - (pair >= 3 ? 1 : 0);
    const unsigned first_month = pair == 3 || pair == 4 ? 30 : 31;
    const unsigned second = day_of_pair > first_month ? 1 : 0;
    const unsigned month = second + 2 * pair + 3;
    return {month > 12 ? year + 1 : year, month > 12 ? month - 12 : month,
            day_of_pair - second * first_month};
}

unsigned number_by_division(const fields& of) {
    const unsigned year = of.month < 3 ? of.year - 1 : of.year;
    const unsigned from_march = of.month < 3 ? of.month + 9 : of.month - 3;
    const unsigned pair = from_march / 2;
    const unsigned first_month = pair == 3 || pair == 4 ? 30 : 31;
    return year * 365 + year / 4 - (year / 100 - year / 400) + pair * 61 + (pair >= 3 ? 1 : 0) +
           (from_march % 2 != 0 ? first_month : 0) + of.day;
}

fields fields_of(unsigned number) {
    date result;
    result.pJulian_day_number(number);
    return {result.year(), result.month(), result.day()};
}

// Covers the whole range in steps, and then the days around the ends of the first cycles.
TEST(DayNumber, AgreesWithDivisions) {
    for (unsigned long number = 0; number < 1UL << 32; number += 2003)
        ASSERT_TRUE(fields_by_division(static_cast<unsigned>(number)) ==
                    fields_of(static_cast<unsigned>(number)))
            << number;
    for (unsigned number = 0; number != 4 * 146097; ++number)
        ASSERT_TRUE(fields_by_division(number) == fields_of(number)) << number;
    for (unsigned number = 0; number != 2 * 146097; ++number)
        ASSERT_TRUE(fields_by_division(0 - number) == fields_of(0 - number)) << 0 - number;
}

TEST(DayNumber, IsComputedForEveryStoredDate) {
    EXPECT_EQ(number_by_division({0, 0, 0}), date().pJulian_day_number());
    unsigned year = 0;
    for (int i = 0; i != 20000; ++i, year = year < 2500 ? year + 1 : year * 3 + 1)
        for (unsigned month = 1; month <= 12; ++month)
            for (const unsigned day : {1u, 28u, 31u})
                ASSERT_EQ(number_by_division({year, month, day}),
                          date(day, month, year).pJulian_day_number())
                    << year << ' ' << month << ' ' << day;
}

}  // namespace
