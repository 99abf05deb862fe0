/// @file
/// The tag that means "no value" wherever another value could be passed.
///
///     tova::types::variant value(42);
///     value = tova::types::nil;                 // empty again
///     if (value == tova::types::nil) ...
///
/// The tag holds nothing, so any number of threads may use the one object.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

/// An empty tag. It selects the overloads of other classes that mean "no value".
class TOVA_API nil_t {};

/// The one object of the tag, to pass wherever a `nil_t` is expected.
///
/// Contract: not const, since some constructors take a `nil_t&`.
extern TOVA_API nil_t nil;

}  // namespace types
}  // namespace TOVA_2_18
