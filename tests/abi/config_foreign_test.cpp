// The configuration classes as seen by a program without the headers of the library. README.md says
// what this checks. The library's manager calls sources and a dispatcher of this program.
#include "abi/foreign/arguments.hpp"
#include "abi/foreign/bodies.hpp"
#include "abi/foreign/nil.hpp"
#include "abi/foreign/strings.hpp"
#include "abi/foreign/variant.hpp"

#include <gtest/gtest.h>

#include <list>
#include <map>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace TOVA_2_18 {

namespace config {

typedef std::pair<unsigned int, types::variant> node_type;
typedef std::vector<std::pair<strings::ustring8, node_type>> node_list;

namespace _private {

template <typename K, typename P>
class deep_copy_map;

template <typename K, typename V>
class deep_copy_map<K, memory::pointers::rc_pointer<V>>
    : public std::map<K, memory::pointers::rc_pointer<V>> {};

}  // namespace _private

bool isConfigDotSlash(char);
bool isConfigWhite(char);
bool isConfigSpace(char);
bool isConfigAlpha(char);
bool isConfigDigit(char);
bool isConfigDelim(char);

class config_tree : public generic::abilities::reference_count_pointer_ability<config_tree>,
                    public generic::abilities::clone_ability {
public:
    config_tree();
    config_tree(const config_tree&);
    ~config_tree() throw() override;
    config_tree* clone() const;
    config_tree& operator=(const config_tree&);
    void erase();
    void set_node(const strings::ustring8&, const types::variant&, unsigned int);
    void parse_string(const strings::ustring8&, strings::ustring8&, strings::ustring8&) const;
    const node_type* get_node(const strings::ustring8&) const;
    void get_array(const strings::ustring8&, node_list&);
    void get_value_pair_array(const strings::ustring8&, node_list&, bool, const strings::ustring8&);
    std::ostream& dump(std::ostream&, int);

    _private::deep_copy_map<strings::ustring8, memory::pointers::rc_pointer<config_tree>> children;
    node_type node;
};

std::ostream& operator<<(std::ostream&, config_tree&);

class config_token {
public:
    enum tok_types { T_VAR, T_NUM, T_END = 5, T_EQ = 7, T_FSFS = 16, T_NON_ALPHA_NUM = 31 };

    std::string CvtTokStr();

    std::string text;
    unsigned int end;
    unsigned int start;
    tok_types type;
};

class base_config_item;
typedef std::list<memory::pointers::rc_pointer<base_config_item>> item_list;

class base_config_item
    : public generic::abilities::reference_count_pointer_ability<base_config_item>,
      public generic::abilities::clone_ability {
public:
    base_config_item();
    base_config_item(const base_config_item&);
    ~base_config_item() throw() override;
    virtual bool load(const item_list&);
    virtual bool load();
    virtual bool save(const item_list&);
    virtual bool save();
    virtual void unload();
    virtual base_config_item* clone() const = 0;
    strings::ustring8 get_id();
    const node_type* get_value(const strings::ustring8&) const;
    void get_array(const strings::ustring8&, node_list&);
    void get_value_pair_array(const strings::ustring8&, node_list&, bool);
    void set(const strings::ustring8&, const types::variant&, unsigned int);
    void set(const std::pair<strings::ustring8, types::variant>&, unsigned int);
    void set(const strings::ustring8&, unsigned int);
    void set_array(const strings::ustring8&, const generic::varg_list&, const generic::varg_list&);
    std::pair<strings::ustring8, types::variant> make_key_value(const strings::ustring8&,
                                                                config_token::tok_types);
    config_token::tok_types get_token(const strings::ustring8&, unsigned int&, config_token&);
    std::ostream& dump(std::ostream&);

    strings::ustring8 id;
    config_tree tree;
};

std::ostream& operator<<(std::ostream&, base_config_item&);

class config_dispatch : public generic::abilities::clone_ability {
public:
    ~config_dispatch() throw() override;
    virtual bool setup(item_list&) const = 0;
    virtual bool load(item_list&) const = 0;
    virtual bool unload(item_list&) const = 0;
    virtual bool save(item_list&) const = 0;
    virtual config_dispatch* clone() const = 0;
};

class std_config_dispatch : public config_dispatch {
public:
    std_config_dispatch();
    std_config_dispatch(int, const char* const*, const char* const*, const strings::ustring8&,
                        const strings::ustring8&);
    ~std_config_dispatch() throw() override;
    bool setup(item_list&) const override;
    bool load(item_list&) const override;
    bool unload(item_list&) const override;
    bool save(item_list&) const override;
    std_config_dispatch* clone() const override;

    const char* const* argv;
    const char* const* envp;
    int argc;
    strings::ustring8 filename;
    strings::ustring8 second;
};

class module_config_dispatch : public config_dispatch {
public:
    module_config_dispatch(const generic::varg_list&, const char* const*);
    ~module_config_dispatch() throw() override;
    bool setup(item_list&) const override;
    bool load(item_list&) const override;
    bool unload(item_list&) const override;
    bool save(item_list&) const override;
    module_config_dispatch* clone() const override;

    const char* const* envp;
    std::vector<std::string> names;
};

class config_manager {
public:
    config_manager();
    virtual ~config_manager() throw();
    bool init(const config_dispatch&);
    bool load();
    bool unload();
    bool save();
    types::variant get_value(const strings::ustring8&, types::variant);
    bool value_exist(const strings::ustring8&);
    bool is_array(const strings::ustring8&);
    void get_array(const strings::ustring8&, std::vector<types::variant>&);
    void get_key_value_array(const strings::ustring8&,
                             std::vector<std::pair<strings::ustring8, types::variant>>&, bool);
    memory::pointers::rc_pointer<base_config_item> get_config_item(const strings::ustring8&);
    std::ostream& dump(std::ostream&);

    item_list items;
    config_dispatch* dispatch;
};

std::ostream& operator<<(std::ostream&, config_manager&);

}  // namespace config

}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18;
using config::base_config_item;
using config::config_dispatch;
using config::config_manager;
using config::config_token;
using config::config_tree;
using config::item_list;
using config::node_list;
using generic::argument;
using generic::varg_list;
using memory::pointers::rc_pointer;
using strings::ustring8;
using types::variant;

typedef std::vector<std::string> lines;

std::string shown(const config::node_type* node) {
    if (node == nullptr)
        return "null";
    return std::to_string(node->first) + " " +
           (node->second == types::nil ? std::string("nil") : node->second.as_string());
}

lines shown(const node_list& nodes) {
    lines result;
    for (const auto& each : nodes)
        result.push_back(each.first + ": " + shown(&each.second));
    return result;
}

varg_list list_of(std::initializer_list<variant> values) {
    varg_list list;
    for (const variant& value : values)
        list.push_back(argument(value));
    return list;
}

// --- Characters and tokens ---------------------------------------------------------------------

TEST(ForeignConfigCharacters, HaveTheirClasses) {
    EXPECT_TRUE(config::isConfigDotSlash('\\'));
    EXPECT_TRUE(config::isConfigWhite('\r'));
    EXPECT_TRUE(config::isConfigSpace(' '));
    EXPECT_TRUE(config::isConfigAlpha('Z'));
    EXPECT_TRUE(config::isConfigDigit('9'));
    EXPECT_TRUE(config::isConfigDelim('\0'));
    EXPECT_FALSE(config::isConfigDotSlash('\0'));
    EXPECT_FALSE(config::isConfigWhite('\0'));
    EXPECT_FALSE(config::isConfigSpace('\t'));
    EXPECT_FALSE(config::isConfigAlpha('9'));
    EXPECT_FALSE(config::isConfigDigit('Z'));
    EXPECT_FALSE(config::isConfigDelim('.'));
}

// A source of this program. It overrides each operation and logs the call.
class foreign_item : public base_config_item {
public:
    foreign_item(const char* name, lines& noted) : calls(noted), answer(true) { id = name; }
    foreign_item(const foreign_item& other)
        : base_config_item(other), calls(other.calls), answer(other.answer) {}
    ~foreign_item() throw() override { note("end"); }
    bool load(const item_list& items) override {
        note("load of " + std::to_string(items.size()));
        return base_config_item::load(items);
    }
    bool load() override {
        note("load");
        set("from = " + id, 0);
        return answer;
    }
    bool save(const item_list& items) override {
        note("save of " + std::to_string(items.size()));
        return base_config_item::save(items);
    }
    bool save() override {
        note("save");
        return answer;
    }
    void unload() override {
        note("unload");
        tree.erase();
    }
    foreign_item* clone() const override {
        foreign_item* const copy = new foreign_item(*this);
        copy->allocated = true;
        return copy;
    }

    lines& calls;
    bool answer;

private:
    void note(const std::string& what) const { calls.push_back(id + " " + what); }
};

TEST(ForeignConfigToken, IsFilledByTheTokenizerOfASource) {
    lines calls;
    foreign_item item("i", calls);
    config_token token;
    token.text = "before";
    unsigned int position = 0;
    const ustring8 text("ab =*/\"q\"_");
    EXPECT_EQ(config_token::T_VAR, item.get_token(text, position, token));
    EXPECT_EQ("ab", token.text);
    EXPECT_EQ(0u, token.start);
    EXPECT_EQ(2u, token.end);
    EXPECT_EQ("T_VAR :[ab]", token.CvtTokStr());
    EXPECT_EQ(6, item.get_token(text, position, token));
    EXPECT_EQ("ab", token.text);
    EXPECT_EQ(config_token::T_EQ, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_FSFS, item.get_token(text, position, token));
    EXPECT_EQ(24, token.type);
    EXPECT_EQ("unknown type", token.CvtTokStr());
    EXPECT_EQ(30, item.get_token(text, position, token));
    EXPECT_EQ("T_STRING:[q]", token.CvtTokStr());
    EXPECT_EQ(config_token::T_NON_ALPHA_NUM, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_END, item.get_token(text, position, token));
    EXPECT_EQ("_", token.text);
    EXPECT_EQ(9u, token.start);
    EXPECT_EQ(10u, token.end);
    EXPECT_EQ(10u, position);
    const auto entry = item.make_key_value("a b = c d", config_token::T_EQ);
    EXPECT_EQ("ab", entry.first);
    EXPECT_TRUE(typeid(ustring8) == entry.second.type());
    EXPECT_EQ("cd", entry.second.as_string());
}

// --- Trees -------------------------------------------------------------------------------------

TEST(ForeignConfigTree, StoresNodesInItsFields) {
    config_tree tree;
    EXPECT_TRUE(tree.children.empty());
    EXPECT_EQ("0 1", shown(&tree.node));
    EXPECT_TRUE(typeid(bool) == tree.node.second.type());
    tree.set_node("A.b/C", "v", 4);
    ASSERT_EQ(1u, tree.children.count("a"));
    config_tree& below = *tree.children["a"];
    EXPECT_TRUE(below.allocated);
    EXPECT_EQ(1u, below.count);
    EXPECT_EQ("5 v", shown(&below.children["b"]->children["c"]->node));
    EXPECT_EQ(&below.node, tree.get_node("a"));

    // The library also finds nodes that this program creates.
    config_tree* const made = new config_tree;
    made->allocated = true;
    made->node = config::node_type(3, variant());
    made->set_node("0", variant(7), 0);
    tree.children["k"] = rc_pointer<config_tree>(made);
    node_list nodes;
    tree.get_array("K", nodes);
    tree.get_value_pair_array("", nodes, true, "p");
    EXPECT_EQ(
        (lines{"0: 1 7", "p.a: 0 1", "p.a.b: 0 1", "p.a.b.c: 5 v", "p.k: 3 nil", "p.k.0: 1 7"}),
        shown(nodes));
    ustring8 head, tail;
    tree.parse_string("A.b/C", head, tail);
    EXPECT_EQ("a|b/C", head + "|" + tail);
    tree.erase();
    EXPECT_TRUE(tree.children.empty());
}

TEST(ForeignConfigTree, IsCopiedClonedAssignedAndDumped) {
    config_tree tree;
    tree.node = config::node_type(9, variant("own"));
    tree.set_node("a.b", "v", 0);
    config_tree copy(tree), assigned;
    EXPECT_EQ(&assigned, &(assigned = tree));
    const rc_pointer<config_tree> clone(tree.clone());
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(1u, clone->count);
    tree.set_node("a.b", "changed", 0);
    config_tree* const copies[] = {&copy, &assigned, clone.object};
    for (config_tree* each : copies) {
        EXPECT_EQ("9 own", shown(&each->node));
        EXPECT_EQ("1 v", shown(each->get_node("a.b")));
    }
    std::ostringstream stream;
    EXPECT_EQ(&stream, &(stream << copy));
    EXPECT_EQ(&stream, &clone->dump(stream, 1));
    EXPECT_EQ("a : true\n|---------------\\\n|\t\tb : 1 v\n|\t\t|\n|\t\tend\nend\n"
              "|\t\ta : true\n|\t\t|---------------\\\n|\t\t|\t\tb : 1 v\n|\t\t|\t\t|\n"
              "|\t\t|\t\tend\n|\t\tend\n",
              stream.str());
}

TEST(ForeignConfigTree, KeepsANullChildInCopies) {
    config_tree tree;
    tree.children["n"];
    tree.set_node("a.b", "v", 0);
    tree.children["a"]->children["n"];
    const config_tree copy(tree);
    config_tree assigned;
    assigned = tree;
    const rc_pointer<config_tree> clone(tree.clone());
    const config_tree* const copies[] = {&copy, &assigned, clone.object};
    for (const config_tree* each : copies) {
        EXPECT_EQ(2u, each->children.size());
        EXPECT_EQ(nullptr, each->children.at("n").object);
        EXPECT_EQ(nullptr, each->children.at("a")->children.at("n").object);
        EXPECT_EQ("1 v", shown(each->get_node("a.b")));
    }
}

// --- Sources -----------------------------------------------------------------------------------

TEST(ForeignConfigItem, IsFilledListedAndDumped) {
    lines calls;
    foreign_item item("i", calls);
    item.set("s.a", variant(1), 4);
    item.set(std::make_pair(ustring8("s.b"), variant("v")), 0);
    item.set("s.C = x y", 0);
    item.set("n", 1);
    item.set_array("k", list_of({variant("x"), variant("17")}), list_of({variant(4u)}));
    node_list nodes;
    item.get_array("k", nodes);
    item.get_value_pair_array("", nodes, true);
    EXPECT_EQ((lines{"0: 5 x", "1: 1 17", "k: 3 nil", "k.0: 5 x", "k.1: 1 17", "n: 1 ", "s: 0 1",
                     "s.a: 5 1", "s.b: 1 v", "s.c: 1 xy"}),
              shown(nodes));
    EXPECT_TRUE(typeid(unsigned int) == item.get_value("k.1")->second.type());
    EXPECT_EQ(item.tree.get_node("s"), item.get_value("s"));
    EXPECT_EQ("i", item.get_id());

    foreign_item other("other", calls);
    std::ostringstream stream;
    EXPECT_EQ(&stream, &(stream << other));
    EXPECT_EQ(&stream, &other.dump(stream));
    const std::string once = "object : other\n|---------------\\\n|\t\tend\nend\n";
    EXPECT_EQ(once + once, stream.str());
}

TEST(ForeignConfigItem, InheritsTheOperationsOfTheLibrary) {
    class quiet_item : public base_config_item {
    public:
        quiet_item* clone() const override { return new quiet_item(*this); }
    } item;
    item.set("a = 1", 0);
    const item_list none;
    base_config_item& base = item;
    EXPECT_TRUE(base.load(none));
    EXPECT_TRUE(base.load());
    EXPECT_TRUE(base.save(none));
    EXPECT_TRUE(base.save());
    base.unload();
    EXPECT_EQ("1 1", shown(base.get_value("a")));
    EXPECT_EQ("", base.get_id());
}

// --- Manager and dispatchers -------------------------------------------------------------------

// A dispatcher of this program, with two sources of this program.
class foreign_dispatch : public config_dispatch {
public:
    explicit foreign_dispatch(lines& noted) : calls(noted) {}
    ~foreign_dispatch() throw() override { calls.push_back("dispatch end"); }
    bool setup(item_list& items) const override {
        calls.push_back("dispatch setup of " + std::to_string(items.size()));
        for (const char* name : {"first", "second"}) {
            foreign_item* const item = new foreign_item(name, calls);
            item->allocated = true;
            items.push_back(rc_pointer<base_config_item>(item));
        }
        return false;
    }
    bool load(item_list& items) const override {
        calls.push_back("dispatch load");
        for (const auto& each : items)
            each->load(items);
        return false;
    }
    bool unload(item_list& items) const override {
        calls.push_back("dispatch unload");
        for (const auto& each : items)
            each->unload();
        return false;
    }
    bool save(item_list& items) const override {
        calls.push_back("dispatch save");
        for (const auto& each : items)
            each->save();
        return false;
    }
    foreign_dispatch* clone() const override {
        calls.push_back("dispatch clone");
        return new foreign_dispatch(calls);
    }

    lines& calls;
};

TEST(ForeignConfigManager, CallsADispatcherAndSourcesOfThisProgram) {
    lines calls;
    {
        config_manager manager;
        EXPECT_EQ(nullptr, manager.dispatch);
        EXPECT_FALSE(manager.load());
        EXPECT_FALSE(manager.unload());
        EXPECT_FALSE(manager.save());
        {
            const foreign_dispatch dispatch(calls);
            EXPECT_FALSE(manager.init(dispatch));
            EXPECT_NE(&dispatch, manager.dispatch);
        }
        EXPECT_TRUE(typeid(foreign_dispatch) == typeid(*manager.dispatch));
        ASSERT_EQ(2u, manager.items.size());
        EXPECT_TRUE(manager.load());
        EXPECT_EQ("first", manager.get_value("from", variant()).as_string());
        EXPECT_TRUE(manager.save());
        EXPECT_TRUE(manager.unload());
        EXPECT_FALSE(manager.value_exist("from"));
        EXPECT_EQ((lines{"dispatch clone", "dispatch setup of 0", "dispatch end", "dispatch load",
                         "first load of 2", "first load", "second load of 2", "second load",
                         "dispatch save", "first save", "second save", "dispatch unload",
                         "first unload", "second unload"}),
                  calls);
        calls.clear();
    }
    EXPECT_EQ((lines{"dispatch end", "first end", "second end"}), calls);
}

TEST(ForeignConfigManager, HasADestructorInItsFirstSlot) {
    lines calls;
    config_manager* const manager = new config_manager;
    manager->init(foreign_dispatch(calls));
    calls.clear();
    delete manager;
    EXPECT_EQ((lines{"dispatch end", "first end", "second end"}), calls);
}

TEST(ForeignConfigManager, LooksUpInSourcesOfThisProgram) {
    lines calls;
    config_manager manager;
    manager.init(foreign_dispatch(calls));
    const rc_pointer<base_config_item> first = manager.get_config_item("first");
    const rc_pointer<base_config_item> second = manager.get_config_item("second");
    ASSERT_NE(nullptr, first.object);
    ASSERT_NE(nullptr, second.object);
    EXPECT_EQ(2u, second->count);
    EXPECT_EQ(nullptr, manager.get_config_item("third").object);

    second->set("s.x", variant("deep"), 0);
    first->set("alias", variant("S.X"), 4);
    second->set_array("k", list_of({variant("x"), variant(2)}), varg_list());
    EXPECT_EQ("deep", manager.get_value("alias", variant("default")).as_string());
    EXPECT_EQ("default", manager.get_value("none", variant("default")).as_string());
    EXPECT_EQ("x", manager.get_value("k", variant()).as_string());
    EXPECT_TRUE(manager.value_exist("s"));
    EXPECT_TRUE(manager.is_array("k"));
    EXPECT_FALSE(manager.is_array("s"));
    std::vector<variant> values(1, variant("old"));
    manager.get_array("k", values);
    ASSERT_EQ(3u, values.size());
    EXPECT_EQ("old", values[0].as_string());
    EXPECT_EQ(2, values[2].as_int());
    std::vector<std::pair<ustring8, variant>> pairs;
    manager.get_key_value_array("k", pairs, true);
    ASSERT_EQ(2u, pairs.size());
    EXPECT_EQ("1", pairs[1].first);
    EXPECT_EQ(2, pairs[1].second.as_int());

    first->unload();
    second->unload();
    std::ostringstream stream;
    EXPECT_EQ(&stream, &(stream << manager));
    EXPECT_EQ(&stream, &manager.dump(stream));
    const std::string tail = "\n|---------------\\\n|\t\tend\nend\n";
    const std::string once = "config_manager:\n\nconfig_item:\nobject : first" + tail +
                             "\nconfig_item:\nobject : second" + tail +
                             "\nno more config_items!\n\nending output\n";
    EXPECT_EQ(once + once, stream.str());
}

TEST(ForeignConfigDispatch, OfTheLibraryIsCalledThroughItsBaseClass) {
    const char* const arguments[] = {"tool", "-a=line", nullptr};
    const char* const environment[] = {"A=env", "B=env", nullptr};
    const config::std_config_dispatch standard(2, arguments, environment, "no such.cfg", "second");
    EXPECT_EQ(arguments, standard.argv);
    EXPECT_EQ(environment, standard.envp);
    EXPECT_EQ(2, standard.argc);
    EXPECT_EQ("no such.cfg", standard.filename);
    EXPECT_EQ("second", standard.second);
    const config::module_config_dispatch module(list_of({variant("x.cfg"), variant(2)}),
                                                environment);
    EXPECT_EQ(environment, module.envp);
    EXPECT_EQ((lines{"x.cfg", "2"}), module.names);
    const config::std_config_dispatch unset;
    EXPECT_EQ("", unset.filename);
    EXPECT_EQ("", unset.second);

    const struct {
        const config_dispatch& dispatch;
        lines ids;
        const char* a;
    } cases[] = {
        {standard, {"command line", "standard file", "enviroment"}, "line"},
        {module, {"standard file", "standard file", "enviroment", "user_item"}, "env"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a);
        config_dispatch* const clone = c.dispatch.clone();
        EXPECT_TRUE(typeid(c.dispatch) == typeid(*clone));
        item_list items;
        clone->setup(items);
        lines ids;
        for (const auto& each : items) {
            ids.push_back(each->get_id());
            EXPECT_EQ(1u, each->count);
            EXPECT_TRUE(each->allocated);
        }
        EXPECT_EQ(c.ids, ids);
        clone->load(items);
        clone->unload(items);
        delete clone;

        config_manager manager;
        manager.init(c.dispatch);
        EXPECT_TRUE(manager.load());
        EXPECT_EQ(c.a, manager.get_value("a", variant()).as_string());
        EXPECT_EQ("env", manager.get_value("b", variant()).as_string());
        const rc_pointer<base_config_item> copy(manager.get_config_item("enviroment")->clone());
        EXPECT_EQ("1 env", shown(copy->get_value("b")));
    }
}

// The library's dispatchers load sources of this program through their slots.
TEST(ForeignConfigDispatch, OfTheLibraryCallsSourcesOfThisProgram) {
    lines calls;
    foreign_item one("one", calls), two("two", calls);
    item_list items;
    items.push_back(rc_pointer<base_config_item>(&one));
    items.push_back(rc_pointer<base_config_item>(&two));
    const config::std_config_dispatch standard(0, nullptr, nullptr, "", "");
    const config::module_config_dispatch module(varg_list(), nullptr);
    const config_dispatch* const dispatchers[] = {&standard, &module};
    for (const config_dispatch* dispatch : dispatchers) {
        calls.clear();
        dispatch->load(items);
        EXPECT_EQ("1 two", shown(two.get_value("from")));
        dispatch->unload(items);
        dispatch->save(items);
        EXPECT_EQ((lines{"one load of 2", "one load", "two load of 2", "two load", "one unload",
                         "two unload", "one save of 2", "two save of 2"}),
                  calls);
        EXPECT_EQ(nullptr, two.get_value("from"));
    }
}

}  // namespace
