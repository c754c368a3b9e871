#include "AllocationCounter.h"

namespace {
size_t gAllocations = 0;
}

size_t allocationsSoFar()
{
    return gAllocations;
}

// The sanitizer has its own; with it, nothing is counted.
#ifndef VX_HAS_ADDRESS_SANITIZER
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the C library's names
void* __libc_malloc(size_t size);
void* __libc_realloc(void* old, size_t size);
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

void* malloc(size_t size)
{
    ++gAllocations;
    return __libc_malloc(size);
}

void* realloc(void* old, size_t size)
{
    ++gAllocations;
    return __libc_realloc(old, size);
}
}
#endif
