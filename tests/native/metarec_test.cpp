// The own metafile format's record reader under the sanitizers: the opcode
// table, each layout decoded, every cut of a record, impossible counts, the
// DIB gate against the images the library writes, and a bounded fuzz loop.
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "metafiles/metarec.h"
#include "native_support.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/streams/vmemstream.h"

using namespace rlmeta;

namespace {

typedef std::vector<unsigned char> Bytes;

void Word(Bytes& b, unsigned v) { b.push_back((unsigned char)v); b.push_back((unsigned char)(v >> 8)); }
void Long(Bytes& b, long v)
{
    unsigned long u = (unsigned long)v;
    for (int i = 0; i < 4; ++i)
        b.push_back((unsigned char)(u >> (8 * i)));
}
Bytes Longs(unsigned op, std::initializer_list<long> values)
{
    Bytes b;
    Word(b, op);
    for (long v : values)
        Long(b, v);
    return b;
}
// head, then each value as a long, then tail.
Bytes Mix(Bytes head, std::initializer_list<long> values, const Bytes& tail = {})
{
    for (long v : values)
        Long(head, v);
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

// What a record held, copied out before its reader goes.
struct Seen {
    Record r;
    std::string text;
    std::vector<long> y;
    std::vector<unsigned char> flags;
    std::vector<short> advances;
    bool usedUp;
};

// Decodes the first record from an exactly sized heap copy of the bytes,
// touching everything it points at so that a pointer past the buffer shows.
Verdict Decode(const Bytes& b, Seen& s)
{
    rlnative::Exact copy(b.size() ? b.size() : 1);
    if (!b.empty())
        memcpy(copy.p, b.data(), b.size());
    MemorySource source(copy.p, b.size());
    RecordReader reader(source);
    Record& r = s.r;
    Verdict v = reader.Next(r);
    s.usedUp = source.Remaining() == 0;
    s.text = r.text ? std::string(r.text, r.textLength + 1) : std::string();
    s.y.clear();
    s.flags.clear();
    s.advances.clear();
    for (unsigned long i = 0; i < r.pointCount; ++i) {
        s.y.push_back(r.PointY(i));
        (void)r.PointX(i);
        s.flags.push_back(r.PointFlags(i));
    }
    for (unsigned long i = 0; i < r.advanceCount; ++i)
        s.advances.push_back(r.Advance(i));
    unsigned sum = 0;
    for (unsigned long i = 0; i < r.blobSize; ++i)
        sum += r.blob[i];
    (void)sum;
    return v;
}

// A stored DIB as the library writes it.
Bytes StoredDIB(unsigned long w, unsigned long h, unsigned short bits)
{
    oMEMDIB dib(w, h, bits, bits <= 8 ? oCM_PAL256 : oCM_RGB24, 0);
    vMEMSTREAM s;
    dib >> s;
    return Bytes(s.Buffer(), s.Buffer() + s.Size());
}

} // namespace

TEST(NativeMetaRecords, OpcodeTable)
{
    for (unsigned op = 0; op <= 0xFFFF; ++op) {
        bool known = (op >= 0x0A && op <= 0x17) || (op >= 0x1E && op <= 0x2B) || op == 0xF8;
        EXPECT_EQ(Layout((unsigned short)op) != nullptr, known) << op;
    }
    Seen s;
    EXPECT_EQ(Decode({0xF8, 0}, s), REC_END);
    EXPECT_EQ(Decode({0x18, 0, 1, 2}, s), REC_UNKNOWN);
    EXPECT_EQ(s.r.opcode, 0x18);
    EXPECT_EQ(Decode({0x0A}, s), REC_SHORT);
}

TEST(NativeMetaRecords, LayoutsDecodeAndEveryCutIsShort)
{
    Bytes image = StoredDIB(3, 2, 8);
    Bytes text = Mix({0x23, 0, 3, 0, 'a', 'b', 'c'}, {-1, 2, 300, 0x7FFFFFFF, 9});
    Bytes online = Mix({0x27, 0, 2, 0, 'h', 'i'}, {5, -6}, {2, 0, 0xF6, 0xFF, 12, 0});
    Bytes shape = Mix(Mix({0x21, 0, 2, 0}, {1, 2}, {0x09}), {-3, 4}, {0x0A});
    Bytes dib = Mix(Mix({0x24, 0}, {}, image), {0, 0, 10, 10}, {1, 0, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17});
    Bytes fill = Mix(Mix({0x15, 0, 14, 0}, {0, 0, 0, 0, 0}, {0, 0}), {}, image);   // a pattern image
    Bytes font = Mix({0x16, 0, 4, 0, 'H', 'e', 'l', 'v', 2, 0}, {0, 0, 0, 0});
    struct {
        Bytes bytes;
        std::vector<long> nums;
        std::string text;
        unsigned long points, advances, blob;
    } cases[] = {
        {Longs(0x1F, {-5, 6, 0x7FFFFFFF, -0x7FFFFFFF - 1}), {-5, 6, 0x7FFFFFFF, -0x7FFFFFFF - 1}, "", 0, 0, 0},
        {Longs(0x22, {1, 2, 3, 4}), {1, 2, 3, 4}, "", 0, 0, 0},
        {Longs(0x28, {1, 2, 3, 4, 5, 6, 7, 8}), {1, 2, 3, 4, 5, 6, 7, 8}, "", 0, 0, 0},
        {Longs(0x2B, {1, 2, 3, 4, 5, 6}), {1, 2, 3, 4, 5, 6}, "", 0, 0, 0},
        {{0x26, 0, 0xFE, 0xFF}, {-2}, "", 0, 0, 0},
        {{0x25, 0, 'Q', 7, 0, 0, 0, 8, 0, 0, 0}, {'Q', 7, 8}, "", 0, 0, 0},
        {text, {-1, 2, 300, 0x7FFFFFFF, 9}, "abc", 0, 0, 0},
        {online, {5, -6}, "hi", 0, 2, 0},
        {shape, {}, "", 2, 0, 0},
        {{0x1E, 0, 0, 0}, {}, "", 0, 0, 0},
        {dib, {0, 0, 10, 10}, "", 0, 0, image.size()},
        {fill, {}, "", 0, 0, 24 + image.size()},
        {font, {}, "", 0, 0, 24},
        {Bytes{0x14, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24},
         {}, "", 0, 0, 24},
    };
    for (auto& c : cases) {
        Seen s;
        const Record& r = s.r;
        ASSERT_EQ(Decode(c.bytes, s), REC_OK) << c.bytes[0];
        EXPECT_TRUE(s.usedUp) << c.bytes[0];
        ASSERT_EQ(r.nums, (int)c.nums.size()) << c.bytes[0];
        for (size_t i = 0; i < c.nums.size(); ++i)
            EXPECT_EQ(r.num[i], c.nums[i]) << c.bytes[0] << " " << i;
        if (!c.text.empty()) {
            EXPECT_EQ(s.text, c.text + '\0');
        }
        EXPECT_EQ(r.pointCount, c.points);
        EXPECT_EQ(r.advanceCount, c.advances);
        EXPECT_EQ(r.blobSize, c.blob) << c.bytes[0];
        for (size_t n = 0; n < c.bytes.size(); ++n) {
            Bytes cut(c.bytes.begin(), c.bytes.begin() + n);
            Seen t;
            EXPECT_EQ(Decode(cut, t), REC_SHORT) << c.bytes[0] << " cut at " << n;
        }
    }
    Seen s;
    Decode(online, s);
    EXPECT_EQ(s.advances, (std::vector<short>{-10, 12}));
    Decode(shape, s);
    EXPECT_EQ(s.y, (std::vector<long>{2, 4}));
    EXPECT_EQ(s.flags, (std::vector<unsigned char>{0x09, 0x0A}));
    Decode(dib, s);
    EXPECT_EQ(s.r.hasColour, 1);
    EXPECT_EQ(s.r.colour[7], 0x17);
}

TEST(NativeMetaRecords, ImpossibleCountsAndImages)
{
    // Counts far beyond the bytes that follow are refused before anything
    // is allocated for them.
    for (unsigned op : {0x1Eu, 0x21u, 0x17u, 0x23u, 0x16u}) {
        Bytes b = {(unsigned char)op, 0, 0xFF, 0xFF, 1, 2, 3};
        Seen s;
        EXPECT_EQ(Decode(b, s), REC_SHORT) << op;
    }
    // The gate matches the images the library writes, to the byte.
    for (unsigned short bits : {1, 4, 8, 24, 32}) {
        for (unsigned long w : {1ul, 3ul, 33ul}) {
            Bytes image = StoredDIB(w, 5, bits);
            ASSERT_GE(image.size(), 40u);
            EXPECT_EQ(StoredDIBSize(image.data()), image.size()) << bits << " " << w;
        }
    }
    Bytes good = StoredDIB(4, 4, 24);
    struct {
        int at;
        unsigned long value;
        int bytes;
    } bad[] = {
        {0, 41, 4},           // header size
        {4, 0, 4},            // width 0
        {4, 0x8000, 4},       // width out of range
        {8, 0, 4},            // height 0
        {14, 7, 2},           // bit count
        {16, 1, 4},           // compressed rows
        {20, 47, 4},          // fewer pixel bytes than the rows need
    };
    for (auto& b : bad) {
        Bytes h = good;
        for (int i = 0; i < b.bytes; ++i)
            h[b.at + i] = (unsigned char)(b.value >> (8 * i));
        EXPECT_EQ(StoredDIBSize(h.data()), 0u) << b.at;
        Bytes rec = {0x24, 0};
        rec.insert(rec.end(), h.begin(), h.end());
        Seen s;
        EXPECT_EQ(Decode(rec, s), REC_BAD) << b.at;
    }
}

// Valid recordings with bytes changed, cut and repeated: every record the
// reader accepts stays within what it read.
TEST(NativeMetaRecords, DamagedRecordingsStayInBounds)
{
    Bytes seed = Mix(Longs(0x1F, {1, 2, 3, 4}), {}, Mix({0x1E, 0, 2, 0}, {1, 2, 3, 4}));
    seed = Mix(Mix(seed, {}, {0x23, 0, 1, 0, 'x'}), {1, 2, 3, 4, 0});
    seed = Mix(Mix(seed, {}, {0x16, 0, 1, 0, 'A', 2, 0}), {1, 0, 0, 0}, {0, 0});
    seed = Mix(Mix(seed, {}, {0x24, 0}), {}, StoredDIB(2, 2, 8));
    seed.resize(seed.size() + 18);
    rlnative::Rng rng(7);
    for (int iter = 0; iter < 4000; ++iter) {
        Bytes b = seed;
        for (unsigned n = 1 + rng.Below(6); n; --n) {
            size_t at = rng.Below((unsigned)b.size());
            if (rng.Chance(3)) {
                unsigned long v = rng.Edgy();
                for (int i = 0; i < 4 && at + i < b.size(); ++i)
                    b[at + i] = (unsigned char)(v >> (8 * i));
            } else {
                b[at] = rng.Byte();
            }
        }
        if (rng.Chance(4))
            b.resize(rng.Below((unsigned)b.size() + 1));
        rlnative::Exact copy(b.size() + 1);
        memcpy(copy.p, b.data(), b.size());
        MemorySource source(copy.p, b.size());
        RecordReader reader(source);
        Record r;
        int records = 0;
        while (reader.Next(r) == REC_OK && records < 100) {
            ++records;
            unsigned sum = 0;
            for (unsigned long i = 0; r.text && i <= r.textLength; ++i)
                sum += (unsigned char)r.text[i];
            for (unsigned long i = 0; i < r.pointCount; ++i)
                sum += (unsigned)r.PointX(i) + r.PointFlags(i);
            for (unsigned long i = 0; i < r.advanceCount; ++i)
                sum += (unsigned)r.Advance(i);
            for (unsigned long i = 0; i < r.blobSize; ++i)
                sum += r.blob[i];
            ASSERT_LE(r.pointCount * 9 + r.advanceCount * 2 + r.textLength + r.blobSize, b.size());
            (void)sum;
        }
    }
}
