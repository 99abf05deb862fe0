// What foundation_foreign_peer.cpp, compiled with the headers of the library, does for a program
// that has been compiled without them. Plain pointers only: the two know no common class.
#pragma once

namespace foreign_peer {

void throw_out_of_range(const char* message);

// Which class of the library's headers catches what `thrower` throws, with its message behind it.
const char* catch_by_headers(void (*thrower)());

// Calls a function object of the assertion hook's signature through its base.
void invoke(void* function, const char* expression, const char* file, unsigned int& line);
bool equal(const void* function, const void* other);
void* clone(const void* function);
void destroy(void* function);

// Puts a clone of the function object into a delegate, calls it, and gives the delegate's end.
void call_by_delegate(const void* function, const char* expression, unsigned int& line);

}  // namespace foreign_peer
