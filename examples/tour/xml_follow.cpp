// A growing XML file, read as it grows: each call of parse takes what is new.

#include <fstream>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::parser::xml_stream_parser;

namespace {

const char path[] = "follow.xml";

void append(const char* text) {
    std::ofstream(path, std::ios::app) << text;
}

// Takes the nodes that are ready. Those of the open depth come at their start and at their end.
void drain(xml_stream_parser& parser) {
    parser.parse();
    while (!parser.node_queue_empty()) {
        const xml_stream_parser::node node = parser.node_queue_pop();
        const char* const what = node.type == xml_stream_parser::out_of_data       ? "start"
                                 : node.type == xml_stream_parser::end_of_document ? "end"
                                                                                   : "whole";
        std::cout << "  " << what << ' ' << node.name;
        for (const auto& attribute : node.attributes)
            std::cout << ' ' << attribute.first << '=' << attribute.second;
        if (!node.text.empty())
            std::cout << " \"" << node.text << '"';
        std::cout << '\n';
    }
    std::cout << "status " << parser.error() << " after " << parser.parse_offset() << " of "
              << parser.file_length() << " bytes\n";
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: xml_follow\n\n"
                     "Writes follow.xml in the working directory, reads it while it grows, and "
                     "removes it.\n\n"
                     "Exit status: 0, or 1 if the file cannot be read.\n";
        return 0;
    }
    std::ofstream(path).close();
    append("<?xml version='1.0'?>\n<log host='atlas'>\n<event id='1'>start</event>\n");
    xml_stream_parser parser(tova::strings::ustring8(path), 1);  // the root is reported twice
    if (parser.error() != xml_stream_parser::no_error) {
        std::cerr << "cannot follow " << path << '\n';
        return 1;
    }
    drain(parser);

    append("<event id='2'>half an ev");  // a writer may be in the middle of an element
    drain(parser);
    append("ent</event>\n</log>\n");
    drain(parser);
    tova::system::io::remove_file(path);
}
