// The foundation classes as seen by a program without the headers of the library. README.md says
// what this checks.
#include "abi/foreign/abilities.hpp"
#include "abi/foreign/exceptions.hpp"
#include "abi/foreign/nil.hpp"
#include "abi/foreign/pointers.hpp"
#include "abi/foundation_foreign_peer.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <string>
#include <typeinfo>

namespace TOVA_2_18 {

// Two counted classes, one for each order of the bases. They declare only the destructor, so that a
// derived class of this program can be created.
namespace types {

class variant_type : public generic::abilities::reference_count_pointer_ability<variant_type>,
                     public generic::abilities::clone_ability {
public:
    ~variant_type() throw() override;
};

}  // namespace types

namespace serialization {

class serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<serialize_buffer> {
public:
    ~serialize_buffer() throw() override;
};

}  // namespace serialization

namespace i18n {

// Declared without its fields, which this program does not use.
class catalog_t : public generic::abilities::reference_count_pointer_ability<catalog_t> {};

}  // namespace i18n

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
    ~function_type_interface() throw() override;
    virtual void invoke(const char*, const char*, unsigned int&) = 0;
    virtual bool do_equal(const function_type_interface&) const = 0;
    virtual void* do_clone() const = 0;
};

template <typename Class, typename Signature>
class member_function_t;

template <typename Class>
class member_function_t<Class, hook_signature> : public function_type_interface<hook_signature> {
public:
    typedef void (Class::*member_type)(const char*, const char*, unsigned int&);

    member_function_t(Class* bound, member_type operation) : object(bound), member(operation) {}
    ~member_function_t() throw() override {}
    void invoke(const char* expression, const char* file, unsigned int& line) override {
        (object->*member)(expression, file, line);
    }
    bool do_equal(const function_type_interface<hook_signature>& other) const override {
        const auto* same = dynamic_cast<const member_function_t*>(&other);
        return same != nullptr && same->object == object && same->member == member;
    }
    void* do_clone() const override { return new member_function_t(*this); }

    Class* object;
    member_type member;
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
    ~foreign_hook() throw() override { s_log += "end" + std::to_string(m_number) + " "; }
    void invoke(const char* expression, const char* file, unsigned int& line) override {
        s_log += std::string(expression) + "@" + file + ":" + std::to_string(line) + " ";
        line = 999;
    }
    bool do_equal(const hook_function& other) const override {
        return m_number == static_cast<const foreign_hook&>(other).m_number;
    }
    void* do_clone() const override {
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

template <typename Parent, typename Exception>
void expect_exception_of_the_library() {
    SCOPED_TRACE(typeid(Exception).name());
    const std::string message(60, 'm');
    const Exception source(message, 5, "file", "function");
    const Exception copied(source);
    EXPECT_EQ(message, source.message);
    EXPECT_EQ(message, copied.message);
    EXPECT_NE(source.message.data(), copied.message.data());
    EXPECT_EQ(copied.message.c_str(), copied.get_message());
    EXPECT_EQ(5u, copied.where.line);
    EXPECT_STREQ("file", copied.where.file);
    EXPECT_STREQ("function", copied.where.function);

    const char* caught = "nothing";
    try {
        throw Exception(message, exceptions::exception::state(9, "other", "g"));
    } catch (const std::exception&) {
        caught = "a standard exception";
    } catch (const exceptions::exception& raised) {
        caught = "an exception of the library";
        EXPECT_EQ(message, raised.get_message());
        EXPECT_EQ(9u, raised.where.line);
        EXPECT_EQ(typeid(Exception), typeid(raised));
        EXPECT_NE(nullptr, dynamic_cast<const Parent*>(&raised));
    }
    EXPECT_STREQ("an exception of the library", caught);
}

TEST_F(Foreign, ExceptionsOfEveryClassAreCreatedCopiedAndCaught) {
    using namespace exceptions;
    expect_exception_of_the_library<logic_error, logic_error>();
    expect_exception_of_the_library<logic_error, out_of_range>();
    expect_exception_of_the_library<logic_error, length_error>();
    expect_exception_of_the_library<logic_error, invalid_argument_value>();
    expect_exception_of_the_library<runtime_error, runtime_error>();
    expect_exception_of_the_library<runtime_error, empty_error>();
    expect_exception_of_the_library<runtime_error, full_error>();
    expect_exception_of_the_library<runtime_error, overflow_error>();
    expect_exception_of_the_library<runtime_error, underflow_error>();
}

TEST_F(Foreign, ExceptionsOfADerivedClassAreCaughtAsTheRoot) {
    class own_error : public exceptions::exception {
    public:
        own_error() : exception(3, "own", "f") {}
        own_error(const own_error& source) : exception(source) {}
        const char* get_message() const override { return "an own message"; }
    };
    EXPECT_STREQ("exception an own message",
                 foreign_peer::catch_by_headers([] { throw own_error(); }));
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

TEST_F(Foreign, FunctionObjectsAreStoredInDelegatesOfTheLibrary) {
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

class listener {
public:
    void hear(const char* expression, const char*, unsigned int& line) {
        s_log += std::string(expression) + ":" + std::to_string(line) + " ";
    }
    void ignore(const char*, const char*, unsigned int&) {}
};

TEST_F(Foreign, BindingsOfForeignClassesAreCalledAndCompared) {
    typedef functor::member_function_t<listener, functor::hook_signature> binding;
    listener target;
    listener other;
    hook_delegate delegate;
    delegate = binding(&target, &listener::hear);
    unsigned int line = 4;
    delegate.invoke("called", "f", line);
    EXPECT_EQ("called:4 ", s_log);

    const hook_delegate copied(delegate);
    EXPECT_NE(delegate.function, copied.function);
    EXPECT_TRUE(foreign_peer::equal(delegate.function, copied.function));
    const binding elsewhere(&other, &listener::hear);
    const binding otherwise(&target, &listener::ignore);
    EXPECT_FALSE(foreign_peer::equal(delegate.function, &elsewhere));
    EXPECT_FALSE(foreign_peer::equal(delegate.function, &otherwise));
    const foreign_hook of_another_class(1);
    EXPECT_FALSE(foreign_peer::equal(delegate.function, &of_another_class));

    s_log.clear();
    debug::set_assert_hook(copied);
    debug::_private::____________________ASSERT____________________("asserted", "f", 5, "g");
    debug::set_assert_hook(hook_delegate());
    EXPECT_EQ("asserted:5 ", s_log);
    EXPECT_FALSE(debug::is_assert_hook_set());
}

template <typename Base>
class counted : public Base {
public:
    ~counted() throw() override { s_log += "end "; }
};

template <typename Base>
void expect_held_objects() {
    typedef memory::pointers::rc_pointer<Base> holder;
    s_log.clear();
    {
        counted<Base> item;
        EXPECT_EQ(0u, item.count);
        EXPECT_FALSE(item.allocated);
        {
            holder first(&item);
            const holder second(first);
            holder third;
            EXPECT_EQ(nullptr, third.object);
            third = second;
            EXPECT_EQ(3u, item.count);
            third = &item;
            EXPECT_EQ(3u, item.count);
            third = static_cast<Base*>(nullptr);
            EXPECT_EQ(nullptr, third.object);
            EXPECT_EQ(2u, item.count);
        }
        EXPECT_EQ(0u, item.count);
        EXPECT_EQ("", s_log);

        item.allocated = true;
        item.count = 4;
        counted<Base> other(item);
        EXPECT_EQ(0u, other.count);
        EXPECT_FALSE(other.allocated);
        other = item;
        EXPECT_EQ(0u, other.count);
        EXPECT_FALSE(other.allocated);
    }
    s_log.clear();
    {
        counted<Base>* const first = new counted<Base>;
        first->allocated = true;
        holder owner(first);
        { const holder second(owner); }
        EXPECT_EQ("", s_log);
        counted<Base>* const next = new counted<Base>;
        next->allocated = true;
        owner = next;
        EXPECT_EQ("end ", s_log);
    }
    EXPECT_EQ("end end ", s_log);
}

TEST_F(Foreign, CountedObjectsAreHeldByTheLibrarysHolders) {
    expect_held_objects<types::variant_type>();
    expect_held_objects<serialization::serialize_buffer>();
}

TEST_F(Foreign, CatalogsAreHeldByTheLibrarysHolders) {
    typedef memory::pointers::shared_pointer<i18n::catalog_t> holder;
    i18n::catalog_t catalog;
    {
        const holder first(&catalog);
        const holder second(first);
        holder third;
        third = second;
        EXPECT_EQ(3u, catalog.count);
        third = static_cast<i18n::catalog_t*>(nullptr);
        third = &catalog;
        EXPECT_EQ(3u, catalog.count);
    }
    EXPECT_EQ(0u, catalog.count);
}

TEST_F(Foreign, CloneInterfaceCanBeDerivedFrom) {
    class item : public generic::clone_interface {
    public:
        ~item() throw() override { s_log += "item "; }
        void* clone() const override { return new item; }
    };
    item source;
    const generic::clone_interface& base = source;
    delete static_cast<generic::abilities::clone_ability*>(static_cast<item*>(base.clone()));
    EXPECT_EQ("item ", s_log);
}

}  // namespace
