#include "xmc/exchange/plural_forms.hpp"

#include <tova/extras/plural.hpp>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>

namespace tova_programs::xmc {

namespace {

using tova::extras::plural_rules;
using tova::strings::ustring8;

// Evaluates a C expression over n, as headers have it: a recursive descent, one level of precedence
// per call. An error makes the value too large for any form.
class evaluator {
public:
    evaluator(std::string_view text, unsigned long number) : m_text(text), m_number(number) {}

    unsigned long run() {
        const unsigned long value = condition();
        skip_spaces();
        return m_failed || m_at != m_text.size() ? static_cast<unsigned long>(-1) : value;
    }

private:
    void skip_spaces() {
        while (m_at < m_text.size() && (m_text[m_at] == ' ' || m_text[m_at] == '\t'))
            ++m_at;
    }

    bool take(std::string_view token) {
        skip_spaces();
        if (m_text.substr(m_at, token.size()) != token)
            return false;
        m_at += token.size();
        return true;
    }

    unsigned long condition() {
        if (++m_depth > 100) {
            m_failed = true;
            m_at = m_text.size();
            return 0;
        }
        unsigned long value = binary(0);
        if (take("?")) {
            const unsigned long yes = condition();
            m_failed = !take(":") || m_failed;
            const unsigned long no = condition();
            value = value != 0 ? yes : no;
        }
        --m_depth;
        return value;
    }

    // From the weakest operators to the strongest.
    unsigned long binary(std::size_t level) {
        static const std::vector<std::vector<std::string_view>> levels = {
            {"||"}, {"&&"}, {"==", "!="}, {"<=", ">=", "<", ">"}, {"+", "-"}, {"*", "/", "%"}};
        if (level == levels.size())
            return unary();
        unsigned long left = binary(level + 1);
        for (;;) {
            const auto& tokens = levels[level];
            const auto found = std::find_if(tokens.begin(), tokens.end(),
                                            [this](std::string_view each) { return take(each); });
            if (found == tokens.end())
                return left;
            left = applied(*found, left, binary(level + 1));
        }
    }

    // A division by zero is an error only where its value is used, and there it is no form.
    static unsigned long applied(std::string_view token, unsigned long a, unsigned long b) {
        if (token == "||")
            return a != 0 || b != 0;
        if (token == "&&")
            return a != 0 && b != 0;
        if (token == "==")
            return a == b;
        if (token == "!=")
            return a != b;
        if (token == "<=")
            return a <= b;
        if (token == ">=")
            return a >= b;
        if (token == "<")
            return a < b;
        if (token == ">")
            return a > b;
        if (token == "+")
            return a + b;
        if (token == "-")
            return a - b;
        if (token == "*")
            return a * b;
        if (b == 0)
            return static_cast<unsigned long>(-1);
        return token == "/" ? a / b : a % b;
    }

    unsigned long unary() {
        skip_spaces();
        bool is_negated = false;
        while (m_text.substr(m_at, 2) != "!=" && take("!"))
            is_negated = !is_negated;
        const unsigned long value = primary();
        return is_negated ? value == 0 : value;
    }

    unsigned long primary() {
        if (take("(")) {
            const unsigned long value = condition();
            m_failed = !take(")") || m_failed;
            return value;
        }
        if (take("n"))
            return m_number;
        unsigned long value = 0;
        const std::size_t begin = m_at;
        for (; m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9'; ++m_at)
            value = value * 10 + static_cast<unsigned long>(m_text[m_at] - '0');
        m_failed = m_at == begin || m_failed;
        return value;
    }

    std::string_view m_text;
    unsigned long m_number;
    std::size_t m_at = 0;
    std::size_t m_depth = 0;
    bool m_failed = false;
};

// What rules for whole numbers tell apart: the last two digits, and large round numbers.
const std::vector<unsigned long>& sample_numbers() {
    static const std::vector<unsigned long> all = [] {
        std::vector<unsigned long> result;
        for (unsigned long n = 0; n < 220; ++n)
            result.push_back(n);
        for (const unsigned long n : {1000ul, 1001ul, 100000ul, 1000000ul, 1000001ul, 2000000ul})
            result.push_back(n);
        return result;
    }();
    return all;
}

std::string category(const plural_rules& rules, unsigned long number) {
    return tova::extras::name(rules.category(number));
}

// The headers in use, by number of forms. Languages share them.
const char* const usual_headers[] = {
    "nplurals=1; plural=0;",
    "nplurals=2; plural=(n != 1);",
    "nplurals=2; plural=(n > 1);",
    "nplurals=2; plural=(n % 10 == 1 && n % 100 != 11 ? 0 : 1);",
    "nplurals=2; plural=(n == 0 || n == 1 || n >= 11 && n <= 99 ? 0 : 1);",
    "nplurals=2; plural=(n != 1 && n != 2 && n != 3 && (n % 10 == 4 || n % 10 == 6 || n % 10 == "
    "9));",
    "nplurals=3; plural=(n == 0 || n == 1 ? 0 : n != 0 && n % 1000000 == 0 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n != 0 && n % 1000000 == 0 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n == 2 ? 1 : 2);",
    "nplurals=3; plural=(n == 0 ? 0 : n == 1 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n >= 2 && n <= 4 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n % 10 >= 2 && n % 10 <= 4 && (n % 100 < 12 || n % 100 > 14) "
    "? 1 : 2);",
    "nplurals=3; plural=(n % 10 == 1 && n % 100 != 11 ? 0 : n % 10 >= 2 && n % 10 <= 4 && (n % 100 "
    "< 12 || n % 100 > 14) ? 1 : 2);",
    "nplurals=3; plural=(n % 10 == 1 && (n % 100 < 11 || n % 100 > 19) ? 0 : n % 10 >= 2 && n % 10 "
    "<= 9 && (n % 100 < 11 || n % 100 > 19) ? 1 : 2);",
    "nplurals=3; plural=(n % 10 == 0 || n % 100 >= 11 && n % 100 <= 19 ? 0 : n % 10 == 1 && n % "
    "100 "
    "!= 11 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n == 0 || n % 100 >= 1 && n % 100 <= 19 ? 1 : 2);",
    "nplurals=3; plural=(n == 1 ? 0 : n == 0 || n % 100 >= 2 && n % 100 <= 19 ? 1 : 2);",
    "nplurals=4; plural=(n % 100 == 1 ? 0 : n % 100 == 2 ? 1 : n % 100 == 3 || n % 100 == 4 ? 2 : "
    "3);",
    "nplurals=4; plural=(n == 1 ? 0 : n == 2 ? 1 : n > 10 && n % 10 == 0 ? 2 : 3);",
    "nplurals=4; plural=(n == 1 || n == 11 ? 0 : n == 2 || n == 12 ? 1 : n >= 3 && n <= 10 || n >= "
    "13 && n <= 19 ? 2 : 3);",
    "nplurals=4; plural=(n == 1 ? 0 : n == 0 || n % 100 >= 2 && n % 100 <= 10 ? 1 : n % 100 >= 11 "
    "&& n % 100 <= 19 ? 2 : 3);",
    "nplurals=5; plural=(n == 1 ? 0 : n == 2 ? 1 : n >= 3 && n <= 6 ? 2 : n >= 7 && n <= 10 ? 3 : "
    "4);",
    "nplurals=6; plural=(n == 0 ? 0 : n == 1 ? 1 : n == 2 ? 2 : n % 100 >= 3 && n % 100 <= 10 ? 3 "
    ": "
    "n % 100 >= 11 ? 4 : 5);",
    "nplurals=6; plural=(n == 0 ? 0 : n == 1 ? 1 : n == 2 ? 2 : n == 3 ? 3 : n == 6 ? 4 : 5);",
};

}  // namespace

plural_header::plural_header(std::string_view text) {
    const auto count = text.find("nplurals=");
    const auto expression = text.find("plural=", count == text.npos ? 0 : count + 9);
    if (count == text.npos || expression == text.npos)
        return;
    const std::string number(text.substr(count + 9, 4));
    m_expression = text.substr(expression + 7);
    m_expression.erase(std::min(m_expression.find(';'), m_expression.size()));
    const long forms = std::strtol(number.c_str(), nullptr, 10);
    if (forms < 1 || forms > 20)
        return;
    m_count = static_cast<std::size_t>(forms);
    if (form_of(0) >= m_count || form_of(1) >= m_count)
        m_count = 0;
}

unsigned long plural_header::form_of(unsigned long number) const {
    return evaluator(m_expression, number).run();
}

namespace {

std::vector<std::vector<std::string>> compared_with_rules(const plural_header& header,
                                                          const plural_rules& rules) {
    std::vector<std::vector<std::string>> result(header.count());
    std::vector<std::string> known;
    for (const unsigned long number : sample_numbers()) {
        const unsigned long form = header.form_of(number);
        const std::string name = category(rules, number);
        if (form >= result.size() || std::find(known.begin(), known.end(), name) != known.end())
            continue;
        known.push_back(name);
        result[form].push_back(name);
    }
    return result;
}

}  // namespace

std::vector<std::vector<std::string>> categories_of_forms(const plural_header& header,
                                                          const std::string& locale) {
    // A file has one header for all of its plurals, so the last result is kept.
    static struct {
        std::string expression;
        std::size_t count = 0;
        std::string locale;
        std::vector<std::vector<std::string>> forms;
    } last;
    const plural_rules rules{ustring8(locale)};
    if (header.count() != last.count || header.expression() != last.expression ||
        rules.locale() != last.locale)
        last = {header.expression(), header.count(), rules.locale(),
                compared_with_rules(header, rules)};
    return last.forms;
}

std::vector<std::string> whole_categories(const std::string& locale) {
    std::vector<std::string> result;
    const plural_rules rules{ustring8(locale)};
    for (const unsigned long number : sample_numbers()) {
        const std::string name = category(rules, number);
        if (std::find(result.begin(), result.end(), name) == result.end())
            result.push_back(name);
    }
    return result;
}

bool is_category(const std::string& word) {
    const char* const all[] = {"zero", "one", "two", "few", "many", "other"};
    return std::find(std::begin(all), std::end(all), word) != std::end(all);
}

std::string category_of(const std::string& locale, unsigned long number) {
    return category(plural_rules{ustring8(locale)}, number);
}

namespace {

// The first of the usual headers with one form for each category of the locale.
std::string usual_header_for(const std::string& locale) {
    const std::vector<std::string> wanted = whole_categories(locale);
    const plural_rules rules{ustring8(locale)};
    for (const char* const text : usual_headers) {
        const plural_header header(text);
        if (header.count() != wanted.size())
            continue;
        const auto forms = categories_of_forms(header, locale);
        const bool is_one_each = std::all_of(forms.begin(), forms.end(),
                                             [](const auto& names) { return names.size() == 1; });
        if (is_one_each &&
            std::all_of(sample_numbers().begin(), sample_numbers().end(), [&](unsigned long n) {
                return forms[header.form_of(n)][0] == category(rules, n);
            }))
            return text;
    }
    return "";
}

}  // namespace

std::string plural_header_for(const std::string& locale) {
    // Each header is compared with the rules number by number, so the result is kept, by the locale
    // whose rules these are. The programs have one thread.
    static std::map<std::string, std::string> known;
    const std::string same_rules = plural_rules{ustring8(locale)}.locale();
    const auto place = known.find(same_rules);
    if (place != known.end())
        return place->second;
    return known[same_rules] = usual_header_for(same_rules);
}

}  // namespace tova_programs::xmc
