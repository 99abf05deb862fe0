// Dates, times and durations, changed by any sequence of steps and compared with plain arithmetic
// on wider numbers and a table of month lengths.
//
// Input: for each step one byte, followed by the four or eight bytes of its number.
#include <tova/exceptions/exceptions.hpp>
#include <tova/system/date_time/date_time.hpp>

#include "../tests/system/date_time/calendar_oracle.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

using namespace tova::system::date_time;
using fuzz_support::require;
using test_support::calendar_day;
using tova::exceptions::out_of_range;

__extension__ typedef __int128 wide;

// The low bits of a number as a signed one.
int wrapped_32(wide number) {
    return static_cast<int>(static_cast<unsigned>(number));
}

long wrapped_64(wide number) {
    return static_cast<long>(static_cast<unsigned long>(number));
}

// A date as three numbers, the day as it is stored.
struct plain_date {
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;

    unsigned number() const { return test_support::number_of({year, month, day}); }

    void set_number(unsigned value) {
        const calendar_day reached = test_support::reached_by(value);
        year = reached.year;
        month = reached.month;
        day = reached.day;
    }

    bool set_day(unsigned value) {
        const bool valid = value - 1 < 31;
        day = valid ? value : day;
        return valid;
    }

    bool set_month(unsigned value) {
        const bool valid = value - 1 < 12;
        month = valid ? value : month;
        return valid;
    }

    bool move(int days) {
        set_number(number() + static_cast<unsigned>(days));
        return true;
    }

    bool move_back(int days) {
        if (wrapped_32(number()) <= days)
            return false;
        set_number(number() - static_cast<unsigned>(days));
        return true;
    }

    unsigned visible_day() const {
        if (month == 0)
            return 0;
        const unsigned length = test_support::month_length(year, month);
        return day < length ? day : length;
    }
};

// A time as hour, minute, second and millisecond.
struct plain_time {
    unsigned fields[4] = {0, 0, 0, 0};

    bool set(unsigned field, unsigned value) {
        static const unsigned limits[] = {24, 60, 60, 1000};
        const bool valid = value < limits[field];
        fields[field] = valid ? value : fields[field];
        return valid;
    }

    bool move(long milliseconds) {
        const wide now = ((fields[0] * wide(60) + fields[1]) * 60 + fields[2]) * 1000 + fields[3];
        wide rest = wrapped_64(wide(wrapped_64(now + milliseconds)) + 86400000) % 86400000;
        const wide units[] = {3600000, 60000, 1000, 1};
        for (unsigned field = 0; field < 4; ++field) {
            const wide part = rest / units[field];
            rest %= units[field];
            if (part < 0)
                return false;
            fields[field] = static_cast<unsigned>(part);
        }
        return true;
    }
};

struct plain_date_time {
    plain_date date;
    plain_time time;

    bool move(long milliseconds, bool back) {
        const long hours = milliseconds / 3600000;
        if (hours / 24 != 0) {
            const long rest = hours % 24;
            if (rest <= 0)
                return false;
            date.day = static_cast<unsigned>(rest);
            const int days = static_cast<int>(rest);
            if (!(back ? date.move_back(days) : date.move(days)))
                return false;
        }
        return time.move(back ? wrapped_64(-wide(milliseconds)) : milliseconds);
    }
};

void compare(const date& ours, const plain_date& plain) {
    require(ours.year() == plain.year && ours.month() == plain.month);
    require(ours.day() == plain.visible_day() && ours.get_days() == plain.visible_day());
    require(ours.is_day_constrained() == (plain.visible_day() != plain.day));
    require(ours.is_leap_year() == test_support::is_leap(plain.year));
    require(ours.pJulian_day_number() == plain.number());
}

void compare(const time& ours, const plain_time& plain) {
    require(ours.hour() == plain.fields[0] && ours.minute() == plain.fields[1]);
    require(ours.second() == plain.fields[2] && ours.millisecond() == plain.fields[3]);
}

void compare(const time_duration& ours, long milliseconds) {
    require(ours.total_milliseconds() == milliseconds);
    require(ours.is_negative() == (milliseconds < 0));
    require(ours.hour() == wrapped_32(milliseconds / 3600000));
    const long seconds = milliseconds / 1000 % 3600;
    require(ours.minute() == seconds / 60 && ours.second() == seconds % 60);
    require(ours.millisecond() == milliseconds % 1000);
}

// Whether the step did not raise `out_of_range`.
template <typename Step>
bool succeeds(const Step& step) {
    try {
        step();
        return true;
    } catch (const out_of_range&) {
        return false;
    }
}

class bytes {
public:
    bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    bool empty() const { return m_left == 0; }

    // Missing bytes are 0.
    template <typename Number>
    Number next() {
        Number number = 0;
        const std::size_t taken = m_left < sizeof number ? m_left : sizeof number;
        if (taken != 0)
            std::memcpy(&number, m_data, taken);
        m_data += taken;
        m_left -= taken;
        return number;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

// The library's values and the plain ones, moved by the same steps.
class both {
public:
    // Steps 0 to 6, with a number of 32 bits.
    void change_date(unsigned step, unsigned number) {
        switch (step) {
        case 0:
            require(succeeds([&] { m_ours.day(number); }) == m_plain.date.set_day(number));
            break;
        case 1:
            require(succeeds([&] { m_ours.month(number); }) == m_plain.date.set_month(number));
            break;
        case 2:
            m_plain.date.year = m_ours.year(number);
            require(m_plain.date.year == number);
            break;
        case 3: {
            date other(m_ours.date());
            other.pJulian_day_number(number);
            m_ours = other;
            m_plain.date.set_number(number);
            break;
        }
        case 4:
        case 5: {
            const date_duration days(static_cast<int>(number));
            date other(m_ours.date());
            const bool moved = succeeds([&] { step == 4 ? other += days : other -= days; });
            require(moved == (step == 4 ? m_plain.date.move(days.days())
                                        : m_plain.date.move_back(days.days())));
            m_ours = other;
            break;
        }
        default: {
            const date_time_t before(m_ours);
            m_ours += date_duration(static_cast<int>(number));
            m_ours -= date_duration(static_cast<int>(number));
            require(std::memcmp(&before, &m_ours, sizeof m_ours) == 0);
        }
        }
    }

    // Steps 7 to 10, with a number of 32 bits: one for each field.
    void set_time(unsigned step, unsigned number) {
        const bool set = succeeds([&] {
            switch (step) {
            case 7:
                m_ours.hour(number);
                break;
            case 8:
                m_ours.minute(number);
                break;
            case 9:
                m_ours.second(number);
                break;
            default:
                m_ours.millisecond(number);
            }
        });
        require(set == m_plain.time.set(step - 7, number));
    }

    // Steps 11 to 15, with a number of 64 bits.
    void move(unsigned step, long number) {
        const time_duration distance(0, 0, 0, number);
        switch (step) {
        case 11:
        case 12: {
            const bool back = step == 12;
            require(succeeds([&] { back ? m_ours -= distance : m_ours += distance; }) ==
                    m_plain.move(number, back));
            break;
        }
        case 13: {
            time other;
            plain_time plain_other = m_plain.time;
            const bool moved = succeeds([&] { other = m_ours.time() + distance; });
            require(moved == plain_other.move(number));
            if (moved)
                compare(other, plain_other);
            const time_duration between = m_ours.time() - time();
            require((time() + between - m_ours.time()).total_milliseconds() == 0);
            break;
        }
        case 14: {
            const int fields[] = {static_cast<int>(number), static_cast<int>(number >> 16),
                                  static_cast<int>(number >> 32)};
            m_span += time_duration(fields[0], fields[1], fields[2], number);
            const int sum = wrapped_32(fields[0] * wide(3600000) + fields[1] * wide(60000) +
                                       fields[2] * wide(1000));
            m_plain_span = wrapped_64(wide(m_plain_span) + wrapped_64(wide(sum) + number));
            break;
        }
        default:
            m_span -= distance;
            m_plain_span = wrapped_64(wide(m_plain_span) - number);
        }
    }

    void check() const {
        compare(m_ours.date(), m_plain.date);
        compare(m_ours.time(), m_plain.time);
        compare(m_span, m_plain_span);
    }

private:
    date_time_t m_ours;
    plain_date_time m_plain;
    time_duration m_span;
    long m_plain_span = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    bytes input(data, size);
    both values;
    while (!input.empty()) {
        const unsigned step = input.next<std::uint8_t>() % 16;
        if (step < 7)
            values.change_date(step, input.next<std::uint32_t>());
        else if (step < 11)
            values.set_time(step, input.next<std::uint32_t>());
        else
            values.move(step, input.next<std::int64_t>());
        values.check();
    }
    return 0;
}
