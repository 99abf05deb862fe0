// Plural forms of messages: the rules of each language choose the key.

#include <fstream>
#include <iostream>
#include <string>

#include <tova/extras/plural.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;

namespace {

const char catalog[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<xmc version="1.1">
  <catalog name="app" lang="en">
    <msg name="files.one">one file</msg>
    <msg name="files.other"><arg name="n"/> files</msg>
    <msg name="files@trash.other"><arg name="n"/> deleted</msg>
    <msg name="place.one"><arg name="n"/>st</msg>
    <msg name="place.two"><arg name="n"/>nd</msg>
    <msg name="place.few"><arg name="n"/>rd</msg>
    <msg name="place.other"><arg name="n"/>th</msg>
  </catalog>
  <catalog name="app" lang="pl">
    <msg name="files.one">jeden plik</msg>
    <msg name="files.few"><arg name="n"/> pliki</msg>
    <msg name="files.many"><arg name="n"/> plików</msg>
    <msg name="files.other"><arg name="n"/> pliku</msg>
  </catalog>
</xmc>
)";

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: plurals\n\nExit status: 0, or 1 if the catalog cannot be loaded.\n";
        return 0;
    }
    std::ofstream("plurals.xmc") << catalog;
    for (const char* locale : {"en_GB", "pl"}) {
        tova::i18n::message_catalogs catalogs;
        auto result = catalogs.load(tova::strings::ustring8("plurals.xmc"), locale);
        if (result.type != tova::i18n::message_catalogs::no_error) {
            std::cerr << result << '\n';
            return 1;
        }
        const auto print = [&](const char* key, const std::string& shown, ex::plural_type type) {
            // The displayed string decides, because "1.0" and "1" need different forms in many
            // languages.
            const auto number = ex::plural_number::from_string(shown).value_or_raise();
            const tova::generic::varg_list n(tova::generic::argument("n", shown));
            std::cout << "  "
                      << ex::plural_message(catalogs, "app", key, number, type).as_string(n);
        };

        std::cout << locale << ':';
        for (const char* shown : {"1", "3", "5", "1.5"})
            print("files", shown, ex::plural_type::cardinal);
        print("files@trash", "2", ex::plural_type::cardinal);  // with a context, if there is one
        std::cout << "\n  places:";
        for (const char* shown : {"1", "2", "3", "11"})
            print("place", shown, ex::plural_type::ordinal);  // Polish falls back to English
        std::cout << '\n';
    }
    tova::system::io::remove_file(tova::strings::ustring8("plurals.xmc"));
}
