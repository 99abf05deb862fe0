// A tree of labels in a file that is either read completely or rejected.

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include <tova/extras/data_file.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::serialization::labeled_text_buffer;
using tova::types::variant;

namespace {

const char path[] = "drawing.dat";

std::string bytes_of_file() {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void load_and_report(const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    labeled_text_buffer drawing;
    const auto status = ex::load_data(path, drawing);
    std::cout << (status ? "loaded" : status.message) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: data_files\n\n"
                     "Writes drawing.dat in the working directory, damages it in several ways and "
                     "removes it.\n\n"
                     "Exit status: 0, or 1 if the file cannot be written.\n";
        return 0;
    }
    labeled_text_buffer drawing;
    drawing.add_value("title", "Harbour");
    drawing.add_value("draft", true);
    drawing.create_group("pen")->add_value("width", 0.1 + 0.2);
    ex::remove_label(drawing, "draft");
    const auto stored = ex::store_data(path, drawing);
    if (!stored) {
        std::cerr << stored.message << '\n';
        return 1;
    }

    labeled_text_buffer loaded;
    ex::load_data(path, loaded);
    ex::walk(loaded, [](const std::vector<std::string>& labels, const variant& value) {
        for (const std::string& label : labels)
            std::cout << '/' << label;
        std::cout << " = " << value.as_string() << '\n';
    });

    const std::string bytes = bytes_of_file();
    load_and_report(bytes);
    load_and_report(bytes.substr(0, bytes.size() / 2));
    load_and_report(bytes + '\n');
    std::string flipped = bytes;
    flipped[bytes.size() - 3] ^= 1;
    load_and_report(flipped);
    load_and_report("[settings]\n");
    tova::system::io::remove_file(path);
}
