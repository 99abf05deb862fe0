// Whole files and directories: store, load, list, move, remove.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <tova/tova.hpp>

using tova::strings::ustring8;

namespace io = tova::system::io;

namespace {

void print_files_below(const ustring8& directory) {
    std::vector<ustring8> files;
    tova::system::get_directory_files(directory, files);
    std::sort(files.begin(), files.end());  // the order is that of the file system
    for (const ustring8& file : files)
        std::cout << "  " << file << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: files\n\n"
                     "Makes a directory \"notes\" in the working directory, fills it, lists it and "
                     "removes it.\n\n"
                     "Exit status: 0, or 1 if the directory cannot be written.\n";
        return 0;
    }
    // The path ends in "/": what follows the last one is not created.
    tova::system::create_directory(ustring8("notes/2026/"));
    if (tova::system::store_file(ustring8("notes/2026/june.txt"), ustring8("Sun and rain.\n")) !=
        0) {
        std::cerr << "cannot write notes/2026/june.txt\n";
        return 1;
    }
    tova::system::store_file(ustring8("notes/todo.txt"), ustring8("Buy bread.\n"));
    std::cout << "stored\n";
    print_files_below("notes");

    ustring8 content;
    if (tova::system::load_file(ustring8("notes/todo.txt"), content) == 0)
        std::cout << "todo.txt: " << content;
    if (tova::system::load_file(ustring8("notes/missing.txt"), content) != 0)
        std::cout << "missing.txt: cannot be read, content is still " << content.size()
                  << " bytes\n";

    io::move("notes/done.txt", "notes/todo.txt");  // the target comes first
    std::cout << "moved: " << (io::exists("notes/done.txt") ? "yes" : "no") << '\n';

    io::remove_file("notes/done.txt");
    io::remove_file("notes/2026/june.txt");
    io::remove_dir("notes/2026");
    io::remove_dir("notes");
    std::cout << "removed: " << (io::exists("notes") ? "no" : "yes") << '\n';
}
