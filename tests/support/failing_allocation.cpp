#include "support/failing_allocation.hpp"

#include <cstdlib>
#include <new>

namespace {

long s_successes_left = -1;  // negative while no allocation is to fail
bool s_failed = false;
unsigned long s_allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++s_allocations;
    if (s_successes_left >= 0 && s_successes_left-- == 0) {
        s_failed = true;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace test_support {

failing_allocation::failing_allocation(unsigned successes) {
    s_failed = false;
    s_successes_left = static_cast<long>(successes);
}

failing_allocation::~failing_allocation() {
    s_successes_left = -1;
}

bool failing_allocation::failed() const {
    return s_failed;
}

unsigned long allocations() {
    return s_allocations;
}

}  // namespace test_support
