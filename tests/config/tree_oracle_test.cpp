// Compares trees and the manager with a second, simple implementation, using random operations.
#include <tova/config/config_manager.hpp>

#include "config/listing.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using config_support::config_node_list;
using config_support::lines;
using config_support::plain_item;
using config_support::show;
using config_support::ustring8;
using config_support::variant;
using tova::config::config_dispatch;
using tova::config::config_item_list;
using tova::config::config_manager;
using tova::memory::pointers::rc_pointer;

// A tree that follows the rules literally: a step is a recursive call, a copy is a copy of a map.
struct plain_tree {
    unsigned word = 0;
    std::string value = "true";  // in the format of `show`
    std::string text = "1";
    std::map<std::string, plain_tree> children;

    static std::string cut(const std::string& key, std::string& tail) {
        const std::size_t end = key.find_first_of("./\\");
        std::string head = key.substr(0, end);
        for (char& c : head)
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
        tail = end == std::string::npos ? "" : key.substr(end + 1);
        return head;
    }

    void set(const std::string& key, const std::string& new_text, unsigned flags) {
        std::string tail;
        plain_tree& child = children[cut(key, tail)];
        if (!tail.empty()) {
            child.set(tail, new_text, flags);
            return;
        }
        child.word = flags | 1;
        child.text = new_text;
        child.value = "'" + new_text + "'";
    }

    const plain_tree* find(const std::string& key) const {
        std::string tail;
        const auto child = children.find(cut(key, tail));
        if (child == children.end())
            return nullptr;
        return tail.empty() ? &child->second : child->second.find(tail);
    }

    std::string shown() const { return std::to_string(word) + " " + value; }

    lines array(const std::string& key) const {
        lines result;
        const plain_tree* const head = find(key);
        if (head == nullptr || (head->word & 2) == 0)
            return result;
        for (int i = 0; head->children.count(std::to_string(i)) != 0; ++i)
            result.push_back(std::to_string(i) + ": " +
                             head->children.at(std::to_string(i)).shown());
        return result;
    }

    void list(lines& out, bool recursive, const std::string& prefix) const {
        for (const auto& child : children) {
            const std::string name = prefix.empty() ? child.first : prefix + "." + child.first;
            out.push_back(name + ": " + child.second.shown());
            if (recursive)
                child.second.list(out, true, name);
        }
    }

    lines list(const std::string& key, bool recursive, const std::string& prefix) const {
        lines result;
        if (key.empty())
            list(result, recursive, prefix);
        else if (find(key) != nullptr)
            find(key)->list(result, recursive, "");
        return result;
    }

    std::string dump(int depth) const {
        std::string indent, result;
        for (int i = 0; i < depth; ++i)
            indent += "|\t\t";
        for (const auto& child : children) {
            const plain_tree& below = child.second;
            result += indent + child.first + " : ";
            result +=
                below.word == 0 ? "true\n" : std::to_string(below.word) + " " + below.text + "\n";
            result += indent;
            result +=
                below.children.empty() ? "|\n" : "|---------------\\\n" + below.dump(depth + 1);
        }
        return result + indent + "end\n";
    }
};

const char* const names[] = {"a", "b", "c"};

class three_sources : public config_dispatch {
public:
    bool setup(config_item_list& items) const override {
        for (const char* name : names)
            items.push_back(rc_pointer<tova::config::base_config_item>(plain_item(name).clone()));
        return true;
    }
    bool load(config_item_list&) const override { return true; }
    bool unload(config_item_list&) const override { return true; }
    bool save(config_item_list&) const override { return true; }
    three_sources* clone() const override { return new three_sources; }
};

class TreeOracle : public ::testing::Test {
protected:
    TreeOracle() {
        manager.init(three_sources());
        for (int i = 0; i < 3; ++i)
            items.push_back(&dynamic_cast<plain_item&>(*manager.get_config_item(names[i])));
    }

    std::size_t below(std::size_t limit) { return random() % limit; }

    std::string key() {
        static const char* const segments[] = {"a", "B", "b", "0", "1", "2", "10", "", "\xC3\x84"};
        std::string result = segments[below(9)];
        for (std::size_t more = below(4); more != 0; --more)
            result += std::string(1, "./\\"[below(3)]) + segments[below(9)];
        return below(10) == 0 ? result + "." : result;
    }

    // Sets an entry, an alias or an array in one of the sources, or copies the nodes of another.
    void change() {
        const std::size_t at = below(3);
        const std::size_t kind = below(40);
        if (kind == 0) {
            const std::size_t from = below(3);
            items[at]->inner_tree() = items[from]->inner_tree();
            plain[at] = plain_tree(plain[from]);
        } else if (kind == 1) {
            items[at]->inner_tree().erase();
            plain[at].children.clear();
        } else if (kind < 8) {
            const std::string head = key();
            plain[at].set(head, "", 2);
            items[at]->set(head, variant(""), 2);
            for (std::size_t i = 0, count = below(12); i < count; ++i) {
                const std::string element = head + "." + std::to_string(i);
                items[at]->set(element, variant("e"), 0);
                plain[at].set(element, "e", 0);
            }
        } else {
            static const unsigned flags[] = {0, 0, 0, 1, 2, 4, 4, 4, 4, 6, 8};
            const std::string name = key(), text = key();
            const unsigned word = flags[below(11)];
            items[at]->set(name, variant(ustring8(text)), word);
            plain[at].set(name, text, word);
        }
    }

    void compare_tree(std::size_t at) {
        const std::string name = below(6) == 0 ? "" : key();
        const std::string prefix = below(2) == 0 ? "" : "P";
        const bool recursive = below(2) == 0;
        SCOPED_TRACE(::testing::PrintToString(name));
        const auto* const node = items[at]->get_value(name);
        const plain_tree* const expected = plain[at].find(name);
        ASSERT_EQ(expected == nullptr ? "null" : expected->shown(),
                  node == nullptr ? "null" : show(*node));
        config_node_list array, listed;
        items[at]->get_array(name, array);
        ASSERT_EQ(plain[at].array(name), show(array));
        items[at]->inner_tree().get_value_pair_array(name, listed, recursive, prefix);
        ASSERT_EQ(plain[at].list(name, recursive, prefix), show(listed));
    }

    std::string plain_value(const std::string& key) {
        std::set<std::string> visited;
        std::string current = key;
        for (std::size_t at = 0; at < 3; ++at) {
            const plain_tree* const node = plain[at].find(current);
            if (node == nullptr)
                continue;
            if ((node->word & 3) == 3) {
                const plain_tree* const first = plain[at].find(current + ".0");
                return first == nullptr ? "nil" : first->text;
            }
            if ((node->word & 4) == 0)
                return node->text;
            visited.insert(current);
            if (visited.count(node->text) != 0)
                return node->text;
            current = node->text;
            at = static_cast<std::size_t>(-1);
        }
        return "default";
    }

    void compare_manager() {
        const std::string name = key();
        SCOPED_TRACE(::testing::PrintToString(name));
        const variant value = manager.get_value(name, variant("default"));
        ASSERT_EQ(plain_value(name),
                  value == tova::types::nil ? std::string("nil") : value.as_string());
        bool is_array = false;
        lines array, listed;
        for (std::size_t at = 3; at-- != 0;) {
            const plain_tree* const node = plain[at].find(name);
            if (node == nullptr)
                continue;
            listed = plain[at].list(name, true, "");
            if ((node->word & 3) == 3) {
                is_array = true;
                array = plain[at].array(name);
            }
        }
        ASSERT_EQ(is_array, manager.is_array(name));
        std::vector<variant> values;
        manager.get_array(name, values);
        ASSERT_EQ(array.size(), values.size());
        std::vector<std::pair<ustring8, variant>> pairs;
        manager.get_key_value_array(name, pairs, true);
        ASSERT_EQ(listed.size(), pairs.size());
        for (std::size_t i = 0; i < pairs.size(); ++i)
            ASSERT_EQ(pairs[i].first + ":", listed[i].substr(0, pairs[i].first.size() + 1));
    }

    std::mt19937 random{1};
    config_manager manager;
    std::vector<plain_item*> items;
    plain_tree plain[3];
};

TEST_F(TreeOracle, AgreesOnEveryLookupAfterRandomChanges) {
    for (int i = 0; i < 20000; ++i) {
        SCOPED_TRACE(i);
        ASSERT_NO_FATAL_FAILURE(change());
        ASSERT_NO_FATAL_FAILURE(compare_tree(below(3)));
        ASSERT_NO_FATAL_FAILURE(compare_manager());
        if (i % 50 == 0) {
            std::ostringstream dumped;
            items[0]->inner_tree().dump(dumped, 2);
            ASSERT_EQ(plain[0].dump(2), dumped.str());
        }
    }
}

}  // namespace
