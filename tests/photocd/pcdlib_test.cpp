// PCDLIB32.DLL through its exported entry points, on volumes the tests write.
// Pixel values and the transform kernel are checked natively; here the
// entries' paths must agree with each other and with the stored picture.
#include <windows.h>
#include <gtest/gtest.h>
#include <algorithm>
#include "pcdvolume.h"
#include "rl132/photocd/pcdapi.h"

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

}  // namespace
