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

template <typename Signature>
class delegate_t;

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
    delegate_t(const function_type& function) : m_function(clone(function)) {}
    delegate_t(const delegate_t& source) : m_function(source.clone_held()) {}

    /// Deletes the held function object, is empty then, and takes a clone of the other.
    ///
    /// Contract: the source is read last. A delegate that is assigned to itself is empty behind it,
    /// and a throwing clone leaves it empty.
    delegate_t& operator=(const function_type& function) {
        clear();
        m_function = clone(function);
        return *this;
    }
    delegate_t& operator=(const delegate_t& source) {
        clear();
        m_function = source.clone_held();
        return *this;
    }

    ~delegate_t() TOVA_NOTHROW { clear(); }

    /// Calls the function object. If there is none, answers with `Result()`.
    Result invoke(Arguments... arguments) {
        if (m_function == nullptr)
            return Result();
        return m_function->invoke(std::forward<Arguments>(arguments)...);
    }

    /// Whether no function object is held.
    bool is_empty() const { return m_function == nullptr; }

private:
    static function_type* clone(const generic::abilities::clone_ability& source) {
        return dynamic_cast<const function_type&>(source).do_clone();
    }

    function_type* clone_held() const {
        return m_function != nullptr ? clone(*m_function) : nullptr;
    }

    // The store is volatile, as a compiler may otherwise drop it in front of the end of the
    // object's life: a call that comes after the destructor of a static delegate has to find it
    // empty.
    void clear() TOVA_NOTHROW {
        delete m_function;
        *const_cast<function_type* volatile*>(&m_function) = nullptr;
    }

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
