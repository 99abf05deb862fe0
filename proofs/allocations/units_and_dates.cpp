// Lengths, colors, dates and times: values that need no memory except for their error messages.
#include "trial.hpp"

#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/timer.hpp>

namespace proof {

using namespace tova;
namespace convert = generic::convert;
using system::date_time::date_duration;
using system::date_time::date_time_t;
using system::date_time::time_duration;
using types::absolute_unit;
using types::color_t;
using types::device_unit;

namespace {

typedef system::date_time::date date_type;
typedef system::date_time::time time_type;

// Runs an operation that raises one of the library's exceptions, and records the message.
template <typename Operation>
void refused(trial& t, const Operation& operation) {
    try {
        t(operation);
        t.note("not refused");
    } catch (const exceptions::exception& error) {
        t.note(error.get_message());
    }
}

void lengths_on_devices(trial& t) {
    t([] {
        device_unit one;
        const device_unit made[] = {device_unit(1),
                                    device_unit(1.5),
                                    device_unit(2.5f),
                                    device_unit(static_cast<signed char>(3)),
                                    device_unit(short(4)),
                                    device_unit(5l),
                                    device_unit(static_cast<unsigned char>(6)),
                                    device_unit(static_cast<unsigned short>(7)),
                                    device_unit(8ul)};
        int sum = 0;
        for (const device_unit& each : made)
            sum = 10 * sum + each.as_int32();
        one.assign(3);
        one = 4;
        one.assign(made[0]);
        one = made[1];
        return sum + static_cast<double>(one.as_float()) + one.as_double() + one.type() +
               one.do_type() + one.do_as_int32() + static_cast<double>(one.do_as_float()) +
               one.do_as_double() + one.equal(made[0]) + (one == made[1]) + (one != made[1]);
    });
}

template <int N>
void lengths_on_paper(trial& t) {
    t([] {
        types::basic_absolute_impl<N> one;
        types::basic_absolute_impl<N> two(1.5);
        const types::basic_absolute_impl<N> three(static_cast<const absolute_unit&>(two));
        static_cast<absolute_unit&>(one) = two;
        return one.as_int32() + two.as_double() + three.as_md() + one.type() + one.value() +
               two.value(2.5);
    });
}

// A class with virtual functions whose destructor is not virtual, as its base.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
struct own_length : absolute_unit {
    own_length() {}
    own_length(int value) : absolute_unit(value) {}
    own_length(double value) : absolute_unit(value) {}
    unit_types do_type() const override { return inch; }
    int do_as_int32() const override { return 1; }
    double do_as_double() const override { return 1; }
};
#pragma GCC diagnostic pop

void conversions_of_lengths(trial& t) {
    t([] {
        const own_length none;
        const own_length one(1);
        const own_length half(1.5);
        const own_length same(half);
        const device_unit dots(300);
        return convert::to_device_unit(dots).as_int32() +
               convert::to_device_unit(1.5, device_unit::device).as_int32() +
               convert::to_device_unit(1, device_unit::device).as_int32() +
               convert::to_device_unit(same, 96).as_int32() +
               convert::to_device_unit(1.5, absolute_unit::inch, 96).as_int32() +
               convert::to_device_unit(1, absolute_unit::inch, 96).as_int32() +
               convert::to_md(none).as_int32() + convert::to_md(one).as_int32() +
               convert::to_md(1, absolute_unit::inch).as_int32() +
               convert::to_md(1.5, absolute_unit::inch).as_int32() +
               convert::to_md(dots, 96).as_int32() +
               convert::to_md(1, device_unit::device, 96).as_int32() +
               convert::to_md(1.5, device_unit::device, 96).as_int32();
    });
}

void colors(trial& t) {
    t([] {
        color_t none;
        const color_t one(0x01020304);
        const color_t copy(one);
        const color_t four(1, 2, 3, 4);
        const color_t three(1, 2, 3);
        none.assign(copy);
        none = four;
        none.assign(5);
        none = 6;
        none.red(1);
        none.green(2);
        none.blue(3);
        none.alpha(4);
        return none.as_int32() / 2 + one.as_rgb() / 2 + color_t::rgba(7).red() +
               color_t::rgb(8).green() + color_t::rgba(1, 2, 3, 4).blue() +
               color_t::rgb(1, 2, 3).alpha() + three.red() + three.green() + three.blue() +
               three.alpha() + one.equal(copy) + (one == copy) + (one != four) + none.red() +
               none.green() + none.blue() + none.alpha();
    });
}

void dates(trial& t) {
    t([] {
        date_type one(28, 2, 2024);
        const date_type copy(one);
        date_type other;
        other = one;
        other.assign(copy);
        other += date_duration(1);
        other.plus_assign(date_duration(30));
        other -= date_duration(2);
        other.minus_assign(date_duration(2));
        one.year(2020);
        one.month(5);
        one.day(6);
        date_type number;
        number.pJulian_day_number(other.pJulian_day_number());
        return one.year() + one.month() + one.day() + one.get_days() + other.is_valid_day(31) +
               other.is_valid_month(13) + other.is_leap_year() + other.is_day_constrained() +
               number.day();
    });
    t([] { return date_type::local_date().year() > 2000 && date_type::UTC_date().year() > 2000; });
    refused(t, [] { return date_type(1, 13, 2024).day(); });
    refused(t, [] { return date_type(32, 2, 2024).day(); });
    refused(t, [] { date_type(3, 2, 2024).month(13); });
}

void times(trial& t) {
    t([] {
        time_type one(1, 2, 3, 4);
        const time_type copy(one);
        time_type other;
        other = one;
        other.assign(copy);
        other += time_duration(1, 2, 3, 4);
        other.plus_assign(time_duration(1, 2, 3, 4));
        other -= time_duration(0, 2, 3, 4);
        other.minus_assign(time_duration(0, 2, 3, 4));
        one.hour(4);
        one.minute(5);
        one.second(6);
        one.millisecond(7);
        return one.hour() + one.minute() + one.second() + one.millisecond() + other.hour() +
               other.is_valid_hour(24) + other.is_valid_minute(60) + other.is_valid_second(60) +
               other.is_valid_millisecond(1000);
    });
    t([] { return time_type::local_time().hour() < 24 && time_type::UTC_time().hour() < 24; });
    refused(t, [] { return time_type(24, 0, 0, 0).hour(); });
    refused(t, [] { time_type().second(61); });
}

void dates_with_times(trial& t) {
    t([] {
        const date_type day(28, 2, 2024);
        const time_type hour(23, 59, 59, 999);
        date_time_t one(day, hour);
        const date_time_t copy(one);
        date_time_t other;
        other = one;
        other.assign(copy);
        other.assign(day);
        other = day;
        other.assign(hour);
        other = hour;
        other.assign(day, hour);
        other += date_duration(1);
        other.plus_assign(date_duration(1));
        other -= date_duration(1);
        other.minus_assign(date_duration(1));
        other += time_duration(1, 0, 0, 0);
        other.plus_assign(time_duration(1, 0, 0, 0));
        other -= time_duration(1, 0, 0, 0);
        other.minus_assign(time_duration(1, 0, 0, 0));
        one.day(4);
        one.year(2020);
        one.month(3);
        one.hour(5);
        one.minute(6);
        one.second(7);
        one.millisecond(8);
        return one.year() + one.month() + one.day() + one.hour() + one.minute() + one.second() +
               one.millisecond() + other.is_leap_year() + other.is_day_constrained() +
               other.date().day() + other.time().hour();
    });
    t([] {
        return date_time_t::local_date_time().year() > 2000 &&
               date_time_t::UTC_date_time().year() > 2000;
    });
}

void durations(trial& t) {
    namespace clock = system::date_time;
    t([] {
        date_duration one(5);
        date_duration none;
        const date_duration copy(one);
        none = one;
        none.assign(copy);
        none += one;
        none.plus_assign(one);
        none -= copy;
        none.minus_assign(copy);
        none.days(none.days() + 1);
        return clock::plus(one, none).days() + clock::minus(one, none).days() +
               (one + none).days() + (one - none).days();
    });
    t([] {
        time_duration one(1, 2, 3, 4);
        time_duration none;
        const time_duration copy(one);
        none = one;
        none.assign(copy);
        none += one;
        none.plus_assign(one);
        none -= copy;
        none.minus_assign(copy);
        const time_duration sum = clock::plus(one, none);
        return 1.0 * sum.hour() + sum.minute() + sum.second() + sum.millisecond() +
               sum.is_negative() + sum.total_hours() + sum.total_minutes() + sum.total_seconds() +
               static_cast<double>(sum.total_complete_hours()) +
               static_cast<double>(sum.total_complete_minutes()) +
               static_cast<double>(sum.total_complete_seconds()) +
               static_cast<double>(sum.total_milliseconds()) + clock::minus(one, none).hour() +
               (one + none).hour() + (one - none).hour();
    });
    t([] {
        const time_type early(1, 2, 3, 4);
        const time_type late(5, 6, 7, 8);
        const time_duration hour(1, 0, 0, 0);
        return 1.0 * static_cast<double>(clock::minus(late, early).total_milliseconds()) +
               static_cast<double>((late - early).total_milliseconds()) +
               clock::plus(early, hour).hour() + clock::minus(late, hour).hour() +
               (early + hour).hour() + (late - hour).hour() + clock::plus(hour, early).hour() +
               (hour + early).hour();
    });
}

void timers(trial& t) {
    t([] {
        system::date_time::timer one;
        one.start();
        one.stop();
        one.clear();
        const system::date_time::auto_tester measures_again;
        static_cast<void>(measures_again);
        return one.elapsed();
    });
}

}  // namespace

void add_units_and_dates(scenarios& all) {
    all.push_back({"lengths on devices", lengths_on_devices, never_ends});
    all.push_back({"lengths on paper",
                   [](trial& t) {
                       lengths_on_paper<1>(t);
                       lengths_on_paper<2>(t);
                       lengths_on_paper<3>(t);
                       lengths_on_paper<4>(t);
                       lengths_on_paper<5>(t);
                       lengths_on_paper<6>(t);
                       lengths_on_paper<7>(t);
                       lengths_on_paper<8>(t);
                   },
                   never_ends});
    all.push_back({"conversions of lengths", conversions_of_lengths, never_ends});
    all.push_back({"colors", colors, never_ends});
    all.push_back({"dates", dates, never_ends});
    all.push_back({"times", times, never_ends});
    all.push_back({"dates with times", dates_with_times, never_ends});
    all.push_back({"durations", durations, never_ends});
    all.push_back({"timers", timers, never_ends});
}

}  // namespace proof
