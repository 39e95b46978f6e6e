// The BMP export plug-in (rlphbmp.dll): a Windows bitmap file, uncompressed,
// 24 bits a pixel or 8 with a 256-entry palette.
//
// File layout (all little-endian):
//   file header   14 bytes  "BM", file size, two reserved words, offset of the pixels
//   info header   40 bytes  size 40, width, height (positive: rows stored bottom-up),
//                           planes 1, bits per pixel, compression 0, pixel bytes,
//                           horizontal and vertical pixels per metre, colours used 0
//                           (all 2^bits), important colours 0
//   palette       8-bit only: 256 entries of blue, green, red, 0
//   pixels        the image's last row first, each row padded to 4 bytes; 24-bit
//                 pixels as blue, green, red
// No footer.
#include "rlphenc.h"

namespace rlph {

class BMPENCODER : public ENCODER {
protected:
    bool Begin(uint16_t& rowOrder, uint32_t& maxRowBytes) override
    {
        rowBytes = (PixelBytes() + 3) & ~3u;
        uint64_t total = (uint64_t)HeaderBytes() + (uint64_t)rowBytes * (uint32_t)image.height;
        if (total > 0xFFFFFFFFu)
            return false;
        rowOrder = RLPH_ROWS_BOTTOM_UP;
        maxRowBytes = rowBytes;
        return true;
    }

    uint32_t HeaderBytes() const override { return 14 + 40 + (image.bitsPerPixel == 8 ? 256 * 4 : 0); }

    void WriteHeader(uint8_t* out) const override
    {
        uint32_t pixels = rowBytes * (uint32_t)image.height;
        uint8_t* p = out;
        *p++ = 'B';
        *p++ = 'M';
        p = Put32(p, HeaderBytes() + pixels);
        p = Put32(p, 0);
        p = Put32(p, HeaderBytes());
        p = Put32(p, 40);
        p = Put32(p, (uint32_t)image.width);
        p = Put32(p, (uint32_t)image.height);
        p = Put16(p, 1);
        p = Put16(p, image.bitsPerPixel);
        p = Put32(p, 0);
        p = Put32(p, pixels);
        p = Put32(p, image.dotsPerMetre);
        p = Put32(p, image.dotsPerMetre);
        p = Put32(p, 0);
        p = Put32(p, 0);
        if (image.bitsPerPixel == 8)
            for (int i = 0; i < 256; ++i, p += 4) {
                p[0] = image.palette[i][2];
                p[1] = image.palette[i][1];
                p[2] = image.palette[i][0];
            }
    }

    uint32_t ConvertRow(const uint8_t* row, uint8_t* out) override
    {
        uint32_t n = PixelBytes();
        if (image.bitsPerPixel == 8) {
            memcpy(out, row, n);
        } else {
            uint8_t rgb[3];
            for (int32_t x = 0; x < image.width; ++x) {
                Rgb(row, x, rgb);
                out[3 * x] = rgb[2];
                out[3 * x + 1] = rgb[1];
                out[3 * x + 2] = rgb[0];
            }
        }
        memset(out + n, 0, rowBytes - n);
        return rowBytes;
    }

private:
    uint32_t rowBytes = 0;
};

} // namespace rlph

namespace {
rlph::BMPENCODER bmpEncoder;
}
RLPH_ENTRIES(bmpEncoder)
