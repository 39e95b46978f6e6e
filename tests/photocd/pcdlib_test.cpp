// PCDLIB32.DLL through its exported entry points, on volumes the tests write.
// Pixel values and the transform kernel are checked natively; here the
// entries must be there and answer for the stored picture.
#include <windows.h>
#include <gtest/gtest.h>
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

TEST(PcdLib, EachResolutionReadsThePicture)
{
    ASSERT_TRUE(A().dll);
    EXPECT_EQ(A().missing, 0);
    unsigned long v = 0;
    EXPECT_TRUE(A().PCDgetToolkitVersion(&v) == PCD_OK && v == 0x0100u);
    PCDVOLUME vol({0}, false);
    PCDpkHdl pk;
    ASSERT_EQ(A().PCDopen(vol.Pack(1).c_str(), &pk), PCD_OK);
    long count = 0, w, h, got;
    EXPECT_TRUE(A().PCDgetCount(pk, &count) == PCD_OK && count == 3);
    // The pixels themselves are checked by the kernel's own tests and through the plug-ins.
    for (long res = PCD_BASE_OVER_16; res <= PCD_BASE; ++res) {
        ASSERT_EQ(A().PCDsetResolution(pk, res), PCD_OK);
        EXPECT_TRUE(A().PCDgetResolution(pk, &got) == PCD_OK && got == res);
        void* dib = nullptr;
        ASSERT_EQ(A().PCDloadImage(pk, &dib), PCD_OK);
        const BITMAPINFOHEADER* hd = (const BITMAPINFOHEADER*)dib;
        EXPECT_TRUE(A().PCDgetSize(pk, &w, &h) == PCD_OK && w == 192L << res && h == 128L << res) << res;
        EXPECT_TRUE(hd->biBitCount == 24 && hd->biWidth == w && hd->biHeight == h) << res;
        EXPECT_EQ(A().PCDfreeBitmap(dib), PCD_OK);
    }
    for (long r : {PCD_4BASE, PCD_16BASE})
        EXPECT_EQ(A().PCDsetResolution(pk, r), PCD_ERR_RES_NOT_SUPPORTED);
    EXPECT_EQ(A().PCDsetResolution(pk, 9), PCD_ERR_BAD_ARG);
    EXPECT_EQ(A().PCDsetFormat(pk, 14), PCD_ERR_FORMAT_NOT_SUPPORTED);
    EXPECT_EQ(A().PCDclose(pk), PCD_OK);
}

} // namespace
