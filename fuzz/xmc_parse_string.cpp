// `xmc_file_loader`: any text as an XMC file. The load returns a kind with a complete message, and
// returns the same when it is repeated. All messages that were read can be rendered.
//
// Input: the file.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>

namespace {

using fuzz_support::require;
using tova::generic::varg_list;
using tova::i18n::catalog_t;
using tova::i18n::_private::xmc_file_loader;
using tova::memory::pointers::shared_pointer;
using tova::strings::ustring8;
using catalogs = std::map<ustring8, shared_pointer<catalog_t>>;
using load_error = xmc_file_loader::load_error;

bool ends_with(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Replaces a file in one step, since several fuzzers may run at the same time.
void put(const std::string& path, const std::string& content) {
    const std::string fresh = path + "." + std::to_string(::getpid());
    std::ofstream(fresh) << "<?xml?><xmc version='1.1'>" << content << "</xmc>";
    require(std::rename(fresh.c_str(), path.c_str()) == 0);
}

// A folder with files to include: a valid one, an invalid one and a cycle of two.
std::string folder_of_includes() {
    const std::string folder = "/tmp/tova_fuzz_xmc_" + std::to_string(::getuid()) + "/";
    ::mkdir(folder.c_str(), 0700);
    put(folder + "a", "<catalog name='i' lang='.'><msg name='k'>x</msg></catalog>");
    put(folder + "b", "<catalog name='i' lang='en'><msg><b/></msg></catalog>");
    put(folder + "c", "<include file='d'/>");
    put(folder + "d", "<include file='c'/>");
    put(folder + "empty", "");
    return folder;
}

load_error read(xmc_file_loader& loader, const std::string& folder, const ustring8& text) {
    loader.handle_language("de_AT");
    // Relative includes start from the folder of the file that was loaded last.
    require(loader.parse_file(folder + "empty").type == xmc_file_loader::no_catalog);
    return loader.parse_string(text, "f");
}

// Whether a field may be so wide that its padding alone fills the memory, as it is documented to.
bool has_wide_field(const ustring8& text) {
    int digits = 0;
    for (const char c : text) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        if (digits > 5)
            return true;
    }
    return false;
}

void render_all(const catalogs& loaded) {
    varg_list values;
    values.push_back("n", -1234567);
    values.push_back("x", 0.5);
    values.push_back("s", "text");
    for (const auto& entry : loaded) {
        require(entry.first == entry.second->name());
        for (const auto& keyed : *entry.second) {
            require(keyed.second.name() == keyed.first);
            keyed.second.as_string(values);
            keyed.second.as_utf16(values);
            keyed.second.as_string(varg_list());
        }
        for (auto lang = entry.second->languages_begin(); lang != entry.second->languages_end();
             ++lang)
            require(!lang->empty());  // a catalog without a locale is not read
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const std::string folder = folder_of_includes();
    const ustring8 text(reinterpret_cast<const char*>(data), size);
    if (text.find("/dev") != ustring8::npos || text.find("/proc") != ustring8::npos)
        return 0;  // an include of a device may block for ever

    xmc_file_loader loader;
    const load_error outcome = read(loader, folder, text);
    require(outcome.type >= 0 && outcome.type <= 14);
    require(outcome.message.compare(0, 30, "xmc_file_loader::load_error - ") == 0);
    const bool is_given = outcome.type == xmc_file_loader::no_error ||
                          outcome.message == "xmc_file_loader::load_error - No catalog was loaded "
                                             "in file: \"f\"";
    require(is_given || ends_with(outcome.message, "\n in file: \"f\""));

    xmc_file_loader again;
    const load_error same = read(again, folder, text);
    require(same.type == outcome.type && same.message == outcome.message);

    // What was read before an error is consistent as well.
    catalogs loaded;
    const unsigned long stored = loader.combine_data(loaded, {});
    unsigned long count = 0;
    for (const auto& entry : loaded)
        count += entry.second->size();
    require(stored == count);
    require(loader.combine_data(loaded, {}) == stored);
    if (!has_wide_field(text))
        render_all(loaded);
    return 0;
}
