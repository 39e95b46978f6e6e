/* The interface of the Photo CD access library PCDLIB32.DLL.
 *
 * RL132 loads the access library by name at run time and resolves every entry
 * point below with GetProcAddress, so this header gives both the prototypes
 * (for the library itself and for programs that link it) and a function
 * pointer type per entry point (PCDxxxProc). Plain C types only, stdcall,
 * undecorated export names.
 *
 * Two kinds of handle:
 *   PCDpkHdl     one image pack (IMAGES\IMGnnnn.PCD), from PCDopen.
 *   PCDoviewHdl  a volume's overview (PHOTO_CD\OVERVIEW.PCD, or one built from
 *                the image packs' Base/16 images when the disc has none), from
 *                PCDOopen. Its entries are numbered from 1, like the packs.
 *
 * Every function returns a PCDstatus: PCD_OK (0) on success, one of the
 * PCD_ERR_ codes otherwise; out parameters are left untouched on failure.
 *
 * Images come out in the current resolution, format and transform of their
 * handle. The transform turns the stored picture by quarter turns
 * counter-clockwise, then mirrors it left to right, then crops it. The crop
 * rectangle is given in pixels of the Base resolution of the turned picture
 * (768 x 512, or 512 x 768 after an odd number of turns) and scaled to the
 * current resolution (left and top rounded down, right and bottom up); an
 * empty rectangle means no crop, one reaching outside is clipped to the
 * picture, and one wholly outside gives PCD_ERR_BAD_ARG when the image is
 * read.
 *
 * Pixels handed out row by row (PCDgetBlock) are top row first; a packed DIB
 * (PCDloadImage, PCDconvertBitmap, PCDapplyTransform) is one block: a 40-byte
 * BITMAPINFOHEADER, the colour table (256 entries for the 8-bit format, none
 * for 24 bits), then the rows bottom-up, each padded to 4 bytes. 24-bit pixels
 * are blue, green, red. Packed DIBs the library returns are freed with
 * PCDfreeBitmap, palettes with PCDfreePalette.
 */
#ifndef RL132_PHOTOCD_PCDAPI_H
#define RL132_PHOTOCD_PCDAPI_H

#if defined(_WIN32)
#  define PCDAPI __stdcall
#else
#  define PCDAPI
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct PCDpack_* PCDpkHdl;
typedef struct PCDoview_* PCDoviewHdl;
typedef long PCDstatus;

/* Statuses. */
enum {
    PCD_OK = 0,
    PCD_ERR_BAD_ARG = 1,            /* null pointer, bad handle, value out of range */
    PCD_ERR_NOT_FOUND = 2,          /* no such file, folder or overview entry */
    PCD_ERR_READ = 3,               /* the file could not be opened or read */
    PCD_ERR_DAMAGED = 4,            /* an offset or size in the pack does not fit the file */
    PCD_ERR_RES_NOT_SUPPORTED = 5,  /* 4Base, 16Base (Huffman-coded residuals) */
    PCD_ERR_ABORTED = 6,            /* the abort callback asked to stop */
    PCD_ERR_NO_MEMORY = 7,          /* allocation failed or the allowance is exceeded */
    PCD_ERR_NOT_PCD = 8,            /* the file is not an image or overview pack */
    PCD_ERR_FORMAT_NOT_SUPPORTED = 9,
    PCD_ERR_DISC_CHANGED = 10,      /* another disc is in, and the callback refused it */
    PCD_ERR_CLOSED = 11             /* the overview's file is released (PCDOrefClose) */
};

/* Resolutions. Only the three base resolutions are decoded. */
enum {
    PCD_BASE_OVER_16 = 0,   /* 192 x 128 */
    PCD_BASE_OVER_4 = 1,    /* 384 x 256 */
    PCD_BASE = 2,           /* 768 x 512 */
    PCD_4BASE = 3,          /* 1536 x 1024: PCD_ERR_RES_NOT_SUPPORTED */
    PCD_16BASE = 4          /* 3072 x 2048: PCD_ERR_RES_NOT_SUPPORTED */
};

/* Pixel formats (the numbers are the ones RL132 uses). */
enum {
    PCD_FORMAT_RGB24 = 12,  /* 24-bit DIB */
    PCD_FORMAT_PAL8 = 13    /* 8-bit DIB over the handle's palette */
};

/* Quarter turns counter-clockwise. */
enum {
    PCD_ROTATE_0 = 0,
    PCD_ROTATE_90 = 1,
    PCD_ROTATE_180 = 2,
    PCD_ROTATE_270 = 3
};

/* Half-open: right and bottom are outside. */
typedef struct PCDrect {
    long left, top, right, bottom;
} PCDrect;

typedef struct PCDtransform {
    long rotation;  /* PCD_ROTATE_ */
    long mirror;    /* non-zero: mirrored left to right after the turn */
    PCDrect crop;   /* Base pixels of the turned picture; empty: none */
} PCDtransform;

/* An 8-bit palette: entries as in a DIB colour table (blue, green, red, 0). */
typedef struct PCDpalette {
    long count;                     /* 1 to 256 */
    unsigned char entries[256][4];
} PCDpalette;

/* What an image pack's header says (PCDreadImageInfo). */
typedef struct PCDimageInfo {
    long versionMajor, versionMinor;
    long rotation;          /* PCD_ROTATE_ that brings the picture upright */
    long resolutions;       /* how many the pack stores (3 to 5) */
    long highestResolution; /* PCD_ */
    long width, height;     /* Base size as stored: 768 x 512 */
    unsigned long scanTime; /* seconds since 1970, 0 when not recorded */
} PCDimageInfo;

/* What the volume's PHOTO_CD\INFO.PCD says (PCDreadInfoFile). */
typedef struct PCDvolumeInfo {
    long versionMajor, versionMinor;
    unsigned char volumeId[12];  /* the disc's serial number */
    unsigned long created;       /* seconds since 1970 */
    unsigned long modified;
    long imageCount;
    long sessionCount;
} PCDvolumeInfo;

/* Callbacks. user is the value given when the callback was set.
 * Progress: done of total steps; the return value is ignored.
 * Abort: non-zero stops the operation with PCD_ERR_ABORTED.
 * Disc changed: called with the new disc's 12-byte identifier when a handle
 * finds another disc than the one it was opened on; non-zero accepts it. */
typedef long (PCDAPI *PCDprogressFn)(unsigned short done, unsigned short total, void* user);
typedef long (PCDAPI *PCDabortFn)(void* user);
typedef long (PCDAPI *PCDdiscChangedFn)(const unsigned char volumeId[12], void* user);

/* ---- image packs ---- */
PCDstatus PCDAPI PCDopen(const char* packPath, PCDpkHdl* pack);
PCDstatus PCDAPI PCDclose(PCDpkHdl pack);
PCDstatus PCDAPI PCDsetResolution(PCDpkHdl pack, long resolution);
PCDstatus PCDAPI PCDgetResolution(PCDpkHdl pack, long* resolution);
/* The turn the pack's header asks for (see PCDimageInfo.rotation). */
PCDstatus PCDAPI PCDgetRotation(PCDpkHdl pack, long* rotation);
PCDstatus PCDAPI PCDsetFormat(PCDpkHdl pack, long format);
PCDstatus PCDAPI PCDgetFormat(PCDpkHdl pack, long* format);
/* How many resolutions the pack stores. */
PCDstatus PCDAPI PCDgetCount(PCDpkHdl pack, long* count);
/* The identifier of the disc the pack was opened on (12 bytes; zeros when
 * the volume has no INFO.PCD). */
PCDstatus PCDAPI PCDgetVolume(PCDpkHdl pack, unsigned char volumeId[12]);
/* Size after the transform at the current resolution. */
PCDstatus PCDAPI PCDgetSize(PCDpkHdl pack, long* width, long* height);
/* The 8-bit format's palette; without one set, a palette is made from the
 * image when it is first read in that format. */
PCDstatus PCDAPI PCDsetPalette(PCDpkHdl pack, const PCDpalette* palette);
PCDstatus PCDAPI PCDgetPalette(PCDpkHdl pack, PCDpalette* palette);
PCDstatus PCDAPI PCDOsetPalette(PCDoviewHdl oview, const PCDpalette* palette);
PCDstatus PCDAPI PCDOgetPalette(PCDoviewHdl oview, PCDpalette* palette);
PCDstatus PCDAPI PCDsetTransform(PCDpkHdl pack, const PCDtransform* transform);
PCDstatus PCDAPI PCDgetTransform(PCDpkHdl pack, PCDtransform* transform);
/* rows rows from firstRow of the transformed image, in the current format,
 * each rowBytes after the previous (at least width * 3 or width). */
PCDstatus PCDAPI PCDgetBlock(PCDpkHdl pack, long firstRow, long rows,
                             unsigned char* buffer, long rowBytes);
/* The whole transformed image as a packed DIB. */
PCDstatus PCDAPI PCDloadImage(PCDpkHdl pack, void** dib);
/* A packed DIB in the other format: 24 to 8 bits over palette (null: a
 * palette made from the image), 8 to 24 bits (palette ignored). */
PCDstatus PCDAPI PCDconvertBitmap(const void* dib, long format,
                                  const PCDpalette* palette, void** result);
PCDstatus PCDAPI PCDfreeBitmap(void* dib);
PCDstatus PCDAPI PCDsetProgress(PCDpkHdl pack, PCDprogressFn fn, void* user);
PCDstatus PCDAPI PCDgetProgress(PCDpkHdl pack, PCDprogressFn* fn, void** user);
PCDstatus PCDAPI PCDsetAbort(PCDpkHdl pack, PCDabortFn fn, void* user);
PCDstatus PCDAPI PCDgetAbort(PCDpkHdl pack, PCDabortFn* fn, void** user);
PCDstatus PCDAPI PCDsetDiscChanged(PCDpkHdl pack, PCDdiscChangedFn fn, void* user);
PCDstatus PCDAPI PCDgetDiscChanged(PCDpkHdl pack, PCDdiscChangedFn* fn, void** user);
/* The transform applied to a packed DIB of an untransformed picture; the
 * crop is scaled by 768 over the DIB's longer side when that is 192, 384 or
 * 768, else taken in the DIB's own pixels. */
PCDstatus PCDAPI PCDapplyTransform(const void* dib, const PCDtransform* transform,
                                   void** result);
PCDstatus PCDAPI PCDreadImageInfo(const char* packPath, PCDimageInfo* info);
/* A palette of up to colours entries (2 to 256) for the pack's image at its
 * current resolution and transform. */
PCDstatus PCDAPI PCDcreatePalette(PCDpkHdl pack, long colours, PCDpalette** palette);
PCDstatus PCDAPI PCDfreePalette(PCDpalette* palette);
/* major * 256 + minor. */
PCDstatus PCDAPI PCDgetToolkitVersion(unsigned long* version);

/* ---- the overview ---- */
PCDstatus PCDAPI PCDOclose(PCDoviewHdl oview);
/* Releases the overview's file but keeps the handle and its settings. */
PCDstatus PCDAPI PCDOrefClose(PCDoviewHdl oview);
/* The full name of entry's image pack in imagesDir (a folder, with or
 * without a trailing backslash; null or empty: the volume's IMAGES folder). */
PCDstatus PCDAPI PCDOgetFriend(PCDoviewHdl oview, const char* imagesDir, long entry,
                               char* packPath, unsigned long pathSize);
PCDstatus PCDAPI PCDOgetCount(PCDoviewHdl oview, long* count);
PCDstatus PCDAPI PCDOgetFormat(PCDoviewHdl oview, long* format);
/* As PCDgetBlock and PCDloadImage, for the selected entry. */
PCDstatus PCDAPI PCDOgetBlock(PCDoviewHdl oview, long firstRow, long rows,
                              unsigned char* buffer, long rowBytes);
PCDstatus PCDAPI PCDOloadImage(PCDoviewHdl oview, void** dib);
PCDstatus PCDAPI PCDOgetResolution(PCDoviewHdl oview, long* resolution);
/* The selected entry's recorded turn. */
PCDstatus PCDAPI PCDOgetRotation(PCDoviewHdl oview, long* rotation);
PCDstatus PCDAPI PCDOgetSelect(PCDoviewHdl oview, long* entry);
PCDstatus PCDAPI PCDOgetSize(PCDoviewHdl oview, long* width, long* height);
PCDstatus PCDAPI PCDOgetTransform(PCDoviewHdl oview, PCDtransform* transform);
/* volumeRoot holds PHOTO_CD\ (or IMAGES\ directly). Entry 1 is selected. */
PCDstatus PCDAPI PCDOopen(const char* volumeRoot, PCDoviewHdl* oview);
/* Takes the overview's file again after PCDOrefClose. */
PCDstatus PCDAPI PCDOrefOpen(PCDoviewHdl oview);
PCDstatus PCDAPI PCDOsetSelect(PCDoviewHdl oview, long entry);
PCDstatus PCDAPI PCDOsetFormat(PCDoviewHdl oview, long format);
/* Overview images are Base/16; other resolutions: PCD_ERR_RES_NOT_SUPPORTED. */
PCDstatus PCDAPI PCDOsetResolution(PCDoviewHdl oview, long resolution);
PCDstatus PCDAPI PCDOsetTransform(PCDoviewHdl oview, const PCDtransform* transform);
PCDstatus PCDAPI PCDOsetDiscChanged(PCDoviewHdl oview, PCDdiscChangedFn fn, void* user);
PCDstatus PCDAPI PCDOgetDiscChanged(PCDoviewHdl oview, PCDdiscChangedFn* fn, void** user);
/* The most memory, in bytes, one decoded image may take (process-wide;
 * default 64 MB); a larger one gives PCD_ERR_NO_MEMORY. */
PCDstatus PCDAPI PCDgetAllowance(unsigned long* bytes);
PCDstatus PCDAPI PCDsetAllowance(unsigned long bytes);
PCDstatus PCDAPI PCDreadInfoFile(const char* volumeRoot, PCDvolumeInfo* info);

/* ---- entry point types, for GetProcAddress ---- */
typedef PCDstatus (PCDAPI *PCDopenProc)(const char*, PCDpkHdl*);
typedef PCDstatus (PCDAPI *PCDcloseProc)(PCDpkHdl);
typedef PCDstatus (PCDAPI *PCDsetResolutionProc)(PCDpkHdl, long);
typedef PCDstatus (PCDAPI *PCDgetResolutionProc)(PCDpkHdl, long*);
typedef PCDstatus (PCDAPI *PCDgetRotationProc)(PCDpkHdl, long*);
typedef PCDstatus (PCDAPI *PCDsetFormatProc)(PCDpkHdl, long);
typedef PCDstatus (PCDAPI *PCDgetFormatProc)(PCDpkHdl, long*);
typedef PCDstatus (PCDAPI *PCDgetCountProc)(PCDpkHdl, long*);
typedef PCDstatus (PCDAPI *PCDgetVolumeProc)(PCDpkHdl, unsigned char*);
typedef PCDstatus (PCDAPI *PCDgetSizeProc)(PCDpkHdl, long*, long*);
typedef PCDstatus (PCDAPI *PCDsetPaletteProc)(PCDpkHdl, const PCDpalette*);
typedef PCDstatus (PCDAPI *PCDgetPaletteProc)(PCDpkHdl, PCDpalette*);
typedef PCDstatus (PCDAPI *PCDOsetPaletteProc)(PCDoviewHdl, const PCDpalette*);
typedef PCDstatus (PCDAPI *PCDOgetPaletteProc)(PCDoviewHdl, PCDpalette*);
typedef PCDstatus (PCDAPI *PCDsetTransformProc)(PCDpkHdl, const PCDtransform*);
typedef PCDstatus (PCDAPI *PCDgetTransformProc)(PCDpkHdl, PCDtransform*);
typedef PCDstatus (PCDAPI *PCDgetBlockProc)(PCDpkHdl, long, long, unsigned char*, long);
typedef PCDstatus (PCDAPI *PCDloadImageProc)(PCDpkHdl, void**);
typedef PCDstatus (PCDAPI *PCDconvertBitmapProc)(const void*, long, const PCDpalette*, void**);
typedef PCDstatus (PCDAPI *PCDfreeBitmapProc)(void*);
typedef PCDstatus (PCDAPI *PCDsetProgressProc)(PCDpkHdl, PCDprogressFn, void*);
typedef PCDstatus (PCDAPI *PCDgetProgressProc)(PCDpkHdl, PCDprogressFn*, void**);
typedef PCDstatus (PCDAPI *PCDsetAbortProc)(PCDpkHdl, PCDabortFn, void*);
typedef PCDstatus (PCDAPI *PCDgetAbortProc)(PCDpkHdl, PCDabortFn*, void**);
typedef PCDstatus (PCDAPI *PCDsetDiscChangedProc)(PCDpkHdl, PCDdiscChangedFn, void*);
typedef PCDstatus (PCDAPI *PCDgetDiscChangedProc)(PCDpkHdl, PCDdiscChangedFn*, void**);
typedef PCDstatus (PCDAPI *PCDapplyTransformProc)(const void*, const PCDtransform*, void**);
typedef PCDstatus (PCDAPI *PCDreadImageInfoProc)(const char*, PCDimageInfo*);
typedef PCDstatus (PCDAPI *PCDcreatePaletteProc)(PCDpkHdl, long, PCDpalette**);
typedef PCDstatus (PCDAPI *PCDfreePaletteProc)(PCDpalette*);
typedef PCDstatus (PCDAPI *PCDgetToolkitVersionProc)(unsigned long*);
typedef PCDstatus (PCDAPI *PCDOcloseProc)(PCDoviewHdl);
typedef PCDstatus (PCDAPI *PCDOrefCloseProc)(PCDoviewHdl);
typedef PCDstatus (PCDAPI *PCDOgetFriendProc)(PCDoviewHdl, const char*, long, char*, unsigned long);
typedef PCDstatus (PCDAPI *PCDOgetCountProc)(PCDoviewHdl, long*);
typedef PCDstatus (PCDAPI *PCDOgetFormatProc)(PCDoviewHdl, long*);
typedef PCDstatus (PCDAPI *PCDOgetBlockProc)(PCDoviewHdl, long, long, unsigned char*, long);
typedef PCDstatus (PCDAPI *PCDOloadImageProc)(PCDoviewHdl, void**);
typedef PCDstatus (PCDAPI *PCDOgetResolutionProc)(PCDoviewHdl, long*);
typedef PCDstatus (PCDAPI *PCDOgetRotationProc)(PCDoviewHdl, long*);
typedef PCDstatus (PCDAPI *PCDOgetSelectProc)(PCDoviewHdl, long*);
typedef PCDstatus (PCDAPI *PCDOgetSizeProc)(PCDoviewHdl, long*, long*);
typedef PCDstatus (PCDAPI *PCDOgetTransformProc)(PCDoviewHdl, PCDtransform*);
typedef PCDstatus (PCDAPI *PCDOopenProc)(const char*, PCDoviewHdl*);
typedef PCDstatus (PCDAPI *PCDOrefOpenProc)(PCDoviewHdl);
typedef PCDstatus (PCDAPI *PCDOsetSelectProc)(PCDoviewHdl, long);
typedef PCDstatus (PCDAPI *PCDOsetFormatProc)(PCDoviewHdl, long);
typedef PCDstatus (PCDAPI *PCDOsetResolutionProc)(PCDoviewHdl, long);
typedef PCDstatus (PCDAPI *PCDOsetTransformProc)(PCDoviewHdl, const PCDtransform*);
typedef PCDstatus (PCDAPI *PCDOsetDiscChangedProc)(PCDoviewHdl, PCDdiscChangedFn, void*);
typedef PCDstatus (PCDAPI *PCDOgetDiscChangedProc)(PCDoviewHdl, PCDdiscChangedFn*, void**);
typedef PCDstatus (PCDAPI *PCDgetAllowanceProc)(unsigned long*);
typedef PCDstatus (PCDAPI *PCDsetAllowanceProc)(unsigned long);
typedef PCDstatus (PCDAPI *PCDreadInfoFileProc)(const char*, PCDvolumeInfo*);

/* Every entry point in the order the library resolves them: X(name) per
 * entry; name##Proc is its pointer type and #name its export name. */
#define PCD_ENTRY_POINTS(X) \
    X(PCDopen) X(PCDclose) X(PCDsetResolution) X(PCDgetResolution) \
    X(PCDgetRotation) X(PCDsetFormat) X(PCDgetFormat) X(PCDgetCount) \
    X(PCDgetVolume) X(PCDgetSize) X(PCDsetPalette) X(PCDgetPalette) \
    X(PCDOsetPalette) X(PCDOgetPalette) X(PCDsetTransform) X(PCDgetTransform) \
    X(PCDgetBlock) X(PCDloadImage) X(PCDconvertBitmap) X(PCDfreeBitmap) \
    X(PCDsetProgress) X(PCDgetProgress) X(PCDsetAbort) X(PCDgetAbort) \
    X(PCDsetDiscChanged) X(PCDgetDiscChanged) X(PCDapplyTransform) X(PCDreadImageInfo) \
    X(PCDcreatePalette) X(PCDfreePalette) X(PCDgetToolkitVersion) X(PCDOclose) \
    X(PCDOrefClose) X(PCDOgetFriend) X(PCDOgetCount) X(PCDOgetFormat) \
    X(PCDOgetBlock) X(PCDOloadImage) X(PCDOgetResolution) X(PCDOgetRotation) \
    X(PCDOgetSelect) X(PCDOgetSize) X(PCDOgetTransform) X(PCDOopen) \
    X(PCDOrefOpen) X(PCDOsetSelect) X(PCDOsetFormat) X(PCDOsetResolution) \
    X(PCDOsetTransform) X(PCDOsetDiscChanged) X(PCDOgetDiscChanged) X(PCDgetAllowance) \
    X(PCDsetAllowance) X(PCDreadInfoFile)

#ifdef __cplusplus
}
#endif

#endif
