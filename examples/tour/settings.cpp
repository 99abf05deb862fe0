// Settings from the command line, a file and the environment: the first source that knows a key
// wins.

#include <iostream>
#include <string>
#include <vector>

#include <tova/tova.hpp>

using tova::config::config_manager;
using tova::config::std_config_dispatch;
using tova::strings::ustring8;
using tova::types::variant;

namespace {

const char file_text[] = "[server]\n"
                         "host = atlas\n"
                         "port = 8080\n"
                         "# Quotes keep spaces.\n"
                         "motd = \"Good morning\"\n"
                         "[search_paths]\n"
                         "dir[] = /usr/share, /opt/share\n";

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: settings\n\n"
                     "Writes demo.cfg in the working directory, reads settings from three sources "
                     "and removes it.\n\n"
                     "Exit status: 0, or 1 if the file cannot be written.\n";
        return 0;
    }
    if (tova::system::store_file(ustring8("demo.cfg"), ustring8(file_text)) != 0) {
        std::cerr << "cannot write demo.cfg\n";
        return 1;
    }
    // A real program passes the arguments of main. The arrays must outlive the manager.
    const char* const arguments[] = {"program", "-server.port=9090", "-verbose", nullptr};
    const char* const environment[] = {"server_host=other", "editor=vi", nullptr};

    config_manager settings;
    settings.init(std_config_dispatch(3, arguments, environment, "demo.cfg", ""));
    settings.load();

    std::cout << "port    " << settings.get_value("server.port", 80).as_int() << '\n'
              << "host    " << settings.get_value("server.host", "localhost").as_string() << '\n'
              << "motd    " << settings.get_value("server.motd", "").as_string() << '\n'
              << "editor  " << settings.get_value("editor", "").as_string() << '\n'
              << "verbose " << settings.value_exist("verbose") << '\n'
              << "timeout " << settings.get_value("server.timeout", 30).as_int() << '\n';

    std::vector<variant> folders;
    settings.get_array("search_paths.dir", folders);
    for (const variant& folder : folders)
        std::cout << "folder  " << folder.as_string() << '\n';
    tova::system::io::remove_file("demo.cfg");
}
