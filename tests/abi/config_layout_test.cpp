// Tests sizes, offsets, bases and slots of the configuration classes, on which compiled programs
// rely.
#include <tova/config/config.hpp>

#include "config/tree_nodes.hpp"
#include "support/raw_memory.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cxxabi.h>

#include <cstddef>
#include <cstdlib>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace {

using namespace TOVA_2_18::config;
using test_support::base_offset;
using test_support::pointer_at;
using test_support::slot;
using TOVA_2_18::generic::argument;
using TOVA_2_18::generic::varg_list;
using TOVA_2_18::generic::abilities::clone_ability;
using TOVA_2_18::generic::abilities::reference_count_pointer_ability;
using TOVA_2_18::memory::pointers::rc_pointer;
using TOVA_2_18::strings::ustring8;
using TOVA_2_18::types::variant;
typedef detail::tree_fields fields;

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(config_token::tok_types) == 4, "types are 32 bits wide");
static_assert(offsetof(config_token, text) == 0, "");
static_assert(offsetof(config_token, end) == 32, "");
static_assert(offsetof(config_token, start) == 36, "");
static_assert(offsetof(config_token, type) == 40, "");
static_assert(sizeof(config_token) == 48 && alignof(config_token) == 8, "");
static_assert(std::is_same<decltype(config_token::text), std::string>::value, "");
static_assert(std::is_same<decltype(config_token::end), unsigned int>::value, "");
static_assert(std::is_same<decltype(config_token::start), unsigned int>::value, "");
static_assert(std::is_same<decltype(config_token::type), config_token::tok_types>::value, "");
static_assert(!std::is_polymorphic<config_token>::value, "");

static_assert(sizeof(config_node) == 16 && alignof(config_node) == 8, "");
static_assert(std::is_same<config_node, std::pair<unsigned int, variant>>::value, "");
static_assert(std::is_same<config_node_list, std::vector<std::pair<ustring8, config_node>>>::value,
              "");
static_assert(std::is_same<config_item_list, std::list<rc_pointer<base_config_item>>>::value, "");

// The pointer to the slots, heap mark and count, the children and the node.
static_assert(sizeof(std::map<ustring8, rc_pointer<config_tree>>) == 48, "");
static_assert(sizeof(_private::deep_copy_map<ustring8, rc_pointer<config_tree>>) == 48, "");
static_assert(sizeof(config_tree) == 80 && alignof(config_tree) == 8, "");

// The pointer to the slots, heap mark and count, the name and the tree; then what each source adds.
static_assert(sizeof(base_config_item) == 128, "");
static_assert(sizeof(file_item) == 160, "");
static_assert(sizeof(commandline_item) == 144, "");
static_assert(sizeof(enviroment_item) == 136, "");
static_assert(sizeof(user_item) == 128, "");

static_assert(sizeof(config_dispatch) == 8, "");
static_assert(sizeof(std_config_dispatch) == 96, "");
static_assert(sizeof(module_config_dispatch) == 40, "");
static_assert(sizeof(config_manager) == 40, "");

static_assert(std::is_abstract<base_config_item>::value, "");
static_assert(std::is_abstract<config_dispatch>::value, "");
static_assert(!std::is_copy_constructible<config_manager>::value, "");
static_assert(std::has_virtual_destructor<config_manager>::value, "");
static_assert(
    std::is_same<decltype(&config_tree::clone), config_tree* (config_tree::*)() const>::value, "");

template <typename Value>
const Value& part_at(const void* object, std::size_t offset) {
    return *static_cast<const Value*>(
        static_cast<const void*>(static_cast<const char*>(object) + offset));
}

// The direct bases of a class in their order, as "name@offset".
std::vector<std::string> bases(const std::type_info& type) {
    std::vector<std::string> result;
    const auto* const several = dynamic_cast<const abi::__vmi_class_type_info*>(&type);
    if (several == nullptr)
        return result;
    for (unsigned i = 0; i < several->__base_count; ++i) {
        const abi::__base_class_type_info& base = several->__base_info[i];
        int status = 0;
        const std::unique_ptr<char, void (*)(void*)> name(
            abi::__cxa_demangle(base.__base_type->name(), nullptr, nullptr, &status), std::free);
        result.push_back(std::string(name.get()) + "@" + std::to_string(base.__offset()));
    }
    return result;
}

const char ability[] = "TOVA_2_18::generic::abilities::reference_count_pointer_ability<";

TEST(ConfigLayout, ListsTheCountFirstAmongTheBasesAlthoughItIsStoredSecond) {
    EXPECT_EQ((std::vector<std::string>{std::string(ability) + "TOVA_2_18::config::config_tree>@8",
                                        "TOVA_2_18::generic::abilities::clone_ability@0"}),
              bases(typeid(config_tree)));
    EXPECT_EQ(
        (std::vector<std::string>{std::string(ability) + "TOVA_2_18::config::base_config_item>@8",
                                  "TOVA_2_18::generic::abilities::clone_ability@0"}),
        bases(typeid(base_config_item)));
    const auto* const single =
        dynamic_cast<const abi::__si_class_type_info*>(&typeid(config_dispatch));
    ASSERT_NE(nullptr, single);
    EXPECT_EQ(typeid(clone_ability), *single->__base_type);
}

TEST(ConfigLayout, StoresTheFieldsOfATreeInOrder) {
    config_tree tree;
    EXPECT_EQ(0, (base_offset<clone_ability>(tree)));
    EXPECT_EQ(8, (base_offset<reference_count_pointer_ability<config_tree>>(tree)));
    const char* const object = reinterpret_cast<const char*>(&tree);
    EXPECT_EQ(object + 8, reinterpret_cast<const char*>(&tree.allocated));
    EXPECT_EQ(object + 12, reinterpret_cast<const char*>(&tree.count));
    EXPECT_EQ(object + 16, reinterpret_cast<const char*>(&fields::children(tree)));
    EXPECT_EQ(object + 64, reinterpret_cast<const char*>(&fields::node(tree)));
    tree.set_node("a", variant(1), 0);
    EXPECT_EQ(1u, (part_at<std::map<ustring8, rc_pointer<config_tree>>>(&tree, 16).size()));
}

TEST(ConfigLayout, StoresTheNameOfASourceBeforeItsTree) {
    user_item item;
    item.set("a.b = 1", 0);
    EXPECT_EQ(8, (base_offset<reference_count_pointer_ability<base_config_item>>(item)));
    EXPECT_EQ("user item", part_at<ustring8>(&item, 16));
    EXPECT_EQ(item.get_value("a.b"), part_at<config_tree>(&item, 48).get_node("a.b"));
}

TEST(ConfigLayout, StoresTheFieldsOfEachSourceAfterTheTree) {
    const char* const strings[] = {"tool", nullptr};
    const file_item file("name.cfg");
    EXPECT_EQ("name.cfg", part_at<ustring8>(&file, 128));
    const commandline_item line(1, strings);
    EXPECT_EQ(1u, part_at<unsigned>(&line, 128));
    EXPECT_EQ(strings, pointer_at(&line, 136));
    const enviroment_item variables(strings);
    EXPECT_EQ(strings, pointer_at(&variables, 128));
}

TEST(ConfigLayout, StoresTheFieldsOfTheDispatchersInOrder) {
    const char* const arguments[] = {"tool", nullptr};
    const char* const variables[] = {nullptr};
    const std_config_dispatch standard(1, arguments, variables, "first", "second");
    EXPECT_EQ(arguments, pointer_at(&standard, 8));
    EXPECT_EQ(variables, pointer_at(&standard, 16));
    EXPECT_EQ(1, part_at<int>(&standard, 24));
    EXPECT_EQ("first", part_at<ustring8>(&standard, 32));
    EXPECT_EQ("second", part_at<ustring8>(&standard, 64));
    const module_config_dispatch module(varg_list(argument("x"), argument("y")), variables);
    EXPECT_EQ(variables, pointer_at(&module, 8));
    EXPECT_EQ((std::vector<std::string>{"x", "y"}),
              (part_at<std::vector<std::string>>(&module, 16)));
}

TEST(ConfigLayout, ClonesTheSecondStringOfTheStandardDispatcher) {
    const std::unique_ptr<std_config_dispatch> clone(
        std_config_dispatch(1, nullptr, nullptr, "first", "second").clone());
    EXPECT_EQ("second", part_at<ustring8>(clone.get(), 64));
}

TEST(ConfigLayout, StoresTheListOfAManagerBeforeItsDispatcher) {
    config_manager manager;
    EXPECT_EQ(nullptr, pointer_at(&manager, 32));
    EXPECT_TRUE(part_at<config_item_list>(&manager, 8).empty());
    manager.init(module_config_dispatch(varg_list(), nullptr));
    EXPECT_EQ(2u, part_at<config_item_list>(&manager, 8).size());
    const auto* const dispatcher = static_cast<const config_dispatch*>(pointer_at(&manager, 32));
    EXPECT_EQ(typeid(module_config_dispatch), typeid(*dispatcher));
}

TEST(ConfigLayout, LeavesTheFieldsOfADefaultStandardDispatcherUninitialized) {
    alignas(std_config_dispatch) unsigned char memory[sizeof(std_config_dispatch)];
    // The fields keep these bytes. The compiler must not find out that it could drop the writes.
    for (unsigned char& byte : memory)
        byte = 0x5A;
    asm volatile("" : : "r"(memory) : "memory");
    std_config_dispatch* const dispatch = new (memory) std_config_dispatch;
    EXPECT_EQ("", part_at<ustring8>(dispatch, 32));
    EXPECT_EQ("", part_at<ustring8>(dispatch, 64));
    const void* const untouched = reinterpret_cast<const void*>(0x5A5A5A5A5A5A5A5A);
    EXPECT_EQ(untouched, pointer_at(dispatch, 8));
    EXPECT_EQ(untouched, pointer_at(dispatch, 16));
    EXPECT_EQ(untouched, pointer_at(dispatch, 24));
    dispatch->~std_config_dispatch();
}

// Calls a virtual function through its slot number, as compiled code does.
template <typename Result, typename... Arguments>
TEST_CALLS_SLOTS Result call(const void* object, std::size_t number, Arguments... arguments) {
    return slot<Result(const void*, Arguments...)>(object, number)(object, arguments...);
}

// Records the slot that was called.
class recording_item : public base_config_item {
public:
    ~recording_item() TOVA_NOTHROW override { ends += 1; }
    bool load(const config_item_list&) override { return record(2); }
    bool load() override { return record(3); }
    bool save(const config_item_list&) override { return record(4); }
    bool save() override { return record(5); }
    void unload() override { record(6); }
    recording_item* clone() const override {
        record(7);
        return nullptr;
    }

    mutable int reached = 0;
    static int ends;

private:
    bool record(int number) const {
        reached = number;
        return true;
    }
};
int recording_item::ends = 0;

TEST(ConfigSlots, OfASourceAreInOrder) {
    recording_item item;
    const config_item_list items;
    const void* const raw = &item;
    EXPECT_TRUE((call<bool, const config_item_list&>(raw, 2, items)));
    EXPECT_EQ(2, item.reached);
    EXPECT_TRUE(call<bool>(raw, 3));
    EXPECT_EQ(3, item.reached);
    EXPECT_TRUE((call<bool, const config_item_list&>(raw, 4, items)));
    EXPECT_EQ(4, item.reached);
    EXPECT_TRUE(call<bool>(raw, 5));
    EXPECT_EQ(5, item.reached);
    call<void>(raw, 6);
    EXPECT_EQ(6, item.reached);
    EXPECT_EQ(nullptr, call<base_config_item*>(raw, 7));
    EXPECT_EQ(7, item.reached);
}

TEST(ConfigSlots, OfTheSourcesOfTheLibraryAreInTheSameOrder) {
    const char* const strings[] = {"A=1", "-b", nullptr};
    const test_support::temporary_directory directory;
    const std::string path = directory.write("x.cfg", "[s]\na=1\n");
    commandline_item line(2, strings);
    enviroment_item variables(strings);
    file_item file(path);
    base_config_item* const sources[] = {&line, &variables, &file};
    const char* const keys[] = {"b", "a", "s.a"};
    const config_item_list items;
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(keys[i]);
        base_config_item* const source = sources[i];
        EXPECT_TRUE((call<bool, const config_item_list&>(source, 2, items)));
        EXPECT_NE(nullptr, source->get_value(keys[i]));
        call<void>(source, 6);
        EXPECT_EQ(nullptr, source->get_value(keys[i]));
        EXPECT_TRUE(call<bool>(source, 3));
        EXPECT_NE(nullptr, source->get_value(keys[i]));
        EXPECT_TRUE((call<bool, const config_item_list&>(source, 4, items)));
        EXPECT_TRUE(call<bool>(source, 5));
        const rc_pointer<base_config_item> clone(call<base_config_item*>(source, 7));
        EXPECT_TRUE(clone->allocated);
        EXPECT_NE(nullptr, clone->get_value(keys[i]));
    }
    user_item user;
    user.set("k", 0);
    call<void>(&user, 6);
    EXPECT_NE(nullptr, user.get_value("k"));
    const rc_pointer<base_config_item> clone(call<base_config_item*>(&user, 7));
    EXPECT_EQ("user_item", clone->get_id());
}

TEST(ConfigSlots, OfDestructorsComeFirst) {
    recording_item::ends = 0;
    alignas(recording_item) unsigned char memory[sizeof(recording_item)];
    call<void>(new (memory) recording_item, 0);
    EXPECT_EQ(1, recording_item::ends);
    call<void>(new recording_item, 1);
    EXPECT_EQ(2, recording_item::ends);
    call<void>(new config_tree, 1);
    call<void>(new config_manager, 1);
    call<void>(new std_config_dispatch, 1);
    call<void>(new file_item("name that is too long to be stored inside the object"), 1);
}

class recording_dispatch : public config_dispatch {
public:
    bool setup(config_item_list& items) const override {
        items.push_back(rc_pointer<base_config_item>());
        return record(2);
    }
    bool load(config_item_list&) const override { return record(3); }
    bool unload(config_item_list&) const override { return record(4); }
    bool save(config_item_list&) const override { return record(5); }
    recording_dispatch* clone() const override {
        record(6);
        return nullptr;
    }
    mutable int reached = 0;

private:
    bool record(int number) const {
        reached = number;
        return true;
    }
};

TEST(ConfigSlots, OfADispatcherAreInOrder) {
    recording_dispatch dispatch;
    config_item_list items;
    const void* const raw = &dispatch;
    for (int number = 2; number <= 5; ++number) {
        EXPECT_TRUE((call<bool, config_item_list&>(raw, static_cast<std::size_t>(number), items)));
        EXPECT_EQ(number, dispatch.reached);
    }
    EXPECT_EQ(1u, items.size());
    EXPECT_EQ(nullptr, call<config_dispatch*>(raw, 6));
    EXPECT_EQ(6, dispatch.reached);
}

TEST(ConfigSlots, OfTheDispatchersOfTheLibraryAreInTheSameOrder) {
    const char* const variables[] = {"A=1", nullptr};
    const std_config_dispatch standard(0, nullptr, variables, "", "");
    const module_config_dispatch module(varg_list(), variables);
    const config_dispatch* const dispatchers[] = {&standard, &module};
    for (const config_dispatch* dispatcher : dispatchers) {
        config_item_list items;
        EXPECT_TRUE((call<bool, config_item_list&>(dispatcher, 2, items)));
        ASSERT_LE(2u, items.size());
        const auto known = [&items] {
            for (const auto& item : items)
                if (item->get_value("a") != nullptr)
                    return true;
            return false;
        };
        EXPECT_TRUE((call<bool, config_item_list&>(dispatcher, 3, items)));
        EXPECT_TRUE(known());
        EXPECT_TRUE((call<bool, config_item_list&>(dispatcher, 4, items)));
        EXPECT_FALSE(known());
        EXPECT_TRUE((call<bool, config_item_list&>(dispatcher, 5, items)));
        const std::unique_ptr<config_dispatch> clone(call<config_dispatch*>(dispatcher, 6));
        const config_dispatch& cloned = *clone;
        EXPECT_EQ(typeid(*dispatcher), typeid(cloned));
    }
}

}  // namespace
