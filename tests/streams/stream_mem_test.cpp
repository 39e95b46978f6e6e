// vMEMSTREAM: growth, positions and statuses, caller buffers (fixed and
// growable), and the move to a temporary file at 100,000,000 bytes.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamMemory, GrowsByTheWritePlusOneKilobyte)
{
    vMEMSTREAM m;
    EXPECT_EQ(m.Capacity(), 10UL);
    m.WriteByteString((const unsigned char*)"12345");
    EXPECT_EQ(m.Capacity(), 10UL);
    m.WriteByteString((const unsigned char*)"678901");
    EXPECT_EQ(m.Capacity(), 1040UL);
    // Reaching the capacity exactly grows it too (position + n >= capacity).
    Bytes pad(1040 - 11, 0x33);
    m.WriteBlock(pad.data(), (unsigned long)pad.size());
    EXPECT_EQ(m.Capacity(), 1040UL + 1029 + 1024);
    EXPECT_EQ(m.Size(), 1040UL);
    EXPECT_EQ(memcmp(m.Buffer(), "12345678901", 11), 0);

    // Many small writes keep every byte.
    vMEMSTREAM n;
    for (unsigned long i = 0; i < 100000; ++i)
        n.WriteULong(i * 2654435761UL);
    ASSERT_EQ(n.Size(), 400000UL);
    for (unsigned long i = 0; i < 100000; i += 997)
        ASSERT_EQ(LE32(n.Buffer() + 4 * i), i * 2654435761UL);
}

TEST(StreamMemory, ShortReadsAndPositions)
{
    vMEMSTREAM m;
    m.WriteByteString((const unsigned char*)"hello");
    m.MoveFromStart(0);
    unsigned char b[8] = {0};
    EXPECT_EQ(m.ReadByteString(b, 8), 5);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
    EXPECT_TRUE(m.AtEnd());
    EXPECT_EQ(m.MoveFromStart(0), 0UL);
    EXPECT_EQ(m.Status(), vSTREAM_OK);

    // Past the end: clamped to the length, status 2.
    EXPECT_EQ(m.MoveFromStart(9), 5UL);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(m.MoveFromStart(2), 2UL);
    EXPECT_EQ(m.Status(), vSTREAM_OK);
    EXPECT_EQ(m.MoveFromCur(2), 4UL);
    EXPECT_EQ(m.MoveFromCur(-10), 0UL);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
    m.MoveFromStart(0);
    EXPECT_EQ(m.MoveFromEnd(-1), 4UL);
    EXPECT_EQ(m.ReadUByte(), 'o');
    EXPECT_EQ(m.MoveFromEnd(1), 5UL);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);

    // Overwriting in the middle keeps the length; writing on extends it.
    m.MoveFromStart(1);
    m.WriteUWord(0x4141);
    EXPECT_EQ(m.Size(), 5UL);
    m.MoveFromStart(4);
    m.WriteUWord(0x4242);
    EXPECT_EQ(m.Size(), 6UL);
    EXPECT_EQ(memcmp(m.Buffer(), "hAAlBB", 6), 0);

    // A long read with only two bytes left gives those two and status 2.
    m.MoveFromStart(4);
    EXPECT_EQ(m.ReadULong(), 0x4242UL);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
}

TEST(StreamMemory, FixedCallerBufferStopsAtItsCapacity)
{
    unsigned char store[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned char guard[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    unsigned char* p = store;
    {
        vMEMSTREAM m(&p, 8, vSTRING(), 0, 0);
        EXPECT_EQ(m.Size(), 8UL);
        EXPECT_EQ(m.ReadUWord(), 0x0201);
        m.MoveFromStart(0);
        EXPECT_EQ(m.WriteULong(0xA1A2A3A4), 1);
        EXPECT_EQ(m.Status(), vSTREAM_OK);
        // Exactly up to the end is fine.
        EXPECT_EQ(m.WriteULong(0xB1B2B3B4), 1);
        EXPECT_EQ(m.Status(), vSTREAM_OK);
        // Past it: nothing is written beyond the buffer, status 1.
        EXPECT_EQ(m.WriteULong(0xC1C2C3C4), 0);
        EXPECT_EQ(m.Status(), vSTREAM_OPENFAILED);
        EXPECT_EQ(m.Size(), 8UL);
        m.MoveFromStart(6);
        Bytes more(100, 0x77);
        EXPECT_EQ(m.WriteBlock(more.data(), 100), 2UL);
        EXPECT_EQ(m.Status(), vSTREAM_OPENFAILED);
        EXPECT_EQ(m.CurrentPos(), 8UL);
    }
    EXPECT_EQ(p, store);
    EXPECT_EQ(LE32(store), 0xA1A2A3A4UL);
    EXPECT_EQ(store[4], 0xB4);
    EXPECT_EQ(store[5], 0xB3);
    EXPECT_EQ(store[6], 0x77);
    EXPECT_EQ(store[7], 0x77);
    EXPECT_EQ(guard[0], 0xEE);
}

TEST(StreamMemory, GrowableCallerBufferIsHandedBack)
{
    unsigned char* p = (unsigned char*)vMemAlloc(4);
    memcpy(p, "abcd", 4);
    {
        vMEMSTREAM m(&p, 4, vSTRING(), 1, 0);
        m.MoveFromEnd(0);
        for (int i = 0; i < 5000; ++i)
            m.WriteUByte((unsigned char)i);
        EXPECT_EQ(m.Size(), 5004UL);
        EXPECT_EQ(m.Status(), vSTREAM_OK);
    }
    // The stream did not free it: the caller owns the final buffer.
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(memcmp(p, "abcd", 4), 0);
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(p[4 + i], (unsigned char)i);
    vMemFree(p);
}

TEST(StreamMemory, NeverCompressesOrExpands)
{
    vMEMSTREAM m;
    m.Compress(1);
    Bytes data = Compressible(5000);
    EXPECT_EQ(m.WriteBlock(data.data(), 5000), 5000UL);
    EXPECT_EQ(Bytes(m.Buffer(), m.Buffer() + m.Size()), data);

    // A frame on a memory stream comes back as stored.
    vFILE f;
    f.Compress(1);
    unsigned long framed = f.WriteBlock(data.data(), 5000);
    ASSERT_LT(framed, 5000UL);
    f.MoveFromStart(0);
    vMEMSTREAM copy;
    copy.Compress(1);
    copy = f;  // a compressing destination takes the frame as it is
    ASSERT_EQ(copy.Size(), framed);
    copy.MoveFromStart(0);
    Bytes back(framed);
    EXPECT_EQ(copy.ReadByteString(back.data(), framed), (long)framed);
    EXPECT_EQ(copy.UnCompressed(), 0);
    EXPECT_EQ(LE32(back.data()), 0x0012AAB1UL);
}

TEST(StreamMemory, CopyConstructorCopiesDataAndPosition)
{
    vMEMSTREAM m;
    m.WriteULong(1);
    m.WriteULong(2);
    m.MoveFromStart(4);
    vMEMSTREAM c(m);
    EXPECT_EQ(c.Size(), 8UL);
    EXPECT_EQ(c.CurrentPos(), 4UL);
    EXPECT_EQ(c.ReadULong(), 2UL);
    EXPECT_NE(c.Buffer(), m.Buffer());
}

TEST(StreamMemory, SpillsToATemporaryFileAtOneHundredMillionBytes)
{
    const unsigned long chunk = 1u << 20;
    Bytes data = Incompressible(chunk, 99);
    vMEMSTREAM m;
    unsigned long written = 0;
    // Capacity after each 1 MiB write grows by chunk + 1,024; it crosses
    // 100,000,000 while growing for write number 96.
    while (!m.Spilled()) {
        ASSERT_EQ(m.WriteBlock(data.data(), chunk), chunk);
        written += chunk;
        ASSERT_LE(written, 100u * chunk);
    }
    EXPECT_EQ(written, 96UL * chunk);
    EXPECT_EQ(m.Buffer(), nullptr);
    EXPECT_EQ(m.Size(), written);
    EXPECT_EQ(m.CurrentPos(), written);
    std::string spillName;
    {
        // Everything before and after the move reads back.
        m.WriteULong(0xFEEDFACE);
        EXPECT_EQ(m.Size(), written + 4);
        m.MoveFromStart(5 * chunk + 17);
        unsigned char b[64];
        EXPECT_EQ(m.ReadByteString(b, 64), 64);
        EXPECT_EQ(memcmp(b, data.data() + 17, 64), 0);
        m.MoveFromEnd(-4);
        EXPECT_EQ(m.ReadULong(), 0xFEEDFACEUL);
        EXPECT_TRUE(m.AtEnd());
        EXPECT_EQ(m.ReadUByte(), 0);
        EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
        EXPECT_EQ(m.MoveFromStart(written + 100), written + 4);
    }
}

TEST(StreamMemory, SpillFileIsGoneAfterDestruction)
{
    char dir[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    auto count = [&]() {
        WIN32_FIND_DATAA fd;
        std::string pattern = std::string(dir) + "rl*.tmp";
        HANDLE h = FindFirstFileA(pattern.c_str(), &fd);
        int n = 0;
        if (h != INVALID_HANDLE_VALUE) {
            do
                ++n;
            while (FindNextFileA(h, &fd));
            FindClose(h);
        }
        return n;
    };
    int before = count();
    {
        vMEMSTREAM m;
        Bytes data(4u << 20, 0x5C);
        while (!m.Spilled())
            m.WriteBlock(data.data(), (unsigned long)data.size());
        EXPECT_EQ(count(), before + 1);
    }
    EXPECT_EQ(count(), before);
}
