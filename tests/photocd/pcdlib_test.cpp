// PCDLIB32.DLL through its exported entry points, on volumes the tests write.
// Pixel values and the transform kernel are checked natively; here the
// entries' paths must agree with each other and with the stored picture.
#include <windows.h>
#include <gtest/gtest.h>
#include <algorithm>
#include "pcdvolume.h"
#include "rl132/photocd/pcdapi.h"

using pcdwriter::Bytes;

namespace {

struct Api {   // every entry point, resolved by name as RL132 resolves them
    HMODULE dll = LoadLibraryA("PCDLIB32.DLL");
    int missing = 0;
#define PCD_MEMBER(name) name##Proc name = (name##Proc)(void*)GetProcAddress(dll, #name);
    PCD_ENTRY_POINTS(PCD_MEMBER)
#undef PCD_MEMBER
    Api()
    {
#define PCD_COUNT(name) missing += !name;
        PCD_ENTRY_POINTS(PCD_COUNT)
#undef PCD_COUNT
    }
    ~Api() { FreeLibrary(dll); }
};
Api& A() { static Api api; return api; }

struct Dib {
    const BITMAPINFOHEADER* h;
    const uint8_t* bits;
    long stride;
    explicit Dib(const void* p) : h((const BITMAPINFOHEADER*)p)
    {
        bits = (const uint8_t*)p + h->biSize + (h->biBitCount == 8 ? 4 * (h->biClrUsed ? h->biClrUsed : 256) : 0);
        stride = (h->biWidth * h->biBitCount + 31) / 32 * 4;
    }
    const uint8_t* Row(long y) const { return bits + (h->biHeight - 1 - y) * stride; }  // y from the top
    const RGBQUAD* Table() const { return (const RGBQUAD*)((const uint8_t*)h + h->biSize); }
};

// The whole picture, top row first, through PCDgetBlock in bands of 7 rows.
std::vector<uint8_t> Blocks(PCDpkHdl pk, long* w, long* h, long px)
{
    EXPECT_EQ(A().PCDgetSize(pk, w, h), PCD_OK);
    std::vector<uint8_t> all((size_t)*w * *h * px);
    for (long y = 0; y < *h; y += 7)
        EXPECT_EQ(A().PCDgetBlock(pk, y, std::min(7L, *h - y), all.data() + (size_t)y * *w * px, *w * px), PCD_OK);
    return all;
}
bool SameRows(const Dib& d, const std::vector<uint8_t>& rows, long w, long h, long px)
{
    for (long y = 0; y < h; ++y)
        if (memcmp(d.Row(y), rows.data() + (size_t)y * w * px, (size_t)w * px))
            return false;
    return d.h->biWidth == w && d.h->biHeight == h;
}

TEST(PcdLib, EachResolutionReadsThePicture)
{
    ASSERT_TRUE(A().dll);
    EXPECT_EQ(A().missing, 0);
    unsigned long v = 0;
    EXPECT_TRUE(A().PCDgetToolkitVersion(&v) == PCD_OK && v == 0x0100u);
    EXPECT_EQ(A().PCDgetToolkitVersion(nullptr), PCD_ERR_BAD_ARG);
    PCDVOLUME vol({0}, false);
    PCDpkHdl pk;
    ASSERT_EQ(A().PCDopen(vol.Pack(1).c_str(), &pk), PCD_OK);
    long count = 0, w, h, got;
    EXPECT_TRUE(A().PCDgetCount(pk, &count) == PCD_OK && count == 3);
    for (long res = PCD_BASE_OVER_16; res <= PCD_BASE; ++res) {
        ASSERT_EQ(A().PCDsetResolution(pk, res), PCD_OK);
        EXPECT_TRUE(A().PCDgetResolution(pk, &got) == PCD_OK && got == res);
        std::vector<uint8_t> rows = Blocks(pk, &w, &h, 3);
        ASSERT_TRUE(w == 192L << res && h == 128L << res) << res;
        void* dib = nullptr;
        ASSERT_EQ(A().PCDloadImage(pk, &dib), PCD_OK);
        EXPECT_TRUE(Dib(dib).h->biBitCount == 24 && SameRows(Dib(dib), rows, w, h, 3)) << res;
        EXPECT_EQ(A().PCDfreeBitmap(dib), PCD_OK);
    }
    for (long r : {PCD_4BASE, PCD_16BASE})
        EXPECT_EQ(A().PCDsetResolution(pk, r), PCD_ERR_RES_NOT_SUPPORTED);
    EXPECT_EQ(A().PCDsetResolution(pk, 9), PCD_ERR_BAD_ARG);
    EXPECT_EQ(A().PCDsetFormat(pk, 14), PCD_ERR_FORMAT_NOT_SUPPORTED);
    EXPECT_EQ(A().PCDclose(pk), PCD_OK);
}

TEST(PcdLib, Transforms)
{
    PCDVOLUME vol({0}, false);
    PCDpkHdl pk;
    ASSERT_EQ(A().PCDopen(vol.Pack(1).c_str(), &pk), PCD_OK);
    ASSERT_EQ(A().PCDsetResolution(pk, PCD_BASE_OVER_16), PCD_OK);
    long w, h;
    void* plainDib;
    ASSERT_EQ(A().PCDloadImage(pk, &plainDib), PCD_OK);
    // Crops in Base pixels of the turned picture; at Base/16 they are a quarter. Which
    // pixels a transform takes is checked on the kernel natively; here the paths agree.
    struct Case { long rot, mirror; PCDrect crop; long w, h; } cases[] = {
        {3, 1, {0, 0, 0, 0}, 128, 192}, {0, 1, {40, 20, 401, 300}, 91, 70}, {1, 0, {-8, 4, 2000, 11}, 128, 2},
        {3, 0, {100, 600, 300, 768}, 50, 42},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.rot << " " << c.mirror << " " << c.crop.left);
        PCDtransform t = {c.rot, c.mirror, c.crop}, back;
        ASSERT_EQ(A().PCDsetTransform(pk, &t), PCD_OK);
        ASSERT_TRUE(A().PCDgetTransform(pk, &back) == PCD_OK && !memcmp(&t, &back, sizeof t));
        std::vector<uint8_t> got = Blocks(pk, &w, &h, 3);
        ASSERT_TRUE(w == c.w && h == c.h) << w << "x" << h;
        void* moved;
        ASSERT_EQ(A().PCDapplyTransform(plainDib, &t, &moved), PCD_OK);
        EXPECT_TRUE(SameRows(Dib(moved), got, w, h, 3));
        A().PCDfreeBitmap(moved);
    }
    PCDtransform outside = {0, 0, {800, 0, 900, 10}};
    ASSERT_EQ(A().PCDsetTransform(pk, &outside), PCD_OK);
    EXPECT_EQ(A().PCDgetSize(pk, &w, &h), PCD_ERR_BAD_ARG);
    outside.rotation = 4;
    EXPECT_EQ(A().PCDsetTransform(pk, &outside), PCD_ERR_BAD_ARG);
    A().PCDfreeBitmap(plainDib), A().PCDclose(pk);
}

TEST(PcdLib, EightBitPaletteImages)
{
    PCDVOLUME vol({0}, false);
    PCDpkHdl pk;
    ASSERT_EQ(A().PCDopen(vol.Pack(1).c_str(), &pk), PCD_OK);
    ASSERT_EQ(A().PCDsetResolution(pk, PCD_BASE_OVER_4), PCD_OK);
    void *dib24, *dib8, *conv, *wide;
    PCDpalette pal;
    long fmt, w, h;
    ASSERT_EQ(A().PCDloadImage(pk, &dib24), PCD_OK);
    EXPECT_EQ(A().PCDgetPalette(pk, &pal), PCD_ERR_NOT_FOUND);
    ASSERT_EQ(A().PCDsetFormat(pk, PCD_FORMAT_PAL8), PCD_OK);
    EXPECT_TRUE(A().PCDgetFormat(pk, &fmt) == PCD_OK && fmt == 13);
    ASSERT_EQ(A().PCDloadImage(pk, &dib8), PCD_OK);
    ASSERT_EQ(A().PCDgetPalette(pk, &pal), PCD_OK);
    Dib d8(dib8);
    ASSERT_TRUE(d8.h->biBitCount == 8 && d8.h->biClrUsed == 256u);
    for (long y = 0; y < 256; ++y)
        for (long x = 0; x < 384; ++x)
            ASSERT_LT(d8.Row(y)[x], pal.count);
    // A 16-colour palette of the caller's, used for loading and for converting.
    PCDpalette* p16;
    ASSERT_EQ(A().PCDcreatePalette(pk, 16, &p16), PCD_OK);
    EXPECT_TRUE(p16->count >= 2 && p16->count <= 16) << p16->count;
    ASSERT_EQ(A().PCDsetPalette(pk, p16), PCD_OK);
    std::vector<uint8_t> idx = Blocks(pk, &w, &h, 1);
    ASSERT_EQ(A().PCDconvertBitmap(dib24, PCD_FORMAT_PAL8, p16, &conv), PCD_OK);
    Dib c(conv);
    EXPECT_TRUE(SameRows(c, idx, w, h, 1));
    ASSERT_EQ(A().PCDconvertBitmap(conv, PCD_FORMAT_RGB24, nullptr, &wide), PCD_OK);
    for (long y = 0; y < h; y += 17)
        for (long x = 0; x < w; x += 13)
            ASSERT_EQ(0, memcmp(Dib(wide).Row(y) + 3 * x, p16->entries[c.Row(y)[x]], 3));
    EXPECT_EQ(A().PCDconvertBitmap(dib24, 7, nullptr, &wide), PCD_ERR_FORMAT_NOT_SUPPORTED);
    EXPECT_EQ(A().PCDcreatePalette(pk, 1, &p16), PCD_ERR_BAD_ARG);
    for (void* p : {dib24, dib8, conv, wide})
        EXPECT_EQ(A().PCDfreeBitmap(p), PCD_OK);
    A().PCDfreePalette(p16), A().PCDclose(pk);
}

struct Calls {
    std::vector<std::pair<int, int>> progress;
    int abortAfter = -1, asked = 0;
    std::vector<uint8_t> disc;
    long acceptDisc = 0;
};
long PCDAPI OnProgress(unsigned short done, unsigned short total, void* u)
{
    return ((Calls*)u)->progress.push_back({done, total}), 0;
}
long PCDAPI OnAbort(void* u) { return ((Calls*)u)->abortAfter >= 0 && ++((Calls*)u)->asked > ((Calls*)u)->abortAfter; }
long PCDAPI OnDisc(const unsigned char id[12], void* u)
{
    return ((Calls*)u)->disc.assign(id, id + 12), ((Calls*)u)->acceptDisc;
}

TEST(PcdLib, OverviewWithAndWithoutAnOverviewPack)
{
    const std::vector<int> turns = {0, 3, 1, 2};
    char path[MAX_PATH];
    for (bool withPack : {false, true}) {
        SCOPED_TRACE(withPack);
        PCDVOLUME vol(turns, withPack);
        PCDoviewHdl ov;
        long count = 0, sel, rot, w, h;
        ASSERT_EQ(A().PCDOopen(vol.root.c_str(), &ov), PCD_OK);
        ASSERT_TRUE(A().PCDOgetCount(ov, &count) == PCD_OK && count == 4);
        for (long e = 1; e <= count; ++e) {
            ASSERT_EQ(A().PCDOsetSelect(ov, e), PCD_OK);
            EXPECT_TRUE(A().PCDOgetSelect(ov, &sel) == PCD_OK && sel == e);
            EXPECT_TRUE(A().PCDOgetRotation(ov, &rot) == PCD_OK && rot == turns[e - 1]);
            ASSERT_EQ(A().PCDOgetFriend(ov, (vol.root + "\\IMAGES\\").c_str(), e, path, sizeof path), PCD_OK);
            EXPECT_EQ(path, vol.Pack(e));
            // The overview picture is the pack's Base/16 picture, turned the same way.
            PCDtransform t = {rot, 0, {0, 0, 0, 0}};
            void *small, *same;
            PCDpkHdl pk;
            PCDimageInfo info;
            ASSERT_EQ(A().PCDOsetTransform(ov, &t), PCD_OK);
            ASSERT_TRUE(A().PCDOloadImage(ov, &small) == PCD_OK && A().PCDOgetSize(ov, &w, &h) == PCD_OK);
            ASSERT_TRUE(A().PCDopen(path, &pk) == PCD_OK && A().PCDreadImageInfo(path, &info) == PCD_OK);
            EXPECT_TRUE(A().PCDgetRotation(pk, &rot) == PCD_OK && rot == turns[e - 1] && info.rotation == rot &&
                        info.resolutions == 3);
            A().PCDsetResolution(pk, PCD_BASE_OVER_16), A().PCDsetTransform(pk, &t);
            ASSERT_EQ(A().PCDloadImage(pk, &same), PCD_OK);
            Dib a(small), b(same);
            ASSERT_TRUE(a.h->biWidth == w && a.h->biHeight == h && b.h->biSizeImage == a.h->biSizeImage);
            EXPECT_EQ(0, memcmp(a.bits, b.bits, a.h->biSizeImage));
            std::vector<uint8_t> band((size_t)w * 3 * 5);
            ASSERT_EQ(A().PCDOgetBlock(ov, 3, 5, band.data(), w * 3), PCD_OK);
            EXPECT_EQ(0, memcmp(band.data(), a.Row(3), (size_t)w * 3));
            A().PCDfreeBitmap(small), A().PCDfreeBitmap(same), A().PCDclose(pk);
        }
        EXPECT_EQ(A().PCDOgetFriend(ov, nullptr, 5, path, sizeof path), PCD_ERR_NOT_FOUND);
        EXPECT_EQ(A().PCDOgetFriend(ov, nullptr, 1, path, 5), PCD_ERR_BAD_ARG);
        EXPECT_EQ(A().PCDOsetSelect(ov, 0), PCD_ERR_NOT_FOUND);
        EXPECT_EQ(A().PCDOsetResolution(ov, PCD_BASE), PCD_ERR_RES_NOT_SUPPORTED);
        EXPECT_EQ(A().PCDOsetResolution(ov, PCD_BASE_OVER_16), PCD_OK);
        ASSERT_TRUE(A().PCDOsetFormat(ov, PCD_FORMAT_PAL8) == PCD_OK && A().PCDOrefClose(ov) == PCD_OK);
        void* dib = nullptr;
        EXPECT_EQ(A().PCDOloadImage(ov, &dib), withPack ? PCD_ERR_CLOSED : PCD_OK);
        A().PCDfreeBitmap(dib);
        ASSERT_TRUE(A().PCDOrefOpen(ov) == PCD_OK && A().PCDOloadImage(ov, &dib) == PCD_OK);
        PCDpalette pal;
        EXPECT_TRUE(Dib(dib).h->biBitCount == 8 && A().PCDOgetPalette(ov, &pal) == PCD_OK);
        A().PCDfreeBitmap(dib);
        EXPECT_EQ(A().PCDOclose(ov), PCD_OK);
    }
    PCDoviewHdl ov;
    EXPECT_EQ(A().PCDOopen("C:\\no\\such\\volume", &ov), PCD_ERR_NOT_FOUND);
    EXPECT_EQ(A().PCDOopen("", &ov), PCD_ERR_BAD_ARG);
}

TEST(PcdLib, DamagedPacksAndLimitsGiveAStatus)
{
    PCDVOLUME vol({0, 0}, true);
    const Bytes good = pcdwriter::ImagePack(vol.pictures[0], 0);
    struct { const char* what; size_t size; int pokeAt; uint8_t poke; PCDstatus open, load16, loadBase; } cases[] = {
        {"header only", 0x1800, -1, 0, PCD_OK, PCD_ERR_DAMAGED, PCD_ERR_DAMAGED},
        {"Base cut", 0x30000 + 1000, -1, 0, PCD_OK, PCD_OK, PCD_ERR_DAMAGED},
        {"signature", good.size(), 0x801, 'X', PCD_ERR_NOT_PCD, 0, 0},
    };
    PCDpkHdl pk;
    void* dib = nullptr;
    for (auto& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes f(good.begin(), good.begin() + c.size);
        if (c.pokeAt >= 0)
            f[c.pokeAt] = c.poke;
        vol.Add(vol.Pack(2), f);
        ASSERT_EQ(A().PCDopen(vol.Pack(2).c_str(), &pk), c.open);
        if (c.open != PCD_OK)
            continue;
        for (long res : {PCD_BASE_OVER_16, PCD_BASE}) {
            A().PCDsetResolution(pk, res);
            EXPECT_EQ(A().PCDloadImage(pk, &dib), res == PCD_BASE ? c.loadBase : c.load16);
            A().PCDfreeBitmap(dib), dib = nullptr;
        }
        A().PCDclose(pk);
    }
    EXPECT_EQ(A().PCDopen((vol.root + "\\IMAGES\\IMG0099.PCD").c_str(), &pk), PCD_ERR_NOT_FOUND);
    EXPECT_EQ(A().PCDclose(nullptr), PCD_ERR_BAD_ARG);
    // The allowance: a Base picture needs more than 300000 bytes, Base/16 less.
    unsigned long was;
    ASSERT_TRUE(A().PCDgetAllowance(&was) == PCD_OK && A().PCDsetAllowance(300000) == PCD_OK);
    ASSERT_EQ(A().PCDopen(vol.Pack(1).c_str(), &pk), PCD_OK);
    EXPECT_EQ(A().PCDloadImage(pk, &dib), PCD_ERR_NO_MEMORY);
    A().PCDsetResolution(pk, PCD_BASE_OVER_16);
    EXPECT_EQ(A().PCDloadImage(pk, &dib), PCD_OK);
    A().PCDfreeBitmap(dib), A().PCDclose(pk);
    EXPECT_EQ(A().PCDsetAllowance(1000), PCD_ERR_BAD_ARG);
    ASSERT_EQ(A().PCDsetAllowance(was), PCD_OK);
}

TEST(PcdLib, ProgressAbortAndChangedDisc)
{
    PCDVOLUME vol({0}, true);
    PCDvolumeInfo info;
    ASSERT_EQ(A().PCDreadInfoFile(vol.root.c_str(), &info), PCD_OK);
    EXPECT_TRUE(info.volumeId[4] == 7 && info.imageCount == 1 && info.created == 7u);
    PCDpkHdl pk;
    PCDoviewHdl ov;
    ASSERT_TRUE(A().PCDopen(vol.Pack(1).c_str(), &pk) == PCD_OK && A().PCDOopen(vol.root.c_str(), &ov) == PCD_OK);
    Calls calls;
    ASSERT_TRUE(A().PCDsetProgress(pk, OnProgress, &calls) == PCD_OK && A().PCDsetAbort(pk, OnAbort, &calls) == PCD_OK);
    void* dib = nullptr;
    ASSERT_EQ(A().PCDloadImage(pk, &dib), PCD_OK);
    ASSERT_GE(calls.progress.size(), 3u);
    for (size_t i = 1; i < calls.progress.size(); ++i)
        EXPECT_GT(calls.progress[i].first, calls.progress[i - 1].first);
    EXPECT_EQ(calls.progress.back().first, calls.progress.back().second);
    A().PCDfreeBitmap(dib), dib = nullptr;
    calls.abortAfter = 3;
    calls.progress.clear();
    EXPECT_TRUE(A().PCDloadImage(pk, &dib) == PCD_ERR_ABORTED && !dib && calls.progress.size() == 4u);
    unsigned char row[768 * 3];
    EXPECT_EQ(A().PCDgetBlock(pk, 0, 1, row, sizeof row), PCD_ERR_ABORTED);
    ASSERT_EQ(A().PCDsetAbort(pk, nullptr, nullptr), PCD_OK);
    EXPECT_EQ(A().PCDgetBlock(pk, 0, 1, row, sizeof row), PCD_OK);
    EXPECT_EQ(A().PCDgetBlock(pk, 511, 2, row, sizeof row), PCD_ERR_BAD_ARG);
    EXPECT_EQ(A().PCDgetBlock(pk, 0, 1, row, 100), PCD_ERR_BAD_ARG);
    // Another disc in the drive: each handle asks, and goes on once the callback accepts it.
    unsigned char id[12];
    EXPECT_TRUE(A().PCDgetVolume(pk, id) == PCD_OK && id[4] == 7);
    A().PCDsetDiscChanged(pk, OnDisc, &calls), A().PCDOsetDiscChanged(ov, OnDisc, &calls);
    vol.SetId(8, 1);
    EXPECT_EQ(A().PCDloadImage(pk, &dib), PCD_ERR_DISC_CHANGED);
    ASSERT_TRUE(calls.disc.size() == 12u && calls.disc[4] == 8);
    EXPECT_EQ(A().PCDOloadImage(ov, &dib), PCD_ERR_DISC_CHANGED);
    calls.acceptDisc = 1;
    ASSERT_EQ(A().PCDloadImage(pk, &dib), PCD_OK);
    A().PCDfreeBitmap(dib);
    ASSERT_EQ(A().PCDOloadImage(ov, &dib), PCD_OK);
    A().PCDfreeBitmap(dib);
    EXPECT_TRUE(A().PCDgetVolume(pk, id) == PCD_OK && id[4] == 8);
    A().PCDclose(pk), A().PCDOclose(ov);
}

}  // namespace
