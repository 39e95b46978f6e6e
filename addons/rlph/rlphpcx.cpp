// The PCX export plug-in (rlphpcx.dll): a ZSoft PCX file, version 5, run coded,
// 8 bits a sample: three planes for 24-bit images, one plane and a 256-colour
// palette for 8-bit ones.
//
// File layout (all little-endian):
//   header   128 bytes   offset  0  0x0A, version 5, encoding 1, bits per sample 8
//                                4  window: x min 0, y min 0, x max, y max (16 bits each)
//                               12  horizontal and vertical dots per inch
//                               16  48-byte 16-colour palette (unused, 0)
//                               64  reserved 0, 65 number of planes (3 or 1)
//                               66  bytes per plane line (the width rounded up to even)
//                               68  palette interpretation 1 (colour), 70 screen size 0
//                               74  filler 0
//   pixels   each row top-down; within a row each plane in turn (red, green, blue),
//            padded to bytes per plane line with 0, run coded plane line by plane
//            line: a byte of the two top bits set is a count (low six bits, 1-63)
//            of the byte that follows; any other byte stands for itself
//   footer   8-bit only: 0x0C and 256 entries of red, green, blue
#include <new>
#include "rlphenc.h"

namespace rlph {

// Run codes one plane line: runs never cross the line's end, and a byte with
// its two top bits set is always written as a run, even of one. Returns the
// bytes written, at most 2 * count.
inline uint32_t PcxRunCode(const uint8_t* line, uint32_t count, uint8_t* out)
{
    uint8_t* p = out;
    uint32_t i = 0;
    while (i < count) {
        uint8_t v = line[i];
        uint32_t run = 1;
        while (i + run < count && run < 63 && line[i + run] == v)
            ++run;
        if (run > 1 || v >= 0xC0)
            *p++ = (uint8_t)(0xC0 | run);
        *p++ = v;
        i += run;
    }
    return (uint32_t)(p - out);
}

class PCXENCODER : public ENCODER {
protected:
    bool Begin(uint16_t& rowOrder, uint32_t& maxRowBytes) override
    {
        // The window's corners are 16-bit.
        if (image.width > 0x10000 || image.height > 0x10000)
            return false;
        planes = image.bitsPerPixel == 24 ? 3 : 1;
        lineBytes = ((uint32_t)image.width + 1) & ~1u;
        rowOrder = RLPH_ROWS_TOP_DOWN;
        maxRowBytes = planes * 2 * lineBytes;
        return true;
    }

    uint32_t HeaderBytes() const override { return 128; }

    void WriteHeader(uint8_t* out) const override
    {
        uint32_t dpi = (DotsPerMetre() * 254 + 5000) / 10000;
        if (dpi > 0xFFFF)
            dpi = 0xFFFF;
        out[0] = 0x0A;
        out[1] = 5;
        out[2] = 1;
        out[3] = 8;
        Put16(out + 8, (uint32_t)image.width - 1);
        Put16(out + 10, (uint32_t)image.height - 1);
        Put16(out + 12, dpi);
        Put16(out + 14, dpi);
        out[65] = (uint8_t)planes;
        Put16(out + 66, lineBytes);
        Put16(out + 68, 1);
    }

    uint32_t ConvertRow(const uint8_t* row, uint8_t* out) override
    {
        // Each plane line is run coded on its own. A 24-bit row's plane, or a
        // row of odd width with its pad byte, is gathered in the line buffer
        // first; an even 8-bit row is coded where it lies.
        uint32_t made = 0;
        for (uint32_t plane = 0; plane < planes; ++plane) {
            const uint8_t* line = row;
            if (planes == 3) {
                if (!Line(lineBytes))
                    return 0;
                uint8_t rgb[3];
                for (int32_t x = 0; x < image.width; ++x) {
                    Rgb(row, x, rgb);
                    buffer[x] = rgb[plane];
                }
                line = buffer;
            } else if (lineBytes != (uint32_t)image.width) {
                if (!Line(lineBytes))
                    return 0;
                memcpy(buffer, row, (uint32_t)image.width);
                line = buffer;
            }
            if (lineBytes != (uint32_t)image.width && line == buffer)
                buffer[lineBytes - 1] = 0;
            made += PcxRunCode(line, lineBytes, out + made);
        }
        return made;
    }

    uint32_t FooterBytes() const override { return image.bitsPerPixel == 8 ? 1 + 768 : 0; }

    void WriteFooter(uint8_t* out) const override
    {
        out[0] = 0x0C;
        memcpy(out + 1, image.palette, 768);
    }

public:
    ~PCXENCODER() override { delete[] buffer; }

private:
    // The line buffer grows to the widest line seen and is kept between exports.
    bool Line(uint32_t bytes)
    {
        if (bytes <= capacity)
            return true;
        delete[] buffer;
        buffer = new (std::nothrow) uint8_t[bytes];
        capacity = buffer ? bytes : 0;
        return buffer != nullptr;
    }

    uint32_t planes = 1;
    uint32_t lineBytes = 0;
    uint8_t* buffer = nullptr;
    uint32_t capacity = 0;
};

} // namespace rlph

namespace {
rlph::PCXENCODER pcxEncoder;
}
RLPH_ENTRIES(pcxEncoder)
