#include <tova/exceptions/exceptions.hpp>

#include "support/class_name.hpp"
#include "support/failing_allocation.hpp"
#include "support/place_of_raise.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace {

namespace exceptions = tova::exceptions;
using exceptions::exception;
using test_support::place_of_raise;

typedef exception::state location;

// Memory for an object, filled with a byte that no string in these tests contains.
const char filler = '\x7E';

template <typename T>
class filled {
public:
    filled() { std::memset(m_memory, filler, sizeof m_memory); }
    void* memory() { return m_memory; }

private:
    alignas(T) unsigned char m_memory[sizeof(T)];
};

std::string bytes(const char* text, std::size_t count) {
    return std::string(text, count);
}

std::string untouched(std::size_t count) {
    return std::string(count, filler);
}

class ExceptionState : public ::testing::Test {
protected:
    location* make(unsigned int line, const char* file, const char* function) {
        return new (m_target.memory()) location(line, file, function);
    }
    location* copy(const location& source) { return new (m_target.memory()) location(source); }

private:
    filled<location> m_target;
};

TEST_F(ExceptionState, StoresLineFileAndFunction) {
    const location where(68, "system/date_time/date", "day");
    EXPECT_EQ(68u, where.line);
    EXPECT_STREQ("system/date_time/date", where.file);
    EXPECT_STREQ("day", where.function);
}

TEST_F(ExceptionState, WritesNothingAfterTheTerminators) {
    const location* const where = make(4000000000u, "file", "f");
    EXPECT_EQ(4000000000u, where->line);
    EXPECT_EQ(bytes("file\0", 5) + untouched(251), bytes(where->file, 256));
    EXPECT_EQ(bytes("f\0", 2) + untouched(254), bytes(where->function, 256));
}

TEST_F(ExceptionState, LeavesTheFieldOfANullPointerUninitialized) {
    const location* where = make(1, nullptr, "f");
    EXPECT_EQ(untouched(256), bytes(where->file, 256));
    EXPECT_EQ(bytes("f\0", 2) + untouched(254), bytes(where->function, 256));

    filled<location> other;
    where = new (other.memory()) location(2, "file", nullptr);
    EXPECT_EQ(2u, where->line);
    EXPECT_EQ(bytes("file\0", 5) + untouched(251), bytes(where->file, 256));
    EXPECT_EQ(untouched(256), bytes(where->function, 256));
}

TEST_F(ExceptionState, WritesTheTerminatorOfAnEmptyString) {
    const location* const where = make(1, "", "");
    EXPECT_EQ(bytes("\0", 1) + untouched(255), bytes(where->file, 256));
    EXPECT_EQ(bytes("\0", 1) + untouched(255), bytes(where->function, 256));
}

TEST_F(ExceptionState, HasRoomFor255CharactersAndATerminator) {
    const std::string longest(255, 'x');
    const location* const where = make(1, longest.c_str(), longest.c_str());
    EXPECT_EQ(longest + '\0', bytes(where->file, 256));
    EXPECT_EQ(longest + '\0', bytes(where->function, 256));
}

TEST_F(ExceptionState, DoesNotTruncateLongerStrings) {
    const std::string too_long(300, 'x');
    const location* const where = make(1, too_long.c_str(), nullptr);
    const char* const fields = reinterpret_cast<const char*>(where) + sizeof(unsigned int);
    EXPECT_EQ(too_long + '\0' + untouched(211), bytes(fields, 512));
}

TEST_F(ExceptionState, CopiesStringsUpToTheirTerminator) {
    filled<location> source;
    location* const where = new (source.memory()) location(7, "strings/unicode", "decode");
    where->file[20] = 'X';
    const location* const copied = copy(*where);
    EXPECT_EQ(7u, copied->line);
    EXPECT_EQ(bytes("strings/unicode\0", 16) + untouched(240), bytes(copied->file, 256));
    EXPECT_EQ(bytes("decode\0", 7) + untouched(249), bytes(copied->function, 256));
}

TEST_F(ExceptionState, LeavesTheFieldOfAnEmptyStringUninitializedInACopy) {
    const location where(9, "", "f");
    const location* copied = copy(where);
    EXPECT_EQ(9u, copied->line);
    EXPECT_EQ(untouched(256), bytes(copied->file, 256));
    EXPECT_EQ(bytes("f\0", 2) + untouched(254), bytes(copied->function, 256));

    const location other(10, "file", "");
    filled<location> target;
    copied = new (target.memory()) location(other);
    EXPECT_EQ(bytes("file\0", 5) + untouched(251), bytes(copied->file, 256));
    EXPECT_EQ(untouched(256), bytes(copied->function, 256));
}

template <typename Exception>
class ExceptionClass : public ::testing::Test {
protected:
    static Exception make(const std::string& message) {
        return Exception(message, 12, "folder/file", "function");
    }
};

typedef ::testing::Types<exceptions::logic_error, exceptions::out_of_range,
                         exceptions::length_error, exceptions::invalid_argument_value,
                         exceptions::runtime_error, exceptions::empty_error, exceptions::full_error,
                         exceptions::overflow_error, exceptions::underflow_error>
    all_classes;
TYPED_TEST_SUITE(ExceptionClass, all_classes, test_support::class_name);

TYPED_TEST(ExceptionClass, ReturnsItsMessageAndNothingElse) {
    EXPECT_STREQ("day value out of valid range",
                 this->make("day value out of valid range").get_message());
}

TYPED_TEST(ExceptionClass, ReturnsAnEmptyStringForAnEmptyMessage) {
    const TypeParam raised = this->make(std::string());
    ASSERT_NE(nullptr, raised.get_message());
    EXPECT_STREQ("", raised.get_message());
}

TYPED_TEST(ExceptionClass, StoresTheMessageUnchanged) {
    const std::string message("%s\n\xC3\xA4\0after", 11);
    const TypeParam raised = this->make(message);
    EXPECT_EQ(message, std::string(raised.get_message(), message.size()));
}

TYPED_TEST(ExceptionClass, ReturnsTheSameAddressEachTime) {
    const TypeParam raised = this->make("message");
    EXPECT_EQ(raised.get_message(), raised.get_message());
}

TYPED_TEST(ExceptionClass, OwnsItsMessage) {
    std::string message("a message that is too long to be stored inside a string object");
    const TypeParam raised = this->make(message);
    EXPECT_NE(message.c_str(), raised.get_message());
    message[0] = 'X';
    EXPECT_STREQ("a message that is too long to be stored inside a string object",
                 raised.get_message());
}

TYPED_TEST(ExceptionClass, CarriesTheLocationWhereItWasRaised) {
    const TypeParam raised = this->make("message");
    EXPECT_EQ(12u, place_of_raise(raised).line);
    EXPECT_STREQ("folder/file", place_of_raise(raised).file);
    EXPECT_STREQ("function", place_of_raise(raised).function);
}

TYPED_TEST(ExceptionClass, AcceptsTheLocationAsARecord) {
    const location where(77, "other/file", "other");
    const TypeParam raised(std::string("message"), where);
    EXPECT_STREQ("message", raised.get_message());
    EXPECT_EQ(77u, place_of_raise(raised).line);
    EXPECT_STREQ("other/file", place_of_raise(raised).file);
    EXPECT_STREQ("other", place_of_raise(raised).function);
}

TYPED_TEST(ExceptionClass, WritesOnlyTheBytesThatTheLocationHas) {
    filled<TypeParam> from_arguments;
    TypeParam* raised = new (from_arguments.memory()) TypeParam("message", 1, nullptr, "");
    EXPECT_EQ(untouched(256), bytes(place_of_raise(*raised).file, 256));
    EXPECT_EQ(bytes("\0", 1) + untouched(255), bytes(place_of_raise(*raised).function, 256));
    raised->~TypeParam();

    const location empty(2, "", "");
    filled<TypeParam> from_record;
    raised = new (from_record.memory()) TypeParam("message", empty);
    EXPECT_EQ(2u, place_of_raise(*raised).line);
    EXPECT_EQ(untouched(256), bytes(place_of_raise(*raised).file, 256));
    EXPECT_EQ(untouched(256), bytes(place_of_raise(*raised).function, 256));
    raised->~TypeParam();

    const TypeParam source("message", 3, "file", "");
    filled<TypeParam> from_copy;
    raised = new (from_copy.memory()) TypeParam(source);
    EXPECT_EQ(3u, place_of_raise(*raised).line);
    EXPECT_EQ(bytes("file\0", 5) + untouched(251), bytes(place_of_raise(*raised).file, 256));
    EXPECT_EQ(untouched(256), bytes(place_of_raise(*raised).function, 256));
    raised->~TypeParam();
}

TYPED_TEST(ExceptionClass, SharesNothingWithItsCopies) {
    std::unique_ptr<TypeParam> source(new TypeParam(this->make("the message")));
    const TypeParam copied(*source);
    EXPECT_NE(source->get_message(), copied.get_message());
    source.reset();
    EXPECT_STREQ("the message", copied.get_message());
    EXPECT_EQ(12u, place_of_raise(copied).line);
    EXPECT_STREQ("folder/file", place_of_raise(copied).file);
    EXPECT_STREQ("function", place_of_raise(copied).function);
}

TYPED_TEST(ExceptionClass, IsCaughtAsTheRootWithItsMessage) {
    try {
        throw this->make("thrown");
    } catch (const exception& raised) {
        EXPECT_STREQ("thrown", raised.get_message());
        EXPECT_EQ(typeid(TypeParam), typeid(raised));
        return;
    }
    FAIL();
}

TYPED_TEST(ExceptionClass, IsNotCaughtAsAStandardException) {
    const char* caught = "nothing";
    try {
        throw this->make("thrown");
    } catch (const std::exception&) {
        caught = "standard exception";
    } catch (const exception&) {
        caught = "exception of ours";
    }
    EXPECT_STREQ("exception of ours", caught);
    EXPECT_FALSE((std::is_base_of<std::exception, TypeParam>::value));
}

TYPED_TEST(ExceptionClass, HasNoDefaultConstructorAndADestructorThatNeverThrows) {
    EXPECT_FALSE(std::is_default_constructible<TypeParam>::value);
    EXPECT_TRUE(std::is_nothrow_destructible<TypeParam>::value);
    EXPECT_TRUE(std::has_virtual_destructor<TypeParam>::value);
    EXPECT_FALSE(std::is_abstract<TypeParam>::value);
}

TYPED_TEST(ExceptionClass, PropagatesAFailedAllocationOfItsMessage) {
    const std::string message(100, 'm');
    const TypeParam source(message, 1, "file", "function");
    const location where(1, "file", "function");
    int failures = 0;
    for (int way = 0; way < 3; ++way) {
        filled<TypeParam> target;
        const test_support::failing_allocation fail;
        try {
            if (way == 0)
                new (target.memory()) TypeParam(message, 1, "file", "function");
            else if (way == 1)
                new (target.memory()) TypeParam(message, where);
            else
                new (target.memory()) TypeParam(source);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    }
    EXPECT_EQ(3, failures);
}

template <typename Parent, typename Exception>
bool is_leaf_of() {
    const Exception raised("leaf", 1, "file", "function");
    const Parent& parent = raised;
    return std::string("leaf") == parent.get_message() && sizeof(Parent) == sizeof(Exception);
}

TEST(ExceptionTree, HasThreeLeavesUnderLogicErrorAndFourUnderRuntimeError) {
    EXPECT_TRUE((is_leaf_of<exceptions::logic_error, exceptions::out_of_range>()));
    EXPECT_TRUE((is_leaf_of<exceptions::logic_error, exceptions::length_error>()));
    EXPECT_TRUE((is_leaf_of<exceptions::logic_error, exceptions::invalid_argument_value>()));
    EXPECT_TRUE((is_leaf_of<exceptions::runtime_error, exceptions::empty_error>()));
    EXPECT_TRUE((is_leaf_of<exceptions::runtime_error, exceptions::full_error>()));
    EXPECT_TRUE((is_leaf_of<exceptions::runtime_error, exceptions::overflow_error>()));
    EXPECT_TRUE((is_leaf_of<exceptions::runtime_error, exceptions::underflow_error>()));
}

TEST(ExceptionTree, KeepsLogicErrorAndRuntimeErrorApart) {
    EXPECT_FALSE(
        (std::is_convertible<exceptions::overflow_error*, exceptions::logic_error*>::value));
    EXPECT_FALSE(
        (std::is_convertible<exceptions::out_of_range*, exceptions::runtime_error*>::value));
    EXPECT_FALSE(
        (std::is_convertible<exceptions::logic_error*, exceptions::runtime_error*>::value));
}

TEST(ExceptionTree, HasAnAbstractRootThatUsersMayDeriveFrom) {
    class own_error : public exception {
    public:
        own_error() : exception(5, "own", "f") {}
        explicit own_error(const location& where) : exception(where) {}
        const char* get_message() const override { return "own"; }
    };
    EXPECT_TRUE(std::is_abstract<exception>::value);
    try {
        throw own_error();
    } catch (const exception& raised) {
        EXPECT_STREQ("own", raised.get_message());
        EXPECT_EQ(5u, place_of_raise(raised).line);
    }
    const own_error from_record(location(6, "elsewhere", "g"));
    EXPECT_EQ(6u, place_of_raise(from_record).line);
    EXPECT_STREQ("elsewhere", place_of_raise(own_error(from_record)).file);
}

}  // namespace
