#pragma once

// Which sanitizer this build has: GCC and clang tell in different ways.

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VOXTREL_ADDRESS_SANITIZER 1
#endif
#if __has_feature(thread_sanitizer)
#define VOXTREL_THREAD_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(VOXTREL_ADDRESS_SANITIZER)
#define VOXTREL_ADDRESS_SANITIZER 1
#endif
#if defined(__SANITIZE_THREAD__) && !defined(VOXTREL_THREAD_SANITIZER)
#define VOXTREL_THREAD_SANITIZER 1
#endif
