#pragma once

/** Defined where the address sanitizer is built in: it needs memory, and the allocator for itself. */
#if defined(__SANITIZE_ADDRESS__)
#define VX_HAS_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_HAS_ADDRESS_SANITIZER
#endif
#endif
