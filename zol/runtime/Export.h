// The one export macro of the library. Symbols are hidden by default; everything a
// host may call is marked ZOL_API.
#pragma once

#if defined(_WIN32)
#if defined(ZOL_BUILDING_LIBRARY)
#define ZOL_API __declspec(dllexport)
#else
#define ZOL_API __declspec(dllimport)
#endif
#else
#define ZOL_API __attribute__((visibility("default")))
#endif
