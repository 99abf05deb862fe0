// Reads a growing, rotated log as events. The follower sleeps until the writer has added more.

#include <chrono>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include <tova/extras/follow.hpp>
#include <tova/tova.hpp>

using tova::extras::follow_event;

namespace {

const char path[] = "follow.log.xml";

// In real life this is another process. It is slow, and it splits its output anywhere.
void write_log() {
    for (const char* piece :
         {"<?xml version='1.0'?>\n<log host='atlas'>\n<app:event i", "d='1'>on",
          "e &amp; two</app:event>\n<event", "/></wrong>\n<event>", "three", "</event>\n"}) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::ofstream(path, std::ios::app) << piece;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::ofstream("next.xml") << "<log host='borealis'></log>\n";
    tova::system::io::move(tova::strings::ustring8(path), tova::strings::ustring8("next.xml"));
}

void print(const follow_event& event) {
    std::cout << std::string(2 * event.depth, ' ');
    switch (event.kind) {
    case follow_event::start:
        std::cout << "start " << event.name;
        for (const auto& attribute : event.attributes)
            std::cout << ' ' << attribute.first << '=' << attribute.second;
        break;
    case follow_event::text:
        std::cout << "text \"" << event.content << '"';
        break;
    case follow_event::end:
        std::cout << "end " << event.name;
        break;
    case follow_event::error:
        std::cout << name(event.error_code);
        break;
    case follow_event::rotated:
        std::cout << "the log was rotated";
        break;
    }
    std::cout << (event.line > 0 ? ", line " + std::to_string(event.line) : "") << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout
            << "usage: follow\n\n"
               "Follows follow.log.xml in the working directory while a thread writes it, and "
               "removes it.\n\n"
               "Exit status: 0.\n";
        return 0;
    }
    // After an error the follower resumes at the next element of that name.
    tova::extras::xml_follower log(path, {"event"});
    std::thread writer(write_log);
    follow_event event;
    while (log.next(event)) {
        print(event);
        if (event.kind == follow_event::end && event.depth == 1)
            log.stop();  // works here, in any thread and in a signal handler
    }
    writer.join();
    tova::system::io::remove_file(tova::strings::ustring8(path));
}
