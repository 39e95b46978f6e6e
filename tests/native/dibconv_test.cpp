// The pixel work of drawing a DIB: expansion, ink planes, conversion, the mask.
#include <gtest/gtest.h>
#include <cstdint>
#include <cstring>
#include <vector>
#include "devices/dibconv.h"
#include "native_support.h"

using namespace rlnative;

namespace {

// 5 × 3 at any depth: pixel (x, y) from the top is index (x + 2y) mod 4 of
// palette Colour(i), or that colour directly at 24 and 32 bits.
struct PICTURE {
    std::vector<unsigned char> rows, palette;
    dibconv::SOURCE s;
};
std::uint32_t Colour(unsigned i) { return 0x102030u * (i + 1); }
PICTURE Make(unsigned bits)
{
    PICTURE p;
    std::uint32_t stride = (5 * bits + 31) / 32 * 4;
    p.rows.assign(stride * 3, 0);
    for (unsigned i = 0; i < 4; ++i)
        for (int k = 0; k < 4; ++k)
            p.palette.push_back((unsigned char)(Colour(i) >> (8 * k)) & (k == 3 ? 0 : 0xFF));
    for (int y = 0; y < 3; ++y) {
        unsigned char* row = &p.rows[(2 - y) * stride];
        for (int x = 0; x < 5; ++x) {
            unsigned i = (unsigned)(x + 2 * y) % 4;
            if (bits == 1)
                row[x / 8] |= (unsigned char)((i & 1) << (7 - x % 8));
            else if (bits == 4)
                row[x / 2] |= (unsigned char)(x % 2 ? i : i << 4);
            else if (bits == 8)
                row[x] = (unsigned char)i;
            else
                for (unsigned k = 0; k < 3; ++k)
                    row[x * bits / 8 + k] = (unsigned char)(Colour(i) >> (8 * k));
        }
    }
    p.s = {p.rows.data(), p.rows.size(), stride, 5, 3, bits, p.palette.data(), bits <= 8 ? 4u : 0u};
    return p;
}

} // namespace

TEST(NativeDibConv, ExpandsEveryDepthAndRefusesWhatDoesNotFit)
{
    for (unsigned bits : {1u, 4u, 8u, 24u, 32u}) {
        SCOPED_TRACE(bits);
        PICTURE p = Make(bits);
        std::uint32_t canvas[15];
        unsigned char hidden[15];
        ASSERT_TRUE(dibconv::Expand(p.s, 0, 0, 5, 3, canvas, hidden, dibconv::RefFromCanvas(Colour(1))));
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x) {
                unsigned i = bits == 1 ? (unsigned)(x + 2 * y) % 2 : (unsigned)(x + 2 * y) % 4;
                EXPECT_EQ(canvas[y * 5 + x], Colour(i)) << x << "," << y;
                EXPECT_EQ(hidden[y * 5 + x], i == 1) << x << "," << y;
            }
        // A window, and the rectangles that are not inside the picture.
        std::uint32_t two[2];
        ASSERT_TRUE(dibconv::Expand(p.s, 3, 2, 2, 1, two, nullptr, 0) && two[0] == canvas[13] && two[1] == canvas[14]);
        const std::int32_t bad[][4] = {{0, -1, 2, 2}, {4, 0, 2, 1}, {0, 0, 0, 1}, {0, 0, 0x7FFFFFFF, 1}};
        for (const auto& r : bad) {
            canvas[0] = 0xABCDEF;
            EXPECT_FALSE(dibconv::Expand(p.s, r[0], r[1], r[2], r[3], canvas, nullptr, 0)) << r[0] << r[1] << r[2] << r[3];
            EXPECT_EQ(canvas[0], 0xABCDEFu) << "nothing written";
        }
    }
    // An index past the palette reads black.
    PICTURE p = Make(8);
    p.s.colours = 2;
    std::uint32_t canvas[15];
    ASSERT_TRUE(dibconv::Expand(p.s, 0, 0, 5, 3, canvas, nullptr, 0));
    EXPECT_TRUE(canvas[2] == 0u && canvas[1] == Colour(1)) << "index 2 of a 2-entry palette";
}

TEST(NativeDibConv, InkPlanesFollowTheColourModelAndSurviveThePlane)
{
    for (unsigned p = 0; p <= 100; ++p)
        EXPECT_TRUE(dibconv::LevelFromPlane(dibconv::PlaneFromLevel(p)) == p && (p < 100 || dibconv::PlaneFromLevel(p) == 255u)) << p;
    // Random colours, against the colour model.
    std::vector<std::uint32_t> px = {0, 0xFFFFFF, 0x808080};
    Rng rng(7);
    for (int i = 0; i < 6000; ++i)
        px.push_back(rng.Below(0x1000000));
    std::vector<unsigned char> plane(px.size());
    for (int plate = 0; plate < 4; ++plate) {
        dibconv::InkPlane(px.data(), px.size(), plate, plane.data());
        for (size_t i = 0; i < px.size(); ++i) {
            std::uint32_t ref = dibconv::RefFromCanvas(px[i]);
            vCOLOUR c((unsigned char)ref, (unsigned char)(ref >> 8), (unsigned char)(ref >> 16));
            unsigned want = plate == 0 ? c.Cyan() : plate == 1 ? c.Magenta() : plate == 2 ? c.Yellow() : c.Black();
            ASSERT_EQ(dibconv::LevelFromPlane(plane[i]), want) << std::hex << px[i] << " plate " << plate;
        }
    }
}

TEST(NativeDibConv, MaskAndPackedBlocks)
{
    // 9 × 2, hidden where x + y is a multiple of 3; hidden pixels turn black.
    const std::int32_t w = 9, h = 2;
    std::vector<unsigned char> hidden(w * h), mask(dibconv::MaskStride(w) * h, 0xEE);
    std::vector<std::uint32_t> canvas(w * h, 0x777777);
    for (int i = 0; i < w * h; ++i)
        hidden[i] = (i % w + i / w) % 3 == 0;
    ASSERT_EQ(dibconv::MaskStride(w), 4u);
    EXPECT_EQ(dibconv::BuildMask(hidden.data(), w, h, mask.data(), canvas.data()), 6u);
    const unsigned char want[8] = {0x92, 0x00, 0, 0, 0x24, 0x80, 0, 0};
    EXPECT_EQ(memcmp(mask.data(), want, 8), 0);
    for (int i = 0; i < w * h; ++i)
        EXPECT_EQ(canvas[i], hidden[i] ? 0u : 0x777777u);

    // Packed DIBs: a good 8-bit one of 2 × 2 and its damaged forms.
    std::vector<unsigned char> good(40 + 4 * 256 + 8, 0);
    const std::uint32_t head[] = {40, 2, 2, 1 | 8u << 16, 0, 8, 0, 0, 0, 0};
    memcpy(good.data(), head, 40);
    good[40 + 1024] = 7;
    dibconv::SOURCE s;
    ASSERT_TRUE(dibconv::ReadPacked(good.data(), good.size(), s));
    EXPECT_TRUE(s.width == 2 && s.height == 2 && s.bits == 8 && s.colours == 256 && s.stride == 4 && s.rows[0] == 7);
    // Offset, value written there, and the size handed over (0: all of it).
    const std::uint32_t damaged[][3] = {{16, 1, 0}, {8, 0xFFFFFFFEu, 0}, {32, 300, 0}, {0, 40, 40 + 1024 + 7}, {4, 0x8000, 0}};
    for (const auto& d : damaged) {
        std::vector<unsigned char> b = good;
        memcpy(&b[d[0]], &d[1], d[0] == 14 ? 2 : 4);
        EXPECT_FALSE(dibconv::ReadPacked(b.data(), d[2] ? d[2] : b.size(), s)) << d[0] << " " << d[1] << " " << d[2];
    }
    EXPECT_FALSE(dibconv::ReadPacked(nullptr, 100, s));
}
