// Number punctuation, for tests of operations that depend on the global C++ locale.
#pragma once

#include <locale>
#include <string>

namespace test_support {

// Writes numbers with the given decimal point and a separator between groups of three digits.
template <typename Unit>
class punctuation : public std::numpunct<Unit> {
public:
    punctuation(Unit point, Unit separator) : m_point(point), m_separator(separator) {}

protected:
    Unit do_decimal_point() const override { return m_point; }
    Unit do_thousands_sep() const override { return m_separator; }
    std::string do_grouping() const override { return "\3"; }

private:
    Unit m_point;
    Unit m_separator;
};

// The classic locale, except that narrow streams write 1.234.567,5.
inline std::locale comma_locale() {
    return std::locale(std::locale::classic(), new punctuation<char>(',', '.'));
}

// Makes a locale the global locale for the duration of a test. A locale without a name, such as
// `comma_locale()`, does not change the C library's locale.
class global_locale {
public:
    explicit global_locale(const std::locale& locale) : m_before(std::locale::global(locale)) {}
    ~global_locale() { std::locale::global(m_before); }
    global_locale(const global_locale&) = delete;
    global_locale& operator=(const global_locale&) = delete;

private:
    std::locale m_before;
};

}  // namespace test_support
