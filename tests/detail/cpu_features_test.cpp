#include "detail/cpu_features.hpp"

#include <tova/abi.hpp>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using tova::detail::cpu_form;
namespace detail = tova::detail;

// Constructed before all objects without a priority, and before those of `cpu_features.cpp`.
struct early_question {
    early_question() : level(detail::cpu_level()) {}
    cpu_form level;
};
__attribute__((init_priority(101))) early_question asked_early;

class CpuFeatures : public ::testing::Test {
protected:
    ~CpuFeatures() override { detail::force_cpu_level(detail::best_cpu_level()); }
};

TEST_F(CpuFeatures, AreKnownBeforeStaticObjectsAreConstructed) {
    EXPECT_EQ(detail::best_cpu_level(), asked_early.level);
    EXPECT_EQ(detail::best_cpu_level(), detail::cpu_level());
}

TEST_F(CpuFeatures, IncludeTheBaselineOfTheArchitecture) {
#if defined(__x86_64__)
    EXPECT_GE(detail::best_cpu_level(), cpu_form::sse2);
    if (!__builtin_cpu_supports("avx2")) {
        EXPECT_EQ(cpu_form::sse2, detail::best_cpu_level());
    }
    if (detail::best_cpu_level() == cpu_form::avx512) {
        EXPECT_TRUE(__builtin_cpu_supports("avx512vbmi2"));
    }
#else
    EXPECT_EQ(cpu_form::portable, detail::best_cpu_level());
#endif
}

TEST_F(CpuFeatures, AreTheSameForAllThreadsThatCallFirst) {
    for (int round = 0; round < 100; ++round) {
        detail::chosen_cpu_level = -1;
        std::vector<cpu_form> levels(4);
        std::vector<std::thread> threads;
        for (cpu_form& level : levels)
            threads.emplace_back([&level] { level = detail::cpu_level(); });
        for (std::thread& one : threads)
            one.join();
        for (const cpu_form level : levels)
            EXPECT_EQ(detail::best_cpu_level(), level);
    }
}

TEST_F(CpuFeatures, CanBeLoweredByATest) {
    for (int level = 0; level <= static_cast<int>(detail::best_cpu_level()); ++level) {
        detail::force_cpu_level(static_cast<cpu_form>(level));
        EXPECT_EQ(static_cast<cpu_form>(level), detail::cpu_level());
    }
}

}  // namespace
