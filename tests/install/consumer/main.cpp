// A program as a user would write it, built outside the source tree against the installed copy.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

int main(int argc, char** argv) {
    const std::string file = std::string(argc > 1 ? argv[1] : ".") + "/greetings.xmc";
    std::ofstream(file) << "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" "
                           "lang=\"en\"><msg name=\"hello\">Hello <arg name=\"who\"/></msg>"
                           "</catalog></xmc>";

    tova::i18n::message_catalogs catalogs;
    tova::i18n::message_catalogs::result_type result =
        catalogs.load(tova::strings::ustring8(file.c_str()), tova::strings::ustring8("en_GB"));
    std::remove(file.c_str());
    if (result.type != 0) {
        std::cerr << result << "\n";
        return 1;
    }

    tova::generic::varg_list arguments;
    arguments.push_back("who", "world");
    const std::string text = catalogs.message("app", "hello").as_string(arguments);
    std::cout << text << "\n";
    return text == "Hello world" ? 0 : 1;
}
