// Prints how long `check` and `coverage` take beside the library's own load of the same files:
//
//     tova_xmc_speed [MESSAGES [LOCALES]]   100000 messages in 24 locales
//
// The files are written to a temporary directory. Nothing is asserted: times depend on the machine,
// but the ratios should stay below 5.
#include <tova/i18n/message_catalogs.hpp>

#include "support/temporary_directory.hpp"
#include "xmc/check/check.hpp"
#include "xmc/commands/coverage.hpp"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using tova::i18n::message_catalogs;
using tova::strings::ustring8;

const char* const words[] = {"file",   "copy",  "of", "the",  "settings", "and",
                             "folder", "error", "in", "user", "message",  "to"};

// Messages of 2 to 12 words; every third has a number, and every seventh a name.
std::string message_of(std::size_t number) {
    std::string text = number % 7 == 0 ? "<arg name=\"who\"/>" : "";
    for (std::size_t i = 0; i < 2 + number % 11; ++i) {
        text += text.empty() ? "" : " ";
        text += i == 2 && number % 3 == 0 ? "<arg name=\"n\" type=\"int\"/>"
                                          : words[(number * 7 + i * 5) % 12];
    }
    return text;
}

template <typename Work>
double seconds(Work work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

int main(int count, char** arguments) {
    const auto argument = [&](int i, unsigned long otherwise) {
        return count > i ? std::strtoul(arguments[i], nullptr, 10) : otherwise;
    };
    const std::size_t messages = argument(1, 100000);
    const std::size_t locales = argument(2, 24);
    const test_support::temporary_directory folder;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < locales; ++i) {
        const std::string locale =
            i == 0 ? "en"
                   : std::string{static_cast<char>('a' + i % 26), static_cast<char>('a' + i / 26)};
        std::string text =
            "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\">\n<catalog name=\"app\" lang=\"" +
            locale + "\">\n";
        for (std::size_t k = 0; k < messages; ++k)
            text += "  <msg name=\"key." + std::to_string(k) + "\">" + message_of(k) + "</msg>\n";
        folder.write(locale + ".xmc", text + "</catalog>\n</xmc>\n");
        names.push_back(locale);
    }

    const double load = seconds([&] {
        for (const std::string& locale : names) {
            message_catalogs catalogs;
            catalogs.load_file(ustring8(folder.path(locale + ".xmc")), ustring8(locale));
            if (catalogs.count("app") != messages)
                std::abort();
        }
    });
    std::size_t findings = 0;
    const double check = seconds([&] {
        tova_programs::xmc::check_options options;
        options.paths = {folder.path()};
        findings = tova_programs::xmc::check(options).findings().size();
    });
    const double coverage = seconds([&] {
        tova_programs::xmc::coverage_options options;
        options.paths = {folder.path()};
        if (tova_programs::xmc::coverage(options).size() != locales)
            std::abort();
    });
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%zu messages in %zu locales, %zu findings\n"
                "load      %6.2f s\n"
                "check     %6.2f s, %.2f of load\n"
                "coverage  %6.2f s, %.2f of load\n"
                "at most %ld MB in memory\n",
                messages, locales, findings, load, check, check / load, coverage, coverage / load,
                usage.ru_maxrss / 1024);
}
