// `code_page`: any bytes in each code page, in both directions. The result is that of one iconv
// call with room for everything.
//
// Input: one byte for the code page, then the text. With great values of the byte the text is
// repeated, because only the characters of long texts are kept in a table.
#include <tova/strings/code_page.hpp>
#include <tova/strings/unicode.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using fuzz_support::require;
using tova::strings::code_page;
using tova::strings::ustring8;

const int pages[] = {1,     4,     932,   936,   949,   950,   1250,  1251,  1252,  1253,
                     1254,  1255,  1256,  1257,  1258,  20866, 21866, 28591, 28592, 28593,
                     28594, 28595, 28596, 28597, 28598, 28599, 28605, 125100};

const std::size_t long_text = 5000;

struct converted {
    std::string text;
    bool cut;  // the input ended in the middle of a sequence
};

converted convert(const std::string& to, const std::string& from, std::string input) {
    const iconv_t handle = iconv_open(to.c_str(), from.c_str());
    require(handle != reinterpret_cast<iconv_t>(-1));
    std::string output(16 * input.size() + 16, '\0');
    char* read = &input[0];
    std::size_t left = input.size();
    char* write = &output[0];
    std::size_t room = output.size();
    converted result = {"", false};
    while (left > 0 && !result.cut) {
        if (iconv(handle, &read, &left, &write, &room) != static_cast<std::size_t>(-1))
            continue;
        require(errno == EILSEQ || errno == EINVAL);
        if (errno == EINVAL) {
            result.cut = true;
        } else {
            if (left > 0) {  // iconv may have passed the refused character already
                ++read;
                --left;
            }
            *write++ = '?';
            --room;
        }
    }
    iconv_close(handle);
    result.text = output.substr(0, output.size() - room);
    return result;
}

void check(const std::string& actual, const converted& expected) {
    if (actual == expected.text)
        return;
    // A cut sequence that meets a full output ends in two NUL bytes.
    require(expected.cut && actual == expected.text + std::string(2, '\0'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size == 0)
        return 0;
    const std::size_t page_count = sizeof pages / sizeof *pages;
    const int number = pages[data[0] % page_count];
    const code_page page(static_cast<code_page::encoding_type>(number));
    const std::string name = page.to_system_type(page.type());
    std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] / page_count >= 8)
        while (!text.empty() && text.size() < long_text)
            text += text;

    const ustring8 utf8 = page.as_utf8(text);
    check(utf8, convert("UTF-8", name, text));
    require(page.as_ustring(text) == utf8);
    require(page.as_utf16(text) == utf8_to_utf16(utf8));
    require(page.as_utf32(text) == utf8_to_utf32(utf8));

    check(page.encode(ustring8(text)), convert(name, "UTF-8", text));
    require(page.encode(utf8_to_utf32(utf8)) == page.encode(utf32_to_utf8(utf8_to_utf32(utf8))));
    return 0;
}
