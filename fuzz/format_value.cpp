// `format_value`: any item type, value and data, compared with a second renderer. A message renders
// the same text.
//
// Input: one byte for the type, one for the kind of the value, eight for the value; the rest is the
// item's data.
#include <tova/i18n/format.hpp>
#include <tova/i18n/message.hpp>
#include <tova/strings/split.hpp>

#include "../tests/i18n/format_model.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

namespace i18n = tova::i18n;
namespace types = tova::types;
using fuzz_support::require;
using i18n::message_item;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;

// Whether a field is so wide that its padding alone takes the time: widths go up to gigabytes.
bool has_wide_field(const std::string& data) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        const int size = static_cast<int>(std::atol(data.c_str() + i));
        if (size > 100000 || size < -100000)
            return true;
    }
    return false;
}

types::variant make_value(std::uint8_t kind, const std::uint8_t* bits) {
    long integer;
    double number;
    std::memcpy(&integer, bits, sizeof integer);
    std::memcpy(&number, bits, sizeof number);
    switch (kind % 5) {
    case 0:
        return integer;
    case 1:
        return number;
    case 2:
        return static_cast<unsigned long>(integer);
    case 3:
        return std::string(reinterpret_cast<const char*>(bits), 8);
    default:
        return types::variant();
    }
}

bool is_formatted(message_item::type_t type) {
    return type == message_item::type_int || type == message_item::type_double ||
           (type >= message_item::type_memory && type <= message_item::type_duration);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz_support::choose_kernel_form(bytes, size);
    if (size < 10)
        return 0;
    const auto type = static_cast<message_item::type_t>(bytes[0]);
    const types::variant value = make_value(bytes[1], bytes + 2);
    const ustring8 data(std::string(reinterpret_cast<const char*>(bytes) + 10, size - 10));
    if (has_wide_field(data))
        return 0;

    const auto separator = data.find('\x01');
    const ustring8 format =
        separator == ustring8::npos ? ustring8() : ustring8(data, separator + 1);
    const ustring8 text = i18n::format_value(type, value, data);
    test_support::format_model model;
    const std::string expected = model.value(type, value, data);
    require(model.is_open || text == expected);
    const bool odd = tova::strings::split_string(format, "\x01", 0).size() % 2 != 0;
    if (is_formatted(type) && odd)
        require(text == "-0");

    // In a message, with a literal on each side.
    const message_item item(data, type);
    varg_list args;
    args.push_back(argument(item.name(), value));
    const ustring8 shown = item.as_string(args);
    if (is_formatted(type))
        require(shown == (text == "-0" ? ustring8("?invalid?") : text));
    const i18n::message_t message(
        "key", std::vector<message_item>{message_item("<"), item, message_item(">")});
    require(message.as_utf8(args) == "<" + shown + ">");
    return 0;
}
