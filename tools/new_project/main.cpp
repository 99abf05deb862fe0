// Greets in the language of the setting "locale". Run it in the directory that holds catalogs/ and
// @NAME@.cfg:
//
//     build/@NAME@ [-locale=LOCALE] [-user.name=NAME]
//
// A setting comes from the command line, else from @NAME@.cfg, else from the environment.

#include <iostream>

#include <tova/tova.hpp>

using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;

int main(int count, char** words, char** variables) {
    tova::config::config_manager settings;
    settings.init(tova::config::std_config_dispatch(count, words, variables, "@NAME@.cfg", ""));
    settings.load();

    message_catalogs catalogs;
    auto loaded = catalogs.load("catalogs", settings.get_value("locale", "en").as_string());
    if (loaded.type != message_catalogs::no_error) {
        std::cerr << loaded << '\n';
        return 1;
    }

    const varg_list arguments(argument("user", settings.get_value("user.name", "world")),
                              argument("bytes", settings.get_value("disk.used", 0)));
    for (const char* key : {"greeting", "disk"})
        std::cout << catalogs.message("@NAME@", key).as_string(arguments) << '\n';
}
