#include <tova/generic/abilities.hpp>

#include <tova/generic/clone_interface.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace {

using namespace tova::generic::abilities;
using tova::generic::clone_interface;

class counted : public reference_count_pointer_ability<counted> {
public:
    int value = 1;
};

TEST(Abilities, StartWithoutHeapMarkOrHolders) {
    EXPECT_FALSE(alloc_detection_ability().allocated);
    const reference_count_pointer_ability_b base;
    EXPECT_FALSE(base.allocated);
    EXPECT_EQ(0u, base.count);
    const counted item;
    EXPECT_FALSE(item.allocated);
    EXPECT_EQ(0u, item.count);
}

TEST(Abilities, AreNotCopiedWithTheObject) {
    counted source;
    source.allocated = true;
    source.count = 3;
    source.value = 5;
    const counted copied(source);
    EXPECT_FALSE(copied.allocated);
    EXPECT_EQ(0u, copied.count);
    EXPECT_EQ(5, copied.value);
    EXPECT_TRUE(source.allocated);
    EXPECT_EQ(3u, source.count);

    const counted moved(std::move(source));
    EXPECT_FALSE(moved.allocated);
    EXPECT_EQ(0u, moved.count);

    const reference_count_pointer_ability_b& as_base = source;
    EXPECT_EQ(0u, reference_count_pointer_ability_b(as_base).count);
    EXPECT_FALSE(alloc_detection_ability(as_base).allocated);
}

TEST(Abilities, AreNotAssignedWithTheObject) {
    counted held;
    held.allocated = true;
    held.count = 3;
    counted fresh;
    fresh.value = 9;

    held = fresh;
    EXPECT_EQ(9, held.value);
    EXPECT_TRUE(held.allocated);
    EXPECT_EQ(3u, held.count);

    fresh = held;
    EXPECT_FALSE(fresh.allocated);
    EXPECT_EQ(0u, fresh.count);

    static_cast<reference_count_pointer_ability_b&>(fresh) = held;
    static_cast<alloc_detection_ability&>(fresh) = held;
    EXPECT_FALSE(fresh.allocated);
    EXPECT_EQ(0u, fresh.count);
}

TEST(Abilities, ForCountingAreNotPolymorphic) {
    EXPECT_FALSE(std::is_polymorphic<alloc_detection_ability>::value);
    EXPECT_FALSE(std::is_polymorphic<reference_count_pointer_ability_b>::value);
    EXPECT_FALSE(std::is_polymorphic<reference_count_pointer_ability<counted>>::value);
    EXPECT_TRUE(
        (std::is_base_of<alloc_detection_ability, reference_count_pointer_ability_b>::value));
    EXPECT_TRUE((std::is_base_of<reference_count_pointer_ability_b,
                                 reference_count_pointer_ability<counted>>::value));
    EXPECT_TRUE(std::is_nothrow_destructible<counted>::value);
}

TEST(Abilities, ThatMarkAClassAllowACheckedDowncastToIt) {
    struct tool : create_ability, clone_ability {
        explicit tool(bool& end) : gone(&end) {}
        ~tool() TOVA_NOTHROW override { *gone = true; }
        bool* gone;
    };
    bool gone = false;
    tool* const made = new tool(gone);
    create_ability* const creatable = made;
    clone_ability* const cloneable = made;
    EXPECT_EQ(made, dynamic_cast<tool*>(creatable));
    EXPECT_EQ(made, dynamic_cast<tool*>(cloneable));
    EXPECT_EQ(creatable, dynamic_cast<create_ability*>(cloneable));
    delete cloneable;
    EXPECT_TRUE(gone);
    EXPECT_TRUE(std::is_nothrow_destructible<clone_ability>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<create_ability>::value);
}

TEST(CloneInterface, ClonesThroughItsOneOperation) {
    class shape : public clone_interface {
    public:
        explicit shape(int corners) : m_corners(corners) {}
        shape* clone() const override { return new shape(*this); }
        int corners() const { return m_corners; }

    private:
        int m_corners;
    };
    EXPECT_TRUE(std::is_abstract<clone_interface>::value);
    EXPECT_TRUE((std::is_base_of<clone_ability, clone_interface>::value));
    const shape triangle(3);
    const clone_interface& base = triangle;
    const std::unique_ptr<clone_interface> clone(base.clone());
    EXPECT_NE(&base, clone.get());
    EXPECT_EQ(3, dynamic_cast<const shape&>(*clone).corners());
}

}  // namespace
