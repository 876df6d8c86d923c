#pragma once

// ZVFT_API marks what the shared library exports. A static build defines ZVSMARTZVG_STATIC
// for the library and for its users; the library's own build defines ZVSMARTZVG_BUILDING.
// ZVFT_LOCAL keeps a class inside an exported one from being exported with it.

#if defined(ZVSMARTZVG_STATIC)
#define ZVFT_API
#elif defined(_WIN32)
#if defined(ZVSMARTZVG_BUILDING)
#define ZVFT_API __declspec(dllexport)
#else
#define ZVFT_API __declspec(dllimport)
#endif
#else
#define ZVFT_API __attribute__((visibility("default")))
#endif

#if defined(ZVSMARTZVG_STATIC) || defined(_WIN32)
#define ZVFT_LOCAL
#else
#define ZVFT_LOCAL __attribute__((visibility("hidden")))
#endif
