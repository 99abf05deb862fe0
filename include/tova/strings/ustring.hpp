/// @file
/// The three string types of the library, one for each width of unit.
///
///     tova::strings::ustring8 name("caf\xC3\xA9");  // UTF-8
///     name += ".txt";                              // what std::string offers
///     std::ifstream file(name);                    // wherever a std::string is expected
///
/// The types differ in their unit only, and each is declared in full all the same. Its direct base
/// is the standard string, and the constructors are its own: a shared template or a macro would
/// change the base classes and the names that callers are linked with, and grep would not find the
/// declarations.
///
/// They are used from threads as the standard strings are: any number may read, one may write.
#pragma once

#include <tova/abi.hpp>

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

namespace TOVA_2_18 {
namespace strings {

namespace _private {

/// Returns its argument. Raises `std::logic_error` "basic_string::_M_construct null not valid" for
/// a null pointer, whatever message the installed standard library has.
template <typename Unit>
inline const Unit* require_text(const Unit* text) {
    if (text == nullptr)
        throw std::logic_error("basic_string::_M_construct null not valid");
    return text;
}

}  // namespace _private

/// A string of 8-bit units: UTF-8, by agreement and unchecked.
///
/// A plain derivation of `std::string` that adds no data and no virtual operation: it offers the
/// operations of its base and can be passed wherever its base is expected. Sizes, indexes and
/// lengths count bytes.
class TOVA_API ustring8 : public std::basic_string<char> {
public:
    /// The standard string that this type derives from.
    using base_type = std::basic_string<char>;

    /// An empty string.
    ustring8() {}

    /// Copies the units up to the terminator. Raises `std::logic_error`
    /// "basic_string::_M_construct null not valid" for a null pointer.
    TOVA_API ustring8(const char* text);

    /// The same units: a copy, or the contents of a string that is given up.
    ustring8(const base_type& text) : base_type(text) {}
    ustring8(base_type&& text) : base_type(std::move(text)) {}

    /// The part of `text` from unit `first` on, `count` units at most. Raises `std::out_of_range`
    /// if `first` is past the end.
    ustring8(const base_type& text, size_type first, size_type count = npos)
        : base_type(text, first, count) {}

    /// The `length` units at `text`, terminators included.
    ustring8(const char* text, size_type length) : base_type(text, length) {}

    /// `count` times the same unit.
    ustring8(size_type count, char unit) : base_type(count, unit) {}

    /// The units of a list, or of the range from `first` up to but not including `last`.
    ustring8(std::initializer_list<char> units) : base_type(units) {}
    template <typename Iterator,
              typename = typename std::iterator_traits<Iterator>::iterator_category>
    ustring8(Iterator first, Iterator last) : base_type(first, last) {}

    using base_type::operator=;
    /// Replaces the content by the units up to the terminator, and returns this string. Raises
    /// `std::logic_error` "basic_string::_M_construct null not valid" for a null pointer.
    ustring8& operator=(const char* text) {
        assign(_private::require_text(text));
        return *this;
    }
};

/// A string of 16-bit units: UTF-16 in the byte order of the host, by agreement and unchecked.
///
/// A plain derivation of its base, as `ustring8` is. Sizes, indexes and lengths count units, so a
/// surrogate pair counts 2.
class TOVA_API ustring16 : public std::basic_string<unsigned short> {
public:
    /// The standard string that this type derives from.
    using base_type = std::basic_string<unsigned short>;

    /// An empty string.
    ustring16() {}

    /// Copies the units up to the terminator. Raises `std::logic_error`
    /// "basic_string::_M_construct null not valid" for a null pointer.
    ustring16(const unsigned short* text) : base_type(_private::require_text(text)) {}

    /// The same units: a copy, or the contents of a string that is given up.
    ustring16(const base_type& text) : base_type(text) {}
    ustring16(base_type&& text) : base_type(std::move(text)) {}

    /// The part of `text` from unit `first` on, `count` units at most. Raises `std::out_of_range`
    /// if `first` is past the end.
    ustring16(const base_type& text, size_type first, size_type count = npos)
        : base_type(text, first, count) {}

    /// The `length` units at `text`, terminators included.
    ustring16(const unsigned short* text, size_type length) : base_type(text, length) {}

    /// `count` times the same unit.
    ustring16(size_type count, unsigned short unit) : base_type(count, unit) {}

    /// The units of a list, or of the range from `first` up to but not including `last`.
    ustring16(std::initializer_list<unsigned short> units) : base_type(units) {}
    template <typename Iterator,
              typename = typename std::iterator_traits<Iterator>::iterator_category>
    ustring16(Iterator first, Iterator last) : base_type(first, last) {}

    using base_type::operator=;
    /// Replaces the content by the units up to the terminator, and returns this string. Raises
    /// `std::logic_error` "basic_string::_M_construct null not valid" for a null pointer.
    ustring16& operator=(const unsigned short* text) {
        assign(_private::require_text(text));
        return *this;
    }
};

/// A string of 32-bit units: UTF-32, one unit a code point, by agreement and unchecked.
///
/// A plain derivation of `std::wstring`, as `ustring8` is of `std::string`. Sizes, indexes and
/// lengths count units.
class TOVA_API ustring32 : public std::basic_string<wchar_t> {
public:
    /// The standard string that this type derives from.
    using base_type = std::basic_string<wchar_t>;

    /// An empty string.
    ustring32() {}

    /// Copies the units up to the terminator. Raises `std::logic_error`
    /// "basic_string::_M_construct null not valid" for a null pointer.
    ustring32(const wchar_t* text) : base_type(_private::require_text(text)) {}

    /// The same units: a copy, or the contents of a string that is given up.
    ustring32(const base_type& text) : base_type(text) {}
    ustring32(base_type&& text) : base_type(std::move(text)) {}

    /// The part of `text` from unit `first` on, `count` units at most. Raises `std::out_of_range`
    /// if `first` is past the end.
    ustring32(const base_type& text, size_type first, size_type count = npos)
        : base_type(text, first, count) {}

    /// The `length` units at `text`, terminators included.
    ustring32(const wchar_t* text, size_type length) : base_type(text, length) {}

    /// `count` times the same unit.
    ustring32(size_type count, wchar_t unit) : base_type(count, unit) {}

    /// The units of a list, or of the range from `first` up to but not including `last`.
    ustring32(std::initializer_list<wchar_t> units) : base_type(units) {}
    template <typename Iterator,
              typename = typename std::iterator_traits<Iterator>::iterator_category>
    ustring32(Iterator first, Iterator last) : base_type(first, last) {}

    using base_type::operator=;
    /// Replaces the content by the units up to the terminator, and returns this string. Raises
    /// `std::logic_error` "basic_string::_M_construct null not valid" for a null pointer.
    ustring32& operator=(const wchar_t* text) {
        assign(_private::require_text(text));
        return *this;
    }
};

/// Whether both strings have the same length and the same bytes; `!=` is the opposite. Never fails.
TOVA_API bool operator==(const ustring8& left, const ustring8& right);
TOVA_API bool operator!=(const ustring8& left, const ustring8& right);

/// Returns a copy of the left string with the right one appended. Raises `std::logic_error`
/// "basic_string::_M_construct null not valid" for a null pointer.
TOVA_API ustring8 operator+(const ustring8& left, const ustring8& right);
TOVA_API ustring8 operator+(const char* left, const ustring8& right);
TOVA_API ustring8 operator+(const ustring8& left, const char* right);

// The mixed forms. Without them a comparison of a `ustring8` with a literal or with a `std::string`
// is ambiguous between the operators above and the templates of the base class. The other two
// widths have the templates alone and need none of this.

/// Whether both strings have the same bytes. A pointer refers to a string up to its terminator and
/// must not be null. Never fails.
inline bool operator==(const ustring8& left, const char* right) {
    return left.compare(right) == 0;
}
inline bool operator==(const char* left, const ustring8& right) {
    return right.compare(left) == 0;
}
inline bool operator==(const ustring8& left, const std::string& right) {
    return left.size() == right.size() && left.compare(right) == 0;
}
inline bool operator==(const std::string& left, const ustring8& right) {
    return right == left;
}

/// Whether the strings differ. A pointer refers to a string up to its terminator and must not be
/// null. Never fails.
inline bool operator!=(const ustring8& left, const char* right) {
    return !(left == right);
}
inline bool operator!=(const char* left, const ustring8& right) {
    return !(left == right);
}
inline bool operator!=(const ustring8& left, const std::string& right) {
    return !(left == right);
}
inline bool operator!=(const std::string& left, const ustring8& right) {
    return !(left == right);
}

/// Returns the left string with the right one appended. A string that is given up as an argument
/// lends its memory to the result. Raises only what an allocation raises.
inline ustring8 operator+(const ustring8& left, const std::string& right) {
    ustring8 result;
    result.reserve(left.size() + right.size());
    result.append(left).append(right);
    return result;
}
inline ustring8 operator+(const std::string& left, const ustring8& right) {
    ustring8 result;
    result.reserve(left.size() + right.size());
    result.append(left).append(right);
    return result;
}
inline ustring8 operator+(const ustring8& left, std::string&& right) {
    return ustring8(std::move(right.insert(0, left)));
}
inline ustring8 operator+(std::string&& left, const ustring8& right) {
    return ustring8(std::move(left.append(right)));
}

}  // namespace strings
}  // namespace TOVA_2_18
