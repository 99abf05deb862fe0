#include <tova/memory/pointers.hpp>

#include "support/child_process.hpp"
#include "support/class_name.hpp"
#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using tova::generic::abilities::reference_count_pointer_ability;
using tova::memory::pointers::rc_pointer;
using tova::memory::pointers::shared_pointer;

// Counts its destructions and records the count of another object at that time.
class plain_item : public reference_count_pointer_ability<plain_item> {
public:
    explicit plain_item(int value = 0) : m_value(value) {}
    ~plain_item() {
        ++s_deleted;
        if (watched != nullptr)
            s_watched_count = static_cast<int>(
                static_cast<reference_count_pointer_ability<plain_item>*>(watched)->count);
    }

    int value() const { return m_value; }
    // Hides the field with that name, as an operation of a counted class may.
    std::string count() const { return "an operation"; }

    plain_item* clone() const {
        plain_item* const result = new plain_item(*this);
        result->allocated = true;
        return result;
    }

    plain_item* watched = nullptr;
    static int s_deleted;
    static int s_watched_count;

private:
    int m_value;
};
int plain_item::s_deleted = 0;
int plain_item::s_watched_count = -1;

class virtual_item : public reference_count_pointer_ability<virtual_item> {
public:
    explicit virtual_item(int value = 0) : m_value(value) {}
    virtual ~virtual_item() TOVA_NOTHROW {
        ++s_deleted;
        if (watched != nullptr)
            s_watched_count = static_cast<int>(watched->count);
    }

    int value() const { return m_value; }
    virtual virtual_item* clone() const {
        virtual_item* const result = new virtual_item(*this);
        result->allocated = true;
        return result;
    }

    virtual_item* watched = nullptr;
    static int s_deleted;
    static int s_watched_count;

private:
    int m_value;
};
int virtual_item::s_deleted = 0;
int virtual_item::s_watched_count = -1;

template <typename T>
unsigned int count_of(const T& object) {
    return static_cast<const reference_count_pointer_ability<T>&>(object).count;
}

template <typename Holder, typename Item>
struct kind {
    typedef Holder holder;
    typedef Item item;
};

template <typename Kind>
class Pointer : public ::testing::Test {
protected:
    void SetUp() override {
        Kind::item::s_deleted = 0;
        Kind::item::s_watched_count = -1;
    }
};

typedef ::testing::Types<kind<rc_pointer<virtual_item>, virtual_item>,
                         kind<shared_pointer<plain_item>, plain_item>>
    both_kinds;
TYPED_TEST_SUITE(Pointer, both_kinds, test_support::class_name);

TYPED_TEST(Pointer, IsTheSizeOfAPointerAndInitiallyNull) {
    const typename TypeParam::holder empty;
    EXPECT_EQ(sizeof(void*), sizeof empty);
    EXPECT_EQ(nullptr, empty.get());
    EXPECT_FALSE(empty);
}

TYPED_TEST(Pointer, AcceptsNullWhereverItAcceptsAnObject) {
    typedef typename TypeParam::item item;
    typename TypeParam::holder holder(static_cast<item*>(nullptr));
    EXPECT_FALSE(holder);
    typename TypeParam::holder copied(holder);
    EXPECT_FALSE(copied);
    holder = static_cast<item*>(nullptr);
    holder = copied;
    EXPECT_FALSE(holder);
}

TYPED_TEST(Pointer, ReturnsTheObject) {
    typename TypeParam::item item(5);
    const typename TypeParam::holder holder(&item);
    EXPECT_EQ(5, holder->value());
    EXPECT_EQ(&item, &*holder);
    EXPECT_EQ(&item, holder.get());
    EXPECT_TRUE(static_cast<bool>(holder));
}

TYPED_TEST(Pointer, CountsHoldersButNotRawPointers) {
    typedef typename TypeParam::holder holder;
    typename TypeParam::item item;
    EXPECT_EQ(0u, count_of(item));
    {
        holder first(&item);
        EXPECT_EQ(1u, count_of(item));
        const holder second(first);
        EXPECT_EQ(2u, count_of(item));
        holder third;
        third = second;
        EXPECT_EQ(3u, count_of(item));
        holder fourth;
        fourth = third.get();
        EXPECT_EQ(4u, count_of(item));
        first = static_cast<typename TypeParam::item*>(nullptr);
        EXPECT_EQ(3u, count_of(item));
        third = holder();
        EXPECT_EQ(2u, count_of(item));
    }
    EXPECT_EQ(0u, count_of(item));
}

TYPED_TEST(Pointer, NeverDeletesAnObjectWithoutTheHeapMark) {
    typedef typename TypeParam::holder holder;
    {
        typename TypeParam::item item(3);
        { const holder first(&item); }
        EXPECT_EQ(0u, count_of(item));
        EXPECT_EQ(0, TypeParam::item::s_deleted);
        {
            holder second(&item);
            EXPECT_EQ(3, second->value());
            EXPECT_EQ(1u, count_of(item));
        }
        EXPECT_EQ(0u, count_of(item));
        EXPECT_EQ(0, TypeParam::item::s_deleted);
        EXPECT_EQ(3, item.value());
    }
    EXPECT_EQ(1, TypeParam::item::s_deleted);

    const std::unique_ptr<typename TypeParam::item> unmarked(new typename TypeParam::item);
    { const holder holds(unmarked.get()); }
    EXPECT_EQ(1, TypeParam::item::s_deleted);
}

TYPED_TEST(Pointer, DeletesAMarkedObjectOnceWithItsLastHolder) {
    typedef typename TypeParam::holder holder;
    typename TypeParam::item source(8);
    TypeParam::item::s_deleted = 0;
    { const holder only(source.clone()); }
    EXPECT_EQ(1, TypeParam::item::s_deleted);

    std::unique_ptr<holder> first(new holder(source.clone()));
    const typename TypeParam::item* const object = first->get();
    {
        const holder second(*first);
        first.reset();
        EXPECT_EQ(1, TypeParam::item::s_deleted);
        EXPECT_EQ(1u, count_of(*object));
        EXPECT_EQ(8, second->value());
    }
    EXPECT_EQ(2, TypeParam::item::s_deleted);
}

TYPED_TEST(Pointer, DoesNotDeleteAMarkedObjectBeforeItIsHeld) {
    typename TypeParam::item source;
    typename TypeParam::item* const clone = source.clone();
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(0u, count_of(*clone));
    EXPECT_EQ(0, TypeParam::item::s_deleted);
    { const typename TypeParam::holder holder(clone); }
    EXPECT_EQ(1, TypeParam::item::s_deleted);
}

TYPED_TEST(Pointer, DoesNothingWhenItIsAssignedItsOwnObject) {
    typename TypeParam::item source;
    typename TypeParam::holder holder(source.clone());
    const typename TypeParam::holder& same = holder;
    holder = same;
    EXPECT_EQ(1u, count_of(*holder));
    holder = holder.get();
    EXPECT_EQ(1u, count_of(*holder));
    const typename TypeParam::holder other(holder);
    holder = other;
    EXPECT_EQ(2u, count_of(*holder));
    EXPECT_EQ(0, TypeParam::item::s_deleted);
}

TYPED_TEST(Pointer, ReleasesTheOldObjectBeforeItCountsTheNewOne) {
    typename TypeParam::item source;
    typename TypeParam::item next;
    typename TypeParam::holder holder(source.clone());
    holder->watched = &next;
    holder = &next;
    EXPECT_EQ(1, TypeParam::item::s_deleted);
    EXPECT_EQ(0, TypeParam::item::s_watched_count);
    EXPECT_EQ(1u, count_of(next));

    typename TypeParam::holder other(source.clone());
    other->watched = &next;
    other = holder;
    EXPECT_EQ(2, TypeParam::item::s_deleted);
    EXPECT_EQ(1, TypeParam::item::s_watched_count);
    EXPECT_EQ(2u, count_of(next));
}

TYPED_TEST(Pointer, ReadsAsNullAfterItsDestructor) {
    typedef typename TypeParam::holder holder;
    typename TypeParam::item item;
    alignas(holder) unsigned char memory[sizeof(holder)];
    holder* const made = new (memory) holder(&item);
    made->~holder();
    EXPECT_EQ(nullptr, test_support::pointer_at(memory));
}

TYPED_TEST(Pointer, WorksInContainers) {
    typename TypeParam::item source(4);
    {
        std::vector<typename TypeParam::holder> holders(10,
                                                        typename TypeParam::holder(source.clone()));
        EXPECT_EQ(10u, count_of(*holders[0]));
        holders.erase(holders.begin(), holders.begin() + 5);
        EXPECT_EQ(5u, count_of(*holders[0]));
        EXPECT_EQ(0, TypeParam::item::s_deleted);
    }
    EXPECT_EQ(1, TypeParam::item::s_deleted);
}

TYPED_TEST(Pointer, HasADestructorThatNeverThrows) {
    EXPECT_TRUE(std::is_nothrow_destructible<typename TypeParam::holder>::value);
    EXPECT_FALSE(std::is_polymorphic<typename TypeParam::holder>::value);
}

TEST(RcPointer, DeletesThroughTheVirtualDestructor) {
    class derived : public virtual_item {
    public:
        explicit derived(bool& deleted) : m_deleted(&deleted) {}
        ~derived() TOVA_NOTHROW override { *m_deleted = true; }
        virtual_item* clone() const override {
            derived* const result = new derived(*m_deleted);
            result->allocated = true;
            return result;
        }

    private:
        bool* m_deleted;
    };
    bool deleted = false;
    {
        derived source(deleted);
        rc_pointer<virtual_item> holder(source.clone());
        holder = nullptr;
        EXPECT_TRUE(deleted);
    }
}

class child_list;

TEST(RcPointer, MayBeNamedForAnIncompleteClass) {
    struct node : reference_count_pointer_ability<node> {
        virtual ~node() {}
        std::vector<rc_pointer<node>> children;
    };
    EXPECT_EQ(sizeof(void*), sizeof(rc_pointer<child_list>));
    node parent;
    node child;
    parent.children.push_back(&child);
    EXPECT_EQ(1u, child.count);
    parent.children.clear();
    EXPECT_EQ(0u, child.count);
}

void throw_number() {
    throw 1;
}

class throwing_item : public reference_count_pointer_ability<throwing_item> {
public:
    virtual ~throwing_item() TOVA_NOTHROW { throw_number(); }
};

TEST(RcPointer, TerminatesTheProcessWhenTheDestructorOfAnObjectThrows) {
    for (bool by_assignment : {false, true}) {
        SCOPED_TRACE(by_assignment);
        const auto result = test_support::run_in_child([by_assignment] {
            test_support::exit_42_on_unexpected();
            throwing_item* const item = new throwing_item;
            item->allocated = true;
            rc_pointer<throwing_item> holder(item);
            if (by_assignment)
                holder = nullptr;
        });
        EXPECT_TRUE(result.exited);
        EXPECT_EQ(42, result.exit_code) << result.output;
    }
}

}  // namespace
