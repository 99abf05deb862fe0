// `commandline_item`: a command line, compared with the second implementation of the tests.
//
// Input: the arguments with NUL bytes between them, the first of which is the program's name.
#include <tova/config/commandline_item.hpp>

#include "../tests/config/line_oracle.hpp"
#include "../tests/config/listing.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstdint>
#include <iostream>
#include <streambuf>
#include <string>
#include <typeinfo>
#include <vector>

using fuzz_support::require;
using tova::config::commandline_item;
using tova::types::variant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::streambuf* const s_output = std::cout.rdbuf(nullptr);  // no warnings
    static_cast<void>(s_output);
    fuzz_support::choose_kernel_form(data, size);
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<const char*> arguments;
    for (std::string::size_type begin = 0; begin <= size; begin = text.find('\0', begin) + 1) {
        arguments.push_back(text.c_str() + begin);
        if (text.find('\0', begin) == std::string::npos)
            break;
    }
    const unsigned count = static_cast<unsigned>(arguments.size());
    arguments.push_back(nullptr);

    commandline_item item(count, arguments.data());
    require(item.load());
    require(item.get_value("application.name") != nullptr);
    require(item.get_value("application.name.raw") != nullptr);
    const config_support::lines nodes = config_support::content(item);

    // The same options after a program name without an extension. The two values that are stored as
    // std::string are converted, so that they compare equal to the others.
    std::vector<const char*> renamed(arguments);
    renamed[0] = "tool";
    commandline_item plain(count, renamed.data());
    plain.load();
    for (const char* key : {"application.name", "application.name.raw"}) {
        const variant value = plain.get_value(key)->second;
        if (value.type() == typeid(std::string))
            plain.set(key, variant(value.as_utf8()), 0);
    }
    cfg_oracle::nodes expected;
    cfg_oracle::store(expected, "application.name", "tool");
    cfg_oracle::store(expected, "application.name.raw", "");
    line_oracle::read_options(expected, {renamed.begin(), renamed.end() - 1});
    require(config_support::content(plain) == cfg_oracle::show(expected));

    // A count that is too high makes no difference, and neither does a copy.
    commandline_item counted(count + 1, arguments.data());
    counted.load();
    require(config_support::content(counted) == nodes);
    commandline_item copy(item);
    require(config_support::content(copy) == nodes);
    item.unload();
    require(config_support::content(item).empty());
    item.load();
    require(config_support::content(item) == nodes);
    return 0;
}
