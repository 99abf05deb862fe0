#include "abi/foundation_foreign_peer.hpp"

#include <tova/exceptions/exceptions.hpp>
#include <tova/functor/delegate.hpp>

#include <string>

namespace foreign_peer {

using namespace TOVA_2_18;

namespace {

typedef void hook_signature(const char*, const char*, unsigned int&);
typedef functor::function_type_interface<hook_signature> hook_function;

std::string s_caught;

}  // namespace

void throw_out_of_range(const char* message) {
    throw exceptions::out_of_range(message, 12, "folder/file", "function");
}

const char* catch_by_headers(void (*thrower)()) {
    s_caught = "nothing";
    try {
        thrower();
    } catch (const exceptions::underflow_error& raised) {
        s_caught = std::string("underflow_error ") + raised.get_message();
    } catch (const exceptions::exception& raised) {
        s_caught = std::string("exception ") + raised.get_message();
    }
    return s_caught.c_str();
}

void invoke(void* function, const char* expression, const char* file, unsigned int& line) {
    static_cast<hook_function*>(function)->invoke(expression, file, line);
}

bool equal(const void* function, const void* other) {
    return static_cast<const hook_function*>(function)->do_equal(
        *static_cast<const hook_function*>(other));
}

void* clone(const void* function) {
    return static_cast<const hook_function*>(function)->do_clone();
}

void destroy(void* function) {
    delete static_cast<hook_function*>(function);
}

void call_by_delegate(const void* function, const char* expression, unsigned int& line) {
    functor::delegate_t<hook_signature> delegate(*static_cast<const hook_function*>(function));
    delegate.invoke(expression, "file", line);
}

}  // namespace foreign_peer
