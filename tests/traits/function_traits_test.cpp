#include <tova/traits/function_traits.hpp>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <type_traits>

namespace {

using tova::traits::function_traits;

TEST(FunctionTraits, NameTheTypesOfASignature) {
    typedef function_traits<bool(const std::string&, unsigned int&, char)> traits;
    EXPECT_TRUE((std::is_same<bool, traits::result_type>::value));
    EXPECT_TRUE((std::is_same<std::tuple<const std::string&, unsigned int&, char>,
                              traits::argument_types>::value));
    EXPECT_EQ(3u, static_cast<std::size_t>(traits::arity::value));

    EXPECT_TRUE((std::is_same<void, function_traits<void()>::result_type>::value));
    EXPECT_EQ(0u, static_cast<std::size_t>(function_traits<void()>::arity::value));
}

TEST(FunctionTraits, AreEmptyAndDeriveFromTheirHelper) {
    typedef tova::traits::_private::function_traits_helper<void(int)> helper;
    EXPECT_TRUE(std::is_empty<helper>::value);
    EXPECT_TRUE(std::is_empty<function_traits<void(int)>>::value);
    EXPECT_TRUE((std::is_base_of<helper, function_traits<void(int)>>::value));
}

}  // namespace
