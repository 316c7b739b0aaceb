// The library's own allocations: every text it hands out and every block of
// the input list is allocated through Allocate or Reallocate. The shipped
// library calls malloc and realloc directly. A test build of the objects
// (KX_ALLOCATION_FAILURES) counts the allocations and can make the Nth one
// fail, the way Lua's test build and SQLite's OOM loops do, so that every
// "when memory runs out" promise can be checked.
#ifndef KX_CORE_ALLOC_H
#define KX_CORE_ALLOC_H

#include <cstddef>
#include <cstdlib>

namespace kx::core {

#ifdef KX_ALLOCATION_FAILURES
void *Allocate(std::size_t size);
void *Reallocate(void *block, std::size_t size);

// From now on, allocation number n (counting from 1) fails, and so does every
// later one; 0 lets all succeed. The count starts again at each call.
void FailAllocationsFrom(long n);
// Allocations asked for since the last FailAllocationsFrom, the failed ones too.
long AllocationsSoFar();
// True when an allocation has failed since the last FailAllocationsFrom.
bool AnAllocationFailed();
#else
inline void *Allocate(std::size_t size) { return std::malloc(size); }
inline void *Reallocate(void *block, std::size_t size) { return std::realloc(block, size); }
#endif

}  // namespace kx::core

#endif
