// Eight threads use one constant object at the same time, for each class whose header lets them.
// The results are those of one thread. What the thread sanitizer has to say shows in its build.
#include <tova/tova.hpp>

#include "i18n/catalog_text.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tova;
using generic::argument;
using generic::varg_list;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

const std::size_t thread_count = 8;
const int rounds = 50;

// Whether all threads find what one thread finds, in every round.
void expect_equal_in_threads(const std::function<std::string()>& find) {
    const std::string expected = find();
    std::vector<int> different(thread_count);
    std::vector<std::thread> threads;
    for (int& mine : different)
        threads.emplace_back([&find, &expected, &mine] {
            for (int round = 0; round < rounds; ++round)
                mine += find() != expected;
        });
    for (std::thread& one : threads)
        one.join();
    EXPECT_EQ(std::vector<int>(thread_count), different);
}

TEST(SharedConstant, StringsAreConvertedSplitAndReplaced) {
    const ustring8 narrow("Gr\xC3\xBC\xC3\x9F Gott, \xE4\xB8\xAD, \xF0\x9F\x98\x80");
    const ustring16 wide = strings::utf8_to_utf16(narrow);
    const ustring32 wider = strings::utf8_to_utf32(narrow);
    expect_equal_in_threads([&] {
        std::string found = strings::utf16_to_utf8(wide) + strings::utf32_to_utf8(wider);
        found += strings::utf16_to_utf8(strings::utf8_to_utf16(narrow));
        found += strings::to_lower(narrow) + strings::to_upper(narrow);
        for (const ustring8& field : strings::split_string(narrow, ustring8(", "), 0))
            found += "[" + field + "]";
        ustring8 changed = narrow;
        strings::replace_all(changed, ustring8(","), ustring8(" and"));
        return found + changed;
    });
}

TEST(SharedConstant, CodePagesConvert) {
    const strings::code_page western(strings::code_page::encoding_1252);
    const strings::code_page japanese(strings::code_page::encoding_932);
    const std::string bytes = "\x82\xA0\x83\x65 abc";
    const ustring8 text("Gr\xC3\xBC\xC3\x9F Gott, \xE3\x81\x82");
    expect_equal_in_threads([&] {
        return std::string(japanese.as_utf8(bytes)) + western.encode(text) + japanese.encode(text);
    });
}

TEST(SharedConstant, ValuesAreRead) {
    const types::color_t color(1, 2, 3, 4);
    const types::device_unit device(12.5);
    const types::basic_absolute_impl<types::absolute_unit::millimetre> paper(2.5);
    const system::date_time::date date(29, 2, 2024);
    const system::date_time::time time(23, 59, 58, 0);
    expect_equal_in_threads([&] {
        std::string found = std::to_string(color.as_int32()) + ' ' +
                            std::to_string(device.as_int32()) + ' ' +
                            std::to_string(device.as_double());
        found += ' ' + std::to_string(paper.as_double());
        found += ' ' + std::to_string(date.day()) + ' ' + std::to_string(date.year());
        found += ' ' + std::to_string(time.hour()) + ' ' + std::to_string(time.second());
        return found;
    });
}

// Copies of one value share a use count, so each thread makes a value of its own.
TEST(OwnValues, AreCopiedOnEveryThread) {
    const ustring8 text("a value that every thread has to itself");
    expect_equal_in_threads([&] {
        const types::variant mine(text);
        const std::vector<types::variant> copies(100, mine);
        std::string found;
        for (const types::variant& copy : copies)
            found += copy.as_string();
        return found;
    });
}

TEST(SharedConstant, DocumentsAreParsedByAParserForEachThread) {
    const ustring8 document("<?xml version=\"1.0\"?><a><b c='d'>e &amp; f</b><!-- g --><h/></a>");
    expect_equal_in_threads([&] {
        parser::xml_token_stream tokens;
        const auto result = tokens.parse(document);
        return std::to_string(result.type) + ' ' + std::to_string(tokens.size());
    });
}

TEST(SharedConstant, MessagesAreLookedUpAndRendered) {
    using test_support::catalog;
    using test_support::msg;
    using test_support::xmc;
    const test_support::temporary_directory files;
    std::string messages;
    for (int i = 0; i < 20; ++i)
        messages += msg("m" + std::to_string(i),
                        "text " + std::to_string(i) + " of <arg name=\"n\"/> parts");
    const std::string path = files.write("a.xmc", xmc(catalog("a", "en", messages)));
    i18n::message_catalogs loaded;
    ASSERT_EQ(i18n::message_catalogs::no_error,
              loaded.load_file(ustring8(path), ustring8("en")).type);
    const i18n::message_catalogs& set = loaded;
    const i18n::message_t& one = set.message(ustring8("a"), ustring8("m7"));
    ASSERT_NE("", one.as_string(varg_list()));
    expect_equal_in_threads([&] {
        // The values belong to the thread.
        const varg_list values(argument("n", 3));
        std::string found = one.as_string(values);
        for (int i = 0; i < 25; ++i) {
            const ustring8 key("m" + std::to_string(i));
            found += set.has_message(ustring8("a"), key) ? '+' : '-';
            found += set.message(ustring8("a"), key).as_string(values);
        }
        return found;
    });
}

TEST(SharedConstant, DispatchersSetUpTheListsOfEachThread) {
    const char* const arguments[] = {"tool", "-server.port=9090", "-name=value"};
    const char* const environment[] = {"HOME=/nowhere", nullptr};
    const config::std_config_dispatch dispatch(3, arguments, environment, "no-such-file.cfg", "");
    expect_equal_in_threads([&] {
        config::config_manager manager;
        manager.init(dispatch);
        manager.load();
        return manager.get_value("server.port", types::variant("none")).as_string() +
               manager.get_value("name", types::variant("none")).as_string();
    });
}

TEST(SharedConstant, AMissingArgumentIsTestedByAllThreads) {
    expect_equal_in_threads([] {
        const varg_list values(argument("n", 3));
        return std::string(values["missing"].value() == types::nil ? "nil" : "found") +
               (values["n"].value() == types::nil ? "nil" : "found");
    });
}

TEST(SharedConstant, ExceptionsAreRaisedAndCaughtByAllThreads) {
    expect_equal_in_threads([] {
        try {
            system::date_time::date(31, 2, 2024);
        } catch (const exceptions::out_of_range& error) {
            return std::string(error.get_message());
        }
        return std::string("not raised");
    });
}

}  // namespace
