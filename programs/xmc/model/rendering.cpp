#include "xmc/model/rendering.hpp"

#include "support/suggestion.hpp"
#include "xmc/exchange/plural_forms.hpp"
#include "xmc/model/options.hpp"

#include <algorithm>
#include <vector>

namespace tova_programs::xmc {

namespace {

using tova::generic::varg_list;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::strings::ustring8;

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

// Whether a string argument shows a value that happens to read so.
bool is_shown(const message_item& item, const varg_list& values) {
    return item.type() == message_item::type_text || item.as_string(values) != invalid_item ||
           (item.type() == message_item::type_string && values.has_argument(ustring8(item.name())));
}

// The first option of the item's data that the format language does not read, or nothing.
std::string wrong_option(const std::string& data, item_type type) {
    std::size_t begin = data.find('\1');
    while (begin != data.npos) {
        const auto middle = data.find('\1', begin + 1);
        const auto end = middle == data.npos ? middle : data.find('\1', middle + 1);
        const std::string key = data.substr(begin + 1, middle - begin - 1);
        const std::string value =
            middle == data.npos ? "" : data.substr(middle + 1, end - middle - 1);
        const option_rule* const option = find_option(type, key);
        if (option == nullptr)
            return "type " + quoted(name_of(type)) + " has no option " + quoted(key);
        if (value.empty() && end == data.npos)
            return "option " + quoted(key) + " has no value";
        const bool is_number =
            option->kind == option_kind::natural || option->kind == option_kind::integer;
        if (!is_number && word_of(*option, value).empty())
            return "option " + quoted(key) + " has no value " + quoted(value);
        begin = end;
    }
    return "";
}

// The usual number, unless the key is that of a plural form that the number does not have. Then the
// smallest one that has it, but 0 only if there is no other; the usual one if there is none at all.
int number_of_form(const std::string& key, const std::string& locale, int usual) {
    const std::string form = key.substr(key.rfind('.') + 1);
    const auto has_form = [&](int number) {
        return category_of(locale, static_cast<unsigned long>(number)) == form;
    };
    if (!is_category(form) || has_form(usual))
        return usual;
    for (int number = form == "zero" ? 0 : 1; number <= 200; ++number)
        if (has_form(number))
            return number;
    return has_form(0) ? 0 : has_form(1000000) ? 1000000 : usual;
}

}  // namespace

message_t library_message(const document& file, const message& of) {
    std::vector<message_item> items;
    for (const item& each : file.items(of))
        items.emplace_back(ustring8(file.data(each)), static_cast<message_item::type_t>(each.type));
    return {ustring8(std::string(of.name)), items, ustring8(std::string(of.meta))};
}

varg_list samples_for(const message_t& message, const std::string& locale) {
    varg_list values;
    const int usual = 1234;
    int number = number_of_form(message.name(), locale, usual);
    for (const message_item& item : message) {
        switch (static_cast<item_type>(item.type())) {
        case item_type::text:
            break;
        case item_type::integer:
            if (values.has_argument(ustring8(item.name())))
                break;
            values.push_back(item.name(), number);
            number = usual;
            break;
        case item_type::real:
            values.push_back(item.name(), 1234.5);
            break;
        case item_type::duration:
            values.push_back(item.name(), 3725.5);
            break;
        case item_type::memory:
        case item_type::memory_unit:
            values.push_back(item.name(), 48318382080L);
            break;
        case item_type::metric:
        case item_type::metric_unit:
            values.push_back(item.name(), 94500.0);
            break;
        default:
            values.push_back(item.name(), ustring8("<" + item.name() + ">"));
        }
    }
    return values;
}

std::string reason_for_invalid(const message_item& item, const varg_list& values) {
    if (is_shown(item, values))
        return "";
    const std::string name = item.name();
    const auto type = static_cast<item_type>(item.type());
    if (is_reserved(type))
        return "type " + quoted(name_of(type)) + " is always shown so";
    if (!values.has_argument(ustring8(name))) {
        std::vector<std::string> given;
        for (const auto& each : values)
            given.push_back(each.name());
        return "no value " + quoted(name) + " was given" + did_you_mean(name, given);
    }
    const std::string reason = wrong_option(item.data(), type);
    return reason.empty() ? "the value does not fit the field, or rounds to -0" : reason;
}

}  // namespace tova_programs::xmc
