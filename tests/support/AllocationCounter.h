#pragma once

#include <cstddef>

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kCountsAllocations = false; ///< the sanitizer has a heap of its own
#else
inline constexpr bool kCountsAllocations = true;
#endif

/** Heap allocations of this process so far, by malloc, new, Qt's containers. */
size_t allocationsSoFar();
