// A catalog in two languages: write it, load it for a locale, look messages up.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::strings::ustring8;

namespace {

const char catalog_text[] = R"(<?xml version="1.0"?>
<xmc version="1.1">
  <catalog name="mail" lang="en">
    <msg name="subject">Welcome, <arg name="who"/>!</msg>
    <msg name="footer">Sent by the robot.</msg>
  </catalog>
  <catalog name="mail" lang="sv">
    <msg name="subject">Välkommen, <arg name="who"/>!</msg>
  </catalog>
</xmc>
)";

// A locale's own messages win; what it lacks comes from the more general ones, then from "en".
void print_for(const ustring8& locale) {
    message_catalogs catalogs;
    auto result = catalogs.load("mail.xmc", locale);
    if (result.type != message_catalogs::no_error) {
        std::cout << result << '\n';
        return;
    }
    std::cout << locale << ": "
              << catalogs.message("mail", "subject").as_string(varg_list(argument("who", "Mia")))
              << ' ' << catalogs.message("mail", "footer").as_string(varg_list()) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: catalogs\n\n"
                     "Writes mail.xmc in the working directory, loads it and removes it.\n\n"
                     "Exit status: 0, or 1 if the file cannot be written.\n";
        return 0;
    }
    if (tova::system::store_file(ustring8("mail.xmc"), ustring8(catalog_text)) != 0) {
        std::cerr << "cannot write mail.xmc\n";
        return 1;
    }
    print_for("en");
    print_for("sv_SE");
    print_for("it");

    // An error names the element and the file, and the set stays as it was.
    tova::system::store_file(
        ustring8("mail.xmc"),
        ustring8("<?xml version='1.0'?><xmc version='1.1'><catalogue/></xmc>"));
    print_for("en");
    tova::system::io::remove_file("mail.xmc");
}
