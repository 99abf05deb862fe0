/// @file
/// What every public header needs to declare the binary interface, and the limits of that
/// interface.
///
/// `libtova.so` exchanges standard strings, type information and exceptions with the programs that
/// link it. A program that is compiled with another standard library or without those features
/// links and runs, but reads the wrong bytes. Each public header therefore includes this one first,
/// and a build that cannot work stops at one of the sentences below.
///
/// The header declares no object and no function, so there is nothing that threads could share.
#pragma once

// These come before the first standard header, which a target without a C++ library cannot find.
#if __cplusplus < 201402L
#error "tova needs C++14 or later: compile with -std=c++14 or a newer standard."
#endif
#if __SIZEOF_POINTER__ != 8 || __SIZEOF_LONG__ != 8
#error "tova needs a 64-bit target, because the layout of its classes is defined for 64 bits only."
#endif
#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "tova needs a little-endian target, because its results depend on that byte order."
#endif
#ifndef __cpp_rtti
#error "tova needs type information, because a variant knows its type by it: omit -fno-rtti."
#endif
#ifndef __cpp_exceptions
#error "tova needs exceptions, because it reports errors by them: omit -fno-exceptions."
#endif

// The smallest standard header that tells which standard library this is.
#include <cstddef>

#ifdef _LIBCPP_VERSION
#error "tova needs libstdc++, because libtova.so takes its std::string: omit -stdlib=libc++."
#elif !_GLIBCXX_USE_CXX11_ABI
#error "tova needs _GLIBCXX_USE_CXX11_ABI=1, because libtova.so takes the std::string of that ABI."
#endif

/// Marks a class, function or object that the shared object exports.
#define TOVA_API __attribute__((visibility("default")))

/// The empty exception specification.
///
/// The library is built as C++14, so an exception that tries to leave such an operation reaches
/// `std::unexpected`. C++17 and later know only the `noexcept` spelling, which is the same
/// interface to a linker.
#if __cplusplus >= 201703L
#define TOVA_NOTHROW noexcept
#else
#define TOVA_NOTHROW throw()
#endif

/// The versioned namespace of all names of the library.
namespace TOVA_2_18 {}

/// The short name of the versioned namespace, offered by every public header.
namespace tova = TOVA_2_18;
