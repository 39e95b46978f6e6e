// The Windows types that the public interface takes, and nothing else of the
// system headers.
//
// A host that includes rl132.h must not receive <windows.h> with it: its
// macros would rename the host's own DrawText, GetObject or CreateMetaFile
// (and the library's DrawTextA and GetCharWidthA members collide with them).
// So the public headers name handles and structures through this header only.
// Every declaration here agrees with the system's own, whichever of the two a
// file includes first: a handle is the pointer to an incomplete struct that
// STRICT's DECLARE_HANDLE gives, a structure is its tag declared but not
// defined, and C++ allows a typedef to be repeated for the same type. The
// library's implementation files include <windows.h> themselves.
#ifndef RL132_CORE_RLWIN_H
#define RL132_CORE_RLWIN_H

// Outside Windows (the native builds of the kernels) the same names stand for
// types of the target's widths, so that a DWORD field stays 32 bits there too.
#ifndef _WIN32
#include <cstdint>
#endif

#define RL132_DECLARE_HANDLE(name) struct name##__; typedef struct name##__* name

RL132_DECLARE_HANDLE(HWND);
RL132_DECLARE_HANDLE(HINSTANCE);
RL132_DECLARE_HANDLE(HDC);
RL132_DECLARE_HANDLE(HPALETTE);
RL132_DECLARE_HANDLE(HBITMAP);
RL132_DECLARE_HANDLE(HRGN);
RL132_DECLARE_HANDLE(HPEN);
RL132_DECLARE_HANDLE(HBRUSH);
RL132_DECLARE_HANDLE(HFONT);
RL132_DECLARE_HANDLE(HMETAFILE);
#undef RL132_DECLARE_HANDLE

typedef HINSTANCE HMODULE;
typedef void* HANDLE;
typedef void* HGDIOBJ;
typedef HANDLE HGLOBAL;

typedef unsigned char BYTE;
typedef unsigned short WORD;
#ifdef _WIN32
typedef unsigned long DWORD;
typedef long LONG;
#else
typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
#endif
typedef unsigned int UINT;
typedef DWORD COLORREF;

struct tagPOINT;
typedef struct tagPOINT POINT;
struct tagRECT;
typedef struct tagRECT RECT;
struct tagRGBQUAD;
typedef struct tagRGBQUAD RGBQUAD;
struct tagPALETTEENTRY;
typedef struct tagPALETTEENTRY PALETTEENTRY;
struct tagLOGPALETTE;
typedef struct tagLOGPALETTE LOGPALETTE;
struct tagBITMAPINFOHEADER;
typedef struct tagBITMAPINFOHEADER BITMAPINFOHEADER;
struct tagBITMAPINFO;
typedef struct tagBITMAPINFO BITMAPINFO;
struct tagLOGFONTA;
typedef struct tagLOGFONTA LOGFONTA;
struct tagTEXTMETRICA;
typedef struct tagTEXTMETRICA TEXTMETRICA;
struct tagMETARECORD;
typedef struct tagMETARECORD METARECORD;
struct tagHANDLETABLE;
typedef struct tagHANDLETABLE HANDLETABLE;
struct IStream;

#endif
