// The exported instantiations of templates. Optimized programs inline their operations; this one is
// built without optimization, so that it calls the library for each of them.
#include <tova/config/base_config_item.hpp>
#include <tova/config/config_tree.hpp>
#include <tova/config/user_item.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/functor/member_function.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/absolute_unit.hpp>
#include <tova/types/variant_value.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using tova::strings::ustring8;

// Every operation of a holder. `make` returns a new object with its heap mark set.
template <typename Holder, typename Make>
void use_holder(Make make) {
    Holder empty;
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_EQ(nullptr, empty.get());

    auto* const object = make();
    Holder first(object);
    Holder second(first);
    EXPECT_TRUE(static_cast<bool>(second));
    EXPECT_EQ(object, second.get());
    EXPECT_EQ(object, &*second);
    EXPECT_EQ(object, second.operator->());
    EXPECT_EQ(2, object->count);

    empty = second;
    EXPECT_EQ(3, object->count);
    auto* const other = make();
    second = other;
    EXPECT_EQ(2, object->count);
    EXPECT_EQ(1, other->count);
    second = first;
    EXPECT_EQ(3, object->count);
}

template <typename T>
using rc_pointer = tova::memory::pointers::rc_pointer<T>;

TEST(Instantiations, HoldObjectsOfEachClass) {
    using namespace tova;
    use_holder<rc_pointer<config::config_tree>>([] { return config::config_tree().clone(); });
    use_holder<rc_pointer<config::base_config_item>>(
        [] { return static_cast<config::base_config_item*>(config::user_item().clone()); });
    use_holder<rc_pointer<serialization::serialize_buffer>>([] {
        return static_cast<serialization::serialize_buffer*>(
            serialization::serialize_text_buf("5\001").clone());
    });
    use_holder<rc_pointer<serialization::labeled_serialize_buffer>>([] {
        return static_cast<serialization::labeled_serialize_buffer*>(
            serialization::labeled_text_buffer().clone());
    });
    use_holder<rc_pointer<types::variant_type>>(
        [] { return static_cast<types::variant_type*>(types::variant_value_t<int>(7).clone()); });
    use_holder<memory::pointers::shared_pointer<i18n::catalog_t>>([] {
        auto* const made = new i18n::catalog_t;
        made->allocated = true;
        return made;
    });
}

// The count and the heap mark belong to the object, so an assignment leaves them alone.
template <typename T>
void assign_counts(T& target, const T& source) {
    using ability = tova::generic::abilities::reference_count_pointer_ability<T>;
    const auto before = target.count;
    ability& counted = target;
    EXPECT_EQ(&counted, &(counted = static_cast<const ability&>(source)));
    EXPECT_EQ(before, target.count);
}

TEST(Instantiations, KeepTheirCountInAssignments) {
    using namespace tova;
    config::config_tree trees[2];
    assign_counts<config::config_tree>(trees[0], trees[1]);
    config::user_item items[2];
    assign_counts<config::base_config_item>(items[0], items[1]);
    i18n::catalog_t catalogs[2];
    assign_counts<i18n::catalog_t>(catalogs[0], catalogs[1]);
    serialization::labeled_text_buffer labeled[2];
    assign_counts<serialization::labeled_serialize_buffer>(labeled[0], labeled[1]);
}

struct listener {
    void one(const ustring8& text) { heard += text + ';'; }
    void two(const ustring8& name, const ustring8& value) { heard += name + '=' + value + ';'; }
    std::string heard;
};

TEST(Instantiations, CallTheFunctionOfACopiedDelegate) {
    using one = void(const ustring8&);
    using two = void(const ustring8&, const ustring8&);
    listener target;
    const tova::functor::delegate_t<one> first(
        tova::functor::member_function_t<listener, one>(&target, &listener::one));
    tova::functor::delegate_t<one> first_copy(first);
    first_copy.invoke("a");
    const tova::functor::delegate_t<two> second(
        tova::functor::member_function_t<listener, two>(&target, &listener::two));
    const tova::functor::delegate_t<two> second_copy(second);
    tova::functor::delegate_t<two> assigned;
    assigned = second_copy;
    assigned.invoke("b", "c");
    EXPECT_EQ("a;b=c;", target.heard);
}

template <int Unit>
double inches_in() {
    const tova::types::basic_absolute_impl<tova::types::absolute_unit::inch> two(2.0);
    const tova::types::absolute_unit& length = two;
    return tova::types::basic_absolute_impl<Unit>(length).value();
}

TEST(Instantiations, ConvertALengthToEachUnit) {
    EXPECT_DOUBLE_EQ(200000, inches_in<1>());
    EXPECT_DOUBLE_EQ(600, inches_in<2>());
    EXPECT_DOUBLE_EQ(50.8, inches_in<3>());
    EXPECT_DOUBLE_EQ(5.08, inches_in<4>());
    EXPECT_DOUBLE_EQ(2, inches_in<5>());
    EXPECT_DOUBLE_EQ(144, inches_in<6>());
    EXPECT_DOUBLE_EQ(12, inches_in<7>());
    EXPECT_DOUBLE_EQ(192, inches_in<8>());
}

}  // namespace
