/// @file
/// Conversions by a standard stream, for locales other than the classic one.
///
///     streamed<std::stringstream>(1.5)  // "1,5" in a global locale with a comma
///
/// A stream swallows exceptions and sets its bad bit. Without memory the result would be a wrong
/// number or half a string, so failed allocations are raised again. Threads: as for streams, each
/// call has one of its own.
#pragma once

#include <cxxabi.h>

#include <ios>
#include <new>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

/// Runs an operation on a fresh stream. What else it throws, a facet of the caller's locale for
/// example, stays in the stream's state.
template <typename Stream, typename Operation>
void raise_failed_allocation(Stream& stream, Operation operation) {
    // The stream sets the bad bit first and then throws the exception again.
    stream.exceptions(std::ios_base::badbit);
    try {
        operation();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (abi::__forced_unwind&) {
        throw;  // a thread that is being cancelled
    } catch (...) {
    }
}

/// What a fresh stream with the global locale and this precision inserts.
template <typename Stream, typename T>
auto streamed(const T& value, std::streamsize precision = 6) -> decltype(Stream().str()) {
    Stream stream;
    stream.precision(precision);
    raise_failed_allocation(stream, [&] { stream << value; });
    return stream.str();
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
