// Catalogs of random messages, loaded from a file and rendered with random arguments, compared with
// the texts that a second renderer produces from the same pieces.
//
// Input: pieces. Each is a byte for its type, one for the name of the argument, one for the
// attributes, and eight for a value of that name.
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_catalogs.hpp>

#include "../tests/i18n/format_model.hpp"
#include "require.hpp"
#include "scratch_tree.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

namespace {

namespace i18n = tova::i18n;
using fuzz_support::require;
using tova::types::variant;

const char* const type_words[] = {"value",    "string", "number",      "int",
                                  "double",   "time",   "date",        "memory",
                                  "MEM_unit", "metric", "metric_unit", "duration"};
// Keys begin with a letter, like names of attributes.
const char* const keys[] = {"base",      "fieldsize",  "precision", "target_unit",
                            "base_unit", "short_form", "f",         "p",
                            "t",         "b",          "s",         "nonsense"};
const char* const values[] = {"hex",  "oct",   "bin", "dec", "spaced_dec", "3",   "12",  "0", "-7",
                              "40",   "KB",    "MB",  "B",   "k",          "mc",  "m",   "Y", "",
                              "true", "false", "t",   "h",   "1;9",        "any", "base"};

variant value_of(std::uint8_t kind, const std::uint8_t* bits) {
    long integer;
    double number;
    std::memcpy(&integer, bits, sizeof integer);
    std::memcpy(&number, bits, sizeof number);
    switch (kind % 6) {
    case 0:
        return variant(integer);
    case 1:
        return variant(number);
    case 2:
        return variant(static_cast<int>(integer % 2000));
    case 3:
        return variant(static_cast<double>(integer % 2000000) / 128);
    case 4:
        return variant(std::to_string(integer % 100000));
    default:
        return variant();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const fuzz_support::scratch_tree folder;
    const std::size_t piece = 11;
    if (size < piece || size > 40 * piece)
        return 0;

    // Collect the arguments first, because the first one with a name counts.
    tova::generic::varg_list arguments;
    std::map<std::string, variant> given;
    for (std::size_t i = 0; i + piece <= size; i += piece) {
        if (data[i + 1] & 0x80)
            continue;  // a missing argument
        const std::string name(1, static_cast<char>('a' + data[i + 1] % 8));
        const variant value = value_of(data[i + 1] / 8, data + i + 3);
        arguments.push_back(tova::generic::argument(name, value));
        given.emplace(name, value);
    }

    std::string file =
        "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"c\" lang=\"en\">"
        "<msg name=\"m\">";
    std::string expected;
    bool is_open = false;
    test_support::format_model model;
    for (std::size_t i = 0; i + piece <= size; i += piece) {
        const unsigned type = data[i] % 12;
        if (data[i] & 0x80) {
            file += "text&amp;";
            expected += "text&";
        }
        const std::string name(1, static_cast<char>('a' + data[i + 1] % 8));
        std::string item = name;
        file += "<arg name=\"" + name + "\" type=\"" + type_words[type] + "\"";
        // Up to two attributes, of different names.
        for (unsigned n = 0; n < data[i + 2] % 3; ++n) {
            const char* const key = keys[(data[i + 2] / 3 + 5 * n) % 12];
            const char* const value = values[(data[i + 2] / 2 + data[i] / 12 + 7 * n) % 25];
            file += std::string(" ") + key + "=\"" + value + "\"";
            item += std::string("\1") + key + "\1" + value;
        }
        file += "/>";
        const auto found = given.find(name);
        if (type == 0)
            expected += item;
        else if (found == given.end())
            expected += "?invalid?";
        else
            expected += model.shown(static_cast<int>(type), found->second, item);
        is_open = is_open || model.is_open;
    }
    file += "</msg></catalog></xmc>";
    folder.write("a.xmc", file);

    i18n::message_catalogs set;
    require(set.load_file(tova::strings::ustring8(folder.path("a.xmc")), "en").type == 0);
    const i18n::message_t& message = set.message("c", "m");
    const std::string shown = message.as_string(arguments);
    require(is_open || shown == expected);
    require(message.as_utf8(arguments) == shown);
    return 0;
}
