// What the library calls in the imaging library "LEAD51N.DLL", declared with
// our own types. No header of that library is used here: the signatures
// follow the vendor's published documentation as far as we use it, and the
// bitmap record below is our own declaration of the part of it we touch. The
// stand-in library of the tests (tests/dlls/LEAD51N) is built from this same
// header, so the two always agree.
//
// Every operation is exported undecorated with the standard calling
// convention and answers LEAD_SUCCESS (1) when it did its work; any other
// value is a failure and leaves the caller to do the work itself.
//
//   L_InitBitmap(bitmap, width, height, bitsPerPixel)
//       an empty bitmap record of that size; no pixels yet.
//   L_ConvertFromDIB(bitmap, info, bits)
//       the record's pixels made from a DIB (header, colour table, rows).
//   L_InvertBitmap(bitmap)
//       the negative, in place.
//   L_ColorSeparateBitmap(bitmap, planes, flags)
//       with LEAD_COLORSEP_CMYK, planes[0..3] become 8-bit records of the
//       cyan, magenta, yellow and black ink of each pixel, 0 none to 255 full.
//   L_ChangeToDIB(bitmap)
//       the record's pixels handed back as one packed DIB in movable global
//       memory (40-byte header, colour table, rows bottom-up), which the
//       caller frees; the record is emptied. Null when it cannot.
#ifndef RL132_SRC_PLATFORM_LEADABI_H
#define RL132_SRC_PLATFORM_LEADABI_H

#if defined(_WIN32)
#define LEAD_API __stdcall
#else
#define LEAD_API
#endif

enum {
    LEAD_SUCCESS = 1,
    LEAD_COLORSEP_CMYK = 2
};

// The bitmap record. The caller provides the storage and only reads the
// size fields; the pixels belong to the library until L_ChangeToDIB.
struct LEADBITMAP {
    unsigned long structSize;   // sizeof(LEADBITMAP), set by L_InitBitmap
    long width;
    long height;
    int bitsPerPixel;
    unsigned long bytesPerLine;
    void* pixels;
    void* reserved[10];
};

typedef int(LEAD_API* LEAD_INITBITMAP)(LEADBITMAP* bitmap, int width, int height, int bitsPerPixel);
typedef int(LEAD_API* LEAD_CONVERTFROMDIB)(LEADBITMAP* bitmap, const void* info, const void* bits);
typedef int(LEAD_API* LEAD_INVERTBITMAP)(LEADBITMAP* bitmap);
typedef int(LEAD_API* LEAD_COLORSEPARATEBITMAP)(LEADBITMAP* bitmap, LEADBITMAP* planes, unsigned long flags);
typedef void*(LEAD_API* LEAD_CHANGETODIB)(LEADBITMAP* bitmap);

#endif
