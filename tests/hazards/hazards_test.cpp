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
#include <tova/functor/member_function.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/units.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/format.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/strings/gh2.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>
#include <tova/types/variant.hpp>

#include "serialization/tree_model.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <limits>
#include <list>
#include <new>
#include <ostream>
#include <set>
#include <stdexcept>
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
    leaves_its_memory,   // reads where nothing is accessible
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

// Limits on time, stack and memory.
test_support::child_limits all_limits() {
    test_support::child_limits limits;
    limits.cpu_seconds = 5;
    limits.stack_bytes = std::size_t(1) << 20;
    limits.address_space_bytes = std::size_t(1) << 29;
    return limits;
}

// Reads four digits at the end of the accessible memory, without a terminator after them.
void parse_without_a_terminator() {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    char* const end = static_cast<char*>(memory) + page;
    if (mprotect(end, page, PROT_NONE) != 0)
        return;
    std::memset(memory, '1', page);
    generic::convert::str_to_int(end - 4, 0, types::radix_t::decimal, false);
}

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
    {"ReadLoopUntilTheEnd", ending::never_returns,
     [](const std::string&) {
         const serialization::serialize_text_buf buffer("7\1-5\1");
         while (!buffer.at_end()) {
             buffer.read_int32();
             buffer.read_string();
         }
     }},
    {"SignedParserWithoutATerminator", ending::leaves_its_memory,
     [](const std::string&) { parse_without_a_terminator(); }},
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
    test_support::child_limits limits = all_limits();
    limits.cpu_seconds = one.how == ending::needs_memory ? 5 : 1;

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
    case ending::leaves_its_memory:
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

// Required results that are harmful but neither end nor block the process. Each is shown in a child
// with the same limits.

TEST(HarmlessLooking, ALongFunctionNameOverwritesWhatFollowsALocation) {
    test_support::expect_in_child(
        [] {
            using state = exceptions::exception::state;
            std::vector<char> room(sizeof(state) + 1024, 'x');
            const std::string name(400, 'f');
            ::new (room.data()) state(1, "file", name.c_str());
            EXPECT_EQ('f', room[sizeof(state)]) << "400 bytes do not fit into 256";
            EXPECT_EQ('x', room.back());
        },
        all_limits());
}

// The buffer that is meant is the beginning of a larger one.
TEST(HarmlessLooking, ALongNumberOverwritesWhatFollowsItsBuffer) {
    test_support::expect_in_child(
        [] {
            const std::size_t meant = 8;
            std::vector<char> room(80, 'x');
            generic::convert::lltoa(std::numeric_limits<long>::min(), room.data(), 2);
            EXPECT_EQ('0', room[meant]);
            EXPECT_EQ('\0', room[65]) << "a sign and 64 digits";
            EXPECT_EQ('x', room[66]);
        },
        all_limits());
}

// A node of a list. Its memory is not reused, so that a test can look at a deleted one.
struct list_node : generic::abilities::reference_count_pointer_ability<list_node> {
    list_node() { allocated = true; }
    ~list_node() { ++s_deleted; }
    static void* operator new(std::size_t bytes) { return ::operator new(bytes); }
    static void operator delete(void*) {}
    memory::pointers::shared_pointer<list_node> next;
    static int s_deleted;
};
int list_node::s_deleted = 0;

TEST(HarmlessLooking, AnAssignmentToAHolderMayHoldADeletedObject) {
    test_support::expect_in_child(
        [] {
            memory::pointers::shared_pointer<list_node> head = new list_node;
            head->next = new list_node;
            list_node* const next = head->next.get();
            head = next;
            EXPECT_EQ(2, list_node::s_deleted);
            EXPECT_EQ(next, head.get());
        },
        all_limits());
}

// The method shown in the guide: a holder of the new object during the assignment.
TEST(HarmlessLooking, AnAssignmentWithASecondHolderKeepsTheObject) {
    test_support::expect_in_child(
        [] {
            memory::pointers::shared_pointer<list_node> head = new list_node;
            head->next = new list_node;
            const memory::pointers::shared_pointer<list_node> next = head->next;
            head = next;
            EXPECT_EQ(1, list_node::s_deleted);
            EXPECT_EQ(next.get(), head.get());
        },
        all_limits());
}

struct listener {
    ~listener() { s_destroyed = true; }
    void hear() { s_calls_after_the_end += s_destroyed; }
    static bool s_destroyed;
    static int s_calls_after_the_end;
};
bool listener::s_destroyed = false;
int listener::s_calls_after_the_end = 0;

// The memory of the object stays, and its function uses none of it.
TEST(HarmlessLooking, ADelegateCallsAnObjectThatIsDestroyed) {
    test_support::expect_in_child(
        [] {
            alignas(listener) unsigned char room[sizeof(listener)];
            listener* const object = ::new (room) listener;
            functor::delegate_t<void()> call =
                functor::member_function_t<listener, void()>(object, &listener::hear);
            call.invoke();
            EXPECT_EQ(0, listener::s_calls_after_the_end);
            object->~listener();
            call.invoke();
            EXPECT_EQ(1, listener::s_calls_after_the_end);
        },
        all_limits());
}

// After an erase the reference refers to nothing, which cannot be shown. A copy stays.
TEST(HarmlessLooking, AReferenceToAMessageChangesWithTheNextLoad) {
    const test_support::temporary_directory folder;
    test_support::expect_in_child(
        [&folder] {
            const auto file = [&folder](const std::string& name, const std::string& text) {
                return ustring8(folder.write(
                    name, "<?xml version='1.0'?><xmc version='1.1'><catalog name='a' lang='en'>"
                          "<msg name='m'>" +
                              text + "</msg></catalog></xmc>"));
            };
            i18n::message_catalogs set;
            set.load_file(file("first.xmc", "first"), "en");
            const i18n::message_t& message = set.message("a", "m");
            const i18n::message_t copy = message;
            EXPECT_EQ("first", message.as_string(generic::varg_list()));
            set.load_file(file("second.xmc", "second"), "en");
            EXPECT_EQ("second", message.as_string(generic::varg_list()));
            set.erase();
            EXPECT_EQ("first", copy.as_string(generic::varg_list()));
        },
        all_limits());
}

// The files are sparse, so they need no disk space.
TEST(HarmlessLooking, AFileOf4GibAnd10BytesLoadsAs10Bytes) {
    const test_support::temporary_directory folder;
    test_support::expect_in_child(
        [&folder] {
            const std::string path = folder.write("large", "0123456789abc");
            ASSERT_EQ(0, truncate(path.c_str(), (4L << 30) + 10));
            ustring8 content;
            EXPECT_EQ(0, system::load_file(ustring8(path), content));
            EXPECT_EQ("0123456789", content);
        },
        all_limits());
}

// Changes only the length of a string, which is the word after its pointer, so that no test has to
// fill four gigabytes.
void set_length(ustring8& content, std::size_t length) {
    std::memcpy(reinterpret_cast<char*>(&content) + sizeof(char*), &length, sizeof length);
}

TEST(HarmlessLooking, AStoreOf2GibAndMoreLosesContent) {
    if (test_support::under_sanitizer())
        return;
    const test_support::temporary_directory folder;
    test_support::child_limits limits = all_limits();
    const std::size_t gib = std::size_t(1) << 30;
    limits.address_space_bytes = 6 * gib;
    test_support::expect_in_child(
        [&folder, gib] {
            ustring8 content;
            content.reserve(4 * gib + 20);
            content = "0123456789abc";
            const struct {
                std::size_t size;
                const char* stored;
            } cases[] = {{13, "0123456789abc"},
                         {2 * gib, ""},
                         {4 * gib - 1, ""},
                         {4 * gib, ""},
                         {4 * gib + 10, "0123456789"}};
            for (const auto& c : cases) {
                SCOPED_TRACE(c.size);
                const std::string path = folder.write("large", "before");
                set_length(content, c.size);
                ASSERT_EQ(c.size, content.size());
                EXPECT_EQ(0, system::store_file(ustring8(path), content));
                EXPECT_EQ(c.stored, test_support::read_bytes(path));
            }
            set_length(content, 13);
        },
        limits);
}

TEST(HarmlessLooking, SectionsOfEqualLengthGrowAFile) {
    const test_support::temporary_directory folder;
    test_support::expect_in_child(
        [&folder] {
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
        },
        all_limits());
}

// A file of 2 GiB, which is not loaded. It is sparse.
std::string file_that_is_too_large(const test_support::temporary_directory& folder) {
    const std::string path = folder.write("tool.cfg", "[s]\na=1\n");
    EXPECT_EQ(0, truncate(path.c_str(), 1L << 31));
    return path;
}

TEST(HarmlessLooking, ASaveAfterAFailedLoadEmptiesTheFile) {
    const test_support::temporary_directory folder;
    test_support::expect_in_child(
        [&folder] {
            const std::string path = file_that_is_too_large(folder);
            config::file_item item(path);
            EXPECT_TRUE(item.load());
            EXPECT_TRUE(item.save());
            EXPECT_EQ("", test_support::read_bytes(path));
        },
        all_limits());
}

// The check shown in docs/configuration.md: whether there is no file, or one that can be read.
bool may_save(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
        return errno == ENOENT;
    return S_ISREG(status.st_mode) && status.st_size < (1L << 31) &&
           ::access(path.c_str(), R_OK) == 0;
}

// Loads, changes and saves settings as docs/configuration.md shows it.
void change_settings(const std::string& path) {
    config::file_item item(path);
    const bool keeps = may_save(item.get_filename());
    item.load();
    item.set("s.b = 2", 0);
    if (keeps) {
        EXPECT_TRUE(item.save());
    }
}

TEST(HarmlessLooking, ASaveThatChecksTheFileFirstKeepsIt) {
    const test_support::temporary_directory folder;
    test_support::expect_in_child(
        [&folder] {
            const std::string large = file_that_is_too_large(folder);
            change_settings(large);
            struct stat status;
            ASSERT_EQ(0, ::stat(large.c_str(), &status));
            EXPECT_EQ(1L << 31, status.st_size);

            const std::string small = folder.write("small.cfg", "[s]\na=1\n");
            change_settings(small);
            EXPECT_EQ("[s]\na=1\nb=2\n\n", test_support::read_bytes(small));

            const std::string missing = folder.path("missing.cfg");
            change_settings(missing);
            EXPECT_EQ("[s]\nb=2\n\n", test_support::read_bytes(missing));
        },
        all_limits());
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

// A labeled text with groups and an empty value.
std::string labeled_text() {
    serialization::labeled_text_buffer tree;
    tree.add_value("name", "one");
    serialization::labeled_serialize_buffer* const group = tree.create_group("group");
    group->add_value("a", 1);
    group->create_group("inner")->add_value("deep", "x");
    group->add_value("b", "two words");
    tree.add_value("z", "");
    return tree.as_str();
}

// The header says which truncations make the reader loop forever. The model detects them
// independently.
TEST(CutLabels, AreReadForeverOnlyAfterALabel) {
    const std::string text = labeled_text();
    std::set<std::size_t> label_ends;
    find_label_ends(text, 0, text.size(), label_ends);
    std::set<std::size_t> endless;
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        test_support::tree_model model;
        if (model.read(text.substr(0, cut)) == test_support::tree_model::endless)
            endless.insert(cut);
    }
    EXPECT_EQ(label_ends, endless) << text;
    test_support::child_limits limits = all_limits();
    limits.cpu_seconds = 1;
    // At the beginning, inside the groups and at the end.
    std::vector<std::size_t> cuts(endless.begin(), endless.end());
    ASSERT_LE(4u, cuts.size());
    for (const std::size_t cut :
         {cuts.front(), cuts[cuts.size() / 3], cuts[cuts.size() / 2], cuts.back()}) {
        SCOPED_TRACE(cut);
        const test_support::child_result child = test_support::run_in_child(
            [&] { serialization::labeled_text_buffer().assign(text.substr(0, cut)); }, limits);
        EXPECT_FALSE(child.exited && child.exit_code == 0) << "the reader returned";
        if (!test_support::under_sanitizer()) {
            EXPECT_TRUE(child.signal == SIGXCPU || child.signal == SIGKILL ||
                        (child.exited && child.exit_code == 99))
                << child.signal << " " << child.exit_code;
        }
    }
}

TEST(CutLabels, AreOtherwiseReadAsTheModelReadsThem) {
    test_support::expect_in_child(
        [] {
            const std::string text = labeled_text();
            unsigned loaded = 0;
            for (std::size_t cut = 0; cut <= text.size(); ++cut) {
                SCOPED_TRACE(text.substr(0, cut));
                test_support::tree_model model;
                const auto expected = model.read(text.substr(0, cut));
                if (expected == test_support::tree_model::endless)
                    continue;
                serialization::labeled_text_buffer tree;
                bool raised = false;
                try {
                    tree.assign(text.substr(0, cut));
                } catch (const std::out_of_range&) {
                    raised = true;
                }
                EXPECT_EQ(expected == test_support::tree_model::raises, raised);
                if (!raised) {
                    EXPECT_TRUE(model.matches(tree));
                }
                ++loaded;
            }
            EXPECT_LT(text.size() / 2, loaded);
        },
        all_limits());
}

}  // namespace
