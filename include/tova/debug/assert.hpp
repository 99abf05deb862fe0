/// Soft assertions: one that fails calls a hook, and execution carries on behind it.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace debug {

/// Installs a private copy of `hook`, to be called by each failed assertion with the text of the
/// expression, the source file and the line. An empty delegate removes the hook.
///
/// What the hook writes to its line is seen by itself alone. A hook may throw, and its exception
/// leaves the failed assertion; the destructor of its function object may not. The hook is one
/// unguarded object: don't set it while another thread may assert.
///
/// Contract: the old hook is deleted before `hook` is read. Passing the global delegate itself
/// therefore removes the hook.
TOVA_API void
set_assert_hook(const functor::delegate_t<void(const char*, const char*, unsigned int&)>& hook);

/// Removes the hook, if there is one.
TOVA_API void set_assert_hook(const types::nil_t& no_hook);

/// Whether a hook is installed.
TOVA_API bool is_assert_hook_set();

namespace _private {

/// Where a failed assertion goes: calls the hook, or `native_assert` if there is none.
TOVA_API void ____________________ASSERT____________________(const char* expression,
                                                             const char* file, unsigned int line,
                                                             const char* function);

/// The same for the expression, " : " and a formatted text, cut at 255 characters together.
///
/// The first variable argument is a `printf` format, which may be null, the others are its
/// arguments. An expression that leaves no room, of 253 characters or more, gets no formatted text.
TOVA_API void _______________CONTEXT__ASSERT________________(const char* expression,
                                                             const char* file, unsigned int line,
                                                             const char* function, ...);

/// What a failed assertion does without a hook: nothing.
TOVA_API void native_assert(const char* expression, const char* file, unsigned int& line,
                            const char* function);

/// Holds the hook. Empty from load on, and empty again after the end of static objects.
extern TOVA_API functor::delegate_t<void(const char*, const char*, unsigned int&)>
    g_assert_callback;

}  // namespace _private
}  // namespace debug
}  // namespace TOVA_2_18

/// Evaluates the condition once and reports it to the assertion hook if it doesn't hold.
#define TOVA_ASSERT(condition)                                                                     \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::TOVA_2_18::debug::_private::____________________ASSERT____________________(           \
               #condition, __FILE__, __LINE__, __PRETTY_FUNCTION__))

/// The same with a `printf` format and its arguments, which are evaluated on failure alone.
#define TOVA_CONTEXT_ASSERT(condition, ...)                                                        \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::TOVA_2_18::debug::_private::_______________CONTEXT__ASSERT________________(           \
               #condition, __FILE__, __LINE__, __PRETTY_FUNCTION__, __VA_ARGS__))
