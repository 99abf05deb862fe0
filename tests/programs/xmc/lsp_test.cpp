#include "support/temporary_directory.hpp"
#include "xmc/lsp/cursor.hpp"
#include "xmc/lsp/frames.hpp"
#include "xmc/lsp/positions.hpp"
#include "xmc/lsp/protocol.hpp"
#include "xmc/lsp/server.hpp"
#include "xmc/lsp/uri.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace tova_programs::xmc::lsp;
using tova_programs::xmc::check_options;

namespace {

using texts = std::vector<std::string>;

// What a reader takes from bytes that arrive in two pieces; errors begin with '!'.
texts frames_of(const std::string& bytes, std::size_t cut) {
    frame_reader reader;
    texts result;
    const auto take = [&] {
        for (frame each; reader.next(each);)
            result.push_back((each.is_error ? "!" : "") + each.text);
    };
    reader.add(bytes.substr(0, cut));
    take();
    reader.add(bytes.substr(cut));
    take();
    return result;
}

}  // namespace

TEST(Frames, AreReadWhereverTheyAreCut) {
    const std::string bytes = framed("{}") + "content-length:3\n\n[1]" +
                              "Content-Type: application/vscode-jsonrpc; charset=utf8\r\n" +
                              framed("\xF0\x9F\x98\x80") + framed("") + framed("last");
    const texts expected = {"{}", "[1]", "\xF0\x9F\x98\x80", "", "last"};
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut)
        ASSERT_EQ(expected, frames_of(bytes, cut)) << cut;
}

TEST(Frames, AreFoundAgainAfterOneError) {
    const struct {
        std::string bytes;
        std::string error;
    } cases[] = {
        {"hello\r\n", "\"hello\" is no header"},
        {": 5\r\n", "\": 5\" is no header"},
        {"\r\n", "a header without Content-Length"},
        {"Content-Type: x\r\n\r\n{}", "a header without Content-Length"},
        {"Content-Length: -1\r\n\r\n", "\"Content-Length: -1\" is no length"},
        {"Content-Length: +1\r\n\r\n", "\"Content-Length: +1\" is no length"},
        {"Content-Length:\r\n\r\n", "\"Content-Length:\" is no length"},
        {"Content-Length: 1 2\r\n\r\n", "\"Content-Length: 1 2\" is no length"},
        {"Content-Length: 99999999999999999999\r\n\r\n",
         "\"Content-Length: 99999999999999999999\" is no length"},
        {"Content-Length: 268435457\r\n\r\n", "\"Content-Length: 268435457\" is too long"},
        {"Content-Length: 2\r\nContent-Type: a; charset=latin1\r\n\r\n{}",
         "\"Content-Type: a; charset=latin1\": only UTF-8 is read"},
        {"\x01\xFF\r\n", "\"??\" is no header"},
        {std::string(5000, 'x') + "\r\n", "the line of a header is longer than 4096 bytes"},
        {"Content-Lengt Content-Lengt\r\n\r\n", "\"Content-Lengt Content-Lengt\" is no header"},
        {"{\"jsonrpc\":\"2.0\"}\r\n", "\"{\"jsonrpc\":\"2.0\"}\" is no header"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 60));
        const std::string bytes = framed("a") + c.bytes + framed("b") + framed("c");
        const texts found = frames_of(bytes, bytes.size());
        ASSERT_EQ(4u, found.size());
        EXPECT_EQ("a", found[0]);
        EXPECT_EQ('!' + c.error, found[1]);
        EXPECT_EQ("b", found[2]);
        EXPECT_EQ("c", found[3]);
        // A long line is an error before its end is known.
        for (std::size_t cut = 0; cut <= bytes.size() && c.bytes.size() < 1000; ++cut)
            ASSERT_EQ(found, frames_of(bytes, cut)) << cut;
    }
}

TEST(Positions, CountUnitsOfTheEncoding) {
    // One, two, three and four bytes, then a combining character, in lines with all three ends.
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z\r\ne\xCC\x81\rx\n";
    const struct {
        std::size_t offset;
        position utf16;
        position utf8;
    } cases[] = {
        {0, {0, 0}, {0, 0}},   {1, {0, 1}, {0, 1}},   {3, {0, 2}, {0, 3}},  {6, {0, 3}, {0, 6}},
        {10, {0, 5}, {0, 10}}, {11, {0, 6}, {0, 11}}, {13, {1, 0}, {1, 0}}, {14, {1, 1}, {1, 1}},
        {16, {1, 2}, {1, 3}},  {17, {2, 0}, {2, 0}},  {18, {2, 1}, {2, 1}}, {19, {3, 0}, {3, 0}},
    };
    const line_map utf16(text, encoding::utf16);
    const line_map utf8(text, encoding::utf8);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offset);
        EXPECT_EQ(json_of(c.utf16), json_of(utf16.at(c.offset)));
        EXPECT_EQ(json_of(c.utf8), json_of(utf8.at(c.offset)));
        EXPECT_EQ(c.offset, utf16.offset(c.utf16));
        EXPECT_EQ(c.offset, utf8.offset(c.utf8));
    }
}

TEST(Positions, AreMovedIntoTheText) {
    const std::string text = "\xF0\x9F\x98\x80z\r\nxy";
    const line_map utf16(text, encoding::utf16);
    EXPECT_EQ(0u, utf16.offset({0, 1}));  // within the pair
    EXPECT_EQ(4u, utf16.offset({0, 2}));
    EXPECT_EQ(5u, utf16.offset({0, 3}));
    EXPECT_EQ(5u, utf16.offset({0, 4}));  // not into the line end
    EXPECT_EQ(5u, utf16.offset({0, 4000000000}));
    EXPECT_EQ(9u, utf16.offset({1, 9}));
    EXPECT_EQ(9u, utf16.offset({7, 0}));
    const line_map utf8(text, encoding::utf8);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(0u, utf8.offset({0, i}));
    EXPECT_EQ(json_of({0, 3}), json_of(utf16.at(6)));  // between CR and LF
    EXPECT_EQ(json_of({1, 2}), json_of(utf16.at(100)));
    EXPECT_EQ(json_of({0, 0}), json_of(utf16.at(2)));
    EXPECT_EQ(0u, line_map("", encoding::utf16).offset({0, 0}));
}

TEST(Positions, CountAByteThatIsNotUtf8AsOneUnit) {
    for (const char* const bytes :
         {"\x80", "\xFF", "\xC0\xAF", "\xED\xA0\x80", "\xE2\x82", "\xF5"}) {
        const std::string text = bytes;
        EXPECT_FALSE(is_utf8(text));
        const line_map lines(text, encoding::utf16);
        EXPECT_EQ(json_of({0, text.size()}), json_of(lines.at(text.size())));
    }
    EXPECT_TRUE(is_utf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
}

// The other side of an edit keeps its text in UTF-32 and counts the units for itself.
TEST(Positions, EditsAreThoseOfAClientThatCountsItsUnits) {
    struct character {
        std::string bytes;
        std::size_t utf16;
    };
    const std::vector<character> alphabet = {{"a", 1},
                                             {"<", 1},
                                             {" ", 1},
                                             {"\n", 1},
                                             {"\r\n", 0},
                                             {"\xC3\xA4", 1},
                                             {"\xE2\x82\xAC", 1},
                                             {"\xF0\x9F\x98\x80", 2},
                                             {"\xEF\xBF\xBD", 1}};
    for (const encoding units : {encoding::utf16, encoding::utf8}) {
        std::mt19937 random(7);
        std::vector<character> mirror;
        std::string text;
        const auto below = [&random](std::size_t end) { return random() % (end + 1); };
        const auto position_of_index = [&](std::size_t index) {
            position result;
            for (std::size_t i = 0; i < index; ++i) {
                if (mirror[i].bytes.back() == '\n')
                    result = {result.line + 1, 0};
                else
                    result.character +=
                        units == encoding::utf16 ? mirror[i].utf16 : mirror[i].bytes.size();
            }
            return result;
        };
        for (int step = 0; step < 1000; ++step) {
            std::size_t from = below(mirror.size());
            std::size_t to = std::min(mirror.size(), from + below(step % 50 == 0 ? 60 : 6));
            std::vector<character> fresh(below(8));
            std::string fresh_text;
            for (character& each : fresh)
                fresh_text += (each = alphabet[random() % alphabet.size()]).bytes;
            const position begin = position_of_index(from);
            const position end = position_of_index(to);
            // Clients may give the end first.
            if (step % 3 == 0)
                replace_range(text, units, end, begin, fresh_text);
            else
                replace_range(text, units, begin, end, fresh_text);
            mirror.erase(mirror.begin() + static_cast<std::ptrdiff_t>(from),
                         mirror.begin() + static_cast<std::ptrdiff_t>(to));
            mirror.insert(mirror.begin() + static_cast<std::ptrdiff_t>(from), fresh.begin(),
                          fresh.end());
            std::string expected;
            for (const character& each : mirror)
                expected += each.bytes;
            ASSERT_EQ(expected, text) << step;
        }
    }
}

TEST(LineEdits, TurnOneTextIntoTheOther) {
    const texts cases = {
        "",          "a",         "a\n", "a\nb\n", "a\nc\n",     "b\n",   "a\nb",
        "x\na\nb\n", "a\nb\nb\n", "\n",  "\n\n",   "a\r\nb\r\n", "a\r\n", "\xF0\x9F\x98\x80\nb\n"};
    for (const std::string& before : cases)
        for (const std::string& after : cases) {
            const line_map lines(before, encoding::utf16);
            const json edits = line_edits(lines, before, after);
            EXPECT_EQ(before == after, edits.empty());
            std::string text = before;
            for (const json& each : edits)
                replace_range(text, encoding::utf16, position_of(each["range"]["start"]),
                              position_of(each["range"]["end"]),
                              each["newText"].get<std::string>());
            EXPECT_EQ(after, text) << before;
        }
}

TEST(Uris, NameFilesInEveryCommonForm) {
    EXPECT_EQ("/a/b c.xmc", path_of("file:///a/b%20c.xmc"));
    EXPECT_EQ("/a/b", path_of("file://localhost/a/b"));
    EXPECT_EQ("/a/b", path_of("file:/a/b"));
    EXPECT_EQ("/a%zz", path_of("file:///a%zz"));
    EXPECT_EQ("/\xC3\xA4", path_of("file:///%C3%a4"));
    EXPECT_EQ("/a", path_of("file:///a?b#c"));
    for (const char* const none : {"", "untitled:Untitled-1", "http://a/b", "file://host/a",
                                   "file:a", "file:", "file://", "file:///a%00b"})
        EXPECT_EQ("", path_of(none)) << none;
    std::string all = "/";
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(all, path_of(uri_of(all)));
    EXPECT_EQ("file:///a%20b/%C3%A4", uri_of("/a b/\xC3\xA4"));
}

// The place is the '|'; the expected text is what a completion replaces.
TEST(Cursors, KnowWhatIsWritten) {
    const std::string head = "<xmc version=\"1.1\"><catalog name=\"a\" lang=\"de\">";
    const struct {
        std::string text;
        cursor::kind_t kind;
        std::string replaced;
        std::string about;  // the tag, or the attribute of a value
    } cases[] = {
        {"|", cursor::elsewhere, "", ""},
        {"<|", cursor::element, "<", ""},
        {"<m|", cursor::element, "<m", ""},
        {"<|msg>", cursor::element, "<msg", ""},
        {"<|word</msg>", cursor::element, "<", ""},
        {"<msg |", cursor::attribute_name, "", "msg"},
        {"<msg na|", cursor::attribute_name, "na", "msg"},
        {"<msg n|ame=\"b\">", cursor::attribute_name, "name", "msg"},
        {"<msg name|=\"b\">", cursor::attribute_name, "name", "msg"},
        {"<msg name=|", cursor::elsewhere, "", "msg"},
        {"<msg name=\"|", cursor::attribute_value, "", "name"},
        {"<msg name=\"|\">", cursor::attribute_value, "", "name"},
        {"<msg name=\"a|b\">", cursor::attribute_value, "ab", "name"},
        {"<msg name='a|b'>", cursor::attribute_value, "ab", "name"},
        {"<arg name=\"| type=\"int\"/>", cursor::attribute_value, "", "name"},
        {"<arg name=\"ab|<br/>", cursor::attribute_value, "ab", "name"},
        {"<arg name=\"b\"|/>", cursor::elsewhere, "", "arg"},
        {"<arg name=\"b\" |/>", cursor::attribute_name, "", "arg"},
        {"<arg name=\"b\"\n  |type=\"int\"/>", cursor::attribute_name, "type", "arg"},
        {"<arg name=\"b\"/>|", cursor::elsewhere, "", "arg"},
        {"<msg name=\"b\"> |", cursor::elsewhere, "", "msg"},
        {"</|", cursor::end_tag, "</", ""},
        {"</c|atalog>", cursor::end_tag, "</catalog", ""},
        {"<!-- <|", cursor::elsewhere, "", ""},
        {"<!-- <arg name=\"|\"/> -->", cursor::elsewhere, "", ""},
        {"<!-- a --> <|", cursor::element, "<", ""},
        {"<![CDATA[ <|", cursor::elsewhere, "", ""},
        {"<? |", cursor::elsewhere, "", ""},
        {"< |", cursor::elsewhere, "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        std::string text = head + c.text;
        const auto at = text.find('|');
        text.erase(at, 1);
        const cursor found = cursor_at(text, at);
        EXPECT_EQ(c.kind, found.kind);
        EXPECT_EQ(c.replaced, text.substr(found.begin, found.end - found.begin));
        if (c.kind == cursor::elsewhere)
            continue;
        EXPECT_EQ(c.about, c.kind == cursor::attribute_value ? found.attribute : found.tag);
        EXPECT_EQ("a", found.catalog);
        EXPECT_EQ("de", found.locale);
    }
}

TEST(Cursors, KnowTheElementsAround) {
    const std::string text =
        "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a\" lang=\"de\">"
        "<msg name=\"k\">x<arg name=\"n\"/><br/> <";
    const cursor inner = cursor_at(text, text.size());
    EXPECT_EQ(texts({"xmc", "catalog", "msg"}), inner.open);
    EXPECT_EQ("k", inner.key);
    EXPECT_EQ(texts({"n"}), inner.arguments);
    const std::string after = text + "/msg></catalog><";
    EXPECT_EQ(texts({"xmc"}), cursor_at(after, after.size()).open);
    EXPECT_EQ("", cursor_at(after, after.size()).key);
}
