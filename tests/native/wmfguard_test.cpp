// The metafile guard: headers, record checks at their exact edges, the filter
// decisions, and a bounded walk of damaged metafiles under the sanitizers.
#include <gtest/gtest.h>
#include <algorithm>
#include <string>
#include <utility>
#include "../metafiles/wmf_build.h"
#include "wmf_harness.h"

using namespace rlwmf;
using wmftest::Wmf;
typedef std::vector<std::uint16_t> P;

namespace {

// A packed DIB as parameter words: header, `colours` entries, `bitsBytes` of zero bits.
P Dib(int width, int height, int bits, std::uint32_t compression, std::uint32_t colours, std::uint32_t bitsBytes,
      std::uint32_t sizeImage = 0)
{
    P p = {40, 0, (std::uint16_t)width, (std::uint16_t)(width >> 16), (std::uint16_t)height,
           (std::uint16_t)(height >> 16), 1, (std::uint16_t)bits, (std::uint16_t)compression, 0,
           (std::uint16_t)sizeImage, (std::uint16_t)(sizeImage >> 16), 0, 0, 0, 0,
           (std::uint16_t)colours, 0, 0, 0};
    p.resize(p.size() + colours * 2 + (bitsBytes + 1) / 2);
    return p;
}
P Cat(P a, const P& b) { return a.insert(a.end(), b.begin(), b.end()), a; }
std::vector<unsigned char> Record(std::uint16_t function, const P& params) { return Wmf().Rec(function, params).b; }

} // namespace

TEST(NativeWmfGuard, Headers)
{
    struct Case {
        const char* name;
        std::vector<unsigned char> data;
        HeaderVerdict verdict;
        std::int32_t want[6];   // when accepted: left, right, top, bottom, inch, first record
    } cases[] = {
        {"placeable", Wmf().Placeable(-10, 20, 300, 400, 1440).Header(0).Done(), kHeaderOk, {-10, 300, 20, 400, 1440, 40}},
        {"no placeable", Wmf().Header(0).Done(), kHeaderOk, {0, 1000, 0, 1000, 576, 18}},
        {"checksum off by the top bit", Wmf().Placeable(0, 0, 100, 100, 96, 0x8000).Header(0).Done(), kHeaderChecksum, {}},
        {"type 3", Wmf().Header(0, 3).Done(), kHeaderType, {}},
        {"header size 10", Wmf().Placeable(0, 0, 1, 1, 1).Header(0, 1, 10).Done(), kHeaderOk, {0, 1, 0, 1, 1, 42}},
        {"placeable cut short", std::vector<unsigned char>{0xD7, 0xCD, 0xC6, 0x9A, 0, 0}, kHeaderShort, {}},
    };
    for (const Case& c : cases) {
        HeaderInfo info;
        EXPECT_EQ(c.verdict, ParseHeader(c.data.data(), (std::uint32_t)c.data.size(), &info)) << c.name;
        if (c.verdict != kHeaderOk)
            continue;
        const std::int32_t got[] = {info.left, info.right, info.top, info.bottom, info.inch, (std::int32_t)info.firstRecord};
        EXPECT_TRUE(std::equal(got, got + 6, c.want)) << c.name;
    }
    // A largest record of 2 words is refused; 3 is the least accepted.
    std::vector<unsigned char> d = Wmf().Header(0).Done();
    HeaderInfo info;
    d[12] = 2;
    EXPECT_EQ(kHeaderMaxRecord, ParseHeader(d.data(), (std::uint32_t)d.size(), &info));
    d[12] = 3;
    EXPECT_EQ(kHeaderOk, ParseHeader(d.data(), (std::uint32_t)d.size(), &info));
    // The handle table: the declared count, bounded by what the data could create.
    EXPECT_TRUE(ClampObjects(4, 1000) == 4 && ClampObjects(65535, 1009) == 100 && ClampObjects(0xFFFFFFFFu, 0xFFFFFFFFu) == 65535);
}

TEST(NativeWmfGuard, RecordsAtTheirEdges)
{
    const P rgb8 = Dib(3, 2, 8, 0, 2, 8);  // stride 4, 2 rows
    struct Case {
        std::uint16_t function;
        P params;
        RecordVerdict verdict;
    } cases[] = {
        {fnRectangle, {1, 2, 3}, kRecordShort}, {fnPolygon, {2, 0, 0, 5, 5}, kRecordOk},
        {fnPolygon, {3, 0, 0, 5, 5}, kRecordCount}, {fnPolyPolygon, {2, 1, 3, 0, 0, 1, 1, 2, 2}, kRecordCount},
        {fnExtTextOut, {0, 0, 2, 2, 0, 0, 9, 9, 0x4241}, kRecordOk}, {fnExtTextOut, {0, 0, 2, 0x2000, 0x4241, 7, 0}, kRecordCount},
        {fnSelectObject, {1}, kRecordOk}, {fnSelectObject, {2}, kRecordObject},
        {fnCreateRegion, {0, 6, 0, 0, 0, 1, 2, 0, 0, 5, 5, 2, 0, 5, 0, 5, 2}, kRecordOk},
        {fnCreateRegion, {0, 6, 0, 0, 0, 1, 2, 0, 0, 5, 5, 2, 0, 5, 0, 5, 4}, kRecordCount},
        {fnStretchDib, Cat(P(11), rgb8), kRecordOk}, {fnStretchDib, Cat(P(11), Dib(3, 2, 8, 0, 2, 7 - 2)), kRecordBitmap},
        {fnStretchDib, Cat(P(11), Dib(3, 2, 8, 1, 2, 6, 8)), kRecordBitmap},
        {fnStretchDib, Cat(P(11), Dib(0x7FFFFFFF, 2, 32, 0, 0, 8)), kRecordBitmap},
        {fnBitBlt, Cat(P(8), Cat(P{32, 2, 1, 8, 0x2001}, P(3))), kRecordBitmap},
        {fnEscape, {15, 8262}, kRecordOk}, {0x0777, {1, 2, 3}, kRecordUnknown},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> r = Record(c.function, c.params);
        rlnative::Exact rec(r.size());
        std::memcpy(rec.p, r.data(), r.size());
        std::uint32_t bytes = 0;
        EXPECT_EQ(c.verdict, CheckRecord(rec.p, (std::uint32_t)r.size(), 2, &bytes)) << "case " << &c - cases;
        EXPECT_EQ(r.size(), bytes) << "case " << &c - cases;
    }
    // Framing: size below 3 words, size past the data, fewer than 6 bytes.
    std::vector<unsigned char> r = Record(fnRectangle, {1, 2, 3, 4});
    std::uint32_t bytes = 0;
    EXPECT_EQ(kRecordTruncated, CheckRecord(r.data(), (std::uint32_t)r.size() - 1, 2, &bytes));
    EXPECT_EQ(kRecordTruncated, CheckRecord(r.data(), 5, 2, &bytes));
    r[0] = 2;
    EXPECT_EQ(kRecordTooSmall, CheckRecord(r.data(), (std::uint32_t)r.size(), 2, &bytes));
    r[0] = 0, r[3] = 0x80;
    EXPECT_EQ(kRecordTruncated, CheckRecord(r.data(), (std::uint32_t)r.size(), 2, &bytes));
}

// Every kind of checked record, damaged by byte changes, cuts and splices.
TEST(NativeWmfGuard, DamagedMetafilesStayInBounds)
{
    Wmf w;
    w.Placeable(0, 0, 100, 100, 96).Header(3);
    w.Rec(fnCreatePenIndirect, {0, 1, 0, 0, 0}).Rec(fnSelectObject, {0});
    w.Rec(fnPolygon, {3, 0, 0, 50, 0, 50, 50}).Rec(fnPolyPolygon, {2, 2, 2, 0, 0, 1, 1, 2, 2, 3, 3});
    w.Rec(fnTextOut, {3, 0x4241, 0x43, 5, 5}).Rec(fnExtTextOut, {5, 5, 2, 6, 0, 0, 9, 9, 0x4241, 4, 4});
    w.Rec(fnCreateRegion, {0, 6, 0, 0, 0, 1, 2, 0, 0, 5, 5, 2, 0, 5, 0, 5, 2}).Rec(fnSelectClipRegion, {1});
    w.Rec(fnStretchDib, Cat(P(11), Dib(3, 2, 8, 0, 2, 8))).Rec(fnDibBitBlt, Cat(P(8), Dib(2, 2, 1, 0, 2, 8)));
    w.Rec(fnSetDibToDev, Cat(P{0, 1, 0, 0, 0, 2, 3, 0, 0}, Dib(3, 2, 8, 0, 2, 4)));
    w.Rec(fnBitBlt, Cat(P(8), P{0, 16, 2, 2, 0x0101, 0, 0, 0xFFFF, 0xFFFF}));
    w.Rec(fnRectangle, {9, 9, 1, 1}).Rec(fnArc, {0, 0, 9, 9, 9, 9, 0, 0}).Rec(fnDeleteObject, {0});
    const std::vector<unsigned char> good = w.Done();
    unsigned played = 0;
    ASSERT_TRUE(wmffuzz::Run(good.data(), good.size(), &played));
    EXPECT_EQ(15u, played);

    rlnative::Rng rng(132);
    for (int round = 0; round < 8000; ++round) {
        std::vector<unsigned char> d = good;
        for (int k = 1 + (int)rng.Below(4); k > 0; --k) {
            switch (rng.Below(4)) {
            case 0: d[rng.Below((std::uint32_t)d.size())] = rng.Byte(); break;
            case 1: d[rng.Below((std::uint32_t)d.size())] = (unsigned char)rng.Edgy(); break;
            case 2: d.resize(rng.Below((std::uint32_t)d.size()) + 1); break;
            default: {
                std::size_t at = rng.Below((std::uint32_t)d.size());
                std::vector<unsigned char> piece(d.begin(), d.begin() + rng.Below((std::uint32_t)(d.size() - at) + 1));
                d.insert(d.begin() + at, piece.begin(), piece.end());
            }
            }
        }
        rlnative::Exact exact(d.size());
        std::memcpy(exact.p, d.data(), d.size());
        ASSERT_TRUE(wmffuzz::Run(exact.p, d.size())) << rlnative::LastFailure() << " in round " << round;
    }
}
