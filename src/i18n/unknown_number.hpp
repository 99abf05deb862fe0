/// @file
/// The message of an error whose number has no message of its own.
///
/// The loader and the catalog set render their errors by number, and both may receive numbers that
/// their enumerations don't have. A plain function without state: any number of threads may call
/// it.
#pragma once

#include <tova/strings/ustring.hpp>

#include <string>
#include <typeinfo>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// Contract: the message is part of the interface, including the mangled name of the enumeration.
template <typename Enumeration>
std::string unknown_number(Enumeration number, const strings::ustring8& text) {
    return std::string("unknown, or unhandle case happened! < ") + typeid(Enumeration).name() +
           " value of " + std::to_string(static_cast<int>(number)) + " > str data=" + text;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
