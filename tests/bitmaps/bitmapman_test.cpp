// The bitmap manager: a thousand bitmaps of one file paged through a small
// resident limit, and the new-failure handler.
#include <gtest/gtest.h>
#include <windows.h>
#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <set>
#include "bitmap_oracle.h"
#include "rltest.h"

namespace {

struct LIMIT {
    explicit LIMIT(unsigned short l) : old(vPAGEOUT::GetResidentLimit()) { vPAGEOUT::SetResidentLimit(l); }
    ~LIMIT() { vPAGEOUT::SetResidentLimit(old); }
    unsigned short old;
};

// n pictures in one file, and each one's pixels drawn at (0, 0) by plain GDI.
struct DOCUMENT {
    DOCUMENT(int n, long w, long h) : path(rltest::TempPath("bmm"))
    {
        std::vector<unsigned char> all;
        for (int i = 0; i < n; ++i) {
            bmo::PIC p = bmo::Make(w, h, 24, 1000 + i);
            bmo::CANVAS c(w, h);
            c.Draw(p, {0, 0, w, h}, {0, 0, w, h});
            want.emplace_back(c.Bytes(), c.Bytes() + c.size);
            all.insert(all.end(), p.bytes.begin(), p.bytes.end());
        }
        bmt::Save(path, all);
    }
    ~DOCUMENT() { DeleteFileA(path.c_str()); }
    std::string path;
    std::vector<std::vector<unsigned char>> want;
};

TEST(BitmapManager, ThousandBitmapsPageThroughTheirFile)
{
    const int n = 1000;
    const long w = 24, h = 16;
    DOCUMENT doc(n, w, h);
    vBITMAPMAN* m = vBITMAPMAN::Get();
    ASSERT_NE(nullptr, m);
    LIMIT limit(20);
    vMEMDEVICE dev{vINT(w), vINT(h)};
    dev.GetDIB();
    int peakLive = 0, checks = 0;
    std::set<HBITMAP> seen;
    std::vector<vBITMAP> bitmaps;
    // Strips GDI knows as live bitmaps, each noted in `seen` to ask after later.
    auto liveStrips = [&] {
        int live = 0;
        for (const vBITMAP& b : bitmaps)
            for (unsigned short i = 0; b.Resource() && i < b.Resource()->StripCount(); ++i)
                if (HBITMAP s = b.Resource()->Strip(i)) {
                    seen.insert(s);
                    live += GetObjectType(s) == OBJ_BITMAP;
                }
        return live;
    };
    auto drawsRight = [&](const vBITMAP& b, int i) {
        if (!b.Draw(dev, vPOINT(vINT(0L), vINT(0L))))
            return false;
        if (++checks % 100 == 0)
            peakLive = std::max(peakLive, liveStrips());
        return std::memcmp(dev.GetDIB(), doc.want[i].data(), doc.want[i].size()) == 0;
    };
    bitmaps.reserve(n);
    {
        vFILE file(vSTRING(doc.path.c_str()), vFILE_READONLY, 1);
        for (int i = 0; i < n; ++i) {
            bitmaps.emplace_back(file);
            ASSERT_TRUE(bitmaps.back().Resource() != nullptr) << i;
            seen.insert(bitmaps.back().Resource()->Strip(0));
        }
        // While the stream is open a page-in reads through it and leaves it where it was.
        EXPECT_TRUE(file.Size() == file.CurrentPos() && !bitmaps[0].Resource()->IsResident());
        EXPECT_TRUE(drawsRight(bitmaps[0], 0) && file.Size() == file.CurrentPos());
    }
    EXPECT_LE(m->ResidentCount(), 20);
    const unsigned long pageInsBefore = m->PageIns();
    std::mt19937 rng(3);
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    for (int pass = 0; pass < 2; ++pass) {
        std::shuffle(order.begin(), order.end(), rng);
        int wrong = 0;
        for (int i : order)
            wrong += !drawsRight(bitmaps[i], i);
        EXPECT_EQ(0, wrong) << "pass " << pass;
    }
    // Nearly every draw pages in; one strip each.
    EXPECT_TRUE(m->PageIns() - pageInsBefore > (unsigned long)(2 * n - 100) && m->ResidentCount() <= 20);
    EXPECT_TRUE(peakLive <= 20 && peakLive > 10) << peakLive;
    liveStrips();
    bitmaps.clear();
    EXPECT_TRUE(m->ResidentCount() + m->PagedOutCount() == 0);
    int leaked = 0;
    for (HBITMAP s : seen)
        leaked += GetObjectType(s) != 0;
    EXPECT_TRUE(leaked == 0 && seen.size() >= 1000u) << leaked << " of " << seen.size();
    // With its last bitmap gone the file is free to write.
    HANDLE writer = CreateFileA(doc.path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, writer);
    CloseHandle(writer);
}

TEST(BitmapManager, NewFailureHandlerPagesBitmapsOut)
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    DOCUMENT doc(10, 10, 10);
    LIMIT limit(20);
    std::vector<vBITMAP> bitmaps;
    {
        vFILE file(vSTRING(doc.path.c_str()), vFILE_READONLY, 1);
        for (int i = 0; i < 10; ++i)
            bitmaps.emplace_back(file);
    }
    ASSERT_EQ(10, m->ResidentCount());
    rltest::MessageBoxes boxes;
    void* block = vMemAlloc(16);
    // Twice five go and the limit drops as much; then the list is empty and the retry fails.
    EXPECT_EQ(nullptr, vMemRealloc(block, 0x7FFFFFF0ul));
    vMemFree(block);
    EXPECT_TRUE(m->ResidentCount() == 0 && m->PagedOutCount() == 10 && vPAGEOUT::GetResidentLimit() == 10);
    EXPECT_TRUE(vSYSTEM::GetExceptionFlag() == 1 && boxes.Calls().size() == 1u);
    vSYSTEM::SetExceptionFlag(0);
    // They come back from their file, tracing the way.
    rltest::DebugOutput out;
    rltest::TraceLevel level(2);
    EXPECT_TRUE(bitmaps[3].Valid() && out.Text().find("Trace: fileRESOURCE::Paging In") != std::string::npos);
}

} // namespace
