// Tests what happens when memory runs out: which operations raise `std::bad_alloc`, which end the
// process because they convert a variant, and what state an operation that raises leaves.
#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"

#include <tova/config/config_manager.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/module_config_dispatch.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/config/user_item.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/format.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/system/files.hpp>

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <functional>
#include <new>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using namespace tova;
using generic::argument;
using generic::varg_list;
using strings::ustring8;
using test_support::failing_allocation;
using test_support::temporary_directory;

// Longer than a string keeps without an allocation.
const ustring8 long_text = "a text that is longer than the sixteen bytes of a short string";

// ---- who raises, and who ends the process

struct outcomes {
    bool raised = false;  // `std::bad_alloc` left the operation
    bool ended = false;   // the process ended through `std::unexpected`
};

// Runs the operation in a child with the first allocation failing, then with the second one, and so
// on, until every allocation has failed once.
outcomes outcomes_of(const std::function<void()>& operation) {
    const int ended = 42;
    const int raised = 43;
    const int finished = 44;
    test_support::child_limits limits;
    limits.stack_bytes = std::size_t(1) << 20;
    limits.address_space_bytes = std::size_t(1) << 29;
    outcomes result;
    for (unsigned successes = 0;; ++successes) {
        const test_support::child_result child = test_support::run_in_child(
            [&] {
                test_support::exit_42_on_unexpected();
                try {
                    const failing_allocation failure(successes);
                    operation();
                    if (!failure.failed())
                        _exit(finished);
                } catch (const std::bad_alloc&) {
                    _exit(raised);
                }
            },
            limits);
        if (child.exit_code == finished)
            return result;
        result.raised |= child.exit_code == raised;
        result.ended |= child.exit_code == ended;
        // A destructor works even if it does not get the memory that it requests.
        EXPECT_TRUE(child.exited &&
                    (child.exit_code == raised || child.exit_code == ended || child.exit_code == 0))
            << "exit code " << child.exit_code << ", signal " << child.signal;
    }
}

i18n::message_t message_of(i18n::message_item::type_t type) {
    return i18n::message_t("key", {i18n::message_item(long_text), i18n::message_item("n", type)});
}

class tree_item : public config::user_item {
public:
    config::config_tree& nodes() { return tree; }
};

// A stream that discards its output. It allocates no memory, so it swallows no exception.
class no_output : private std::streambuf, public std::ostream {
public:
    no_output() : std::ostream(static_cast<std::streambuf*>(this)) {}

private:
    int overflow(int byte) override { return byte; }
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

TEST(ExhaustedMemory, RaisesBadAllocUnlessAValueIsBeingConverted) {
    const temporary_directory files;
    const varg_list number(argument("n", 1234567.5));
    const varg_list text(argument("n", long_text));
    const ustring8 file = files.path(long_text);
    ASSERT_EQ(0, system::store_file(file, "[section]\nname = " + long_text + "\n"));

    tree_item plain;
    plain.set("section", types::variant(1), 0);
    plain.set("section.long_name_of_a_key", types::variant(12), 0);
    tree_item texts;
    texts.set("cfg_file", types::variant(file), 0);
    const char* const arguments[] = {"tool", "-a=1", nullptr};
    config::config_manager aliases;
    aliases.init(config::std_config_dispatch(1, arguments, nullptr, "", ""));
    aliases.get_config_item("command line")->set("alias", types::variant(long_text), 4);

    serialization::labeled_text_buffer numbers;
    numbers.add_value("a", 1);
    serialization::labeled_text_buffer labeled;
    labeled.add_value("a", long_text);
    const std::string encoded = labeled.as_str();

    const struct {
        const char* name;
        std::function<void()> run;
        bool raises;
        bool ends;
    } cases[] = {
        {"a message of literals",
         [] { i18n::message_t("key", {i18n::message_item(long_text)}).as_utf16(varg_list()); },
         true, false},
        {"a message with a number",
         [&] { message_of(i18n::message_item::type_double).as_utf8(number); }, true, false},
        {"a message with a string",
         [&] { message_of(i18n::message_item::type_string).as_utf8(text); }, true, true},
        {"an item with a string",
         [&] { i18n::message_item("n", i18n::message_item::type_string).as_string(text); }, true,
         true},
        {"format_value",
         [] {
             i18n::format_value(i18n::message_item::type_double, types::variant(1e15 / 3),
                                "n\1precision\1"
                                "30");
         },
         true, false},
        {"an alias", [&] { aliases.get_value("alias", types::variant()); }, true, true},
        {"a plain value of a manager",
         [&] { aliases.get_value("a.key.with.parts.longer.than.this", types::variant()); }, true,
         false},
        {"a line", [] { config::user_item().set(ustring8("a = " + long_text), 0); }, true, false},
        {"a dump of numbers",
         [&] {
             no_output out;
             plain.nodes().dump(out, 0);
         },
         true, false},
        {"a dump of strings",
         [&] {
             no_output out;
             texts.nodes().dump(out, 0);
         },
         true, true},
        {"the choice of a file",
         [&] {
             config::config_item_list items;
             config::user_item* const item = new config::user_item;
             item->allocated = true;
             items.push_back(memory::pointers::rc_pointer<config::base_config_item>(item));
             item->set("cfg_file", types::variant(file), 0);
             config::file_item("").load(items);
         },
         true, true},
        {"a load", [&] { config::file_item(file).load(); }, true, false},
        {"a save of strings",
         [&] {
             config::file_item item(file);
             item.load();
             item.save();
         },
         true, true},
        {"names of files",
         [&] { config::module_config_dispatch(varg_list(argument("", file)), nullptr); }, true,
         true},
        {"labels with numbers", [&] { serialization::labeled_text_buffer(numbers).as_str(); }, true,
         false},
        {"labels with strings", [&] { serialization::labeled_text_buffer(labeled).as_str(); }, true,
         true},
        {"reading labels", [&] { serialization::labeled_text_buffer(encoded).is_empty(); }, true,
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const outcomes found = outcomes_of(c.run);
        EXPECT_EQ(c.raises, found.raised);
        EXPECT_EQ(c.ends, found.ended);
    }
}

// ---- the state after std::bad_alloc

// Calls `check(object, raised)` after `operation`, with each of its allocations failing in turn and
// with a new object each time.
template <typename Object, typename Make, typename Operation, typename Check>
void with_each_allocation_failing(Make make, Operation operation, Check check) {
    for (unsigned successes = 0;; ++successes) {
        SCOPED_TRACE("allocation " + std::to_string(successes));
        Object object;
        make(object);
        bool raised = false;
        bool failed = true;
        try {
            const failing_allocation failure(successes);
            operation(object);
            failed = failure.failed();
        } catch (const std::bad_alloc&) {
            raised = true;
        }
        check(object, raised);
        if (!failed || ::testing::Test::HasFailure())
            return;
    }
}

std::string encoded_tree(serialization::labeled_text_buffer& tree) {
    return tree.as_str();
}

std::string listing(config::base_config_item& item) {
    std::ostringstream out;
    item.dump(out);
    return out.str();
}

struct named_file : config::file_item {
    named_file() : config::file_item(s_name) {}
    static ustring8 s_name;
};
ustring8 named_file::s_name;

TEST(AfterBadAlloc, AnEmptyFileItemIsEmpty) {
    const temporary_directory files;
    named_file::s_name = files.write("a.cfg", "[s]\na = 1\nlist[] = 1, 2, 3\nb = " + long_text);
    named_file empty;
    named_file full;
    full.load();
    ASSERT_NE(listing(empty), listing(full));
    with_each_allocation_failing<named_file>(
        [](named_file&) {}, [](named_file& item) { item.load_file(); },
        [&](named_file& item, bool raised) {
            EXPECT_EQ(listing(raised ? empty : full), listing(item));
        });
}

TEST(AfterBadAlloc, AFileItemWithEntriesIsCompletedByAnotherLoad) {
    const temporary_directory files;
    named_file::s_name = files.write("a.cfg", "[s]\na = 1\nlist[] = 1, 2, 3\nb = " + long_text);
    const auto fill = [](named_file& item) { item.set("s.a = 0", 0); };
    named_file full;
    fill(full);
    full.load();
    with_each_allocation_failing<named_file>(
        fill, [](named_file& item) { item.load_file(); },
        [&](named_file& item, bool) {
            item.load_file();
            EXPECT_EQ(listing(full), listing(item));
        });
}

std::string rendered(const i18n::message_catalogs& set) {
    std::string result;
    for (const auto& catalog : set)
        for (const auto& message : *catalog.second)
            result += catalog.first + "." + message.first + "=" +
                      message.second.as_string(varg_list()) + "\n";
    return result;
}

// Each message is either stored completely or stored by another load.
TEST(AfterBadAlloc, ASetOfCatalogsIsCompletedByAnotherLoad) {
    const temporary_directory files;
    const ustring8 first = files.write(
        "first.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a\" lang=\"en\">"
                     "<msg name=\"kept\">kept</msg><msg name=\"m\">old</msg></catalog></xmc>");
    const ustring8 second = files.write(
        "second.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"a\" lang=\"en\">"
                      "<msg name=\"m\">" +
                          long_text + "</msg><msg name=\"n\">" + long_text +
                          "</msg></catalog><catalog name=\"b\" lang=\"en\">"
                          "<msg name=\"o\">" +
                          long_text + "</msg></catalog></xmc>");
    const auto fill = [&](i18n::message_catalogs& set) { set.load_file(first, "en"); };
    i18n::message_catalogs full;
    fill(full);
    full.load_file(second, "en");
    with_each_allocation_failing<i18n::message_catalogs>(
        fill, [&](i18n::message_catalogs& set) { set.load_file(second, "en"); },
        [&](i18n::message_catalogs& set, bool) {
            EXPECT_EQ("kept", set.message("a", "kept").as_string(varg_list()));
            EXPECT_EQ(0, set.load_file(second, "en").type);
            EXPECT_EQ(rendered(full), rendered(set));
        });
}

TEST(AfterBadAlloc, ADocumentThatWasNotReadLeavesNoMemory) {
    const ustring8 document("<?xml version=\"1.0\"?><xmc version=\"1.1\"></xmc>");
    const auto read = [&document] {
        i18n::_private::xmc_file_loader loader;
        loader.parse_string(document, "a.xmc");
    };
    read();
    for (unsigned successes = 0;; ++successes) {
        SCOPED_TRACE("allocation " + std::to_string(successes));
        const long before = test_support::live_allocations();
        bool failed = true;
        try {
            const failing_allocation failure(successes);
            read();
            failed = failure.failed();
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(before, test_support::live_allocations());
        if (!failed || ::testing::Test::HasFailure())
            return;
    }
}

TEST(AfterBadAlloc, AFileThatWasNotLoadedLeavesTheContent) {
    const temporary_directory files;
    const ustring8 path = files.write("file", std::string(1000, 'x'));
    with_each_allocation_failing<ustring8>(
        [](ustring8& content) { content = "before"; },
        [&](ustring8& content) { system::load_file(path, content); },
        [](ustring8& content, bool raised) {
            EXPECT_EQ(raised ? ustring8("before") : ustring8(1000, 'x'), content);
        });
}

TEST(AfterBadAlloc, ATreeThatIsReplacedIsTheOldOneOrTheNewOne) {
    using buffer = serialization::labeled_text_buffer;
    buffer source;
    source.create_group("group with a long label")->add_value("a", long_text);
    source.add_value("b", long_text);
    const auto fill = [](buffer& tree) { tree.add_value("old", "x"); };
    buffer old;
    fill(old);
    with_each_allocation_failing<buffer>(
        fill, [&](buffer& tree) { tree.assign(source); },
        [&](buffer& tree, bool raised) {
            EXPECT_EQ(encoded_tree(raised ? old : source), encoded_tree(tree));
        });
}

TEST(AfterBadAlloc, ATreeThatIsReadOrMergedIsCompletedByAnotherCall) {
    using buffer = serialization::labeled_text_buffer;
    buffer source;
    source.create_group("group with a long label")->add_value("a", long_text);
    source.add_value("b", long_text);
    const std::string text = source.as_str();
    const auto fill = [](buffer& tree) { tree.add_value("old", "x"); };
    buffer merged;
    fill(merged);
    merged.overlay(source);
    with_each_allocation_failing<buffer>(
        fill, [&](buffer& tree) { tree.assign(text); },
        [&](buffer& tree, bool) {
            tree.assign(text);
            EXPECT_EQ(text, encoded_tree(tree));
        });
    with_each_allocation_failing<buffer>(
        fill, [&](buffer& tree) { tree.overlay(source); },
        [&](buffer& tree, bool) {
            tree.overlay(source);
            EXPECT_EQ(encoded_tree(merged), encoded_tree(tree));
        });
}

TEST(AfterBadAlloc, ATreeOfSettingsThatIsReplacedIsTheOldOneOrTheNewOne) {
    config::config_tree source;
    source.set_node("", types::variant(1), 6);
    source.set_node("a.b", types::variant(long_text), 0);
    const auto fill = [](config::config_tree& tree) { tree.set_node("old", types::variant(2), 0); };
    const auto dump = [](config::config_tree& tree) {
        std::ostringstream out;
        tree.dump(out, 0);
        return out.str();
    };
    config::config_tree old;
    fill(old);
    with_each_allocation_failing<config::config_tree>(
        fill, [&](config::config_tree& tree) { tree = source; },
        [&](config::config_tree& tree, bool raised) {
            EXPECT_EQ(dump(raised ? old : source), dump(tree));
        });
}

TEST(AfterBadAlloc, AnArrayIsCompletedByAnotherCall) {
    varg_list values;
    for (int i = 0; i < 5; ++i)
        values.push_back(argument("", long_text));
    config::user_item full;
    full.set_array("list", values, varg_list());
    with_each_allocation_failing<config::user_item>(
        [](config::user_item&) {},
        [&](config::user_item& item) { item.set_array("list", values, varg_list()); },
        [&](config::user_item& item, bool) {
            item.set_array("list", values, varg_list());
            EXPECT_EQ(listing(full), listing(item));
        });
}

}  // namespace
