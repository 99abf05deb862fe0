// Compares command line and environment with a second, simple implementation.
#include <tova/config/commandline_item.hpp>
#include <tova/config/enviroment_item.hpp>

#include "config/line_oracle.hpp"
#include "config/listing.hpp"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using config_support::content;
using config_support::lines;
using tova::config::commandline_item;
using tova::config::enviroment_item;

const lines& pieces() {
    static const lines all = {
        "a",  "B",       "k",     "1",     "22",  "=", "=",  "==",   ":",        ":=",   "+=", "-=",
        "*=", "/=",      ">=",    "<=",    "$",   ",", ",",  "\"",   "\"",       "\\\"", " ",  "  ",
        "\t", "\n",      "\r",    "\r\n",  ".",   "/", "\\", "//",   "#",        "*/",   "*",  "[]",
        "-",  "\"x y\"", "\"=\"", "\"$\"", "\",", "_", "%",  "\"\"", "\xC3\xA4", "\xFF"};
    return all;
}

std::string random_text(std::mt19937& random, unsigned most) {
    std::string text;
    for (unsigned long left = random() % (most + 1); left != 0; --left)
        text += pieces()[random() % pieces().size()];
    return text;
}

// The strings in the form in which a program receives them.
std::vector<const char*> pointers(const lines& strings) {
    std::vector<const char*> result;
    for (const std::string& each : strings)
        result.push_back(each.c_str());
    result.push_back(nullptr);
    return result;
}

TEST(LineOracle, AgreesOnCommandLines) {
    std::mt19937 random(1);
    const char* const begins[] = {"-", "-", "-", "/", "-n", "-n=", "-k$", "-K:", "", ""};
    std::ostringstream printed;
    std::streambuf* const output = std::cout.rdbuf(printed.rdbuf());
    for (int i = 0; i < 20000 && !::testing::Test::HasFailure(); ++i) {
        lines arguments{"tool"};
        for (unsigned long left = random() % 7; left != 0; --left)
            arguments.push_back(begins[random() % 10] + random_text(random, 5));
        cfg_oracle::nodes expected;
        std::string warnings;
        for (const std::string& each : line_oracle::read_options(expected, arguments))
            warnings += "Warning! unknown key:" + each + "\nIgnoring key and continuing\n";
        cfg_oracle::touch(expected, "application");
        cfg_oracle::store(expected, "application.name", "tool");
        cfg_oracle::store(expected, "application.name.raw", "");

        const std::vector<const char*> strings = pointers(arguments);
        commandline_item item(static_cast<unsigned>(arguments.size()), strings.data());
        printed.str("");
        item.load();
        // These two are of type `std::string`, not `ustring8`.
        item.set("application.name=tool", 0);
        item.set("application.name.raw=", 0);
        EXPECT_EQ(cfg_oracle::show(expected), content(item)) << ::testing::PrintToString(arguments);
        EXPECT_EQ(warnings, printed.str()) << ::testing::PrintToString(arguments);
    }
    std::cout.rdbuf(output);
}

TEST(LineOracle, AgreesOnEnvironments) {
    std::mt19937 random(2);
    for (int i = 0; i < 20000 && !::testing::Test::HasFailure(); ++i) {
        lines strings;
        cfg_oracle::nodes expected;
        for (unsigned long left = random() % 5; left != 0; --left) {
            strings.push_back(random_text(random, 12));
            line_oracle::read_line(expected, strings.back());
        }
        const std::vector<const char*> environment = pointers(strings);
        enviroment_item item(environment.data());
        item.load();
        EXPECT_EQ(cfg_oracle::show(expected), content(item)) << ::testing::PrintToString(strings);
    }
}

}  // namespace
