// Image export plug-ins: one library per file format, named "rlph<format>.dll",
// turning a Photo CD image into a file of that format as header, pixel bytes
// and footer. The library drives the export; a plug-in only produces bytes.
//
// The seven entries, exported under these plain names, in the order the
// library calls them:
//
//   startExport        (image, info)                  0 when the plug-in takes
//                                                     the image as described
//   getHeaderSize      (info)                         bytes of header, may be 0
//   getHeader          (info, buffer, size)           fills buffer; returns the
//                                                     bytes filled (must be size)
//   convertImageBytes  (rows, count, target, rowBytes) turns count source rows,
//                                                     rowBytes apart, into file
//                                                     bytes; returns how many
//   getFooterSize      (info)                         as for the header
//   getFooter          (info, buffer, size)
//   finishExport       (image, info)                  all was written (its
//                                                     result is not consulted)
//
// startExport and finishExport are optional; the other five must be present.
// The first failure ends the export at once: no further entry is called, not
// even finishExport, so a plug-in sets itself up afresh in every startExport.
//
// The format information block is filled by the library before startExport
// and then read by the plug-in, which answers in its last two fields: the row
// order it wants the source rows in, and the most bytes it makes of one source
// row (the library's conversion buffer holds that many per row of a band).
// Until a plug-in changes them they say top-down and sourceRowBytes.
// The block stays valid, unchanged, until finishExport returns.
//
// Plain C types of fixed width only: the header is shared by the library, the
// plug-ins (built apart from it) and the native tests of their encoders.
#ifndef RL132_PHOTOCD_RLPHPLUG_H
#define RL132_PHOTOCD_RLPHPLUG_H
#include <stdint.h>

#if defined(_WIN32)
#  define RLPH_CALL __stdcall
#else
#  define RLPH_CALL
#endif

// The plug-in library's name: wsprintfA(name, RLPH_NAME_PATTERN, format).
#define RLPH_NAME_PATTERN "rlph%s.dll"

// Source pixel layouts (RLPHFORMATINFO::pixelLayout).
enum {
    RLPH_PIXELS_RGB = 0,    // 3 bytes a pixel: red, green, blue
    RLPH_PIXELS_BGR = 1,    // 3 bytes a pixel: blue, green, red
    RLPH_PIXELS_INDEX = 2   // 1 byte a pixel: an index into the palette
};

// Row orders (RLPHFORMATINFO::rowOrder).
enum {
    RLPH_ROWS_TOP_DOWN = 0,  // the image's first row first
    RLPH_ROWS_BOTTOM_UP = 1  // its last row first
};

#define RLPH_INFO_VERSION 1

typedef struct RLPHFORMATINFO {
    // Set by the library.
    uint32_t size;           // sizeof(RLPHFORMATINFO); a plug-in refuses other sizes
    uint32_t version;        // RLPH_INFO_VERSION
    int32_t width;           // pixels, at least 1
    int32_t height;          // rows, at least 1
    uint16_t bitsPerPixel;   // 24 (RGB or BGR layout) or 8 (index layout)
    uint16_t pixelLayout;    // RLPH_PIXELS_*
    uint32_t sourceRowBytes; // distance between source rows; at least one row's pixels
    uint16_t paletteEntries; // 8-bit: the palette's used entries (1 to 256), else 0
    uint16_t reserved0;
    uint8_t palette[256][3]; // red, green, blue; entries past paletteEntries are 0
    uint32_t dotsPerMetre;   // the image's resolution; 0 when unknown
    // Answered by the plug-in in startExport.
    uint16_t rowOrder;       // RLPH_ROWS_*
    uint16_t reserved1;
    uint32_t maxRowBytes;    // the most file bytes one source row can become
} RLPHFORMATINFO;

// The entries' types, for the library that resolves them by name.
typedef int(RLPH_CALL* RLPH_STARTEXPORT)(void* image, RLPHFORMATINFO* info);
typedef uint32_t(RLPH_CALL* RLPH_GETHEADERSIZE)(const RLPHFORMATINFO* info);
typedef uint32_t(RLPH_CALL* RLPH_GETHEADER)(const RLPHFORMATINFO* info, void* buffer, uint32_t size);
typedef uint32_t(RLPH_CALL* RLPH_CONVERTIMAGEBYTES)(const void* rows, uint32_t count, void* target,
                                                    uint32_t rowBytes);
typedef uint32_t(RLPH_CALL* RLPH_GETFOOTERSIZE)(const RLPHFORMATINFO* info);
typedef uint32_t(RLPH_CALL* RLPH_GETFOOTER)(const RLPHFORMATINFO* info, void* buffer, uint32_t size);
typedef int(RLPH_CALL* RLPH_FINISHEXPORT)(void* image, const RLPHFORMATINFO* info);

#endif
