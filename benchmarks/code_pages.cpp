// Code pages, both ways: 1 MiB for each of the pages that have a number of their own.
//
// clean: every character has a place in the page. unmappable: one character in fifty has none, and
// is replaced. A cell converts for all pages in turn; encode_page and decode_page are the same work
// for one page. The peer is iconv, called in a loop that replaces whatever iconv rejects. Our plain
// form does the same with a growing string. Cells in which that takes seconds have no plain column.
#include <tova/strings/code_page.hpp>

#include "../tests/strings/code_page_oracle.hpp"
#include "cell.hpp"

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace {

using bench_support::cell;
using tova::strings::code_page;
using tova::strings::ustring8;

const std::size_t text_size = 1 << 20;  // bytes in the page, about

const int page_numbers[] = {4,     932,   936,   949,   950,   1250,  1251,  1252,  1253,
                            1254,  1255,  1256,  1257,  1258,  20866, 21866, 28591, 28592,
                            28593, 28594, 28595, 28596, 28597, 28598, 28599, 28605, 125100};

bool has_two_bytes(int number) {
    return number == 932 || number == 936 || number == 949 || number == 950;
}

struct page {
    explicit page(int page_number)
        : number(page_number), ours(static_cast<code_page::encoding_type>(page_number)),
          name(ours.to_system_type(ours.type())) {}

    int number;
    code_page ours;
    std::string name;
    std::string clean, unmappable;  // in the page
    ustring8 clean_utf8, unmappable_utf8;

    bool returns(const std::string& bytes) const {
        return ours.encode(ustring8(ours.as_utf8(bytes + "\n"))) == bytes + "\n" &&
               ours.as_utf8(bytes + "\n").find('?') == std::string::npos;
    }

    // Some characters beyond ASCII that the page has, in its bytes.
    std::vector<std::string> alphabet() const {
        std::vector<std::string> made;
        if (number == code_page::encoding_utf8)
            return {"\u00e4", "\u00e9", "\u0434", "\u0436", "\u5b57", "\u4e32", "\u3042"};
        if (has_two_bytes(number)) {
            const int first = number == 932 ? 0x88 : 0xB0;
            for (int lead = first; lead < first + 16; ++lead) {
                for (int trail = 0xA1; trail < 0xFD; trail += 5) {
                    const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail), 0};
                    if (returns(bytes))
                        made.push_back(bytes);
                }
            }
        } else {
            for (int byte = 0xA0; byte < 0x100; ++byte)
                if (returns(std::string(1, static_cast<char>(byte))))
                    made.push_back(std::string(1, static_cast<char>(byte)));
        }
        return made;
    }

    // A byte that the page doesn't know, or none.
    std::string unknown_byte() const {
        for (int byte = 0xFF; byte >= 0x80; --byte) {
            const std::string one(1, static_cast<char>(byte));
            if (ours.as_utf8(one + "\n") == "?\n")
                return one;
        }
        return std::string();
    }

    void fill() {
        if (!clean.empty())
            return;
        const std::vector<std::string> letters = alphabet();
        const std::string unknown = unknown_byte();
        std::mt19937 random(1);
        for (std::size_t count = 1; clean.size() < text_size; ++count) {
            // Words in ASCII and words of the page's own characters, and short lines.
            const bool is_ascii = letters.empty() || random() % 4 == 0;
            std::string word;
            for (unsigned left = 2 + random() % 8; left > 0; --left)
                word += is_ascii ? std::string(1, static_cast<char>('a' + random() % 26))
                                 : letters[random() % letters.size()];
            word += count % 10 == 0 ? "\n" : " ";
            clean += word;
            // A word and its separator have 6 or 7 characters.
            const bool is_refused = count % 8 == 0;
            unmappable += (is_refused ? unknown : std::string()) + word;
            unmappable_utf8 += is_refused ? refused_in_utf8() : std::string();
            unmappable_utf8 += ours.as_utf8(word + "\n");
        }
        clean += "\n";
        unmappable += "\n";
        clean_utf8 = ours.as_utf8(clean);
    }

    // A character that only UTF-8 has, and for UTF-8 an invalid byte.
    std::string refused_in_utf8() const {
        return number == code_page::encoding_utf8 ? "\xFF" : "\U0001F600";
    }
};

std::string call_iconv(const std::string& to, const std::string& from, const std::string& text) {
    const iconv_t handle = iconv_open(to.c_str(), from.c_str());
    std::string result(3 * text.size(), '\0');
    char* read = const_cast<char*>(text.data());
    std::size_t left = text.size();
    char* write = &result[0];
    std::size_t room = result.size();
    while (left > 0 && iconv(handle, &read, &left, &write, &room) == static_cast<std::size_t>(-1) &&
           errno == EILSEQ) {
        ++read;
        --left;
        *write++ = '?';
        --room;
    }
    iconv_close(handle);
    result.resize(static_cast<std::size_t>(write - result.data()));
    return result;
}

const std::string& utf8_name() {
    static const std::string name("UTF-8");
    return name;
}

using pages = std::vector<page*>;

template <typename Convert>
auto for_all(const pages& all, const Convert& convert) {
    return [all, convert] {
        std::vector<std::string> results;
        for (const page* one : all)
            results.push_back(convert(*one));
        return results;
    };
}

void add(const std::string& way, const std::string& what, const pages& all) {
    const auto prepare = [all] {
        for (page* one : all)
            one->fill();
    };
    const bool is_clean = what.find("clean") != std::string::npos;
    const auto bytes = is_clean ? &page::clean : &page::unmappable;
    const auto text = is_clean ? &page::clean_utf8 : &page::unmappable_utf8;

    cell encode("encode" + way + "/" + what,
                for_all(all, [=](const page& one) { return one.ours.encode(one.*text); }), prepare);
    encode.add("iconv", for_all(all, [=](const page& one) {
                   return call_iconv(one.name, utf8_name(), one.*text);
               }));
    encode.floor_is_a_copy();
    if (is_clean)
        encode.add("plain", for_all(all, [=](const page& one) {
                       return code_page_oracle::convert(one.name, utf8_name(), one.*text);
                   }));
    cell decode(
        "decode" + way + "/" + what,
        for_all(all, [=](const page& one) { return std::string(one.ours.as_utf8(one.*bytes)); }),
        prepare);
    decode.add("iconv", for_all(all, [=](const page& one) {
                   return call_iconv(utf8_name(), one.name, one.*bytes);
               }));
    decode.floor_is_a_copy();
    decode.add("plain", for_all(all, [=](const page& one) {
                   return code_page_oracle::convert(utf8_name(), one.name, one.*bytes);
               }));
}

const bool added = [] {
    pages all;
    for (const int number : page_numbers)
        all.push_back(new page(number));  // until the program ends
    for (const char* what : {"clean", "unmappable"}) {
        add("", what, all);
        for (page* one : all)
            add("_page", std::to_string(one->number) + "_" + what, {one});
    }
    return true;
}();

}  // namespace
