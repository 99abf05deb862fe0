/// @file
/// A callable made of an object and one of its member functions.
///
///     struct counter {
///         int add(int value) { return sum += value; }
///         int sum = 0;
///     };
///     counter target;
///     tova::functor::member_function_t<counter, int(int)> add(&target, &counter::add);
///     add.invoke(5);  // target.sum is 5
///
/// Usually it goes straight into a `delegate_t`, which clones it.
///
/// Threads: a binding is a plain value of two pointers, so each thread may call its own copy. All
/// copies call the one object that they are bound to.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/function_type_interface.hpp>

#include <typeinfo>
#include <utility>

namespace TOVA_2_18 {
namespace functor {

template <typename Class, typename Signature>
class TOVA_API member_function_t;  // clang takes the visibility of the first declaration

/// Calls a member function of an object. The object isn't owned: it has to outlive this binding and
/// all of its clones.
template <typename Class, typename Result, typename... Arguments>
class TOVA_API member_function_t<Class, Result(Arguments...)>
    : public function_type_interface<Result(Arguments...)> {
public:
    /// A pointer to a member function of the signature.
    typedef Result (Class::*member_type)(Arguments...);

    /// Binds the member function to the object. Either may be null as long as nobody calls
    /// `invoke`. Never fails.
    member_function_t(Class* object, member_type member) : m_object(object), m_member(member) {}
    ~member_function_t() TOVA_NOTHROW override {}

    /// Calls the member function. Neither pointer is tested for null.
    Result invoke(Arguments... arguments) override {
        return (m_object->*m_member)(std::forward<Arguments>(arguments)...);
    }

    /// Whether `other` is of exactly this class and binds the same member function of the same
    /// object. Two null member functions are equal.
    bool do_equal(const function_type_interface<Result(Arguments...)>& other) const override {
        if (typeid(other) != typeid(member_function_t))
            return false;
        const auto& same_class = static_cast<const member_function_t&>(other);
        return m_object == same_class.m_object && m_member == same_class.m_member;
    }

    /// A binding of the same object and member function on the heap, owned by the caller. Raises
    /// only what an allocation raises.
    member_function_t* do_clone() const override {
        return new member_function_t(m_object, m_member);
    }

private:
    Class* m_object;
    member_type m_member;
};

}  // namespace functor
}  // namespace TOVA_2_18
