// The command line of declared options, and changes to single entries of a settings file.
//
// Input: pieces with a NUL after each. The last one is the text of a file, the others are arguments
// or, if they begin with '$', environment variables.
#include <tova/extras/options.hpp>

#include "require.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace tova;
using extras::option_result;
using extras::options;
using extras::_private::settings_text;
using fuzz_support::require;

void load(const std::vector<std::string>& pieces) {
    std::vector<const char*> words(1, "program");
    std::vector<const char*> variables;
    for (const std::string& piece : pieces)
        if (piece.compare(0, 1, "$") == 0)
            variables.push_back(piece.c_str() + 1);
        else
            words.push_back(piece.c_str());
    variables.push_back(nullptr);

    options all("program", "1.0", "Does something.");
    all.add("server.port", 8080, "a number").short_name('p').range(1, 65535).environment("PORT");
    all.add("ratio", 0.5, "a fraction").environment("RATIO");
    all.add("title", "none", "a text").short_name('t').environment("TITLE");
    all.add("list", std::vector<long>{1}, "numbers").short_name('l').environment("LIST");
    all.add("color", true, "a boolean");
    all.flag("verbose", "a flag").short_name('v');
    all.takes_arguments("WORD...");
    const option_result result =
        all.load(static_cast<int>(words.size()), words.data(), variables.data());

    require(result.ends_program == (!result.errors.empty() || !result.output.empty()));
    require(result.exit_code == (result.errors.empty() ? 0 : 2));
    require(all.arguments().size() < words.size());
    const int port = all.get<int>("server.port");
    require(port >= 1 && port <= 65535);
    require(all.manager().get_value("server.port", types::variant()).as_int() == port);
    require(all.manager().get_value("title", types::variant()).as_ustring() ==
            all.get<std::string>("title"));
    require(all.manager().get_value("verbose", types::variant()).as_bool() ==
            all.get<bool>("verbose"));
    std::vector<types::variant> numbers;
    all.manager().get_array("list", numbers);
    require(numbers.size() == all.get<std::vector<long>>("list").size());
}

// For any text, changing one key terminates, and removing a key adds nothing.
void edit(const std::string& text) {
    settings_text changed(text);
    require(changed.str() == text);
    require(changed.set("server.port", {"81"}, false).empty());
    require(changed.str().find("81") != std::string::npos);
    require(changed.set("server.list", {"a b", "/"}, true).empty());

    settings_text removed(text);
    require(removed.set("server.port", {}, false).empty());
    require(removed.str().size() <= text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t nul = input.find('\0'); nul != std::string::npos;
         nul = input.find('\0', begin)) {
        pieces.push_back(input.substr(begin, nul - begin));
        begin = nul + 1;
    }
    load(pieces);
    edit(input.substr(begin));
    return 0;
}
