#include <tova/functor/delegate.hpp>

#include <tova/functor/member_function.hpp>
#include <tova/strings/ustring.hpp>

#include "support/child_process.hpp"
#include "support/counting_function.hpp"
#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

using namespace tova;
using functor::delegate_t;
using functor::member_function_t;
using strings::ustring8;

typedef test_support::counting_function<void()> counting;

class Delegate : public ::testing::Test {
protected:
    std::string log;
};

class calculator {
public:
    explicit calculator(int start) : m_sum(start) {}
    int add(int value) { return m_sum += value; }

private:
    int m_sum;
};

TEST_F(Delegate, IsTheSizeOfAPointerAndInitiallyEmpty) {
    delegate_t<void()> empty;
    EXPECT_EQ(sizeof(void*), sizeof empty);
    EXPECT_FALSE(std::is_polymorphic<delegate_t<void()>>::value);
    EXPECT_TRUE(empty.is_empty());
    empty.invoke();
}

TEST_F(Delegate, ReturnsADefaultValueWhenEmpty) {
    delegate_t<int(int)> number;
    EXPECT_EQ(0, number.invoke(5));
    delegate_t<std::string()> text;
    EXPECT_EQ("", text.invoke());
}

TEST_F(Delegate, OwnsACloneOfItsFunctionObject) {
    {
        delegate_t<void()> delegate(counting(log, "f"));
        EXPECT_EQ("clone f; delete f; ", log);
        EXPECT_FALSE(delegate.is_empty());
        log.clear();
        delegate.invoke();
        delegate.invoke();
        EXPECT_EQ("call f'; call f'; ", log);
        log.clear();
    }
    EXPECT_EQ("delete f'; ", log);
}

TEST_F(Delegate, SharesNoFunctionObjectWithItsCopy) {
    const counting function(log, "f");
    delegate_t<void()> first(function);
    log.clear();
    {
        delegate_t<void()> second(first);
        EXPECT_EQ("clone f'; ", log);
        second.invoke();
        first.invoke();
        EXPECT_EQ("clone f'; call f''; call f'; ", log);
        log.clear();
    }
    EXPECT_EQ("delete f''; ", log);
}

TEST_F(Delegate, IsEmptyAsACopyOfAnEmptyOne) {
    const delegate_t<void()> empty;
    const delegate_t<void()> copied(empty);
    EXPECT_TRUE(copied.is_empty());
    delegate_t<void()> assigned(counting(log, "f"));
    log.clear();
    assigned = empty;
    EXPECT_TRUE(assigned.is_empty());
    EXPECT_EQ("delete f'; ", log);
}

TEST_F(Delegate, DeletesTheOldFunctionObjectBeforeItClonesTheNewOne) {
    const counting first(log, "first");
    const counting second(log, "second");
    delegate_t<void()> delegate(first);
    log.clear();
    delegate_t<void()>& result = delegate = second;
    EXPECT_EQ(&delegate, &result);
    EXPECT_EQ("delete first'; clone second; ", log);

    const delegate_t<void()> other(first);
    log.clear();
    delegate = other;
    EXPECT_EQ("delete second'; clone first'; ", log);
}

TEST_F(Delegate, IsEmptyWhenAssignedToItself) {
    delegate_t<void()> delegate(counting(log, "f"));
    log.clear();
    const delegate_t<void()>& same = delegate;
    delegate = same;
    EXPECT_TRUE(delegate.is_empty());
    EXPECT_EQ("delete f'; ", log);
}

// Can be cloned once, into a delegate. Cloning the clone fails.
class failing : public counting {
public:
    failing(std::string& log, bool fails) : counting(log, "failing"), m_log(&log), m_fails(fails) {}
    base* do_clone() const override {
        if (m_fails)
            throw std::runtime_error("clone");
        return new failing(*m_log, true);
    }

private:
    std::string* m_log;
    bool m_fails;
};

TEST_F(Delegate, IsEmptyAfterAFailedClone) {
    const delegate_t<void()> source(failing(log, false));
    delegate_t<void()> target(counting(log, "f"));
    EXPECT_THROW(target = source, std::runtime_error);
    EXPECT_TRUE(target.is_empty());
    target = counting(log, "f");
    EXPECT_THROW(target = failing(log, true), std::runtime_error);
    EXPECT_TRUE(target.is_empty());
    EXPECT_THROW(delegate_t<void()>{source}, std::runtime_error);
}

TEST_F(Delegate, StaysCallableAfterTheBindingItWasMadeFromIsDestroyed) {
    calculator sum(10);
    delegate_t<int(int)> delegate;
    delegate = member_function_t<calculator, int(int)>(&sum, &calculator::add);
    EXPECT_EQ(15, delegate.invoke(5));
    delegate_t<int(int)> copied(delegate);
    delegate = delegate_t<int(int)>();
    EXPECT_EQ(18, copied.invoke(3));
    EXPECT_EQ(0, delegate.invoke(3));
}

TEST_F(Delegate, PassesArgumentsByReferenceAndReturnsResults) {
    class setter : public functor::function_type_interface<int&(int&, std::string)> {
    public:
        int& invoke(int& value, std::string text) override {
            value = static_cast<int>(text.size());
            return value;
        }
        bool do_equal(const function_type_interface&) const override { return true; }
        setter* do_clone() const override { return new setter; }
    };
    class reader : public functor::function_type_interface<void(int&, const std::string&)> {
    public:
        void invoke(int& value, const std::string& text) override {
            value = static_cast<int>(text.size());
        }
        bool do_equal(const function_type_interface&) const override { return true; }
        reader* do_clone() const override { return new reader; }
    };
    int value = 0;
    delegate_t<void(int&, const std::string&)> delegate = reader();
    delegate.invoke(value, "four");
    EXPECT_EQ(4, value);
    setter direct;
    EXPECT_EQ(&value, &direct.invoke(value, "seven"));
    EXPECT_EQ(5, value);
}

TEST_F(Delegate, PropagatesExceptionsOfTheCall) {
    class thrower : public functor::function_type_interface<void()> {
    public:
        void invoke() override { throw std::runtime_error("call"); }
        bool do_equal(const function_type_interface&) const override { return true; }
        thrower* do_clone() const override { return new thrower; }
    };
    delegate_t<void()> delegate = thrower();
    EXPECT_THROW(delegate.invoke(), std::runtime_error);
    EXPECT_FALSE(delegate.is_empty());
}

TEST_F(Delegate, ReadsAsNullAfterItsDestructor) {
    typedef delegate_t<void()> delegate;
    alignas(delegate) unsigned char memory[sizeof(delegate)];
    delegate* const made = new (memory) delegate(counting(log, "f"));
    made->~delegate();
    EXPECT_EQ(nullptr, test_support::pointer_at(memory));

    typedef delegate_t<void(const ustring8&)> exported;
    alignas(exported) unsigned char other[sizeof(exported)];
    exported* const second =
        new (other) exported(test_support::counting_function<void(const ustring8&)>(log, "g"));
    second->~exported();
    EXPECT_EQ(nullptr, test_support::pointer_at(other));
}

void throw_number() {
    throw 1;
}

class throwing_end : public functor::function_type_interface<void()> {
public:
    explicit throwing_end(bool throws) : m_throws(throws) {}
    ~throwing_end() TOVA_NOTHROW override {
        if (m_throws)
            throw_number();
    }
    void invoke() override {}
    bool do_equal(const function_type_interface&) const override { return false; }
    throwing_end* do_clone() const override { return new throwing_end(true); }

private:
    bool m_throws;
};

TEST_F(Delegate, TerminatesTheProcessWhenTheDestructorOfAFunctionObjectThrows) {
    for (bool by_assignment : {false, true}) {
        SCOPED_TRACE(by_assignment);
        const auto result = test_support::run_in_child([by_assignment] {
            test_support::exit_42_on_unexpected();
            delegate_t<void()> delegate(throwing_end(false));
            if (by_assignment)
                delegate = delegate_t<void()>();
        });
        EXPECT_TRUE(result.exited);
        EXPECT_EQ(42, result.exit_code) << result.output;
    }
}

TEST_F(Delegate, WorksWithTheSignaturesOfTheLibrary) {
    test_support::counting_function<void(const ustring8&)> one(log, "one");
    test_support::counting_function<void(const ustring8&, const ustring8&)> two(log, "two");
    test_support::counting_function<void(const char*, const char*, unsigned int&)> hook(log,
                                                                                        "hook");
    delegate_t<void(const ustring8&)> text;
    delegate_t<void(const ustring8&, const ustring8&)> attribute;
    delegate_t<void(const char*, const char*, unsigned int&)> assertion;
    unsigned int line = 1;
    text.invoke(ustring8());
    attribute.invoke(ustring8(), ustring8());
    assertion.invoke("e", "f", line);
    EXPECT_EQ("", log);

    text = one;
    attribute = two;
    assertion = hook;
    log.clear();
    text.invoke(ustring8());
    attribute.invoke(ustring8(), ustring8());
    assertion.invoke("e", "f", line);
    EXPECT_EQ("call one'; call two'; call hook'; ", log);

    log.clear();
    delegate_t<void(const ustring8&)> text_copy(text);
    text_copy = text;
    EXPECT_EQ("clone one'; delete one''; clone one'; ", log);
    EXPECT_FALSE(text_copy.is_empty());
}

}  // namespace
