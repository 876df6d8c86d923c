#pragma once

// ZVFT_API marks what the shared library exports. A static build defines ZVSMARTZVG_STATIC
// for the library and for its users; the library's own build defines ZVSMARTZVG_BUILDING.

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
