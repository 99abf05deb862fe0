/// @file
/// The line that an error gets if its number has no wording of its own.
///
/// The loader and the catalog set render their errors by number, and both are handed numbers that
/// their enumerations don't have. A plain function: threads need no lock of ours.
#pragma once

#include <tova/strings/ustring.hpp>

#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// Contract: the wording, the name of the enumeration as the compiler mangles it included, is part
// of the interface.
template <typename Enumeration>
std::string unknown_number(Enumeration number, const strings::ustring8& text) {
    return std::string("unknown, or unhandle case happened! < ") + typeid(Enumeration).name() +
           " value of " + std::to_string(static_cast<int>(number)) + " > str data=" + text;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
