/// Whether everything takes many times as long: in a build that looks at every access, or by an
/// emulator.
#pragma once

#ifdef ZVWT_TEST_EMULATED
constexpr bool isEmulated = true;
#else
constexpr bool isEmulated = false;
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSlowRun = true;
#elif defined(__has_feature)
constexpr bool isSlowRun =
    isEmulated || __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSlowRun = isEmulated;
#endif
