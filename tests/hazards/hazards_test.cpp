// Tests the hazards that are required results (class C in docs/security.md), each in a child
// process with limits on stack, memory and time. tools/hazards_matrix runs this program with every
// supported compiler and optimization level: a required recursion must not become a loop, and an
// endless loop must not be optimized away.
#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"

#include <tova/config/file_item.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/functor/function_type_interface.hpp>
#include <tova/generic/convert/units.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/i18n/format.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/strings/gh2.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>
#include <tova/types/variant.hpp>

#include "serialization/tree_model.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <list>
#include <new>
#include <ostream>
#include <set>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using namespace tova;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

// How a hazard ends. A process that exceeds its memory or its time limit ends with either of the
// two.
enum class ending {
    exhausts_the_stack,
    never_returns,  // or grows without bound
    waits,          // without using the processor
    divides_by_zero,
    ends_as_unexpected,  // through `std::unexpected`
    needs_memory         // raises std::bad_alloc with half a gigabyte
};

struct hazard {
    const char* name;
    ending how;
    void (*run)(const std::string& folder);
};

std::ostream& operator<<(std::ostream& out, const hazard& one) {
    return out << one.name;
}

// A file that ends inside an element, and a complete file.
std::string log_file(const std::string& folder) {
    const std::string path = folder + "/log.xml";
    std::ofstream(path) << "<?xml version='1.0' encoding='UTF-8'?>\n<log><entry/></log>\n";
    return path;
}

struct function_that_throws : functor::function_type_interface<void()> {
    ~function_that_throws() TOVA_NOTHROW override { fail(); }
    static void fail() { throw 1; }
    void invoke() override {}
    bool do_equal(const function_type_interface&) const override { return false; }
    function_that_throws* do_clone() const override { return new function_that_throws; }
};

const ustring8 long_text(100, 'x');

const hazard hazards[] = {
    {"MkdirOf8BitStrings", ending::exhausts_the_stack,
     [](const std::string& folder) { system::io::mkdir(ustring8(folder + "/a")); }},
    {"MkdirOf16BitStrings", ending::exhausts_the_stack,
     [](const std::string&) { system::io::mkdir(ustring16{'a'}); }},
    {"MkdirOf32BitStrings", ending::exhausts_the_stack,
     [](const std::string&) { system::io::mkdir(ustring32{'a'}); }},
    {"SwappedUtf16ToUtf8", ending::exhausts_the_stack,
     [](const std::string&) {
         strings::utf16_to_utf8(ustring16{0xFFFE, 0x4800});
     }},
    {"SwappedUtf16ToUtf32", ending::exhausts_the_stack,
     [](const std::string&) {
         strings::utf16_to_utf32(ustring16{0xFFFE, 0x4800});
     }},
    {"SwappedUtf16InAVariant", ending::exhausts_the_stack,
     [](const std::string&) {
         types::variant(ustring16{0xFFFE, 0x4800}).as_string();
     }},
    {"EmptySearchInGh2", ending::never_returns,
     [](const std::string&) {
         std::string text = "abc";
         strings::gh2::replace_all(text, "", "x");
     }},
    {"RadixOne", ending::never_returns,
     [](const std::string&) {
         std::vector<char> buffer(1 << 20);
         generic::convert::ltoa(5, buffer.data(), 1);
     }},
    {"RadixZero", ending::divides_by_zero,
     [](const std::string&) {
         char buffer[66];
         generic::convert::ltoa(5, buffer, 0);
     }},
    {"ResolutionZero", ending::divides_by_zero,
     [](const std::string&) { generic::convert::to_md(150, types::device_unit::device, 0); }},
    {"LabelWithoutPayload", ending::never_returns,
     [](const std::string&) {
         serialization::labeled_text_buffer().assign(std::string("1\1a\1"));
     }},
    {"LabelWithNegativeLength", ending::never_returns,
     [](const std::string&) {
         serialization::labeled_text_buffer().assign(std::string("1\1a\1-4\1b"));
     }},
    {"LabelWithoutPayloadInAGroup", ending::never_returns,
     [](const std::string&) {
         serialization::labeled_text_buffer().assign(std::string("2\1g \1"
                                                                 "4\1"
                                                                 "1\1a\1\1"));
     }},
    {"RecoverAfterTheEnd", ending::never_returns,
     [](const std::string& folder) {
         parser::xml_stream_parser log(log_file(folder), 1);
         log.parse();
         log.recover(std::list<std::string>{"other"});
     }},
    {"TwoLinksToTheirOwnDirectory", ending::never_returns,
     [](const std::string& folder) {
         if (symlink(".", (folder + "/a").c_str()) != 0 ||
             symlink(".", (folder + "/b").c_str()) != 0)
             return;
         std::vector<ustring8> files;
         system::get_directory_files(ustring8(folder), files);
     }},
    {"TwoLinksToTheirOwnDirectoryInAScan", ending::never_returns,
     [](const std::string& folder) {
         if (symlink(".", (folder + "/a").c_str()) != 0 ||
             symlink(".", (folder + "/b").c_str()) != 0)
             return;
         i18n::message_catalogs set;
         set.load_directory(ustring8(folder), "en");
     }},
    {"IncludesThatDouble", ending::never_returns,
     [](const std::string& folder) {
         for (int level = 0; level < 60; ++level) {
             const std::string next = "<include file='" + std::to_string(level + 1) + ".xmc'/>";
             std::ofstream(folder + "/" + std::to_string(level) + ".xmc")
                 << "<?xml version='1.0'?><xmc version='1.1'>" << next << next << "</xmc>";
         }
         std::ofstream(folder + "/60.xmc") << "<?xml version='1.0'?><xmc version='1.1'>"
                                              "<catalog name='a' lang='en'></catalog></xmc>";
         i18n::message_catalogs set;
         set.load_file(ustring8(folder + "/0.xmc"), "en");
     }},
    {"FieldOfTwoGigabytes", ending::needs_memory,
     [](const std::string&) {
         i18n::format_value(i18n::message_item::type_double, 0.5,
                            "n\1fieldsize\1"
                            "2000000000");
     }},
    {"StoreToAPipe", ending::waits,
     [](const std::string& folder) {
         const std::string pipe = folder + "/pipe";
         if (mkfifo(pipe.c_str(), 0600) == 0)
             system::store_file(ustring8(pipe), ustring8("text"));
     }},
    {"SaveToAPipe", ending::waits,
     [](const std::string& folder) {
         const std::string pipe = folder + "/pipe";
         if (mkfifo(pipe.c_str(), 0600) == 0)
             config::file_item(ustring8(pipe)).save();
     }},
    {"NoMemoryInAConversion", ending::ends_as_unexpected,
     [](const std::string&) {
         const types::variant value(long_text);
         const test_support::failing_allocation failure;
         value.as_utf16();
     }},
    {"FailingStreamOfAVariant", ending::ends_as_unexpected,
     [](const std::string&) {
         struct : std::streambuf {
         } nowhere;
         std::ostream stream(&nowhere);
         stream.exceptions(std::ios::badbit);
         stream << types::variant(42);
     }},
    {"DestructorThatThrows", ending::ends_as_unexpected,
     [](const std::string&) {
         functor::delegate_t<void()> holder;
         static function_that_throws& function = *new function_that_throws;
         holder = functor::delegate_t<void()>(function);
     }},
};

class Hazard : public ::testing::TestWithParam<hazard> {};

TEST_P(Hazard, EndsAsDocumented) {
    const hazard& one = GetParam();
    const test_support::temporary_directory folder;
    test_support::child_limits limits;
    limits.cpu_seconds = one.how == ending::needs_memory ? 5 : 1;
    // There is no memory limit, because a thread needs memory for its stack.
    if (one.how == ending::exhausts_the_stack)
        limits.stack_bytes = std::size_t(1) << 20;
    else
        limits.address_space_bytes = std::size_t(1) << 29;

    const test_support::child_result child = test_support::run_in_child(
        [&] {
            test_support::exit_42_on_unexpected();
            if (one.how == ending::waits)
                alarm(1);
            one.run(folder.path());
        },
        limits);

    // A sanitizer has no memory limit, and it reports some of these hazards and ends the process
    // itself.
    if (test_support::under_sanitizer() && one.how == ending::needs_memory)
        return;
    EXPECT_FALSE(child.exited && child.exit_code == 0) << child.output;
    if (test_support::under_sanitizer())
        return;
    const bool out_of_memory = child.exited && child.exit_code == 99;
    switch (one.how) {
    case ending::exhausts_the_stack:
        EXPECT_EQ(SIGSEGV, child.signal) << child.exit_code;
        break;
    case ending::never_returns:
        // By then, a number in radix 1 has been written past its buffer, or past all memory.
        EXPECT_TRUE(out_of_memory || child.signal == SIGXCPU || child.signal == SIGKILL ||
                    child.signal == SIGSEGV)
            << child.signal << " " << child.exit_code;
        break;
    case ending::waits:
        EXPECT_EQ(SIGALRM, child.signal) << child.exit_code;
        break;
    case ending::divides_by_zero:
        EXPECT_EQ(SIGFPE, child.signal) << child.exit_code;
        break;
    case ending::ends_as_unexpected:
        EXPECT_EQ(42, child.exit_code) << child.signal;
        break;
    case ending::needs_memory:
        EXPECT_TRUE(out_of_memory) << child.signal << " " << child.exit_code;
        break;
    }
}

INSTANTIATE_TEST_SUITE_P(ClassC, Hazard, ::testing::ValuesIn(hazards),
                         [](const ::testing::TestParamInfo<hazard>& one) {
                             return std::string(one.param.name);
                         });

// Required results that are harmful but neither end nor block the process.

TEST(HarmlessLooking, ALongFunctionNameOverwritesWhatFollowsALocation) {
    using state = exceptions::exception::state;
    std::vector<char> room(sizeof(state) + 1024, 'x');
    const std::string name(400, 'f');
    ::new (room.data()) state(1, "file", name.c_str());
    EXPECT_EQ('f', room[sizeof(state)]) << "400 bytes do not fit into 256";
    EXPECT_EQ('x', room.back());
}

TEST(HarmlessLooking, SectionsOfEqualLengthGrowAFile) {
    const test_support::temporary_directory folder;
    const ustring8 path = folder.path("grows.cfg");
    std::string text;
    for (int i = 100; i < 150; ++i)
        text += "[" + std::to_string(i) + "]\nk" + std::to_string(i) + "=1\n";
    ASSERT_EQ(0, system::store_file(path, text));
    for (int round = 0; round < 2; ++round) {
        config::file_item item(path);
        item.load();
        item.save();
    }
    EXPECT_LT(10 * text.size(), test_support::read_bytes(path).size());
}

TEST(HarmlessLooking, ASaveAfterAFailedLoadEmptiesTheFile) {
    const test_support::temporary_directory folder;
    const std::string path = folder.write("tool.cfg", "[s]\na=1\n");
    // Files of 2 GiB are not loaded. This one is sparse.
    ASSERT_EQ(0, truncate(path.c_str(), 1L << 31));
    config::file_item item(path);
    EXPECT_TRUE(item.load());
    EXPECT_TRUE(item.save());
    EXPECT_EQ("", test_support::read_bytes(path));
}

// The method shown in docs/configuration.md: save only a file that can be read.
TEST(HarmlessLooking, ASaveThatChecksTheFileFirstKeepsIt) {
    const test_support::temporary_directory folder;
    const std::string path = folder.write("tool.cfg", "[s]\na=1\n");
    ASSERT_EQ(0, truncate(path.c_str(), 1L << 31));
    struct stat status;
    const bool is_readable = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                             status.st_size < (1L << 31) && ::access(path.c_str(), R_OK) == 0;
    EXPECT_FALSE(is_readable);
}

// The ends of all labels in a labeled text, those in its groups included, and of the lengths of
// empty values. Each string is a length, a separator, its bytes and a separator.
void find_label_ends(const std::string& text, std::size_t begin, std::size_t end,
                     std::set<std::size_t>& ends) {
    bool is_label = true;
    bool is_group = false;
    while (begin < end) {
        const std::size_t bytes = text.find('\1', begin) + 1;
        const std::size_t last = bytes + std::stoul(text.substr(begin, bytes - begin));
        if (is_label) {
            ends.insert(last + 1);
            is_group = text[last - 1] == ' ';
        } else if (last == bytes) {
            ends.insert(bytes - 1);
        } else if (is_group) {
            find_label_ends(text, bytes, last, ends);
        }
        is_label = !is_label;
        begin = last + 1;
    }
}

// The header says which truncations make the reader loop forever. The model detects them
// independently.
TEST(CutLabels, AreReadForeverOnlyAfterALabel) {
    serialization::labeled_text_buffer tree;
    tree.add_value("name", "one");
    serialization::labeled_serialize_buffer* const group = tree.create_group("group");
    group->add_value("a", 1);
    group->create_group("inner")->add_value("deep", "x");
    group->add_value("b", "two words");
    tree.add_value("z", "");
    const std::string text = tree.as_str();
    std::set<std::size_t> label_ends;
    find_label_ends(text, 0, text.size(), label_ends);
    std::set<std::size_t> endless;
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        test_support::tree_model model;
        if (model.read(text.substr(0, cut)) == test_support::tree_model::endless)
            endless.insert(cut);
    }
    EXPECT_EQ(label_ends, endless) << text;
}

}  // namespace
