// Compressed block frames: what WriteBlock writes, how ReadByteString expands a
// frame and where it leaves the stream, damaged frames, the raw fallback, the
// stream copy, and long mixed round trips through compressing streams.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

namespace {
// The implode form of data, made through the engine's stream entry.
Bytes Imploded(const Bytes& data)
{
    vMEMSTREAM m;
    vSTREAM::ImplodeTo(m, data.data(), (unsigned long)data.size());
    return Bytes(m.Buffer(), m.Buffer() + m.Size());
}

Bytes Frame(const Bytes& packed)
{
    Bytes f = {0xB1, 0xAA, 0x12, 0x00};
    unsigned long n = (unsigned long)packed.size();
    for (int i = 0; i < 4; ++i)
        f.push_back((unsigned char)(n >> (8 * i)));
    f.insert(f.end(), packed.begin(), packed.end());
    return f;
}
} // namespace

TEST(StreamBlock, CompressibleBlockIsFramed)
{
    for (int cached = 0; cached < 2; ++cached) {
        TempFile tmp;
        Bytes data = Compressible(20000);
        unsigned long occupied;
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, cached);
            f.Compress(1);
            occupied = f.WriteBlock(data.data(), 20000);
            EXPECT_EQ(f.CurrentPos(), occupied);
            EXPECT_EQ(f.Status(), vSTREAM_OK);
            f.WriteULong(0x12345678);
        }
        Bytes disk = FileBytes(tmp.path);
        ASSERT_EQ(disk.size(), occupied + 4);
        EXPECT_EQ(LE32(&disk[0]), 0x0012AAB1UL);
        unsigned long length = LE32(&disk[4]);
        EXPECT_EQ(length + 8, occupied);
        EXPECT_LT(length, 20000UL / 3);
        // Binary literals, 4,096-byte dictionary.
        EXPECT_EQ(disk[8], 0x00);
        EXPECT_EQ(disk[9], 0x06);
        EXPECT_EQ(LE32(&disk[occupied]), 0x12345678UL);
        // The payload expands to the data.
        vMEMSTREAM out;
        EXPECT_EQ(vSTREAM::ExplodeTo(out, &disk[8], length), 0);
        EXPECT_EQ(Bytes(out.Buffer(), out.Buffer() + out.Size()), data);
    }
}

TEST(StreamBlock, SmallAndIncompressibleBlocksStayRaw)
{
    TempFile tmp;
    Bytes ten = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
    Bytes noise = Incompressible(3000, 4);
    Bytes small = Incompressible(700, 5);
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        f.Compress(1);
        EXPECT_EQ(f.WriteBlock(ten.data(), 10), 10UL);
        EXPECT_EQ(f.CurrentPos(), 10UL);
        // Larger than the cache: the attempt reaches the disk before it loses.
        EXPECT_EQ(f.WriteBlock(noise.data(), 3000), 3000UL);
        EXPECT_EQ(f.CurrentPos(), 3010UL);
        // Fits in the cache: the attempt's tail must not survive in it.
        EXPECT_EQ(f.WriteBlock(small.data(), 700), 700UL);
        EXPECT_EQ(f.CurrentPos(), 3710UL);
        EXPECT_EQ(f.WriteBlock(nullptr, 0), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
        EXPECT_EQ(f.Compressed(), 1);
    }
    EXPECT_EQ(FileBytes(tmp.path), Concat({ten, noise, small}));
}

TEST(StreamBlock, CompressingOverExistingBytesLosesNothing)
{
    TempFile tmp;
    Bytes base = Incompressible(10000, 6);
    PutFile(tmp.path, base);
    Bytes noise = Incompressible(500, 7);
    Bytes text = Compressible(4000, 3);
    unsigned long framed;
    {
        vFILE f(tmp.Name(), vFILE_UPDATE, 1);
        f.Compress(1);
        f.MoveFromStart(100);
        EXPECT_EQ(f.WriteBlock(noise.data(), 500), 500UL);
        EXPECT_EQ(f.CurrentPos(), 600UL);
        framed = f.WriteBlock(text.data(), 4000);
        EXPECT_LT(framed, 4000UL);
        EXPECT_EQ(f.CurrentPos(), 600UL + framed);
    }
    Bytes disk = FileBytes(tmp.path);
    ASSERT_EQ(disk.size(), 10000u);
    EXPECT_TRUE(std::equal(base.begin(), base.begin() + 100, disk.begin()));
    EXPECT_TRUE(std::equal(noise.begin(), noise.end(), disk.begin() + 100));
    EXPECT_EQ(LE32(&disk[600]), 0x0012AAB1UL);
    EXPECT_TRUE(std::equal(base.begin() + 600 + framed, base.end(), disk.begin() + 600 + framed));
}

TEST(StreamBlock, ReadingAFrameLeavesTheStreamJustAfterIt)
{
    TempFile tmp;
    Bytes text = Compressible(5000, 9);
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        f.Compress(1);
        f.WriteBlock(text.data(), 5000);
        f.WriteULong(0xA5A5A5A5);
        f.WriteUWord(0x1234);
    }
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    // The count is the expanded size, far more than the frame holds: the read
    // goes past the frame into the long behind it, and must come back.
    Bytes back(5000);
    EXPECT_EQ(f.ReadByteString(back.data(), 5000), 5000);
    EXPECT_EQ(f.Status(), vSTREAM_OK);
    EXPECT_EQ(f.UnCompressed(), 1);
    EXPECT_EQ(back, text);
    EXPECT_EQ(f.ReadULong(), 0xA5A5A5A5UL);
    EXPECT_EQ(f.ReadUWord(), 0x1234);
    EXPECT_EQ(f.Status(), vSTREAM_OK);

    // Asking for fewer bytes than the frame expands to gives the first ones
    // and still moves past the whole frame.
    f.MoveFromStart(0);
    unsigned char first[5];
    EXPECT_EQ(f.ReadByteString(first, 5), 5);
    EXPECT_EQ(memcmp(first, text.data(), 5), 0);
    EXPECT_EQ(f.ReadULong(), 0xA5A5A5A5UL);

    // Asking for more than it expands to: what there is, and status 2.
    f.MoveFromStart(0);
    Bytes more(6000);
    EXPECT_EQ(f.ReadByteString(more.data(), 6000), 5000);
    EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(f.ReadULong(), 0xA5A5A5A5UL);

    // With detection off the frame comes back as stored.
    f.MoveFromStart(0);
    f.DetectCompressed(0);
    unsigned char raw[8];
    EXPECT_EQ(f.ReadByteString(raw, 8), 8);
    EXPECT_EQ(f.UnCompressed(), 0);
    EXPECT_EQ(LE32(raw), 0x0012AAB1UL);
}

TEST(StreamBlock, FrameLargerThanTheCountIsReadWhole)
{
    // A frame that barely compresses can be longer than the data it holds;
    // the reader asks for the data's size and must still get past the frame.
    Bytes data = Incompressible(64, 21);
    Bytes frame = Frame(Imploded(data));
    ASSERT_GT(frame.size(), 64u);
    TempFile tmp;
    PutFile(tmp.path, Concat({frame, Bytes({9, 8, 7, 6})}));
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    Bytes back(64);
    EXPECT_EQ(f.ReadByteString(back.data(), 64), 64);
    EXPECT_EQ(back, data);
    EXPECT_EQ(f.ReadULong(), 0x06070809UL);
    EXPECT_EQ(f.Status(), vSTREAM_OK);

    // The same through a count smaller than the frame's header.
    f.MoveFromStart(0);
    unsigned char two[2];
    EXPECT_EQ(f.ReadByteString(two, 2), 2);
    f.MoveFromStart(0);
    unsigned char four[4];
    EXPECT_EQ(f.ReadByteString(four, 4), 4);
    EXPECT_EQ(memcmp(four, data.data(), 4), 0);
    EXPECT_EQ(f.UnCompressed(), 1);
    EXPECT_EQ(f.ReadULong(), 0x06070809UL);
}

TEST(StreamBlock, DamagedFramesDeliverWhatExists)
{
    Bytes text = Compressible(8000, 12);
    Bytes packed = Imploded(text);
    Bytes frame = Frame(packed);

    // Cut in the middle: the length field points past the end.
    {
        TempFile tmp;
        PutFile(tmp.path, Bytes(frame.begin(), frame.begin() + 8 + packed.size() / 2));
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        Bytes back(8000, 0xEE);
        long got = f.ReadByteString(back.data(), 8000);
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
        EXPECT_GT(got, 0);
        EXPECT_LT(got, 8000);
        EXPECT_TRUE(std::equal(back.begin(), back.begin() + got, text.begin()));
        EXPECT_TRUE(f.AtEnd());
    }
    // A huge length with nothing behind the header.
    {
        TempFile tmp;
        PutFile(tmp.path, Bytes({0xB1, 0xAA, 0x12, 0x00, 0xF0, 0xFF, 0xFF, 0xFF}));
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        unsigned char b[100];
        EXPECT_EQ(f.ReadByteString(b, 100), 0);
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    }
    // Only part of the header.
    {
        TempFile tmp;
        PutFile(tmp.path, Bytes({0xB1, 0xAA, 0x12, 0x00, 0x05}));
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        unsigned char b[100];
        EXPECT_EQ(f.ReadByteString(b, 100), 5);
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
        EXPECT_EQ(f.UnCompressed(), 0);
    }
    // Garbage behind a good header: no crash, nothing outside the buffer.
    {
        Rng r(5);
        for (int round = 0; round < 200; ++round) {
            Bytes bad = frame;
            for (int k = 0; k < 6; ++k)
                bad[8 + r.Next() % (bad.size() - 8)] = (unsigned char)r.Next();
            vFILE f;
            f.WriteBlock(bad.data(), (unsigned long)bad.size());
            f.MoveFromStart(0);
            Bytes back(8000 + 16, 0xEE);
            long got = f.ReadByteString(back.data(), 8000);
            ASSERT_GE(got, 0);
            ASSERT_LE(got, 8000);
            for (int i = 0; i < 16; ++i)
                ASSERT_EQ(back[8000 + i], 0xEE);
        }
    }
    // Raw data that merely starts with the magic reads back as it is.
    {
        TempFile tmp;
        Bytes raw = {0xB1, 0xAA, 0x12, 0x00, 4, 0, 0, 0, 7, 7, 7, 7, 1, 2};
        PutFile(tmp.path, raw);
        vFILE f(tmp.Name(), vFILE_READONLY, 0);
        Bytes back(14);
        EXPECT_EQ(f.ReadByteString(back.data(), 14), 14);
        EXPECT_EQ(back, raw);
        EXPECT_EQ(f.UnCompressed(), 0);
    }
}

TEST(StreamBlock, StreamCopyExpandsIntoAPlainDestination)
{
    Bytes text = Compressible(30000, 4);
    Bytes tail = Incompressible(300, 1);
    vFILE src;
    src.Compress(1);
    unsigned long framed = src.WriteBlock(text.data(), 30000);
    ASSERT_LT(framed, 30000UL);
    src.Compress(0);
    src.WriteBlock(tail.data(), 300);
    src.MoveFromStart(0);

    vMEMSTREAM plain;
    plain = src;
    EXPECT_EQ(Bytes(plain.Buffer(), plain.Buffer() + plain.Size()), Concat({text, tail}));
    EXPECT_EQ(src.Status(), vSTREAM_OK);
    // The expansion leaves its target compressing.
    EXPECT_EQ(plain.Compressed(), 1);
    EXPECT_EQ(src.DetectingCompressed(), 1);

    // Into a compressing file the frame is kept; reading expands it.
    src.MoveFromStart(0);
    TempFile tmp;
    {
        vFILE out(tmp.Name(), vFILE_WRITENEW, 1);
        out.Compress(1);
        out = src;
        EXPECT_EQ(out.Status(), vSTREAM_OK);
    }
    vFILE in(tmp.Name(), vFILE_READONLY, 0);
    Bytes back(30000);
    EXPECT_EQ(in.ReadByteString(back.data(), 30000), 30000);
    EXPECT_EQ(back, text);

    // An empty rest copies nothing.
    vMEMSTREAM none;
    src.MoveFromEnd(0);
    none = src;
    EXPECT_EQ(none.Size(), 0UL);
}

TEST(StreamBlock, MixedSequencesRoundTripThroughCompressingStreams)
{
    // Every kind of value in a random order, blocks of every character, written
    // to compressing file streams (cached and not) and read back in order.
    for (int variant = 0; variant < 3; ++variant) {
        Rng r(1000 + variant);
        TempFile tmp;
        struct Item {
            int kind;
            unsigned long v;
            Bytes block;
        };
        std::vector<Item> items;
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, variant != 1);
            f.Compress(1);
            for (int i = 0; i < 300; ++i) {
                Item it{(int)(r.Next() % 6), r.Next(), {}};
                switch (it.kind) {
                case 0: f << it.v; break;
                case 1: f << (unsigned short)it.v; break;
                case 2: f << (unsigned char)it.v; break;
                case 3: {
                    size_t n = r.Next() % (variant == 2 ? 5000 : 1500);
                    it.block = r.Next() % 2 ? Compressible(n, it.v) : Incompressible(n, it.v);
                    f.WriteBlock(it.block.data(), (unsigned long)n);
                    break;
                }
                case 4: vINT((long)it.v) >> f; break;
                case 5: vREAL(vREAL::FromRaw((long)it.v)) >> f; break;
                }
                items.push_back(it);
            }
            EXPECT_EQ(f.Status(), vSTREAM_OK);
        }
        vFILE f(tmp.Name(), vFILE_READONLY, variant == 2);
        for (size_t i = 0; i < items.size(); ++i) {
            const Item& it = items[i];
            switch (it.kind) {
            case 0: ASSERT_EQ(f.ReadULong(), it.v) << i; break;
            case 1: ASSERT_EQ(f.ReadUWord(), (unsigned short)it.v) << i; break;
            case 2: ASSERT_EQ(f.ReadUByte(), (unsigned char)it.v) << i; break;
            case 3: {
                Bytes back(it.block.size());
                if (!back.empty()) {
                    ASSERT_EQ(f.ReadByteString(back.data(), (unsigned long)back.size()),
                              (long)back.size()) << i;
                }
                ASSERT_EQ(back, it.block) << i;
                break;
            }
            case 4: {
                vINT v;
                v << f;
                ASSERT_EQ(v(), (long)it.v) << i;
                break;
            }
            case 5: {
                vREAL v;
                v << f;
                ASSERT_EQ(v(), (long)it.v) << i;
                break;
            }
            }
        }
        EXPECT_TRUE(f.AtEnd());
        EXPECT_EQ(f.Status(), vSTREAM_OK);
    }
}

TEST(StreamBlock, RefusedFrameWritesTakeNothingAndStayPut)
{
    TempFile tmp;
    Bytes head = Incompressible(100, 41);
    PutFile(tmp.path, head);
    Bytes text = Compressible(5000, 42);
    {
        vFILE f(tmp.Name(), vFILE_READ, 1);
        f.Compress(1);
        // At the end (the frame would be appended) and over existing bytes.
        for (unsigned long at : {100UL, 0UL, 40UL}) {
            f.MoveFromStart(at);
            EXPECT_EQ(f.WriteBlock(text.data(), 5000), 0UL) << at;
            EXPECT_EQ(f.Status(), vSTREAM_READONLY) << at;
            EXPECT_EQ(f.CurrentPos(), at) << at;
        }
        // The reads that follow start where the stream was.
        f.MoveFromStart(40);
        EXPECT_EQ(f.ReadULong(), LE32(&head[40]));
    }
    EXPECT_EQ(FileBytes(tmp.path), head);

    // A closed file refuses the frame the same way.
    vFILE t;
    t.Compress(1);
    t.Close();
    EXPECT_EQ(t.WriteBlock(text.data(), 5000), 0UL);
    EXPECT_EQ(t.Status(), vSTREAM_WRITEERROR);
}

TEST(StreamBlock, ExpandingAFrameKeepsAnEarlierFailure)
{
    Bytes text = Compressible(6000, 43);
    Bytes frame = Frame(Imploded(text));
    TempFile tmp;
    PutFile(tmp.path, frame);
    vFILE f(tmp.Name(), vFILE_READ, 0);
    // The frame is the whole file: the raw read of 6,000 bytes runs into its
    // end, which is no failure once the frame delivers them all.
    Bytes back(6000);
    EXPECT_EQ(f.ReadByteString(back.data(), 6000), 6000);
    EXPECT_EQ(f.Status(), vSTREAM_OK);
    EXPECT_EQ(back, text);
    // A refused write is reported until the caller looks, whatever reads
    // succeed after it.
    EXPECT_EQ(f.WriteUByte(1), 0);
    EXPECT_EQ(f.Status(), vSTREAM_READONLY);
    f.MoveFromStart(0);
    f.WriteUByte(1);
    Bytes again(6000);
    EXPECT_EQ(f.ReadByteString(again.data(), 6000), 6000);
    EXPECT_EQ(f.UnCompressed(), 1);
    EXPECT_EQ(again, text);
    EXPECT_EQ(f.Status(), vSTREAM_READONLY);
}

TEST(StreamBlock, FrameWinsWhenTheCompressedDataAloneIsSmaller)
{
    // The choice compares the compressed bytes with the count, without the
    // frame's 8-byte header: compressed data one to eight bytes shorter than
    // the count is still framed (the frame then occupies up to 7 bytes more
    // than the raw run would), and compressed data as long as the count is not.
    Bytes noise = Incompressible(200, 44);
    int framedNearTheLine = 0;
    for (size_t run = 0; run < 400; ++run) {
        Bytes data = Concat({noise, Bytes(run, 'a')});
        unsigned long count = (unsigned long)data.size();
        unsigned long packed = (unsigned long)Imploded(data).size();
        if (packed + 8 < count || packed > count)
            continue;
        bool framed = packed < count;
        framedNearTheLine += framed;
        for (int over = 0; over < 2; ++over) {
            TempFile tmp;
            // Over existing bytes the block is compressed in memory first; the
            // choice must be the same.
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
            ASSERT_GE(disk.size(), occupied);
            if (framed) {
                EXPECT_EQ(occupied, 8 + packed) << run;
                EXPECT_EQ(LE32(&disk[0]), 0x0012AAB1UL) << run;
                EXPECT_EQ(LE32(&disk[4]), packed) << run;
            } else {
                EXPECT_EQ(occupied, count) << run;
                EXPECT_TRUE(std::equal(data.begin(), data.end(), disk.begin())) << run;
            }
            EXPECT_EQ(disk.size(), over ? count + 50 : occupied) << run;
        }
    }
    EXPECT_GT(framedNearTheLine, 0);
}
