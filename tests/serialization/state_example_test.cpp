// Runs the state example as a user would.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using test_support::program_result;
using test_support::read_bytes;
using test_support::temporary_directory;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_text_buf;

program_result run(const std::string& folder, const std::string& arguments) {
    return test_support::run_program("cd '" + folder + "' && '" TOVA_EXAMPLE_PROGRAM "' " +
                                     arguments);
}

TEST(StateExample, ShowsTheBytesOfEachEncodingAndReadsThemBack) {
    const temporary_directory directory;
    const program_result result = run(directory.path(), "");
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ(read_bytes(TOVA_TEST_DATA "/serialization/state_example.txt"), result.output);
}

TEST(StateExample, LeavesAFileInEachEncoding) {
    const temporary_directory directory;
    EXPECT_EQ(0, run("/", "'" + directory.path() + "'").exit_code);

    const serialize_text_buf text(read_bytes(directory.path() + "/drawing.text"));
    EXPECT_EQ("Harbour, \xC3\xA9tude", text.read_string());
    const serialize_binary_buf binary(read_bytes(directory.path() + "/drawing.binary"));
    EXPECT_EQ("Harbour, \xC3\xA9tude", binary.read_string());
    labeled_text_buffer tree(read_bytes(directory.path() + "/drawing.labels"));
    ASSERT_TRUE(tree.has_group("begun"));
    EXPECT_EQ(29, tree.retrieve_group("begun")->retrieve_value("day").as_int());
}

TEST(StateExample, ReportsAFolderThatCannotBeWritten) {
    const program_result result = run("/", "/no/such/folder");
    EXPECT_EQ(1, result.exit_code);
    const std::string reason = "cannot write /no/such/folder/drawing.text\n";
    ASSERT_GE(result.output.size(), reason.size());
    EXPECT_NE(std::string::npos, result.output.find(reason)) << result.output;
}

}  // namespace
