// Version of the library and the macro that exports its classes.
#pragma once

// The version of these headers, in parts and as text.
#define XELCSV_VERSION_MAJOR 1
#define XELCSV_VERSION_MINOR 0
#define XELCSV_VERSION_PATCH 0
#define XELCSV_VERSION "1.0.0"

// XELCSV_BUILDING is defined while the library itself is compiled, XELCSV_STATIC for a program that links it
// statically.
#if defined(_WIN32) && !defined(XELCSV_STATIC)
#ifdef XELCSV_BUILDING
#define XELCSV_API __declspec(dllexport)
#else
#define XELCSV_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define XELCSV_API __attribute__((visibility("default")))
#else
#define XELCSV_API
#endif
