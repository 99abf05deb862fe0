// The source location that an exception of the library carries. The exception has no accessor for
// it.
#pragma once

#include <tova/exceptions/exceptions.hpp>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace test_support {

inline const tova::exceptions::exception::state&
place_of_raise(const tova::exceptions::exception& raised) {
    return *reinterpret_cast<const tova::exceptions::exception::state*>(
        reinterpret_cast<const char*>(&raised) + sizeof(void*));
}

// Whether `body` raises exactly this class, with this message and this source location.
template <typename Exception, typename Body>
::testing::AssertionResult raises(const Body& body, const std::string& message, unsigned line,
                                  const std::string& file, const std::string& function) {
    try {
        body();
    } catch (const tova::exceptions::exception& raised) {
        const auto& place = place_of_raise(raised);
        if (typeid(raised) == typeid(Exception) && message == raised.get_message() &&
            place.line == line && file == place.file && function == place.function)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << "raised " << typeid(raised).name() << " \"" << raised.get_message() << "\" at "
               << place.file << ":" << place.line << " in " << place.function;
    }
    return ::testing::AssertionFailure() << "nothing was raised";
}

}  // namespace test_support
