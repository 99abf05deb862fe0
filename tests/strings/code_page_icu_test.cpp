// Compares the tables of every code page with ICU's converters. What differs is listed in
// tests/data/strings/code_page_icu.txt, with a reason for each group; a difference that is not
// listed fails the test, and so does a listed one that no longer occurs. Three kinds of difference
// have rules instead, and the list has their numbers:
//
//     composed    the same characters, composed by one side only (pages 1255 and 1258)
//     moved       a letter that is held back comes out after the "?" of an invalid byte
//     private     private use characters in rows that only ICU leaves to the user
#include <tova/strings/code_page.hpp>

#include "strings/code_page_units.hpp"

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/ucnv.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace code_page_units;

const struct {
    int number;
    const char* converter;
} pages[] = {
    {4, "UTF-8"},
    {932, "ibm-943_P15A-2003"},
    {936, "windows-936-2000"},
    {949, "windows-949-2000"},
    {950, "windows-950-2000"},
    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"},
    {1252, "ibm-5348_P100-1997"},
    {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"},
    {1255, "ibm-9447_P100-2002"},
    {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"},
    {1258, "ibm-5354_P100-1998"},
    {20866, "KOI8-R"},
    {21866, "KOI8-U"},
    {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},
    {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},
    {28599, "ISO-8859-9"},
    {28605, "ISO-8859-15"},
    {125100, "US-ASCII"},
};

bool composes(int page) {
    return page == 1255 || page == 1258;
}

// What a character becomes that a page lacks.
std::string skipped(unsigned point) {
    return std::string(utf8(point).size(), '?');
}

bool is_private(const std::string& text) {
    return text.size() == 3 && text >= utf8(0xE000) && text <= utf8(0xF8FF);
}

// Stops at what cannot be converted, and takes no character for one that looks alike.
class converter {
public:
    explicit converter(const char* name) {
        UErrorCode status = U_ZERO_ERROR;
        m_converter.reset(ucnv_open(name, &status));
        ucnv_setToUCallBack(m_converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                            &status);
        ucnv_setFromUCallBack(m_converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr,
                              nullptr, &status);
        if (U_FAILURE(status))
            throw std::runtime_error(name + std::string(": ") + u_errorName(status));
        ucnv_setFallback(m_converter.get(), false);
    }

    // As `code_page` decodes: one "?" for each byte that is skipped.
    std::string decoded(const std::string& bytes) const {
        std::string result;
        for (std::size_t begin = 0; begin < bytes.size();) {
            std::size_t size = 1;
            std::string character;
            while (!decode(bytes.substr(begin, size), &character) && begin + size < bytes.size())
                ++size;
            if (character.empty()) {
                character = "?";
                size = 1;
            }
            result += character;
            begin += size;
        }
        return result;
    }

    std::string encoded(unsigned point) const {
        char bytes[16];
        const auto unit = static_cast<UChar>(point);
        UErrorCode status = U_ZERO_ERROR;
        const int size = ucnv_fromUChars(m_converter.get(), bytes, sizeof bytes, &unit, 1, &status);
        // ICU skips characters without an appearance that it cannot convert.
        if (U_FAILURE(status) || size == 0)
            return skipped(point);
        return std::string(bytes, static_cast<std::size_t>(size));
    }

private:
    bool decode(const std::string& bytes, std::string* character) const {
        UChar units[16];
        UErrorCode status = U_ZERO_ERROR;
        const int size = ucnv_toUChars(m_converter.get(), units, 16, bytes.data(),
                                       static_cast<int>(bytes.size()), &status);
        if (U_FAILURE(status) || (size > 0 && units[0] == 0xFFFD))
            return false;
        character->clear();
        icu::UnicodeString(units, size).toUTF8String(*character);
        return true;
    }

    struct closer {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, closer> m_converter;
};

bool same_characters(const std::string& one, const std::string& other) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const form = icu::Normalizer2::getNFDInstance(status);
    return form->normalize(icu::UnicodeString::fromUTF8(one), status) ==
           form->normalize(icu::UnicodeString::fromUTF8(other), status);
}

struct comparison {
    std::size_t compared = 0, by_rule = 0;
    std::set<std::string> differences;
};

std::string name_of(const std::string& bytes) {
    return bytes.empty() ? "-" : hexadecimal(bytes);
}

void compare_page(int number, const converter& theirs, comparison* all) {
    const page_type page(static_cast<page_type::encoding_type>(number));
    std::map<std::string, std::size_t> rules;
    const auto differs = [&](const std::string& what, const std::string& from,
                             const std::string& to) {
        all->differences.insert(std::to_string(number) + " " + what + " " + name_of(from) + " " +
                                name_of(to));
    };

    std::map<std::string, std::pair<std::string, std::string>> single;
    for (const std::string& bytes : inputs_of(number)) {
        ++all->compared;
        const std::string expected = theirs.decoded(bytes), found = decoded(page, bytes);
        if (bytes.size() == 1) {
            single[bytes] = {expected, found};
        } else {
            // What the two bytes become separately is compared already.
            const auto &first = single[bytes.substr(0, 1)], &second = single[bytes.substr(1)];
            if (expected == first.first + second.first && found == first.second + second.second)
                continue;
        }
        if (expected == found)
            continue;
        if (composes(number) && same_characters(expected, found))
            ++rules["decode composed"];
        else if (composes(number) && bytes.size() == 2 && single[bytes.substr(1)].second == "?" &&
                 found == "?" + single[bytes.substr(0, 1)].first)
            ++rules["decode moved"];
        else if (is_private(expected) && found[0] == '?')
            ++rules["decode private"];
        else
            differs("decode " + hexadecimal(bytes), expected, found);
    }
    for (unsigned point = 0; point < 0x10000; ++point) {
        if (is_surrogate(point))
            continue;
        ++all->compared;
        const std::string expected = theirs.encoded(point), found = encoded(page, point);
        if (expected == found)
            continue;
        if (composes(number) && expected == skipped(point) &&
            same_characters(theirs.decoded(found), utf8(point)))
            ++rules["encode composed"];
        else if (is_private(utf8(point)) && found == skipped(point))
            ++rules["encode private"];
        else
            differs("encode " + code_point_name(point), expected, found);
    }
    for (const auto& rule : rules) {
        all->differences.insert(std::to_string(number) + " " + rule.first + " rule " +
                                std::to_string(rule.second));
        all->by_rule += rule.second;
    }
}

std::set<std::string> listed_differences() {
    std::ifstream file(TOVA_TEST_DATA "/strings/code_page_icu.txt");
    std::set<std::string> result;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line[0] != '#')
            result.insert(line);
    return result;
}

// TOVA_WRITE_DIFFERENCES names a file for the differences without reasons, for a new version of the
// C library or of ICU.
TEST(CodePagesAndIcu, DifferInTheListedCharactersOnly) {
    if (U_ICU_VERSION_MAJOR_NUM != 72)
        GTEST_SKIP() << "the differences are listed for ICU 72";
    comparison all;
    for (const auto& page : pages)
        ASSERT_NO_THROW(compare_page(page.number, converter(page.converter), &all));
    if (const char* const path = std::getenv("TOVA_WRITE_DIFFERENCES")) {
        std::ofstream file(path);
        for (const std::string& line : all.differences)
            file << line << '\n';
    }

    const std::set<std::string> listed = listed_differences();
    std::size_t explained = 0, unexplained = 0;
    for (const std::string& line : all.differences)
        if (listed.count(line) == 0) {
            ++unexplained;
            ADD_FAILURE() << "not listed: " << line;
        } else {
            explained += line.find(" rule ") == std::string::npos ? 1 : 0;
        }
    for (const std::string& line : listed)
        if (all.differences.count(line) == 0) {
            ++unexplained;
            ADD_FAILURE() << "listed, but not found: " << line;
        }
    EXPECT_GT(all.compared, 2000000u);
    std::printf(
        "code pages and ICU: %zu compared, %zu listed differences, %zu by rule, %zu unexplained\n",
        all.compared, explained, all.by_rule, unexplained);
}

}  // namespace
