// A function object for the tests of delegates. It logs each clone, call and destruction.
#pragma once

#include <tova/functor/function_type_interface.hpp>

#include <string>

namespace test_support {

template <typename Signature>
class counting_function;

template <typename... Arguments>
class counting_function<void(Arguments...)>
    : public tova::functor::function_type_interface<void(Arguments...)> {
public:
    typedef tova::functor::function_type_interface<void(Arguments...)> base;

    counting_function(std::string& log, const char* name) : m_log(&log), m_name(name) {}
    ~counting_function() TOVA_NOTHROW override { *m_log += "delete " + m_name + "; "; }

    void invoke(Arguments...) override { *m_log += "call " + m_name + "; "; }
    bool do_equal(const base& other) const override { return this == &other; }
    base* do_clone() const override {
        *m_log += "clone " + m_name + "; ";
        return new counting_function(*m_log, (m_name + "'").c_str());
    }

private:
    std::string* m_log;
    std::string m_name;
};

}  // namespace test_support
