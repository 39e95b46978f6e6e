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

// Library version, also carried by the DLL's version resource.
#define RL132_VERSION_MAJOR 1
#define RL132_VERSION_MINOR 0
#define RL132_VERSION_PATCH 0
#define RL132_VERSION_STRING "1.0.0"

#endif
