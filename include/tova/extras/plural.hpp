/// @file
/// Plural forms of messages by the rules of CLDR.
///
///     // <msg name="files.one">one file</msg>
///     // <msg name="files.other"><arg name="n" type="int"/> files</msg>
///     const auto& files = tova::extras::plural_message(catalogs, "app", "files", count);
///     std::cout << files.as_string(tova::generic::varg_list(tova::generic::argument("n", count)));
///
/// The forms of a message have the keys `key.zero`, `key.one`, `key.two`, `key.few`, `key.many` and
/// `key.other`. Each language uses some of them, always including `key.other`: English uses `one`
/// and `other`, Polish `one`, `few`, `many` and `other`. `plural_rules` chooses the form for
/// cardinal numbers ("3 files") and ordinal numbers ("3rd file").
///
/// One text may need several translations. By convention, the key for such a context is
/// `key@context`, for example "open@menu" and "open@door". If one of them is missing, the plain key
/// is used.
///
/// The rules are constant data, and all functions are pure: threads may call them at the same time
/// and share catalogs as `i18n::message_catalogs` allows.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/_private/plural_table.hpp>
#include <tova/extras/checked.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/strings/ustring.hpp>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace TOVA_2_18 {
namespace extras {

/// The meaning of a number: how many there are, or the position in a sequence.
enum class plural_type {
    cardinal,  ///< "3 files".
    ordinal    ///< "The 3rd file".
};

/// The name of a category, as it appears in keys: "few". Never fails.
inline const char* name(plural_category category) {
    switch (category) {
    case plural_category::zero:
        return "zero";
    case plural_category::one:
        return "one";
    case plural_category::two:
        return "two";
    case plural_category::few:
        return "few";
    case plural_category::many:
        return "many";
    case plural_category::other:
        break;
    }
    return "other";
}

/// A number as it is displayed, because the rules depend on the visible digits: English has "1
/// meter", but "1.0 meters". The sign does not matter.
class plural_number {
public:
    /// Zero.
    plural_number() : plural_number(0) {}

    /// A whole number of any type.
    template <typename Integer,
              typename = typename std::enable_if<std::is_integral<Integer>::value>::type>
    plural_number(Integer value) {
        // Convert before negating: the smallest signed number has no positive counterpart.
        const unsigned long size = static_cast<unsigned long>(value);
        m_operands.i = clip(value < Integer() ? 0 - size : size);
    }

    /// A number that is displayed with only as many digits as it needs: 1.0 as "1", 0.1 as "0.1".
    /// Infinities and NaNs are `other` in every language.
    plural_number(double value) {
        if (!std::isfinite(value)) {
            m_is_finite = false;
            return;
        }
        // The shortest digits that read back as the same value.
        char text[40];
        for (int precision = 0; precision < 17; ++precision) {
            static_cast<void>(
                std::snprintf(text, sizeof text, "%.*e", precision, std::fabs(value)));
            if (std::strtod(text, nullptr) == std::fabs(value))
                break;
        }
        std::string digits;
        const char* at = text;
        for (; *at != 'e'; ++at)
            if (*at >= '0' && *at <= '9')
                digits += *at;
        set(digits, std::strtol(at + 1, nullptr, 10) + 1, true);
    }

    /// A number that is displayed with a fixed number of fraction digits: `fixed(1, 2)` is "1.00".
    /// Messages show an argument with that `precision` in the same way.
    static plural_number fixed(double value, unsigned fraction_digits) {
        plural_number result;
        result.m_is_finite = std::isfinite(value);
        if (!result.m_is_finite)
            return result;
        const int precision = static_cast<int>(fraction_digits);
        std::string text(
            static_cast<std::size_t>(std::snprintf(nullptr, 0, "%.*f", precision, value)), '\0');
        static_cast<void>(std::snprintf(&text[0], text.size() + 1, "%.*f", precision, value));
        std::string digits;
        for (const char c : text)  // the point depends on the locale of the program
            if (c >= '0' && c <= '9')
                digits += c;
        result.set(digits, static_cast<long>(digits.size()) - precision, false);
        return result;
    }

    /// Parses the string that is displayed: digits with an optional sign and point, and an exponent
    /// of the compact form ("1.2c6" for "1.2 million"; `e` means the same). For any other string,
    /// returns the error and its position.
    static checked<plural_number> from_string(const std::string& text) {
        std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
        const std::size_t begin = at;
        std::string digits;
        std::size_t point = std::string::npos;
        for (; at < text.size(); ++at) {
            if (text[at] == '.' && point == std::string::npos)
                point = digits.size();
            else if (text[at] >= '0' && text[at] <= '9')
                digits += text[at];
            else
                break;
        }
        if (text.empty())
            return {check_error::empty, 0};
        if (at > begin && text[begin] == '.')
            return {check_error::invalid, begin};
        if (digits.empty() || text[at - 1] == '.')
            return {at == text.size() ? check_error::incomplete : check_error::invalid, at};

        unsigned long exponent = 0;
        if (at < text.size() && (text[at] == 'c' || text[at] == 'e')) {
            if (++at == text.size())
                return {check_error::incomplete, at};
            for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
                exponent = exponent * 10 + static_cast<unsigned long>(text[at] - '0');
                if (exponent > 1000)
                    return {check_error::out_of_range, at};
            }
        }
        if (at < text.size())
            return {check_error::invalid, at};
        plural_number result;
        result.set(
            digits,
            static_cast<long>((point == std::string::npos ? digits.size() : point) + exponent),
            false);
        result.m_operands.c = exponent;
        return result;
    }

    /// @name Operands
    ///
    /// The operands of CLDR. If the whole part i or the fractions f and t have more than 18 digits,
    /// only the last 18 are kept; this makes no difference to any rule. Never fail.
    /// @{
    unsigned long i() const { return m_operands.i; }  ///< The whole part.
    unsigned long v() const { return m_operands.v; }  ///< The number of visible fraction digits.
    unsigned long w() const { return m_operands.w; }  ///< The same without trailing zeros.
    unsigned long f() const { return m_operands.f; }  ///< The visible fraction digits: 50 in 1.50.
    unsigned long t() const { return m_operands.t; }  ///< The same without trailing zeros: 5.
    unsigned long c() const { return m_operands.c; }  ///< The compact exponent: 6 in 1.2c6.
    /// @}

    /// Whether the number is neither infinite nor NaN. Never fails.
    bool is_finite() const { return m_is_finite; }

private:
    friend class plural_rules;

    // Every rule divides by at most 10^6 or compares with a smaller number. So the result depends
    // only on the last 18 digits and on whether there are more.
    static unsigned long clip(unsigned long value) {
        const unsigned long limit = 1000000000000000000;
        return value < limit ? value : value % limit + limit;
    }
    static unsigned long number(const std::string& digits) {
        unsigned long value = 0;
        for (const char digit : digits)
            value = clip(value * 10 + static_cast<unsigned long>(digit - '0'));
        return value;
    }

    // Sets the digits. The first `point` of them are the whole part; `point` may be outside their
    // range.
    void set(std::string digits, long point, bool drops_zeros) {
        if (point < 0) {
            digits.insert(0, static_cast<std::size_t>(-point), '0');
            point = 0;
        }
        const std::size_t whole = static_cast<std::size_t>(point);
        if (digits.size() < whole)
            digits.resize(whole, '0');
        std::string fraction = digits.substr(whole);
        std::string trimmed = fraction.substr(0, fraction.find_last_not_of('0') + 1);
        if (drops_zeros)
            fraction = trimmed;
        m_operands = {number(digits.substr(0, whole)),
                      fraction.size(),
                      trimmed.size(),
                      number(fraction),
                      number(trimmed),
                      0};
    }

    _private::operands m_operands = {0, 0, 0, 0, 0, 0};
    bool m_is_finite = true;
};

/// The plural rules of a language.
///
/// A locale is "pl", "pt_PT" or "zh-Hant-TW" in any letter case; anything after a `@` is ignored.
/// If CLDR has no rules for it, the rules of its parent apply: `pt_AO` has those of `pt_PT`, and
/// most others those of the locale without its last part. A language without rules has one form,
/// `other`.
class plural_rules {
public:
    /// The rules of a locale. Every string is accepted.
    explicit plural_rules(const strings::ustring8& locale, plural_type type = plural_type::cardinal)
        : m_locale("root"), m_rule(_private::cardinal_0) {
        std::size_t count = 0;
        const _private::plural_row* const rows = type == plural_type::cardinal
                                                     ? _private::cardinal_rows(count)
                                                     : _private::ordinal_rows(count);
        for (std::string name = canonical(locale); !name.empty(); name = parent(name))
            for (std::size_t row = 0; row < count; ++row)
                if (name == rows[row].locale) {
                    m_locale = rows[row].locale;
                    m_rule = rows[row].rule;
                    return;
                }
    }

    /// The category of a number. Never fails.
    plural_category category(const plural_number& number) const {
        return number.is_finite() ? m_rule(number.m_operands) : plural_category::other;
    }

    /// The locale whose rules these are: "pt_PT" for "pt_AO", "root" for an unknown language. Never
    /// fails.
    const char* locale() const { return m_locale; }

private:
    // Returns "zh_Hant_TW" for "ZH-hant_tw". A "." is a separator, too, as in catalogs.
    static std::string canonical(const std::string& locale) {
        std::string result = locale.substr(0, locale.find('@'));
        std::size_t begin = 0;
        for (std::size_t at = 0; at <= result.size(); ++at) {
            if (at < result.size() && std::strchr("-_.", result[at]) == nullptr)
                continue;
            for (std::size_t k = begin; k < at; ++k) {
                const bool is_upper =
                    begin > 0 && (at - begin < 4 || (at - begin == 4 && k == begin));
                if (is_upper && result[k] >= 'a' && result[k] <= 'z')
                    result[k] = static_cast<char>(result[k] - 'a' + 'A');
                if (!is_upper && result[k] >= 'A' && result[k] <= 'Z')
                    result[k] = static_cast<char>(result[k] - 'A' + 'a');
            }
            if (at < result.size())
                result[at] = '_';
            begin = at + 1;
        }
        return result;
    }

    static std::string parent(const std::string& locale) {
        std::size_t count = 0;
        const _private::parent_row* const rows = _private::parent_rows(count);
        for (std::size_t row = 0; row < count; ++row)
            if (locale == rows[row].locale)
                return rows[row].parent;
        const std::size_t end = locale.rfind('_');
        return end == std::string::npos ? std::string() : locale.substr(0, end);
    }

    const char* m_locale;
    plural_category (*m_rule)(const _private::operands&);
};

/// The category of a number in a language. For many numbers, `plural_rules` is faster.
inline plural_category plural(const strings::ustring8& locale, const plural_number& number,
                              plural_type type = plural_type::cardinal) {
    return plural_rules(locale, type).category(number);
}

/// The key of a message in a context: "open@menu".
inline strings::ustring8 in_context(const strings::ustring8& key,
                                    const strings::ustring8& context) {
    return static_cast<const std::string&>(key) + "@" + static_cast<const std::string&>(context);
}

namespace _private {

// Returns "files" for "files@trash", and an empty string for a key without a context.
inline std::string without_context(const std::string& key) {
    const std::size_t at = key.rfind('@');
    return at == std::string::npos ? std::string() : key.substr(0, at);
}

inline std::string language_of(const i18n::message_t& message) {
    const std::string& locale = message._orginal_locale();
    return locale.substr(0, locale.find_first_of("-_@."));
}

}  // namespace _private

/// Returns the message of a key that may have a context: that of "open@menu", or of "open" if there
/// is none. Returns the nil message if both are missing. The reference is valid as long as that of
/// a lookup.
inline const i18n::message_t& context_message(const i18n::message_catalogs& catalogs,
                                              const strings::ustring8& catalog,
                                              const strings::ustring8& key) {
    const std::string plain = _private::without_context(key);
    return plain.empty() || catalogs.has_message(catalog, key)
               ? catalogs.message(catalog, key)
               : context_message(catalogs, catalog, plain);
}

/// Returns the form of a message for a number, for example `key.few`.
///
/// The rules are those of the language of `key.other`, or of `key` if there is no `key.other`. So
/// the message that replaces a missing translation follows the rules of its own language. The
/// result is the first of these that the catalog contains:
///
/// 1. the form of the number's category, if it is in that same language;
/// 2. `key.other`;
/// 3. `key`;
/// 4. the same three for the key without its context, "files" for "files@trash".
///
/// Returns the nil message if there is none of them. The reference is valid as long as that of a
/// lookup.
inline const i18n::message_t& plural_message(const i18n::message_catalogs& catalogs,
                                             const strings::ustring8& catalog,
                                             const strings::ustring8& key,
                                             const plural_number& number,
                                             plural_type type = plural_type::cardinal) {
    const std::string prefix = static_cast<const std::string&>(key) + ".";
    const bool has_other = catalogs.has_message(catalog, prefix + "other");
    if (!has_other && !catalogs.has_message(catalog, key)) {
        const std::string plain = _private::without_context(key);
        return plain.empty() ? catalogs.message(catalog, key)
                             : plural_message(catalogs, catalog, plain, number, type);
    }
    const i18n::message_t& general =
        has_other ? catalogs.message(catalog, prefix + "other") : catalogs.message(catalog, key);
    const plural_category category = plural(general._orginal_locale(), number, type);
    const i18n::message_t& form = catalogs.message(catalog, prefix + name(category));
    const bool is_usable =
        !(form == types::nil) && _private::language_of(form) == _private::language_of(general);
    return is_usable ? form : general;
}

}  // namespace extras
}  // namespace TOVA_2_18
