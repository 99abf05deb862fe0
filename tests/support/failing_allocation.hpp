// Makes a chosen allocation of the program fail, inside the library as well. A test program that
// uses this header links tova_failing_allocation, which replaces operator new.
#pragma once

namespace test_support {

// While an object of this class exists, one allocation fails: the first one after `successes`
// others.
class failing_allocation {
public:
    explicit failing_allocation(unsigned successes = 0);
    ~failing_allocation();
    failing_allocation(const failing_allocation&) = delete;
    failing_allocation& operator=(const failing_allocation&) = delete;

    // Whether that allocation was requested, and failed.
    bool failed() const;
};

// The number of allocations that the program has made so far.
unsigned long allocations();

// The number of allocations not yet released. Only the difference between two calls is meaningful.
long live_allocations();

}  // namespace test_support
