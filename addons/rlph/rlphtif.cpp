// The TIFF export plug-in (rlphtif.dll): a baseline TIFF file, uncompressed, one
// strip, 24-bit RGB or 8-bit palette colour.
//
// File layout (little-endian, "II"):
//   offset 0   "II", 42, offset of the first directory (8)
//   offset 8   the directory: entry count, 12-byte entries in ascending tag order
//              (tag, type, count, value or offset of the value), next directory 0
//   then       the values too long for an entry, each at an even offset:
//              bits per sample (RGB: three shorts 8, 8, 8), the horizontal and
//              vertical resolution (rationals), the colour map (palette: 3 x 256
//              shorts, all reds, then greens, then blues, scaled to 16 bits)
//   then       the strip: rows top-down, unpadded; RGB pixels as red, green, blue
// No footer. The whole header is known at startExport, so it goes before the
// pixels and the strip offset is the header's size.
#include "rlphenc.h"

namespace rlph {

namespace tiff {
enum { SHORT = 3, LONG = 4, RATIONAL = 5 };
enum {
    IMAGE_WIDTH = 256, IMAGE_LENGTH = 257, BITS_PER_SAMPLE = 258, COMPRESSION = 259,
    PHOTOMETRIC = 262, STRIP_OFFSETS = 273, SAMPLES_PER_PIXEL = 277, ROWS_PER_STRIP = 278,
    STRIP_BYTE_COUNTS = 279, X_RESOLUTION = 282, Y_RESOLUTION = 283, PLANAR_CONFIGURATION = 284,
    RESOLUTION_UNIT = 296, COLOR_MAP = 320
};
const uint32_t kRgbEntries = 13, kPaletteEntries = 14;
const uint32_t kDirectory = 8;
} // namespace tiff

class TIFENCODER : public ENCODER {
protected:
    bool Begin(uint16_t& rowOrder, uint32_t& maxRowBytes) override
    {
        uint64_t total = (uint64_t)HeaderBytes() + (uint64_t)PixelBytes() * (uint32_t)image.height;
        if (total > 0xFFFFFFFFu)
            return false;
        rowOrder = RLPH_ROWS_TOP_DOWN;
        maxRowBytes = PixelBytes();
        return true;
    }

    uint32_t HeaderBytes() const override { return ColourMapAt() + (Palette() ? 3 * 256 * 2 : 0); }

    void WriteHeader(uint8_t* out) const override
    {
        using namespace tiff;
        out[0] = 'I';
        out[1] = 'I';
        Put16(out + 2, 42);
        Put32(out + 4, kDirectory);
        uint8_t* p = Put16(out + kDirectory, Entries());
        const uint32_t samples = Palette() ? 1 : 3;
        p = Entry(p, IMAGE_WIDTH, LONG, 1, (uint32_t)image.width);
        p = Entry(p, IMAGE_LENGTH, LONG, 1, (uint32_t)image.height);
        p = Palette() ? Entry(p, BITS_PER_SAMPLE, SHORT, 1, 8) : Entry(p, BITS_PER_SAMPLE, SHORT, 3, BitsAt());
        p = Entry(p, COMPRESSION, SHORT, 1, 1);
        p = Entry(p, PHOTOMETRIC, SHORT, 1, Palette() ? 3 : 2);
        p = Entry(p, STRIP_OFFSETS, LONG, 1, HeaderBytes());
        p = Entry(p, SAMPLES_PER_PIXEL, SHORT, 1, samples);
        p = Entry(p, ROWS_PER_STRIP, LONG, 1, (uint32_t)image.height);
        p = Entry(p, STRIP_BYTE_COUNTS, LONG, 1, PixelBytes() * (uint32_t)image.height);
        p = Entry(p, X_RESOLUTION, RATIONAL, 1, ResolutionAt());
        p = Entry(p, Y_RESOLUTION, RATIONAL, 1, ResolutionAt() + 8);
        p = Entry(p, PLANAR_CONFIGURATION, SHORT, 1, 1);
        p = Entry(p, RESOLUTION_UNIT, SHORT, 1, 3);   // centimetres
        if (Palette())
            p = Entry(p, COLOR_MAP, SHORT, 3 * 256, ColourMapAt());
        Put32(p, 0);

        if (!Palette())
            for (int i = 0; i < 3; ++i)
                Put16(out + BitsAt() + 2 * i, 8);
        // Dots per centimetre as an exact fraction of the dots per metre.
        for (int i = 0; i < 2; ++i) {
            Put32(out + ResolutionAt() + 8 * i, DotsPerMetre());
            Put32(out + ResolutionAt() + 8 * i + 4, 100);
        }
        if (Palette())
            for (int c = 0; c < 3; ++c)
                for (int i = 0; i < 256; ++i)
                    Put16(out + ColourMapAt() + 2 * (256 * c + i), image.palette[i][c] * 257u);
    }

    uint32_t ConvertRow(const uint8_t* row, uint8_t* out) override
    {
        if (Palette()) {
            memcpy(out, row, (uint32_t)image.width);
        } else {
            for (int32_t x = 0; x < image.width; ++x)
                Rgb(row, x, out + 3 * x);
        }
        return PixelBytes();
    }

private:
    bool Palette() const { return image.bitsPerPixel == 8; }
    uint32_t Entries() const { return Palette() ? tiff::kPaletteEntries : tiff::kRgbEntries; }
    // Where the long values lie: right after the directory, in this order.
    uint32_t BitsAt() const { return tiff::kDirectory + 2 + 12 * Entries() + 4; }
    uint32_t ResolutionAt() const { return BitsAt() + (Palette() ? 0 : 6); }
    uint32_t ColourMapAt() const { return ResolutionAt() + 16; }

    // A value of one short sits in the entry's first two bytes, a long or an
    // offset fills all four.
    static uint8_t* Entry(uint8_t* p, uint32_t tag, uint32_t type, uint32_t count, uint32_t value)
    {
        p = Put16(p, tag);
        p = Put16(p, type);
        p = Put32(p, count);
        if (type == tiff::SHORT && count == 1)
            return Put16(Put16(p, value), 0);
        return Put32(p, value);
    }
};

} // namespace rlph

namespace {
rlph::TIFENCODER tifEncoder;
}
RLPH_ENTRIES(tifEncoder)
