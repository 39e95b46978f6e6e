// vFILE's open modes and cache; vMEMSTREAM's caller buffers and
// spill file; vOLESTREAM over a system stream; values on a stream.
#include <gtest/gtest.h>
#include <cstdio>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;
static std::string S(const vSTRING& s) { return s(); }
static bool Exists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

TEST(StreamFile, OpenModesAndCache)
{
    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_READ, 0);
        EXPECT_EQ(f.Status(), vSTREAM_NOTFOUND);
        EXPECT_TRUE(f.ReadULong() == 0UL && f.Status() == vSTREAM_READERROR);
        EXPECT_TRUE(f.WriteULong(1) == 0 && f.Status() == vSTREAM_WRITEERROR);
    }
    EXPECT_FALSE(Exists(tmp.path));
    PutFile(tmp.path, Bytes({1, 2, 3, 4, 5, 6}));
    {
        vFILE f(tmp.Name(), vFILE_READONLY, 1);
        EXPECT_TRUE(f.WriteByteString((const unsigned char*)"xy") == 0UL && f.Status() == vSTREAM_READONLY);
        EXPECT_TRUE(f.MoveFromCur(-100) == 0UL && f.Status() == vSTREAM_SHORTREAD);
    }
    EXPECT_EQ(FileBytes(tmp.path), Bytes({1, 2, 3, 4, 5, 6}));

    // The 1,024-byte cache goes out when the next write does not fit and on
    // destruction; a copy of the stream includes what is not yet on disk.
    for (unsigned long n : {1023UL, 1024UL}) {
        Bytes data = Incompressible(n, (unsigned)n);
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
            f.WriteBlock(data.data(), n);
            EXPECT_EQ(f.Size(), n > 1024 ? n : 0UL) << n;
            f.WriteUByte(0x5A);
            EXPECT_EQ(f.Size(), n == 1023 ? 0UL : n) << n;
            f.MoveFromStart(0);
            vMEMSTREAM m;
            m = f;
            EXPECT_EQ(Bytes(m.Buffer(), m.Buffer() + m.Size()), Cat(data, {0x5A})) << n;
        }
        EXPECT_EQ(FileBytes(tmp.path), Cat(data, {0x5A})) << n;
    }
}

TEST(StreamMemory, CallerBuffersAndTheSpillAtOneHundredMillionBytes)
{
    unsigned char store[10] = {1, 2, 3, 4, 5, 6, 7, 8, 0xEE, 0xEE};
    unsigned char* p = store;
    {
        vMEMSTREAM m(&p, 8, vSTRING(), 0, 0);
        m.MoveFromStart(4);
        EXPECT_EQ(m.WriteULong(0xB1B2B3B4), 1);  // exactly up to the end
        EXPECT_TRUE(m.WriteULong(0xC1C2C3C4) == 0 && m.Status() == vSTREAM_OPENFAILED);
        m.MoveFromStart(6);
        Bytes more(100, 0x77);
        EXPECT_TRUE(m.WriteBlock(more.data(), 100) == 2UL && m.CurrentPos() == 8UL);
    }
    EXPECT_EQ(Bytes(store, store + 10), Bytes({1, 2, 3, 4, 0xB4, 0xB3, 0x77, 0x77, 0xEE, 0xEE}));

    // A temporary folder of its own: other programs' files cannot change the count.
    char dir[MAX_PATH], saved[MAX_PATH];
    DWORD hadTmp = GetEnvironmentVariableA("TMP", saved, sizeof saved);
    GetTempPathA(sizeof dir, dir);
    sprintf(dir + strlen(dir), "rlspill%lu\\", GetCurrentProcessId());
    CreateDirectoryA(dir, nullptr);
    SetEnvironmentVariableA("TMP", dir);
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
        // Capacity grows by chunk + 1,024 a write and crosses 100,000,000 for write 96.
        while (!m.Spilled() && written < 100 * chunk) {
            ASSERT_EQ(m.WriteBlock(data.data(), chunk), chunk);
            written += chunk;
        }
        EXPECT_TRUE(written == 96UL * chunk && m.Buffer() == nullptr && spillFiles() == before + 1);
        m.WriteULong(0xFEEDFACE);
        EXPECT_EQ(m.Size(), written + 4);
        m.MoveFromStart(5 * chunk + 17);
        unsigned char b[64];
        EXPECT_TRUE(m.ReadByteString(b, 64) == 64 && memcmp(b, data.data() + 17, 64) == 0);
        m.MoveFromEnd(-4);
        EXPECT_EQ(m.ReadULong(), 0xFEEDFACEUL);
        EXPECT_EQ(m.MoveFromStart(written + 100), written + 4);
    }
    EXPECT_EQ(spillFiles(), before);
    SetEnvironmentVariableA("TMP", hadTmp ? saved : nullptr);
    RemoveDirectoryA(dir);
}

TEST(StreamEncoding, ValuesAreLittleEndianWhateverTheSwapFlag)
{
    const Bytes expected = {0x04, 0x03, 0x02, 0x01, 0xB2, 0xA1, 0xC3, 0xFE, 0xFF, 0xFF, 0xFF, 0xFD, 0xFF, 0xFC,
                            'a', 'b', 'c',                                   // byte string: no length, no terminator
                            0xFB, 0xFF, 0xFF, 0xFF, 0x00, 0x80, 0x01, 0x00,  // vINT -5, vREAL 1.5
                            0, 0, 3, 0, 'a', 'b', 'c'};                      // empty vSTRING, then "abc"
    auto writeAll = [](vSTREAM& s) {
        s << (unsigned long)0x01020304UL << (unsigned short)0xA1B2 << (unsigned char)0xC3 << (long)-2L << (short)-3 << (signed char)-4;
        s.WriteByteString((const unsigned char*)"abc");
        vINT(-5) >> s;
        vREAL(1.5) >> s;
        vSTRING() >> s;
        vSTRING("abc") >> s;
    };
    vMEMSTREAM mem;
    mem.SwapByteOrder(1);  // writers ignore the swap flag
    writeAll(mem);
    mem.SwapByteOrder(0);
    EXPECT_EQ(Bytes(mem.Buffer(), mem.Buffer() + mem.Size()), expected);
    mem.MoveFromStart(17);
    vINT i, past(7);
    vREAL a;
    vSTRING s1("old"), s2;
    i << mem, a << mem, s1 << mem, s2 << mem;
    EXPECT_TRUE(i() == -5 && a() == 0x18000 && S(s1).empty() && S(s2) == "abc" && mem.Status() == vSTREAM_OK);
    past << mem;  // nothing left: the value is what exists
    EXPECT_TRUE(past() == 0 && mem.Status() == vSTREAM_SHORTREAD);
}

TEST(StreamOle, TakesOverSizeAndPositionCompressesAndNeverReleases)
{
    IStream* s = NewOleStream();
    ASSERT_NE(s, nullptr);
    Bytes initial = Incompressible(40, 5);
    s->Write(initial.data(), 40, nullptr);
    LARGE_INTEGER at;
    at.QuadPart = 10;
    s->Seek(at, STREAM_SEEK_SET, nullptr);
    s->AddRef();
    ULONG refs = s->Release();
    {
        vOLESTREAM o(&s, vSTRING(), 0);
        EXPECT_TRUE(o.Size() == 40UL && o.CurrentPos() == 10UL && o.ReadUByte() == initial[10]);
        // Frames work as on files: the longer attempt leaves nothing behind the raw bytes.
        Bytes text = Compressible(3000), raw = Incompressible(500, 8), back(3500);
        o.MoveFromEnd(0);
        o.Compress(1);
        unsigned long framed = o.WriteBlock(text.data(), 3000);
        EXPECT_LT(framed, 3000UL);
        EXPECT_EQ(o.WriteBlock(raw.data(), 500), 500UL);
        EXPECT_EQ(o.Size(), 40UL + framed + 500);
        o.MoveFromStart(40);
        EXPECT_TRUE(o.ReadByteString(back.data(), 3000) == 3000 && o.ReadByteString(back.data() + 3000, 500) == 500);
        EXPECT_TRUE(back == Cat(text, raw) && o.Status() == vSTREAM_OK);
    }
    s->AddRef();
    EXPECT_EQ(s->Release(), refs);
    s->Release();
}
