#include <tova/strings/case.hpp>

#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <ctype.h>
#include <functional>
#include <vector>

namespace {

using namespace tova::strings;
using test_support::text;

template <typename String>
class CaseMapping : public ::testing::Test {};
TYPED_TEST_SUITE(CaseMapping, test_support::all_widths, test_support::width_name);

TYPED_TEST(CaseMapping, ChangesOnlyAsciiLetters) {
    EXPECT_EQ(text<TypeParam>("abcxyz @[`{ 019 \0 end"),
              to_lower(text<TypeParam>("aBCXyZ @[`{ 019 \0 END")));
    EXPECT_EQ(text<TypeParam>("ABCXYZ @[`{ 019 \0 END"),
              to_upper(text<TypeParam>("aBCXyZ @[`{ 019 \0 end")));
    EXPECT_EQ(TypeParam(), to_lower(TypeParam()));
    EXPECT_EQ(TypeParam(), to_upper(TypeParam()));
}

TYPED_TEST(CaseMapping, LeavesItsArgumentUnchanged) {
    const TypeParam source = text<TypeParam>("Mixed");
    to_lower(source);
    to_upper(source);
    lower_case(source, 0, 5);
    EXPECT_EQ(text<TypeParam>("Mixed"), source);
}

TYPED_TEST(CaseMapping, OfARangeChangesNoUnitOutsideIt) {
    const unsigned long end = static_cast<unsigned long>(-1);
    const struct {
        unsigned long first, last;
        const char* expected;
    } cases[] = {
        {0, end, "abcdef"}, {0, 6, "abcdef"},   {2, 4, "ABcdEF"},   {5, 6, "ABCDEf"},
        {0, 1, "aBCDEF"},   {3, end, "ABCdef"}, {3, 3, "ABCDEF"},   {4, 2, "ABCDEF"},
        {6, end, "ABCDEF"}, {6, 6, "ABCDEF"},   {7, end, "ABCDEF"}, {end, end, "ABCDEF"},
        {0, 0, "ABCDEF"},   {end, 3, "ABCDEF"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        SCOPED_TRACE(c.last);
        EXPECT_EQ(text<TypeParam>(c.expected),
                  lower_case(text<TypeParam>("ABCDEF"), c.first, c.last));
    }
    EXPECT_EQ(TypeParam(), lower_case(TypeParam(), 0, end));
}

// Even if the caller passes a `last` out of range, no other memory is touched.
TYPED_TEST(CaseMapping, OfARangeStaysInsideTheString) {
    const TypeParam source(1000, 'A');
    EXPECT_EQ(TypeParam(1000, 'a'), lower_case(source, 0, 100000));
    EXPECT_EQ(source, lower_case(source, 5000, 100000));
}

TEST(CaseMapping8, KeepsTheBytesOfAnAccentedLetter) {
    EXPECT_EQ("STRA\xC3\x9F"
              "E \xC3\xA9",
              to_upper("stra\xC3\x9F"
                       "e \xC3\xA9"));
    EXPECT_EQ("\xC3\x89t\xC3\x89", to_lower("\xC3\x89T\xC3\x89"));
}

TEST(CaseMapping16, KeepsUnitsAbove127InTheStartingLocale) {
    EXPECT_EQ((ustring16{0xC9, 't', 0x416, 0xD83D, 0xFFFF}),
              to_lower(ustring16{0xC9, 'T', 0x416, 0xD83D, 0xFFFF}));
}

// Sets a locale for the duration of a test.
class locale_guard {
public:
    explicit locale_guard(const char* name) : m_set(setlocale(LC_CTYPE, name) != nullptr) {}
    ~locale_guard() { setlocale(LC_CTYPE, "C"); }
    bool is_set() const { return m_set; }

private:
    bool m_set;
};

// Compares with the C library for every unit that its table covers and some that it doesn't.
template <typename String>
void expect_the_table() {
    typedef typename String::value_type unit_type;
    std::vector<long> values;
    for (long value = -128; value <= 255; ++value)
        values.push_back(value);
    for (const long value : {256L, 300L, 0x391L, 0x416L, 0xFFFFL, 0x10400L, -129L, -130L, -1000L,
                             0x7FFFFFFFL, -0x80000000L})
        values.push_back(value);
    for (const long value : values) {
        const unit_type unit = static_cast<unit_type>(value);
        const int passed = unit;
        const bool covered = passed >= -128 && passed <= 255;
        SCOPED_TRACE(passed);
        const unit_type lower = covered ? static_cast<unit_type>(::tolower(passed)) : unit;
        const unit_type upper = covered ? static_cast<unit_type>(::toupper(passed)) : unit;
        EXPECT_EQ(String(1, lower), to_lower(String(1, unit)));
        EXPECT_EQ(String(1, upper), to_upper(String(1, unit)));
        EXPECT_EQ(String(1, lower), lower_case(String(1, unit), 0, 1));
    }
}

TYPED_TEST(CaseMapping, AgreesWithTheCLibraryInTheStartingLocale) {
    expect_the_table<TypeParam>();
}

TYPED_TEST(CaseMapping, AgreesWithTheCLibraryInTheCurrentLocale) {
    // Not all of these are installed everywhere; those that are must agree.
    for (const char* name : {"C", "POSIX", "C.UTF-8", "en_US.ISO-8859-1", "de_DE.ISO-8859-1",
                             "ru_RU.KOI8-R", "tr_TR.ISO-8859-9", "el_GR.ISO-8859-7"}) {
        const locale_guard locale(name);
        SCOPED_TRACE(name);
        if (locale.is_set())
            expect_the_table<TypeParam>();
    }
}

TEST(CaseMapping32, ChangesTheNegativeUnitsThatTheTableCovers) {
    for (int unit = -128; unit <= -2; ++unit) {
        EXPECT_EQ(ustring32(1, unit + 256), to_lower(ustring32(1, unit))) << unit;
        EXPECT_EQ(ustring32(1, unit + 256), to_upper(ustring32(1, unit))) << unit;
    }
    EXPECT_EQ(ustring32(1, -1), to_lower(ustring32(1, -1)));
    EXPECT_EQ(ustring32(1, -129), to_lower(ustring32(1, -129)));
}

}  // namespace
