// What values look like on a stream: byte order, swapped reading,
// numbers and strings, and short reads of each.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamEncoding, ValuesAreLittleEndianOnMemoryAndFileAlike)
{
    const Bytes expected = {0x04, 0x03, 0x02, 0x01, 0xB2, 0xA1, 0xC3, 0xFE, 0xFF, 0xFF, 0xFF, 0xFD, 0xFF, 0xFC,
                            'a', 'b', 'c',                             // byte string: no length, no terminator
                            0xFB, 0xFF, 0xFF, 0xFF, 0x00, 0x80, 0x01, 0x00,  // vINT -5, vREAL 1.5
                            0, 0, 3, 0, 'a', 'b', 'c'};                // empty vSTRING, then "abc"
    auto writeAll = [](vSTREAM& s) {
        s << (unsigned long)0x01020304UL << (unsigned short)0xA1B2 << (unsigned char)0xC3 << (long)-2L << (short)-3
          << (signed char)-4;
        s.WriteByteString((const unsigned char*)"abc");
        vINT(-5) >> s;
        vREAL(1.5) >> s;
        vSTRING() >> s;
        vSTRING("abc") >> s;
    };
    vMEMSTREAM mem;
    writeAll(mem);
    EXPECT_EQ(Bytes(mem.Buffer(), mem.Buffer() + mem.Size()), expected);
    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 0);
        writeAll(f);
        f.SwapByteOrder(1);  // writers ignore the swap flag
        writeAll(f);
    }
    EXPECT_EQ(FileBytes(tmp.path), Cat(expected, expected));

    mem.MoveFromStart(17);
    vINT i;
    vREAL a;
    vSTRING s1("old"), s2;
    i << mem;
    a << mem;
    s1 << mem;
    s2 << mem;
    EXPECT_EQ(i(), -5);
    EXPECT_EQ(a(), 0x18000);
    EXPECT_STREQ(s1(), "");
    EXPECT_STREQ(s2(), "abc");
    EXPECT_EQ(mem.Status(), vSTREAM_OK);
    vINT past(7);  // nothing left: the value is what exists
    past << mem;
    EXPECT_EQ(past(), 0);
    EXPECT_EQ(mem.Status(), vSTREAM_SHORTREAD);
}

TEST(StreamEncoding, SwappedReadsAndShortStrings)
{
    unsigned char data[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x80};
    unsigned char* p = data;
    vMEMSTREAM m(&p, sizeof data, vSTRING(), 0, 0);
    EXPECT_EQ(m.ReadULong(), 0x04030201UL);
    m.SwapByteOrder(1);
    EXPECT_EQ(m.ReadSWord(), (short)0x0506);
    EXPECT_EQ(m.ReadSByte(), -128);
    m.MoveFromStart(0);
    EXPECT_EQ(m.ReadSLong(), 0x01020304L);

    // A length word promising more than exists gives what exists; a lone
    // byte where the length should be gives an empty string.
    for (const Bytes& in : {Bytes{10, 0, 'a', 'b'}, Bytes{5}}) {
        TempFile tmp;
        PutFile(tmp.path, in);
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        vSTRING s("keep");
        s << f;
        EXPECT_STREQ(s(), in.size() > 1 ? "ab" : "");
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    }
}

TEST(StreamEncoding, LongStringOnACompressingStreamBecomesAFrame)
{
    Bytes words = Compressible(20000, 31);
    std::string longText(words.begin(), words.end());
    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        f.Compress(1);
        vSTRING s;
        s = longText.c_str();
        s >> f;
        vSTRING("short") >> f;
    }
    Bytes disk = FileBytes(tmp.path);
    ASSERT_GT(disk.size(), 10u);
    EXPECT_EQ(disk[0] | (disk[1] << 8), 20000);
    EXPECT_EQ(LE32(&disk[2]), 0x0012AAB1UL);
    // The short string did not shrink, so it is raw behind the frame.
    size_t at = 2 + 8 + LE32(&disk[6]);
    ASSERT_EQ(at + 7, disk.size());
    EXPECT_EQ(memcmp(&disk[at], "\x05\x00short", 7), 0);
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    vSTRING a, b;
    a << f;
    b << f;
    EXPECT_EQ(std::string(a()), longText);
    EXPECT_STREQ(b(), "short");
    EXPECT_EQ(f.Status(), vSTREAM_OK);
}
