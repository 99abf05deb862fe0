// Declared options: types, help, errors that name their source, and a save that keeps comments.

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <tova/extras/options.hpp>
#include <tova/tova.hpp>

using tova::extras::options;

namespace {

const char path[] = "backup.cfg";

void declare(options& all) {
    all.add("keep", 7, "days to keep").short_name('k').environment("BACKUP_KEEP").range(1, 365);
    all.add("target.folder", "/backup", "where to").long_name("to");
    all.add("skip", std::vector<std::string>(), "patterns to skip").short_name('x');
    all.flag("verbose", "say more").short_name('v');
    all.settings_file(path);
    all.takes_arguments("FOLDER...", 1);
}

void run(const std::vector<const char*>& words) {
    options all("backup", "1.4", "Copies folders.");
    declare(all);
    const auto loaded = all.load(static_cast<int>(words.size()), words.data());
    if (loaded.ends_program) {
        loaded.report(std::cout, std::cout);
        return;
    }
    std::cout << all.arguments()[0] << " to " << all.get<std::string>("target.folder") << " ("
              << all.source("target.folder") << "), " << all.get<int>("keep") << " days ("
              << all.source("keep") << ")\n";
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: options\n\n"
                     "Writes backup.cfg in the working directory, reads options from several "
                     "sources and removes it.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    std::ofstream(path) << "# Of the night.\nkeep = 30   # a month\n";
    run({"backup", "/home/mia"});
    run({"backup", "--to", "/mnt/disk", "-vk14", "-x", "*.o", "--", "-odd name"});
    run({"backup", "--keep=400", "--taget.folder=/x", "."});
    run({"backup", "--help"});

    // A save changes only the values that were set.
    options all("backup");
    declare(all);
    const std::vector<const char*> again = {"backup", "."};
    all.load(2, again.data());
    all.set("keep", 60);
    all.set("target.folder", "/mnt/big disk");
    std::cout << all.save().message << std::ifstream(path).rdbuf();
    tova::system::io::remove_file(path);
}
