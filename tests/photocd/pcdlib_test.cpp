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
} // namespace

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
    const uint8_t other[12] = {'D', 'I', 'S', 'C', 8, 0, 0, 0, 0, 0, 0, 1};
    vol.Add(vol.root + "\\PHOTO_CD\\INFO.PCD", pcdwriter::InfoFile(other, 1));
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
