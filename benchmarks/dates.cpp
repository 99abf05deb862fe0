// Dates from year, month and day to day numbers and back, moves by days, times of day, and the
// clock.
//
// Boost stores a day number and ours three fields, so every operation starts and ends with what a
// caller has: fields or a number. All libraries must agree on all dates before they are measured;
// 29 February does not occur among the results.
#include <tova/system/date_time/date_time.hpp>

#include "cell.hpp"

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#ifdef HAVE_ABSL
#include <absl/time/civil_time.h>
#endif
#ifdef HAVE_BOOST_GREGORIAN
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#endif
#ifdef HAVE_HINNANT
#include <date/date.h>
#endif
#ifdef HAVE_QT6
#include <QDate>
#endif

namespace {

struct fields {
    unsigned year;
    unsigned month;
    unsigned day;
};

unsigned word_of(const fields& date) {
    return date.year * 10000 + date.month * 100 + date.day;
}

// Day numbers count from 1 March of year 0, which is day 1.
const int number_of_1970 = 719469;

namespace tova_dates {

namespace date_time = tova::system::date_time;

unsigned to_number(const fields& date) {
    return date_time::date(date.day, date.month, date.year).pJulian_day_number();
}

fields fields_of(const date_time::date& date) {
    return {date.year(), date.month(), date.day()};
}

fields from_number(unsigned number) {
    date_time::date date;
    date.pJulian_day_number(number);
    return fields_of(date);
}

fields add(const fields& start, int days) {
    date_time::date date(start.day, start.month, start.year);
    date += date_time::date_duration(days);
    return fields_of(date);
}

unsigned time_of_day(unsigned start, int milliseconds) {
    date_time::time time(start / 3600000, start / 60000 % 60, start / 1000 % 60, start % 1000);
    time += date_time::time_duration(0, 0, 0, milliseconds);
    return time.hour() * 3600000 + time.minute() * 60000 + time.second() * 1000 +
           time.millisecond();
}

fields today() {
    return fields_of(date_time::date::UTC_date());
}

}  // namespace tova_dates

// Our code with a chain of divisions. It makes dates with our class, and reads them with as many
// calls as our class needs.
namespace plain_dates {

using bench_support::called;

__attribute__((noipa)) unsigned number_of(const fields& date) {
    const unsigned year = date.month < 3 ? date.year - 1 : date.year;
    const unsigned from_march = date.month < 3 ? date.month + 9 : date.month - 3;
    const unsigned pair = from_march / 2;
    const unsigned first_month = pair == 3 || pair == 4 ? 30 : 31;
    return year * 365 + year / 4 - (year / 100 - year / 400) + pair * 61 + (pair >= 3 ? 1 : 0) +
           (from_march % 2 != 0 ? first_month : 0) + date.day;
}

__attribute__((noipa)) fields fields_of(unsigned number) {
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

void make(const fields& date) {
    const tova_dates::date_time::date made(date.day, date.month, date.year);
    benchmark::DoNotOptimize(&made);
}

unsigned to_number(const fields& date) {
    make(date);
    return number_of(date);
}

fields from_number(unsigned number) {
    benchmark::DoNotOptimize(called(number));
    const fields found = fields_of(number);
    return {called(found.year), called(found.month), called(found.day)};
}

fields add(const fields& start, int days) {
    make(start);
    benchmark::DoNotOptimize(called(days));
    const fields found = fields_of(number_of(start) + static_cast<unsigned>(days));
    return {called(found.year), called(found.month), called(found.day)};
}

}  // namespace plain_dates

#ifdef HAVE_BOOST_GREGORIAN
namespace boost_dates {

namespace gregorian = boost::gregorian;

const long first_day = static_cast<long>(gregorian::date(1970, 1, 1).day_number()) - number_of_1970;

gregorian::date made(const fields& date) {
    return gregorian::date(static_cast<unsigned short>(date.year),
                           static_cast<unsigned short>(date.month),
                           static_cast<unsigned short>(date.day));
}

fields fields_of(const gregorian::date& date) {
    const auto parts = date.year_month_day();
    return {parts.year, parts.month, parts.day};
}

unsigned to_number(const fields& date) {
    return static_cast<unsigned>(static_cast<long>(made(date).day_number()) - first_day);
}

fields from_number(unsigned number) {
    const auto parts = gregorian::gregorian_calendar::from_day_number(
        static_cast<std::uint32_t>(first_day + number));
    return {parts.year, parts.month, parts.day};
}

fields add(const fields& start, int days) {
    gregorian::date date = made(start);
    date += gregorian::days(days);
    return fields_of(date);
}

unsigned time_of_day(unsigned start, int milliseconds) {
    using boost::posix_time::time_duration;
    const long ticks_a_millisecond = time_duration::ticks_per_second() / 1000;
    time_duration time(start / 3600000, start / 60000 % 60, start / 1000 % 60,
                       start % 1000 * ticks_a_millisecond);
    time += boost::posix_time::milliseconds(milliseconds);
    if (time.is_negative())
        time += boost::posix_time::hours(24);
    if (time >= boost::posix_time::hours(24))
        time -= boost::posix_time::hours(24);
    return static_cast<unsigned>(time.hours() * 3600000 + time.minutes() * 60000 +
                                 time.seconds() * 1000 +
                                 time.fractional_seconds() / ticks_a_millisecond);
}

fields today() {
    return fields_of(gregorian::day_clock::universal_day());
}

}  // namespace boost_dates
#endif

#ifdef HAVE_HINNANT
namespace hinnant_dates {

date::sys_days made(const fields& value) {
    return date::year(static_cast<int>(value.year)) / date::month(value.month) /
           date::day(value.day);
}

fields fields_of(const date::sys_days& day) {
    const date::year_month_day parts(day);
    return {static_cast<unsigned>(static_cast<int>(parts.year())),
            static_cast<unsigned>(parts.month()), static_cast<unsigned>(parts.day())};
}

unsigned to_number(const fields& value) {
    return static_cast<unsigned>(made(value).time_since_epoch().count() + number_of_1970);
}

fields from_number(unsigned number) {
    return fields_of(date::sys_days(date::days(static_cast<int>(number) - number_of_1970)));
}

fields add(const fields& start, int days) {
    return fields_of(made(start) + date::days(days));
}

unsigned time_of_day(unsigned start, int count) {
    using std::chrono::milliseconds;
    const milliseconds a_day = std::chrono::hours(24);
    milliseconds time = std::chrono::hours(start / 3600000) +
                        std::chrono::minutes(start / 60000 % 60) +
                        std::chrono::seconds(start / 1000 % 60) + milliseconds(start % 1000);
    time = (time + milliseconds(count) + a_day) % a_day;
    const date::hh_mm_ss<milliseconds> parts(time);
    return static_cast<unsigned>(parts.hours().count() * 3600000 + parts.minutes().count() * 60000 +
                                 parts.seconds().count() * 1000 + parts.subseconds().count());
}

fields today() {
    return fields_of(date::floor<date::days>(std::chrono::system_clock::now()));
}

}  // namespace hinnant_dates
#endif

// The date part alone of three more libraries.

namespace chrono_dates {

std::chrono::sys_days made(const fields& date) {
    return std::chrono::year(static_cast<int>(date.year)) / std::chrono::month(date.month) /
           std::chrono::day(date.day);
}

fields told(const std::chrono::sys_days& day) {
    const std::chrono::year_month_day parts(day);
    return {static_cast<unsigned>(static_cast<int>(parts.year())),
            static_cast<unsigned>(parts.month()), static_cast<unsigned>(parts.day())};
}

unsigned to_number(const fields& date) {
    return static_cast<unsigned>(made(date).time_since_epoch().count() + number_of_1970);
}

fields from_number(unsigned number) {
    return told(
        std::chrono::sys_days(std::chrono::days(static_cast<int>(number) - number_of_1970)));
}

fields add(const fields& start, int days) {
    return told(made(start) + std::chrono::days(days));
}

}  // namespace chrono_dates

#ifdef HAVE_ABSL
namespace absl_dates {

const absl::CivilDay first_day(1970, 1, 1);

absl::CivilDay made(const fields& date) {
    return absl::CivilDay(date.year, static_cast<int>(date.month), static_cast<int>(date.day));
}

fields told(const absl::CivilDay& date) {
    return {static_cast<unsigned>(date.year()), static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day())};
}

unsigned to_number(const fields& date) {
    return static_cast<unsigned>(made(date) - first_day + number_of_1970);
}

fields from_number(unsigned number) {
    return told(first_day + (static_cast<int>(number) - number_of_1970));
}

fields add(const fields& start, int days) {
    return told(made(start) + days);
}

}  // namespace absl_dates
#endif

#ifdef HAVE_QT6
namespace qt_dates {

const qint64 first_day = QDate(1970, 1, 1).toJulianDay() - number_of_1970;

QDate made(const fields& date) {
    return QDate(static_cast<int>(date.year), static_cast<int>(date.month),
                 static_cast<int>(date.day));
}

fields told(const QDate& date) {
    int year, month, day;
    date.getDate(&year, &month, &day);
    return {static_cast<unsigned>(year), static_cast<unsigned>(month), static_cast<unsigned>(day)};
}

unsigned to_number(const fields& date) {
    return static_cast<unsigned>(made(date).toJulianDay() - first_day);
}

fields from_number(unsigned number) {
    return told(QDate::fromJulianDay(first_day + number));
}

fields add(const fields& start, int days) {
    return told(made(start).addDays(days));
}

}  // namespace qt_dates
#endif

struct work {
    fields date;
    unsigned number;
    int days;
    fields moved;
    unsigned milliseconds;
    int move;
};

// Dates of the years 1600 to 2400, moves by up to a year, times of day and moves by up to a day.
const std::vector<work>& all_work() {
    static const std::vector<work> result = [] {
        std::mt19937 random(1);
        std::vector<work> made;
        while (made.size() < 4096) {
            work item;
            item.number = 584389 + random() % 292194;
            item.days = static_cast<int>(random() % 731) - 365;
            item.date = tova_dates::from_number(item.number);
            item.moved = tova_dates::from_number(item.number + static_cast<unsigned>(item.days));
            item.milliseconds = random() % 86400000;
            item.move = static_cast<int>(random() % 172800000) - 86400000;
            // The numbers of a 29 February and of the day after it are one date in ours.
            const bool leaps =
                tova_dates::to_number(item.date) != item.number ||
                tova_dates::to_number(item.moved) != item.number + static_cast<unsigned>(item.days);
            if (!leaps)
                made.push_back(item);
        }
        return made;
    }();
    return result;
}

// One pass over all work for each iteration; `step` must return what `expected` returns.
template <typename Step, typename Expected>
void add_benchmark(const std::string& name, Step step, Expected expected) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        const std::vector<work>& items = all_work();
        for (const work& item : items) {
            if (step(item) != expected(item)) {
                state.SkipWithError("returns another date");
                return;
            }
        }
        for (auto _ : state) {
            unsigned sum = 0;
            for (const work& item : items)
                sum += step(item);
            benchmark::DoNotOptimize(sum);
        }
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * items.size()));
    });
}

template <unsigned (*ToNumber)(const fields&), fields (*FromNumber)(unsigned),
          fields (*Add)(const fields&, int)>
void register_dates(const std::string& library) {
    add_benchmark(
        "number/of_dates/" + library, [](const work& item) { return ToNumber(item.date); },
        [](const work& item) { return item.number; });
    add_benchmark(
        "date/of_numbers/" + library,
        [](const work& item) { return word_of(FromNumber(item.number)); },
        [](const work& item) { return word_of(item.date); });
    add_benchmark(
        "add/days/" + library, [](const work& item) { return word_of(Add(item.date, item.days)); },
        [](const work& item) { return word_of(item.moved); });
}

template <unsigned (*TimeOfDay)(unsigned, int), fields (*Today)()>
void register_times(const std::string& library) {
    add_benchmark(
        "add/times_of_day/" + library,
        [](const work& item) { return TimeOfDay(item.milliseconds, item.move); },
        [](const work& item) {
            const long moved = static_cast<long>(item.milliseconds) + item.move + 86400000;
            return static_cast<unsigned>(moved % 86400000);
        });
    benchmark::RegisterBenchmark(("clock/today/" + library).c_str(), [](benchmark::State& state) {
        for (auto _ : state) {
            const fields today = Today();
            benchmark::DoNotOptimize(&today);
            benchmark::ClobberMemory();
        }
    });
}

// The floor: the calls that our classes take, with the known results.
void register_floor() {
    using bench_support::called;
    const auto number = [](const work& item) {
        benchmark::DoNotOptimize(called(item.date.day));
        return called(item.number);
    };
    const auto date = [](const work& item) {
        benchmark::DoNotOptimize(called(item.number));
        return called(item.date.year) * 10000 + called(item.date.month) * 100 +
               called(item.date.day);
    };
    const auto moved = [](const work& item) {
        benchmark::DoNotOptimize(called(item.date.day));
        benchmark::DoNotOptimize(called(item.days));
        return called(item.moved.year) * 10000 + called(item.moved.month) * 100 +
               called(item.moved.day);
    };
    add_benchmark("number/of_dates/floor", number, number);
    add_benchmark("date/of_numbers/floor", date, date);
    add_benchmark("add/days/floor", moved, moved);
}

bool register_all() {
    register_dates<tova_dates::to_number, tova_dates::from_number, tova_dates::add>("tova");
    register_times<tova_dates::time_of_day, tova_dates::today>("tova");
    register_floor();
    register_dates<plain_dates::to_number, plain_dates::from_number, plain_dates::add>("plain");
    register_dates<chrono_dates::to_number, chrono_dates::from_number, chrono_dates::add>(
        "std_chrono");
#ifdef HAVE_ABSL
    register_dates<absl_dates::to_number, absl_dates::from_number, absl_dates::add>("abseil");
#endif
#ifdef HAVE_BOOST_GREGORIAN
    register_dates<boost_dates::to_number, boost_dates::from_number, boost_dates::add>("boost");
    register_times<boost_dates::time_of_day, boost_dates::today>("boost");
#endif
#ifdef HAVE_HINNANT
    register_dates<hinnant_dates::to_number, hinnant_dates::from_number, hinnant_dates::add>(
        "hinnant");
    register_times<hinnant_dates::time_of_day, hinnant_dates::today>("hinnant");
#endif
#ifdef HAVE_QT6
    register_dates<qt_dates::to_number, qt_dates::from_number, qt_dates::add>("qt");
#endif
    return true;
}

const bool registered = register_all();

}  // namespace
