// Tests the add-ons, built with every C++ standard that programs may use.
#include <tova/extras.hpp>
#include <tova/tova.hpp>

#include <gtest/gtest.h>

#include <array>
#include <iomanip>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;
using tova::system::date_time::date;
using tova::system::date_time::date_duration;
using tova::system::date_time::date_time_t;
using tova::system::date_time::time_duration;
using tova::types::color_t;
using tova::types::variant;
namespace extras = tova::extras;
using time_of_day = tova::system::date_time::time;

ustring16 utf16(const char* text) {
    return tova::strings::utf8_to_utf16(text);
}
ustring32 utf32(const char* text) {
    return tova::strings::utf8_to_utf32(text);
}

// --- hash.hpp ------------------------------------------------------------------------------------

TEST(ExtrasHash, StringsAreKeysOfUnorderedContainers) {
    std::unordered_map<ustring8, int> narrow = {{"a", 1}, {"b", 2}};
    std::unordered_map<ustring16, int> medium = {{utf16("a"), 1}, {utf16("b"), 2}};
    std::unordered_map<ustring32, int> wide = {{utf32("a"), 1}, {utf32("b"), 2}};
    EXPECT_EQ(2, narrow["b"]);
    EXPECT_EQ(2, medium[utf16("b")]);
    EXPECT_EQ(2, wide[utf32("b")]);
    EXPECT_EQ(std::hash<std::string>()("text"), std::hash<ustring8>()("text"));
    EXPECT_NE(std::hash<ustring16>()(utf16("ab")), std::hash<ustring16>()(utf16("ba")));
}

TEST(ExtrasHash, DatesTimesAndColorsAreKeys) {
    std::unordered_set<date, std::hash<date>, extras::equal_to> days;
    for (unsigned day = 1; day <= 31; ++day)
        days.insert(date(day, 1, 2026));
    days.insert(date(1, 1, 2026));
    EXPECT_EQ(31u, days.size());
    std::unordered_set<color_t, std::hash<color_t>> colors = {color_t(1, 2, 3), color_t(1, 2, 3)};
    EXPECT_EQ(1u, colors.size());
    EXPECT_NE(std::hash<time_of_day>()(time_of_day(1, 0, 0, 0)),
              std::hash<time_of_day>()(time_of_day(0, 1, 0, 0)));
    EXPECT_EQ(std::hash<date_time_t>()(date_time_t(date(1, 2, 3), time_of_day())),
              std::hash<date_time_t>()(date_time_t(date(1, 2, 3), time_of_day())));
}

TEST(ExtrasHash, OrderedContainersFindWithoutMakingAString) {
    std::map<ustring8, int, extras::less> ages = {{"Mia", 7}, {"Tom", 9}};
    EXPECT_EQ(7, ages.find("Mia")->second);
    EXPECT_EQ(9, ages.find(std::string("Tom"))->second);
    EXPECT_TRUE(ages.find("Mi") == ages.end());
#if __cplusplus >= 201703L
    EXPECT_EQ(7, ages.find(std::string_view("Mia"))->second);
#endif
}

TEST(ExtrasHash, ComparesStringsLikeTheStandard) {
    const std::vector<std::string> texts = {"", "a", "ab", "b", std::string("a\0", 2), "\xFF"};
    for (const std::string& left : texts)
        for (const std::string& right : texts) {
            EXPECT_EQ(left < right, extras::less()(ustring8(left), ustring8(right)));
            EXPECT_EQ(left == right, extras::equal_to()(ustring8(left), right));
        }
}

// --- dates.hpp -----------------------------------------------------------------------------------

TEST(ExtrasDates, CompareByYearMonthAndDay) {
    using namespace tova::extras;
    const std::vector<date> ordered = {date(31, 12, 2025), date(1, 1, 2026), date(2, 1, 2026),
                                       date(1, 2, 2026), date(1, 1, 2027)};
    for (std::size_t i = 0; i < ordered.size(); ++i)
        for (std::size_t k = 0; k < ordered.size(); ++k) {
            EXPECT_EQ(i < k, ordered[i] < ordered[k]);
            EXPECT_EQ(i <= k, ordered[i] <= ordered[k]);
            EXPECT_EQ(i > k, ordered[i] > ordered[k]);
            EXPECT_EQ(i >= k, ordered[i] >= ordered[k]);
            EXPECT_EQ(i == k, ordered[i] == ordered[k]);
            EXPECT_EQ(i != k, ordered[i] != ordered[k]);
        }
    EXPECT_TRUE(date(31, 2, 2026) == date(28, 2, 2026));
    EXPECT_TRUE(date(31, 2, 2026) + 1 == date(1, 3, 2026));
    EXPECT_TRUE(date(3, 2, 2026) - date_duration(365) == date(3, 2, 2025));
    EXPECT_EQ(-366, (date(1, 1, 2024) - date(1, 1, 2025)).days());
    EXPECT_TRUE(time_of_day(1, 2, 3, 4) < time_of_day(1, 2, 3, 5));
    EXPECT_TRUE(date_time_t(date(1, 1, 2026), time_of_day(9, 0, 0, 0)) <
                date_time_t(date(1, 1, 2026), time_of_day(9, 0, 0, 1)));
}

// Every day of 800 years: it is 1 day after the day before, and conversions to a time point and to
// ISO 8601 round-trip.
TEST(ExtrasDates, CountsEveryDayOfEightHundredYears) {
    using namespace tova::extras;
    date before(31, 12, 1599);
    long count = 0;
    for (unsigned year = 1600; year < 2400; ++year)
        for (unsigned month = 1; month <= 12; ++month) {
            const unsigned last = date(31, month, year).day();
            for (unsigned day = 1; day <= last; ++day, ++count) {
                const date today(day, month, year);
                ASSERT_EQ(1, days_between(before, today));
                ASSERT_EQ(-1, days_between(today, before));
                ASSERT_TRUE(before + 1 == today && today - 1 == before);
                ASSERT_EQ(1, (today - before).days());
                const date_time_t noon(today, time_of_day(12, 34, 56, 789));
                if (year >= 1678 && year < 2262) {
                    ASSERT_TRUE(noon == from_time_point(to_time_point(noon)));
                }
                ASSERT_TRUE(today == date_from_iso(to_iso(today)).value);
                before = today;
            }
        }
    EXPECT_EQ(292194, count);
}

TEST(ExtrasDates, ReadsIso8601AndNothingElse) {
    const struct {
        const char* text;
        bool is_valid;
        unsigned long offset;
    } cases[] = {
        {"2026-02-28", true, 10}, {"2024-02-29", true, 10},  {"2026-02-29", false, 8},
        {"2026-13-01", false, 5}, {"2026-00-01", false, 5},  {"2026-01-00", false, 8},
        {"2026-1-01", false, 6},  {"26-01-01", false, 2},    {"2026-01-01x", false, 10},
        {"", false, 0},           {" 2026-01-01", false, 0}, {"20260101", false, 4},
        {"0000-01-01", true, 10},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto result = extras::date_from_iso(c.text);
        EXPECT_EQ(c.is_valid, result.is_valid);
        EXPECT_EQ(c.offset, result.offset);
    }
}

TEST(ExtrasDates, ReadsTimesWithAndWithoutSecondsAndFractions) {
    const struct {
        const char* text;
        const char* written;  // null: invalid
    } cases[] = {
        {"09:05", "09:05:00"},
        {"09:05:07", "09:05:07"},
        {"09:05:07.25", "09:05:07.250"},
        {"23:59:59,9999", "23:59:59.999"},
        {"24:00", nullptr},
        {"09:60", nullptr},
        {"09:05:60", nullptr},
        {"9:05", nullptr},
        {"09:05:07.", nullptr},
        {"09:05:", nullptr},
        {"", nullptr},
        {"09", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto result = extras::time_from_iso(c.text);
        ASSERT_EQ(c.written != nullptr, result.is_valid);
        if (c.written != nullptr) {
            EXPECT_EQ(c.written, extras::to_iso(result.value));
        }
    }
    EXPECT_EQ("2026-02-03T04:05:06",
              extras::to_iso(extras::date_time_from_iso("2026-02-03 04:05:06").value));
    EXPECT_FALSE(extras::date_time_from_iso("2026-02-03"));
}

TEST(ExtrasDates, ConvertsTimePointsBeforeTheEpoch) {
    using std::chrono::milliseconds;
    const std::chrono::system_clock::time_point epoch;
    const auto is_held = [](const date& day) {
        try {
            extras::to_time_point(date_time_t(day, time_of_day(23, 59, 59, 999)));
            return true;
        } catch (const tova::exceptions::out_of_range&) {
            return false;
        }
    };
    EXPECT_TRUE(is_held(date(23, 9, 1677)));
    EXPECT_FALSE(is_held(date(22, 9, 1677)));
    EXPECT_TRUE(is_held(date(10, 4, 2262)));
    EXPECT_FALSE(is_held(date(11, 4, 2262)));
    EXPECT_EQ("1970-01-01T00:00:00", extras::to_iso(extras::from_time_point(epoch)));
    EXPECT_EQ("1969-12-31T23:59:59.999",
              extras::to_iso(extras::from_time_point(epoch - milliseconds(1))));
    EXPECT_EQ("1969-12-31T23:59:59.999",
              extras::to_iso(extras::from_time_point(epoch - std::chrono::nanoseconds(1))));
}

TEST(ExtrasDates, BecomeMessageArgumentsForEachPart) {
    tova::generic::varg_list list;
    EXPECT_TRUE(extras::push_date(list, "due", date(3, 2, 2026)));
    EXPECT_EQ(2026, list["due.year"].value().as_int());
    EXPECT_EQ(2, list["due.month"].value().as_int());
    EXPECT_EQ(3, list["due.day"].value().as_int());
    EXPECT_FALSE(extras::push_date(list, "due", date(3, 2, 2026)));
}

// --- stream.hpp ----------------------------------------------------------------------------------

template <typename T>
std::string printed(const T& value) {
    using namespace tova::extras;
    std::ostringstream out;
    out << value;
    return out.str();
}

TEST(ExtrasStream, WritesTheTypesOfTheLibrary) {
    EXPECT_EQ("Zoë 🌍", printed(utf16("Zoë 🌍")));
    EXPECT_EQ("Zoë 🌍", printed(utf32("Zoë 🌍")));
    EXPECT_EQ("2026-02-03", printed(date(3, 2, 2026)));
    EXPECT_EQ("04:05:06.007", printed(time_of_day(4, 5, 6, 7)));
    EXPECT_EQ("2026-02-03T04:05:06",
              printed(date_time_t(date(3, 2, 2026), time_of_day(4, 5, 6, 0))));
    EXPECT_EQ("1 day", printed(date_duration(1)));
    EXPECT_EQ("-3 days", printed(date_duration(-3)));
    EXPECT_EQ("25:00:01", printed(time_duration(25, 0, 1, 0)));
    EXPECT_EQ("-0:00:00.001", printed(time_duration(0, 0, 0, -1)));
    EXPECT_EQ("-2562047788015:12:55.808",
              printed(time_duration(0, 0, 0, std::numeric_limits<long>::min())));
    EXPECT_EQ("#01020AFF", printed(color_t(1, 2, 10)));
    EXPECT_EQ("invalid_xmc", printed(tova::i18n::message_catalogs::invalid_xmc));
    EXPECT_EQ("open_failed", printed(tova::parser::xml_stream_parser::open_failed));
    EXPECT_EQ("mismatched_end in line 2: a",
              printed(tova::parser::xml_parser().parse("<?xml version='1.0'?><b>\n</a>")));
    EXPECT_EQ("no_error", printed(tova::parser::xml_parser().parse("<?xml version='1.0'?><a/>")));
}

TEST(ExtrasStream, PadsTheWholeText) {
    using namespace tova::extras;
    std::ostringstream out;
    out << std::setw(12) << std::setfill('.') << date(3, 2, 2026) << std::setw(5) << utf16("ab");
    EXPECT_EQ("..2026-02-03...ab", out.str());
}

// --- errors.hpp ----------------------------------------------------------------------------------

TEST(ExtrasErrors, EveryErrorHasItsOwnName) {
    std::unordered_set<std::string> names;
    for (int i = 0; i <= 8; ++i)
        names.insert(extras::name(static_cast<tova::i18n::message_catalogs::error_type>(i)));
    EXPECT_EQ(9u, names.size());
    names.clear();
    for (int i = 0; i <= 14; ++i)
        names.insert(
            extras::name(static_cast<tova::i18n::_private::xmc_file_loader::error_type>(i)));
    EXPECT_EQ(15u, names.size());
    names.clear();
    for (int i = 0; i <= 10; ++i)
        names.insert(
            extras::name(static_cast<tova::parser::xml_parser::parse_error::error_type>(i)));
    EXPECT_EQ(11u, names.size());
    EXPECT_EQ(0u, names.count("unknown"));
    EXPECT_STREQ("unknown",
                 extras::name(static_cast<tova::parser::xml_stream_parser::error_type>(8)));
}

TEST(ExtrasErrors, TurnsExceptionsIntoStandardOnes) {
    const auto fail = []() -> int { return static_cast<int>(date(32, 1, 2026).day()); };
    try {
        extras::with_standard_errors(fail);
        FAIL() << "nothing was raised";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("out_of_range: day value out of valid range", error.what());
    }
    try {
        extras::with_standard_errors(fail, "reading the invoice");
        FAIL() << "nothing was raised";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("reading the invoice: out_of_range: day value out of valid range",
                     error.what());
    }
    EXPECT_EQ(7, extras::with_standard_errors([] { return 7; }));
    EXPECT_THROW(extras::with_standard_errors([]() -> int { throw std::length_error("other"); }),
                 std::length_error);
}

TEST(ExtrasErrors, NamesTheNearestClass) {
    namespace e = tova::exceptions;
    EXPECT_STREQ("overflow_error", extras::name(e::overflow_error("m", 1, "f", "g")));
    EXPECT_STREQ("runtime_error", extras::name(e::runtime_error("m", 1, "f", "g")));
    EXPECT_STREQ("invalid_argument_value",
                 extras::name(e::invalid_argument_value("m", 1, "f", "g")));
    struct own_error : e::full_error {
        own_error() : full_error("m", 1, "f", "g") {}
    };
    EXPECT_STREQ("full_error", extras::name(own_error()));
}

// --- views.hpp -----------------------------------------------------------------------------------

TEST(ExtrasViews, ConvertsLiteralsAndStandardStrings) {
    EXPECT_EQ("Zoë", extras::to_ustring8(u8"Zoë"));
    EXPECT_EQ("Zoë", extras::to_ustring8(u"Zoë"));
    EXPECT_EQ("Zoë", extras::to_ustring8(U"Zoë"));
    EXPECT_EQ("Zoë 🌍", extras::to_ustring8(std::u16string(u"Zoë 🌍")));
    EXPECT_EQ(utf16("Zoë 🌍"), extras::to_ustring16(u"Zoë 🌍"));
    EXPECT_EQ(utf32("Zoë 🌍"), extras::to_ustring32(U"Zoë 🌍"));
    EXPECT_EQ(std::u16string(u"Zoë 🌍"), extras::to_u16string(ustring8("Zoë 🌍")));
    EXPECT_EQ(std::u32string(U"Zoë 🌍"), extras::to_u32string(ustring8("Zoë 🌍")));
    EXPECT_EQ(3u, extras::to_ustring8("a\0b").size());
#if __cplusplus >= 201703L
    EXPECT_EQ("Zoë", extras::to_ustring8(std::u16string_view(u"Zoë")));
    EXPECT_EQ(std::string_view("Zoë"), extras::view(ustring8("Zoë")));
#endif
#ifdef __cpp_char8_t
    EXPECT_TRUE(std::u8string(u8"Zoë") == extras::to_u8string("Zoë"));
#endif
}

TEST(ExtrasViews, RaisesForInvalidInput) {
    EXPECT_THROW(extras::to_u16string(ustring8("\xFF")), std::invalid_argument);
    EXPECT_THROW(extras::to_ustring8(std::u16string(1, char16_t(0xDC00))), std::invalid_argument);
}

// --- checked.hpp ---------------------------------------------------------------------------------

TEST(ExtrasChecked, RejectsWhatStrictUtf8DoesNotAllow) {
    const struct {
        const char* text;
        extras::check_error error;
        unsigned long position;
    } cases[] = {
        {"", extras::check_error::none, 0},
        {"aé€🌍", extras::check_error::none, 0},
        {"\xED\x9F\xBF\xEE\x80\x80", extras::check_error::none, 0},
        {"\xF4\x8F\xBF\xBF", extras::check_error::none, 0},
        {"a\x80", extras::check_error::invalid, 1},
        {"\xC0\xAF", extras::check_error::invalid, 0},
        {"\xC1\xBF", extras::check_error::invalid, 0},
        {"\xE0\x9F\xBF", extras::check_error::invalid, 0},
        {"\xED\xA0\x80", extras::check_error::invalid, 0},
        {"\xF0\x8F\xBF\xBF", extras::check_error::invalid, 0},
        {"\xF4\x90\x80\x80", extras::check_error::invalid, 0},
        {"\xF5\x80\x80\x80", extras::check_error::invalid, 0},
        {"ab\xE2\x82", extras::check_error::incomplete, 2},
        {"ab\xE2\x82x", extras::check_error::invalid, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(std::string(c.text)));
        const auto result = extras::try_utf8_to_utf16(ustring8(c.text));
        EXPECT_EQ(c.error, result.code());
        EXPECT_EQ(c.position, result.position());
        EXPECT_EQ(c.error, extras::try_utf8_to_utf32(ustring8(c.text)).code());
        EXPECT_EQ(c.error, extras::check_utf8(ustring8(c.text)).code());
    }
}

TEST(ExtrasChecked, RoundTripsEveryCodePoint) {
    for (unsigned code = 0; code <= 0x110000; ++code) {
        const ustring32 wide(1, static_cast<wchar_t>(code));
        const bool is_valid = code <= 0x10FFFF && (code < 0xD800 || code >= 0xE000);
        const auto narrow = extras::try_utf32_to_utf8(wide);
        const auto medium = extras::try_utf32_to_utf16(wide);
        ASSERT_EQ(is_valid, narrow.has_value()) << code;
        ASSERT_EQ(is_valid, medium.has_value()) << code;
        if (!is_valid)
            continue;
        ASSERT_EQ(wide, *extras::try_utf8_to_utf32(*narrow)) << code;
        ASSERT_EQ(wide, *extras::try_utf16_to_utf32(*medium)) << code;
        ASSERT_EQ(*narrow, *extras::try_utf16_to_utf8(*medium)) << code;
        ASSERT_EQ(*medium, *extras::try_utf8_to_utf16(*narrow)) << code;
    }
}

TEST(ExtrasChecked, TreatsASwappedByteOrderMarkAsANoncharacter) {
    const ustring16 text = {0xFFFE, 0x41};
    EXPECT_EQ("\xEF\xBF\xBE"
              "A",
              *extras::try_utf16_to_utf8(text));
    const ustring16 cut = {0x41, 0xD83C};
    EXPECT_EQ(extras::check_error::incomplete, extras::try_utf16_to_utf8(cut).code());
    EXPECT_EQ(1u, extras::try_utf16_to_utf8(cut).position());
}

TEST(ExtrasChecked, ParsesIntegersOnBothSidesOfEachLimit) {
    using extras::check_error;
    EXPECT_EQ(127, *extras::try_parse<signed char>("127"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<signed char>("128").code());
    EXPECT_EQ(-128, *extras::try_parse<signed char>("-128"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<signed char>("-129").code());
    EXPECT_EQ(255, *extras::try_parse<unsigned char>("255"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<unsigned char>("256").code());
    EXPECT_EQ(0, *extras::try_parse<unsigned char>("-0"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<unsigned char>("-1").code());
    EXPECT_EQ(std::numeric_limits<long>::max(), *extras::try_parse<long>("9223372036854775807"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<long>("9223372036854775808").code());
    EXPECT_EQ(std::numeric_limits<long>::min(), *extras::try_parse<long>("-9223372036854775808"));
    EXPECT_EQ(check_error::out_of_range, extras::try_parse<long>("-9223372036854775809").code());
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(),
              *extras::try_parse<unsigned long>("18446744073709551615"));
    EXPECT_EQ(check_error::out_of_range,
              extras::try_parse<unsigned long>("18446744073709551616").code());
    EXPECT_EQ(check_error::out_of_range,
              extras::try_parse<unsigned long>("99999999999999999999999").code());
    EXPECT_EQ(255, *extras::try_parse<int>("fF", 16));
    EXPECT_EQ(5, *extras::try_parse<int>("101", 2));
}

TEST(ExtrasChecked, ReportsWhereANumberIsInvalid) {
    const struct {
        const char* text;
        extras::check_error error;
        unsigned long position;
    } cases[] = {
        {"", extras::check_error::empty, 0},       {"-", extras::check_error::incomplete, 1},
        {" 1", extras::check_error::invalid, 0},   {"12x", extras::check_error::invalid, 2},
        {"0x10", extras::check_error::invalid, 1}, {"1 ", extras::check_error::invalid, 1},
        {"+7", extras::check_error::none, 0},      {"--7", extras::check_error::invalid, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.error, extras::try_parse<int>(c.text).code());
        EXPECT_EQ(c.position, extras::try_parse<int>(c.text).position());
    }
    const struct {
        const char* text;
        bool is_valid;
        double value;
    } floating[] = {
        {"0.5", true, 0.5},  {"-1.5e3", true, -1500}, {".5", true, 0.5},   {"5.", true, 5},
        {"1e-400", true, 0}, {"1e400", false, 0},     {"1e", false, 0},    {"1e+", false, 0},
        {".", false, 0},     {"inf", false, 0},       {"0x1p3", false, 0}, {"1,5", false, 0},
        {"1 ", false, 0},    {"", false, 0},
    };
    for (const auto& c : floating) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.is_valid, extras::try_parse<double>(c.text).has_value());
        EXPECT_EQ(c.value, extras::try_parse<double>(c.text).value());
    }
}

TEST(ExtrasChecked, ReportsWhatACodePageLoses) {
    const tova::strings::code_page western(tova::strings::code_page::encoding_1252);
    EXPECT_EQ("5 \x80", *extras::try_encode(western, "5 €"));
    const auto lost = extras::try_encode(western, "Łódź");
    EXPECT_EQ(extras::check_error::not_convertible, lost.code());
    EXPECT_EQ(0u, lost.position());
    EXPECT_EQ(2u, extras::try_encode(western, "abź").position());
    EXPECT_EQ(extras::check_error::invalid, extras::try_encode(western, "\xFF").code());
    EXPECT_EQ("5 €", *extras::try_decode(western, "5 \x80"));
    EXPECT_FALSE(extras::try_decode(western, "\x81"));
    EXPECT_THROW(extras::try_encode(tova::strings::code_page(), "a"),
                 tova::exceptions::invalid_argument_value);
}

// --- callables.hpp -------------------------------------------------------------------------------

int twice(int value) {
    return 2 * value;
}

TEST(ExtrasCallables, MakesDelegatesFromAnyCallable) {
    int calls = 0;
    auto counting = extras::delegate<int(int)>([&calls](int value) { return value + ++calls; });
    EXPECT_EQ(11, counting.invoke(10));
    EXPECT_EQ(12, counting.invoke(10));
    EXPECT_EQ(8, extras::delegate<int(int)>(twice).invoke(4));
    EXPECT_EQ(8, extras::delegate<int(int)>(std::function<int(int)>(twice)).invoke(4));

    tova::functor::delegate_t<void(const ustring8&)> nothing =
        extras::delegate<void(const ustring8&)>([](const ustring8& text) { return text.size(); });
    nothing.invoke("the result of the callable is dropped");
}

TEST(ExtrasCallables, CopiesOwnTheirCallables) {
    auto counter = extras::delegate<int()>([n = 0]() mutable { return ++n; });
    EXPECT_EQ(1, counter.invoke());
    auto copy = counter;
    EXPECT_EQ(2, copy.invoke());
    EXPECT_EQ(2, counter.invoke());
}

TEST(ExtrasCallables, BindsMembersAndKeepsSharedObjectsAlive) {
    struct adder {
        int total;
        int add(int value) { return total += value; }
    };
    adder plain = {1};
    EXPECT_EQ(3, extras::delegate(plain, &adder::add).invoke(2));
    EXPECT_EQ(3, plain.total);

    auto shared = std::make_shared<adder>(adder{10});
    const std::weak_ptr<adder> observer = shared;
    {
        auto bound = extras::delegate(shared, &adder::add);
        shared.reset();
        EXPECT_EQ(15, bound.invoke(5));
        EXPECT_FALSE(observer.expired());
    }
    EXPECT_TRUE(observer.expired());
}

// --- variants.hpp --------------------------------------------------------------------------------

TEST(ExtrasVariants, ReturnsTheValueOnlyAsItsOwnType) {
    const variant value = 42;
    EXPECT_TRUE(extras::holds<int>(value));
    EXPECT_FALSE(extras::holds<long>(value));
    EXPECT_EQ(42, extras::get<int>(value));
    EXPECT_THROW(extras::get<long>(value), std::invalid_argument);
    EXPECT_EQ(7, extras::get_or<long>(value, 7));
    EXPECT_TRUE(extras::get_if<int>(value));
    EXPECT_EQ(42, *extras::get_if<int>(value));
    EXPECT_FALSE(extras::get_if<double>(value));
    EXPECT_TRUE(extras::holds<tova::types::nil_t>(variant()));
    EXPECT_EQ("text", extras::get<ustring8>(variant("text")));
}

// All eighteen types, each visited as itself.
struct type_visitor {
    const std::type_info* type = nullptr;
    template <typename T>
    int operator()(const T&) {
        type = &typeid(T);
        return 5;
    }
};

TEST(ExtrasVariants, VisitsEachOfTheEighteenTypes) {
    const std::vector<variant> values = {variant(),
                                         variant(true),
                                         variant(static_cast<signed char>(1)),
                                         variant(static_cast<short>(1)),
                                         variant(1),
                                         variant(1l),
                                         variant(static_cast<unsigned char>(1)),
                                         variant(static_cast<unsigned short>(1)),
                                         variant(1u),
                                         variant(1ul),
                                         variant(1.0f),
                                         variant(1.0),
                                         variant(1.0l),
                                         variant("a"),
                                         variant(utf16("a")),
                                         variant(utf32("a")),
                                         variant(std::string("a")),
                                         variant(std::wstring(L"a"))};
    ASSERT_EQ(18u, values.size());
    for (const variant& value : values) {
        type_visitor visitor;
        EXPECT_EQ(5, extras::visit(visitor, value));
        EXPECT_STREQ(value.type().name(), visitor.type->name());
    }
}

TEST(ExtrasVariants, ComparesNumbersByValueAndStringsByUtf8) {
    using namespace tova::extras;
    const struct {
        variant left;
        variant right;
        bool are_equal;
    } cases[] = {
        {1, 1.0, true},
        {1, 1ul, true},
        {-1, std::numeric_limits<unsigned long>::max(), false},
        {0.5f, 0.5, true},
        {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN(), false},
        {"a", utf16("a"), true},
        {"a", std::wstring(L"a"), true},
        {"1", 1, false},
        {true, 1, false},
        {true, true, true},
        {variant(), variant(), true},
        {variant(), 0, false},
        {9007199254740993l, 9007199254740992.0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.left.as_string() + " and " + c.right.as_string());
        EXPECT_EQ(c.are_equal, c.left == c.right);
        EXPECT_EQ(c.are_equal, c.right == c.left);
        EXPECT_EQ(!c.are_equal, c.left != c.right);
    }
    EXPECT_TRUE(variant(42) == 42);
    EXPECT_TRUE(variant("x") == "x");
}

TEST(ExtrasVariants, ConvertsFromMoreTypes) {
    enum class size : short { small = 3 };
    EXPECT_EQ(42, extras::make_variant(42ll).as_long());
    EXPECT_EQ(42u, extras::make_variant(42ull).as_uint64());
    EXPECT_TRUE(extras::make_variant(nullptr) == tova::types::nil);
    EXPECT_TRUE(extras::holds<short>(extras::make_variant(size::small)));
    EXPECT_EQ("text", extras::make_variant("text").as_string());
    EXPECT_EQ(2.5, extras::make_variant(2.5).as_double());
#if __cplusplus >= 201703L
    EXPECT_EQ("view", extras::make_variant(std::string_view("view")).as_string());
#endif
}

}  // namespace
