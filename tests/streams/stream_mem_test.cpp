// vMEMSTREAM: growth, caller buffers (fixed and growable), and the move to a
// temporary file at 100,000,000 bytes.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamMemory, GrowthAndPositions)
{
    vMEMSTREAM m;
    EXPECT_EQ(m.Capacity(), 10UL);
    m.WriteByteString((const unsigned char*)"12345");
    EXPECT_EQ(m.Capacity(), 10UL);
    m.WriteByteString((const unsigned char*)"678901");
    EXPECT_EQ(m.Capacity(), 1040UL);  // the write plus one kilobyte
    Bytes pad(1040 - 11, 0x33);
    m.WriteBlock(pad.data(), (unsigned long)pad.size());  // reaching it exactly grows it too
    EXPECT_EQ(m.Capacity(), 1040UL + 1029 + 1024);
    EXPECT_EQ(memcmp(m.Buffer(), "12345678901", 11), 0);
    EXPECT_EQ(m.MoveFromStart(2000), 1040UL);  // clamped to the length
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(m.MoveFromStart(1039), 1039UL);
    EXPECT_EQ(m.Status(), vSTREAM_OK);
    EXPECT_EQ(m.ReadULong(), 0x33UL);
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
}

TEST(StreamMemory, CallerBuffers)
{
    unsigned char store[10] = {1, 2, 3, 4, 5, 6, 7, 8, 0xEE, 0xEE};
    unsigned char* p = store;
    {
        vMEMSTREAM m(&p, 8, vSTRING(), 0, 0);
        EXPECT_EQ(m.ReadUWord(), 0x0201);
        m.MoveFromStart(4);
        EXPECT_EQ(m.WriteULong(0xB1B2B3B4), 1);  // exactly up to the end
        EXPECT_EQ(m.Status(), vSTREAM_OK);
        EXPECT_EQ(m.WriteULong(0xC1C2C3C4), 0);
        EXPECT_EQ(m.Status(), vSTREAM_OPENFAILED);
        m.MoveFromStart(6);
        Bytes more(100, 0x77);
        EXPECT_EQ(m.WriteBlock(more.data(), 100), 2UL);
        EXPECT_EQ(m.CurrentPos(), 8UL);
    }
    EXPECT_EQ(p, store);
    EXPECT_EQ(Bytes(store, store + 10), Bytes({1, 2, 3, 4, 0xB4, 0xB3, 0x77, 0x77, 0xEE, 0xEE}));

    // A growable buffer is not freed: the caller owns the final one.
    p = (unsigned char*)vMemAlloc(4);
    memcpy(p, "abcd", 4);
    {
        vMEMSTREAM m(&p, 4, vSTRING(), 1, 0);
        m.MoveFromEnd(0);
        for (int i = 0; i < 5000; ++i)
            m.WriteUByte((unsigned char)i);
    }
    EXPECT_EQ(memcmp(p, "abcd", 4), 0);
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(p[4 + i], (unsigned char)i);
    vMemFree(p);
}

TEST(StreamMemory, SpillsToATemporaryFileAtOneHundredMillionBytes)
{
    char dir[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    auto spillFiles = [&]() {
        WIN32_FIND_DATAA fd;
        HANDLE h = FindFirstFileA((std::string(dir) + "rl*.tmp").c_str(), &fd);
        int n = h != INVALID_HANDLE_VALUE;
        while (n && FindNextFileA(h, &fd))
            ++n;
        return n && FindClose(h), n;
    };
    int before = spillFiles();
    const unsigned long chunk = 1u << 20;
    Bytes data = Incompressible(chunk, 99);
    {
        vMEMSTREAM m;
        unsigned long written = 0;
        // Capacity grows by chunk + 1,024 a write; it crosses 100,000,000
        // while growing for write number 96.
        while (!m.Spilled() && written < 100 * chunk) {
            ASSERT_EQ(m.WriteBlock(data.data(), chunk), chunk);
            written += chunk;
        }
        EXPECT_EQ(written, 96UL * chunk);
        EXPECT_EQ(m.Buffer(), nullptr);
        EXPECT_EQ(spillFiles(), before + 1);
        m.WriteULong(0xFEEDFACE);
        EXPECT_EQ(m.Size(), written + 4);
        m.MoveFromStart(5 * chunk + 17);
        unsigned char b[64];
        EXPECT_EQ(m.ReadByteString(b, 64), 64);
        EXPECT_EQ(memcmp(b, data.data() + 17, 64), 0);
        m.MoveFromEnd(-4);
        EXPECT_EQ(m.ReadULong(), 0xFEEDFACEUL);
        EXPECT_EQ(m.MoveFromStart(written + 100), written + 4);
    }
    EXPECT_EQ(spillFiles(), before);
}
