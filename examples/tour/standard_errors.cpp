// Names of errors, and the library's exceptions as standard exceptions.

#include <iostream>
#include <stdexcept>
#include <string>

#include <tova/extras/errors.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::parser::xml_parser;
using tova::strings::ustring8;
using tova::system::date_time::date;

namespace {

// Code that handles only std::exception can call this.
date read_date(unsigned day, unsigned month, unsigned year) {
    return ex::with_standard_errors([=] { return date(day, month, year); }, "reading a date");
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: standard_errors\n\nShows errors by name.\n\nExit status: 0.\n";
        return 0;
    }
    try {
        read_date(1, 2, 2026);
        std::cout << "1 February is a date\n";
        read_date(32, 1, 2026);
    } catch (const std::exception& error) {
        std::cout << error.what() << '\n';
    }

    // An exception can also be converted where it is caught. The message begins with its name.
    try {
        date(1, 13, 2026);
    } catch (const tova::exceptions::exception& error) {
        std::cout << ex::as_std_exception(error).what() << '\n';
    }

    xml_parser parser;
    const ustring8 header = "<?xml version=\"1.0\"?>";
    for (const char* document : {"<a><b></a>", "<a", "<a>&b;</a>"})
        std::cout << document << ": " << ex::name(parser.parse(header + document).type) << '\n';

    tova::i18n::message_catalogs catalogs;
    std::cout << ex::name(catalogs.load("missing.xmc", "en").type) << '\n';
}
