#include <tova/debug/assert.hpp>

#include "debug/assertion.hpp"
#include "support/child_process.hpp"
#include "support/counting_function.hpp"
#include "support/failing_allocation.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace {

using namespace tova;
using debug::is_assert_hook_set;
using debug::set_assert_hook;
using debug::_private::____________________ASSERT____________________;
using debug::_private::_______________CONTEXT__ASSERT________________;
using debug::_private::g_assert_callback;
using debug::_private::native_assert;

typedef void hook_signature(const char*, const char*, unsigned int&);
typedef functor::delegate_t<hook_signature> hook_delegate;
typedef functor::function_type_interface<hook_signature> hook_function;

const bool s_hook_set_at_load = is_assert_hook_set();

struct heard {
    int calls = 0;
    const char* expression_address = nullptr;
    std::string expression;
    const char* file = nullptr;
    unsigned int line = 0;
};

// Records its arguments, changes the line, and throws on request.
class recording_hook : public hook_function {
public:
    explicit recording_hook(heard& record) : m_record(&record) {}

    void invoke(const char* expression, const char* file, unsigned int& line) override {
        ++m_record->calls;
        m_record->expression_address = expression;
        m_record->expression = expression != nullptr ? expression : "null";
        m_record->file = file;
        m_record->line = line;
        line = 999999;
        if (throws)
            throw std::runtime_error("hook");
    }
    bool do_equal(const hook_function&) const override { return false; }
    recording_hook* do_clone() const override { return new recording_hook(*this); }

    bool throws = false;

private:
    heard* m_record;
};

class Assert : public ::testing::Test {
protected:
    void TearDown() override { set_assert_hook(types::nil); }

    void listen(bool throws = false) {
        recording_hook hook(record);
        hook.throws = throws;
        set_assert_hook(hook_delegate(hook));
    }

    heard record;
};

TEST_F(Assert, HasNoHookInitially) {
    EXPECT_FALSE(s_hook_set_at_load);
}

TEST_F(Assert, ReportsWhetherAHookIsInstalled) {
    EXPECT_FALSE(is_assert_hook_set());
    listen();
    EXPECT_TRUE(is_assert_hook_set());
    set_assert_hook(types::nil);
    EXPECT_FALSE(is_assert_hook_set());
    set_assert_hook(types::nil);
    EXPECT_FALSE(is_assert_hook_set());
}

TEST_F(Assert, TreatsAnEmptyDelegateAsNoHook) {
    listen();
    set_assert_hook(hook_delegate());
    EXPECT_FALSE(is_assert_hook_set());
}

TEST_F(Assert, RemovesTheHookWhenTheGlobalDelegateIsInstalled) {
    std::string log;
    set_assert_hook(hook_delegate(test_support::counting_function<hook_signature>(log, "hook")));
    log.clear();
    set_assert_hook(g_assert_callback);
    EXPECT_EQ("delete hook''; ", log);
    EXPECT_FALSE(is_assert_hook_set());
}

TEST_F(Assert, HoldsAPrivateCloneOfTheHook) {
    std::string log;
    {
        const test_support::counting_function<hook_signature> function(log, "hook");
        const hook_delegate mine(function);
        log.clear();
        set_assert_hook(mine);
        EXPECT_EQ("clone hook'; ", log);
        log.clear();
    }
    EXPECT_EQ("delete hook'; delete hook; ", log);
    log.clear();
    ____________________ASSERT____________________("e", "f", 1, "g");
    EXPECT_EQ("call hook''; ", log);
    log.clear();
    set_assert_hook(types::nil);
    EXPECT_EQ("delete hook''; ", log);
}

TEST_F(Assert, DeletesTheOldHookOnceAndBeforeItClonesTheNewOne) {
    std::string log;
    const test_support::counting_function<hook_signature> first_function(log, "first");
    const test_support::counting_function<hook_signature> second_function(log, "second");
    const hook_delegate first(first_function);
    const hook_delegate second(second_function);
    set_assert_hook(first);
    log.clear();
    set_assert_hook(second);
    EXPECT_EQ("delete first''; clone second'; ", log);
    log.clear();
    set_assert_hook(types::nil);
    EXPECT_EQ("delete second''; ", log);
}

TEST_F(Assert, HasNoHookAfterAFailedClone) {
    class failing_hook : public recording_hook {
    public:
        failing_hook(heard& record, int& clones) : recording_hook(record), m_clones(&clones) {}
        recording_hook* do_clone() const override {
            if ((*m_clones)++ != 0)
                throw std::bad_alloc();
            return new failing_hook(*this);
        }

    private:
        int* m_clones;
    };
    int clones = 0;
    const hook_delegate failing(failing_hook(record, clones));
    listen();
    EXPECT_THROW(set_assert_hook(failing), std::bad_alloc);
    EXPECT_FALSE(is_assert_hook_set());
}

TEST_F(Assert, PassesExpressionFileAndLineToTheHook) {
    listen();
    const char expression[] = "k <= length";
    const char file[] = "strings/unicode";
    ____________________ASSERT____________________(expression, file, 353, "signature");
    EXPECT_EQ(1, record.calls);
    EXPECT_EQ(expression, record.expression_address);
    EXPECT_EQ(file, record.file);
    EXPECT_EQ(353u, record.line);
}

TEST_F(Assert, PassesNullPointersToTheHook) {
    listen();
    ____________________ASSERT____________________(nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(1, record.calls);
    EXPECT_EQ("null", record.expression);
    EXPECT_EQ(nullptr, record.file);
}

TEST_F(Assert, IgnoresChangesOfTheLineByTheHook) {
    listen();
    unsigned int line = 4294967295u;
    ____________________ASSERT____________________("e", "f", line, "g");
    EXPECT_EQ(4294967295u, record.line);
    EXPECT_EQ(4294967295u, line);
    ____________________ASSERT____________________("e", "f", line, "g");
    EXPECT_EQ(4294967295u, record.line);
    _______________CONTEXT__ASSERT________________("e", "f", line, "g", "%d", 1);
    EXPECT_EQ(4294967295u, record.line);
    EXPECT_EQ(4294967295u, line);
    EXPECT_EQ(3, record.calls);
}

TEST_F(Assert, DoesNotTreatTheExpressionAsAFormat) {
    listen();
    ____________________ASSERT____________________("100 %s %n %d", "f", 1, "g");
    EXPECT_EQ("100 %s %n %d", record.expression);
    _______________CONTEXT__ASSERT________________("100 %s %n %d", "f", 1, "g", "%d", 5);
    EXPECT_EQ("100 %s %n %d : 5", record.expression);
}

TEST_F(Assert, PropagatesAnExceptionFromTheHook) {
    listen(true);
    EXPECT_THROW(____________________ASSERT____________________("e", "f", 1, "g"),
                 std::runtime_error);
    EXPECT_THROW(_______________CONTEXT__ASSERT________________("e", "f", 1, "g", "c"),
                 std::runtime_error);
    EXPECT_EQ(2, record.calls);
    EXPECT_TRUE(is_assert_hook_set());
}

TEST_F(Assert, DoesNothingWithoutAHook) {
    const auto result = test_support::run_in_child([] {
        ____________________ASSERT____________________("e", "f", 1, "g");
        _______________CONTEXT__ASSERT________________("e", "f", 1, "g", "%s", "context");
        ____________________ASSERT____________________(nullptr, nullptr, 1, nullptr);
        std::_Exit(21);
    });
    EXPECT_TRUE(result.exited);
    EXPECT_EQ(21, result.exit_code);
    EXPECT_EQ("", result.output);
}

TEST_F(Assert, AllocatesNothing) {
    unsigned long before = test_support::allocations();
    ____________________ASSERT____________________("e", "f", 1, "g");
    _______________CONTEXT__ASSERT________________("e", "f", 1, "g", "%200d %s", 1, "context");
    EXPECT_EQ(before, test_support::allocations());

    class silent_hook : public hook_function {
    public:
        void invoke(const char*, const char*, unsigned int&) override {}
        bool do_equal(const hook_function&) const override { return true; }
        silent_hook* do_clone() const override { return new silent_hook; }
    };
    set_assert_hook(hook_delegate(silent_hook()));
    before = test_support::allocations();
    ____________________ASSERT____________________("e", "f", 1, "g");
    _______________CONTEXT__ASSERT________________("e", "f", 1, "g", "%200d %s", 1, "context");
    EXPECT_EQ(before, test_support::allocations());
}

TEST_F(Assert, NativeAssertDoesNothing) {
    listen();
    unsigned int line = 5;
    native_assert("e", "f", line, "g");
    native_assert(nullptr, nullptr, line, nullptr);
    EXPECT_EQ(5u, line);
    EXPECT_EQ(0, record.calls);
}

TEST_F(Assert, JoinsExpressionAndContext) {
    listen();
    const char file[] = "file";
    _______________CONTEXT__ASSERT________________("a < b", file, 12, "g", "a=%d b=%s %c", 7,
                                                   "seven", 'x');
    EXPECT_EQ("a < b : a=7 b=seven x", record.expression);
    EXPECT_EQ(file, record.file);
    EXPECT_EQ(12u, record.line);
    _______________CONTEXT__ASSERT________________("", "f", 1, "g", "context");
    EXPECT_EQ(" : context", record.expression);
    _______________CONTEXT__ASSERT________________("e", "f", 1, "g", "");
    EXPECT_EQ("e : ", record.expression);
}

TEST_F(Assert, AppendsOnlyTheSeparatorForANullFormat) {
    listen();
    _______________CONTEXT__ASSERT________________("e", "f", 1, "g", static_cast<char*>(nullptr));
    EXPECT_EQ("e : ", record.expression);
}

TEST_F(Assert, CutsExpressionAndContextAt255Characters) {
    listen();
    const std::string context(300, 'c');
    _______________CONTEXT__ASSERT________________("e", "f", 1, "g", "%s", context.c_str());
    EXPECT_EQ("e : " + std::string(251, 'c'), record.expression);
}

TEST_F(Assert, HasNoRoomForContextAfterAnExpressionOf252Characters) {
    listen();
    const struct {
        std::size_t length;
        const char* after;
    } cases[] = {
        {250, " : cc"}, {251, " : c"}, {252, " : "}, {253, " :"}, {254, " "}, {255, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        const std::string expression(c.length, 'e');
        _______________CONTEXT__ASSERT________________(expression.c_str(), "f", 1, "g", "%s",
                                                       "cccccccccc");
        EXPECT_EQ(expression + c.after, record.expression);
    }
    for (std::size_t length : {256, 257, 1000}) {
        SCOPED_TRACE(length);
        const std::string expression(length, 'e');
        _______________CONTEXT__ASSERT________________(expression.c_str(), "f", 1, "g", "c");
        EXPECT_EQ(std::string(255, 'e'), record.expression);
    }
}

void throw_number() {
    throw 1;
}

class throwing_end : public hook_function {
public:
    explicit throwing_end(bool throws) : m_throws(throws) {}
    ~throwing_end() TOVA_NOTHROW override {
        if (m_throws)
            throw_number();
    }
    void invoke(const char*, const char*, unsigned int&) override {}
    bool do_equal(const hook_function&) const override { return false; }
    hook_function* do_clone() const override { return new throwing_end(++s_clones == 2); }

    static int s_clones;

private:
    bool m_throws;
};
int throwing_end::s_clones = 0;

TEST_F(Assert, TerminatesTheProcessWhenTheDestructorOfAHookThrows) {
    for (bool by_nil : {false, true}) {
        SCOPED_TRACE(by_nil);
        const auto result = test_support::run_in_child([by_nil] {
            test_support::exit_42_on_unexpected();
            const throwing_end function(false);
            const hook_delegate delegate(function);
            set_assert_hook(delegate);
            if (by_nil)
                set_assert_hook(types::nil);
            else
                set_assert_hook(hook_delegate());
        });
        EXPECT_TRUE(result.exited);
        EXPECT_EQ(42, result.exit_code) << result.output;
    }
}

// Runs after all static objects have been destroyed: it is registered before any library is
// initialized, and for no object file in particular.
bool s_report_at_the_end = false;

extern "C" int __cxa_atexit(void (*function)(void*), void* argument, void* object_file);

void report_at_the_end(void*) {
    if (!s_report_at_the_end)
        return;
    ____________________ASSERT____________________("late", "f", 1, "g");
    std::fputs(is_assert_hook_set() ? "still set" : "empty", stdout);
    std::fflush(stdout);
}

void register_report() {
    __cxa_atexit(report_at_the_end, nullptr, nullptr);
}

__attribute__((section(".preinit_array"), used)) void (*s_register_first)() = register_report;

class last_words : public recording_hook {
public:
    using recording_hook::recording_hook;
    ~last_words() TOVA_NOTHROW override {
        if (s_report_at_the_end)
            std::fputs("deleted, ", stdout);
    }
    recording_hook* do_clone() const override { return new last_words(*this); }
};

TEST_F(Assert, DeletesTheHookAtProcessExitAndHasNoneAfterThat) {
    const auto result = test_support::run_in_child([] {
        static heard late;
        set_assert_hook(hook_delegate(last_words(late)));
        s_report_at_the_end = true;
        std::exit(0);
    });
    EXPECT_TRUE(result.exited);
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("deleted, empty", result.output);
}

TEST_F(Assert, MacrosReportOnlyFalseConditions) {
    listen();
    int evaluated = 0;
    TOVA_ASSERT(++evaluated == 1);
    TOVA_CONTEXT_ASSERT(++evaluated == 2, "never %d", ++evaluated);
    EXPECT_EQ(2, evaluated);
    EXPECT_EQ(0, record.calls);

    const unsigned int line = __LINE__ + 1;
    TOVA_ASSERT(evaluated == 3);
    EXPECT_EQ("evaluated == 3", record.expression);
    EXPECT_STREQ(__FILE__, record.file);
    EXPECT_EQ(line, record.line);

    TOVA_CONTEXT_ASSERT(evaluated == 3, "it is %d", evaluated);
    EXPECT_EQ("evaluated == 3 : it is 2", record.expression);
    TOVA_CONTEXT_ASSERT(evaluated == 3, nullptr);
    EXPECT_EQ("evaluated == 3 : ", record.expression);
    EXPECT_EQ(3, record.calls);
}

TEST_F(Assert, ReportsInternalChecksWithTheirPublishedLocation) {
    listen();
    debug::detail::check(true, "k <= length", "strings/unicode", 353, "signature");
    EXPECT_EQ(0, record.calls);
    debug::detail::check(false, "k <= length", "strings/unicode", 353, "signature");
    EXPECT_EQ(1, record.calls);
    EXPECT_EQ("k <= length", record.expression);
    EXPECT_STREQ("strings/unicode", record.file);
    EXPECT_EQ(353u, record.line);
}

}  // namespace
