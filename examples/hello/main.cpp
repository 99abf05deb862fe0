#include <iostream>
#include <tova/tova.hpp>

int main(int count, char** words) {
    const tova::strings::ustring8 locale = count > 1 ? words[1] : "en";
    if (locale == "--help") {
        std::cout << "usage: hello [LOCALE]\nExit status: 0, or 1 if no catalog can be loaded.\n";
        return 0;
    }

    tova::i18n::message_catalogs catalogs;
    auto result = catalogs.load("catalogs", locale);  // every .xmc file of the directory
    if (result.type != tova::i18n::message_catalogs::no_error) {
        std::cerr << result << '\n';  // names the element, the line and the file
        return 1;
    }

    tova::generic::varg_list arguments;
    arguments.push_back("user", "Maria");
    arguments.push_back("bytes", 48318382080);
    arguments.push_back("seconds", 3725.5);
    std::cout << catalogs.message("report", "upload").as_string(arguments) << '\n';
}
