// The stored headers of a bitmap file as found on disk, shared by `info` and
// `resize` (defined in cmd_info.cpp).
#ifndef RLTOOL_BMPFILE_H
#define RLTOOL_BMPFILE_H

struct RlBmpSummary {
    bool fileHeader;
    unsigned long fileSize;
    unsigned long infoSize;
    long width, height;
    unsigned planes, bits;
    unsigned long compression, sizeImage, clrUsed;
    long xPels, yPels;
};

// Reads the headers of a file; false when it cannot be read at all.
bool rltool_bmp_summary(const char* path, RlBmpSummary* s);
// Why the library refuses the file, or null when it reads it.
const char* rltool_bmp_refusal(const RlBmpSummary& s);

#endif
