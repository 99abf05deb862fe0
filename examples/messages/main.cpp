// Prints a report from message catalogs for one locale:
//
//     tova_example_messages [LOCALE [FOLDER]]
//
// LOCALE is a name like de_AT; the default is LANG from the environment. FOLDER holds the catalogs
// in catalogs/ and some invalid ones in broken/.

#include <tova/tova.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::i18n::message_t;
using tova::strings::ustring8;

namespace {

// "de_AT.UTF-8@euro" is de_AT. Without a locale, and for the names of the C locale, it is English.
ustring8 locale_from(const char* name) {
    const std::string text = name != nullptr ? name : "";
    const std::string locale = text.substr(0, text.find_first_of(".@"));
    return locale.empty() || locale == "C" || locale == "POSIX" ? "en" : locale;
}

// The values of the report. A message takes those that it names and ignores the others.
varg_list facts() {
    varg_list result;
    result.push_back("host", "atlas");
    result.push_back("user", "Mia");
    result.push_back("files", 1234567);
    result.push_back("bytes", 48318382080ul);
    result.push_back("elapsed", 90061.25);
    result.push_back("rate", 94500000.0);
    result.push_back("cable", 2750);
    result.push_back("ratio", 0.8125);
    result.push_back("mode", 420);
    result.push_back("change", -200);
    return result;
}

// Indents the lines after the first like the first one.
std::string indented(std::string text) {
    for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        text.insert(at + 1, "      ");
    return text;
}

// Prints every message of every catalog with the locale of the translation that was found.
void print_all(const message_catalogs& catalogs, const varg_list& arguments) {
    for (const auto& entry : catalogs) {
        std::cout << '\n' << entry.first << '\n';
        for (const auto& keyed : *entry.second) {
            const message_t& message = keyed.second;
            std::cout << "  " << keyed.first << " (" << message._orginal_locale() << ")\n      "
                      << indented(message.as_string(arguments)) << '\n';
        }
    }
}

// A missing argument is shown as "?invalid?" in its place; the rest of the message is unaffected.
void print_with_missing_arguments(const message_catalogs& catalogs) {
    const message_t& summary = catalogs.message("backup", "summary");
    const varg_list some(argument("files", 12), argument("elapsed", 3.5));
    std::cout << "\nbackup.summary with " << some.count() << " of its " << summary.argument_count()
              << " arguments, valid: " << (summary.has_valid_args(some) ? "yes" : "no")
              << "\n      " << indented(summary.as_string(some)) << '\n';

    const message_t& absent = catalogs.message("backup", "no such key");
    std::cout << "\na key that is not there: \"" << absent.as_string(some)
              << "\", nil: " << (absent == tova::types::nil ? "yes" : "no") << '\n';
}

// Loads invalid files. Each leaves the set as it was and reports where the error is, from the
// inside outward.
void print_errors(message_catalogs& catalogs, const ustring8& folder, const ustring8& locale) {
    std::vector<ustring8> files = tova::system::list_directory(folder);
    std::sort(files.begin(), files.end());
    for (const ustring8& file : files) {
        if (!tova::system::io::is_file(file))
            continue;
        const auto before = catalogs.size();
        const auto result = catalogs.load_file(file, locale);
        std::cout << "\nkind " << result.type << ", catalogs before and after: " << before << ", "
                  << catalogs.size() << '\n'
                  << result.message << '\n';
    }
}

}  // namespace

int main(int count, char** words) {
    const ustring8 locale = locale_from(count > 1 ? words[1] : std::getenv("LANG"));
    const ustring8 folder = count > 2 ? words[2] : TOVA_EXAMPLE_FOLDER;

    message_catalogs catalogs;
    auto result = catalogs.load(folder + "/catalogs", locale);
    if (result.type != message_catalogs::no_error) {
        std::cerr << result << '\n';
        return 1;
    }

    std::cout << "Messages for the locale " << locale << '\n';
    print_all(catalogs, facts());
    print_with_missing_arguments(catalogs);
    std::cout << "\nFaulty catalogs\n";
    print_errors(catalogs, folder + "/broken", locale);
}
