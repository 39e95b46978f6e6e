// Compressed block frames: when WriteBlock frames or writes raw, how reading
// expands a frame and where it leaves the stream, damaged frames, refused writes.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

namespace {
Bytes Frame(const Bytes& data, unsigned long* packedSize = nullptr)
{
    vMEMSTREAM m;
    vSTREAM::ImplodeTo(m, data.data(), (unsigned long)data.size());
    unsigned long n = m.Size();
    if (packedSize)
        *packedSize = n;
    Bytes f = {0xB1, 0xAA, 0x12, 0x00, (unsigned char)n, (unsigned char)(n >> 8), (unsigned char)(n >> 16), 0};
    return Cat(f, Bytes(m.Buffer(), m.Buffer() + n));
}
} // namespace

TEST(StreamBlock, FramesAndRawRunsOnDisk)
{
    Bytes text = Compressible(20000), ten = Incompressible(10, 3), noise = Incompressible(3000, 4), small = Incompressible(700, 5);
    for (int cached = 0; cached < 2; ++cached) {
        TempFile tmp;
        unsigned long framed;
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, cached);
            f.Compress(1);
            EXPECT_EQ(f.WriteBlock(ten.data(), 10), 10UL);
            // Larger than the cache: the attempt reaches the disk before it loses.
            EXPECT_EQ(f.WriteBlock(noise.data(), 3000), 3000UL);
            // Fits in the cache: the attempt's tail must not survive in it.
            EXPECT_EQ(f.WriteBlock(small.data(), 700), 700UL);
            framed = f.WriteBlock(text.data(), 20000);
            EXPECT_EQ(f.CurrentPos(), 3710 + framed);
            f.WriteULong(0x12345678);
            EXPECT_EQ(f.Status(), vSTREAM_OK);
        }
        Bytes disk = FileBytes(tmp.path);
        ASSERT_EQ(disk.size(), 3710 + framed + 4);
        EXPECT_EQ(Bytes(disk.begin(), disk.begin() + 3710), Cat(Cat(ten, noise), small));
        const unsigned char* fr = &disk[3710];
        EXPECT_TRUE(LE32(fr) == 0x0012AAB1UL && LE32(fr + 4) + 8 == framed && framed < 20000UL / 3);
        EXPECT_TRUE(fr[8] == 0x00 && fr[9] == 0x06 && LE32(fr + framed) == 0x12345678UL);
        vFILE f(tmp.Name(), vFILE_READONLY, cached);
        for (const Bytes* b : {&ten, &noise, &small, &text}) {
            Bytes back(b->size());
            EXPECT_TRUE(f.ReadByteString(back.data(), (unsigned long)b->size()) == (long)b->size() && back == *b);
        }
        EXPECT_TRUE(f.ReadULong() == 0x12345678UL && f.Status() == vSTREAM_OK);
    }
}

TEST(StreamBlock, FrameWinsWhenTheCompressedDataAloneIsSmaller)
{
    // The choice compares the compressed bytes with the count, without the 8-byte header.
    Bytes noise = Incompressible(200, 44);
    int framedNearTheLine = 0;
    for (size_t run = 0; run < 400; ++run) {
        Bytes data = Cat(noise, Bytes(run, 'a'));
        unsigned long count = (unsigned long)data.size(), packed;
        Bytes frame = Frame(data, &packed);
        if (packed + 8 < count || packed > count)
            continue;
        bool framed = packed < count;
        framedNearTheLine += framed;
        // Over existing bytes (compressed in memory first): the same choice.
        for (int over = 0; over < 2; ++over) {
            TempFile tmp;
            if (over)
                PutFile(tmp.path, Bytes(count + 50, 0x5A));
            unsigned long occupied;
            {
                vFILE f(tmp.Name(), vFILE_UPDATE, over);
                f.Compress(1);
                occupied = f.WriteBlock(data.data(), count);
                EXPECT_EQ(f.CurrentPos(), occupied);
            }
            Bytes disk = FileBytes(tmp.path);
            const Bytes& want = framed ? frame : data;
            ASSERT_EQ(occupied, want.size()) << run;
            ASSERT_EQ(disk.size(), over ? count + 50 : occupied) << run;
            EXPECT_TRUE(std::equal(want.begin(), want.end(), disk.begin())) << run;
            EXPECT_EQ(Bytes(disk.begin() + occupied, disk.end()), Bytes(disk.size() - occupied, 0x5A)) << run;
        }
    }
    EXPECT_GT(framedNearTheLine, 0);
}

TEST(StreamBlock, ReadingAFrameLeavesTheStreamJustAfterIt)
{
    // Found: a frame read with a count larger than it went on past it.
    Bytes text = Compressible(5000, 9), small = Incompressible(64, 21);
    TempFile tmp;
    PutFile(tmp.path, Cat(Cat(Frame(text), {0xA5, 0xA5, 0xA5, 0xA5}), Cat(Frame(small), {9, 8, 7, 6})));
    size_t second = Frame(text).size() + 4;
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    struct Case { unsigned long at, count; long got; vSTREAMSTATUS status; } cases[] = {
        {0, 5000, 5000, vSTREAM_OK}, {0, 5, 5, vSTREAM_OK}, {0, 6000, 5000, vSTREAM_SHORTREAD},
        // A frame longer than its data: counts below its header's size expand it.
        {second, 64, 64, vSTREAM_OK}, {second, 4, 4, vSTREAM_OK}};
    for (const Case& c : cases) {
        const Bytes& want = c.at ? small : text;
        f.MoveFromStart(c.at);
        Bytes back(c.count);
        EXPECT_EQ(f.ReadByteString(back.data(), c.count), c.got) << c.at << " " << c.count;
        EXPECT_TRUE(f.Status() == c.status && f.UnCompressed() == 1) << c.count;
        EXPECT_TRUE(std::equal(back.begin(), back.begin() + c.got, want.begin())) << c.count;
        EXPECT_EQ(f.ReadULong(), c.at ? 0x06070809UL : 0xA5A5A5A5UL) << c.count;
    }
    // With detection off the frame comes back as stored.
    f.MoveFromStart(0);
    f.DetectCompressed(0);
    unsigned char raw[8];
    EXPECT_TRUE(f.ReadByteString(raw, 8) == 8 && f.UnCompressed() == 0 && LE32(raw) == 0x0012AAB1UL);
}

TEST(StreamBlock, WouldBeFramesThatDoNotParseAreRawBytes)
{
    // Found: raw runs beginning B1 AA 12 00 (a palette's first entry) were taken for
    // frames. Only a frame inside the stream that expands cleanly is one.
    Bytes text = Compressible(8000, 12), frame = Frame(text);
    Bytes data(frame.begin() + 8, frame.end());
    auto header = [](unsigned long n) {
        return Bytes{0xB1, 0xAA, 0x12, 0x00, (unsigned char)n, (unsigned char)(n >> 8), (unsigned char)(n >> 16),
                     (unsigned char)(n >> 24)};
    };
    const unsigned long half = (unsigned long)data.size() / 2;
    const Bytes cases[] = {
        Bytes(frame.begin(), frame.begin() + frame.size() / 2),                 // cut in the middle
        {0xB1, 0xAA, 0x12, 0x00, 0xF0, 0xFF, 0xFF, 0xFF},                        // huge length, nothing behind
        {0xB1, 0xAA, 0x12, 0x00, 0x05},                                          // a header cut short
        Cat(header(0x00FFFFFF), Incompressible(1016, 6)),                        // a palette: length past the end
        {0xB1, 0xAA, 0x12, 0x00, 4, 0, 0, 0, 7, 7, 7, 7, 1, 2},                  // too short for implode data
        Cat(header(40), Incompressible(40, 8)),                                  // fits, but is no implode stream
        Cat(Cat(header(half), Bytes(data.begin(), data.begin() + half)), Bytes(half + 9, 0x11)),  // breaks off
        Cat(header(8), {0x00, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}),       // literals, then no end code
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
        const Bytes& disk = cases[i];
        const unsigned long n = (unsigned long)disk.size();
        TempFile tmp;
        PutFile(tmp.path, Cat(disk, {0x5A, 0x5A, 0x5A, 0x5A}));
        for (int cached = 0; cached < 2; ++cached) {
            vFILE f(tmp.Name(), vFILE_READONLY, cached);
            Bytes back(n + 16, 0xEE);
            EXPECT_TRUE(f.ReadByteString(back.data(), n) == (long)n && f.Status() == vSTREAM_OK && f.UnCompressed() == 0) << i;
            EXPECT_EQ(back, Cat(disk, Bytes(16, 0xEE))) << i;
            EXPECT_EQ(f.ReadULong(), 0x5A5A5A5AUL) << i;
        }
        // The stream copy keeps such a run as it is, too.
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        vMEMSTREAM m;
        m = f;
        EXPECT_EQ(Bytes(m.Buffer(), m.Buffer() + m.Size()), Cat(disk, {0x5A, 0x5A, 0x5A, 0x5A})) << i;
    }
}

TEST(StreamBlock, RefusedWritesAndEarlierFailuresStand)
{
    // Found: a refused frame write moved the position, and a good frame read
    // cleared an earlier failure.
    TempFile tmp;
    Bytes text = Compressible(6000, 43), frame = Frame(text);
    PutFile(tmp.path, frame);
    vFILE f(tmp.Name(), vFILE_READ, 1);
    f.Compress(1);
    for (unsigned long at : {(unsigned long)frame.size(), 0UL, 40UL}) {
        f.MoveFromStart(at);
        EXPECT_TRUE(f.WriteBlock(text.data(), 6000) == 0UL && f.Status() == vSTREAM_READONLY && f.CurrentPos() == at) << at;
    }
    f.MoveFromStart(0);
    Bytes back(6000);
    EXPECT_TRUE(f.ReadByteString(back.data(), 6000) == 6000 && f.Status() == vSTREAM_OK && back == text);
    f.MoveFromStart(0);
    f.WriteUByte(1);
    EXPECT_TRUE(f.ReadByteString(back.data(), 6000) == 6000 && f.Status() == vSTREAM_READONLY);
    f.Close();
    EXPECT_EQ(FileBytes(tmp.path), frame);
    EXPECT_TRUE(f.WriteBlock(text.data(), 6000) == 0UL && f.Status() == vSTREAM_WRITEERROR);
}

// Regression: a run that is itself a whole frame (a compressed block copied into
// a compressing stream) was stored raw and came back expanded; it gets a frame of its own.
TEST(StreamBlock, RunsThatAreThemselvesFramesReadBackAsWritten)
{
    const Bytes text = Frame(Compressible(5000, 22));
    const Bytes runs[] = {Frame(Incompressible(3000, 21)), text, Cat(text, Incompressible(50, 23)), Frame(Bytes{'a', 'b', 'c'})};
    for (size_t i = 0; i < sizeof runs / sizeof runs[0]; ++i)
        for (int cached = 0; cached < 2; ++cached)
            for (int over = 0; over < 2; ++over) {
                const Bytes& run = runs[i];
                const unsigned long n = (unsigned long)run.size();
                TempFile tmp;
                unsigned long occupied;
                {
                    vFILE f(tmp.Name(), vFILE_WRITENEW, cached);
                    if (over) {  // over existing bytes: built in memory first
                        Bytes old(2 * n + 100, 0x33);
                        f.WriteBlock(old.data(), (unsigned long)old.size());
                        f.MoveFromStart(0);
                    }
                    f.Compress(1);
                    occupied = f.WriteBlock(run.data(), n);
                    EXPECT_TRUE(occupied > n && f.CurrentPos() == occupied) << i;
                    f.WriteULong(0x0BADF00D);
                }
                const Bytes disk = FileBytes(tmp.path);
                EXPECT_TRUE(LE32(&disk[0]) == 0x0012AAB1UL && LE32(&disk[4]) + 8 == occupied) << i;
                vFILE f(tmp.Name(), vFILE_READONLY, cached);
                Bytes back(n + 8, 0xEE);
                EXPECT_TRUE(f.ReadByteString(back.data(), n) == (long)n && f.UnCompressed() == 1) << i << cached << over;
                EXPECT_EQ(back, Cat(run, Bytes(8, 0xEE))) << i << cached << over;
                EXPECT_TRUE(f.ReadULong() == 0x0BADF00DUL && f.Status() == vSTREAM_OK) << i;
            }
}
