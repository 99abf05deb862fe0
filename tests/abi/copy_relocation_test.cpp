// This program is not position-independent, so the linker moves the library's data objects into it.
// The library must use them there.
#include <tova/debug/assert.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/system/date_time/timer.hpp>
#include <tova/types/nil.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>

extern "C" char __executable_start;
extern "C" char _end;

namespace {

using namespace TOVA_2_18;

typedef functor::function_type_interface<void(const char*, const char*, unsigned int&)> hook;

bool lies_in_this_program(const void* object) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return address >= reinterpret_cast<std::uintptr_t>(&__executable_start) &&
           address < reinterpret_cast<std::uintptr_t>(&_end);
}

class silent_hook : public hook {
public:
    void invoke(const char*, const char*, unsigned int&) override { ++s_calls; }
    bool do_equal(const hook&) const override { return true; }
    silent_hook* do_clone() const override { return new silent_hook; }
    static int s_calls;
};
int silent_hook::s_calls = 0;

TEST(CopyRelocation, MovesDataObjectsIntoTheProgram) {
    EXPECT_TRUE(lies_in_this_program(&debug::_private::g_assert_callback));
    EXPECT_TRUE(lies_in_this_program(&types::nil));
    EXPECT_TRUE(lies_in_this_program(&generic::varg_list::nil_argument));
}

TEST(CopyRelocation, MakesTheLibraryReturnTheProgramsNilArgument) {
    EXPECT_EQ(&generic::varg_list::nil_argument, &generic::varg_list().at("unknown"));
    EXPECT_EQ(2u, generic::varg_list(1, 2).count());
}

TEST(CopyRelocation, MakesTheLibraryReturnTheProgramsNilCatalogAndMessages) {
    using namespace i18n;
    EXPECT_TRUE(lies_in_this_program(&message_catalogs::s_nil_catalog));
    EXPECT_TRUE(lies_in_this_program(&message_catalogs::s_nil_message));
    EXPECT_TRUE(lies_in_this_program(&catalog_t::m_nil_message));
    const message_catalogs set;
    const strings::ustring8 name("absent");
    EXPECT_EQ(&message_catalogs::s_nil_catalog, &set.catalog(name));
    EXPECT_EQ(&message_catalogs::s_nil_message, &set.message(name, name));
    EXPECT_EQ(&catalog_t::m_nil_message, &set.catalog(name).message(name));
}

TEST(CopyRelocation, MakesTheLibrarySubtractTheProgramsOverhead) {
    using namespace system::date_time;
    EXPECT_TRUE(lies_in_this_program(&timer::m_overheadMicroseconds));
    EXPECT_TRUE(lies_in_this_program(&sAutoTester));
    const unsigned long measured = timer::m_overheadMicroseconds;
    timer::m_overheadMicroseconds = 3600000000;
    timer stopwatch;
    stopwatch.start();
    stopwatch.stop();
    EXPECT_EQ(0u, stopwatch.elapsed());
    timer::m_overheadMicroseconds = 0;
    const timespec pause = {0, 2000000};
    stopwatch.start();
    nanosleep(&pause, nullptr);
    stopwatch.stop();
    EXPECT_LT(0u, stopwatch.elapsed());
    timer::m_overheadMicroseconds = 3600000000;
    auto_tester();
    EXPECT_EQ(3600000000, timer::m_overheadMicroseconds);
    timer::m_overheadMicroseconds = measured;
}

TEST(CopyRelocation, ShowsTheProgramsObjectToTheLibrary) {
    EXPECT_FALSE(debug::is_assert_hook_set());
    debug::_private::g_assert_callback = silent_hook();
    EXPECT_TRUE(debug::is_assert_hook_set());
    debug::_private::____________________ASSERT____________________("e", "f", 1, "g");
    EXPECT_EQ(1, silent_hook::s_calls);
    debug::set_assert_hook(types::nil);
    EXPECT_TRUE(debug::_private::g_assert_callback.is_empty());
}

}  // namespace
