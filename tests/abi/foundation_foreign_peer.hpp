// Calls into foundation_foreign_peer.cpp, which is compiled with the headers of the library, for a
// program that is compiled without them. The two share no class, so they exchange plain pointers.
#pragma once

namespace foreign_peer {

void throw_out_of_range(const char* message);

// The class of the library's headers that catches what `thrower` throws, followed by its message.
const char* catch_by_headers(void (*thrower)());

// These functions call a function object with the signature of the assertion hook through its base
// class.
void invoke(void* function, const char* expression, const char* file, unsigned int& line);
bool equal(const void* function, const void* other);
void* clone(const void* function);
void destroy(void* function);

// Puts a clone of the function object into a delegate, calls it, and destroys the delegate.
void call_by_delegate(const void* function, const char* expression, unsigned int& line);

}  // namespace foreign_peer
