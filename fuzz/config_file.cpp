// `file_item`: a configuration file read and saved, compared with the second implementation of the
// tests.
//
// Input: the file.
#include <tova/config/file_item.hpp>

#include "../tests/config/cfg_oracle.hpp"
#include "../tests/config/listing.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

using fuzz_support::require;
using tova::config::file_item;

namespace {

// The name of a file, in memory where the system offers a folder for that.
std::string file_name() {
    const std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    return folder + "/tova_fuzz_" + std::to_string(getpid()) + ".cfg";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string name = file_name();
    std::ofstream(name, std::ios::binary) << text;

    file_item item(name);
    item.load();
    const cfg_oracle::nodes expected = cfg_oracle::read(text);
    const config_support::lines nodes = config_support::content(item);
    require(nodes == cfg_oracle::show(expected));

    // Loading again sets the same keys, and a copy has them as well.
    item.load();
    require(config_support::content(item) == nodes);
    file_item copy(item);
    require(config_support::content(copy) == nodes);
    std::ostringstream out;
    copy.dump(out);

    std::remove(name.c_str());
    item.save();
    std::ifstream saved(name, std::ios::binary);
    require(std::string(std::istreambuf_iterator<char>(saved), std::istreambuf_iterator<char>()) ==
            cfg_oracle::write(expected));
    copy.unload();
    copy.load();
    std::remove(name.c_str());
    return 0;
}
