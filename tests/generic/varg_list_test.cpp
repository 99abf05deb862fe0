#include <tova/generic/varg_list.hpp>

#include <tova/types/nil.hpp>

#include "support/failing_allocation.hpp"
#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace {

using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;
using tova::types::nil;
using tova::types::variant;

// The list as a string: "name=value" for named arguments and the value for others, with spaces
// between them.
std::string shown(const varg_list& list) {
    std::string result;
    for (const argument& each : list) {
        if (!result.empty())
            result += ' ';
        if (each.has_name())
            result += each.name() + "=";
        result += each.value() == nil ? ustring8("nil") : each.value().as_string();
    }
    return result;
}

// Reads the nil argument before `main` begins.
struct early_reader {
    bool was_nil = varg_list::nil_argument == nil;
    unsigned long count = varg_list(1, 2, 3).count();
} s_early_reader;

// --- Constructors ------------------------------------------------------------------------------

TEST(VargListConstructor, KeepsUnnamedValuesInOrder) {
    const varg_list list(1, 2, 3);
    EXPECT_EQ(3u, list.count());
    EXPECT_EQ(1, list[0].value().as_int());
    EXPECT_EQ(2, list[1].value().as_int());
    EXPECT_EQ(3, list[2].value().as_int());
}

TEST(VargListConstructor, AcceptsUpTo26Arguments) {
    const varg_list all(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                        22, 23, 24, 25, "z");
    ASSERT_EQ(26u, all.count());
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(i + 1, all[static_cast<unsigned long>(i)].value().as_int());
    EXPECT_EQ("z", all[25].value().as_string());
    EXPECT_EQ(0u, varg_list().count());
    EXPECT_EQ(1u, varg_list("one").count());
    EXPECT_EQ(25u, varg_list(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                             21, 22, 23, 24, 25)
                       .count());
}

TEST(VargListConstructor, EndsAtTheFirstUnnamedNil) {
    EXPECT_EQ("1", shown(varg_list(1, nil, 3)));
    EXPECT_EQ("", shown(varg_list(nil, 2)));
    EXPECT_EQ("1", shown(varg_list(1, variant(), argument("a", 3))));
    EXPECT_EQ("1", shown(varg_list(1, varg_list::nil_argument, 3)));
    EXPECT_EQ("1", shown(varg_list(1, argument("", nil), 3)));
}

TEST(VargListConstructor, StoresANamedNilAndContinues) {
    const varg_list list(1, argument("gap", nil), 3);
    EXPECT_EQ("1 gap=nil 3", shown(list));
    EXPECT_TRUE(list.has_argument("gap"));
}

TEST(VargListConstructor, DropsARepeatedNameAndContinues) {
    EXPECT_EQ("a=1 b=3 4",
              shown(varg_list(argument("a", 1), argument("a", 2), argument("b", 3), 4)));
}

TEST(VargListConstructor, CopiesTheArguments) {
    varg_list source(argument("a", 1));
    const varg_list copy(source);
    source.push_back(2);
    source.at(0ul).value(variant(5));
    EXPECT_EQ("a=1", shown(copy));
    EXPECT_EQ("a=5 2", shown(source));
}

TEST(VargListConstructor, LeaksNothingWhenMemoryRunsOut) {
    const argument first("a name that needs memory of its own", 1);
    const argument second("another name that needs memory of its own", 2);
    const long live = test_support::live_allocations();
    for (unsigned successes = 0;; ++successes) {
        const test_support::failing_allocation limit(successes);
        try {
            const varg_list list(first, second, first, second, second);
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(live, test_support::live_allocations()) << successes;
        if (!limit.failed())
            break;
        ASSERT_LT(successes, 100u);
    }
}

// --- Filling -----------------------------------------------------------------------------------

TEST(VargListPushBack, RejectsANameThatIsAlreadyInTheList) {
    varg_list list;
    EXPECT_TRUE(list.push_back(argument("a", 1)));
    EXPECT_FALSE(list.push_back(argument("a", 2)));
    EXPECT_FALSE(list.push_back("a", 3));
    EXPECT_TRUE(list.push_back("b", 4));
    EXPECT_FALSE(list.push_back("b", 5));
    EXPECT_EQ("a=1 b=4", shown(list));
}

TEST(VargListPushBack, NeverComparesUnnamedArguments) {
    varg_list list;
    EXPECT_TRUE(list.push_back(1));
    EXPECT_TRUE(list.push_back(argument(1)));
    EXPECT_TRUE(list.push_back("", 1));
    EXPECT_TRUE(list.push_back("", nil));
    EXPECT_TRUE(list.push_back(nil));
    EXPECT_EQ("1 1 1 nil nil", shown(list));
}

TEST(VargListPushBack, AcceptsAnArgumentOfTheListItself) {
    varg_list list(1);
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(list.push_back(list[0]));
    EXPECT_EQ(11u, list.count());
    EXPECT_EQ(1, list[10].value().as_int());
}

// --- Lookup ------------------------------------------------------------------------------------

TEST(VargListLookup, ComparesNamesByteForByte) {
    varg_list list(argument("Name", 1), argument("name", 2), argument(ustring8("a\0b", 3), 3));
    EXPECT_EQ(3u, list.count());
    EXPECT_EQ(1, list.at("Name").value().as_int());
    EXPECT_EQ(2, list["name"].value().as_int());
    EXPECT_FALSE(list.has_argument("NAME"));
    EXPECT_FALSE(list.has_argument("a"));
    EXPECT_FALSE(list.has_argument("nam"));
    EXPECT_FALSE(list.has_argument("names"));
    EXPECT_TRUE(list.has_argument(ustring8("a\0b", 3)));
    EXPECT_EQ(3, list[ustring8("a\0b", 3)].value().as_int());
    // The same letter encoded in two ways makes two different names.
    EXPECT_TRUE(list.push_back("\xC3\xA4", 4));
    EXPECT_TRUE(list.push_back("a\xCC\x88", 5));
}

TEST(VargListLookup, ReturnsTheNilArgumentForAnUnknownName) {
    varg_list list(argument("a", 1));
    const varg_list& constant = list;
    const argument& missing = list.at("b");
    EXPECT_TRUE(missing == nil);
    EXPECT_EQ(&varg_list::nil_argument, &missing);
    EXPECT_EQ(&missing, &list.at("b"));
    EXPECT_EQ(&missing, &list["c"]);
    EXPECT_EQ(&missing, &constant["c"]);
    EXPECT_EQ(&missing, &constant.at("c"));
    EXPECT_EQ("a=1", shown(list));
}

// The reference count of an argument's body: a variant is one pointer to its body, which starts
// with the pointer to its virtual table, the heap mark and then the count.
unsigned int holders_of(const argument& shared) {
    unsigned int count = 0;
    std::memcpy(&count, static_cast<const char*>(test_support::pointer_at(&shared.value())) + 12,
                sizeof count);
    return count;
}

TEST(VargListLookup, SharesOneNilArgumentAmongAllListsOfTheProcess) {
    const varg_list first(argument("a", 1));
    const varg_list second(argument("b", 2));
    const argument& missing = first.at("x");
    EXPECT_EQ(&missing, &second.at("y"));
    EXPECT_EQ(&missing, &second["y"]);

    // A comparison doesn't change the count. A copy does, and two threads that copy race on it.
    EXPECT_EQ(1u, holders_of(missing));
    EXPECT_TRUE(second["y"] == nil);
    EXPECT_EQ(1u, holders_of(missing));
    {
        const argument copy(second["y"]);
        const variant value(first["x"].value());
        EXPECT_EQ(3u, holders_of(missing));
    }
    EXPECT_EQ(1u, holders_of(missing));
}

TEST(VargListLookup, ReturnsTheEndAndNotTheNilArgumentFromAFailedFind) {
    varg_list list(argument("a", 1));
    const varg_list& constant = list;
    EXPECT_EQ(list.end(), list.find("x"));
    EXPECT_EQ(constant.end(), constant.find("x"));
    EXPECT_FALSE(list.has_argument("x"));
    EXPECT_EQ(1u, holders_of(varg_list::nil_argument));
}

TEST(VargListLookup, FindsAnEmptyNameAtTheFirstUnnamedArgument) {
    varg_list list(argument("a", 1), 2, 3);
    EXPECT_TRUE(list.has_argument(""));
    EXPECT_EQ(2, list.at("").value().as_int());
    EXPECT_FALSE(varg_list(argument("a", 1)).has_argument(""));
}

TEST(VargListLookup, FindsTheFirstOfTwoNamesThatBecameEqualLater) {
    varg_list list(argument("a", 1), argument("b", 2));
    list[1].name("a");
    EXPECT_EQ("a=1 a=2", shown(list));
    EXPECT_EQ(1, list["a"].value().as_int());
    list.erase("a");
    EXPECT_EQ("a=2", shown(list));
}

TEST(VargListLookup, FindReturnsIterators) {
    varg_list list(1, argument("b", 2), 3);
    const varg_list& constant = list;
    EXPECT_EQ(list.begin() + 1, list.find("b"));
    EXPECT_EQ(list.end(), list.find("x"));
    EXPECT_EQ(constant.begin() + 1, constant.find("b"));
    EXPECT_EQ(constant.end(), constant.find("x"));
    EXPECT_EQ(3, constant.end() - constant.begin());
    list.find("b")->value(variant("changed"));
    EXPECT_EQ("1 b=changed 3", shown(list));
}

TEST(VargListLookup, CanUseTheNilArgumentBeforeMain) {
    EXPECT_TRUE(s_early_reader.was_nil);
    EXPECT_EQ(3u, s_early_reader.count);
    EXPECT_TRUE(varg_list::nil_argument == nil);
    EXPECT_FALSE(varg_list::nil_argument.has_name());
}

// --- Positions ---------------------------------------------------------------------------------

template <typename Access>
std::string message_of(const Access& access) {
    try {
        access();
        return "none";
    } catch (const std::out_of_range& e) {
        return e.what();
    }
}

TEST(VargListPosition, IsCheckedByAllFourForms) {
    varg_list list(1, 2, 3);
    const varg_list& constant = list;
    const char at_end[] = "vector::_M_range_check: __n (which is 3) >= this->size() (which is 3)";
    EXPECT_EQ(at_end, message_of([&] { list[3]; }));
    EXPECT_EQ(at_end, message_of([&] { list.at(3); }));
    EXPECT_EQ(at_end, message_of([&] { constant[3]; }));
    EXPECT_EQ(at_end, message_of([&] { constant.at(3); }));
    EXPECT_EQ("vector::_M_range_check: __n (which is 18446744073709551615) >= this->size() (which "
              "is 3)",
              message_of([&] { list[static_cast<unsigned long>(-1)]; }));
    EXPECT_EQ("vector::_M_range_check: __n (which is 0) >= this->size() (which is 0)",
              message_of([] { varg_list()[0]; }));
    EXPECT_EQ("none", message_of([&] { list[2]; }));
}

TEST(VargListPosition, RefersToTheArgument) {
    varg_list list(1, 2, 3);
    const varg_list& constant = list;
    list[0].value(variant(7));
    list.at(2).name("c");
    EXPECT_EQ("7 2 c=3", shown(list));
    EXPECT_EQ(&list[1], &constant.at(1));
    EXPECT_EQ(&list[1], &constant[1]);
    EXPECT_EQ(&list[1], &list.at(1));
}

// --- Size and nil ------------------------------------------------------------------------------

TEST(VargList, IsNilWhenEmpty) {
    varg_list list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(0u, list.count());
    EXPECT_TRUE(list == nil);
    EXPECT_TRUE(list.equal(nil));
    EXPECT_FALSE(list != nil);
    list.push_back("named", nil);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(1u, list.count());
    EXPECT_FALSE(list == nil);
    EXPECT_FALSE(list.equal(nil));
    EXPECT_TRUE(list != nil);
}

// --- Removal -----------------------------------------------------------------------------------

TEST(VargListErase, RemovesAll) {
    varg_list list(1, 2);
    list.clear();
    EXPECT_TRUE(list.empty());
    list.clear();
    list.push_back(3);
    list.erase();
    EXPECT_TRUE(list.empty());
    list.erase();
    EXPECT_TRUE(list.empty());
}

TEST(VargListErase, RemovesByNameAndPosition) {
    varg_list list(1, argument("b", 2), 3, 4);
    list.erase("x");
    list.erase(4);
    list.erase(static_cast<unsigned long>(-1));
    EXPECT_EQ("1 b=2 3 4", shown(list));
    list.erase(0);
    EXPECT_EQ("b=2 3 4", shown(list));
    list.erase("b");
    EXPECT_EQ("3 4", shown(list));
    list.erase(1);
    EXPECT_EQ("3", shown(list));
    varg_list empty;
    empty.erase(0);
    empty.erase("x");
    EXPECT_TRUE(empty.empty());
}

TEST(VargListErase, RemovesAtIteratorsAndKeepsTheOrder) {
    varg_list list(1, 2, 3, 4, 5);
    EXPECT_EQ(list.begin() + 1, list.erase(list.begin() + 1));
    EXPECT_EQ("1 3 4 5", shown(list));
    EXPECT_EQ(list.begin() + 1, list.erase(list.begin() + 1, list.begin() + 3));
    EXPECT_EQ("1 5", shown(list));
    list.erase(list.begin(), list.begin());
    EXPECT_EQ("1 5", shown(list));
    list.erase(list.begin(), list.end());
    EXPECT_TRUE(list.empty());
}

TEST(VargListErase, FreesTheNameForAnother) {
    varg_list list(argument("a", 1));
    list.erase("a");
    EXPECT_TRUE(list.push_back("a", 2));
    EXPECT_EQ("a=2", shown(list));
}

// --- Assignment --------------------------------------------------------------------------------

TEST(VargListAssign, ReplacesTheContents) {
    varg_list target(1, 2, 3);
    const varg_list source(argument("a", 4));
    EXPECT_EQ(&target, &(target = source));
    EXPECT_EQ("a=4", shown(target));
    EXPECT_EQ(&target, &target.assign(varg_list()));
    EXPECT_TRUE(target.empty());
}

TEST(VargListAssign, DoesNotChangeAListAssignedToItself) {
    varg_list target(1, argument("b", 2));
    varg_list& same = target;
    target = same;
    target.assign(same);
    EXPECT_EQ("1 b=2", shown(target));
}

}  // namespace
