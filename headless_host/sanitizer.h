// HEADLESS_HOST_ADDRESS_SANITIZER is 1 in a build with AddressSanitizer, 0 otherwise. Internal to the host.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define HEADLESS_HOST_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HEADLESS_HOST_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef HEADLESS_HOST_ADDRESS_SANITIZER
#define HEADLESS_HOST_ADDRESS_SANITIZER 0
#endif
