#include "xmc/exchange/foreign_format.hpp"

#include <cstdlib>
#include <utility>

namespace tova_programs::xmc {

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

std::string no_item(std::string_view source) {
    return '"' + std::string(source) + "\" cannot become an argument and stays text";
}

// A conversion specification: % [POSITION$ | (NAME)] [FLAGS] [WIDTH] [.PRECISION] [LENGTH] TYPE.
struct conversion {
    std::string position;
    std::string name;
    std::string flags;
    std::string width;
    bool has_precision = false;
    std::string precision;
    char type = '\0';
    std::size_t length = 0;  // in bytes; 0: there is none
};

conversion conversion_at(std::string_view text, std::size_t begin, bool is_python) {
    conversion result;
    std::size_t at = begin + 1;
    const auto digits = [&] {
        const std::size_t first = at;
        while (at < text.size() && (is_digit(text[at]) || (text[at] == '*' && at == first)))
            ++at;
        return std::string(text.substr(first, at - first));
    };
    const auto any_of = [&](std::string_view set) {
        const std::size_t first = at;
        while (at < text.size() && set.find(text[at]) != set.npos)
            ++at;
        return std::string(text.substr(first, at - first));
    };
    if (is_python && at < text.size() && text[at] == '(') {
        const auto end = text.find(')', at);
        if (end == text.npos)
            return result;
        result.name = text.substr(at + 1, end - at - 1);
        at = end + 1;
    } else {
        result.position = digits();
        if (result.position.empty() || at >= text.size() || text[at] != '$') {
            result.position.clear();
            at = begin + 1;
        } else {
            ++at;
        }
    }
    result.flags = any_of("-+ #0'I");
    result.width = digits();
    if (at < text.size() && text[at] == '.') {
        ++at;
        result.has_precision = true;
        result.precision = digits();
    }
    any_of("hlqjztL");
    if (at >= text.size())
        return result;
    result.type = text[at];
    result.length = at + 1 - begin;
    return result;
}

// The attributes of the item. False if there is none: a field that is filled with zeros, a sign
// that is always shown, a base other than ten, exponents, and widths of strings. A width is
// dropped: there it is a minimum, in a catalog it is a maximum, and longer numbers would not be
// shown.
bool item_for(const conversion& each,
              std::vector<std::pair<std::string, std::string>>& attributes) {
    const bool is_number = each.flags.empty() || each.flags == "-";
    switch (each.type) {
    case 's':
        return each.flags.empty() && each.width.empty() && !each.has_precision;
    case 'd':
    case 'i':
    case 'u':
        attributes.emplace_back("type", "int");
        return is_number && !each.has_precision && each.width != "*";
    case 'f':
    case 'F':
        attributes.emplace_back("type", "double");
        attributes.emplace_back("precision", !each.has_precision      ? "6"
                                             : each.precision.empty() ? "0"
                                                                      : each.precision);
        return is_number && each.width != "*" && each.precision != "*" && each.precision.size() < 3;
    default:
        return false;
    }
}

// Whether a conversion is one even where it is not certain that the text is a format.
bool is_usual(const conversion& each) {
    return each.length != 0 && each.flags.find(' ') == each.flags.npos &&
           std::string_view("%diouxXeEfFgGaAcsp").find(each.type) != std::string_view::npos;
}

exchanged_text read_printf(std::string_view text, foreign_format format,
                           std::vector<std::string>& unknown) {
    exchanged_text result;
    result.exists = true;
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        const conversion each = conversion_at(text, i, format == foreign_format::python);
        if (format == foreign_format::c_unflagged && !is_usual(each)) {
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        if (each.length == 0) {
            unknown.push_back(no_item(text.substr(i)));
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        const std::string_view source = text.substr(i, each.length);
        i += each.length - 1;
        if (each.type == '%') {
            add_text(result.pieces, source == "%%" ? "%" : source);
            continue;
        }
        ++count;
        piece argument;
        argument.is_argument = true;
        argument.text = !each.name.empty() ? each.name
                                           : "arg" + (each.position.empty() ? std::to_string(count)
                                                                            : each.position);
        argument.attributes = {{"name", argument.text}};
        if (item_for(each, argument.attributes)) {
            result.pieces.push_back(argument);
            if (!each.width.empty())
                unknown.push_back('"' + std::string(source) + "\" is shown without its width");
        } else {
            unknown.push_back(no_item(source));
            add_text(result.pieces, source);
        }
    }
    return result;
}

exchanged_text read_braces(std::string_view text, std::vector<std::string>& unknown) {
    exchanged_text result;
    result.exists = true;
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if ((c == '{' || c == '}') && i + 1 < text.size() && text[i + 1] == c) {
            add_text(result.pieces, text.substr(i++, 1));
            continue;
        }
        const auto end = c == '{' ? text.find('}', i) : text.npos;
        if (end == text.npos) {
            if (c == '{' || c == '}')
                unknown.push_back(no_item(text.substr(i, 1)));
            add_text(result.pieces, text.substr(i, 1));
            continue;
        }
        std::string name(text.substr(i + 1, end - i - 1));
        if (name.empty())
            name = std::to_string(count++);
        if (name.find_first_of(":!.[{ ") != name.npos) {
            unknown.push_back(no_item(text.substr(i, end + 1 - i)));
            add_text(result.pieces, text.substr(i, end + 1 - i));
        } else {
            piece argument;
            argument.is_argument = true;
            argument.text =
                is_digit(name[0])
                    ? "arg" + std::to_string(std::strtoul(name.c_str(), nullptr, 10) + 1)
                    : name;
            argument.attributes = {{"name", argument.text}};
            result.pieces.push_back(argument);
        }
        i = end;
    }
    return result;
}

}  // namespace

bool has_conversion(std::string_view text) {
    for (auto at = text.find('%'); at < text.size(); at = text.find('%', at)) {
        const conversion each = conversion_at(text, at, false);
        if (is_usual(each) && each.type != '%')
            return true;
        at += each.type == '%' ? each.length : 1;
    }
    return false;
}

exchanged_text read_foreign(std::string_view text, foreign_format format,
                            std::vector<std::string>& unknown) {
    switch (format) {
    case foreign_format::c:
    case foreign_format::c_unflagged:
    case foreign_format::python:
        return read_printf(text, format, unknown);
    case foreign_format::python_brace:
        return read_braces(text, unknown);
    case foreign_format::none:
        break;
    }
    exchanged_text result;
    result.exists = true;
    add_text(result.pieces, text);
    return result;
}

}  // namespace tova_programs::xmc
