/// Whether this is a build that looks at every access, which takes many times as long.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool underSanitizer = true;
#elif defined(__has_feature)
constexpr bool underSanitizer = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool underSanitizer = false;
#endif
