/// What a shared library shows of itself: everything is hidden unless it is marked ZVB_API.
#pragma once

#if defined(ZVB_STATIC)
#define ZVB_API
#elif defined(_WIN32)
#if defined(ZVB_BUILDING)
#define ZVB_API __declspec(dllexport)
#else
#define ZVB_API __declspec(dllimport)
#endif
#else
#define ZVB_API __attribute__((visibility("default")))
#endif
