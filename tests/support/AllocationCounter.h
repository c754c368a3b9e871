#pragma once

#include <cstddef>

/** Heap allocations of this process so far, by whichever operation: malloc, new, Qt's containers.
 */
size_t allocationsSoFar();
