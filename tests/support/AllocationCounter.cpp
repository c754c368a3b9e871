#include "AllocationCounter.h"

namespace {
size_t gAllocations = 0;
}

size_t allocationsSoFar()
{
    return gAllocations;
}

#ifdef __SANITIZE_ADDRESS__
// The compiler's own copy of the sanitizer has the operation, but not the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*,
                                                                          size_t),
                                                         void (*onFree)(const volatile void*));

namespace {
// The sanitizer's allocator stays in its place and tells.
const int kInstalled = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, size_t) { ++gAllocations; }, [](const volatile void*) {});
} // namespace
#else
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the C library's names
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

void* malloc(size_t size)
{
    ++gAllocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    ++gAllocations;
    return __libc_calloc(count, size);
}

void* realloc(void* old, size_t size)
{
    ++gAllocations;
    return __libc_realloc(old, size);
}
}
#endif
