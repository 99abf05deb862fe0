// A command line of arguments with NUL bytes between them. The first is the program's name.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <tova/config/commandline_item.hpp>

#include "../tests/config/listing.hpp"

using TOVA_2_18::config::commandline_item;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::cout.rdbuf(nullptr);  // the warnings
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
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

    // A count that is too high changes nothing, and neither does a copy.
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
