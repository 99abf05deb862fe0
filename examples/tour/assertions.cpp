// Soft assertions: a failed one calls the program's hook, and the program goes on.

#include <iostream>
#include <string>

#include <tova/tova.hpp>

namespace {

// Counts what fails. The hook may also throw, which ends the function that asserted.
class failure_log {
public:
    void record(const char* expression, const char*, unsigned int&) {
        ++m_count;
        std::cout << "assertion failed: " << expression << '\n';
    }
    int count() const { return m_count; }

private:
    int m_count = 0;
};

int average(int sum, int count) {
    TOVA_ASSERT(count > 0);
    TOVA_CONTEXT_ASSERT(sum < 1000, "sum is %d", sum);
    return count > 0 ? sum / count : 0;
}

}  // namespace

int main(int count, char** words) {
    if (count > 1 && std::string(words[1]) == "--help") {
        std::cout << "usage: assertions\n\n"
                     "Installs an assertion hook and lets two assertions fail.\n\n"
                     "Exit status: 0.\n";
        return 0;
    }
    average(1, 0);  // without a hook a failed assertion does nothing

    failure_log log;
    using signature = void(const char*, const char*, unsigned int&);
    const tova::functor::member_function_t<failure_log, signature> hook(&log, &failure_log::record);
    tova::debug::set_assert_hook(tova::functor::delegate_t<signature>(hook));
    std::cout << "average: " << average(12, 3) << '\n';
    average(1, 0);
    average(2000, 2);
    std::cout << log.count() << " failures\n";

    tova::debug::set_assert_hook(tova::types::nil);  // the log goes out of scope now
}
