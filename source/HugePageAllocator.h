#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <new>

constexpr size_t kHugePageBytes = 2 * 1024 * 1024;

/**
 * Memory for a std::vector: an array that fills a huge page exactly gets one, aligned, for which
 * the kernel is asked to use a huge page. Without such pages it is ordinary memory. Everything
 * smaller comes from the heap.
 */
template <typename T>
class HugePageAllocator
{
public:
    using value_type = T;

    HugePageAllocator() = default;
    template <typename U>
    explicit HugePageAllocator(const HugePageAllocator<U>&)
    {
    }

    /** Throws std::bad_alloc, as the heap does. */
    T* allocate(size_t count)
    {
        return static_cast<T*>(fillsHugePage(count) ? mapHugePage()
                                                    : ::operator new(count * sizeof(T)));
    }

    void deallocate(T* memory, size_t count)
    {
        if (fillsHugePage(count)) {
            munmap(memory, kHugePageBytes);
        } else {
            ::operator delete(memory);
        }
    }

    friend bool operator==(const HugePageAllocator&, const HugePageAllocator&) { return true; }
    friend bool operator!=(const HugePageAllocator&, const HugePageAllocator&) { return false; }

private:
    static bool fillsHugePage(size_t count) { return count == kHugePageBytes / sizeof(T); }

    /** Maps twice the size, and gives back what lies before and after the aligned half. */
    static void* mapHugePage()
    {
        void* const mapped = mmap(nullptr, 2 * kHugePageBytes, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) {
            throw std::bad_alloc();
        }
        char* const begin = static_cast<char*>(mapped);
        const size_t before = kHugePageBytes - reinterpret_cast<uintptr_t>(mapped) % kHugePageBytes;
        char* const page = begin + before;
        munmap(begin, before);
        if (before < kHugePageBytes) {
            munmap(page + kHugePageBytes, kHugePageBytes - before);
        }
        madvise(page, kHugePageBytes, MADV_HUGEPAGE); // a refusal changes nothing but the speed
        return page;
    }
};
