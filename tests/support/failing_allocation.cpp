#include "support/failing_allocation.hpp"

#include <cstdlib>
#include <new>

namespace {

long s_successes_left = -1;  // negative if no allocation is to fail
bool s_failed = false;
unsigned long s_allocations = 0;
long s_live = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++s_allocations;
    if (s_successes_left >= 0 && s_successes_left-- == 0) {
        s_failed = true;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        ++s_live;
        return memory;
    }
    throw std::bad_alloc();
}

// The sanitizers have their own form, whose memory operator delete below must not free.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    s_live -= memory != nullptr;
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
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

long live_allocations() {
    return s_live;
}

}  // namespace test_support
