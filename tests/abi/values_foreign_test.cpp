// Numbers, variants and argument lists as seen by a program without the headers of the library.
// README.md says what this checks.
#include "abi/foreign/arguments.hpp"
#include "abi/foreign/exceptions.hpp"
#include "abi/foreign/strings.hpp"
#include "abi/foreign/variant.hpp"

#include <gtest/gtest.h>

#include <locale>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace TOVA_2_18 {

namespace types {

struct radix_t {
    enum base { zero, one, two, last = 36 };
};

}  // namespace types

namespace generic {
namespace convert {

typedef types::radix_t::base radix;

long str_to_long(const char*, unsigned long, radix, bool);
long str_to_long(const unsigned short*, unsigned long, radix, bool);
long str_to_long(const wchar_t*, unsigned long, radix, bool);
int str_to_int(const char*, unsigned long, radix, bool);
int str_to_int(const unsigned short*, unsigned long, radix, bool);
int str_to_int(const wchar_t*, unsigned long, radix, bool);
short str_to_short(const char*, unsigned long, radix, bool);
short str_to_short(const unsigned short*, unsigned long, radix, bool);
short str_to_short(const wchar_t*, unsigned long, radix, bool);
int str_to_signed(const char*, unsigned long, radix, bool);
int str_to_signed(const unsigned short*, unsigned long, radix, bool);
int str_to_signed(const wchar_t*, unsigned long, radix, bool);
signed char str_to_int8(const char*, unsigned long, radix, bool);
signed char str_to_int8(const unsigned short*, unsigned long, radix, bool);
signed char str_to_int8(const wchar_t*, unsigned long, radix, bool);
short str_to_int16(const char*, unsigned long, radix, bool);
short str_to_int16(const unsigned short*, unsigned long, radix, bool);
short str_to_int16(const wchar_t*, unsigned long, radix, bool);
int str_to_int32(const char*, unsigned long, radix, bool);
int str_to_int32(const unsigned short*, unsigned long, radix, bool);
int str_to_int32(const wchar_t*, unsigned long, radix, bool);
long str_to_int64(const char*, unsigned long, radix, bool);
long str_to_int64(const unsigned short*, unsigned long, radix, bool);
long str_to_int64(const wchar_t*, unsigned long, radix, bool);
unsigned int str_to_unsigned(const char*, unsigned long, radix, bool);
unsigned int str_to_unsigned(const unsigned short*, unsigned long, radix, bool);
unsigned int str_to_unsigned(const wchar_t*, unsigned long, radix, bool);
unsigned char str_to_uint8(const char*, unsigned long, radix, bool);
unsigned char str_to_uint8(const unsigned short*, unsigned long, radix, bool);
unsigned char str_to_uint8(const wchar_t*, unsigned long, radix, bool);
unsigned short str_to_uint16(const char*, unsigned long, radix, bool);
unsigned short str_to_uint16(const unsigned short*, unsigned long, radix, bool);
unsigned short str_to_uint16(const wchar_t*, unsigned long, radix, bool);
unsigned int str_to_uint32(const char*, unsigned long, radix, bool);
unsigned int str_to_uint32(const unsigned short*, unsigned long, radix, bool);
unsigned int str_to_uint32(const wchar_t*, unsigned long, radix, bool);
unsigned long str_to_uint64(const char*, unsigned long, radix, bool);
unsigned long str_to_uint64(const unsigned short*, unsigned long, radix, bool);
unsigned long str_to_uint64(const wchar_t*, unsigned long, radix, bool);

bool is_space(char);
bool is_space(unsigned short);
bool is_space(wchar_t);

bool str_to_bool(const strings::ustring16&);
float str_to_float(const strings::ustring8&);
float str_to_float(const strings::ustring8&, const std::locale&);
double str_to_double(const strings::ustring8&);
double str_to_double(const strings::ustring8&, const std::locale&);
long double str_to_long_double(const strings::ustring8&);
long double str_to_long_double(const strings::ustring8&, const std::locale&);

void ltoa(int, char*, unsigned int);
void ltoa(int, unsigned short*, unsigned int);
void ltoa(int, wchar_t*, unsigned int);
void ultoa(unsigned int, char*, unsigned int);
void ultoa(unsigned int, unsigned short*, unsigned int);
void ultoa(unsigned int, wchar_t*, unsigned int);
void lltoa(long, char*, unsigned int);
void lltoa(long, unsigned short*, unsigned int);
void lltoa(long, wchar_t*, unsigned int);
void ulltoa(unsigned long, char*, unsigned int);
void ulltoa(unsigned long, unsigned short*, unsigned int);
void ulltoa(unsigned long, wchar_t*, unsigned int);

// Without bodies: every call must find an instantiation that the library exports.
template <typename T>
strings::ustring8 to_str(const T&);
strings::ustring8 to_str(unsigned int);

std::string int16_to_bin_str(const short&);
std::string int32_to_bin_str(const int&);
std::string int64_to_bin_str(const long&);
std::string uint16_to_bin_str(const unsigned short&);
std::string uint32_to_bin_str(const unsigned int&);
std::string uint64_to_bin_str(const unsigned long&);
std::string float_to_bin_str(const float&);
std::string double_to_bin_str(const double&);
short bin_str_to_int16(const char*);
short bin_str_to_int16(const std::string&);
int bin_str_to_int32(const char*);
int bin_str_to_int32(const std::string&);
long bin_str_to_int64(const char*);
long bin_str_to_int64(const std::string&);
unsigned short bin_str_to_uint16(const char*);
unsigned short bin_str_to_uint16(const std::string&);
unsigned int bin_str_to_uint32(const char*);
unsigned int bin_str_to_uint32(const std::string&);
unsigned long bin_str_to_uint64(const char*);
unsigned long bin_str_to_uint64(const std::string&);
float bin_str_to_float(const char*);
float bin_str_to_float(const std::string&);
double bin_str_to_double(const char*);
double bin_str_to_double(const std::string&);

namespace little_endian {

std::string int16_to_bin_str(const short&);
std::string int32_to_bin_str(const int&);
std::string int64_to_bin_str(const long&);
std::string uint16_to_bin_str(const unsigned short&);
std::string uint32_to_bin_str(const unsigned int&);
std::string uint64_to_bin_str(const unsigned long&);
std::string float_to_bin_str(const float&);
std::string double_to_bin_str(const double&);
short bin_str_to_int16(const std::string&);
int bin_str_to_int32(const char*);
int bin_str_to_int32(const std::string&);
long bin_str_to_int64(const char*);
long bin_str_to_int64(const std::string&);
unsigned short bin_str_to_uint16(const char*);
unsigned short bin_str_to_uint16(const std::string&);
unsigned int bin_str_to_uint32(const char*);
unsigned int bin_str_to_uint32(const std::string&);
unsigned long bin_str_to_uint64(const char*);
unsigned long bin_str_to_uint64(const std::string&);
float bin_str_to_float(const char*);
float bin_str_to_float(const std::string&);
double bin_str_to_double(const char*);
double bin_str_to_double(const std::string&);

}  // namespace little_endian

namespace big_endian {

std::string int16_to_bin_str(const short&);
std::string int32_to_bin_str(const int&);
std::string int64_to_bin_str(const long&);
std::string uint16_to_bin_str(const unsigned short&);
std::string uint32_to_bin_str(const unsigned int&);
std::string uint64_to_bin_str(const unsigned long&);
std::string float_to_bin_str(const float&);
std::string double_to_bin_str(const double&);
short bin_str_to_int16(const char*);
short bin_str_to_int16(const std::string&);
int bin_str_to_int32(const char*);
int bin_str_to_int32(const std::string&);
long bin_str_to_int64(const char*);
long bin_str_to_int64(const std::string&);
unsigned short bin_str_to_uint16(const char*);
unsigned int bin_str_to_uint32(const char*);
unsigned int bin_str_to_uint32(const std::string&);
unsigned long bin_str_to_uint64(const char*);
unsigned long bin_str_to_uint64(const std::string&);
double bin_str_to_double(const char*);

}  // namespace big_endian

}  // namespace convert
}  // namespace generic

}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18;
using generic::argument;
using generic::varg_list;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using types::nil;
using types::variant;
using types::variant_type;
namespace convert = generic::convert;

// --- Numbers -----------------------------------------------------------------------------------

template <typename Unit>
class ForeignNumbers : public ::testing::Test {
public:
    static std::basic_string<Unit> text(const std::string& characters) {
        return std::basic_string<Unit>(characters.begin(), characters.end());
    }
};
using units = ::testing::Types<char, unsigned short, wchar_t>;
struct unit_name {
    template <typename Unit>
    static std::string GetName(int) {
        return std::to_string(8 * sizeof(Unit));
    }
};
TYPED_TEST_SUITE(ForeignNumbers, units, unit_name);

TYPED_TEST(ForeignNumbers, AreReadByEveryParser) {
    const auto large = this->text("99999999999999999999");
    const TypeParam* const text = large.data();
    const types::radix_t::base detect = types::radix_t::zero;
    EXPECT_EQ(9223372036854775807L, convert::str_to_long(text, 20, detect, false));
    EXPECT_EQ(2147483647, convert::str_to_int(text, 20, detect, false));
    EXPECT_EQ(32767, convert::str_to_short(text, 20, detect, false));
    EXPECT_EQ(2147483647, convert::str_to_signed(text, 20, detect, false));
    EXPECT_EQ(127, convert::str_to_int8(text, 20, detect, false));
    EXPECT_EQ(32767, convert::str_to_int16(text, 20, detect, false));
    EXPECT_EQ(2147483647, convert::str_to_int32(text, 20, detect, false));
    EXPECT_EQ(9223372036854775807L, convert::str_to_int64(text, 20, detect, false));
    EXPECT_EQ(4294967295u, convert::str_to_unsigned(text, 20, detect, false));
    EXPECT_EQ(255, convert::str_to_uint8(text, 20, detect, false));
    EXPECT_EQ(65535, convert::str_to_uint16(text, 20, detect, false));
    EXPECT_EQ(4294967295u, convert::str_to_uint32(text, 20, detect, false));
    EXPECT_EQ(18446744073709551615ul, convert::str_to_uint64(text, 20, detect, false));
    EXPECT_TRUE(convert::is_space(TypeParam(' ')));
    EXPECT_FALSE(convert::is_space(TypeParam('x')));
}

TYPED_TEST(ForeignNumbers, AreWritten) {
    TypeParam buffer[66];
    convert::ltoa(-255, buffer, 16);
    EXPECT_EQ(this->text("-ff"), buffer);
    convert::ultoa(4294967295u, buffer, 36);
    EXPECT_EQ(this->text("1z141z3"), buffer);
    convert::lltoa(-9223372036854775807L - 1, buffer, 10);
    EXPECT_EQ(this->text("-9223372036854775808"), buffer);
    convert::ulltoa(18446744073709551615ul, buffer, 10);
    EXPECT_EQ(this->text("18446744073709551615"), buffer);
}

// The class, message and source location of the exception that a call raises.
template <typename Call>
std::string raised_by(const Call& call) {
    const auto shown = [](const char* name, const exceptions::exception& raised) {
        return std::string(name) + ": " + raised.get_message() + " [" + raised.where.file + " " +
               raised.where.function + "]";
    };
    try {
        call();
        return "nothing";
    } catch (const exceptions::invalid_argument_value& raised) {
        return shown("invalid_argument_value", raised);
    } catch (const exceptions::overflow_error& raised) {
        return shown("overflow_error", raised);
    } catch (const exceptions::underflow_error& raised) {
        return shown("underflow_error", raised);
    }
}

TYPED_TEST(ForeignNumbers, RaiseWithTheirSourceLocation) {
    const auto parsed_as_signed = [this](const char* characters, int radix) {
        return raised_by([&] {
            const auto source = this->text(characters);
            convert::str_to_int8(source.data(), source.size(),
                                 static_cast<types::radix_t::base>(radix), true);
        });
    };
    const auto parsed_as_unsigned = [this](const char* characters, int radix) {
        return raised_by([&] {
            const auto source = this->text(characters);
            convert::str_to_uint8(source.data(), source.size(),
                                  static_cast<types::radix_t::base>(radix), true);
        });
    };
    const std::string invalid =
        "invalid_argument_value: invalid radix value, values of 0, 2-36 are the only valid values ";
    const std::string large = "overflow_error: Number value is to large ";
    const std::string small = "underflow_error: Number value is to small ";
    const std::string place = "[generic/convert/str_to_x strtointx]";
    const std::string unsigned_place = "[generic/convert/str_to_x strtouintx]";
    EXPECT_EQ(invalid + place, parsed_as_signed("1", 1));
    EXPECT_EQ(large + place, parsed_as_signed("128", 0));
    EXPECT_EQ(small + place, parsed_as_signed("-129", 0));
    EXPECT_EQ("nothing", parsed_as_signed("-128", 0));
    EXPECT_EQ(invalid + unsigned_place, parsed_as_unsigned("1", 37));
    EXPECT_EQ(large + unsigned_place, parsed_as_unsigned("256", 0));
    EXPECT_EQ(small + unsigned_place, parsed_as_unsigned("-1", 0));
    EXPECT_EQ(small + unsigned_place, parsed_as_unsigned("-256", 0));
    EXPECT_EQ("nothing", parsed_as_unsigned("-0", 0));
}

TEST(ForeignText, IsReadAsABooleanAndAsFloatingPointNumbers) {
    EXPECT_TRUE(convert::str_to_bool(ustring16(1, '7')));
    EXPECT_FALSE(convert::str_to_bool(ustring16(2, '0')));
    const std::locale& classic = std::locale::classic();
    EXPECT_EQ(1.5f, convert::str_to_float("1.5abc"));
    EXPECT_EQ(1.5f, convert::str_to_float("1.5abc", classic));
    EXPECT_EQ(1.5, convert::str_to_double("1.5abc"));
    EXPECT_EQ(1.5, convert::str_to_double("1.5abc", classic));
    EXPECT_EQ(1.5L, convert::str_to_long_double("1.5abc"));
    EXPECT_EQ(1.5L, convert::str_to_long_double("1.5abc", classic));
    EXPECT_EQ(std::string("A"), convert::to_str<char>('A'));
    EXPECT_EQ(std::string("4294967295"), convert::to_str(4294967295u));
}

TEST(ForeignBytes, RoundTripInHostOrder) {
    using namespace convert;
    EXPECT_EQ(-2, bin_str_to_int16(int16_to_bin_str(-2)));
    EXPECT_EQ(-2, bin_str_to_int16(int16_to_bin_str(-2).data()));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3)));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3).data()));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4)));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4).data()));
    EXPECT_EQ(65534, bin_str_to_uint16(uint16_to_bin_str(65534)));
    EXPECT_EQ(65534, bin_str_to_uint16(uint16_to_bin_str(65534).data()));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u)));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u).data()));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63)));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63).data()));
    EXPECT_EQ(0.0f, bin_str_to_float(float_to_bin_str(1.5f)));
    EXPECT_EQ(1.5f, bin_str_to_float(float_to_bin_str(1.5f).data()));
    EXPECT_EQ(2.5, bin_str_to_double(double_to_bin_str(2.5)));
    EXPECT_EQ(2.5, bin_str_to_double(double_to_bin_str(2.5).data()));
}

TEST(ForeignBytes, RoundTripInLittleEndian) {
    using namespace convert::little_endian;
    EXPECT_EQ(-2, bin_str_to_int16(int16_to_bin_str(-2)));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3)));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3).data()));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4)));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4).data()));
    EXPECT_EQ(65534, bin_str_to_uint16(uint16_to_bin_str(65534)));
    EXPECT_EQ(65534, bin_str_to_uint16(uint16_to_bin_str(65534).data()));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u)));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u).data()));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63)));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63).data()));
    EXPECT_EQ(1.5f, bin_str_to_float(float_to_bin_str(1.5f)));
    EXPECT_EQ(1.5f, bin_str_to_float(float_to_bin_str(1.5f).data()));
    EXPECT_EQ(2.5, bin_str_to_double(double_to_bin_str(2.5)));
    EXPECT_EQ(2.5, bin_str_to_double(double_to_bin_str(2.5).data()));
}

TEST(ForeignBytes, RoundTripInBigEndian) {
    using namespace convert::big_endian;
    EXPECT_EQ(-2, bin_str_to_int16(int16_to_bin_str(-2)));
    EXPECT_EQ(-2, bin_str_to_int16(int16_to_bin_str(-2).data()));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3)));
    EXPECT_EQ(-3, bin_str_to_int32(int32_to_bin_str(-3).data()));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4)));
    EXPECT_EQ(-4, bin_str_to_int64(int64_to_bin_str(-4).data()));
    EXPECT_EQ(65534, bin_str_to_uint16(uint16_to_bin_str(65534).data()));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u)));
    EXPECT_EQ(4294967293u, bin_str_to_uint32(uint32_to_bin_str(4294967293u).data()));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63)));
    EXPECT_EQ(1ul << 63, bin_str_to_uint64(uint64_to_bin_str(1ul << 63).data()));
    EXPECT_EQ(std::string("\x3F\xC0\0\0", 4), float_to_bin_str(1.5f));
    EXPECT_EQ(2.5, bin_str_to_double(double_to_bin_str(2.5).data()));
}

// --- Variants ----------------------------------------------------------------------------------

TEST(ForeignVariant, IsMadeFromEachOfTheEighteenTypes) {
    const unsigned short units16[] = {'4', '2', 0};
    ustring16 text16(1, '4');
    text16 += '2';
    const struct {
        variant value;
        const std::type_info& type;
    } cases[] = {
        {variant(static_cast<signed char>(42)), typeid(signed char)},
        {variant(static_cast<short>(42)), typeid(short)},
        {variant(42), typeid(int)},
        {variant(42L), typeid(long)},
        {variant(static_cast<unsigned char>(42)), typeid(unsigned char)},
        {variant(static_cast<unsigned short>(42)), typeid(unsigned short)},
        {variant(42u), typeid(unsigned int)},
        {variant(42ul), typeid(unsigned long)},
        {variant(42.0f), typeid(float)},
        {variant(42.0), typeid(double)},
        {variant(42.0L), typeid(long double)},
        {variant("42"), typeid(ustring8)},
        {variant(units16), typeid(ustring16)},
        {variant(L"42"), typeid(ustring32)},
        {variant(ustring8("42")), typeid(ustring8)},
        {variant(text16), typeid(ustring16)},
        {variant(ustring32(L"42")), typeid(ustring32)},
        {variant(std::string("42")), typeid(std::string)},
        {variant(std::wstring(L"42")), typeid(std::wstring)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type.name());
        const variant& value = c.value;
        EXPECT_TRUE(c.type == value.type());
        EXPECT_EQ(1u, value.body->count);
        EXPECT_TRUE(value.body->allocated);
        EXPECT_TRUE(value.as_bool());
        EXPECT_EQ(42, value.as_int());
        EXPECT_EQ(42, value.as_short());
        EXPECT_EQ(42, value.as_long());
        EXPECT_EQ(42, value.as_int8());
        EXPECT_EQ(42, value.as_int16());
        EXPECT_EQ(42, value.as_int32());
        EXPECT_EQ(42, value.as_int64());
        EXPECT_EQ(42, value.as_uint8());
        EXPECT_EQ(42, value.as_uint16());
        EXPECT_EQ(42u, value.as_uint32());
        EXPECT_EQ(42u, value.as_uint64());
        EXPECT_EQ(42.0f, value.as_float());
        EXPECT_EQ(42.0, value.as_double());
        EXPECT_EQ(42.0L, value.as_long_double());
        EXPECT_EQ(std::string("42"), value.as_string());
        EXPECT_EQ(std::wstring(L"42"), value.as_wstring());
        EXPECT_EQ(std::string("42"), value.as_ustring());
        EXPECT_EQ(std::string("42"), value.as_utf8());
        EXPECT_TRUE(text16 == value.as_utf16());
        EXPECT_EQ(std::wstring(L"42"), value.as_utf32());
    }
    EXPECT_TRUE(typeid(bool) == variant(true).type());
    EXPECT_TRUE(typeid(types::nil_t) == variant().type());
    EXPECT_TRUE(typeid(types::nil_t) == variant(nil).type());
}

TEST(ForeignVariant, IsSharedAssignedAndSetToNil) {
    variant first("text");
    const variant second(first);
    EXPECT_EQ(first.body.object, second.body.object);
    EXPECT_EQ(2u, first.body->count);
    variant third;
    EXPECT_TRUE(third.equal(nil));
    EXPECT_TRUE(third == nil);
    EXPECT_EQ(&third, &third.assign(second));
    EXPECT_EQ(&first, &(first = third));
    EXPECT_EQ(3u, second.body->count);
    EXPECT_TRUE(first != nil);
    EXPECT_EQ(&first, &(first = nil));
    EXPECT_TRUE(first == nil);
    EXPECT_EQ(2u, second.body->count);
    std::ostringstream stream;
    EXPECT_EQ(&stream, &(stream << first << second));
    EXPECT_EQ("0text", stream.str());
}

TEST(ForeignVariant, HasBodiesWhoseSlotsReturnTheValue) {
    const variant value("12abc");
    const variant_type& body = *value.body;
    EXPECT_TRUE(body.convertible());
    EXPECT_TRUE(typeid(ustring8) == body.type());
    EXPECT_EQ(12, body.as_int8());
    EXPECT_EQ(12u, body.as_uint64());
    EXPECT_EQ(std::string("12abc"), body.as_string());
    EXPECT_EQ(std::wstring(L"12abc"), body.as_utf32());
    EXPECT_EQ(12.0L, body.as_long_double());
    EXPECT_EQ(std::string("0"), variant().body->as_string());

    variant_type* const clone = value.body->clone();
    EXPECT_NE(&body, clone);
    EXPECT_EQ(0u, clone->count);
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(std::string("12abc"), clone->as_utf8());
    const memory::pointers::rc_pointer<variant_type> holder(clone);
    EXPECT_EQ(1u, clone->count);
}

// A body of this program. Each operation returns a different number, so a wrong slot is detected.
class foreign_body : public variant_type {
public:
    explicit foreign_body(int& ends) : m_ends(ends) { allocated = true; }
    ~foreign_body() throw() override { ++m_ends; }
    bool convertible() const throw() override { return true; }
    const std::type_info& type() const throw() override { return typeid(foreign_body); }
    variant_type* clone() throw() override { return this; }
    std::ostream& ostream(std::ostream& stream) const throw() override { return stream << "body"; }
    int as_int() const throw() override { return -6; }
    short as_short() const throw() override { return -7; }
    long as_long() const throw() override { return -8; }
    signed char as_int8() const throw() override { return 9; }
    short as_int16() const throw() override { return 10; }
    int as_int32() const throw() override { return 11; }
    long as_int64() const throw() override { return 12; }
    unsigned char as_uint8() const throw() override { return 13; }
    unsigned short as_uint16() const throw() override { return 14; }
    unsigned int as_uint32() const throw() override { return 15; }
    unsigned long as_uint64() const throw() override { return 16; }
    bool as_bool() const throw() override { return true; }
    ustring8 as_string() const throw() override { return "18"; }
    std::wstring as_wstring() const throw() override { return L"19"; }
    std::string as_ustring() const throw() override { return "20"; }
    ustring8 as_utf8() const throw() override { return "21"; }
    ustring16 as_utf16() const throw() override { return ustring16(22, 'x'); }
    ustring32 as_utf32() const throw() override { return L"23"; }
    float as_float() const throw() override { return 24; }
    double as_double() const throw() override { return 25; }
    long double as_long_double() const throw() override { return 26; }

private:
    int& m_ends;
};

TEST(ForeignVariant, ReadsThroughTheSlotsOfABodyOfThisProgram) {
    int ends = 0;
    {
        variant value;
        value.body = new foreign_body(ends);
        const variant copy(value);
        EXPECT_EQ(2u, copy.body->count);
        EXPECT_TRUE(typeid(foreign_body) == copy.type());
        EXPECT_FALSE(copy == nil);
        EXPECT_EQ(-6, copy.as_int());
        EXPECT_EQ(-7, copy.as_short());
        EXPECT_EQ(-8, copy.as_long());
        EXPECT_EQ(9, copy.as_int8());
        EXPECT_EQ(10, copy.as_int16());
        EXPECT_EQ(11, copy.as_int32());
        EXPECT_EQ(12, copy.as_int64());
        EXPECT_EQ(13, copy.as_uint8());
        EXPECT_EQ(14, copy.as_uint16());
        EXPECT_EQ(15u, copy.as_uint32());
        EXPECT_EQ(16u, copy.as_uint64());
        EXPECT_TRUE(copy.as_bool());
        EXPECT_EQ(std::string("18"), copy.as_string());
        EXPECT_EQ(std::wstring(L"19"), copy.as_wstring());
        EXPECT_EQ(std::string("20"), copy.as_ustring());
        EXPECT_EQ(std::string("21"), copy.as_utf8());
        EXPECT_EQ(22u, copy.as_utf16().size());
        EXPECT_EQ(std::wstring(L"23"), copy.as_utf32());
        EXPECT_EQ(24.0f, copy.as_float());
        EXPECT_EQ(25.0, copy.as_double());
        EXPECT_EQ(26.0L, copy.as_long_double());
        // These names have no slot of their own.
        EXPECT_EQ(-6, copy.as_signed());
        EXPECT_EQ(4294967290u, copy.as_unsigned());
        EXPECT_EQ(4294967290u, copy.as_uint());
        EXPECT_EQ(18446744073709551608ul, copy.as_ulong());
        EXPECT_EQ(65529, copy.as_ushort());
        std::ostringstream stream;
        stream << copy;
        EXPECT_EQ("body", stream.str());
        value = nil;
        EXPECT_EQ(0, ends);
    }
    EXPECT_EQ(1, ends);
}

// --- Argument lists ----------------------------------------------------------------------------

TEST(ForeignArgument, HasNameAndValue) {
    EXPECT_TRUE(argument() == nil);
    EXPECT_TRUE(argument(nil).equal(nil));
    EXPECT_TRUE(argument("name", nil) != nil);
    argument made(std::string("text"));
    EXPECT_TRUE(typeid(std::string) == made.value().type());
    EXPECT_FALSE(made.has_name());
    EXPECT_EQ(&made.m_name, &made.name("name"));
    EXPECT_EQ(&made.m_value, &made.value(variant(7)));
    EXPECT_EQ(&made.m_name, &made.name());
    EXPECT_EQ(&made.m_value, &made.value());
    EXPECT_EQ(&made, &(made = variant(8)));
    EXPECT_EQ(&made, &made.assign(variant(9)));
    EXPECT_EQ(std::string("name"), made.m_name);
    const argument copy(made);
    EXPECT_EQ(made.m_value.body.object, copy.m_value.body.object);
    EXPECT_EQ(&made, &made.assign("other", variant(10)));
    EXPECT_EQ(10, made.m_value.as_int());
    EXPECT_EQ(&made, &made.assign(copy));
    EXPECT_EQ(9, made.m_value.as_int());
    EXPECT_EQ(&made, &(made = argument(variant("x"))));
    EXPECT_EQ(std::string(), made.m_name);
}

TEST(ForeignVargList, IsFilledReadAndEmptied) {
    varg_list list(std::string("one"), argument("two", 2), argument("two", 3), variant(4));
    const varg_list& constant = list;
    EXPECT_EQ(3u, list.count());
    EXPECT_EQ(3u, list.arguments.size());
    EXPECT_TRUE(list.push_back(argument("five", 5)));
    EXPECT_FALSE(list.push_back("five", 6));
    EXPECT_TRUE(list.has_argument("five"));
    EXPECT_EQ(&list.arguments[1], &constant.at("two"));
    EXPECT_EQ(&list.arguments[1], &constant["two"]);
    EXPECT_EQ(&varg_list::nil_argument, &constant["absent"]);
    EXPECT_EQ(&list.arguments[2], &constant.at(2));
    EXPECT_EQ(&list.arguments[2], &constant[2]);
    EXPECT_EQ(&list.arguments[2], &list.at(2));
    EXPECT_EQ(&list.arguments[2], &list[2]);
    EXPECT_TRUE(list.arguments.begin() + 3 == list.find("five"));
    EXPECT_TRUE(constant.end() == constant.find("absent"));
    EXPECT_EQ(4, constant.end() - constant.begin());
    EXPECT_EQ(4, list.end() - list.begin());

    varg_list copy(list);
    list.erase(0ul);
    list.erase("five");
    EXPECT_EQ(2u, list.count());
    list.erase(list.begin());
    EXPECT_EQ(4, list[0].value().as_int());
    list.erase(list.begin(), list.end());
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(list == nil);
    EXPECT_TRUE(list.equal(nil));
    EXPECT_EQ(&list, &(list = copy));
    EXPECT_TRUE(list != nil);
    copy.clear();
    EXPECT_EQ(&list, &list.assign(copy));
    list.push_back(argument(variant(1)));
    list.erase();
    EXPECT_EQ(0u, list.count());
}

TEST(ForeignVargList, Accepts26Arguments) {
    const argument a(variant(1));
    EXPECT_EQ(
        26u, varg_list(a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a, a)
                 .count());
    EXPECT_EQ(2u, varg_list(a, a, nil, a).count());
    EXPECT_EQ(0u, varg_list().count());
}

}  // namespace
