// The export plug-ins' encoders, driven as the library drives a plug-in and read
// back by independent readers; their format sources are compiled in, without the entries.
#define RLPH_NO_ENTRIES
#include "../../addons/rlph/rlphbmp.cpp"
#include "../../addons/rlph/rlphpcx.cpp"
#include "../../addons/rlph/rlphtif.cpp"
#include <gtest/gtest.h>
#include "../photocd/export_files.h"
#include "native_support.h"

using namespace exportfiles;

namespace {

RLPHFORMATINFO Info(const SOURCE& s)
{
    RLPHFORMATINFO info = {};
    info.size = sizeof info;
    info.version = RLPH_INFO_VERSION;
    info.width = (int32_t)s.width;
    info.height = (int32_t)s.height;
    info.bitsPerPixel = s.layout == 2 ? 8 : 24;
    info.pixelLayout = (uint16_t)s.layout;
    info.sourceRowBytes = (uint32_t)s.stride;
    info.paletteEntries = s.layout == 2 ? 256 : 0;
    if (s.layout == 2)
        memcpy(info.palette, s.palette.data(), 768);
    return info;
}

// Start, header, bands in the row order asked for, footer, in exact-size buffers.
BYTES Export(rlph::ENCODER& e, const SOURCE& s, long band)
{
    RLPHFORMATINFO info = Info(s);
    BYTES file;
    if (e.Start(&info) != 0)
        return file;
    uint32_t size = e.HeaderSize();
    rlnative::Exact header(size);
    EXPECT_EQ(e.Header(header.p, size), size);
    file.assign(header.p, header.p + size);
    for (long first = 0; first < s.height; first += band) {
        long count = std::min(band, s.height - first);
        rlnative::Exact rows(s.stride * count), out(info.maxRowBytes * count);
        for (long i = 0; i < count; ++i) {
            long y = info.rowOrder == RLPH_ROWS_BOTTOM_UP ? s.height - 1 - first - i : first + i;
            memcpy(rows.p + s.stride * i, &s.rows[s.stride * y], s.stride);
        }
        uint32_t made = e.Convert(rows.p, (uint32_t)count, out.p, (uint32_t)s.stride);
        file.insert(file.end(), out.p, out.p + made);
    }
    size = e.FooterSize();
    if (size) {
        rlnative::Exact footer(size);
        EXPECT_EQ(e.Footer(footer.p, size), size);
        file.insert(file.end(), footer.p, footer.p + size);
    }
    e.Finish();
    return file;
}

struct FORMAT {
    const char* name;
    rlph::ENCODER* encoder;
    bool (*read)(const BYTES&, PICTURE&);
};
rlph::BMPENCODER gBmp;
rlph::PCXENCODER gPcx;
rlph::TIFENCODER gTif;
const FORMAT kFormats[] = {{"bmp", &gBmp, ReadBmp}, {"pcx", &gPcx, ReadPcx}, {"tif", &gTif, ReadTif}};

} // namespace

// Every format, layout and band height over widths at the edges of row padding
// (BMP's 4 bytes, PCX's even plane lines) and of PCX's 63-byte runs.
TEST(RlphEncoders, RoundTripThroughIndependentReaders)
{
    const long widths[] = {1, 2, 3, 4, 5, 63, 64, 65, 127};
    for (const FORMAT& f : kFormats)
        for (int layout = 0; layout < 3; ++layout)
            for (long w : widths)
                for (long h : {1L, 3L, 7L})
                    for (long band : {1L, 4L}) {
                        SCOPED_TRACE(testing::Message() << f.name << " layout " << layout << " " << w << "x" << h << " band " << band);
                        SOURCE s = MakeSource(w, h, layout, (int)(w + h));
                        PICTURE p;
                        ASSERT_TRUE(f.read(Export(*f.encoder, s, band), p)) << p.error;
                        EXPECT_TRUE(p.width == w && p.height == h && p.bits == (layout == 2 ? 8 : 24) && p.rgb == s.rgb &&
                                    (layout != 2 || p.palette == s.palette));
                    }
}

// Blocks an encoder must refuse, and what it then gives: nothing at all.
TEST(RlphEncoders, RefuseBlocksTheyCannotHold)
{
    struct CASE { const char* what; void (*spoil)(RLPHFORMATINFO&); unsigned formats; };  // bmp 1, pcx 2, tif 4 refuse
    const CASE cases[] = {
        {"size", [](RLPHFORMATINFO& i) { i.size -= 4; }, 7},
        {"height -1", [](RLPHFORMATINFO& i) { i.height = -1; }, 7},
        {"stride short", [](RLPHFORMATINFO& i) { i.sourceRowBytes = 3 * i.width - 1; }, 7},
        {"257 entries", [](RLPHFORMATINFO& i) { i.bitsPerPixel = 8, i.pixelLayout = 2, i.paletteEntries = 257; }, 7},
        // PCX's window is 16-bit; BMP and TIFF stop where a file size passes 32 bits.
        {"width 65537", [](RLPHFORMATINFO& i) { i.width = 65537, i.sourceRowBytes = 3 * 65537; }, 2},
        {"width 65536", [](RLPHFORMATINFO& i) { i.width = 65536, i.sourceRowBytes = 3 * 65536; }, 0},
        {"4 GB", [](RLPHFORMATINFO& i) { i.width = 1 << 16, i.height = 1 << 15, i.sourceRowBytes = 3 << 16; }, 5},
    };
    SOURCE s = MakeSource(4, 2, 0, 1);
    uint8_t buffer[4096] = {};
    for (const CASE& c : cases)
        for (int k = 0; k < 3; ++k) {
            SCOPED_TRACE(std::string(kFormats[k].name) + ": " + c.what);
            rlph::ENCODER& e = *kFormats[k].encoder;
            RLPHFORMATINFO info = Info(s);
            c.spoil(info);
            bool refuse = c.formats >> k & 1;
            EXPECT_EQ(e.Start(&info), refuse ? -1 : 0);
            if (!refuse)
                continue;
            EXPECT_EQ(e.HeaderSize() + e.FooterSize() + e.Header(buffer, 128) + e.Footer(buffer, 769), 0u);
            EXPECT_EQ(e.Convert(s.rows.data(), 1, buffer, (uint32_t)s.stride), 0u);
        }
}
