#include <tova/functor/member_function.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using tova::functor::function_type_interface;
using tova::functor::member_function_t;

class writer {
public:
    int append(const std::string& text) {
        m_text += text;
        return static_cast<int>(m_text.size());
    }
    int prepend(const std::string& text) {
        m_text = text + m_text;
        return static_cast<int>(m_text.size());
    }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

class other_writer {
public:
    int append(const std::string&) { return -1; }
};

typedef int signature(const std::string&);
typedef member_function_t<writer, signature> binding;
typedef std::unique_ptr<function_type_interface<signature>> owned;

TEST(MemberFunction, CallsTheFunctionOfTheObject) {
    writer target;
    binding append(&target, &writer::append);
    EXPECT_EQ(1, append.invoke("a"));
    EXPECT_EQ(3, append.invoke("bc"));
    EXPECT_EQ("abc", target.text());
}

TEST(MemberFunction, CallsThroughItsBaseClass) {
    writer target;
    binding prepend(&target, &writer::prepend);
    function_type_interface<signature>& base = prepend;
    base.invoke("a");
    base.invoke("b");
    EXPECT_EQ("ba", target.text());
}

TEST(MemberFunction, CallsTheOverrideOfAVirtualFunction) {
    struct base {
        virtual ~base() {}
        virtual int number(int value) { return value; }
    };
    struct derived : base {
        int number(int value) override { return 10 * value; }
    };
    derived target;
    member_function_t<base, int(int)> bound(&target, &base::number);
    EXPECT_EQ(40, bound.invoke(4));
}

TEST(MemberFunction, IsEqualToABindingOfTheSameFunctionAndObject) {
    writer target;
    const binding append(&target, &writer::append);
    EXPECT_TRUE(append.do_equal(append));
    EXPECT_TRUE(append.do_equal(binding(&target, &writer::append)));
}

TEST(MemberFunction, DiffersByObjectAndByFunction) {
    writer target;
    writer another;
    const binding append(&target, &writer::append);
    EXPECT_FALSE(append.do_equal(binding(&another, &writer::append)));
    EXPECT_FALSE(append.do_equal(binding(nullptr, &writer::append)));
    EXPECT_FALSE(append.do_equal(binding(&target, &writer::prepend)));
    EXPECT_FALSE(append.do_equal(binding(&target, nullptr)));
}

TEST(MemberFunction, DiffersFromEveryOtherClassOfFunctionObjects) {
    writer target;
    other_writer other;
    const binding append(&target, &writer::append);
    const member_function_t<other_writer, signature> elsewhere(&other, &other_writer::append);
    EXPECT_FALSE(append.do_equal(elsewhere));
    EXPECT_FALSE(elsewhere.do_equal(append));

    class derived : public binding {
    public:
        using binding::binding;
    };
    EXPECT_FALSE(append.do_equal(derived(&target, &writer::append)));
}

TEST(MemberFunction, TreatsTwoNullFunctionsAsEqual) {
    writer target;
    EXPECT_TRUE(binding(&target, nullptr).do_equal(binding(&target, nullptr)));
    EXPECT_TRUE(binding(nullptr, nullptr).do_equal(binding(nullptr, nullptr)));
}

TEST(MemberFunction, HasClonesThatAreEqualAndCallTheSameObject) {
    writer target;
    owned first;
    owned second;
    {
        const binding append(&target, &writer::append);
        first.reset(append.do_clone());
        second.reset(append.do_clone());
        EXPECT_NE(first.get(), second.get());
        EXPECT_TRUE(append.do_equal(*first));
    }
    EXPECT_TRUE(first->do_equal(*second));
    first->invoke("x");
    second->invoke("y");
    EXPECT_EQ("xy", target.text());
}

}  // namespace
