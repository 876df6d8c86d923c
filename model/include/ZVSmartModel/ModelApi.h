#pragma once

// What the shared library exports. Define ZVSMARTMODEL_STATIC where it is linked statically.
#if defined(_WIN32) && !defined(ZVSMARTMODEL_STATIC)
#ifdef ZVSMARTMODEL_BUILDING
#define ZVSM_API __declspec(dllexport)
#else
#define ZVSM_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define ZVSM_API __attribute__((visibility("default")))
#else
#define ZVSM_API
#endif
