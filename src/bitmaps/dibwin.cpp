// The bitmaps' edge to the system's own declarations. The header, palette and
// row code builds without <windows.h>, on the plain layouts of dibrows.h; the
// interface hands the same bytes out as RGBQUAD, PALETTEENTRY and
// BITMAPINFOHEADER. This file holds the compile-time proof that the two agree.
#include <windows.h>
#include <cstddef>
#include "bitmaps/dibrows.h"
#include "rl132/bitmaps/odibhead.h"

namespace {
using rldib::LogEntry;
using rldib::Quad;
using rldib::StoredInfo;

#define RL132_SAME_FIELD(sys, field, plain, plainField)                                   \
    static_assert(offsetof(sys, field) == offsetof(plain, plainField) &&                  \
                      sizeof(((sys*)nullptr)->field) == sizeof(((plain*)nullptr)->plainField), \
                  #sys "::" #field " and " #plain "::" #plainField " differ")

static_assert(sizeof(RGBQUAD) == sizeof(Quad), "RGBQUAD and Quad differ in size");
RL132_SAME_FIELD(RGBQUAD, rgbBlue, Quad, blue);
RL132_SAME_FIELD(RGBQUAD, rgbGreen, Quad, green);
RL132_SAME_FIELD(RGBQUAD, rgbRed, Quad, red);
RL132_SAME_FIELD(RGBQUAD, rgbReserved, Quad, reserved);

static_assert(sizeof(PALETTEENTRY) == sizeof(LogEntry), "PALETTEENTRY and LogEntry differ in size");
RL132_SAME_FIELD(PALETTEENTRY, peRed, LogEntry, red);
RL132_SAME_FIELD(PALETTEENTRY, peGreen, LogEntry, green);
RL132_SAME_FIELD(PALETTEENTRY, peBlue, LogEntry, blue);
RL132_SAME_FIELD(PALETTEENTRY, peFlags, LogEntry, flags);

static_assert(sizeof(BITMAPINFOHEADER) == sizeof(StoredInfo), "BITMAPINFOHEADER and StoredInfo differ in size");
RL132_SAME_FIELD(BITMAPINFOHEADER, biSize, StoredInfo, size);
RL132_SAME_FIELD(BITMAPINFOHEADER, biWidth, StoredInfo, width);
RL132_SAME_FIELD(BITMAPINFOHEADER, biHeight, StoredInfo, height);
RL132_SAME_FIELD(BITMAPINFOHEADER, biPlanes, StoredInfo, planes);
RL132_SAME_FIELD(BITMAPINFOHEADER, biBitCount, StoredInfo, bitCount);
RL132_SAME_FIELD(BITMAPINFOHEADER, biCompression, StoredInfo, compression);
RL132_SAME_FIELD(BITMAPINFOHEADER, biSizeImage, StoredInfo, sizeImage);
RL132_SAME_FIELD(BITMAPINFOHEADER, biXPelsPerMeter, StoredInfo, xPelsPerMeter);
RL132_SAME_FIELD(BITMAPINFOHEADER, biYPelsPerMeter, StoredInfo, yPelsPerMeter);
RL132_SAME_FIELD(BITMAPINFOHEADER, biClrUsed, StoredInfo, clrUsed);
RL132_SAME_FIELD(BITMAPINFOHEADER, biClrImportant, StoredInfo, clrImportant);

#undef RL132_SAME_FIELD
} // namespace
