#include "xmc/model/options.hpp"

#include <algorithm>
#include <map>

namespace tova_programs::xmc {

namespace {

const std::vector<const char*> memory_units = {"B", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};
const std::vector<const char*> metric_prefixes = {"base", "a", "f", "p", "n", "mc", "m", "k",
                                                  "M",    "G", "T", "P", "E", "Z",  "Y"};
const std::vector<const char*> flags = {"true", "false"};

const std::vector<option_rule> no_options;
const std::vector<option_rule> integer_options = {
    {"base", option_kind::words, {"dec", "default", "spaced_dec", "hex", "oct", "bin"}},
    {"fieldsize", option_kind::natural, {}},
};
const std::vector<option_rule> real_options = {
    {"precision", option_kind::natural, {}},
    {"fieldsize", option_kind::integer, {}},
};
const std::vector<option_rule> duration_options = {
    {"precision", option_kind::natural, {}},
    {"short_form", option_kind::words, flags},
};
// The words any and default are compared with the name, where they are accepted and do nothing.
const std::vector<option_rule> memory_options = {
    {"target_unit", option_kind::memory_unit, {}}, {"any", option_kind::nothing, {}},
    {"default", option_kind::nothing, {}},         {"base_unit", option_kind::memory_unit, {}},
    {"precision", option_kind::natural, {}},       {"fieldsize", option_kind::integer, {}},
};
const std::vector<option_rule> metric_options = {
    {"base_unit", option_kind::metric_prefix, {}}, {"target_unit", option_kind::metric_prefix, {}},
    {"short_form", option_kind::words, flags},     {"precision", option_kind::natural, {}},
    {"fieldsize", option_kind::integer, {}},
};

bool begins(std::string_view word, std::string_view token) {
    return word.substr(0, token.size()) == token;
}

bool is_number(std::string_view text, bool may_be_negative) {
    if (may_be_negative && !text.empty() && text[0] == '-')
        text.remove_prefix(1);
    return !text.empty() && text.size() <= 9 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The first character selects the unit, and the second one must be B; the rest is not read.
std::string memory_unit_of(std::string_view value) {
    if (value == "B")
        return "B";
    if (value.size() < 2 || value[1] != 'B')
        return "";
    for (const char* const unit : memory_units)
        if (unit[1] == 'B' && unit[0] == value[0])
            return unit;
    return "";
}

std::string metric_prefix_of(std::string_view value) {
    if (begins("base", value))
        return "base";
    const auto found =
        std::find_if(metric_prefixes.begin() + 1, metric_prefixes.end(),
                     [value](const char* prefix) { return value == std::string_view(prefix); });
    return found == metric_prefixes.end() ? "" : *found;
}

}  // namespace

const std::vector<option_rule>& options_of(item_type type) {
    switch (type) {
    case item_type::integer:
        return integer_options;
    case item_type::real:
        return real_options;
    case item_type::duration:
        return duration_options;
    case item_type::memory:
    case item_type::memory_unit:
        return memory_options;
    case item_type::metric:
    case item_type::metric_unit:
        return metric_options;
    default:
        return no_options;
    }
}

bool is_formatted(item_type type) {
    return !options_of(type).empty();
}

bool is_reserved(item_type type) {
    return type == item_type::number || type == item_type::time || type == item_type::date;
}

const option_rule* find_option(item_type type, std::string_view name) {
    const std::vector<option_rule>& options = options_of(type);
    const auto found =
        std::find_if(options.begin(), options.end(),
                     [name](const option_rule& option) { return begins(option.name, name); });
    return found == options.end() ? nullptr : &*found;
}

std::string word_of(const option_rule& option, std::string_view value) {
    switch (option.kind) {
    case option_kind::natural:
        return is_number(value, false) ? std::string(value) : "";
    case option_kind::integer:
        return is_number(value, true) ? std::string(value) : "";
    case option_kind::memory_unit:
        return memory_unit_of(value);
    case option_kind::metric_prefix:
        return metric_prefix_of(value);
    case option_kind::nothing:
        return std::string(value);
    case option_kind::words:
        break;
    }
    const auto found = std::find_if(option.words.begin(), option.words.end(),
                                    [value](const char* word) { return begins(word, value); });
    return found == option.words.end() ? "" : *found;
}

std::vector<std::string> words_of(const option_rule& option) {
    if (option.kind == option_kind::memory_unit)
        return {memory_units.begin(), memory_units.end()};
    if (option.kind == option_kind::metric_prefix)
        return {metric_prefixes.begin(), metric_prefixes.end()};
    return {option.words.begin(), option.words.end()};
}

}  // namespace tova_programs::xmc
