// A program that knows the library by declarations of its own. It includes no header of the library
// and links against its symbols: names, layouts and slots must be what is declared here.
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "abi/foundation_foreign_peer.hpp"

namespace TOVA_2_18 {

namespace exceptions {

class exception {
public:
    struct state {
        unsigned int line;
        char file[256];
        char function[256];
        state(unsigned int line, const char* file, const char* function);
        state(const state&);
    };
    exception(unsigned int line, const char* file, const char* function);
    exception(const exception::state&);
    exception(const exception&);
    virtual ~exception() throw();
    virtual const char* get_message() const = 0;

    state where;
};

class logic_error : public exception {
public:
    logic_error(const std::string& message, unsigned int line, const char* file,
                const char* function);
    logic_error(const std::string& message, const exception::state& where);
    logic_error(const logic_error&);
    virtual ~logic_error() throw();
    virtual const char* get_message() const;

    std::string message;
};

class out_of_range : public logic_error {
public:
    out_of_range(const std::string& message, unsigned int line, const char* file,
                 const char* function);
    out_of_range(const std::string& message, const exception::state& where);
    out_of_range(const out_of_range&);
    virtual ~out_of_range() throw();
};

class runtime_error : public exception {
public:
    runtime_error(const std::string& message, unsigned int line, const char* file,
                  const char* function);
    runtime_error(const std::string& message, const exception::state& where);
    runtime_error(const runtime_error&);
    virtual ~runtime_error() throw();
    virtual const char* get_message() const;

    std::string message;
};

class underflow_error : public runtime_error {
public:
    underflow_error(const std::string& message, unsigned int line, const char* file,
                    const char* function);
    underflow_error(const std::string& message, const exception::state& where);
    underflow_error(const underflow_error&);
    virtual ~underflow_error() throw();
};

}  // namespace exceptions

namespace types {

class nil_t {};
extern nil_t nil;

}  // namespace types

namespace generic {

namespace abilities {

class clone_ability {
public:
    virtual ~clone_ability() throw();
};

}  // namespace abilities

class clone_interface : public abilities::clone_ability {
public:
    clone_interface();
    virtual ~clone_interface() throw();
    virtual void* clone() const = 0;
};

}  // namespace generic

namespace traits {

template <typename Signature>
class function_traits;
template <>
class function_traits<void(const char*, const char*, unsigned int&)> {};

}  // namespace traits

namespace functor {

template <typename Signature>
class function_type_interface;
template <typename Signature>
class delegate_t;

typedef void hook_signature(const char*, const char*, unsigned int&);

template <>
class function_type_interface<hook_signature> : public traits::function_traits<hook_signature>,
                                                public generic::abilities::clone_ability {
public:
    virtual ~function_type_interface() throw();
    virtual void invoke(const char*, const char*, unsigned int&) = 0;
    virtual bool do_equal(const function_type_interface&) const = 0;
    virtual void* do_clone() const = 0;
};

template <>
class delegate_t<hook_signature> {
public:
    delegate_t();
    delegate_t(const function_type_interface<hook_signature>&);
    delegate_t(const delegate_t&);
    delegate_t& operator=(const function_type_interface<hook_signature>&);
    delegate_t& operator=(const delegate_t&);
    ~delegate_t() throw();
    void invoke(const char*, const char*, unsigned int&);

    void* function;
};

}  // namespace functor

namespace debug {

void set_assert_hook(const functor::delegate_t<functor::hook_signature>& hook);
void set_assert_hook(const types::nil_t&);
bool is_assert_hook_set();

namespace _private {

void ____________________ASSERT____________________(const char*, const char*, unsigned int,
                                                    const char*);
void _______________CONTEXT__ASSERT________________(const char*, const char*, unsigned int,
                                                    const char*, ...);
void native_assert(const char*, const char*, unsigned int&, const char*);
extern functor::delegate_t<functor::hook_signature> g_assert_callback;

}  // namespace _private
}  // namespace debug

}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18;

typedef functor::function_type_interface<functor::hook_signature> hook_function;
typedef functor::delegate_t<functor::hook_signature> hook_delegate;

std::string s_log;

class foreign_hook : public hook_function {
public:
    explicit foreign_hook(int number) : m_number(number) {}
    virtual ~foreign_hook() throw() { s_log += "end" + std::to_string(m_number) + " "; }
    virtual void invoke(const char* expression, const char* file, unsigned int& line) {
        s_log += std::string(expression) + "@" + file + ":" + std::to_string(line) + " ";
        line = 999;
    }
    virtual bool do_equal(const hook_function& other) const {
        return m_number == static_cast<const foreign_hook&>(other).m_number;
    }
    virtual void* do_clone() const {
        s_log += "clone" + std::to_string(m_number) + " ";
        return static_cast<hook_function*>(new foreign_hook(m_number + 1));
    }

private:
    int m_number;
};

class Foreign : public ::testing::Test {
protected:
    void SetUp() override { s_log.clear(); }
};

TEST_F(Foreign, ExceptionsAreCaughtByTheirForeignDeclaration) {
    try {
        foreign_peer::throw_out_of_range("day value out of valid range");
        FAIL();
    } catch (const exceptions::out_of_range& raised) {
        EXPECT_STREQ("day value out of valid range", raised.get_message());
        EXPECT_EQ("day value out of valid range", raised.message);
        EXPECT_EQ(12u, raised.where.line);
        EXPECT_STREQ("folder/file", raised.where.file);
        EXPECT_STREQ("function", raised.where.function);
        const exceptions::out_of_range copied(raised);
        EXPECT_EQ("day value out of valid range", copied.message);
    }
}

TEST_F(Foreign, ExceptionsAreThrownByTheirForeignDeclaration) {
    EXPECT_STREQ("underflow_error too small", foreign_peer::catch_by_headers([] {
                     throw exceptions::underflow_error("too small", 1, "file", "function");
                 }));
    EXPECT_STREQ("exception logic", foreign_peer::catch_by_headers([] {
                     const exceptions::exception::state where(1, "file", "function");
                     throw exceptions::logic_error("logic", where);
                 }));
}

TEST_F(Foreign, FunctionObjectsAreCalledThroughTheirSlots) {
    foreign_hook hook(1);
    unsigned int line = 7;
    foreign_peer::invoke(&hook, "e", "f", line);
    EXPECT_EQ("e@f:7 ", s_log);
    EXPECT_EQ(999u, line);
    EXPECT_TRUE(foreign_peer::equal(&hook, &hook));
    foreign_hook other(2);
    EXPECT_FALSE(foreign_peer::equal(&hook, &other));
    s_log.clear();
    void* const clone = foreign_peer::clone(&hook);
    EXPECT_TRUE(foreign_peer::equal(&other, clone));
    foreign_peer::destroy(clone);
    EXPECT_EQ("clone1 end2 ", s_log);
}

TEST_F(Foreign, FunctionObjectsGoIntoDelegatesOfTheLibrary) {
    {
        const foreign_hook hook(1);
        unsigned int line = 7;
        foreign_peer::call_by_delegate(&hook, "e", line);
        EXPECT_EQ("clone1 e@file:7 end2 ", s_log);

        s_log.clear();
        hook_delegate first(hook);
        hook_delegate second(first);
        hook_delegate third;
        EXPECT_EQ(nullptr, third.function);
        third = second;
        second = hook;
        line = 8;
        third.invoke("t", "f", line);
        hook_delegate().invoke("t", "f", line);
    }
    EXPECT_EQ("clone1 clone2 clone3 end3 clone1 t@f:8 end4 end2 end2 end1 ", s_log);
}

TEST_F(Foreign, HookIsInstalledCalledAndRemoved) {
    using debug::_private::g_assert_callback;
    EXPECT_FALSE(debug::is_assert_hook_set());
    EXPECT_EQ(nullptr, g_assert_callback.function);
    {
        const foreign_hook hook(1);
        debug::set_assert_hook(hook_delegate(hook));
    }
    EXPECT_EQ("clone1 clone2 end2 end1 ", s_log);
    EXPECT_TRUE(debug::is_assert_hook_set());
    EXPECT_NE(nullptr, g_assert_callback.function);
    s_log.clear();
    debug::_private::____________________ASSERT____________________("a", "f", 1, "g");
    debug::_private::_______________CONTEXT__ASSERT________________("b", "f", 2, "g", "%d", 3);
    unsigned int line = 3;
    debug::_private::native_assert("c", "f", line, "g");
    debug::set_assert_hook(types::nil);
    EXPECT_EQ("a@f:1 b : 3@f:2 end3 ", s_log);
    EXPECT_FALSE(debug::is_assert_hook_set());
    EXPECT_EQ(nullptr, g_assert_callback.function);
}

TEST_F(Foreign, CloneInterfaceCanBeDerivedFrom) {
    class item : public generic::clone_interface {
    public:
        virtual ~item() throw() { s_log += "item "; }
        virtual void* clone() const { return new item; }
    };
    item source;
    const generic::clone_interface& base = source;
    delete static_cast<generic::abilities::clone_ability*>(static_cast<item*>(base.clone()));
    EXPECT_EQ("item ", s_log);
}

}  // namespace
