// The binary encoding: byte order, widths, swapped reading, pointers, the typed
// operators and the number values, on memory and file streams alike.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

namespace {
Bytes MemBytes(vMEMSTREAM& m)
{
    return Bytes(m.Buffer(), m.Buffer() + m.Size());
}

// Writes the same sequence of every typed value through the shift operators.
void WriteAllKinds(vSTREAM& s)
{
    s << (unsigned long)0x01020304UL << (unsigned short)0xA1B2 << (unsigned char)0xC3
      << (long)-2L << (short)-3 << (signed char)-4;
}
} // namespace

TEST(StreamEncoding, LittleEndianOnMemoryAndFileAlike)
{
    const unsigned char expected[] = {0x04, 0x03, 0x02, 0x01, 0xB2, 0xA1, 0xC3, 0xFE, 0xFF,
                                      0xFF, 0xFF, 0xFD, 0xFF, 0xFC};
    vMEMSTREAM mem;
    WriteAllKinds(mem);
    EXPECT_EQ(MemBytes(mem), Bytes(expected, expected + sizeof expected));

    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 0);
        ASSERT_EQ(f.Status(), vSTREAM_OK);
        WriteAllKinds(f);
        // Writers ignore the swap flag: the second copy has the same bytes.
        f.SwapByteOrder(1);
        WriteAllKinds(f);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
    }
    Bytes twice(expected, expected + sizeof expected);
    twice.insert(twice.end(), expected, expected + sizeof expected);
    EXPECT_EQ(FileBytes(tmp.path), twice);
}

TEST(StreamEncoding, ReadsHonourTheSwapFlag)
{
    unsigned char data[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x80, 0x01, 0x02, 0x03,
                            0x04, 0x05, 0x06, 0x80};
    unsigned char* p = data;
    vMEMSTREAM m(&p, sizeof data, vSTRING(), 0, 0);
    EXPECT_EQ(m.ReadULong(), 0x04030201UL);
    EXPECT_EQ(m.ReadUWord(), 0x0605);
    EXPECT_EQ(m.ReadSByte(), -128);
    m.SwapByteOrder(1);
    EXPECT_EQ(m.ReadULong(), 0x01020304UL);
    EXPECT_EQ(m.ReadUWord(), 0x0506);
    EXPECT_EQ(m.ReadUByte(), 0x80);
    EXPECT_EQ(m.Status(), vSTREAM_OK);
    EXPECT_TRUE(m.AtEnd());
    // Signed forms read the same bytes, swapped too.
    m.MoveFromStart(4);
    EXPECT_EQ(m.ReadSWord(), (short)0x0506);
    m.MoveFromStart(6);
    m.SwapByteOrder(0);
    EXPECT_EQ(m.ReadSWord(), (short)0x0180);
    m.MoveFromStart(0);
    m.SwapByteOrder(1);
    EXPECT_EQ(m.ReadSLong(), 0x01020304L);
}

TEST(StreamEncoding, ManyValuesRoundTripAgainstTheirBytes)
{
    // Every generated value must land as its little-endian bytes and read back.
    Rng r(2024);
    vMEMSTREAM m;
    std::vector<unsigned long> longs;
    std::vector<unsigned short> words;
    for (int i = 0; i < 2000; ++i) {
        longs.push_back(r.Next());
        words.push_back((unsigned short)r.Next());
        m << longs.back() << words.back();
    }
    ASSERT_EQ(m.Size(), 2000UL * 6);
    const unsigned char* b = m.Buffer();
    for (int i = 0; i < 2000; ++i) {
        unsigned long v = longs[i];
        ASSERT_EQ(LE32(b + 6 * i), v);
        ASSERT_EQ(b[6 * i + 4] | (b[6 * i + 5] << 8), words[i]);
    }
    m.MoveFromStart(0);
    for (int i = 0; i < 2000; ++i) {
        unsigned long l;
        unsigned short w;
        m >> l >> w;
        ASSERT_EQ(l, longs[i]);
        ASSERT_EQ(w, words[i]);
    }
    EXPECT_EQ(m.Status(), vSTREAM_OK);
    m.SwapByteOrder(1);
    m.MoveFromStart(0);
    for (int i = 0; i < 50; ++i) {
        unsigned long v = longs[i];
        unsigned long swapped = (v >> 24) | ((v >> 8) & 0xFF00) | ((v << 8) & 0xFF0000) | (v << 24);
        ASSERT_EQ(m.ReadULong(), swapped);
        m.ReadUWord();
    }
}

TEST(StreamEncoding, PointersAreTheAddressBytesNeverSwapped)
{
    vOBJECT object;
    vMEMSTREAM m;
    m.WritePointer(&object);
    m.WritePointer(nullptr);
    ASSERT_EQ(m.Size(), 8UL);
    const vOBJECT* addr = &object;
    EXPECT_EQ(memcmp(m.Buffer(), &addr, 4), 0);
    m.SwapByteOrder(1);
    m.MoveFromStart(0);
    EXPECT_EQ(m.ReadPointer(), &object);
    EXPECT_EQ(m.ReadPointer(), nullptr);
}

TEST(StreamEncoding, ByteStringHasNeitherLengthNorTerminator)
{
    vMEMSTREAM m;
    EXPECT_EQ(m.WriteByteString((const unsigned char*)"abc"), 3UL);
    EXPECT_EQ(m.WriteByteString((const unsigned char*)""), 0UL);
    EXPECT_EQ(MemBytes(m), Bytes({'a', 'b', 'c'}));
}

TEST(StreamEncoding, NumbersAreOneSignedLong)
{
    vMEMSTREAM m;
    vINT(-5) >> m;
    vREAL(1.5) >> m;
    vREAL(-0.25) >> m;
    const unsigned char expected[] = {0xFB, 0xFF, 0xFF, 0xFF, 0x00, 0x80, 0x01, 0x00,
                                      0x00, 0xC0, 0xFF, 0xFF};
    EXPECT_EQ(MemBytes(m), Bytes(expected, expected + sizeof expected));
    m.MoveFromStart(0);
    vINT i;
    vREAL a, b;
    i << m;
    a << m;
    b << m;
    EXPECT_EQ(i(), -5);
    EXPECT_EQ(a(), 0x18000);
    EXPECT_EQ(b(), -0x4000);
    // Read past the end: the value is what exists (nothing) and status 2.
    vINT past(7);
    past << m;
    EXPECT_EQ(past(), 0);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
}

TEST(StreamEncoding, BaseFlagsAndCounts)
{
    vMEMSTREAM m(vSTRING((char*)"named"), 0);
    EXPECT_STREQ(m.Name()(), "named");
    EXPECT_EQ(m.IsStream(), 1);
    EXPECT_EQ(m.Close(), 0);
    EXPECT_EQ(m.ReOpen(), 0);
    EXPECT_EQ(m.Compressed(), 0);
    EXPECT_EQ(m.DetectingCompressed(), 1);
    EXPECT_EQ(m.UnCompressed(), 0);
    EXPECT_TRUE(m.NoRef());
    EXPECT_EQ(m.IncCount(), 0);
    EXPECT_EQ(m.IncCount(), 1);
    EXPECT_FALSE(m.NoRef());
    EXPECT_EQ(m.DecCount(), 2);
    EXPECT_EQ(m.DecCount(), 1);
    EXPECT_TRUE(m.NoRef());
    m.Compress(5);
    EXPECT_EQ(m.Compressed(), 1);

    // The attached object's byte-order flag is cleared when the stream goes.
    int flag = 1;
    {
        vMEMSTREAM other;
        other.Attach(&flag);
    }
    EXPECT_EQ(flag, 0);
}
