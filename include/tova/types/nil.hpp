/// The tag of an absent value.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

/// An empty tag: it selects the overloads of other classes that mean "no value".
class TOVA_API nil_t {};

/// The one object of the tag, to pass wherever a `nil_t` is taken.
///
/// Contract: not const, since some constructors take a `nil_t&`. It holds nothing, so any number of
/// threads may pass it at once.
extern TOVA_API nil_t nil;

}  // namespace types
}  // namespace TOVA_2_18
