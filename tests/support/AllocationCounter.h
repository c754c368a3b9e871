#pragma once

#include <cstddef>

#include "Sanitizer.h"

#ifdef VX_HAS_ADDRESS_SANITIZER
inline constexpr bool kCountsAllocations = false; ///< the sanitizer has a heap of its own
#else
inline constexpr bool kCountsAllocations = true;
#endif

/** Heap allocations of this process so far, by malloc, new, Qt's containers. */
size_t allocationsSoFar();
