/// An owning callable that may be empty.
#pragma once

#include <utility>

#include <tova/abi.hpp>
#include <tova/functor/function_type_interface.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {

namespace strings {
// Visible like its definition, where an attribute on a second declaration would warn.
#pragma GCC visibility push(default)
class ustring8;
#pragma GCC visibility pop
}  // namespace strings

namespace functor {

namespace _private {

// A clone of a function object, through the base that promises one.
template <typename Function>
Function* clone(const generic::abilities::clone_ability& source) {
    return dynamic_cast<const Function&>(source).do_clone();
}

template <typename Function>
Function* clone_held(const Function* source) {
    return source != nullptr ? clone<Function>(*source) : nullptr;
}

// The store is volatile, as a compiler may otherwise drop it in front of the end of a delegate's
// life: a call that comes after the destructor of a static delegate has to find it empty.
template <typename Function>
void clear(Function*& function) TOVA_NOTHROW {
    delete function;
    *const_cast<Function* volatile*>(&function) = nullptr;
}

}  // namespace _private

template <typename Signature>
class TOVA_API delegate_t;  // clang takes the mark of the first declaration

/// Owns a clone of a function object of the signature, or nothing.
///
/// Calling an empty delegate does nothing. Two delegates never share a function object. One pointer
/// wide; a delegate belongs to one thread at a time. What a bound member function refers to isn't
/// kept alive.
template <typename Result, typename... Arguments>
class TOVA_API delegate_t<Result(Arguments...)> {
public:
    typedef function_type_interface<Result(Arguments...)> function_type;

    /// Empty. Needs no code at load, so a delegate at namespace scope is empty from the start.
    constexpr delegate_t() : m_function(nullptr) {}

    /// Takes a clone of the function object.
    delegate_t(const function_type& function)
        : m_function(_private::clone<function_type>(function)) {}
    delegate_t(const delegate_t& source) : m_function(_private::clone_held(source.m_function)) {}

    /// Deletes the held function object, is empty then, and takes a clone of the other.
    ///
    /// Contract: the source is read last. A delegate that is assigned to itself is empty behind it,
    /// and a throwing clone leaves it empty.
    delegate_t& operator=(const function_type& function) {
        _private::clear(m_function);
        m_function = _private::clone<function_type>(function);
        return *this;
    }
    delegate_t& operator=(const delegate_t& source) {
        _private::clear(m_function);
        m_function = _private::clone_held(source.m_function);
        return *this;
    }

    ~delegate_t() TOVA_NOTHROW { _private::clear(m_function); }

    /// Calls the function object. If there is none, answers with `Result()`.
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

// The signatures that the library uses itself are instantiated in it.
extern template class function_type_interface<void(const strings::ustring8&)>;
extern template class function_type_interface<void(const strings::ustring8&,
                                                   const strings::ustring8&)>;
extern template class function_type_interface<void(const char*, const char*, unsigned int&)>;
extern template class delegate_t<void(const strings::ustring8&)>;
extern template class delegate_t<void(const strings::ustring8&, const strings::ustring8&)>;
extern template class delegate_t<void(const char*, const char*, unsigned int&)>;

}  // namespace functor
}  // namespace TOVA_2_18
