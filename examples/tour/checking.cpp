// Input from outside: a value, or an error with its position.

#include <iostream>
#include <string>

#include <tova/extras/checked.hpp>
#include <tova/tova.hpp>

namespace ex = tova::extras;
using tova::strings::code_page;
using tova::strings::ustring8;

namespace {

void try_port(const std::string& text) {
    const auto port = ex::try_parse<unsigned short>(text);
    std::cout << '"' << text << "\": ";
    if (port)
        std::cout << *port << '\n';
    else
        std::cout << port.error() << " at " << port.position() << ", using " << port.value_or(8080)
                  << '\n';
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: checking\n\nReads text and numbers.\n\nExit status: 0.\n";
        return 0;
    }
    for (const char* text : {"443", "70000", "-1", "80x", "", "4 3"})
        try_port(text);
    std::cout << ex::try_parse<long>("ff", 16).value() << ' '
              << ex::try_parse<double>("2.5e-1").value() << ' ' << ex::exact(0.1 + 0.2) << '\n';

    // Strict UTF-8: no overlong form, no surrogate, nothing cut off.
    for (const char* text : {"Zoë", "caf\xE9", "\xC0\xAF", "\xED\xA0\x80", "abc\xE2\x82"}) {
        const auto wide = ex::try_utf8_to_utf16(ustring8(text));
        if (wide)
            std::cout << wide.value().size() << " units\n";
        else
            std::cout << wide.error() << " at byte " << wide.position() << '\n';
    }

    const code_page latin(code_page::encoding_1252);
    const auto encoded = ex::try_encode(latin, "5 € or ½ Ж");
    std::cout << encoded.error() << " at byte " << encoded.position() << '\n';
}
