#include "cfg/model/schema.hpp"

#include "support/suggestion.hpp"
#include "support/text_file.hpp"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace tova_programs::cfg {

namespace {

const std::vector<std::string> types = {"string", "int", "double", "bool", "path"};
const std::vector<std::string> properties = {"type", "default",  "values", "min",
                                             "max",  "required", "help",   "alias"};

bool is_one_of(const std::string& word, const std::vector<std::string>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string lower_case(std::string text) {
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text;
}

// A number may have a prefix for its base, as in the library.
bool is_whole_number(const std::string& text) {
    std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const std::string digits = lower_case(text.substr(at));
    if (digits.compare(0, 2, "0x") == 0)
        return digits.size() > 2 &&
               digits.find_first_not_of("0123456789abcdef", 2) == std::string::npos;
    if (digits.compare(0, 2, "0b") == 0)
        return digits.size() > 2 && digits.find_first_not_of("01", 2) == std::string::npos;
    const bool is_octal = digits.size() > 1 && digits[0] == '0';
    return !digits.empty() &&
           digits.find_first_not_of(is_octal ? "01234567" : "0123456789") == std::string::npos;
}

bool is_number(const std::string& text) {
    if (text.empty())
        return false;
    char* end = nullptr;
    static_cast<void>(std::strtod(text.c_str(), &end));
    return *end == '\0';
}

bool is_boolean(const std::string& text) {
    return is_one_of(lower_case(text), {"yes", "no", "on", "off", "true", "false"}) ||
           is_whole_number(text);
}

double number_of(const std::string& text) {
    const std::string lower = lower_case(text);
    const bool is_binary = lower.compare(0, 2, "0b") == 0;
    const bool is_octal = lower.size() > 1 && lower[0] == '0' &&
                          lower.find_first_not_of("01234567") == std::string::npos;
    if (is_binary)
        return static_cast<double>(std::strtoull(lower.c_str() + 2, nullptr, 2));
    return is_octal ? static_cast<double>(std::strtoull(lower.c_str(), nullptr, 8))
                    : std::strtod(lower.c_str(), nullptr);
}

// `there is no type "boolean"; use string, int or bool`, or the word that was most likely meant.
std::string unknown_word(const std::string& what, const std::string& word,
                         const std::vector<std::string>& known) {
    const std::string start = "there is no " + what + " \"" + word + '"';
    const std::string suggestion = did_you_mean(word, known);
    if (!suggestion.empty())
        return start + suggestion;
    std::string list;
    for (const std::string& each : known)
        list += (list.empty() ? "" : &each == &known.back() ? " or " : ", ") + each;
    return start + "; use " + list;
}

// The mistakes of a schema, by their place in it.
class mistakes {
public:
    explicit mistakes(const document& file) : m_file(file), m_lines(file.bytes()) {}

    void add(span bytes, const std::string& reason) {
        const text_place place = m_lines.at(bytes.begin);
        m_found.emplace(bytes.begin, m_file.path() + ':' + std::to_string(place.line) + ':' +
                                         std::to_string(place.column) + ": " + reason);
    }

    // Raises one error with a line for each mistake.
    void require_none() const {
        std::string all;
        for (const auto& each : m_found)
            all += (all.empty() ? "" : "\n") + each.second;
        if (!all.empty())
            throw file_error(all);
    }

private:
    const document& m_file;
    line_index m_lines;
    std::multimap<std::size_t, std::string> m_found;
};

std::vector<std::string> texts_of(const entry& each) {
    std::vector<std::string> result;
    for (const value_piece& piece : each.values)
        result.push_back(piece.text);
    return result;
}

void read_type(declared_key& declared, mistakes& wrong, const entry& each) {
    declared.type = each.values[0].text;
    const std::size_t size = declared.type.size();
    declared.is_array = size > 2 && declared.type.compare(size - 2, 2, "[]") == 0;
    if (declared.is_array)
        declared.type.resize(size - 2);
    if (!is_one_of(declared.type, types))
        wrong.add(each.value_bytes, unknown_word("type", declared.type, types));
}

void read_property(declared_key& declared, mistakes& wrong, const entry& each) {
    const std::string name = lower_case(each.name);
    if (!is_one_of(name, properties)) {
        wrong.add(each.bytes, unknown_word("property", each.name, properties));
        return;
    }
    if (each.values.empty())
        return;
    const std::string& value = each.values[0].text;
    if (name == "type") {
        read_type(declared, wrong, each);
    } else if (name == "default") {
        declared.has_default = true;
        declared.default_values = texts_of(each);
    } else if (name == "values") {
        declared.choices = texts_of(each);
    } else if (name == "required") {
        declared.is_required = is_one_of(lower_case(value), {"yes", "on", "true", "1"});
    } else if (name == "help") {
        declared.help = value;
    } else if (name == "alias") {
        declared.alias = path_of(value);
    } else {
        if (!is_number(value))
            wrong.add(each.value_bytes, '"' + value + "\" is not a number");
        else
            (name == "min" ? declared.minimum : declared.maximum) = value;
    }
}

}  // namespace

schema::schema(const std::string& path) {
    const document file(path, read_file(path));
    mistakes wrong(file);
    std::vector<std::size_t> index(file.sections().size(), 0);
    for (std::size_t i = 1; i < file.sections().size(); ++i) {
        const section& each = file.sections()[i];
        const std::string key = path_of(each.name);
        if (each.name.empty())
            wrong.add(each.bytes, "a header without a key");
        else if (find(key) != nullptr)
            wrong.add(each.bytes, "\"" + key + "\" is declared twice");
        index[i] = m_keys.size();
        m_keys.emplace_back();
        m_keys.back().key = key;
        m_keys.back().path = path;
        m_keys.back().bytes = each.bytes;
    }
    for (const entry& each : file.entries()) {
        if (each.section == 0)
            wrong.add(each.bytes, "an entry before the first section");
        else
            read_property(m_keys[index[each.section]], wrong, each);
    }
    wrong.require_none();
    for (const declared_key& each : m_keys)
        for (const std::string& value : each.default_values)
            if (!problem_of(each, value).empty())
                wrong.add(each.bytes, "the default " + problem_of(each, value));
    wrong.require_none();
}

const declared_key* schema::find(const std::string& path) const {
    const auto found = std::find_if(m_keys.begin(), m_keys.end(),
                                    [&path](const declared_key& each) { return each.key == path; });
    return found == m_keys.end() ? nullptr : &*found;
}

std::vector<std::string> schema::paths() const {
    std::vector<std::string> result;
    for (const declared_key& each : m_keys)
        result.push_back(each.key);
    return result;
}

std::string problem_of(const declared_key& declared, const std::string& value) {
    const std::string quoted = '"' + value + '"';
    if (declared.type == "int" && !is_whole_number(value))
        return quoted + " is not a whole number";
    if (declared.type == "double" && !is_number(value))
        return quoted + " is not a number";
    if (declared.type == "bool" && !is_boolean(value))
        return quoted + " is not yes or no";
    if (!declared.choices.empty() && !is_one_of(value, declared.choices))
        return quoted + " is not " + type_of(declared) + did_you_mean(value, declared.choices);
    if (!declared.minimum.empty() && number_of(value) < number_of(declared.minimum))
        return quoted + " is less than " + declared.minimum;
    if (!declared.maximum.empty() && number_of(value) > number_of(declared.maximum))
        return quoted + " is more than " + declared.maximum;
    return "";
}

std::string type_of(const declared_key& declared) {
    if (declared.choices.empty())
        return declared.type + (declared.is_array ? "[]" : "");
    std::string result = "one of ";
    for (const std::string& each : declared.choices)
        result += (&each == &declared.choices.front() ? "" : ", ") + each;
    return result;
}

}  // namespace tova_programs::cfg
