// A load walks tokens in contiguous memory; the operations with a token list walk that list. Tests
// that both read the same messages from any file, with the same error.
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include "i18n/_private/loader_support.hpp"
#include "i18n/catalog_text.hpp"
#include "support/failing_allocation.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <new>
#include <random>
#include <string>
#include <vector>

namespace {

using test_support::everything_in;
using test_support::load_error;
using test_support::loaded_catalogs;
using test_support::outcome;
using test_support::seen;
using tova::i18n::message_catalogs;
using tova::i18n::_private::xmc_file_loader;
using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;

// --- The plain reader ----------------------------------------------------------------------------

bool is_element(const xmc_file_loader::token_iterator& cursor, const char* name) {
    return cursor->type() == xml_token_stream::token::element_start && cursor->value() == name;
}

load_error read_root(xmc_file_loader& loader, const xml_token_stream& tokens,
                     const ustring8& path) {
    xmc_file_loader::token_iterator cursor = tokens.begin();
    xmc_file_loader::token_iterator end = tokens.end();
    loader.parse_ignorable(cursor, end);
    loader.parse_xmc_header(cursor, end);
    loader.parse_ignorable(cursor, end);
    bool is_anything_read = false;
    while (cursor != end && (is_element(cursor, "catalog") || is_element(cursor, "include"))) {
        if (is_element(cursor, "catalog"))
            loader.parse_catalog(cursor, end);
        else
            loader.parse_include(cursor, end);
        loader.parse_ignorable(cursor, end);
        is_anything_read = true;
    }
    if (cursor != end &&
        (cursor->type() != xml_token_stream::token::element_end || cursor->value() != "xmc"))
        throw load_error(xmc_file_loader::invalid_element, cursor->value());
    return is_anything_read ? load_error(xmc_file_loader::no_error, "")
                            : load_error(xmc_file_loader::no_catalog, path);
}

load_error read_list(xmc_file_loader& loader, const ustring8& bytes, const ustring8& path) {
    xml_token_stream tokens;
    const xml_parser::parse_error xml_error = tokens.parse(bytes);
    if (xml_error.type != xml_parser::parse_error::no_error) {
        load_error error(xmc_file_loader::xml_error, xml_error);
        error.append_error_stack(load_error::in_file, path);
        return error;
    }
    if (tokens.size() == 0)
        return load_error(xmc_file_loader::unexpected, "");
    try {
        return read_root(loader, tokens, path);
    } catch (load_error& error) {
        error.append_error_stack(load_error::in_file, path);
        return error;
    }
}

// --- Random files --------------------------------------------------------------------------------

class random_xmc {
public:
    explicit random_xmc(unsigned seed) : m_random(seed) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    template <std::size_t Size>
    const char* one_of(const char* const (&all)[Size]) {
        return all[below(Size)];
    }

    std::string file() {
        std::string made = one_of({"<?xml version='1.0'?>", "<?xml?> ", "\xEF\xBB\xBF<?xml?>\n"});
        made += rarely() ? one_of({"<xmc>", "<xmc version='2.0'>", "<xmc version='1.0' lang='x'>",
                                   "<XMC version='1.0'>", "<xmc version='1.1'><!-- c -->",
                                   "<xmc name='1.1'>", ""})
                         : one_of({"<xmc version='1.1'>", "<xmc version=\"1.0\" >\n"});
        for (unsigned i = below(4); i > 0; --i)
            made += between() + (below(5) == 0 ? include() : catalog());
        made += between() +
                (rarely() ? one_of({"</xmc", "", "<a/></xmc>", "</xmc>text"}) : one_of({"</xmc>"}));
        // Losing, changing or cutting off a byte makes most files invalid.
        if (below(8) == 0 && !made.empty()) {
            const std::size_t place = below(static_cast<unsigned>(made.size()));
            if (below(2) == 0)
                made.erase(place, 1);
            else if (below(2) == 0)
                made[place] = one_of({"<", ">", "/", "\"", "&", " ", "x"})[0];
            else
                made.resize(place);
        }
        // The last bytes of a file are read in another way than those before.
        if (below(2) == 0)
            made.append(100, ' ');
        return made;
    }

private:
    bool rarely() { return below(40) == 0; }

    std::string between() {
        return below(3) == 0 ? one_of({"\n", "  ", "text", "<!-- c -->", " <!--\n--> "}) : "";
    }

    std::string include() {
        return rarely() ? one_of({"<include/>", "<include file=''/>", "<include file='none'/>",
                                  "<include file='b'>text</include>",
                                  "<include file='b'><a/>"
                                  "</include>"})
                        : one_of({"<include file='b'/>", "<include as='x' file='b'></include>",
                                  "<include file='./b' file_2='b'/>"});
    }

    std::string catalog() {
        std::string made = std::string("<catalog name='") +
                           one_of({"", "app", "a_catalog_with_a_long_name"}) + "' lang='" +
                           one_of({".", "en", "de", "de_AT", "de-AT", "fr", ""}) + "'" +
                           (rarely() ? one_of({" x='1'>", "><!-- c -->", "/>", ">text "}) : ">");
        for (unsigned i = below(6); i > 0; --i)
            made += between() + message();
        return made + between() +
               (rarely() ? one_of({"", "<a/></catalog>", "<br/></catalog>",
                                   "<catalog lang='en'>text</catalog></catalog>",
                                   "<msg><catalog/></msg></catalog>", "</catalog x='1'>"})
                         : "</catalog>");
    }

    std::string message() {
        std::string made = std::string("<msg name='") +
                           one_of({"", "k", "key_1", "key_2", "key&amp;2", "key_10",
                                   "a_key_that_needs_memory_of_its_own"}) +
                           "'" + (below(4) == 0 ? " meta='m &lt; n'" : "") +
                           (rarely() ? one_of({" x='1'>", "><!-- c -->", "/>"}) : ">");
        for (unsigned i = below(6); i > 0; --i)
            made += part();
        return made + (rarely() ? "" : "</msg>");
    }

    std::string part() {
        return rarely() ? one_of({"<b/>", "msg", "<br>text</br>", "<br x='1'/>", "<msg/>",
                                  "<arg name='n'><a/></arg>", "<br><!-- c --></br>",
                                  "<arg name='n'/><!-- c -->"})
                        : one_of({"text", " ", "\n  ", "one  two", "&lt;&#65;", "<![CDATA[ c ]]>",
                                  "<!-- c -->", "<br/>", "<br></br>", "<arg name='n'/>",
                                  "<arg name='n' type='INT' base='x'/>",
                                  "<arg base='x' name='n' fieldsize='&gt;'/>",
                                  "<argument type='memory' name='a_name_of_an_argument'/>",
                                  "<arg type='unknown'>dropped</arg>"});
    }

    std::mt19937 m_random;
};

// --- Tests ---------------------------------------------------------------------------------------

TEST(LoadedFile, IsReadLikeItsTokenList) {
    random_xmc random(9);
    const test_support::temporary_directory folder;
    const std::string base = folder.path() + "/";
    int successes = 0;
    std::vector<int> errors(15);
    for (int round = 0; round < 20000; ++round) {
        if (round % 20 == 0)
            folder.write("b", random.file());
        const std::string bytes = random.file();
        const char* const locale = random.one_of({"de_AT", "en", "de", ""});

        // An empty file sets the base directory of includes.
        xmc_file_loader flat;
        flat.handle_language(locale);
        flat.parse_file(base + "b");
        xmc_file_loader list;
        list.handle_language(locale);
        list.parse_file(base + "b");
        ASSERT_EQ(everything_in(test_support::combined(flat)),
                  everything_in(test_support::combined(list)));

        const outcome expected = seen(read_list(list, bytes, "f.xmc"));
        ASSERT_EQ(expected, seen(flat.parse_string(bytes, "f.xmc"))) << bytes;
        ASSERT_EQ(everything_in(test_support::combined(list)),
                  everything_in(test_support::combined(flat)))
            << bytes;
        successes += expected.first == xmc_file_loader::no_error;
        ++errors[static_cast<std::size_t>(expected.first)];
    }
    // Every kind of error in a file has occurred.
    EXPECT_LT(5000, successes);
    for (const int kind : {1, 3, 4, 5, 6, 7, 8, 9, 12, 13})
        EXPECT_LT(0, errors[static_cast<std::size_t>(kind)]) << kind;
}

// A set builds only the messages that are kept, after all files of a load have been read. A loader
// builds all messages and merges them afterwards.
TEST(LoadedFile, AddsToASetWhatALoaderMerges) {
    random_xmc random(7);
    const test_support::temporary_directory folder;
    int successes = 0;
    for (int round = 0; round < 200; ++round) {
        message_catalogs set;
        loaded_catalogs merged;
        for (const char* locale : {"de_AT", "en", "de"}) {
            folder.write("b", random.file());
            const std::string path = folder.write("a", random.file());
            xmc_file_loader loader;
            const load_error error = loader.parse(path, locale);
            if (error.type == xmc_file_loader::no_error)
                loader.combine_data(merged, {});
            const message_catalogs::result_type result = set.load_file(ustring8(path), locale);
            ASSERT_EQ(message_catalogs::result_type(error).message, result.message);
            ASSERT_EQ(everything_in(merged), everything_in(set)) << test_support::read_bytes(path);
            successes += error.type == xmc_file_loader::no_error;
        }
    }
    EXPECT_LT(100, successes);
}

// Whichever allocation of a load fails, all memory is freed, and the next load of the same file
// succeeds.
TEST(LoadedFile, LeavesNothingAllocatedWhenMemoryRunsOut) {
    const test_support::temporary_directory folder;
    folder.write("b", test_support::xmc(test_support::catalog(
                          "app", "en", test_support::msg("k", "&lt; in English"))));
    const ustring8 path(folder.write(
        "a", test_support::xmc(
                 "<include file='b'/>" +
                 test_support::catalog("app", "de",
                                       test_support::msg("k", "one &amp; <arg name='n'/> two") +
                                           test_support::msg("l", std::string(40000, 'x'))))));
    for (unsigned successes = 0;; ++successes) {
        ASSERT_GT(10000u, successes);
        const long before = test_support::live_allocations();
        bool failed = false;
        {
            message_catalogs set;
            {
                const test_support::failing_allocation failing(successes);
                try {
                    set.load_file(path, "de");
                } catch (const std::bad_alloc&) {
                }
                failed = failing.failed();
            }
            EXPECT_EQ(message_catalogs::no_error, set.load_file(path, "de").type);
            EXPECT_EQ(2u, set.count(ustring8("app")));
        }
        EXPECT_EQ(before, test_support::live_allocations()) << successes;
        if (!failed)
            break;
    }
}

}  // namespace
