// Basic definitions shared by every public header of RL132.
// This header must stay free of <windows.h>: the algorithmic kernels include it
// and are also built natively (sanitizers, fuzzing).
#ifndef RL132_CORE_RLDEFS_H
#define RL132_CORE_RLDEFS_H

#if defined(_WIN32) && !defined(RL132_STATIC)
#  if defined(RL132_BUILDING_DLL)
#    define RL132_API __declspec(dllexport)
#  else
#    define RL132_API __declspec(dllimport)
#  endif
#else
#  define RL132_API
#endif

// Members defined inside a class body are exported too: GCC exports a dllexport
// class's inline members only when each is marked, and a host must find every
// member in the DLL.
#if defined(_WIN32) && defined(__GNUC__) && defined(RL132_BUILDING_DLL)
#  define RL132_INLINE __attribute__((dllexport))
#else
#  define RL132_INLINE
#endif

// The system's callback convention (stdcall on 32-bit Windows). The DLL exports
// stdcall functions under both their decorated and plain names.
#if defined(_WIN32)
#  define RL132_CALLBACK __stdcall
#else
#  define RL132_CALLBACK
#endif

// Library version, also carried by the DLL's version resource.
#define RL132_VERSION_MAJOR 1
#define RL132_VERSION_MINOR 0
#define RL132_VERSION_PATCH 0
#define RL132_VERSION_STRING "1.0.0"

#endif
