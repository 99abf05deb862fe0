// Tests that a program that is linked to the library in the usual way gets the form of the kernels
// that `--form=FORM` names. Only the copies of the library have the switch, so it is looked up by
// name.
#include <tova/strings/case.hpp>

#include <gtest/gtest.h>

#include <cstring>
#include <dlfcn.h>
#include <string>

namespace {

std::string wanted;

// Finds a function of the switch by its name in the symbol table. Null in the library itself.
template <typename Function>
Function find(const char* symbol) {
    Function function;
    void* const found = dlsym(RTLD_DEFAULT, symbol);
    std::memcpy(&function, &found, sizeof function);
    return function;
}

const char* (*in_use())() {
    return find<const char* (*)()>("_ZN9TOVA_2_1811kernel_form6in_useEv");
}

bool (*use())(const char*) {
    return find<bool (*)(const char*)>("_ZN9TOVA_2_1811kernel_form3useEPKc");
}

TEST(KernelForm, IsTheRequestedOneFromTheStart) {
    if (wanted.empty())
        GTEST_SKIP() << "needs --form=FORM";
    ASSERT_NE(nullptr, in_use());
    EXPECT_EQ(wanted, in_use()());
}

TEST(KernelForm, IsSwitchedByItsName) {
    if (wanted.empty())
        GTEST_SKIP() << "needs --form=FORM";
    ASSERT_NE(nullptr, use());
    EXPECT_TRUE(use()("portable"));
    EXPECT_STREQ("portable", in_use()());
    EXPECT_EQ("text", to_lower(tova::strings::ustring8("TEXT")));
    EXPECT_FALSE(use()("avx1024"));
    EXPECT_STREQ("portable", in_use()());
    EXPECT_TRUE(use()(wanted.c_str()));
    EXPECT_EQ(wanted, in_use()());
}

TEST(KernelForm, HasNoSwitchInTheLibraryItself) {
    if (!wanted.empty())
        GTEST_SKIP() << "runs without --form";
    EXPECT_EQ(nullptr, in_use());
    EXPECT_EQ(nullptr, use());
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const std::string option("--form=");
    for (int i = 1; i < argc; ++i)
        if (option.compare(0, option.size(), argv[i], 0, option.size()) == 0)
            wanted = argv[i] + option.size();
    return RUN_ALL_TESTS();
}
