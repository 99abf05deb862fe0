// Legacy 8-bit text: from Windows-1252, Shift-JIS and KOI8-R to UTF-8 and back.

#include <iomanip>
#include <iostream>
#include <string>

#include <tova/tova.hpp>

using tova::strings::code_page;
using tova::strings::ustring8;

namespace {

void print_bytes(const std::string& bytes) {
    std::cout << std::hex << std::uppercase << std::setfill('0');
    for (const unsigned char byte : bytes)
        std::cout << ' ' << std::setw(2) << static_cast<int>(byte);
    std::cout << std::dec << '\n';
}

void there_and_back(const char* title, const code_page& page, const ustring8& text) {
    const std::string bytes = page.encode(text);
    std::cout << title << ": " << text << '\n' << "  bytes:";
    print_bytes(bytes);
    std::cout << "  back:  " << page.as_utf8(bytes) << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: code_pages\n\n"
                     "Converts strings to legacy code pages and back.\n\n"
                     "Exit status: 0, or 1 if the system lacks a code page.\n";
        return 0;
    }
    try {
        there_and_back("Windows-1252", code_page(code_page::encoding_1252), "naïve café – 5 €");
        there_and_back("Shift-JIS", code_page(code_page::encoding_932), "東京");
        there_and_back("KOI8-R", code_page(code_page::encoding_20866), "Привет");

        // A character that the page lacks becomes "?", once for each of its UTF-8 bytes.
        there_and_back("ISO 8859-1 has no €", code_page(code_page::encoding_28591), "5 €");

        // Only a page number that is not in the list raises.
        code_page().encode(ustring8("text"));
    } catch (const tova::exceptions::invalid_argument_value& error) {
        std::cout << "no code page chosen: " << error.get_message() << '\n';
    } catch (const tova::exceptions::runtime_error& error) {
        std::cerr << error.get_message() << '\n';
        return 1;
    }
}
