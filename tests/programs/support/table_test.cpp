#include "support/table.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace tova_programs;

namespace {

table sample(const style& colors) {
    table list({"key", "count", "note"}, {align::left, align::right});
    list.add({"gr\xC3\xBC\xC3\x9F", "7", ""});
    list.add({colors.red("\xE6\x97\xA5\xE6\x9C\xAC"), "1234567", "a, \"b\""});
    list.add({"x"});
    return list;
}

}  // namespace

TEST(Table, AlignsByWhatATerminalShows) {
    std::ostringstream out;
    sample(style()).write(out, style());
    EXPECT_EQ("key     count  note\n"
              "gr\xC3\xBC\xC3\x9F        7\n"
              "\xE6\x97\xA5\xE6\x9C\xAC  1234567  a, \"b\"\n"
              "x\n",
              out.str());
}

TEST(Table, DoesNotCountColors) {
    std::ostringstream out;
    const style colors(true);
    sample(colors).write(out, colors);
    EXPECT_NE(std::string::npos,
              out.str().find("\x1b[1;31m\xE6\x97\xA5\xE6\x9C\xAC\x1b[0m  1234567"))
        << out.str();
}

TEST(Table, IsCsvWithQuotesWhereTheyAreNeeded) {
    std::ostringstream out;
    sample(style()).write_csv(out);
    EXPECT_EQ("key,count,note\r\ngr\xC3\xBC\xC3\x9F,7,\r\n"
              "\xE6\x97\xA5\xE6\x9C\xAC,1234567,\"a, \"\"b\"\"\"\r\nx,,\r\n",
              out.str());
    EXPECT_EQ("\"a\nb\"", csv_field("a\nb"));
}
