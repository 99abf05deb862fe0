/// @file
/// The plural forms of PO files and the categories that keys have.
///
/// PO files number the forms of a language, and a C expression in the header says which form a
/// number has. The convention for keys names the categories of CLDR instead. Both say the same
/// about whole numbers, so each is found from the other by trying numbers.
///
/// Results depend on the arguments alone. The last ones are kept, so only one thread may call these
/// functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// The `Plural-Forms` of a header.
class plural_header {
public:
    /// Reads `nplurals=2; plural=(n != 1);`. It is invalid if that is not understood.
    explicit plural_header(std::string_view text);

    bool is_valid() const { return m_count != 0; }
    std::size_t count() const { return m_count; }
    /// The C expression over n, up to the semicolon.
    const std::string& expression() const { return m_expression; }

    /// The form of a number; `count()` and more if the expression is wrong.
    unsigned long form_of(unsigned long number) const;

private:
    std::string m_expression;
    std::size_t m_count = 0;
};

/// The categories for which a form is used, by form: `{{"one"}, {"other"}}` for German. A category
/// that uses several forms is with the form of its first number only.
std::vector<std::vector<std::string>> categories_of_forms(const plural_header& header,
                                                          const std::string& locale);

/// The categories of whole numbers in a locale, in the order of their first number.
std::vector<std::string> whole_categories(const std::string& locale);

/// Whether the word is a category of any language: zero, one, two, few, many or other.
bool is_category(const std::string& word);

/// The category of a number.
std::string category_of(const std::string& locale, unsigned long number);

/// A header whose forms are exactly the categories of the locale. Empty if none of the usual ones
/// is.
std::string plural_header_for(const std::string& locale);

}  // namespace tova_programs::xmc
