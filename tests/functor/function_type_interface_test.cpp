#include <tova/functor/function_type_interface.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using tova::functor::function_type_interface;
using tova::generic::abilities::clone_ability;
using tova::traits::function_traits;

class doubler : public function_type_interface<int(int)> {
public:
    explicit doubler(int* deleted) : m_deleted(deleted) {}
    ~doubler() TOVA_NOTHROW override { ++*m_deleted; }
    int invoke(int value) override { return 2 * value; }
    bool do_equal(const function_type_interface<int(int)>& other) const override {
        return dynamic_cast<const doubler*>(&other) != nullptr;
    }
    doubler* do_clone() const override { return new doubler(m_deleted); }

private:
    int* m_deleted;
};

TEST(FunctionTypeInterface, IsAbstractAndCloneableAndHasTheTraitsOfItsSignature) {
    typedef function_type_interface<int(int)> interface;
    EXPECT_TRUE(std::is_abstract<interface>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<interface>::value);
    EXPECT_TRUE((std::is_convertible<interface*, clone_ability*>::value));
    EXPECT_TRUE((std::is_convertible<interface*, function_traits<int(int)>*>::value));
    EXPECT_TRUE((std::is_same<int, interface::result_type>::value));
}

TEST(FunctionTypeInterface, IsCalledClonedComparedAndDeletedThroughItsBaseClass) {
    int deleted = 0;
    doubler twice(&deleted);
    function_type_interface<int(int)>& base = twice;
    EXPECT_EQ(14, base.invoke(7));
    EXPECT_TRUE(base.do_equal(twice));
    clone_ability* const clone = base.do_clone();
    EXPECT_EQ(6, dynamic_cast<function_type_interface<int(int)>&>(*clone).invoke(3));
    delete clone;
    EXPECT_EQ(1, deleted);
}

}  // namespace
