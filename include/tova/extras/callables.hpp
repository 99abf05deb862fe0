/// @file
/// Delegates from any callable.
///
///     parser.on_character = tova::extras::delegate<void(const ustring8&)>(
///         [&text](const ustring8& piece) { text += piece; });
///
/// The delegate owns a copy of the callable, and every copy of the delegate a copy of its own. What
/// the callable refers to must outlive it. A delegate belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/functor/function_type_interface.hpp>
#include <tova/functor/member_function.hpp>

#include <memory>
#include <type_traits>
#include <utility>

namespace TOVA_2_18 {
namespace extras {

namespace _private {

// Holds a callable. `do_equal` compares identity: two copies of a lambda need not do the same.
template <typename Callable, typename Signature>
class callable_function;

template <typename Callable, typename Result, typename... Arguments>
class callable_function<Callable, Result(Arguments...)>
    : public functor::function_type_interface<Result(Arguments...)> {
public:
    explicit callable_function(Callable callable) : m_callable(std::move(callable)) {}

    Result invoke(Arguments... arguments) override {
        return static_cast<Result>(m_callable(std::forward<Arguments>(arguments)...));
    }
    bool
    do_equal(const functor::function_type_interface<Result(Arguments...)>& other) const override {
        return this == &other;
    }
    callable_function* do_clone() const override { return new callable_function(m_callable); }

private:
    Callable m_callable;
};

}  // namespace _private

/// A delegate of the signature that calls a copy of `callable`: a lambda, a function, a
/// `std::function` or any object with an operator(). The callable must be copyable.
///
/// What the callable raises passes through. Raises what copying the callable and allocations raise.
template <typename Signature, typename Callable>
functor::delegate_t<Signature> delegate(Callable&& callable) {
    using stored = typename std::decay<Callable>::type;
    return functor::delegate_t<Signature>(
        _private::callable_function<stored, Signature>(std::forward<Callable>(callable)));
}

/// A delegate that calls a member function of `object`, which must outlive it and all its copies.
template <typename Class, typename Result, typename... Arguments>
functor::delegate_t<Result(Arguments...)> delegate(Class& object,
                                                   Result (Class::*member)(Arguments...)) {
    return functor::delegate_t<Result(Arguments...)>(
        functor::member_function_t<Class, Result(Arguments...)>(&object, member));
}

/// A delegate that calls a member function of a shared object and keeps it alive.
template <typename Class, typename Result, typename... Arguments>
functor::delegate_t<Result(Arguments...)> delegate(const std::shared_ptr<Class>& object,
                                                   Result (Class::*member)(Arguments...)) {
    return delegate<Result(Arguments...)>([object, member](Arguments... arguments) -> Result {
        return ((*object).*member)(std::forward<Arguments>(arguments)...);
    });
}

}  // namespace extras
}  // namespace TOVA_2_18
