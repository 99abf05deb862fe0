// Tests the data files, built with every C++ standard that programs may use.
//
// The program replaces `fsync` and `rename`, so a test can check in which order a store calls them
// and can make one of them fail.
#include <tova/extras/data_file.hpp>
#include <tova/tova.hpp>

#include "support/child_process.hpp"
#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct system_calls {
    std::vector<std::string> names;
    int failing = -1;  // the index of the call that fails with EIO
};
system_calls* s_calls = nullptr;

// Records the call. Returns whether it should fail.
bool notes_failure(const char* name) {
    if (s_calls == nullptr)
        return false;
    s_calls->names.emplace_back(name);
    errno = EIO;
    return static_cast<int>(s_calls->names.size()) - 1 == s_calls->failing;
}

}  // namespace

extern "C" int fsync(int file) {
    struct stat status;
    const bool is_directory = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    if (notes_failure(is_directory ? "fsync directory" : "fsync file"))
        return -1;
    return static_cast<int>(::syscall(SYS_fsync, file));
}

extern "C" int rename(const char* from, const char* to) noexcept {
    if (notes_failure("rename"))
        return -1;
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using tova::extras::check_error;
using tova::extras::data_error;
using tova::extras::data_format;
using tova::extras::data_item;
using tova::extras::data_status;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_text_buf;
using tova::types::variant;
namespace extras = tova::extras;

// The state of a small drawing program.
labeled_text_buffer drawing() {
    labeled_text_buffer tree;
    tree.add_value("title", "Harbour, \xC3\xA9tude");
    tree.add_value("strokes", std::string("\x78\x00\xD3\xFF\x01\x01", 6));
    tree.add_value("empty", "");
    labeled_serialize_buffer& pen = *tree.create_group("pen");
    pen.add_value("ink", -16760632);
    pen.add_value("width", 0.1);
    pen.create_group("tip")->add_value("shape", "round");
    pen.add_value("tip", "a value and a group");
    labeled_serialize_buffer& layers = *tree.create_group("layers");
    for (int layer = 0; layer < 12; ++layer)
        layers.create_group("layer " + std::to_string(layer))->add_value("opacity", layer / 12.0);
    tree.create_group("nothing");
    return tree;
}

std::string encoded(const labeled_text_buffer& tree) {
    std::string bytes;
    const data_status status = extras::encode_data(tree, bytes);
    EXPECT_TRUE(status) << status.message;
    return bytes;
}

std::string wrapped(const std::string& content) {
    return extras::_private::wrap_data(extras::_private::data_kind::labeled, 1, content);
}

std::string item(const std::string& text) {
    return std::to_string(text.size()) + '\1' + text + '\1';
}

const char kept[] = "the value before";

labeled_text_buffer kept_tree() {
    labeled_text_buffer tree;
    tree.add_value("kept", kept);
    return tree;
}

// --- The envelope --------------------------------------------------------------------------------

// Two spaces separate the bytes of a line from its note.
std::string bytes_of(const std::string& table) {
    std::string bytes;
    for (const std::string& line : test_support::lines_of(table)) {
        std::istringstream pairs(line.substr(0, line.find("  ")));
        for (std::string pair; pairs >> pair;)
            bytes += static_cast<char>(std::strtol(pair.c_str(), nullptr, 16));
    }
    return bytes;
}

TEST(DataFile, HasTheDocumentedBytes) {
    labeled_text_buffer tree;
    tree.add_value("a", 1);
    const auto blocks = test_support::guide_blocks("docs/extras.md", "bytes");
    ASSERT_EQ(1u, blocks.size());
    EXPECT_EQ(bytes_of(blocks[0].text), encoded(tree));
}

TEST(DataFile, StoresNumbersFromTheLeastSignificantByte) {
    serialize_binary_buf buffer(std::string(258, 'x'));
    std::string bytes;
    ASSERT_TRUE(extras::encode_data(buffer, bytes, 0x01020304));
    EXPECT_EQ(std::string("tovadata"
                          "\x01\x02\x00\x00"
                          "\x04\x03\x02\x01"
                          "\x02\x01\x00\x00\x00\x00\x00\x00",
                          24),
              bytes.substr(0, 24));
    EXPECT_EQ(32u + 258u, bytes.size());
}

TEST(DataFile, HasTheChecksumOfItsStandard) {
    extras::_private::data_checksum sum;
    sum.add("123456789", 9);
    EXPECT_EQ(0x995DC9BBDF1939FAu, sum.value());
}

TEST(DataFile, ReadsBackWhatItStored) {
    const std::string bytes = encoded(drawing());
    labeled_text_buffer tree = kept_tree();
    const data_status status = extras::decode_data(bytes, tree);
    EXPECT_TRUE(status) << status.message;
    EXPECT_EQ(1u, status.version);
    EXPECT_FALSE(tree.has_label("kept"));
    EXPECT_EQ("Harbour, \xC3\xA9tude", tree.retrieve_value("title").as_string());
    EXPECT_EQ(std::string("\x78\x00\xD3\xFF\x01\x01", 6),
              tree.retrieve_value("strokes").as_ustring());
    EXPECT_EQ(-16760632, tree.retrieve_group("pen")->retrieve_value("ink").as_int());
    EXPECT_EQ(
        "round",
        tree.retrieve_group("pen")->retrieve_group("tip")->retrieve_value("shape").as_string());
    EXPECT_EQ(bytes, encoded(tree));
}

TEST(DataFile, RefusesEveryPrefix) {
    const test_support::temporary_directory directory;
    const std::string bytes = encoded(drawing());
    ASSERT_GT(bytes.size(), 500u);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        labeled_text_buffer tree = kept_tree();
        const std::string path = directory.write("state.dat", bytes.substr(0, size));
        const data_status status = extras::load_data(path, tree);
        EXPECT_EQ(data_error::truncated, status.error);
        EXPECT_THAT(status.message,
                    StartsWith(path + (size == 0 ? ": the file is empty" : ": truncated, ")));
        EXPECT_EQ(size, status.offset);
        EXPECT_EQ(kept, tree.retrieve_value("kept").as_string());
    }
}

TEST(DataFile, RefusesEveryFlippedBit) {
    const std::string bytes = encoded(drawing());
    for (std::size_t at = 0; at < bytes.size(); ++at)
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(at);
            std::string flipped = bytes;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            labeled_text_buffer tree = kept_tree();
            const data_status status = extras::decode_data(flipped, tree);
            ASSERT_FALSE(status);
            ASSERT_FALSE(status.message.empty());
            ASSERT_EQ(kept, tree.retrieve_value("kept").as_string());
        }
}

TEST(DataFile, RefusesEveryChangedByte) {
    const std::string bytes = encoded(kept_tree());
    for (std::size_t at = 0; at < bytes.size(); ++at)
        for (int change = 1; change < 256; ++change) {
            std::string changed = bytes;
            changed[at] = static_cast<char>(changed[at] ^ change);
            labeled_text_buffer tree;
            ASSERT_FALSE(extras::decode_data(changed, tree)) << "byte " << at << ' ' << change;
        }
}

TEST(DataFile, ReportsEachError) {
    const std::string bytes = encoded(drawing());
    std::string newer = bytes;
    newer[8] = 2;
    std::string damaged = bytes;
    damaged[40] = '?';
    std::string other_kind;
    ASSERT_TRUE(extras::encode_data(serialize_text_buf(), other_kind));
    std::string version_9;
    ASSERT_TRUE(extras::encode_data(labeled_text_buffer(), version_9, 9));
    const struct {
        std::string bytes;
        data_error error;
        const char* message;
        unsigned long offset;
    } cases[] = {
        {"", data_error::truncated, "the file is empty", 0},
        {"tova", data_error::truncated, "truncated, 4 bytes of the header are there", 4},
        {"<xml/>", data_error::not_a_data_file, "not a data file", 0},
        {newer, data_error::unknown_envelope, "the envelope is of an unknown version", 8},
        {version_9.substr(0, 31), data_error::truncated,
         "truncated, 31 bytes of the header are there", 31},
        {bytes + "ab", data_error::trailing_bytes, "2 bytes follow the content", bytes.size()},
        {damaged, data_error::damaged, "damaged, the checksum differs", 0},
        {other_kind, data_error::wrong_kind, "the content is text, not labeled", 9},
        {version_9, data_error::newer_version, "the content has version 9, newer than 1", 12},
        {wrapped("1\1a\1"), data_error::invalid_content, "invalid content, a label has no payload",
         36},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        labeled_text_buffer tree;
        const data_status status = extras::decode_data(c.bytes, tree);
        EXPECT_EQ(c.error, status.error);
        EXPECT_EQ(c.message, status.message);
        EXPECT_EQ(c.offset, status.offset);
    }
}

TEST(DataFile, EachErrorHasAName) {
    EXPECT_STREQ("no error", extras::name(data_error::none));
    EXPECT_STREQ("checksum differs", extras::name(data_error::damaged));
    EXPECT_STREQ("invalid content", extras::name(data_error::invalid_content));
    EXPECT_STREQ("unknown", extras::name(static_cast<data_error>(99)));
}

TEST(DataFile, AcceptsContentOfAnOlderVersionAndReportsIt) {
    std::string bytes;
    ASSERT_TRUE(extras::encode_data(drawing(), bytes, 2));
    labeled_text_buffer tree;
    const data_status status = extras::decode_data(bytes, tree, 5);
    EXPECT_TRUE(status) << status.message;
    EXPECT_EQ(2u, status.version);
}

// --- Content with a correct checksum -------------------------------------------------------------

TEST(DataFileContent, EveryPrefixIsRefusedOrReadsBack) {
    labeled_text_buffer source = drawing();
    const std::string content = source.as_str();
    int accepted = 0;
    for (std::size_t size = 0; size < content.size(); ++size) {
        SCOPED_TRACE(size);
        labeled_text_buffer tree = kept_tree();
        if (extras::decode_data(wrapped(content.substr(0, size)), tree)) {
            EXPECT_EQ(content.substr(0, size), tree.as_str());
            ++accepted;
        } else {
            EXPECT_EQ(kept, tree.retrieve_value("kept").as_string());
        }
    }
    // The empty tree, and the ends of the first five of the six labels.
    EXPECT_EQ(6, accepted);
}

TEST(DataFileContent, EveryChangedByteIsRefusedOrReadsBack) {
    const std::string content = drawing().as_str();
    for (std::size_t at = 0; at < content.size(); ++at)
        for (const char byte : std::string("\0\1 0123456789-aA\n\xFF", 18)) {
            std::string changed = content;
            changed[at] = byte;
            labeled_text_buffer tree;
            if (extras::decode_data(wrapped(changed), tree)) {
                ASSERT_EQ(changed, tree.as_str());
            }
        }
}

TEST(DataFileContent, RefusesWhatATreeNeverWrites) {
    const struct {
        std::string content;
        const char* reason;
        unsigned long offset;
    } cases[] = {
        {"1\1a\1-4\1b", "a label has no payload", 4},
        {"x", "a label is malformed", 0},
        {"1\1a", "a label is malformed", 0},
        {"01\1a\0011\1b\1", "a label is malformed", 0},
        {"0x1\1a\0011\1b\1", "a label is malformed", 0},
        {"2\1a\0011\1b\1", "a label is malformed", 0},
        {"99999999999999999999999\1a\1", "a label is malformed", 0},
        {item("a"), "a label has no payload", 4},
        {item("a") + "1\1bc", "a label has no payload", 4},
        {item("") + item("b"), "a label is empty", 0},
        {item("\ta") + item("b"), "a label has whitespace around it", 2},
        {item("a\n") + item("b"), "a label has whitespace around it", 2},
        {item("a  ") + item(item("b") + item("c")), "a label has whitespace around it", 2},
        {item("b") + item("") + item("a") + item(""), "the labels are not in order", 9},
        {item("a") + item("1") + item("a") + item("2"), "the labels are not in order", 10},
        {item("a ") + item(item("b") + item("c")) + item("a") + item("2"),
         "the labels are not in order", 18},
        {item("a ") + item(""), "a group is empty", 7},
        {item("a ") + item("b"), "a label is malformed", 7},
        {item("a ") + item(item("b")), "a label has no payload", 11},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        labeled_text_buffer tree = kept_tree();
        const data_status status = extras::decode_data(wrapped(c.content), tree);
        EXPECT_EQ(data_error::invalid_content, status.error);
        EXPECT_EQ(std::string("invalid content, ") + c.reason, status.message);
        EXPECT_EQ(32 + c.offset, status.offset);
        EXPECT_EQ(kept, tree.retrieve_value("kept").as_string());
    }
}

TEST(DataFileContent, AcceptsGroupsDeeperThanAnyStack) {
    // The text is written from the innermost group outwards. Each group begins with its label and
    // its size.
    std::vector<std::string> starts;
    std::size_t size = item("a").size() + item("b").size();
    for (int depth = 0; depth < 20000; ++depth) {
        starts.push_back(item("g ") + std::to_string(size) + '\1');
        size += starts.back().size() + 1;
    }
    std::string content;
    for (std::size_t i = starts.size(); i-- > 0;)
        content += starts[i];
    content += item("a") + item("b") + std::string(starts.size(), '\1');
    labeled_text_buffer tree;
    EXPECT_TRUE(extras::decode_data(wrapped(content), tree));
    std::size_t depth = 0;
    extras::walk(tree, [&depth](const std::vector<std::string>& path, const variant& value) {
        depth = path.size();
        EXPECT_EQ("b", value.as_string());
    });
    EXPECT_EQ(20001u, depth);
    EXPECT_EQ(wrapped(content), encoded(tree));
}

TEST(DataFileContent, StoresNoTreeThatWouldNotReadBack) {
    labeled_text_buffer empty_label;
    empty_label.add_value(" ", 1);
    labeled_text_buffer infinity;
    infinity.create_group("g")->add_value("a", -std::numeric_limits<double>::infinity());
    labeled_text_buffer no_number;
    no_number.add_value("a", std::numeric_limits<float>::quiet_NaN());
    const struct {
        labeled_text_buffer* tree;
        const char* message;
    } cases[] = {
        {&empty_label, "invalid content, a label is empty"},
        {&infinity, "invalid content, an infinity or NaN would read back as 0"},
        {&no_number, "invalid content, an infinity or NaN would read back as 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        std::string bytes = "unchanged";
        const data_status status = extras::encode_data(*c.tree, bytes);
        EXPECT_EQ(data_error::invalid_content, status.error);
        EXPECT_EQ(c.message, status.message);
        EXPECT_EQ("unchanged", bytes);
    }
}

TEST(DataFileContent, FloatingPointNumbersReadBackExactly) {
    struct comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const double doubles[] = {0.1,
                              1.0 / 3,
                              -0.0,
                              3.141592653589793,
                              1e300,
                              std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::min(),
                              std::numeric_limits<double>::denorm_min()};
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new comma));
    for (const double number : doubles) {
        labeled_text_buffer tree;
        tree.create_group("g")->add_value("double", number);
        tree.add_value("float", static_cast<float>(0.1));
        tree.add_value("long", 0.1L);
        labeled_text_buffer read;
        EXPECT_TRUE(extras::decode_data(encoded(tree), read));
        EXPECT_EQ(number, extras::retrieve<double>(*read.retrieve_group("g"), "double").value());
        EXPECT_EQ(static_cast<float>(0.1), extras::retrieve<float>(read, "float").value());
        EXPECT_EQ(0.1L, extras::retrieve<long double>(read, "long").value());
        // The stored tree keeps its types.
        EXPECT_TRUE(tree.retrieve_value("float").type() == typeid(float));
    }
    std::locale::global(before);
}

TEST(DataFileContent, ExactWritesAsFewDigitsAsRestoreTheNumber) {
    EXPECT_EQ("0.1", extras::exact(0.1));
    EXPECT_EQ("0.30000000000000004", extras::exact(0.1 + 0.2));
    EXPECT_EQ("3.141592653589793", extras::exact(3.141592653589793));
    EXPECT_EQ("0.1", extras::exact(0.1f));
    EXPECT_EQ("16777217", extras::exact(16777217.0));
    EXPECT_EQ("-0", extras::exact(-0.0));
    EXPECT_EQ("inf", extras::exact(std::numeric_limits<double>::infinity()));
}

// --- Text and binary buffers ---------------------------------------------------------------------

const std::vector<data_item> score = {data_item::string, data_item::int32, data_item::float64};

template <typename Buffer>
Buffer scores() {
    Buffer buffer;
    buffer.append_string("Mia");
    buffer.append_int32(1200);
    buffer.append_double(61.25, 17);
    buffer.append_string("");
    buffer.append_int32(-5);
    buffer.append_double(0.1, 17);
    return buffer;
}

template <typename Buffer>
class DataFileBuffer : public ::testing::Test {};
typedef ::testing::Types<serialize_text_buf, serialize_binary_buf> both_encodings;
TYPED_TEST_SUITE(DataFileBuffer, both_encodings, );

TYPED_TEST(DataFileBuffer, ReadsBackFromTheStart) {
    std::string bytes;
    ASSERT_TRUE(extras::encode_data(scores<TypeParam>(), bytes, {3, score}));
    TypeParam buffer("1\1");
    buffer.read_int8();
    ASSERT_TRUE(extras::decode_data(bytes, buffer, {3, score}));
    EXPECT_EQ("Mia", buffer.read_string());
    EXPECT_EQ(1200, buffer.read_int32());
    EXPECT_EQ(61.25, buffer.read_double());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_EQ(-5, buffer.read_int32());
    EXPECT_EQ(0.1, buffer.read_double());
    EXPECT_TRUE(buffer.at_end());
}

TYPED_TEST(DataFileBuffer, RefusesEveryPrefixAndEveryFlippedBit) {
    std::string bytes;
    ASSERT_TRUE(extras::encode_data(scores<TypeParam>(), bytes));
    TypeParam buffer("unchanged");
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(extras::decode_data(bytes.substr(0, size), buffer)) << size;
    for (std::size_t at = 0; at < bytes.size(); ++at)
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = bytes;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            EXPECT_FALSE(extras::decode_data(flipped, buffer)) << at;
        }
    EXPECT_EQ("unchanged", buffer.as_str());
}

TYPED_TEST(DataFileBuffer, ContentConsistsOfCompleteRecords) {
    const std::string content = scores<TypeParam>().as_str();
    TypeParam first;
    first.append_string("Mia");
    first.append_int32(1200);
    first.append_double(61.25, 17);
    for (std::size_t size = 0; size <= content.size(); ++size) {
        const std::string file = extras::_private::wrap_data(extras::_private::kind_of(TypeParam()),
                                                             1, content.substr(0, size));
        TypeParam buffer;
        const bool is_whole = size == 0 || size == first.as_str().size() || size == content.size();
        EXPECT_EQ(is_whole, extras::decode_data(file, buffer, {1, score}).error == data_error::none)
            << size;
    }
}

TYPED_TEST(DataFileBuffer, StoresNoRecordsOfAnotherForm) {
    std::string bytes;
    TypeParam buffer = scores<TypeParam>();
    buffer.append_int8(1);
    const data_status status = extras::encode_data(buffer, bytes, {1, score});
    EXPECT_EQ(data_error::invalid_content, status.error);
    EXPECT_TRUE(bytes.empty());
}

TYPED_TEST(DataFileBuffer, ChecksEveryTypeOfItem) {
    TypeParam buffer;
    buffer.append_int8(-128);
    buffer.append_int16(-32768);
    buffer.append_int32(std::numeric_limits<int>::min());
    buffer.append_int64(std::numeric_limits<long>::min());
    buffer.append_uint8(255);
    buffer.append_uint16(65535);
    buffer.append_uint32(std::numeric_limits<unsigned>::max());
    buffer.append_uint64(std::numeric_limits<unsigned long>::max());
    buffer.append_float(-1.5f, 9);
    buffer.append_double(1e-300, 17);
    buffer.append_string("s");
    buffer.append_buffer(TypeParam());
    const std::vector<data_item> all = {data_item::int8,    data_item::int16,  data_item::int32,
                                        data_item::int64,   data_item::uint8,  data_item::uint16,
                                        data_item::uint32,  data_item::uint64, data_item::float32,
                                        data_item::float64, data_item::string, data_item::buffer};
    std::string bytes;
    data_status status = extras::encode_data(buffer, bytes, {1, all});
    EXPECT_TRUE(status) << status.message;
    status = extras::decode_data(bytes, buffer, {1, all});
    EXPECT_TRUE(status) << status.message;
}

TEST(DataFileText, RefusesNumbersThatReadAsOthers) {
    const struct {
        const char* content;
        data_item item;
    } cases[] = {
        {"300\1", data_item::int8},     {"010\1", data_item::int32},
        {"0x10\1", data_item::int32},   {"-1\1", data_item::uint64},
        {"+1\1", data_item::int32},     {"-0\1", data_item::int16},
        {"\1", data_item::int64},       {"1.5\1", data_item::uint8},
        {"inf\1", data_item::float64},  {"1,5\1", data_item::float32},
        {"1e99\1", data_item::float32}, {"nan\1", data_item::float32},
        {"-5\1", data_item::string},    {"3\1ab\1", data_item::buffer},
        {"65536\1", data_item::uint16}, {"1", data_item::uint32},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        serialize_text_buf buffer;
        const std::string file =
            extras::_private::wrap_data(extras::_private::data_kind::text, 1, c.content);
        EXPECT_EQ(data_error::invalid_content,
                  extras::decode_data(file, buffer, {1, {c.item}}).error);
    }
}

// --- Files ---------------------------------------------------------------------------------------

TEST(DataFileStore, WritesBesideSyncsAndRenames) {
    const test_support::temporary_directory directory;
    const std::string path = directory.path("state.dat");
    system_calls calls;
    s_calls = &calls;
    const data_status status = extras::store_data(path, drawing());
    s_calls = nullptr;
    EXPECT_TRUE(status) << status.message;
    EXPECT_THAT(calls.names, ElementsAre("fsync file", "rename", "fsync directory"));
    EXPECT_THAT(test_support::read_bytes(path), StartsWith("tovadata"));
}

TEST(DataFileStore, AnyFailureKeepsTheOldFile) {
    for (int failing = 0; failing < 2; ++failing) {
        SCOPED_TRACE(failing);
        const test_support::temporary_directory directory;
        const std::string path = directory.write("state.dat", "old");
        system_calls calls;
        calls.failing = failing;
        s_calls = &calls;
        const data_status status = extras::store_data(path, drawing());
        s_calls = nullptr;
        EXPECT_EQ(data_error::file, status.error);
        EXPECT_THAT(status.message, StartsWith(path + ": cannot "));
        EXPECT_THAT(status.message, HasSubstr("Input/output error"));
        EXPECT_EQ("old", test_support::read_bytes(path));
        EXPECT_EQ(0, ::unlink(path.c_str()));
        EXPECT_EQ(0, ::rmdir(directory.path().c_str())) << "the directory still has a file";
        EXPECT_EQ(0, ::mkdir(directory.path().c_str(), 0700));
    }
}

TEST(DataFileStore, ReportsADirectoryThatCannotBeSynced) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("state.dat", "old");
    system_calls calls;
    calls.failing = 2;
    s_calls = &calls;
    const data_status status = extras::store_data(path, drawing());
    s_calls = nullptr;
    EXPECT_EQ(path + ": replaced, but the directory cannot be synced: Input/output error",
              status.message);
    EXPECT_THAT(test_support::read_bytes(path), StartsWith("tovadata"));
}

TEST(DataFileStore, AFullDiskKeepsTheOldFile) {
    test_support::expect_in_child([] {
        const test_support::temporary_directory directory;
        const std::string path = directory.write("state.dat", "old");
        const struct rlimit limit = {100, 100};
        std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
        EXPECT_EQ(path + ": cannot write: File too large",
                  extras::store_data(path, drawing()).message);
        EXPECT_EQ("old", test_support::read_bytes(path));
    });
}

TEST(DataFileStore, KeepsTheModeOfTheFile) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("state.dat", "old");
    for (const mode_t mode : {0600u, 0640u, 0444u}) {
        ASSERT_EQ(0, ::chmod(path.c_str(), mode));
        ASSERT_TRUE(extras::store_data(path, drawing()));
        struct stat status;
        ASSERT_EQ(0, ::stat(path.c_str(), &status));
        EXPECT_EQ(mode, status.st_mode & 07777u);
    }
}

TEST(DataFileStore, ANewFileHasTheModeOfTheProcess) {
    test_support::expect_in_child([] {
        const test_support::temporary_directory directory;
        ::umask(027);
        const std::string path = directory.path("state.dat");
        ASSERT_TRUE(extras::store_data(path, drawing()));
        struct stat status;
        ASSERT_EQ(0, ::stat(path.c_str(), &status));
        EXPECT_EQ(0640u, status.st_mode & 07777u);
    });
}

TEST(DataFileStore, ALinkKeepsLeadingToTheFile) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("real/state.dat", "old");
    const std::string link = directory.path("link");
    ASSERT_EQ(0, ::symlink("real/state.dat", link.c_str()));
    ASSERT_TRUE(extras::store_data(link, drawing()));
    struct stat status;
    ASSERT_EQ(0, ::lstat(link.c_str(), &status));
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    labeled_text_buffer tree;
    EXPECT_TRUE(extras::load_data(path, tree));
    EXPECT_TRUE(extras::load_data(link, tree));

    const std::string nowhere = directory.path("nowhere");
    ASSERT_EQ(0, ::symlink("missing", nowhere.c_str()));
    EXPECT_EQ(nowhere + ": cannot follow the link: No such file or directory",
              extras::store_data(nowhere, tree).message);
}

TEST(DataFileStore, WritesIntoTheWorkingDirectory) {
    test_support::expect_in_child([] {
        const test_support::temporary_directory directory;
        ASSERT_EQ(0, ::chdir(directory.path().c_str()));
        EXPECT_EQ("", extras::store_data("state.dat", drawing()).message);
        labeled_text_buffer tree;
        EXPECT_EQ("", extras::load_data("state.dat", tree).message);
        ASSERT_EQ(0, ::chdir("/"));
    });
}

TEST(DataFileStore, RefusesAnythingExceptARegularFile) {
    const test_support::temporary_directory directory;
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
    labeled_text_buffer tree = kept_tree();
    for (const std::string& path : {pipe, directory.path(), std::string("/dev/full")}) {
        EXPECT_EQ(path + ": not a regular file", extras::store_data(path, tree).message);
        EXPECT_EQ(path + ": not a regular file", extras::load_data(path, tree).message);
    }
    const std::string missing = directory.path("missing/state.dat");
    EXPECT_EQ(missing + ": cannot open: No such file or directory",
              extras::load_data(missing, tree).message);
    EXPECT_EQ(missing + ": cannot create a file beside it: No such file or directory",
              extras::store_data(missing, tree).message);
    EXPECT_EQ(": the path is empty", extras::store_data("", tree).message);
    EXPECT_EQ(kept, tree.retrieve_value("kept").as_string());
}

TEST(DataFileStore, APlainUserCannotReplaceFilesInADirectoryOfOthers) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("state.dat", "old");
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0555));
    test_support::expect_as_plain_user([&path] {
        EXPECT_EQ(path + ": cannot create a file beside it: Permission denied",
                  extras::store_data(path, drawing()).message);
    });
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0755));
    EXPECT_EQ("old", test_support::read_bytes(path));
}

// --- Labels --------------------------------------------------------------------------------------

TEST(DataFileLabels, AWalkSeesEveryLabelInOrder) {
    labeled_text_buffer tree;
    tree.add_value("b", 2.5);
    tree.add_value("b b", "");
    labeled_serialize_buffer& group = *tree.create_group("a");
    group.add_value("z", "last");
    group.create_group("empty");
    tree.create_group("b")->add_value("c", 3);
    std::vector<std::string> seen;
    extras::walk(tree, [&seen](const std::vector<std::string>& path, const variant& value) {
        std::string line;
        for (const std::string& label : path)
            line += "/" + label;
        seen.push_back(line + "=" + value.as_string() + (value == tova::types::nil ? "nil" : ""));
    });
    EXPECT_THAT(seen, ElementsAre("/a/empty=nil", "/a/z=last", "/b=2.5", "/b/c=3", "/b b="));

    std::vector<std::string> inner;
    extras::walk(group, [&inner](const std::vector<std::string>& path, const variant&) {
        inner.push_back(path.back());
    });
    EXPECT_THAT(inner, ElementsAre("empty", "z"));
}

TEST(DataFileLabels, AWalkKeepsTypesAndMayReplaceValues) {
    labeled_text_buffer tree = drawing();
    extras::walk(tree, [&tree](const std::vector<std::string>& path, const variant& value) {
        if (path.size() == 2 && path[1] == "ink") {
            EXPECT_TRUE(value.type() == typeid(int));
            tree.retrieve_group("pen")->add_value("ink", 7);
        }
    });
    EXPECT_EQ(7, tree.retrieve_group("pen")->retrieve_value("ink").as_int());
}

TEST(DataFileLabels, ListsTheLabelsOfATree) {
    const labeled_text_buffer tree = drawing();
    EXPECT_THAT(extras::labels(tree),
                ElementsAre("empty", "layers", "nothing", "pen", "strokes", "title"));
    EXPECT_THAT(extras::labels(*tree.retrieve_group("pen")), ElementsAre("ink", "tip", "width"));
    EXPECT_THAT(extras::labels(labeled_text_buffer()), IsEmpty());
}

TEST(DataFileLabels, RemovesOneLabelAndKeepsTheOthers) {
    labeled_text_buffer tree = drawing();
    const std::string before = tree.as_str();
    EXPECT_FALSE(extras::remove_label(tree, "missing"));
    EXPECT_EQ(before, tree.as_str());

    EXPECT_TRUE(extras::remove_label(*tree.retrieve_group("pen"), "tip"));
    EXPECT_TRUE(extras::remove_label(tree, "layers"));
    EXPECT_THAT(extras::labels(tree), ElementsAre("empty", "nothing", "pen", "strokes", "title"));
    EXPECT_THAT(extras::labels(*tree.retrieve_group("pen")), ElementsAre("ink", "width"));
    EXPECT_TRUE(tree.retrieve_value("nothing") == tova::types::nil);
    EXPECT_TRUE(tree.retrieve_group("pen")->retrieve_value("width").type() == typeid(double));

    for (const std::string& label : extras::labels(tree))
        EXPECT_TRUE(extras::remove_label(tree, label));
    EXPECT_TRUE(tree.is_empty());
}

TEST(DataFileLabels, RetrievesNumbersAndStringsOrTheReason) {
    labeled_text_buffer tree;
    tree.add_value("number", "42");
    tree.add_value("large", 300);
    tree.add_value("half", 2.5);
    tree.add_value("text", "abc");
    tree.create_group("group")->add_value("x", 1);
    EXPECT_EQ(42, extras::retrieve<int>(tree, "number").value());
    EXPECT_EQ("42", extras::retrieve<std::string>(tree, "number").value());
    EXPECT_EQ(check_error::out_of_range, extras::retrieve<signed char>(tree, "large").code());
    EXPECT_EQ(check_error::invalid, extras::retrieve<int>(tree, "half").code());
    EXPECT_EQ(2.5, extras::retrieve<double>(tree, "half").value());
    EXPECT_EQ(check_error::invalid, extras::retrieve<int>(tree, "text").code());
    EXPECT_EQ("abc", extras::retrieve<tova::strings::ustring8>(tree, "text").value());
    EXPECT_EQ(check_error::empty, extras::retrieve<int>(tree, "missing").code());
    EXPECT_EQ(check_error::empty, extras::retrieve<std::string>(tree, "group").code());
}

}  // namespace
