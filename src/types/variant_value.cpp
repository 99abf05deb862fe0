// The bodies of variants: eighteen types, each of which converts to every other.
//
//     variant::as_int               the handle forwards to a slot of its body
//     variant_value_t<T>::as_int    the slots, written once for all types (end of this file)
//     conversions<T>::number<int>   the rule for this type (the sections below)
//
// The slots share eight rules:
//
//     number<N>     the eleven integer slots       utf8      as_string, as_utf8, as_ustring
//     floating<F>   the three floating slots       utf16     as_utf16
//     boolean       as_bool                        utf32     as_utf32
//     print         ostream                        wide      as_wstring
//
// and the types come in five families:
//
//                   numbers                        strings
//     nil           0                              "0"
//     integers      casts                          decimal digits, written in place in each width
//     bool          0 or 1                         "1" or "0"
//     floating      truncated, or casts            six significant digits, as a stream writes them
//     strings       parsed, saturating             converted between the Unicode forms
//
// A body never changes after construction, so all rules are pure functions of the stored value.
// Streams and floating parsers follow the global C++ locale; everything else ignores it.
#include <tova/types/variant_value.hpp>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/types/radix.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/floating_writer.hpp"
#include "generic/convert/number_locale.hpp"
#include "generic/convert/number_string.hpp"
#include "generic/convert/streamed.hpp"
#include "generic/convert/truth_words.hpp"
#include "types/truncate.hpp"

#include <ostream>
#include <sstream>
#include <type_traits>
#include <utility>

namespace TOVA_2_18 {
namespace types {

namespace {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
namespace convert = generic::convert;

template <typename T>
struct conversions;

// --- Nil ---------------------------------------------------------------------------------------

// Contract: the body converts to "0", while its handle converts to an empty string. Code that
// prints or stores a body without a handle relies on a string that reads back as a number.
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
    static bool boolean(const nil_t&) { return false; }
    static ustring8 utf8(const nil_t&) { return ustring8(1, '0'); }
    static ustring16 utf16(const nil_t&) { return ustring16(1, '0'); }
    static ustring32 utf32(const nil_t&) { return ustring32(1, L'0'); }
    static std::wstring wide(const nil_t&) { return std::wstring(1, L'0'); }
    static void print(std::ostream& stream, const nil_t&) { stream << 0; }
};

// --- Integers ----------------------------------------------------------------------------------

// The type in which an integer is written: types smaller than `long` as `int` or `unsigned int`.
template <typename T>
using written_as = typename std::conditional<
    sizeof(T) == sizeof(long), T,
    typename std::conditional<std::is_signed<T>::value, int, unsigned int>::type>::type;

// Contract: numbers are cast without a range check. Narrower results keep the low bits, and
// negative values become unsigned by two's complement.
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
    static bool boolean(T value) { return value != 0; }

    static ustring8 utf8(T value) {
        typedef typename std::conditional<std::is_signed<T>::value, long, unsigned long>::type wide;
        return convert::detail::decimal_string(static_cast<wide>(value));
    }
    static ustring16 utf16(T value) { return decimal<ustring16>(value); }
    static ustring32 utf32(T value) { return decimal<ustring32>(value); }
    static std::wstring wide(T value) { return decimal<std::wstring>(value); }

    // Contract: a stream writes `signed char` and `unsigned char` as characters, while their
    // strings are digits.
    static void print(std::ostream& stream, T value) { stream << value; }

private:
    // No stream and no transcoding: digits are the same units in every width.
    template <typename String>
    static String decimal(T value) {
        char digits[convert::detail::max_decimal_size];
        const std::size_t size =
            convert::detail::write_decimal(digits, static_cast<written_as<T>>(value));
        return String(digits, digits + size);
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

// --- What depends on the global locale: bool and floating-point values --------------------------

// What a fresh stream of the classic locale inserts. A floating-point value has six significant
// digits, and a bool is "1" or "0".
ustring8 classic_string(double value) {
    return convert::detail::six_digits_string(value);
}

ustring8 classic_string(long double value) {
    char text[convert::detail::max_six_digits_size];
    return ustring8(text, convert::detail::write_six_digits(text, value));
}

ustring8 classic_string(bool value) {
    return ustring8(1, value ? '1' : '0');
}

// Only a locale other than the classic one needs the stream.
template <typename Stream, typename T>
__attribute__((noinline)) auto streamed(const T& value) -> decltype(Stream().str()) {
    return convert::detail::streamed<Stream>(value);
}

// The strings are those of a fresh stream in the global locale. Printing uses the state of the
// caller's stream.
template <typename T>
struct stream_conversions {
    static ustring8 utf8(const T& value) {
        if (convert::detail::is_global_classic())
            return classic_string(value);
        return ustring8(streamed<std::stringstream>(value));
    }
    static ustring16 utf16(const T& value) { return strings::utf8_to_utf16(utf8(value)); }
    static ustring32 utf32(const T& value) { return strings::utf8_to_utf32(utf8(value)); }
    static std::wstring wide(const T& value) {
        if (!convert::detail::is_global_classic())
            return streamed<std::wstringstream>(value);
        const ustring8 text = classic_string(value);
        return std::wstring(text.begin(), text.end());
    }
    static void print(std::ostream& stream, const T& value) { stream << value; }
};

template <>
struct conversions<bool> : stream_conversions<bool> {
    template <typename Number>
    static Number number(const bool& value) {
        return static_cast<Number>(byte(value));
    }
    template <typename Floating>
    static Floating floating(const bool& value) {
        return static_cast<Floating>(byte(value));
    }
    static bool boolean(const bool& value) { return value; }

private:
    // Contract: the result depends on the stored byte, and only the byte 1 becomes 1.
    static int byte(const bool& value) {
        return *reinterpret_cast<const unsigned char*>(&value) == 1 ? 1 : 0;
    }
};

// Contract: a floating-point value is truncated to the 32 bits of `int` and then cut to 8 or 16;
// an unsigned result of 32 bits is the low half of a truncation to 64.
template <typename Number>
struct truncated {
    template <typename T>
    static Number of(T value) {
        return static_cast<Number>(detail::truncate<int>(value));
    }
};
template <>
struct truncated<unsigned int> {
    template <typename T>
    static unsigned int of(T value) {
        return static_cast<unsigned int>(detail::truncate<long>(value));
    }
};
template <>
struct truncated<long> {
    template <typename T>
    static long of(T value) {
        return detail::truncate<long>(value);
    }
};
template <>
struct truncated<unsigned long> {
    template <typename T>
    static unsigned long of(T value) {
        return detail::truncate_unsigned(value);
    }
};

template <typename T>
struct floating_conversions : stream_conversions<T> {
    template <typename Number>
    static Number number(T value) {
        return truncated<Number>::of(value);
    }
    template <typename Floating>
    static Floating floating(T value) {
        return static_cast<Floating>(value);
    }
    static bool boolean(T value) { return value != T(0); }  // true for a NaN

    // Contract: this is the narrow string, decoded. The difference is visible in a global locale
    // that punctuates narrow and wide numbers differently.
    static std::wstring wide(T value) { return stream_conversions<T>::utf32(value); }
};

template <>
struct conversions<float> : floating_conversions<float> {};
template <>
struct conversions<double> : floating_conversions<double> {};

// Contract: a `long double` takes its wide string from a wide stream, unlike `float` and `double`.
template <>
struct conversions<long double> : floating_conversions<long double> {
    static std::wstring wide(long double value) {
        return stream_conversions<long double>::wide(value);
    }
};

// --- Strings -----------------------------------------------------------------------------------

// One name for all parsers, selected by the type of the result. They detect the radix,
// saturate and never throw.
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

template <typename Floating>
Floating parsed(const ustring8& text) {
    Floating result;
    parse(text, result);
    return result;
}

// The rules that all five string types share.
//
// Contract: integers are parsed from the code units, in every width, while floating-point values
// are parsed from UTF-8. A string that doesn't convert to UTF-8 ("-1") may therefore be 5 as an
// integer and -1.0 as a floating-point value.
template <typename String>
struct string_conversions {
    template <typename Number>
    static Number number(const String& text) {
        Number result;
        parse(text.c_str(), text.size(), result);
        return result;
    }
    static bool boolean(const String& text) {
        return convert::detail::is_truth_word(text.data(), text.size()) || number<long>(text) != 0;
    }
};

// Contract: printed as a C string, up to the first NUL. Only a `std::string` is printed completely.
void print_up_to_nul(std::ostream& stream, const ustring8& text) {
    stream << text.c_str();
}

template <typename String>
struct utf8_conversions : string_conversions<String> {
    template <typename Floating>
    static Floating floating(const String& text) {
        return parsed<Floating>(text);
    }
    static ustring8 utf8(const String& text) { return ustring8(text); }
    static ustring16 utf16(const String& text) { return strings::utf8_to_utf16(text); }
    static ustring32 utf32(const String& text) { return strings::utf8_to_utf32(text); }
    static std::wstring wide(const String& text) { return utf32(text); }
};

template <>
struct conversions<ustring8> : utf8_conversions<ustring8> {
    static void print(std::ostream& stream, const ustring8& text) { print_up_to_nul(stream, text); }
};

template <>
struct conversions<std::string> : utf8_conversions<std::string> {
    static void print(std::ostream& stream, const std::string& text) { stream << text; }
};

template <>
struct conversions<ustring16> : string_conversions<ustring16> {
    template <typename Floating>
    static Floating floating(const ustring16& text) {
        return parsed<Floating>(utf8(text));
    }
    static bool boolean(const ustring16& text) { return convert::str_to_bool(text); }
    static ustring8 utf8(const ustring16& text) { return strings::utf16_to_utf8(text); }
    static ustring16 utf16(const ustring16& text) { return text; }
    static ustring32 utf32(const ustring16& text) { return strings::utf16_to_utf32(text); }
    static std::wstring wide(const ustring16& text) { return utf32(text); }
    static void print(std::ostream& stream, const ustring16& text) {
        print_up_to_nul(stream, utf8(text));
    }
};

template <typename String>
struct utf32_conversions : string_conversions<String> {
    template <typename Floating>
    static Floating floating(const String& text) {
        return parsed<Floating>(utf8(text));
    }
    static ustring8 utf8(const String& text) { return strings::utf32_to_utf8(text); }
    static ustring16 utf16(const String& text) { return strings::utf32_to_utf16(text); }
    static ustring32 utf32(const String& text) { return ustring32(text); }
    static std::wstring wide(const String& text) { return text; }
};

template <>
struct conversions<ustring32> : utf32_conversions<ustring32> {
    static void print(std::ostream& stream, const ustring32& text) {
        print_up_to_nul(stream, utf8(text));
    }
};

template <>
struct conversions<std::wstring> : utf32_conversions<std::wstring> {
    // Contract: this is not the string, but a debugging aid with the address of the stored value.
    static void print(std::ostream& stream, const std::wstring& text) {
        stream << "< " << typeid(std::wstring).name() << " instance at "
               << static_cast<const void*>(&text) << " >";
    }
};

}  // namespace

// --- The slots ---------------------------------------------------------------------------------

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

// The copy starts with a count of 0: the base class copies neither the count nor the heap mark.
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
    return conversions<T>::boolean(value);
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

// The closed set of types that a variant holds.
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
