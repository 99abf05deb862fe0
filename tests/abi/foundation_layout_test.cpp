// Tests sizes, offsets, bases and slots of the foundation classes, as compiled callers expect them.
#include <tova/debug/assert.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/generic/clone_interface.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/types/nil.hpp>

#include "support/class_name.hpp"
#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

using namespace TOVA_2_18;
using namespace TOVA_2_18::generic::abilities;
using test_support::base_offset;
using test_support::pointer_at;
using test_support::slot;

typedef exceptions::exception::state place;

static_assert(std::is_standard_layout<place>::value, "a plain record");
static_assert(sizeof(place) == 516 && alignof(place) == 4, "state");
static_assert(offsetof(place, line) == 0, "state::line");
static_assert(offsetof(place, file) == 4, "state::file");
static_assert(offsetof(place, function) == 260, "state::function");
static_assert(std::is_same<unsigned int, decltype(place::line)>::value, "state::line");
static_assert(std::is_same<char[256], decltype(place::file)>::value, "state::file");
static_assert(std::is_same<char[256], decltype(place::function)>::value, "state::function");

static_assert(sizeof(exceptions::exception) == 528, "exception");
static_assert(sizeof(exceptions::logic_error) == 560, "logic_error");
static_assert(sizeof(exceptions::runtime_error) == 560, "runtime_error");

static_assert(sizeof(alloc_detection_ability) == 1, "alloc_detection_ability");
static_assert(sizeof(reference_count_pointer_ability_b) == 8, "reference_count_pointer_ability_b");
static_assert(alignof(reference_count_pointer_ability_b) == 4, "reference_count_pointer_ability_b");
static_assert(sizeof(clone_ability) == 8, "clone_ability");
static_assert(sizeof(create_ability) == 8, "create_ability");
static_assert(sizeof(generic::clone_interface) == 8, "clone_interface");

typedef void hook_signature(const char*, const char*, unsigned int&);
typedef void text_signature(const strings::ustring8&);
typedef void attribute_signature(const strings::ustring8&, const strings::ustring8&);

static_assert(sizeof(traits::function_traits<hook_signature>) == 1, "function_traits");
static_assert(sizeof(functor::function_type_interface<hook_signature>) == 8, "interface");
static_assert(sizeof(functor::delegate_t<hook_signature>) == 8, "delegate_t");
static_assert(sizeof(functor::delegate_t<text_signature>) == 8, "delegate_t");
static_assert(sizeof(functor::delegate_t<attribute_signature>) == 8, "delegate_t");
static_assert(sizeof(types::nil_t) == 1, "nil_t");
static_assert(sizeof(debug::_private::g_assert_callback) == 8, "g_assert_callback");

// Passed by reference at machine level, since copying and destruction are not trivial.
static_assert(!std::is_trivially_copyable<functor::delegate_t<hook_signature>>::value,
              "delegate_t");
static_assert(!std::is_trivially_copyable<place>::value, "state");

template <typename Exception>
class ExceptionLayout : public ::testing::Test {};
typedef ::testing::Types<exceptions::logic_error, exceptions::out_of_range,
                         exceptions::length_error, exceptions::invalid_argument_value,
                         exceptions::runtime_error, exceptions::empty_error, exceptions::full_error,
                         exceptions::overflow_error, exceptions::underflow_error>
    all_classes;
TYPED_TEST_SUITE(ExceptionLayout, all_classes, test_support::class_name);

TYPED_TEST(ExceptionLayout, HasTheTablePointerTheLocationAndTheMessageInOrder) {
    EXPECT_EQ(560u, sizeof(TypeParam));
    EXPECT_EQ(8u, alignof(TypeParam));
    const TypeParam raised("a message too long to lie inside of the string", 77, "file", "f");
    const char* const object = reinterpret_cast<const char*>(&raised);
    unsigned int line = 0;
    std::memcpy(&line, object + 8, sizeof line);
    EXPECT_EQ(77u, line);
    EXPECT_STREQ("file", object + 12);
    EXPECT_STREQ("f", object + 268);
    EXPECT_EQ(raised.get_message(), pointer_at(object, 528));
    EXPECT_EQ(0, base_offset<exceptions::exception>(raised));
}

TYPED_TEST(ExceptionLayout, HasItsMessageAfterTheTwoSlotsOfTheDestructor) {
    struct call {
        TEST_CALLS_SLOTS static const char* get_message(const void* object) {
            return slot<const char*(const void*)>(object, 2)(object);
        }
        TEST_CALLS_SLOTS static void destroy(void* object) { slot<void(void*)>(object, 0)(object); }
        TEST_CALLS_SLOTS static void destroy_and_free(void* object) {
            slot<void(void*)>(object, 1)(object);
        }
    };
    alignas(TypeParam) unsigned char memory[sizeof(TypeParam)];
    TypeParam* const raised = new (memory) TypeParam("message", 1, "file", "f");
    EXPECT_STREQ("message", call::get_message(raised));
    call::destroy(raised);
    call::destroy_and_free(new TypeParam("a message too long to lie inside", 1, "file", "f"));
}

TEST(AbilityLayout, HasTheHeapMarkBeforeTheCount) {
    reference_count_pointer_ability_b counted;
    const char* const object = reinterpret_cast<const char*>(&counted);
    EXPECT_EQ(object, reinterpret_cast<const char*>(&counted.allocated));
    EXPECT_EQ(object + 4, reinterpret_cast<const char*>(&counted.count));
    EXPECT_EQ(0, base_offset<alloc_detection_ability>(counted));
    EXPECT_TRUE((std::is_same<bool, decltype(counted.allocated)>::value));
    EXPECT_TRUE((std::is_same<unsigned int, decltype(counted.count)>::value));
}

struct counted_first : reference_count_pointer_ability<counted_first>, clone_ability {};
struct counted_last : create_ability,
                      clone_ability,
                      reference_count_pointer_ability<counted_last> {};
struct counted_only : reference_count_pointer_ability<counted_only> {};

TEST(AbilityLayout, PutsTheTablePointersOfACountedClassFirst) {
    const counted_first first;
    EXPECT_EQ(16u, sizeof first);
    EXPECT_EQ(0, base_offset<clone_ability>(first));
    EXPECT_EQ(8, base_offset<reference_count_pointer_ability_b>(first));

    const counted_last last;
    EXPECT_EQ(24u, sizeof last);
    EXPECT_EQ(0, base_offset<create_ability>(last));
    EXPECT_EQ(8, base_offset<clone_ability>(last));
    EXPECT_EQ(16, base_offset<reference_count_pointer_ability_b>(last));

    const counted_only only;
    EXPECT_EQ(8u, sizeof only);
    EXPECT_EQ(0, base_offset<reference_count_pointer_ability_b>(only));
}

TEST(AbilityLayout, HasTheOperationOfCloneInterfaceAfterTheDestructor) {
    class item : public generic::clone_interface {
    public:
        explicit item(int* ends) : m_ends(ends) {}
        ~item() TOVA_NOTHROW override { ++*m_ends; }
        item* clone() const override { return new item(*this); }

    private:
        int* m_ends;
    };
    struct call {
        TEST_CALLS_SLOTS static void* clone(const void* object) {
            return slot<void*(const void*)>(object, 2)(object);
        }
        TEST_CALLS_SLOTS static void destroy_and_free(void* object) {
            slot<void(void*)>(object, 1)(object);
        }
    };
    int ends = 0;
    const item source(&ends);
    void* const clone = call::clone(&source);
    EXPECT_NE(&source, clone);
    EXPECT_EQ(pointer_at(&source), pointer_at(clone));
    call::destroy_and_free(clone);
    EXPECT_EQ(1, ends);
}

class listener {
public:
    void hear(const char* expression, const char*, unsigned int& line) {
        heard += expression;
        line = 5;
    }
    std::string heard;
};
typedef functor::member_function_t<listener, hook_signature> binding;

TEST(DelegateLayout, HasTheObjectAndThenTheMemberFunctionInABinding) {
    EXPECT_EQ(32u, sizeof(binding));
    EXPECT_EQ(8u, alignof(binding));
    listener target;
    const auto member = &listener::hear;
    const binding bound(&target, member);
    EXPECT_EQ(&target, pointer_at(&bound, 8));
    EXPECT_EQ(0, std::memcmp(&member, reinterpret_cast<const char*>(&bound) + 16, sizeof member));
    EXPECT_EQ(0, base_offset<clone_ability>(bound));
    EXPECT_EQ(0, base_offset<traits::function_traits<hook_signature>>(bound));
}

TEST(DelegateLayout, HasInvokeEqualAndCloneAfterTheDestructor) {
    struct call {
        TEST_CALLS_SLOTS static void invoke(void* object, const char* expression,
                                            unsigned int& line) {
            slot<void(void*, const char*, const char*, unsigned int&)>(object, 2)(
                object, expression, "file", line);
        }
        TEST_CALLS_SLOTS static bool equal(const void* object, const void* other) {
            return slot<bool(const void*, const void*)>(object, 3)(object, other);
        }
        TEST_CALLS_SLOTS static void* clone(const void* object) {
            return slot<void*(const void*)>(object, 4)(object);
        }
        TEST_CALLS_SLOTS static void destroy_and_free(void* object) {
            slot<void(void*)>(object, 1)(object);
        }
    };
    listener target;
    listener other;
    binding bound(&target, &listener::hear);
    binding elsewhere(&other, &listener::hear);
    unsigned int line = 1;
    call::invoke(&bound, "called", line);
    EXPECT_EQ("called", target.heard);
    EXPECT_EQ(5u, line);
    EXPECT_FALSE(call::equal(&bound, &elsewhere));
    void* const clone = call::clone(&bound);
    EXPECT_NE(&bound, clone);
    EXPECT_TRUE(call::equal(&bound, clone));
    call::destroy_and_free(clone);
}

TEST(DelegateLayout, IsAPointerToTheFunctionObject) {
    listener target;
    const functor::delegate_t<hook_signature> empty;
    EXPECT_EQ(nullptr, pointer_at(&empty));
    const functor::delegate_t<hook_signature> bound(binding(&target, &listener::hear));
    EXPECT_EQ(&target, pointer_at(pointer_at(&bound), 8));
}

TEST(PointerLayout, IsAPointerToTheObject) {
    counted_first first;
    counted_only only;
    const memory::pointers::rc_pointer<counted_first> rc(&first);
    const memory::pointers::shared_pointer<counted_only> shared(&only);
    EXPECT_EQ(8u, sizeof rc);
    EXPECT_EQ(8u, sizeof shared);
    EXPECT_EQ(&first, pointer_at(&rc));
    EXPECT_EQ(&only, pointer_at(&shared));
}

}  // namespace
