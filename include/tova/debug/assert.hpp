/// @file
/// Soft assertions: a failed one calls a hook, and execution continues after it.
///
/// The library itself never prints, aborts or throws because of an assertion. A program that wants
/// to know installs a hook:
///
///     struct reporter {
///         void report(const char* expression, const char* file, unsigned int& line) {
///             std::cerr << file << ':' << line << ": " << expression << '\n';
///         }
///     };
///     typedef void signature(const char*, const char*, unsigned int&);
///
///     reporter target;  // must outlive the hook
///     tova::debug::set_assert_hook(
///         tova::functor::member_function_t<reporter, signature>(&target, &reporter::report));
///     TOVA_CONTEXT_ASSERT(size < 100, "size is %d", size);
///
/// Threads: the hook is one unguarded object for the whole process. Install or remove it while no
/// other thread may assert. Threads that assert at the same time only read it, and then it is the
/// hook itself that has to cope with them.
#pragma once

#include <tova/abi.hpp>
#include <tova/functor/delegate.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace debug {

/// Installs a private copy of `hook`. Each failed assertion calls it with the source text of the
/// expression, the source file and the line. An empty delegate removes the hook.
///
/// The line is a reference to a local variable: what the hook writes to it is lost. A hook may
/// throw, and its exception then leaves the failed assertion; the destructor of its function object
/// must not throw. Raises what cloning the hook raises, and then no hook is installed.
///
/// Contract: the old hook is deleted before `hook` is read. Passing `g_assert_callback` itself
/// therefore removes the hook.
TOVA_API void
set_assert_hook(const functor::delegate_t<void(const char*, const char*, unsigned int&)>& hook);

/// Removes the hook, if there is one. Never fails.
TOVA_API void set_assert_hook(const types::nil_t& no_hook);

/// Whether a hook is installed. Never fails.
TOVA_API bool is_assert_hook_set();

namespace _private {

/// What the macros call when a condition is false: calls the hook, or `native_assert` if there is
/// none. `function` is not passed on to the hook.
TOVA_API void ____________________ASSERT____________________(const char* expression,
                                                             const char* file, unsigned int line,
                                                             const char* function);

/// The same with a context: the hook receives the expression, " : " and the formatted context as
/// one string, cut at 255 characters.
///
/// The first variable argument is a `printf` format, which may be null; the others are its
/// arguments. An expression of 252 characters or more leaves no room for any of the context.
TOVA_API void _______________CONTEXT__ASSERT________________(const char* expression,
                                                             const char* file, unsigned int line,
                                                             const char* function, ...);

/// What a failed assertion does without a hook: nothing. Returns at once.
TOVA_API void native_assert(const char* expression, const char* file, unsigned int& line,
                            const char* function);

/// Holds the hook. Empty when the library is loaded, and empty again once static objects have been
/// destroyed.
extern TOVA_API functor::delegate_t<void(const char*, const char*, unsigned int&)>
    g_assert_callback;

}  // namespace _private
}  // namespace debug
}  // namespace TOVA_2_18

/// Evaluates the condition once, and reports it to the assertion hook if it is false.
#define TOVA_ASSERT(condition)                                                                     \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::TOVA_2_18::debug::_private::____________________ASSERT____________________(           \
               #condition, __FILE__, __LINE__, __PRETTY_FUNCTION__))

/// The same with a `printf` format and its arguments, which are only evaluated on failure.
#define TOVA_CONTEXT_ASSERT(condition, ...)                                                        \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::TOVA_2_18::debug::_private::_______________CONTEXT__ASSERT________________(           \
               #condition, __FILE__, __LINE__, __PRETTY_FUNCTION__, __VA_ARGS__))
