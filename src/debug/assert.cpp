#include <tova/debug/assert.hpp>

#include <cstdarg>
#include <cstdio>

namespace TOVA_2_18 {
namespace debug {

namespace {

typedef functor::delegate_t<void(const char*, const char*, unsigned int&)> hook_delegate;

const std::size_t context_size = 256;  // room for expression and context, terminator included

}  // namespace

// Delegate assignment follows the published order of steps: the old hook is deleted, the delegate
// becomes empty, and only then is the source read and cloned.
void set_assert_hook(const hook_delegate& hook) {
    _private::g_assert_callback = hook;
}

void set_assert_hook(const types::nil_t&) {
    _private::g_assert_callback = hook_delegate();
}

bool is_assert_hook_set() {
    return !_private::g_assert_callback.is_empty();
}

namespace _private {

// Constant-initialized, so an assertion that fails while other static objects are being constructed
// finds an empty delegate.
hook_delegate g_assert_callback;

void ____________________ASSERT____________________(const char* expression, const char* file,
                                                    unsigned int line, const char* function) {
    unsigned int local_line = line;  // Contract: changes made by the hook are lost
    if (is_assert_hook_set())
        g_assert_callback.invoke(expression, file, local_line);
    else
        native_assert(expression, file, local_line, function);
}

void _______________CONTEXT__ASSERT________________(const char* expression, const char* file,
                                                    unsigned int line, const char* function, ...) {
    // On the stack: a failed assertion must not allocate, since running out of memory may be the
    // cause.
    char text[context_size] = {};
    const int length = std::snprintf(text, context_size, "%s : ", expression);

    va_list arguments;
    va_start(arguments, function);
    const char* const format = va_arg(arguments, const char*);
    // Contract: `length` is the untruncated length of expression and separator. If they had to be
    // cut, there is no context; if they fill the buffer exactly, there is room for 0 characters of
    // context. A negative length, for 2 GiB and more, counts as cut.
    if (static_cast<std::size_t>(length) < context_size && format != nullptr)
        static_cast<void>(std::vsnprintf(
            text + length, context_size - static_cast<std::size_t>(length), format, arguments));
    va_end(arguments);

    ____________________ASSERT____________________(text, file, line, function);
}

void native_assert(const char*, const char*, unsigned int&, const char*) {}

}  // namespace _private
}  // namespace debug
}  // namespace TOVA_2_18
