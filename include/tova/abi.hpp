/// What every public header needs to declare the binary interface.
#pragma once

/// Marks a class, function or object that the shared object exports.
#define TOVA_API __attribute__((visibility("default")))

/// The empty exception specification. The library itself is built as C++14, so an exception that
/// tries to leave such an operation reaches `std::unexpected`; C++17 and later have only the
/// `noexcept` spelling, which is the same interface to a linker.
#if __cplusplus >= 201703L
#define TOVA_NOTHROW noexcept
#else
#define TOVA_NOTHROW throw()
#endif

/// All names of the library lie in one versioned namespace.
namespace TOVA_2_18 {}

/// The short name of the versioned namespace, offered by every public header.
namespace tova = TOVA_2_18;
