#pragma once

/** Defined with the address sanitizer, which needs memory and has its own allocator. */
#if defined(__SANITIZE_ADDRESS__)
#define VX_HAS_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_HAS_ADDRESS_SANITIZER
#endif
#endif
