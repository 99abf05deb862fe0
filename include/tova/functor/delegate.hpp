/// @file
/// Delegates: small callables that own what they call, and may be empty.
///
///     struct counter {
///         void add(const tova::strings::ustring8& name) { names += name; }
///         tova::strings::ustring8 names;
///     };
///     typedef void signature(const tova::strings::ustring8&);
///
///     counter target;  // not kept alive by the delegate
///     tova::functor::delegate_t<signature> on_name(
///         tova::functor::member_function_t<counter, signature>(&target, &counter::add));
///     on_name.invoke("a");
///
/// Threads: a delegate belongs to one thread at a time. Copies share nothing, so each thread may
/// have its own; what a bound member function refers to is shared by all of them.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/function_type_interface.hpp>
#include <tova/generic/abilities.hpp>

#include <utility>

namespace TOVA_2_18 {

namespace strings {
// Visible like its definition; an attribute on a second declaration would draw a warning there.
#pragma GCC visibility push(default)
class ustring8;
#pragma GCC visibility pop
}  // namespace strings

namespace functor {

namespace _private {

// Clones a function object. Its interface guarantees that this is possible.
template <typename Function>
Function* clone(const Function& source) {
    return source.do_clone();
}

template <typename Function>
Function* clone_held(const Function* source) {
    return source != nullptr ? source->do_clone() : nullptr;
}

// The store is volatile because a compiler may otherwise drop it before the end of a delegate's
// lifetime: a call that comes after the destructor of a static delegate has to find it empty.
template <typename Function>
void clear(Function*& function) TOVA_NOTHROW {
    delete function;
    *const_cast<Function* volatile*>(&function) = nullptr;
}

}  // namespace _private

template <typename Signature>
class TOVA_API delegate_t;  // clang takes the visibility of the first declaration

/// Owns a clone of a function object of the signature, or nothing.
///
/// Calling an empty delegate does nothing. Two delegates never share a function object. A delegate
/// is one pointer wide, and doesn't keep alive what a bound member function refers to.
template <typename Result, typename... Arguments>
class TOVA_API delegate_t<Result(Arguments...)> {
public:
    /// The class that a function object derives from to be owned by this delegate.
    typedef function_type_interface<Result(Arguments...)> function_type;

    /// An empty delegate. Runs no code at load, so a delegate at namespace scope is empty from the
    /// start.
    constexpr delegate_t() : m_function(nullptr) {}

    /// Owns a clone of the function object. Raises what its `do_clone` raises.
    delegate_t(const function_type& function) : m_function(_private::clone(function)) {}

    /// Owns a clone of the function object of `source`, or nothing if that is empty. Raises what
    /// its `do_clone` raises.
    delegate_t(const delegate_t& source) : m_function(_private::clone_held(source.m_function)) {}

    /// Deletes the held function object, then takes a clone of the other.
    ///
    /// Contract: the source is read last. A delegate that is assigned to itself is empty
    /// afterwards, and so is one whose new function object fails to clone.
    delegate_t& operator=(const function_type& function) {
        _private::clear(m_function);
        m_function = _private::clone(function);
        return *this;
    }
    delegate_t& operator=(const delegate_t& source) {
        _private::clear(m_function);
        m_function = _private::clone_held(source.m_function);
        return *this;
    }

    ~delegate_t() TOVA_NOTHROW { _private::clear(m_function); }

    /// Calls the function object. Returns `Result()` if there is none.
    Result invoke(Arguments... arguments) {
        if (m_function == nullptr)
            return Result();
        return m_function->invoke(std::forward<Arguments>(arguments)...);
    }

    /// Whether no function object is held.
    bool is_empty() const { return m_function == nullptr; }

private:
    function_type* m_function;
};

// The library instantiates the signatures that it uses itself.
extern template class function_type_interface<void(const strings::ustring8&)>;
extern template class function_type_interface<void(const strings::ustring8&,
                                                   const strings::ustring8&)>;
extern template class function_type_interface<void(const char*, const char*, unsigned int&)>;
extern template class delegate_t<void(const strings::ustring8&)>;
extern template class delegate_t<void(const strings::ustring8&, const strings::ustring8&)>;
extern template class delegate_t<void(const char*, const char*, unsigned int&)>;

}  // namespace functor
}  // namespace TOVA_2_18
