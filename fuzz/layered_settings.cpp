// `config_manager` over a command line, a file and an environment: each lookup is compared with a
// plain walk over the three sources, which are also loaded separately.
//
// Input: lines. The first byte of each selects its target: the command line, the file or the
// environment.
#include <tova/config/characters.hpp>
#include <tova/config/commandline_item.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/std_config_dispatch.hpp>

#include "require.hpp"
#include "scratch_tree.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace tova::config;
using fuzz_support::require;
using fuzz_support::scratch_tree;
using tova::strings::ustring8;
using tova::types::variant;

std::vector<const char*> pointers_to(const std::vector<std::string>& texts) {
    std::vector<const char*> result;
    for (const std::string& text : texts)
        result.push_back(text.c_str());
    result.push_back(nullptr);
    return result;
}

bool is_array(const config_node& node) {
    return (node.first & 3) == 3;
}

// The first source with the key wins. An array stands for its first element, and an alias starts a
// new lookup.
std::string plainly_found(const std::vector<base_config_item*>& sources, ustring8 key) {
    std::set<ustring8> visited;
    for (;;) {
        const config_node* node = nullptr;
        base_config_item* source = nullptr;
        for (std::size_t i = 0; i < sources.size() && node == nullptr; ++i) {
            source = sources[i];
            node = source->get_value(key);
        }
        if (node == nullptr)
            return "default";
        if (is_array(*node)) {
            const config_node* const first = source->get_value(key + ".0");
            return first == nullptr ? "nil" : first->second.as_string();
        }
        if ((node->first & 4) == 0)
            return node->second.as_string();
        visited.insert(key);
        key = node->second.as_string();
        if (visited.count(key) != 0)
            return key;
    }
}

// The key of an element as `get_array` finds it. A separator at the end of the array's key starts
// no further segment.
ustring8 element_key(ustring8 key, int index) {
    if (!key.empty() && isConfigDotSlash(key.back()))
        key.pop_back();
    return key + "." + std::to_string(index);
}

std::string text_of(const variant& value) {
    return value == tova::types::nil ? ustring8("nil") : value.as_string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const scratch_tree folder;
    // Discards the warnings about unknown arguments.
    std::cout.setstate(std::ios::failbit);
    if (size > 400)
        return 0;
    std::vector<std::string> arguments(1, "tool");
    std::vector<std::string> environment;
    std::string file;
    std::vector<std::string> aliases;
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin + 1, end - begin - (end > begin));
        // Lines that name a file are skipped, because they could lead out of this folder.
        if (line.find("cfg_file") == std::string::npos && line.find('\0') == std::string::npos) {
            switch (text[begin] & 3) {
            case 0:
                arguments.push_back(line);
                break;
            case 1:
                file += line + "\n";
                break;
            case 2:
                environment.push_back(line);
                break;
            default:
                aliases.push_back(line);
                break;
            }
        }
        begin = end + 1;
    }
    const std::string path = folder.path("fuzz.cfg");
    folder.write("fuzz.cfg", file);
    const auto argv = pointers_to(arguments);
    const auto envp = pointers_to(environment);
    const int argc = static_cast<int>(arguments.size());

    config_manager settings;
    settings.init(std_config_dispatch(argc, argv.data(), envp.data(), path, ""));
    require(settings.load());
    commandline_item first(static_cast<unsigned>(argc), argv.data());
    file_item second(path);
    enviroment_item third(envp.data());
    for (base_config_item* item :
         {static_cast<base_config_item*>(&first), static_cast<base_config_item*>(&second),
          static_cast<base_config_item*>(&third)})
        item->load();
    // Only the program can set aliases. They are set in the first source and refer to settings and
    // to each other.
    for (std::size_t i = 0; i + 1 < aliases.size(); i += 2) {
        settings.get_config_item("command line")->set(aliases[i], variant(aliases[i + 1]), 4);
        first.set(aliases[i], variant(aliases[i + 1]), 4);
    }

    const std::vector<base_config_item*> sources = {&first, &second, &third};
    std::set<ustring8> keys = {"a", "a.b", "application.name", "", "missing"};
    for (base_config_item* source : sources) {
        config_node_list nodes;
        source->get_value_pair_array("", nodes, true);
        for (const auto& node : nodes)
            keys.insert(node.first);
    }
    for (const ustring8& key : keys) {
        const variant found = settings.get_value(key, variant("default"));
        require(text_of(found) == plainly_found(sources, key));
        bool any_array = false;
        std::vector<std::string> elements;
        for (base_config_item* source : sources) {
            const config_node* const node = source->get_value(key);
            if (node == nullptr || !is_array(*node) || any_array)
                continue;
            any_array = true;
            for (int i = 0;; ++i) {
                const config_node* const element = source->get_value(element_key(key, i));
                if (element == nullptr)
                    break;
                elements.push_back(text_of(element->second));
            }
        }
        require(settings.is_array(key) == any_array);
        std::vector<variant> array;
        settings.get_array(key, array);
        require(array.size() == elements.size());
        for (std::size_t i = 0; i < array.size(); ++i)
            require(text_of(array[i]) == elements[i]);
    }
    require(settings.unload() &&
            settings.get_value("a", variant("default")).as_string() == "default");
    return 0;
}
