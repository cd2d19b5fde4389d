/// Whether everything takes many times as long: in a build that looks at every access, or by an
/// emulator.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ZVWT_TEST_EMULATED)
constexpr bool isSlowRun = true;
#elif defined(__has_feature)
constexpr bool isSlowRun = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSlowRun = false;
#endif
