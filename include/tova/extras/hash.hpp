/// @file
/// Hashes and comparisons, so that strings, dates and colors can be keys of containers.
///
///     std::unordered_map<tova::strings::ustring8, int> ages;         // std::hash is enough
///     std::unordered_set<date, std::hash<date>, tova::extras::equal_to> holidays;
///     std::map<tova::strings::ustring8, int, tova::extras::less> names;
///     names.find("Mia");                                             // makes no string
///
/// All functions are pure; threads may share their arguments. Nothing here fails.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/system/date_time/date.hpp>
#include <tova/system/date_time/date_time.hpp>
#include <tova/system/date_time/time.hpp>
#include <tova/types/color.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#if __cplusplus >= 201703L
#include <string_view>
#endif

namespace TOVA_2_18 {
namespace extras {

namespace _private {

// FNV-1a over the bytes of the units. The standard library hashes no string of `unsigned short`.
template <typename Unit>
std::size_t hash_units(const Unit* units, std::size_t count) noexcept {
    std::uint64_t hash = 14695981039346656037u;
    const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(units);
    for (std::size_t i = 0; i < count * sizeof(Unit); ++i)
        hash = (hash ^ bytes[i]) * 1099511628211u;
    return static_cast<std::size_t>(hash);
}

inline std::size_t mix(std::uint64_t value) noexcept {
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
    return static_cast<std::size_t>(value ^ (value >> 31));
}

// What a date or time is compared by. A day beyond the end of its month counts as the last day.
inline std::tuple<unsigned, unsigned, unsigned> key(const system::date_time::date& value) {
    return std::make_tuple(value.year(), value.month(), value.day());
}
inline std::tuple<unsigned, unsigned, unsigned, unsigned>
key(const system::date_time::time& value) {
    return std::make_tuple(value.hour(), value.minute(), value.second(), value.millisecond());
}
inline auto key(const system::date_time::date_time_t& value)
    -> decltype(std::tuple_cat(key(value.date()), key(value.time()))) {
    return std::tuple_cat(key(value.date()), key(value.time()));
}
inline unsigned key(const types::color_t& value) {
    return static_cast<unsigned>(value.as_int32());
}

inline std::uint64_t pack(const system::date_time::date& value) {
    return (static_cast<std::uint64_t>(value.year()) << 16) | (value.month() << 8) | value.day();
}
inline std::uint64_t pack(const system::date_time::time& value) {
    return (static_cast<std::uint64_t>(value.hour()) << 32) | (value.minute() << 24) |
           (value.second() << 16) | value.millisecond();
}

// What strings are compared by: a pointer and a length, for every spelling of a string.
template <typename Unit>
struct units {
    const Unit* data;
    std::size_t size;
};
template <typename Unit, typename Traits, typename Allocator>
units<Unit> key(const std::basic_string<Unit, Traits, Allocator>& text) {
    return {text.data(), text.size()};
}
template <typename Unit>
units<Unit> key(const Unit* text) {
    return {text, std::char_traits<Unit>::length(text)};
}
#if __cplusplus >= 201703L
template <typename Unit, typename Traits>
units<Unit> key(const std::basic_string_view<Unit, Traits>& text) {
    return {text.data(), text.size()};
}
#endif

template <typename Unit>
int order(const units<Unit>& left, const units<Unit>& right) {
    const std::size_t common = left.size < right.size ? left.size : right.size;
    const int result = std::char_traits<Unit>::compare(left.data, right.data, common);
    if (result != 0)
        return result;
    return left.size < right.size ? -1 : left.size > right.size;
}
template <typename Unit>
bool operator==(const units<Unit>& left, const units<Unit>& right) {
    return left.size == right.size && order(left, right) == 0;
}
template <typename Unit>
bool operator<(const units<Unit>& left, const units<Unit>& right) {
    return order(left, right) < 0;
}

}  // namespace _private

/// Equality of strings, dates, times and colors, for unordered containers.
///
/// Strings of one width compare with each other, with `std::basic_string`, with pointers to a
/// terminator (not null) and, from C++17 on, with string views. Dates compare by `year`, `month`
/// and `day`, so a 31 February equals the last day of its February. Colors compare by their word.
struct equal_to {
    /// Tells containers that keys of other types can be looked up without a conversion.
    using is_transparent = void;

    /// Whether both are equal. Never fails.
    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const {
        return _private::key(left) == _private::key(right);
    }
};

/// The order that belongs to `equal_to`, for ordered containers. Strings compare unit by unit,
/// dates and times from the largest part to the smallest, colors by their word as an unsigned
/// number.
struct less {
    /// Tells containers that keys of other types can be looked up without a conversion.
    using is_transparent = void;

    /// Whether `left` comes before `right`. Never fails.
    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const {
        return _private::key(left) < _private::key(right);
    }
};

}  // namespace extras
}  // namespace TOVA_2_18

namespace std {

/// The hash of the base, so that equal strings have equal hashes whatever their type.
template <>
struct hash<TOVA_2_18::strings::ustring8> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::strings::ustring8& text) const noexcept {
        return hash<string>()(text);
    }
};

/// A hash of the units of a string.
template <>
struct hash<TOVA_2_18::strings::ustring16> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::strings::ustring16& text) const noexcept {
        return TOVA_2_18::extras::_private::hash_units(text.data(), text.size());
    }
};

/// The hash of the base, so that equal strings have equal hashes whatever their type.
template <>
struct hash<TOVA_2_18::strings::ustring32> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::strings::ustring32& text) const noexcept {
        return hash<wstring>()(text);
    }
};

/// A hash of year, month and day, which fits `tova::extras::equal_to`.
template <>
struct hash<TOVA_2_18::system::date_time::date> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::system::date_time::date& value) const {
        return TOVA_2_18::extras::_private::mix(TOVA_2_18::extras::_private::pack(value));
    }
};

/// A hash of the four fields of a time.
template <>
struct hash<TOVA_2_18::system::date_time::time> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::system::date_time::time& value) const {
        return TOVA_2_18::extras::_private::mix(TOVA_2_18::extras::_private::pack(value));
    }
};

/// A hash of both parts of a date with a time.
template <>
struct hash<TOVA_2_18::system::date_time::date_time_t> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::system::date_time::date_time_t& value) const {
        namespace extras = TOVA_2_18::extras::_private;
        return extras::mix(extras::mix(extras::pack(value.date())) ^ extras::pack(value.time()));
    }
};

/// A hash of the word of a color.
template <>
struct hash<TOVA_2_18::types::color_t> {
    /// Returns the hash. Never fails.
    size_t operator()(const TOVA_2_18::types::color_t& value) const {
        return TOVA_2_18::extras::_private::mix(static_cast<unsigned>(value.as_int32()));
    }
};

}  // namespace std
