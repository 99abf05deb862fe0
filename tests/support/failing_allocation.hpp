// Lets a chosen allocation of the program fail, inside the library as well. A test program that
// uses this lists ../support/failing_allocation.cpp among its sources: the file replaces operator
// new.
#pragma once

namespace test_support {

// From its making to its end the allocation behind `successes` further ones fails, once.
class failing_allocation {
public:
    explicit failing_allocation(unsigned successes = 0);
    ~failing_allocation();
    failing_allocation(const failing_allocation&) = delete;
    failing_allocation& operator=(const failing_allocation&) = delete;

    // Whether the failure was met.
    bool failed() const;
};

// The number of allocations of the program so far.
unsigned long allocations();

// The number of those that are not yet released; to be compared with an earlier number.
long live_allocations();

}  // namespace test_support
