#include <tova/types/variant_value.hpp>

#include <ostream>
#include <sstream>
#include <type_traits>
#include <utility>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/strings/unicode.hpp>

#include "generic/convert/truth_words.hpp"
#include "types/truncate.hpp"

namespace TOVA_2_18 {
namespace types {

namespace {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
namespace convert = generic::convert;

// What a body of one kind of value answers. The slots of `variant_value_t` are spread over these:
// `number` serves all integer slots, `floating` the three floating ones, `utf8` the slots
// `as_string`, `as_utf8` and `as_ustring`.
template <typename T>
struct conversions;

// --- Nil ---------------------------------------------------------------------------------------

// Contract: the body says "0" where its handle says nothing. What prints or stores a body without
// a handle relies on a text that reads back as a number.
template <>
struct conversions<nil_t> {
    template <typename Number>
    static Number number(const nil_t&) {
        return 0;
    }
    template <typename Floating>
    static Floating floating(const nil_t&) {
        return 0;
    }
    static bool truth(const nil_t&) { return false; }
    static ustring8 utf8(const nil_t&) { return ustring8(1, '0'); }
    static ustring16 utf16(const nil_t&) { return ustring16(1, '0'); }
    static ustring32 utf32(const nil_t&) { return ustring32(1, L'0'); }
    static std::wstring wide(const nil_t&) { return std::wstring(1, L'0'); }
    static void print(std::ostream& stream, const nil_t&) { stream << 0; }
};

// --- Integers ----------------------------------------------------------------------------------

template <typename Unit>
void write_decimal(int value, Unit* buffer) {
    convert::ltoa(value, buffer, 10);
}
template <typename Unit>
void write_decimal(long value, Unit* buffer) {
    convert::lltoa(value, buffer, 10);
}
template <typename Unit>
void write_decimal(unsigned int value, Unit* buffer) {
    convert::ultoa(value, buffer, 10);
}
template <typename Unit>
void write_decimal(unsigned long value, Unit* buffer) {
    convert::ulltoa(value, buffer, 10);
}

// The type in which an integer is printed: `signed char` and `short` as `int`, their unsigned
// fellows as `unsigned int`.
template <typename T>
using printed_as = typename std::conditional<
    sizeof(T) == sizeof(long), T,
    typename std::conditional<std::is_signed<T>::value, int, unsigned int>::type>::type;

template <typename T>
struct integer_conversions {
    template <typename Number>
    static Number number(T value) {
        return static_cast<Number>(value);
    }
    template <typename Floating>
    static Floating floating(T value) {
        return static_cast<Floating>(value);
    }
    static bool truth(T value) { return value != 0; }

    static ustring8 utf8(T value) { return decimal<ustring8>(value); }
    static ustring16 utf16(T value) { return decimal<ustring16>(value); }
    static ustring32 utf32(T value) { return decimal<ustring32>(value); }
    static std::wstring wide(T value) { return decimal<std::wstring>(value); }

    // Contract: the stream takes the two `char` types for characters, while their text is digits.
    static void print(std::ostream& stream, T value) { stream << value; }

private:
    template <typename String>
    static String decimal(T value) {
        typename String::value_type buffer[21];  // 20 digits, or a sign and 19, and the terminator
        write_decimal(static_cast<printed_as<T>>(value), buffer);
        return String(buffer);
    }
};

template <>
struct conversions<signed char> : integer_conversions<signed char> {};
template <>
struct conversions<short> : integer_conversions<short> {};
template <>
struct conversions<int> : integer_conversions<int> {};
template <>
struct conversions<long> : integer_conversions<long> {};
template <>
struct conversions<unsigned char> : integer_conversions<unsigned char> {};
template <>
struct conversions<unsigned short> : integer_conversions<unsigned short> {};
template <>
struct conversions<unsigned int> : integer_conversions<unsigned int> {};
template <>
struct conversions<unsigned long> : integer_conversions<unsigned long> {};

// --- bool --------------------------------------------------------------------------------------

template <typename Stream, typename T>
auto streamed(const T& value) -> decltype(Stream().str()) {
    Stream stream;
    stream << value;
    return stream.str();
}

template <>
struct conversions<bool> {
    // Contract: the stored byte counts, and no other byte than 1 is 1.
    static int byte(const bool& value) {
        return *reinterpret_cast<const unsigned char*>(&value) == 1 ? 1 : 0;
    }
    template <typename Number>
    static Number number(const bool& value) {
        return static_cast<Number>(byte(value));
    }
    template <typename Floating>
    static Floating floating(const bool& value) {
        return static_cast<Floating>(byte(value));
    }
    static bool truth(const bool& value) { return value; }
    static ustring8 utf8(const bool& value) { return ustring8(streamed<std::stringstream>(value)); }
    static ustring16 utf16(const bool& value) { return strings::utf8_to_utf16(utf8(value)); }
    static ustring32 utf32(const bool& value) { return strings::utf8_to_utf32(utf8(value)); }
    static std::wstring wide(const bool& value) { return streamed<std::wstringstream>(value); }
    static void print(std::ostream& stream, const bool& value) { stream << value; }
};

// --- Floating point ----------------------------------------------------------------------------

using detail::truncate;

// A truncation into 64 unsigned bits, as compilers put it together of the signed truncation: below
// 2 to the power 63, and for NaN, the signed result's bits; above, that of the value less this
// power with the top bit exchanged. So -1.0 gives all bits, and 2 to the power 64 gives 0.
template <typename T>
unsigned long truncate_unsigned(T value) {
    const unsigned long top_bit = 1UL << 63;
    const T limit = static_cast<T>(top_bit);
    if (value >= limit)
        return static_cast<unsigned long>(truncate<long>(value - limit)) ^ top_bit;
    return static_cast<unsigned long>(truncate<long>(value));
}

// Contract: results of 8 and 16 bits are the low bits of a truncation to 32 bits, and an unsigned
// one of 32 bits is the low half of one to 64.
template <typename Number>
struct truncated {
    template <typename T>
    static Number of(T value) {
        return static_cast<Number>(truncate<int>(value));
    }
};
template <>
struct truncated<unsigned int> {
    template <typename T>
    static unsigned int of(T value) {
        return static_cast<unsigned int>(truncate<long>(value));
    }
};
template <>
struct truncated<long> {
    template <typename T>
    static long of(T value) {
        return truncate<long>(value);
    }
};
template <>
struct truncated<unsigned long> {
    template <typename T>
    static unsigned long of(T value) {
        return truncate_unsigned(value);
    }
};

template <typename T>
struct floating_conversions {
    template <typename Number>
    static Number number(T value) {
        return truncated<Number>::of(value);
    }
    template <typename Floating>
    static Floating floating(T value) {
        return static_cast<Floating>(value);
    }
    static bool truth(T value) { return value != T(0); }

    // The precision and the format are those of a fresh stream: six digits.
    static ustring8 utf8(T value) { return ustring8(streamed<std::stringstream>(value)); }
    static ustring16 utf16(T value) { return strings::utf8_to_utf16(utf8(value)); }
    static ustring32 utf32(T value) { return strings::utf8_to_utf32(utf8(value)); }

    // Contract: the narrow text, decoded. It shows if the global locale punctuates narrow and wide
    // numbers in different ways.
    static std::wstring wide(T value) { return utf32(value); }

    static void print(std::ostream& stream, T value) { stream << value; }
};

template <>
struct conversions<float> : floating_conversions<float> {};
template <>
struct conversions<double> : floating_conversions<double> {};

// Contract: a `long double` goes through a wide stream for its wide text, unlike its fellows.
template <>
struct conversions<long double> : floating_conversions<long double> {
    static std::wstring wide(long double value) { return streamed<std::wstringstream>(value); }
};

// --- Texts -------------------------------------------------------------------------------------

// One name for the parsers, chosen by the result type.
template <typename Unit>
void parse(const Unit* text, unsigned long length, signed char& result) {
    result = convert::str_to_int8(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, short& result) {
    result = convert::str_to_int16(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, int& result) {
    result = convert::str_to_int32(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, long& result) {
    result = convert::str_to_int64(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, unsigned char& result) {
    result = convert::str_to_uint8(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, unsigned short& result) {
    result = convert::str_to_uint16(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, unsigned int& result) {
    result = convert::str_to_uint32(text, length, radix_t::detect, false);
}
template <typename Unit>
void parse(const Unit* text, unsigned long length, unsigned long& result) {
    result = convert::str_to_uint64(text, length, radix_t::detect, false);
}

void parse(const ustring8& text, float& result) {
    result = convert::str_to_float(text);
}
void parse(const ustring8& text, double& result) {
    result = convert::str_to_double(text);
}
void parse(const ustring8& text, long double& result) {
    result = convert::str_to_long_double(text);
}

// Integers parse the units in place, whatever the width. A text that does not convert to UTF-8 may
// so be 5 as an integer and -1.0 as a floating value.
template <typename String>
struct text_conversions {
    template <typename Number>
    static Number number(const String& text) {
        Number result;
        parse(text.c_str(), text.size(), result);
        return result;
    }
    static bool truth(const String& text) {
        return convert::detail::is_truth_word(text.data(), text.size()) || number<long>(text) != 0;
    }
};

template <typename Floating>
Floating parsed(const ustring8& text) {
    Floating result;
    parse(text, result);
    return result;
}

// Contract: prints as a C string, up to the first NUL; a `std::string` prints whole.
void print_up_to_nul(std::ostream& stream, const ustring8& text) {
    stream << text.c_str();
}

template <>
struct conversions<ustring8> : text_conversions<ustring8> {
    template <typename Floating>
    static Floating floating(const ustring8& text) {
        return parsed<Floating>(text);
    }
    static ustring8 utf8(const ustring8& text) { return text; }
    static ustring16 utf16(const ustring8& text) { return strings::utf8_to_utf16(text); }
    static ustring32 utf32(const ustring8& text) { return strings::utf8_to_utf32(text); }
    static std::wstring wide(const ustring8& text) { return utf32(text); }
    static void print(std::ostream& stream, const ustring8& text) { print_up_to_nul(stream, text); }
};

template <>
struct conversions<std::string> : text_conversions<std::string> {
    template <typename Floating>
    static Floating floating(const std::string& text) {
        return parsed<Floating>(ustring8(text));
    }
    static ustring8 utf8(const std::string& text) { return ustring8(text); }
    static ustring16 utf16(const std::string& text) { return strings::utf8_to_utf16(text); }
    static ustring32 utf32(const std::string& text) { return strings::utf8_to_utf32(text); }
    static std::wstring wide(const std::string& text) { return utf32(text); }
    static void print(std::ostream& stream, const std::string& text) { stream << text; }
};

template <>
struct conversions<ustring16> : text_conversions<ustring16> {
    template <typename Floating>
    static Floating floating(const ustring16& text) {
        return parsed<Floating>(utf8(text));
    }
    static bool truth(const ustring16& text) { return convert::str_to_bool(text); }
    static ustring8 utf8(const ustring16& text) { return strings::utf16_to_utf8(text); }
    static ustring16 utf16(const ustring16& text) { return text; }
    static ustring32 utf32(const ustring16& text) { return strings::utf16_to_utf32(text); }
    static std::wstring wide(const ustring16& text) { return utf32(text); }
    static void print(std::ostream& stream, const ustring16& text) {
        print_up_to_nul(stream, utf8(text));
    }
};

template <>
struct conversions<ustring32> : text_conversions<ustring32> {
    template <typename Floating>
    static Floating floating(const ustring32& text) {
        return parsed<Floating>(utf8(text));
    }
    static ustring8 utf8(const ustring32& text) { return strings::utf32_to_utf8(text); }
    static ustring16 utf16(const ustring32& text) { return strings::utf32_to_utf16(text); }
    static ustring32 utf32(const ustring32& text) { return text; }
    static std::wstring wide(const ustring32& text) { return text; }
    static void print(std::ostream& stream, const ustring32& text) {
        print_up_to_nul(stream, utf8(text));
    }
};

template <>
struct conversions<std::wstring> : text_conversions<std::wstring> {
    template <typename Floating>
    static Floating floating(const std::wstring& text) {
        return parsed<Floating>(utf8(text));
    }
    static ustring8 utf8(const std::wstring& text) { return strings::utf32_to_utf8(text); }
    static ustring16 utf16(const std::wstring& text) { return strings::utf32_to_utf16(text); }
    static ustring32 utf32(const std::wstring& text) { return ustring32(text); }
    static std::wstring wide(const std::wstring& text) { return text; }

    // Contract: no narrow text here, but a mark for debugging with the address of the stored value.
    static void print(std::ostream& stream, const std::wstring& text) {
        stream << "< " << typeid(std::wstring).name() << " instance at "
               << static_cast<const void*>(&text) << " >";
    }
};

}  // namespace

template <typename T>
variant_value_t<T>::variant_value_t(T initial_value) : value(std::move(initial_value)) {}

template <typename T>
variant_value_t<T>::~variant_value_t() TOVA_NOTHROW {}

template <typename T>
bool variant_value_t<T>::convertible() const TOVA_NOTHROW {
    return true;
}

template <typename T>
const std::type_info& variant_value_t<T>::type() const TOVA_NOTHROW {
    return typeid(T);
}

template <typename T>
variant_type* variant_value_t<T>::clone() TOVA_NOTHROW {
    variant_value_t* const copy = new variant_value_t(*this);
    copy->allocated = true;
    return copy;
}

template <typename T>
std::ostream& variant_value_t<T>::ostream(std::ostream& stream) const TOVA_NOTHROW {
    conversions<T>::print(stream, value);
    return stream;
}

template <typename T>
int variant_value_t<T>::as_int() const TOVA_NOTHROW {
    return conversions<T>::template number<int>(value);
}

template <typename T>
short variant_value_t<T>::as_short() const TOVA_NOTHROW {
    return conversions<T>::template number<short>(value);
}

template <typename T>
long variant_value_t<T>::as_long() const TOVA_NOTHROW {
    return conversions<T>::template number<long>(value);
}

template <typename T>
signed char variant_value_t<T>::as_int8() const TOVA_NOTHROW {
    return conversions<T>::template number<signed char>(value);
}

template <typename T>
short variant_value_t<T>::as_int16() const TOVA_NOTHROW {
    return conversions<T>::template number<short>(value);
}

template <typename T>
int variant_value_t<T>::as_int32() const TOVA_NOTHROW {
    return conversions<T>::template number<int>(value);
}

template <typename T>
long variant_value_t<T>::as_int64() const TOVA_NOTHROW {
    return conversions<T>::template number<long>(value);
}

template <typename T>
unsigned char variant_value_t<T>::as_uint8() const TOVA_NOTHROW {
    return conversions<T>::template number<unsigned char>(value);
}

template <typename T>
unsigned short variant_value_t<T>::as_uint16() const TOVA_NOTHROW {
    return conversions<T>::template number<unsigned short>(value);
}

template <typename T>
unsigned int variant_value_t<T>::as_uint32() const TOVA_NOTHROW {
    return conversions<T>::template number<unsigned int>(value);
}

template <typename T>
unsigned long variant_value_t<T>::as_uint64() const TOVA_NOTHROW {
    return conversions<T>::template number<unsigned long>(value);
}

template <typename T>
bool variant_value_t<T>::as_bool() const TOVA_NOTHROW {
    return conversions<T>::truth(value);
}

template <typename T>
strings::ustring8 variant_value_t<T>::as_string() const TOVA_NOTHROW {
    return conversions<T>::utf8(value);
}

template <typename T>
std::wstring variant_value_t<T>::as_wstring() const TOVA_NOTHROW {
    return conversions<T>::wide(value);
}

template <typename T>
std::string variant_value_t<T>::as_ustring() const TOVA_NOTHROW {
    return conversions<T>::utf8(value);
}

template <typename T>
strings::ustring8 variant_value_t<T>::as_utf8() const TOVA_NOTHROW {
    return conversions<T>::utf8(value);
}

template <typename T>
strings::ustring16 variant_value_t<T>::as_utf16() const TOVA_NOTHROW {
    return conversions<T>::utf16(value);
}

template <typename T>
strings::ustring32 variant_value_t<T>::as_utf32() const TOVA_NOTHROW {
    return conversions<T>::utf32(value);
}

template <typename T>
float variant_value_t<T>::as_float() const TOVA_NOTHROW {
    return conversions<T>::template floating<float>(value);
}

template <typename T>
double variant_value_t<T>::as_double() const TOVA_NOTHROW {
    return conversions<T>::template floating<double>(value);
}

template <typename T>
long double variant_value_t<T>::as_long_double() const TOVA_NOTHROW {
    return conversions<T>::template floating<long double>(value);
}

template class variant_value_t<nil_t>;
template class variant_value_t<signed char>;
template class variant_value_t<short>;
template class variant_value_t<int>;
template class variant_value_t<long>;
template class variant_value_t<unsigned char>;
template class variant_value_t<unsigned short>;
template class variant_value_t<unsigned int>;
template class variant_value_t<unsigned long>;
template class variant_value_t<bool>;
template class variant_value_t<float>;
template class variant_value_t<double>;
template class variant_value_t<long double>;
template class variant_value_t<strings::ustring8>;
template class variant_value_t<strings::ustring16>;
template class variant_value_t<strings::ustring32>;
template class variant_value_t<std::string>;
template class variant_value_t<std::wstring>;

}  // namespace types
}  // namespace TOVA_2_18
