// The Photo CD pack decoder on its own, against reference decodings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include "../photocd/pcdwriter.h"
#include "pcdpack_fuzz.h"

using namespace pcdpack;
using pcdwriter::Bytes;
using pcdwriter::Ycc;

namespace {

TEST(PcdPack, EachBaseResolutionDecodesToItsPicture)
{
    Ycc base = pcdwriter::Pattern(768, 512, 3);
    Bytes file = pcdwriter::ImagePack(base, 0);
    PackHeader header;
    ASSERT_EQ(ParseHeader(file.data(), kHeaderBytes, file.size(), &header), PCD_OK);
    Ycc pics[3] = {pcdwriter::Halve(pcdwriter::Halve(base)), pcdwriter::Halve(base), base};
    for (long res = PCD_BASE_OVER_16; res <= PCD_BASE; ++res) {
        SCOPED_TRACE(res);
        Plane plane;
        ASSERT_EQ(FindPlane(header, file.size(), res, &plane), PCD_OK);
        const Ycc& p = pics[res];
        ASSERT_TRUE(plane.width == p.width && plane.height == p.height);
        rlnative::Exact out((size_t)p.width * p.height * 3);
        ASSERT_EQ(DecodePlanes(plane, file.data() + plane.offset, plane.bytes, out.p, p.width * 3, nullptr), PCD_OK);
        // Chroma is stored on even rows and columns: there each pixel has its own.
        int worst = 0;
        for (long r = 0; r < p.height; r += 2)
            for (long x = 0; x < p.width; x += 2) {
                const size_t c = (size_t)r * p.width + x;
                int want[3];
                pcdwriter::ReferenceBgr(p.y[c], p.c1[c], p.c2[c], want);
                for (int k = 0; k < 3; ++k)
                    worst = std::max(worst, std::abs(out[c * 3 + k] - want[k]));
            }
        EXPECT_LE(worst, 1);
    }
    Plane plane;
    for (long res : {(long)PCD_4BASE, (long)PCD_16BASE, 5L, -1L})
        EXPECT_EQ(FindPlane(header, file.size(), res, &plane), res > PCD_16BASE || res < 0 ? PCD_ERR_BAD_ARG : PCD_ERR_RES_NOT_SUPPORTED);
}

typedef std::vector<std::vector<int>> Grid;
Grid TurnLeft(const Grid& g)
{
    Grid t(g[0].size(), std::vector<int>(g.size()));
    for (size_t r = 0; r < g.size(); ++r)
        for (size_t x = 0; x < g[0].size(); ++x)
            t[g[0].size() - 1 - x][r] = g[r][x];
    return t;
}

TEST(PcdPack, TransformTakesTheRightSourcePixels)
{
    const long W = 5, H = 3;
    Grid src(H, std::vector<int>(W));
    uint8_t bytes1[W * H], bytes3[W * H * 3];
    for (long r = 0; r < H; ++r)
        for (long x = 0; x < W; ++x) {
            src[r][x] = (int)(r * W + x);
            bytes1[r * W + x] = (uint8_t)src[r][x];
            for (int k = 0; k < 3; ++k)
                bytes3[(r * W + x) * 3 + k] = (uint8_t)(src[r][x] * 3 + k);
        }
    const PCDrect crops[] = {{0, 0, 0, 0}, {1, 0, 3, 2}, {-5, -5, 100, 100}, {2, 1, 3, 3}, {4, 4, 2, 2}};
    for (long rot = 0; rot < 4; ++rot)
        for (long mirror = 0; mirror < 2; ++mirror)
            for (const PCDrect& c : crops) {
                SCOPED_TRACE(testing::Message() << rot << " " << mirror << " " << c.left << "," << c.top);
                Grid want = src;
                for (long i = 0; i < rot; ++i)
                    want = TurnLeft(want);
                if (mirror)
                    for (auto& row : want)
                        std::reverse(row.begin(), row.end());
                long tw = (long)want[0].size(), th = (long)want.size();
                long l = 0, t = 0, r = tw, b = th;
                if (c.right > c.left && c.bottom > c.top) {
                    l = std::max(c.left, 0L), t = std::max(c.top, 0L);
                    r = std::min(c.right, tw), b = std::min(c.bottom, th);
                }
                PCDtransform tf = {rot, mirror, c};
                TransformPlan plan;
                ASSERT_EQ(PlanTransform(W, H, tf, c, &plan), PCD_OK);
                ASSERT_TRUE(plan.width == r - l && plan.height == b - t);
                EXPECT_EQ(IsIdentity(plan, W, H), rot == 0 && !mirror && plan.width == W && plan.height == H);
                std::vector<uint8_t> out1((size_t)plan.width * plan.height), out3(out1.size() * 3);
                // Bottom-up into the target, as into a DIB, for the 3-byte case.
                ApplyTransform(plan, bytes1, W, 1, out1.data(), plan.width, 0, plan.height);
                ApplyTransform(plan, bytes3, W * 3, 3, out3.data() + (plan.height - 1) * plan.width * 3,
                               -plan.width * 3, 0, plan.height);
                for (long y = 0; y < plan.height; ++y)
                    for (long x = 0; x < plan.width; ++x) {
                        int v = want[t + y][l + x];
                        ASSERT_EQ(out1[y * plan.width + x], v) << x << "," << y;
                        ASSERT_EQ(out3[((plan.height - 1 - y) * plan.width + x) * 3 + 2], v * 3 + 2);
                    }
            }
    TransformPlan plan;
    PCDtransform tf = {0, 0, {0, 0, 0, 0}}, turned = {4, 0, {0, 0, 0, 0}};
    EXPECT_EQ(PlanTransform(W, H, tf, PCDrect{5, 0, 9, 3}, &plan), PCD_ERR_BAD_ARG);
    EXPECT_EQ(PlanTransform(W, H, turned, PCDrect{0, 0, 0, 0}, &plan), PCD_ERR_BAD_ARG);
    struct { PCDrect in; int shift; PCDrect out; } scales[] = {
        {{1, 2, 767, 511}, 0, {1, 2, 767, 511}}, {{1, 2, 767, 511}, 1, {0, 1, 384, 256}},
        {{5, 4, 9, 8}, 2, {1, 1, 3, 2}},         {{-3, -4, 1, 0}, 2, {-1, -1, 1, 0}},
        {{0, 0, 0x7fffffff, 0x7fffffff}, 2, {0, 0, 1 << 22, 1 << 22}},
    };
    for (auto& s : scales) {
        PCDrect r = ScaleCrop(s.in, s.shift);
        EXPECT_EQ(0, memcmp(&r, &s.out, sizeof r)) << s.in.left << " >> " << s.shift;
    }
}

TEST(PcdPack, DamagedPacksGiveAStatus)
{
    Bytes pack = pcdwriter::ImagePack(pcdwriter::Pattern(768, 512, 2), 1);
    std::vector<Ycc> ov = {pcdwriter::Pattern(192, 128, 1), pcdwriter::Pattern(192, 128, 2)};
    Bytes oview = pcdwriter::OverviewPack(ov, {0, 3});
    const uint8_t id[12] = {1, 2, 3};
    Bytes info = pcdwriter::InfoFile(id, 2);
    rlnative::Rng rng(132);
    for (int i = 0; i < 60; ++i) {
        const Bytes& base = i % 3 == 0 ? pack : i % 3 == 1 ? oview : info;
        Bytes f(base.begin(), base.begin() + rng.Below((uint32_t)base.size() + 1));
        for (int n = rng.Below(6); n > 0 && !f.empty(); --n)
            f[rng.Below(std::min<uint32_t>((uint32_t)f.size(), 0x1000))] = rng.Byte();
        if (f.size() > 12 && rng.Chance(3))
            f[10] = f[11] = 0xff;  // an overview claiming 65535 entries
        pcdfuzz::Run(f.data(), f.size());
    }
    // Overview entries past the file's end.
    long count;
    ASSERT_TRUE(ParseOverview(oview.data(), kOviewHeaderBytes, oview.size(), &count) == PCD_OK && count == 2);
    uint32_t attr;
    Plane p;
    EXPECT_TRUE(FindOverviewEntry(count, oview.size(), 2, &attr, &p) == PCD_OK &&
                FindOverviewEntry(count, oview.size() - 1, 2, &attr, &p) == PCD_ERR_DAMAGED &&
                FindOverviewEntry(count, oview.size(), 3, &attr, &p) == PCD_ERR_NOT_FOUND &&
                FindOverviewEntry(65535, oview.size(), 65535, &attr, &p) == PCD_ERR_DAMAGED);
    PCDvolumeInfo vi;
    EXPECT_TRUE(ParseInfo(info.data(), info.size(), &vi) == PCD_OK && vi.volumeId[2] == 3 && vi.imageCount == 2);
    EXPECT_EQ(ParseInfo(info.data(), 39, &vi), PCD_ERR_NOT_PCD);
}

Bytes ReadAll(const std::string& path)
{
    Bytes b;
    FILE* f = fopen(path.c_str(), "rb");
    for (int c; f && (c = fgetc(f)) != EOF;)
        b.push_back((uint8_t)c);
    if (f)
        fclose(f);
    return b;
}

// ImageMagick maps the whole Photo YCC range onto 0..255 (Kodak's values / 1.3584) where we
// clip at 255: its values scaled back agree within 4 levels wherever neither side clipped.
TEST(PcdPack, AgreesWithImageMagicksDecoding)
{
    if (std::system("/usr/bin/convert -version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "no ImageMagick convert";
    char dir[] = "/tmp/pcdpackXXXXXX";
    ASSERT_TRUE(mkdtemp(dir));
    std::string d = dir, in = d + "/in.ppm", pcd = d + "/in.pcd", back = d + "/back.ppm";
    std::string text = "P6\n768 512\n255\n";
    for (int r = 0; r < 512; ++r)
        for (int x = 0; x < 768; ++x)
            text += {(char)(40 + 150 * x / 768), (char)(60 + 120 * r / 512), (char)(int)(90 + 80 * std::sin(x / 90.0 + r / 70.0))};
    FILE* f = fopen(in.c_str(), "wb");
    ASSERT_TRUE(f && fwrite(text.data(), 1, text.size(), f) == text.size());
    fclose(f);
    std::string cmd = "/usr/bin/convert -limit thread 1 " + in + " " + pcd + " && /usr/bin/convert -limit thread 1 " +
                      pcd + " -depth 8 " + back;
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    Bytes file = ReadAll(pcd), ppm = ReadAll(back);
    std::system(("rm -rf " + d).c_str());
    ASSERT_GE(ppm.size(), 768u * 512 * 3);
    PackHeader h;
    Plane plane;
    ASSERT_TRUE(ParseHeader(file.data(), std::min<size_t>(file.size(), kHeaderBytes), file.size(), &h) == PCD_OK &&
                FindPlane(h, file.size(), PCD_BASE, &plane) == PCD_OK);
    std::vector<uint8_t> ours(768 * 512 * 3);
    ASSERT_EQ(DecodePlanes(plane, file.data() + plane.offset, plane.bytes, ours.data(), 768 * 3, nullptr), PCD_OK);
    const uint8_t* theirs = ppm.data() + ppm.size() - 768 * 512 * 3;
    long compared = 0, worst = 0;
    for (size_t i = 0; i < 768 * 512; ++i)
        for (int k = 0; k < 3; ++k) {
            int t = theirs[i * 3 + 2 - k];
            double scaled = t * 1.3584;
            if (t == 0 || scaled > 254.5)
                continue;
            ++compared;
            worst = std::max(worst, std::labs(ours[i * 3 + k] - lround(scaled)));
        }
    EXPECT_TRUE(compared > 768L * 512 * 3 / 2 && worst <= 4) << compared << " " << worst;
}

}  // namespace
