// Follows an XML log while another process writes it, and prints its entries as they arrive.
//
//     tova_example_tail                  writes a log that contains an error, and follows it
//     tova_example_tail FILE [NAME ...]  follows FILE up to its end; after an error it goes on at
//                                        the next element that has one of the names

#include <tova/tova.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <list>
#include <string>
#include <thread>

using tova::parser::xml_stream_parser;

namespace {

void pause_for(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void print(const xml_stream_parser::node& one) {
    switch (one.type) {
    case xml_stream_parser::out_of_data:
        std::cout << "begin " << one.name;
        break;
    case xml_stream_parser::end_of_document:
        std::cout << "end " << one.name;
        break;
    default:
        std::cout << one.name << " in line " << one.line;
        break;
    }
    for (const auto& attribute : one.attributes)
        std::cout << ", " << attribute.first << " is " << attribute.second;
    if (!one.text.empty())
        std::cout << ": " << one.text;
    std::cout << std::endl;
}

int follow(const std::string& path, const std::list<std::string>& known) {
    xml_stream_parser parser(path, 1);
    for (;;) {
        parser.parse();
        while (!parser.node_queue_empty()) {
            const xml_stream_parser::node one = parser.node_queue_pop();
            print(one);
            // Don't wait for the status: it stays 0 if the data end after a space in the last tag.
            if (one.type == xml_stream_parser::end_of_document)
                return EXIT_SUCCESS;
        }

        // Taking a node may have parsed on, so this is not always what `parse` returned.
        const xml_stream_parser::error_type status = parser.error();
        const bool is_error = status >= xml_stream_parser::mismatched_end_tag;
        if (is_error)
            std::cout << "error " << status << " in line " << parser.line() << std::endl;
        if (status >= xml_stream_parser::internal_failure || (is_error && known.empty()))
            return EXIT_FAILURE;

        // Status 2 means that an earlier search has found nothing yet.
        const bool is_lost = is_error || status == xml_stream_parser::not_recovered;
        if (is_lost && parser.recover(known) == xml_stream_parser::no_error)
            continue;
        pause_for(20);
    }
}

void write_log(const std::string& path) {
    std::ofstream log(path, std::ios::binary);
    for (const char* piece : {
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log host='one'>\n",
             "  <entry level='info'>service star",
             "ted</entry>\n  <entry level='info'>listening on port 80</entry>\n",
             "  <entry level='warning' level='error'>this attribute occurs twice</entry>\n",
             "  <entry level='info'>going on</entry>\n",
             "</log>\n",
         }) {
        log << piece << std::flush;
        pause_for(50);
    }
}

int follow_own_log() {
    char folder[] = "/tmp/tova_example_tail_XXXXXX";
    if (::mkdtemp(folder) == nullptr)
        return EXIT_FAILURE;
    const std::string path = std::string(folder) + "/log.xml";
    std::ofstream(path, std::ios::binary).close();  // the parser wants an existing file

    const pid_t writer = ::fork();
    if (writer == 0) {
        write_log(path);
        ::_exit(EXIT_SUCCESS);
    }
    const int result = writer == -1 ? EXIT_FAILURE : follow(path, {"entry"});
    if (writer != -1)
        ::waitpid(writer, nullptr, 0);
    std::remove(path.c_str());
    ::rmdir(folder);
    return result;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2)
        return follow_own_log();
    return follow(arguments[1], std::list<std::string>(arguments + 2, arguments + count));
}
