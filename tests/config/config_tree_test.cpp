#include <tova/config/config_tree.hpp>

#include "config/listing.hpp"
#include "config/tree_nodes.hpp"
#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace config_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tova::memory::pointers::rc_pointer;

typedef tova::config::detail::tree_fields fields;
typedef tova::config::_private::deep_copy_map<ustring8, rc_pointer<config_tree>> tree_map;

config_tree* child(config_tree& tree, const char* name) {
    return fields::children(tree).at(name).get();
}

std::string shown(const config_tree& tree, const char* key) {
    const config_node* const node = tree.get_node(key);
    return node == nullptr ? "null" : show(*node);
}

lines listed(config_tree& tree, const char* key, bool recursive, const char* prefix) {
    config_node_list nodes;
    tree.get_value_pair_array(key, nodes, recursive, prefix);
    return show(nodes);
}

lines array(config_tree& tree, const char* key) {
    config_node_list nodes;
    tree.get_array(key, nodes);
    return show(nodes);
}

TEST(ConfigTree, StartsWithoutChildrenHoldersOrHeapMark) {
    config_tree tree;
    EXPECT_THAT(content(tree), IsEmpty());
    EXPECT_EQ(0u, tree.count);
    EXPECT_FALSE(tree.allocated);
    EXPECT_EQ("0 true", show(fields::node(tree)));
}

TEST(ParseString, SplitsOffTheFirstSegmentInLowerCase) {
    const struct {
        const char* key;
        const char* head;
        const char* tail;
    } cases[] = {{"", "", ""},          {"Name", "name", ""},    {"A.b/C", "a", "b/C"},
                 {"A/B.C", "a", "B.C"}, {"A\\B", "a", "B"},      {"a.", "a", ""},
                 {".", "", ""},         {"..", "", "."},         {".A", "", "A"},
                 {"a..B", "a", ".B"},   {"1 -_:", "1 -_:", ""},  {"\xC3\x84.x", "\xC3\x84", "x"},
                 {"Z[].q", "z[]", "q"}, {"AZaz09", "azaz09", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.key);
        ustring8 head("old"), tail("old");
        config_tree().parse_string(c.key, head, tail);
        EXPECT_EQ(c.head, head);
        EXPECT_EQ(c.tail, tail);
    }
}

TEST(ParseString, ConvertsEachByteToLowerCaseLikeTheCLibrary) {
    for (int byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        if (character == '.' || character == '/' || character == '\\')
            continue;
        SCOPED_TRACE(byte);
        ustring8 head, tail;
        config_tree().parse_string(ustring8(1, character), head, tail);
        const bool capital = character >= 'A' && character <= 'Z';
        EXPECT_EQ(ustring8(1, static_cast<char>(capital ? character + 32 : character)), head);
        EXPECT_EQ("", tail);
    }
}

TEST(SetNode, AddsStepsWithoutValues) {
    config_tree tree;
    tree.set_node("A.b/C", variant("v"), 0);
    EXPECT_EQ("1 'v'", shown(tree, "a.B.c"));
    EXPECT_EQ("0 true", shown(tree, "a"));
    EXPECT_EQ("0 true", shown(tree, "a.b"));
    EXPECT_EQ("null", shown(tree, "a.x"));
    EXPECT_EQ("null", shown(tree, "a.b.c.d"));
    EXPECT_THAT(content(tree), ElementsAre("a: 0 true", "a.b: 0 true", "a.b.c: 1 'v'"));
}

TEST(SetNode, AddsBitZeroToEveryWord) {
    const struct {
        unsigned flags, word;
    } cases[] = {{0, 1}, {1, 1}, {2, 3}, {3, 3}, {4, 5}, {6, 7}, {0xFFFFFFFE, 0xFFFFFFFF}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags);
        config_tree tree;
        tree.set_node("k", variant(7), c.flags);
        EXPECT_EQ(c.word, tree.get_node("k")->first);
    }
}

TEST(SetNode, ReplacesAnyFlagsWordAndValue) {
    config_tree tree;
    tree.set_node("k", variant("old"), 6);
    tree.set_node("K", variant("new"), 0);
    EXPECT_EQ("1 'new'", shown(tree, "k"));
    tree.set_node("k", variant(), 2);
    EXPECT_EQ("3 nil", shown(tree, "k"));
}

TEST(SetNode, KeepsTheChildrenOfTheNode) {
    config_tree tree;
    tree.set_node("a.b", variant("below"), 0);
    tree.set_node("a", variant("above"), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 1 'above'", "a.b: 1 'below'"));
}

// Names are compared by their first eight bytes as a number, and a separator is searched for among
// eight bytes. None of the changed bytes is a separator, though some differ from one in one bit.
TEST(GetNode, TellsNamesApartThatDifferInOneByteOrInTheirLength) {
    std::vector<std::string> names;
    for (std::size_t size = 0; size != 20; ++size) {
        const std::string base(size, 'k');
        names.push_back(base);
        names.push_back(base + std::string(1, '\0'));
        for (std::size_t at = 0; at != size; ++at)
            for (const char byte : {'\0', '\x01', '-', ',', '0', '[', ']', 'l', '\xAE', '\xFF'}) {
                names.push_back(base);
                names.back()[at] = byte;
            }
    }
    config_tree tree;
    std::set<std::string> stored;
    for (std::size_t i = 0; i < names.size(); i += 2) {
        tree.set_node(names[i] + "/end", variant(names[i]), 0);
        stored.insert(names[i]);
    }
    for (const std::string& name : names) {
        for (const char* const separator : {".", "/", "\\"}) {
            const auto* const found = tree.get_node(name + separator + "end");
            ASSERT_EQ(stored.count(name) != 0, found != nullptr) << name;
            if (found != nullptr) {
                ASSERT_EQ(name, found->second.as_string());
            }
        }
    }
}

// Segments before others and at the end of a key, of up to eight bytes and of more.
TEST(GetNode, ReadsEachByteInLowerCaseAtEveryPlace) {
    for (std::size_t size = 1; size != 19; ++size)
        for (std::size_t at = 0; at != size; ++at)
            for (int byte = 0; byte < 256; ++byte) {
                const char character = static_cast<char>(byte);
                if (character == '.' || character == '/' || character == '\\')
                    continue;
                std::string name(size, 'k');
                name[at] = character;
                const bool capital = character >= 'A' && character <= 'Z';
                std::string lower = name;
                lower[at] = static_cast<char>(capital ? character + 32 : character);
                config_tree tree;
                tree.set_node(lower + "/" + lower, variant(byte), 0);
                const auto* const found = tree.get_node(name + "." + name);
                ASSERT_NE(nullptr, found) << size << " bytes, byte " << byte << " at " << at;
                ASSERT_EQ(byte, found->second.as_int());
                ASSERT_EQ(nullptr, tree.get_node(name + "." + name + "x"));
                ASSERT_EQ(nullptr, tree.get_node(name + "x." + name));
            }
}

TEST(GetNode, FindsEachOfAnyNumberOfChildren) {
    std::vector<std::string> names = {"", "a", "b", "ab", "abc", "b1", "\xC3\xA4"};
    for (int i = 0; i != 13; ++i)
        names.push_back(
            std::string(static_cast<std::size_t>(7 * i + 1), static_cast<char>('c' + i)));
    config_tree tree;
    for (std::size_t count = 0; count != names.size(); ++count) {
        SCOPED_TRACE(count);
        tree.set_node("p." + names[count] + ".end", variant(static_cast<int>(count)), 0);
        for (std::size_t i = 0; i != names.size(); ++i) {
            std::string key = "P/" + names[i] + "\\END";
            for (char& c : key)
                c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
            if (i <= count)
                EXPECT_EQ("1 '" + std::to_string(i) + "' int", shown(tree, key.c_str()));
            else
                EXPECT_EQ("null", shown(tree, key.c_str()));
            EXPECT_EQ("null", shown(tree, ("p." + names[i] + "x").c_str()));
            EXPECT_EQ("null", shown(tree, ("p." + names[i] + ".en").c_str()));
        }
    }
}

TEST(SetNode, TreatsTheThreeSeparatorsAlike) {
    config_tree tree;
    tree.set_node("a.b.c", variant(1), 0);
    tree.set_node("a/b/c", variant(2), 0);
    tree.set_node("a\\b\\c", variant(3), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 0 true", "a.b: 0 true", "a.b.c: 1 '3' int"));
}

TEST(SetNode, IgnoresATrailingSeparatorAndReadsTwoAsAnEmptyName) {
    config_tree tree;
    tree.set_node("a.", variant(1), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 1 '1' int"));
    tree.set_node("a..", variant(2), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 1 '1' int", "a.: 1 '2' int"));
    tree.set_node("a..b", variant(3), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 1 '1' int", "a.: 1 '2' int", "a..b: 1 '3' int"));
    EXPECT_EQ("1 '2' int", shown(tree, "A//"));
    EXPECT_EQ("1 '3' int", shown(tree, "a\\\\b/"));
}

TEST(SetNode, StoresTheEmptyKeyAsAChildWithTheEmptyName) {
    config_tree tree;
    EXPECT_EQ("null", shown(tree, ""));
    tree.set_node("", variant("e"), 0);
    EXPECT_EQ("1 'e'", shown(tree, ""));
    EXPECT_EQ("1 'e'", shown(tree, "."));
    tree.set_node("..", variant("f"), 0);
    EXPECT_EQ("1 'f'", shown(tree, "//"));
    EXPECT_EQ("1 'e'", shown(tree, "."));
    tree.set_node(".x", variant("g"), 0);
    // Names below a child of the root whose name is empty don't start with a dot.
    EXPECT_THAT(content(tree), ElementsAre(": 1 'e'", ": 1 'f'", "x: 1 'g'"));
}

TEST(SetNode, SharesTheValueWithTheCaller) {
    config_tree tree;
    tree.set_node("k", variant(L"wide"), 0);
    EXPECT_EQ(typeid(tova::strings::ustring32), tree.get_node("k")->second.type());
    tree.set_node("k", tree.get_node("k")->second, 0);
    EXPECT_EQ("wide", tree.get_node("k")->second.as_string());
}

TEST(SetNode, KeepsNulBytesInNames) {
    config_tree tree;
    tree.set_node(ustring8("a\0b", 3), variant(1), 0);
    EXPECT_EQ(nullptr, tree.get_node("a"));
    ASSERT_NE(nullptr, tree.get_node(ustring8("A\0B", 3)));
}

TEST(GetNode, PointsIntoTheTree) {
    config_tree tree;
    tree.set_node("a.b", variant(1), 0);
    const config_node* const node = tree.get_node("a.b");
    tree.set_node("a.b", variant(2), 4);
    EXPECT_EQ(node, tree.get_node("A/B"));
    EXPECT_EQ("5 '2' int", show(*node));
}

TEST(GetArray, RequiresTheBitOfAnArrayHead) {
    config_tree tree;
    tree.set_node("k.0", variant("x"), 0);
    tree.set_node("k.1", variant("y"), 0);
    EXPECT_THAT(array(tree, "k"), IsEmpty());
    tree.set_node("k", variant(), 1);
    EXPECT_THAT(array(tree, "k"), IsEmpty());
    tree.set_node("k", variant(), 4);
    EXPECT_THAT(array(tree, "k"), IsEmpty());
    tree.set_node("k", variant(), 2);
    EXPECT_THAT(array(tree, "k"), ElementsAre("0: 1 'x'", "1: 1 'y'"));
    tree.set_node("k", variant(), 6);
    EXPECT_THAT(array(tree, "K."), ElementsAre("0: 1 'x'", "1: 1 'y'"));
}

TEST(GetArray, EndsAtTheFirstGap) {
    config_tree tree;
    tree.set_node("a.k", variant(), 2);
    tree.set_node("a.k.0", variant("x"), 0);
    tree.set_node("a.k.1", variant("y"), 0);
    tree.set_node("a.k.3", variant("z"), 0);
    EXPECT_THAT(array(tree, "a.k"), ElementsAre("0: 1 'x'", "1: 1 'y'"));
    config_tree without_first;
    without_first.set_node("k", variant(), 2);
    without_first.set_node("k.1", variant("y"), 0);
    EXPECT_THAT(array(without_first, "k"), IsEmpty());
}

TEST(GetArray, ListsElementsInNumericOrder) {
    config_tree tree;
    tree.set_node("k", variant(), 2);
    for (int i = 11; i >= 0; --i)
        tree.set_node("k." + ustring8(std::to_string(i)), variant(i), 0);
    config_node_list nodes;
    tree.get_array("k", nodes);
    ASSERT_EQ(12u, nodes.size());
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(std::to_string(i), nodes[static_cast<std::size_t>(i)].first);
        EXPECT_EQ(i, nodes[static_cast<std::size_t>(i)].second.second.as_int());
    }
}

TEST(GetArray, AppendsToTheList) {
    config_tree tree;
    tree.set_node("k", variant(), 2);
    tree.set_node("k.0", variant("x"), 5);
    config_node_list out(1, config_node_list::value_type("old", config_node(9, variant(1))));
    tree.get_array("k", out);
    tree.get_array("missing", out);
    tree.get_array("k.0.0", out);
    tree.get_array("", out);
    EXPECT_THAT(show(out), ElementsAre("old: 9 '1' int", "0: 5 'x'"));
}

TEST(GetArray, ListsElementsThatAreMerelySteps) {
    config_tree tree;
    tree.set_node("k", variant(), 2);
    tree.set_node("k.0.deep", variant("x"), 0);
    EXPECT_THAT(array(tree, "k"), ElementsAre("0: 0 true"));
}

TEST(GetValuePairArray, ListsDirectChildrenIncludingSteps) {
    config_tree tree;
    tree.set_node("b", variant(1), 0);
    tree.set_node("a.x.y", variant(2), 0);
    EXPECT_THAT(listed(tree, "", false, ""), ElementsAre("a: 0 true", "b: 1 '1' int"));
}

TEST(GetValuePairArray, IsInByteOrder) {
    config_tree tree;
    for (const char* name : {"9", "10", "\xC3\xA4", "z", "_", "A", "a b", ""})
        tree.set_node(name, variant(true), 0);
    EXPECT_THAT(listed(tree, "", false, ""),
                ElementsAre(": 1 true", "10: 1 true", "9: 1 true", "_: 1 true", "a: 1 true",
                            "a b: 1 true", "z: 1 true", "\xC3\xA4: 1 true"));
}

TEST(GetValuePairArray, ListsDepthFirstWithParentsBeforeChildren) {
    config_tree tree;
    tree.set_node("b.c.d", variant(1), 0);
    tree.set_node("b.a", variant(2), 0);
    tree.set_node("a", variant(3), 0);
    tree.set_node("b.c.a", variant(4), 0);
    EXPECT_THAT(listed(tree, "", true, ""),
                ElementsAre("a: 1 '3' int", "b: 0 true", "b.a: 1 '2' int", "b.c: 0 true",
                            "b.c.a: 1 '4' int", "b.c.d: 1 '1' int"));
}

TEST(GetValuePairArray, AddsThePrefixOnlyForTheEmptyKey) {
    config_tree tree;
    tree.set_node("s.k", variant(1), 0);
    EXPECT_THAT(listed(tree, "", true, "P"), ElementsAre("P.s: 0 true", "P.s.k: 1 '1' int"));
    EXPECT_THAT(listed(tree, "", false, "p."), ElementsAre("p..s: 0 true"));
    EXPECT_THAT(listed(tree, "s", true, "p"), ElementsAre("k: 1 '1' int"));
    EXPECT_THAT(listed(tree, "S/", true, "p"), ElementsAre("k: 1 '1' int"));
}

TEST(GetValuePairArray, NamesAreRelativeToTheListedNode) {
    config_tree tree;
    tree.set_node("a.b.c.d", variant(1), 0);
    EXPECT_THAT(listed(tree, "a.b", true, ""), ElementsAre("c: 0 true", "c.d: 1 '1' int"));
    EXPECT_THAT(listed(tree, "a.b", false, ""), ElementsAre("c: 0 true"));
    EXPECT_THAT(listed(tree, "a.b.c.d", true, ""), IsEmpty());
    EXPECT_THAT(listed(tree, "a.x", true, ""), IsEmpty());
    EXPECT_THAT(listed(tree, ".", true, ""), IsEmpty());
}

TEST(GetValuePairArray, AppendsWithAPrefixThatIsPartOfTheListItself) {
    config_tree tree;
    for (int i = 10; i < 60; ++i)
        tree.set_node(ustring8(std::to_string(i)), variant(i), 0);
    config_node_list out(1, config_node_list::value_type("front", config_node(0, variant())));
    out.shrink_to_fit();
    tree.get_value_pair_array("", out, true, out[0].first);
    ASSERT_EQ(51u, out.size());
    EXPECT_EQ("front", out[0].first);
    EXPECT_EQ("front.10", out[1].first);
    EXPECT_EQ("front.59", out[50].first);
}

TEST(Erase, RemovesTheChildrenAndKeepsItsOwnNode) {
    config_tree tree;
    tree.set_node("a.b.c", variant(1), 0);
    fields::node(tree) = config_node(5, variant("own"));
    tree.erase();
    EXPECT_THAT(content(tree), IsEmpty());
    EXPECT_EQ("5 'own'", show(fields::node(tree)));
    tree.set_node("a", variant(2), 0);
    EXPECT_THAT(content(tree), ElementsAre("a: 1 '2' int"));
}

TEST(ConfigTree, CopiesShareNoNodes) {
    config_tree source;
    source.set_node("a.b", variant("v"), 2);
    source.set_node("c", variant("w"), 0);
    const lines before = content(source);

    config_tree copy(source);
    EXPECT_EQ(before, content(copy));
    EXPECT_NE(source.get_node("a.b"), copy.get_node("a.b"));
    copy.set_node("a.b", variant("changed"), 0);
    copy.set_node("a.new", variant("new"), 0);
    EXPECT_EQ(before, content(source));

    config_tree assigned;
    assigned.set_node("gone", variant(1), 0);
    assigned = source;
    EXPECT_EQ(before, content(assigned));
    source.set_node("a.b", variant("late"), 0);
    EXPECT_EQ(before, content(assigned));
}

TEST(ConfigTree, CopiesItsOwnNodeToo) {
    config_tree source;
    fields::node(source) = config_node(5, variant("own"));
    config_tree copy(source), assigned;
    assigned = source;
    EXPECT_EQ("5 'own'", show(fields::node(copy)));
    EXPECT_EQ("5 'own'", show(fields::node(assigned)));
}

TEST(ConfigTree, CopiesHaveNeitherHoldersNorHeapMark) {
    config_tree* const original = new config_tree;
    original->allocated = true;
    const rc_pointer<config_tree> holder(original);
    const config_tree copy(*original);
    EXPECT_EQ(0u, copy.count);
    EXPECT_FALSE(copy.allocated);
    config_tree target;
    target = *original;
    EXPECT_EQ(0u, target.count);
    EXPECT_FALSE(target.allocated);
    *original = copy;
    EXPECT_EQ(1u, original->count);
    EXPECT_TRUE(original->allocated);
}

TEST(ConfigTree, ClonesToTheHeapWithTheMarkAndNoHolder) {
    config_tree tree;
    tree.set_node("a.b", variant(1), 0);
    config_tree* const copy = tree.clone();
    EXPECT_TRUE(copy->allocated);
    EXPECT_EQ(0u, copy->count);
    EXPECT_EQ(content(tree), content(*copy));
    const rc_pointer<config_tree> holder(copy);
    EXPECT_EQ(1u, copy->count);
}

TEST(ConfigTree, KeepsItsChildrenWhenAssignedToItself) {
    config_tree tree;
    tree.set_node("a.b", variant(1), 0);
    const lines before = content(tree);
    config_tree& same = tree;
    tree = same;
    EXPECT_EQ(before, content(tree));
}

TEST(ConfigTree, CanBeAssignedItsOwnChild) {
    config_tree tree;
    tree.set_node("a.b.c", variant(1), 0);
    tree = *child(tree, "a");
    EXPECT_THAT(content(tree), ElementsAre("b: 0 true", "b.c: 1 '1' int"));
}

TEST(ConfigTree, OutlivesAHolderUnlessMarked) {
    config_tree tree;
    tree.set_node("a", variant(1), 0);
    { const rc_pointer<config_tree> holder(&tree); }
    EXPECT_EQ(0u, tree.count);
    EXPECT_EQ("1 '1' int", shown(tree, "a"));
}

TEST(ConfigTree, DoesNotDestroyAChildThatOthersHold) {
    rc_pointer<config_tree> kept;
    {
        config_tree tree;
        tree.set_node("a.b.c", variant(1), 0);
        kept = child(tree, "a");
        EXPECT_EQ(2u, kept->count);
    }
    EXPECT_EQ(1u, kept->count);
    EXPECT_THAT(content(*kept), ElementsAre("b: 0 true", "b.c: 1 '1' int"));
}

TEST(DeepCopyMap, CopiesTheObjectsOnAssignmentAndKeepsNull) {
    tree_map source;
    config_tree* const tree = new config_tree;
    tree->allocated = true;
    tree->set_node("k", variant(1), 0);
    source["a"] = rc_pointer<config_tree>(tree);
    source["n"] = rc_pointer<config_tree>();

    tree_map target;
    target["old"] = rc_pointer<config_tree>();
    target = source;
    ASSERT_EQ(2u, target.size());
    EXPECT_FALSE(target["n"]);
    ASSERT_TRUE(static_cast<bool>(target["a"]));
    EXPECT_NE(tree, target["a"].get());
    EXPECT_TRUE(target["a"]->allocated);
    EXPECT_EQ(1u, target["a"]->count);
    EXPECT_EQ(1u, tree->count);
    EXPECT_THAT(content(*target["a"]), ElementsAre("k: 1 '1' int"));

    const tree_map shared(source);
    EXPECT_EQ(tree, shared.at("a").get());
    EXPECT_EQ(2u, tree->count);
}

TEST(DeepCopyMap, IsEmptyAfterAssignmentToItself) {
    tree_map source;
    source["n"] = rc_pointer<config_tree>();
    tree_map& same = source;
    source = same;
    EXPECT_TRUE(source.empty());
}

TEST(DumpTree, WritesEachNodeWithItsFlagsAndItsChildren) {
    config_tree tree;
    tree.set_node("s.a", variant("x y"), 0);
    tree.set_node("s.k", variant(), 2);
    tree.set_node("s.k.0", variant(5), 4);
    tree.set_node("t", variant(false), 0);
    std::ostringstream out;
    EXPECT_EQ(&out, &tree.dump(out, 0));
    EXPECT_EQ("s : true\n"
              "|---------------\\\n"
              "|\t\ta : 1 x y\n"
              "|\t\t|\n"
              "|\t\tk : 3 \n"
              "|\t\t|---------------\\\n"
              "|\t\t|\t\t0 : 5 5\n"
              "|\t\t|\t\t|\n"
              "|\t\t|\t\tend\n"
              "|\t\tend\n"
              "t : 1 0\n"
              "|\n"
              "end\n",
              out.str());
}

TEST(DumpTree, IsIndentedByTheDepth) {
    config_tree tree;
    tree.set_node("a", variant("v"), 0);
    std::ostringstream two, negative, empty;
    tree.dump(two, 2);
    EXPECT_EQ("|\t\t|\t\ta : 1 v\n|\t\t|\t\t|\n|\t\t|\t\tend\n", two.str());
    tree.dump(negative, -3);
    EXPECT_EQ("a : 1 v\n|\nend\n", negative.str());
    config_tree().dump(empty, 1);
    EXPECT_EQ("|\t\tend\n", empty.str());
}

TEST(DumpTree, IgnoresTheBaseOfTheStream) {
    config_tree tree;
    tree.set_node("a", variant(12), 30);
    std::ostringstream out;
    out << std::hex << std::showbase << tree;
    EXPECT_EQ("a : 31 12\n|\nend\n", out.str());
}

config_tree branching_tree() {
    config_tree tree;
    for (const char* key : {"a.b.c", "a.b.d.e", "a.f", "g", "h.i.j.k.l", "h.m"})
        tree.set_node(key, variant("a value that needs memory of its own"), 0);
    return tree;
}

TEST(ConfigTree, RaisesBadAllocWithoutALeak) {
    config_tree tree = branching_tree();
    const lines before = content(tree);
    for (unsigned successes = 0;; ++successes) {
        SCOPED_TRACE(successes);
        ASSERT_LT(successes, 1000u);
        const long live = test_support::live_allocations();
        {
            const test_support::failing_allocation shortage(successes);
            try {
                const config_tree copy(tree);
                config_tree added;
                added.set_node("x.y.z", variant("an old value of some length"), 0);
                added = tree;
                delete tree.clone();
            } catch (const std::bad_alloc&) {
            }
            if (!shortage.failed())
                break;
        }
        ASSERT_EQ(live, test_support::live_allocations());
    }
    EXPECT_EQ(before, content(tree));
}

TEST(ConfigTree, KeepsItsChildrenIfACopyFails) {
    config_tree target;
    target.set_node("kept", variant(1), 0);
    const config_tree source = branching_tree();
    const test_support::failing_allocation shortage(3);
    EXPECT_THROW(target = source, std::bad_alloc);
    EXPECT_NE(nullptr, target.get_node("kept"));
    EXPECT_EQ(nullptr, target.get_node("a"));
}

TEST(ConfigTree, IsDestroyedEvenWithoutMemory) {
    const long live = test_support::live_allocations();
    for (unsigned successes = 0; successes < 8; ++successes) {
        config_tree* const tree = new config_tree(branching_tree());
        const test_support::failing_allocation shortage(successes);
        delete tree;
    }
    EXPECT_EQ(live, test_support::live_allocations());
}

// A key of a million segments is set, looked up, copied, assigned and destroyed on a small stack.
TEST(ConfigTree, HoldsKeysOfAnyDepth) {
    const auto child = test_support::run_in_child(
        [] {
            std::string text;
            for (int i = 0; i < 1000000; ++i)
                text += "S/";
            text += "end";
            const ustring8 key(text);
            config_tree tree;
            tree.set_node(key, variant("deep"), 2);
            tree.set_node(key + ".0", variant("first"), 0);
            if (tree.get_node(key)->second.as_string() != "deep")
                _Exit(1);
            config_tree copy(tree), assigned;
            assigned = copy;
            tree.erase();
            if (tree.get_node("s") != nullptr)
                _Exit(2);
            config_node_list nodes;
            assigned.get_array(key, nodes);
            assigned.get_value_pair_array(key, nodes, true, "");
            if (nodes.size() != 2 || nodes[1].first != "0")
                _Exit(3);
            const rc_pointer<config_tree> clone(assigned.clone());
            if (clone->get_node(key + ".0")->second.as_string() != "first")
                _Exit(4);
        },
        [] {
            test_support::child_limits limits;
            limits.cpu_seconds = 60;
            limits.stack_bytes = 256 * 1024;
            return limits;
        }());
    EXPECT_TRUE(child.exited) << child.signal << child.output;
    EXPECT_EQ(0, child.exit_code) << child.output;
}

TEST(ConfigTree, ListsAndDumpsADeepTreeOnASmallStack) {
    const auto child = test_support::run_in_child(
        [] {
            std::string key = "a";
            for (int i = 1; i < 2000; ++i)
                key += ".a";
            config_tree tree;
            tree.set_node(key, variant(1), 0);
            config_node_list nodes;
            tree.get_value_pair_array("", nodes, true, "");
            if (nodes.size() != 2000 || nodes.back().first != key)
                _Exit(1);
            std::ostringstream out;
            out << tree;
            if (out.str().size() < 2000u * 2000u)
                _Exit(2);
        },
        [] {
            test_support::child_limits limits;
            limits.cpu_seconds = 60;
            limits.stack_bytes = 128 * 1024;
            return limits;
        }());
    EXPECT_TRUE(child.exited) << child.signal << child.output;
    EXPECT_EQ(0, child.exit_code) << child.output;
}

}  // namespace
