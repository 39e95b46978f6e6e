// The own metafile format's record reader under the sanitizers: each layout and
// every cut of it, impossible counts, the DIB gate, and damaged recordings.
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "metafiles/metarec.h"
#include "metarec_touch.h"
#include "native_support.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/streams/vmemstream.h"

using namespace rlmeta;

namespace {

typedef std::vector<unsigned char> Bytes;

// head, then each value as a little-endian long, then tail.
Bytes Mix(Bytes head, std::initializer_list<long> values, const Bytes& tail = {})
{
    for (long v : values)
        for (int i = 0; i < 4; ++i)
            head.push_back((unsigned char)((unsigned long)v >> (8 * i)));
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

// The first record of an exactly sized heap copy; *usedUp when it took all bytes.
Verdict Decode(const Bytes& b, Record& r, std::string* text = nullptr, bool* usedUp = nullptr)
{
    rlnative::Exact copy(b.size() ? b.size() : 1);
    if (!b.empty())
        memcpy(copy.p, b.data(), b.size());
    MemorySource source(copy.p, b.size());
    RecordReader reader(source);
    Verdict v = reader.Next(r);
    Touch(r);
    if (usedUp)
        *usedUp = source.Remaining() == 0;
    if (text)
        *text = r.text ? std::string(r.text, r.textLength + 1) : std::string();
    return v;
}

Bytes StoredDIB(unsigned long w, unsigned long h, unsigned short bits)
{
    oMEMDIB dib(w, h, bits, bits <= 8 ? oCM_PAL256 : oCM_RGB24, 0);
    vMEMSTREAM s;
    dib >> s;
    return Bytes(s.Buffer(), s.Buffer() + s.Size());
}

} // namespace

TEST(NativeMetaRecords, LayoutsDecodeAndEveryCutIsShort)
{
    Record r;
    EXPECT_EQ(Decode({0xF8, 0}, r), REC_END);
    EXPECT_EQ(Decode({0x18, 0, 1, 2}, r), REC_UNKNOWN);
    EXPECT_EQ(r.opcode, 0x18);
    Bytes image = StoredDIB(3, 2, 8);
    Bytes online = Mix({0x27, 0, 2, 0, 'h', 'i'}, {5, -6}, {2, 0, 0xF6, 0xFF, 12, 0});
    Bytes shape = Mix(Mix({0x21, 0, 2, 0}, {1, 2}, {0x09}), {-3, 4}, {0x0A});
    Bytes dib = Mix(Mix({0x24, 0}, {}, image), {0, 0, 10, 10}, {1, 0, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17});
    const long kMin = -0x7FFFFFFF - 1;
    struct {
        Bytes bytes;
        std::vector<long> nums;
        std::string text;
        unsigned long points, advances, blob;
    } cases[] = {
        {Mix({0x1F, 0}, {-5, 6, 0x7FFFFFFF, kMin}), {-5, 6, 0x7FFFFFFF, kMin}, "", 0, 0, 0},
        {Mix({0x28, 0}, {1, 2, 3, 4, 5, 6, 7, 8}), {1, 2, 3, 4, 5, 6, 7, 8}, "", 0, 0, 0},
        {{0x25, 0, 'Q', 7, 0, 0, 0, 8, 0, 0, 0}, {'Q', 7, 8}, "", 0, 0, 0},
        {Mix({0x23, 0, 3, 0, 'a', 'b', 'c'}, {-1, 2, 300, 0x7FFFFFFF, 9}), {-1, 2, 300, 0x7FFFFFFF, 9}, "abc", 0, 0, 0},
        {online, {5, -6}, "hi", 0, 2, 0},
        {shape, {}, "", 2, 0, 0},
        {dib, {0, 0, 10, 10}, "", 0, 0, image.size()},
        {Mix(Mix({0x15, 0, 14, 0}, {0, 0, 0, 0, 0}, {0, 0}), {}, image), {}, "", 0, 0, 24 + image.size()},
        {Mix({0x16, 0, 4, 0, 'H', 'e', 'l', 'v', 2, 0}, {0, 0, 0, 0}), {}, "", 0, 0, 24},
    };
    for (auto& c : cases) {
        std::string text;
        bool usedUp = false;
        ASSERT_EQ(Decode(c.bytes, r, &text, &usedUp), REC_OK) << c.bytes[0];
        EXPECT_TRUE(usedUp) << c.bytes[0];
        ASSERT_EQ(r.nums, (int)c.nums.size()) << c.bytes[0];
        for (size_t i = 0; i < c.nums.size(); ++i)
            EXPECT_EQ(r.num[i], c.nums[i]) << c.bytes[0] << " " << i;
        EXPECT_TRUE(c.text.empty() || text == c.text + '\0') << c.bytes[0];
        EXPECT_TRUE(r.pointCount == c.points && r.advanceCount == c.advances && r.blobSize == c.blob) << c.bytes[0];
        for (size_t n = 0; n < c.bytes.size(); ++n)
            EXPECT_EQ(Decode(Bytes(c.bytes.begin(), c.bytes.begin() + n), r), REC_SHORT) << c.bytes[0] << " cut at " << n;
    }
}

TEST(NativeMetaRecords, ImpossibleCountsAndImages)
{
    // Counts far beyond the bytes that follow are refused before anything is allocated.
    Record r;
    for (unsigned op : {0x1Eu, 0x21u, 0x17u, 0x23u, 0x16u})
        EXPECT_EQ(Decode({(unsigned char)op, 0, 0xFF, 0xFF, 1, 2, 3}, r), REC_SHORT) << op;
    // Advances counted past the end once a text and its position fitted.
    EXPECT_EQ(Decode({0x27, 0, 1, 0, 'a', 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}, r), REC_SHORT);
    // The gate matches the images the library writes, to the byte.
    for (unsigned short bits : {1, 8, 24})
        for (unsigned long w : {1ul, 33ul}) {
            Bytes image = StoredDIB(w, 5, bits);
            EXPECT_EQ(StoredDIBSize(image.data()), image.size()) << bits << " " << w;
        }
    Bytes good = StoredDIB(4, 4, 24);
    // offset, value, bytes: header size, width 0, width out of range, height 0,
    // bit count, compressed rows, fewer pixel bytes than the rows need.
    const unsigned long bad[][3] = {{0, 41, 4}, {4, 0x8000, 4}, {8, 0, 4}, {14, 7, 2}, {16, 1, 4}, {20, 47, 4}};
    for (auto& b : bad) {
        Bytes rec = {0x24, 0};
        rec.insert(rec.end(), good.begin(), good.end());
        for (unsigned long i = 0; i < b[2]; ++i)
            rec[2 + b[0] + i] = (unsigned char)(b[1] >> (8 * i));
        EXPECT_EQ(StoredDIBSize(rec.data() + 2), 0u) << b[0];
        EXPECT_EQ(Decode(rec, r), REC_BAD) << b[0];
    }
}

TEST(NativeMetaRecords, DamagedRecordingsStayInBounds)
{
    Bytes seed = Mix(Mix({0x1F, 0}, {1, 2, 3, 4}), {}, Mix({0x1E, 0, 2, 0}, {1, 2, 3, 4}));
    seed = Mix(Mix(seed, {}, {0x23, 0, 1, 0, 'x'}), {1, 2, 3, 4, 0});
    seed = Mix(Mix(seed, {}, {0x16, 0, 1, 0, 'A', 2, 0}), {1, 0, 0, 0}, {0, 0});
    seed = Mix(Mix(seed, {}, {0x24, 0}), {}, StoredDIB(2, 2, 8));
    seed.resize(seed.size() + 18);
    rlnative::Rng rng(7);
    for (int iter = 0; iter < 4000; ++iter) {
        Bytes b = seed;
        for (unsigned n = 1 + rng.Below(6); n; --n) {
            size_t at = rng.Below((unsigned)b.size());
            unsigned long v = rng.Chance(3) ? rng.Edgy() : rng.Byte();
            for (int i = 0; i < (v > 0xFF ? 4 : 1) && at + i < b.size(); ++i)
                b[at + i] = (unsigned char)(v >> (8 * i));
        }
        if (rng.Chance(4))
            b.resize(rng.Below((unsigned)b.size() + 1));
        rlnative::Exact copy(b.size() + 1);
        memcpy(copy.p, b.data(), b.size());
        MemorySource source(copy.p, b.size());
        RecordReader reader(source);
        Record r;
        for (int records = 0; reader.Next(r) == REC_OK && records < 100; ++records) {
            Touch(r);
            ASSERT_LE(r.pointCount * 9 + r.advanceCount * 2 + r.textLength + r.blobSize, b.size());
        }
    }
}
