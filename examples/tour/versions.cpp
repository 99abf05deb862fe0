// Labelled data: a program reads what its older and newer versions have written.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::types::variant;

namespace {

// What version 1 wrote: a name and a size. Values come back as strings.
std::string written_by_version_1() {
    labeled_text_buffer record;
    record.add_value("name", variant("lamp"));
    record.add_value("size", variant(40));
    return record.as_str();
}

// What version 3 writes: it knows a group and a label that version 2 has never heard of.
std::string written_by_version_3() {
    labeled_text_buffer record;
    record.add_value("name", variant("desk"));
    labeled_serialize_buffer* const box = record.create_group("box");
    box->add_value("width", variant(120));
    box->add_value("height", variant(75));
    record.add_value("material", variant("oak"));
    return record.as_str();
}

// Version 2 reads both. Defaults lie below, the stored record is laid over them.
void read_as_version_2(const std::string& stored) {
    labeled_text_buffer record;
    record.add_value("name", variant("unknown"));
    record.create_group("box")->add_value("width", variant(10));
    record.overlay(labeled_text_buffer(stored));

    // An upgrade: version 1 had one size for what is the width of the box now.
    if (record.has_value("size"))
        record.retrieve_group("box")->add_value("width", record.retrieve_value("size"));

    std::cout << record.retrieve_value("name").as_string() << ", width "
              << record.retrieve_group("box")->retrieve_value("width").as_int() << '\n';
    // Labels that this version does not know are still there when the record is stored again.
    std::cout << "  material kept: " << (record.has_label("material") ? "yes" : "no") << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: versions\n\n"
                     "Reads records of an older and of a newer version.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    read_as_version_2(written_by_version_1());
    read_as_version_2(written_by_version_3());
}
