// Saves a drawing in the three encodings of `serialization`, shows their bytes and reads them back:
//
//     tova_example_state [FOLDER]
//
// The files drawing.text, drawing.binary and drawing.labels go to the folder, or to the working
// folder. docs/serialization.md describes the encodings byte by byte.

#include <tova/tova.hpp>

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

using tova::memory::pointers::rc_pointer;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;
using tova::system::date_time::date;
using tova::types::color_t;
using tova::types::variant;

namespace {

struct drawing {
    std::string title;
    date begun;
    color_t ink;
    double width;                // of the pen, in millimeters
    std::vector<short> strokes;  // lengths, negative for a stroke backwards
};

const unsigned int digits =
    6;  // significant digits of a floating-point value, in the text encoding

std::ostream& operator<<(std::ostream& out, const date& day) {
    return out << day.year() << '-' << std::setfill('0') << std::setw(2) << day.month() << '-'
               << std::setw(2) << day.day() << std::setfill(' ');
}

std::ostream& operator<<(std::ostream& out, const color_t& color) {
    return out << int(color.red()) << '/' << int(color.green()) << '/' << int(color.blue()) << '/'
               << int(color.alpha());
}

void print(const drawing& shown) {
    std::cout << "  " << shown.title << ", begun " << shown.begun << ", ink " << shown.ink << ", "
              << shown.width << " mm, strokes";
    for (short stroke : shown.strokes)
        std::cout << ' ' << stroke;
    std::cout << '\n';
}

// --- Bytes, as a reader of files sees them -------------------------------------------------------

void print_bytes(const std::string& bytes, const std::string& remark) {
    const std::size_t row = 12;
    for (std::size_t begin = 0; begin < bytes.size(); begin += row) {
        const std::size_t end = std::min(begin + row, bytes.size());
        std::ostringstream line;
        line << std::hex << std::uppercase << std::setfill('0');
        for (std::size_t i = begin; i < end; ++i)
            line << ' ' << std::setw(2) << int(static_cast<unsigned char>(bytes[i]));
        if (begin == 0)
            line << std::string(3 * (begin + row - end) + 2, ' ') << remark;
        std::cout << " " << line.str() << '\n';
    }
}

// Prints the bytes that a buffer has gained since the last call.
class growth {
public:
    explicit growth(const serialize_buffer& buffer) : m_buffer(buffer), m_shown(0) {}

    void print(const std::string& remark) {
        print_bytes(m_buffer.as_str().substr(m_shown), remark);
        m_shown = m_buffer.as_str().size();
    }

private:
    const serialize_buffer& m_buffer;
    std::size_t m_shown;
};

// The text of a tree is pairs of strings. A label that ends in a space introduces a group.
void print_tree(const std::string& text, const std::string& path) {
    const serialize_text_buf strings(text);
    while (!strings.at_end()) {
        const std::string label = strings.read_string();
        const std::string payload = strings.read_string();
        serialize_text_buf pair;
        pair.append_string(label);
        if (label.back() != ' ') {
            pair.append_string(payload);
            print_bytes(pair.as_str(), path + label);
            continue;
        }
        const std::string group = path + label.substr(0, label.size() - 1);
        const std::string length = std::to_string(payload.size());
        print_bytes(pair.as_str() + length + '\x01',
                    "the group " + group + ", of " + length + " bytes:");
        print_tree(payload, group + '.');
        print_bytes("\x01", "the end of " + group);
    }
}

// --- A sequence of values, in either encoding ----------------------------------------------------

// The strokes are binary in every encoding: a buffer takes any other buffer as nested bytes.
serialize_binary_buf packed(const std::vector<short>& strokes) {
    serialize_binary_buf bytes;
    for (short stroke : strokes)
        bytes.append_int16(stroke);
    return bytes;
}

std::vector<short> unpacked(const std::string& bytes) {
    const serialize_binary_buf buffer(bytes);
    std::vector<short> strokes;
    while (!buffer.at_end())
        strokes.push_back(buffer.read_int16());
    return strokes;
}

void write(const drawing& source, serialize_buffer& buffer) {
    growth shown(buffer);
    buffer.append_string(source.title);
    shown.print("string, the title");

    const rc_pointer<serialize_buffer> day(buffer.create());
    day->append_uint16(static_cast<unsigned short>(source.begun.year()));
    day->append_uint8(static_cast<unsigned char>(source.begun.month()));
    day->append_uint8(static_cast<unsigned char>(source.begun.day()));
    buffer.append_buffer(*day);
    shown.print("buffer: year, month and day");

    buffer.append_int32(source.ink.as_int32());
    shown.print("int32, the colour's word");
    buffer.append_double(source.width, digits);
    shown.print("double, the width");
    buffer.append_buffer(packed(source.strokes));
    shown.print("buffer, binary: the strokes, each an int16");
}

drawing read(const serialize_buffer& buffer) {
    drawing result;
    result.title = buffer.read_string();
    const rc_pointer<serialize_buffer> day(buffer.read_buffer());
    result.begun.year(day->read_uint16());
    result.begun.month(day->read_uint8());
    result.begun.day(day->read_uint8());
    result.ink = color_t(buffer.read_int32());
    result.width = buffer.read_double();
    // Without strokes the nested buffer is empty and last, which reads as null in binary.
    const rc_pointer<serialize_buffer> strokes(buffer.read_buffer());
    if (strokes)
        result.strokes = unpacked(strokes->as_str());
    return result;
}

// --- A tree of labels ----------------------------------------------------------------------------

void write(const drawing& source, labeled_text_buffer& tree) {
    tree.add_value("title", source.title);
    labeled_serialize_buffer& begun = *tree.create_group("begun");
    begun.add_value("year", source.begun.year());
    begun.add_value("month", source.begun.month());
    begun.add_value("day", source.begun.day());
    labeled_serialize_buffer& pen = *tree.create_group("pen");
    pen.add_value("ink", source.ink.as_int32());
    pen.add_value("width", source.width);
    tree.add_value("strokes", packed(source.strokes).as_str());
}

drawing read(const labeled_text_buffer& tree) {
    const labeled_serialize_buffer* const begun = tree.retrieve_group("begun");
    const labeled_serialize_buffer* const pen = tree.retrieve_group("pen");
    if (begun == nullptr || pen == nullptr)
        throw std::runtime_error("a group is missing");
    drawing result;
    result.title = tree.retrieve_value("title").as_ustring();
    result.begun.year(begun->retrieve_value("year").as_uint32());
    result.begun.month(begun->retrieve_value("month").as_uint32());
    result.begun.day(begun->retrieve_value("day").as_uint32());
    result.ink = color_t(pen->retrieve_value("ink").as_int32());
    result.width = pen->retrieve_value("width").as_double();
    result.strokes = unpacked(tree.retrieve_value("strokes").as_ustring());
    return result;
}

const char* type_name(const variant& value) {
    if (value.type() == typeid(std::string))
        return "std::string";
    if (value.type() == typeid(int))
        return "int";
    if (value.type() == typeid(unsigned int))
        return "unsigned int";
    return value.type() == typeid(double) ? "double" : "another type";
}

void print_types(const labeled_text_buffer& written, const labeled_text_buffer& loaded) {
    const struct {
        const char* group;
        const char* label;
    } places[] = {{"begun", "day"}, {"begun", "month"},   {"begun", "year"}, {"pen", "ink"},
                  {"pen", "width"}, {nullptr, "strokes"}, {nullptr, "title"}};
    for (const auto& place : places) {
        const auto value_in = [&](const labeled_text_buffer& tree) {
            return place.group == nullptr
                       ? tree.retrieve_value(place.label)
                       : tree.retrieve_group(place.group)->retrieve_value(place.label);
        };
        const std::string name =
            (place.group == nullptr ? "" : std::string(place.group) + '.') + place.label;
        const std::string before = type_name(value_in(written));
        const std::string after = type_name(value_in(loaded));
        std::cout << "  " << std::left << std::setw(13) << name << std::right
                  << (before == after ? before + ", as it was" : before + " -> " + after) << '\n';
    }
}

// --- Files ---------------------------------------------------------------------------------------

void store(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

template <typename Buffer>
void show_sequence(const drawing& source, const std::string& path) {
    Buffer buffer;
    write(source, buffer);
    store(path, buffer.as_str());
    std::cout << "Read back from " << buffer.as_str().size() << " bytes:\n";
    print(read(Buffer(contents(path))));
}

void show_tree(const drawing& source, const std::string& path) {
    labeled_text_buffer tree;
    write(source, tree);
    print_tree(tree.as_str(), "");
    store(path, tree.as_str());
    const labeled_text_buffer loaded(contents(path));
    std::cout << "Read back from " << tree.as_str().size() << " bytes:\n";
    print(read(loaded));
    std::cout << "The types of its values, written and read:\n";
    print_types(tree, loaded);
}

}  // namespace

int main(int count, char** words) {
    const std::string folder = count > 1 ? std::string(words[1]) + '/' : "";
    const drawing harbour = {"Harbour, \xC3\xA9tude",
                             date(29, 2, 2024),
                             color_t(200, 64, 0, 255),
                             0.35,
                             {120, -45, 300}};
    try {
        std::cout << "The drawing:\n";
        print(harbour);
        std::cout << "\nAs text, in drawing.text:\n";
        show_sequence<serialize_text_buf>(harbour, folder + "drawing.text");
        std::cout << "\nIn binary, in drawing.binary:\n";
        show_sequence<serialize_binary_buf>(harbour, folder + "drawing.binary");
        std::cout << "\nUnder labels, in drawing.labels:\n";
        show_tree(harbour, folder + "drawing.labels");
    } catch (const std::runtime_error& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
