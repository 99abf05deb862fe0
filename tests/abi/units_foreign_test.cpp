// Lengths and colors as seen by a program without the headers of the library. README.md says what
// this checks.
#include <gtest/gtest.h>

#include <cmath>

namespace TOVA_2_18 {

namespace types {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class device_unit {
public:
    enum unit_types { pixels = 1, of_a_subclass = 2 };

    device_unit();
    device_unit(const device_unit&);
    device_unit(const int&);
    device_unit(const double&);
    device_unit(const float&);
    device_unit(const signed char&);
    device_unit(const short&);
    device_unit(const long&);
    device_unit(const unsigned char&);
    device_unit(const unsigned short&);
    device_unit(const unsigned long&);
    device_unit& assign(int);
    device_unit& operator=(int);
    device_unit& assign(const device_unit&);
    device_unit& operator=(const device_unit&);
    bool equal(const device_unit&) const;
    bool operator==(const device_unit&) const;
    bool operator!=(const device_unit&) const;
    unit_types type() const;
    int as_int32() const;
    float as_float() const;
    double as_double() const;

    virtual unit_types do_type() const;
    virtual int do_as_int32() const;
    virtual float do_as_float() const;
    virtual double do_as_double() const;

    int m_value;
};

class absolute_unit {
public:
    enum unit_types { u_1 = 1, u_2, u_3, u_4, u_5, u_6, u_7, u_8 };

    absolute_unit();
    absolute_unit(const absolute_unit&);
    absolute_unit(int);
    absolute_unit(double);
    unit_types type() const;
    int as_int32() const;
    double as_double() const;
    int as_md() const;
    double value() const;
    double value(double);

    virtual unit_types do_type() const = 0;
    virtual int do_as_int32() const = 0;
    virtual double do_as_double() const = 0;

    double m_value;
};

template <int N>
class basic_absolute_impl : public absolute_unit {
public:
    basic_absolute_impl(double);
    unit_types do_type() const override;
    int do_as_int32() const override;
    double do_as_double() const override;
};

#pragma GCC diagnostic pop

class color_t {
public:
    color_t();
    color_t(const color_t&);
    color_t(int);
    color_t(unsigned char, unsigned char, unsigned char, unsigned char);
    color_t(unsigned char, unsigned char, unsigned char);
    ~color_t();
    static color_t rgba(const int&);
    static color_t rgb(const int&);
    static color_t rgba(unsigned char, unsigned char, unsigned char, unsigned char);
    static color_t rgb(unsigned char, unsigned char, unsigned char);
    color_t& assign(const color_t&);
    color_t& operator=(const color_t&);
    color_t& assign(int);
    color_t& operator=(int);
    bool equal(const color_t&) const;
    bool operator==(const color_t&) const;
    bool operator!=(const color_t&) const;
    unsigned char red() const;
    unsigned char green() const;
    unsigned char blue() const;
    unsigned char alpha() const;
    unsigned char red(unsigned char);
    unsigned char green(unsigned char);
    unsigned char blue(unsigned char);
    unsigned char alpha(unsigned char);
    int as_int32() const;
    int as_rgb() const;

    unsigned char m_red;
    unsigned char m_green;
    unsigned char m_blue;
    unsigned char m_alpha;
};

}  // namespace types

namespace generic {
namespace convert {

types::device_unit to_device_unit(const types::device_unit&);
types::device_unit to_device_unit(double, types::device_unit::unit_types);
types::device_unit to_device_unit(int, types::device_unit::unit_types);
types::device_unit to_device_unit(const types::absolute_unit&, int dpi);
types::device_unit to_device_unit(double, types::absolute_unit::unit_types, int dpi);
types::device_unit to_device_unit(int, types::absolute_unit::unit_types, int dpi);
types::basic_absolute_impl<1> to_md(const types::absolute_unit&);
types::basic_absolute_impl<1> to_md(const int&, types::absolute_unit::unit_types);
types::basic_absolute_impl<1> to_md(const double&, types::absolute_unit::unit_types);
types::basic_absolute_impl<1> to_md(const types::device_unit&, int dpi);
types::basic_absolute_impl<1> to_md(const int&, types::device_unit::unit_types, int dpi);
types::basic_absolute_impl<1> to_md(const double&, types::device_unit::unit_types, int dpi);

}  // namespace convert
}  // namespace generic

}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18::types;
using TOVA_2_18::generic::convert::to_device_unit;
using TOVA_2_18::generic::convert::to_md;

// Hides the class of an object from the compiler, so that a call goes through the virtual table.
template <typename Base>
const Base& unknown(const Base& object) {
    const Base* volatile hidden = &object;
    return *hidden;
}

TEST(ForeignDeviceUnit, IsMadeFromEveryNumberType) {
    EXPECT_EQ(0, device_unit().m_value);
    EXPECT_EQ(-7, device_unit(-7).m_value);
    EXPECT_EQ(-7, device_unit(device_unit(-7)).m_value);
    EXPECT_EQ(-1, device_unit(-1.75).m_value);
    EXPECT_EQ(1, device_unit(1.75f).m_value);
    EXPECT_EQ(-8, device_unit(static_cast<signed char>(-8)).m_value);
    EXPECT_EQ(-300, device_unit(static_cast<short>(-300)).m_value);
    EXPECT_EQ(-1, device_unit(0x7FFFFFFFFFFFFFFFL).m_value);
    EXPECT_EQ(200, device_unit(static_cast<unsigned char>(200)).m_value);
    EXPECT_EQ(60000, device_unit(static_cast<unsigned short>(60000)).m_value);
    EXPECT_EQ(5, device_unit(0xFFFFFFFF00000005UL).m_value);
}

TEST(ForeignDeviceUnit, IsAssignedAndCompared) {
    device_unit value;
    EXPECT_EQ(&value, &(value = 3));
    EXPECT_EQ(&value, &value.assign(4));
    EXPECT_TRUE(value == device_unit(4));
    EXPECT_EQ(&value, &(value = device_unit(5)));
    EXPECT_EQ(&value, &value.assign(device_unit(6)));
    EXPECT_TRUE(value.equal(device_unit(6)));
    EXPECT_TRUE(value != device_unit(7));
    EXPECT_EQ(1, value.type());
    EXPECT_EQ(6, value.as_int32());
    EXPECT_EQ(6.0f, value.as_float());
    EXPECT_EQ(6.0, value.as_double());
}

TEST(ForeignDeviceUnit, ReturnsItsValueThroughItsSlots) {
    const device_unit value(16777217);
    EXPECT_EQ(1, unknown(value).do_type());
    EXPECT_EQ(16777217, unknown(value).do_as_int32());
    EXPECT_EQ(16777216.0f, unknown(value).do_as_float());
    EXPECT_EQ(16777217.0, unknown(value).do_as_double());
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
class own_device : public device_unit {
public:
    unit_types do_type() const override { return of_a_subclass; }
    int do_as_int32() const override { return 150; }
    float do_as_float() const override { return 1.5f; }
    double do_as_double() const override { return 2.5; }
};

class own_length : public absolute_unit {
public:
    own_length(int type) : m_type(type) {}
    own_length(int type, int length) : absolute_unit(length), m_type(type) {}
    own_length(int type, double length) : absolute_unit(length), m_type(type) {}
    unit_types do_type() const override { return static_cast<unit_types>(m_type); }
    int do_as_int32() const override { return 42; }
    double do_as_double() const override { return 8.25; }

private:
    int m_type;
};
#pragma GCC diagnostic pop

TEST(ForeignDeviceUnit, CallsTheSlotsOfASubclass) {
    own_device value;
    EXPECT_EQ(device_unit::of_a_subclass, value.type());
    EXPECT_EQ(150, value.as_int32());
    EXPECT_EQ(1.5f, value.as_float());
    EXPECT_EQ(2.5, value.as_double());
    EXPECT_EQ(100000.0, to_md(value, 96).m_value);
    EXPECT_EQ(0, to_device_unit(value).m_value);
    EXPECT_TRUE(value == device_unit());
}

TEST(ForeignAbsoluteUnit, StoresMdAfterItsTablePointer) {
    EXPECT_EQ(0.0, own_length(1).m_value);
    EXPECT_EQ(7.0, own_length(1, 7).m_value);
    EXPECT_EQ(1.0, own_length(1, 1.75).m_value);
    own_length inch(5);
    inch.value(1.75);
    EXPECT_EQ(175000.0, inch.m_value);
    EXPECT_EQ(1.75, inch.value());
    EXPECT_EQ(175000, inch.as_md());
    EXPECT_EQ(175000.0, own_length(inch).m_value);
    EXPECT_EQ(5, inch.type());
    EXPECT_EQ(42, inch.as_int32());
    EXPECT_EQ(8.25, inch.as_double());
    EXPECT_EQ(168, to_device_unit(inch, 96).m_value);
    EXPECT_EQ(175000.0, to_md(inch).m_value);
    for (int type : {0, 9}) {
        own_length none(type, 3);
        EXPECT_EQ(0.0, none.value());
        none.value(1.0);
        EXPECT_EQ(0.0, none.m_value);
    }
}

template <int N>
void expect_unit(double an_inch) {
    const basic_absolute_impl<N> inch(an_inch);
    const absolute_unit& base = unknown<absolute_unit>(inch);
    EXPECT_EQ(100000.0, base.m_value);
    EXPECT_EQ(100000, base.as_md());
    EXPECT_EQ(an_inch, base.value());
    EXPECT_EQ(N, base.do_type());
    EXPECT_EQ(std::floor(an_inch + 0.5), base.do_as_int32());
    EXPECT_EQ(an_inch, base.do_as_double());
    EXPECT_EQ(N, base.type());
    EXPECT_EQ(base.do_as_int32(), base.as_int32());
    EXPECT_EQ(an_inch, base.as_double());
    const auto type = static_cast<absolute_unit::unit_types>(N);
    EXPECT_EQ(96, to_device_unit(an_inch, type, 96).m_value);
    EXPECT_EQ(100000.0, to_md(an_inch, type).m_value);
    const basic_absolute_impl<N> copy(inch);
    EXPECT_EQ(100000.0, copy.m_value);
    EXPECT_EQ(N, unknown<absolute_unit>(copy).do_type());
}

TEST(ForeignAbsoluteUnit, HasEightUnits) {
    expect_unit<1>(100000);
    expect_unit<2>(300);
    expect_unit<3>(25.4);
    expect_unit<4>(2.54);
    expect_unit<5>(1);
    expect_unit<6>(72);
    expect_unit<7>(6);
    expect_unit<8>(96);
}

TEST(ForeignConversions, ExistInAllForms) {
    const auto device = device_unit::pixels;
    EXPECT_EQ(150, to_device_unit(device_unit(150)).m_value);
    EXPECT_EQ(-7, to_device_unit(-7.9, device).m_value);
    EXPECT_EQ(8, to_device_unit(8, device).m_value);
    EXPECT_EQ(96, to_device_unit(basic_absolute_impl<5>(1.0), 96).m_value);
    EXPECT_EQ(-14149, to_device_unit(basic_absolute_impl<1>(30000000), 96).m_value);
    EXPECT_EQ(192, to_device_unit(2, absolute_unit::u_5, 96).m_value);
    EXPECT_EQ(96, to_device_unit(100000, static_cast<absolute_unit::unit_types>(0), 96).m_value);
    EXPECT_EQ(200000.0, to_md(2, absolute_unit::u_5).m_value);
    EXPECT_EQ(2.5, to_md(2.5, static_cast<absolute_unit::unit_types>(9)).m_value);
    EXPECT_EQ(100000.0, to_md(device_unit(150), 96).m_value);
    EXPECT_EQ(100000.0, to_md(150, device, 96).m_value);
    EXPECT_EQ(156250.0, to_md(150.0, device, 96).m_value);
    EXPECT_EQ(1, unknown<absolute_unit>(to_md(150.0, device, 96)).do_type());
}

void expect_bytes(const color_t& color, int red, int green, int blue, int alpha) {
    EXPECT_EQ(red, color.m_red);
    EXPECT_EQ(green, color.m_green);
    EXPECT_EQ(blue, color.m_blue);
    EXPECT_EQ(alpha, color.m_alpha);
    EXPECT_EQ(red, color.red());
    EXPECT_EQ(green, color.green());
    EXPECT_EQ(blue, color.blue());
    EXPECT_EQ(alpha, color.alpha());
}

TEST(ForeignColor, IsMadeFromBytesAndWords) {
    expect_bytes(color_t(), 0, 0, 0, 0);
    expect_bytes(color_t(color_t(1, 2, 3, 4)), 1, 2, 3, 4);
    expect_bytes(color_t(10, 20, 30), 10, 20, 30, 255);
    expect_bytes(color_t(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_bytes(color_t::rgb(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_bytes(color_t::rgba(0x11223344), 0x44, 0x33, 0x22, 0x11);
    expect_bytes(color_t::rgba(1, 2, 3, 4), 1, 2, 3, 4);
    expect_bytes(color_t::rgb(1, 2, 3), 1, 2, 3, 255);
}

TEST(ForeignColor, IsSetAssignedAndCompared) {
    color_t color;
    EXPECT_EQ(1, color.red(1));
    EXPECT_EQ(2, color.green(2));
    EXPECT_EQ(3, color.blue(3));
    EXPECT_EQ(254, color.alpha(254));
    expect_bytes(color, 1, 2, 3, 254);
    EXPECT_EQ(static_cast<int>(0xFE030201u), color.as_int32());
    EXPECT_EQ(0x030201, color.as_rgb());
    color_t other;
    EXPECT_EQ(&other, &(other = color));
    EXPECT_TRUE(other == color);
    EXPECT_EQ(&other, &(other = 5));
    EXPECT_TRUE(other != color);
    EXPECT_EQ(&other, &other.assign(color));
    EXPECT_TRUE(other.equal(color));
    EXPECT_EQ(&other, &other.assign(0x11223344));
    expect_bytes(other, 0x44, 0x33, 0x22, 0x11);
}

}  // namespace
