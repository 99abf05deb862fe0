// Names the instances of a typed test after their type arguments.
#pragma once

#include <string>
#include <typeinfo>

namespace test_support {

struct class_name {
    template <typename Class>
    static std::string GetName(int) {
        return typeid(Class).name();
    }
};

}  // namespace test_support
