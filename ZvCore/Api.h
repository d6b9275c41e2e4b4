// Marks what the engine's shared library exports. Put ZV_API on a class to export it whole, members and
// type information included; everything without it stays hidden.
#pragma once

#if defined(_WIN32)
#if defined(ZELVAN_BUILDING)
#define ZV_API __declspec(dllexport)
#else
#define ZV_API __declspec(dllimport)
#endif
#else
#define ZV_API __attribute__((visibility("default")))
#endif
