// The counting allocator of the test build; empty in the shipped library.
#include "core/alloc.h"

#ifdef KX_ALLOCATION_FAILURES

namespace kx::core {
namespace {

struct Counter {
    long failFrom = 0;
    long asked = 0;
    bool failed = false;
};

Counter &State() {
    static Counter counter;
    return counter;
}

bool Refuse() {
    Counter &counter = State();
    ++counter.asked;
    if (counter.failFrom <= 0 || counter.asked < counter.failFrom) return false;
    counter.failed = true;
    return true;
}

}  // namespace

void *Allocate(std::size_t size) { return Refuse() ? nullptr : std::malloc(size); }

void *Reallocate(void *block, std::size_t size) { return Refuse() ? nullptr : std::realloc(block, size); }

void FailAllocationsFrom(long n) { State() = Counter{n, 0, false}; }

long AllocationsSoFar() { return State().asked; }

bool AnAllocationFailed() { return State().failed; }

}  // namespace kx::core

#endif
