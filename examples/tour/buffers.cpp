// Typed values in one string: the text and the binary encoding behind one interface.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::memory::pointers::rc_pointer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

namespace {

// The content carries no types: write and read in the same order.
void write_score(serialize_buffer& buffer, const std::string& player, int points, double seconds) {
    buffer.append_string(player);
    buffer.append_int32(points);
    buffer.append_double(seconds, 17);  // all digits, for an encoding that writes digits
}

void print_scores(const serialize_buffer& buffer) {
    while (!buffer.at_end()) {
        const std::string player = buffer.read_string();
        const int points = buffer.read_int32();
        std::cout << "  " << player << ": " << points << " points in " << buffer.read_double()
                  << " s\n";
    }
}

void write_and_read(const char* title, serialize_buffer& buffer) {
    write_score(buffer, "Mia", 1200, 61.25);
    write_score(buffer, "Tom", -5, 0.1);
    std::cout << title << ", " << buffer.as_str().size() << " bytes\n";

    // A reader makes a buffer of the same class from the stored bytes.
    const rc_pointer<serialize_buffer> reader = buffer.create();
    reader->assign(buffer.as_str());
    print_scores(*reader);
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: buffers\n\n"
                     "Writes values in two encodings and reads them back.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    serialize_text_buf text;
    write_and_read("text", text);
    serialize_binary_buf binary;
    write_and_read("binary", binary);
}
