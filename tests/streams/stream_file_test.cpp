// vFILE: open modes and statuses, the write cache and its flush rules, moves
// inside the cache, temporary files, Close and ReOpen, and file copies.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamFile, OpenModesAndTheirStatuses)
{
    TempFile missing;
    {
        vFILE f(missing.Name(), vFILE_READONLY, 0);
        EXPECT_EQ(f.Status(), vSTREAM_NOTFOUND);
        EXPECT_EQ(f.ReadULong(), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_READERROR);
        EXPECT_EQ(f.WriteULong(1), 0);
        EXPECT_EQ(f.Status(), vSTREAM_WRITEERROR);
        EXPECT_EQ(f.Size(), 0UL);
        EXPECT_TRUE(f.AtEnd());
        EXPECT_EQ(f.Close(), 0);
    }
    EXPECT_FALSE(Exists(missing.path));
    {
        vFILE f(missing.Name(), vFILE_READ, 0);
        EXPECT_EQ(f.Status(), vSTREAM_NOTFOUND);
    }
    EXPECT_FALSE(Exists(missing.path));

    // Update mode creates an empty file and keeps existing contents.
    {
        vFILE f(missing.Name(), vFILE_UPDATE, 0);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
        EXPECT_EQ(f.Size(), 0UL);
    }
    EXPECT_TRUE(Exists(missing.path));
    PutFile(missing.path, Bytes({1, 2, 3, 4, 5}));
    {
        vFILE f(missing.Name(), 7, 0);
        EXPECT_EQ(f.Size(), 5UL);
        EXPECT_EQ(f.ReadUByte(), 1);
        f.MoveFromEnd(0);
        f.WriteUByte(6);
    }
    EXPECT_EQ(FileBytes(missing.path), Bytes({1, 2, 3, 4, 5, 6}));

    // Read modes: writes are refused with status 6 and change nothing.
    {
        vFILE f(missing.Name(), vFILE_READ, 0);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
        EXPECT_EQ(f.WriteUWord(0xFFFF), 0);
        EXPECT_EQ(f.Status(), vSTREAM_READONLY);
        unsigned char b[6];
        EXPECT_EQ(f.ReadByteString(b, 6), 6);
        EXPECT_EQ(f.WriteBlock(b, 6), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_READONLY);
    }
    {
        vFILE f(missing.Name(), vFILE_READONLY, 1);
        EXPECT_EQ(f.WriteByteString((const unsigned char*)"xy"), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_READONLY);
        EXPECT_EQ(f.ReadULong(), 0x04030201UL);
        // Two bytes are left: a short read with what exists.
        EXPECT_EQ(f.ReadULong(), 0x0605UL);
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
        EXPECT_TRUE(f.AtEnd());
    }
    EXPECT_EQ(FileBytes(missing.path), Bytes({1, 2, 3, 4, 5, 6}));

    // Write-new truncates an existing file.
    {
        vFILE f(missing.Name(), vFILE_WRITENEW, 0);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
        EXPECT_EQ(f.Size(), 0UL);
    }
    EXPECT_EQ(FileBytes(missing.path).size(), 0u);

    // A file another stream holds open still counts as existing.
    {
        vFILE a(missing.Name(), vFILE_READONLY, 0);
        vFILE b(missing.Name(), vFILE_READONLY, 0);
        EXPECT_EQ(a.Status(), vSTREAM_OK);
        EXPECT_EQ(b.Status(), vSTREAM_OK);
    }

    // A path that cannot be created: status 1.
    vFILE bad(vSTRING((char*)"Z:\\no\\such\\folder\\x.bin"), vFILE_UPDATE, 0);
    EXPECT_EQ(bad.Status(), vSTREAM_OPENFAILED);
}

TEST(StreamFile, CacheWritesOutOnlyWhenTheNextWriteDoesNotFit)
{
    TempFile tmp;
    Bytes a = Incompressible(1000, 1), b = Incompressible(100, 2), c = Incompressible(24, 3);
    vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
    f.WriteBlock(a.data(), 1000);
    EXPECT_EQ(FileBytes(tmp.path).size(), 0u);
    EXPECT_EQ(f.CurrentPos(), 1000UL);
    f.WriteBlock(b.data(), 100);
    // The first 1,000 went to disk when the 100 arrived; the 100 wait.
    EXPECT_EQ(FileBytes(tmp.path), a);
    EXPECT_EQ(f.Size(), 1000UL);
    EXPECT_EQ(f.CurrentPos(), 1100UL);
    // 100 + 924 = 1,024 exactly still fits.
    Bytes fill = Incompressible(924, 4);
    f.WriteBlock(fill.data(), 924);
    EXPECT_EQ(f.Size(), 1000UL);
    // One byte more does not.
    f.WriteUByte(0x5A);
    EXPECT_EQ(f.Size(), 2024UL);
    EXPECT_EQ(f.CurrentPos(), 2025UL);
    // A write larger than the cache goes straight to disk after the cache.
    Bytes big = Incompressible(1025, 5);
    f.WriteBlock(big.data(), 1025);
    EXPECT_EQ(f.Size(), 2025UL + 1025);
    f.WriteBlock(c.data(), 24);
    EXPECT_EQ(f.Size(), 3050UL);
    // A read writes the cache out first.
    EXPECT_EQ(f.ReadUByte(), 0);
    EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(f.Size(), 3074UL);

    Bytes all = a;
    all.insert(all.end(), b.begin(), b.end());
    all.insert(all.end(), fill.begin(), fill.end());
    all.push_back(0x5A);
    all.insert(all.end(), big.begin(), big.end());
    all.insert(all.end(), c.begin(), c.end());
    EXPECT_EQ(FileBytes(tmp.path), all);
}

TEST(StreamFile, ExactlyOneCacheFullStaysInMemory)
{
    for (unsigned long n : {1023UL, 1024UL, 1025UL}) {
        TempFile tmp;
        Bytes data = Incompressible(n, (unsigned)n);
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
            f.WriteBlock(data.data(), n);
            EXPECT_EQ(f.Size(), n > 1024 ? n : 0UL) << n;
            EXPECT_EQ(f.CurrentPos(), n);
        }
        // Destruction writes the cache out.
        EXPECT_EQ(FileBytes(tmp.path), data) << n;
    }
}

TEST(StreamFile, MovesInsideTheCacheLeaveTheDiskAlone)
{
    TempFile tmp;
    vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
    Bytes head = Incompressible(2000, 9);
    f.WriteBlock(head.data(), 2000);  // straight to disk
    f.WriteULong(0);                   // a length field, cached
    f.WriteULong(0x11111111);
    f.WriteULong(0x22222222);
    EXPECT_EQ(f.Size(), 2000UL);
    EXPECT_EQ(f.MoveFromStart(2000), 2000UL);
    EXPECT_EQ(f.CurrentPos(), 2000UL);
    f.WriteULong(0xCAFEBABE);
    EXPECT_EQ(f.Size(), 2000UL);       // still nothing on disk
    EXPECT_EQ(f.MoveFromCur(4), 2008UL);
    EXPECT_EQ(f.MoveFromCur(-8), 2000UL);
    EXPECT_EQ(f.MoveFromStart(2012), 2012UL);
    EXPECT_EQ(f.Size(), 2000UL);
    f.WriteUWord(0x3333);
    EXPECT_EQ(f.CurrentPos(), 2014UL);
    // Back into the middle, then a read: the cache goes out whole and the read
    // starts at the position, not at the end of the cached bytes.
    f.MoveFromStart(2004);
    EXPECT_EQ(f.ReadULong(), 0x11111111UL);
    EXPECT_EQ(f.Size(), 2014UL);
    EXPECT_EQ(f.CurrentPos(), 2008UL);
    // A move before the cache writes it out and seeks.
    f.MoveFromStart(10);
    EXPECT_EQ(f.CurrentPos(), 10UL);
    EXPECT_EQ(f.ReadUByte(), head[10]);

    Bytes disk = FileBytes(tmp.path);
    ASSERT_EQ(disk.size(), 2014u);
    EXPECT_EQ(LE32(&disk[2000]), 0xCAFEBABEUL);
    EXPECT_EQ(LE32(&disk[2004]), 0x11111111UL);
    EXPECT_EQ(LE32(&disk[2008]), 0x22222222UL);
    EXPECT_EQ(disk[2012] | (disk[2013] << 8), 0x3333);
}

TEST(StreamFile, OverwritingInsideTheCacheThenOverflowingKeepsPositions)
{
    // Move back inside the cache, then write more than fits: the new bytes
    // belong at the position, not after the cached ones.
    TempFile tmp;
    Bytes big = Incompressible(1500, 77);
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        for (unsigned long i = 0; i < 100; ++i)
            f.WriteULong(i);
        f.MoveFromStart(40);
        f.WriteBlock(big.data(), 1500);
        f.WriteULong(0xABCDEF01);
        EXPECT_EQ(f.CurrentPos(), 1544UL);
    }
    Bytes disk = FileBytes(tmp.path);
    ASSERT_EQ(disk.size(), 1544u);
    for (unsigned long i = 0; i < 10; ++i)
        EXPECT_EQ(LE32(&disk[4 * i]), i);
    EXPECT_TRUE(std::equal(big.begin(), big.end(), disk.begin() + 40));
    EXPECT_EQ(LE32(&disk[1540]), 0xABCDEF01UL);

    // Without a cache every write is on disk at once.
    TempFile plain;
    vFILE g(plain.Name(), vFILE_WRITENEW, 0);
    g.WriteULong(0x01020304);
    EXPECT_EQ(g.Size(), 4UL);
    EXPECT_EQ(FileBytes(plain.path), Bytes({4, 3, 2, 1}));
}

TEST(StreamFile, PositioningFailuresAndEnds)
{
    TempFile tmp;
    PutFile(tmp.path, Bytes({1, 2, 3, 4, 5, 6, 7, 8}));
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    EXPECT_EQ(f.MoveFromEnd(-2), 6UL);
    EXPECT_EQ(f.ReadUWord(), 0x0807);
    EXPECT_TRUE(f.AtEnd());
    EXPECT_EQ(f.MoveFromCur(-100), 0UL);
    EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(f.MoveFromStart(3), 3UL);
    EXPECT_EQ(f.Status(), vSTREAM_OK);
    EXPECT_FALSE(f.AtEnd());
    unsigned char b[16];
    EXPECT_EQ(f.ReadByteString(b, 16), 5);
    EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(memcmp(b, "\x04\x05\x06\x07\x08", 5), 0);
}

TEST(StreamFile, TemporaryFilesAreNamedRlAndDeleted)
{
    std::string name;
    {
        vFILE t;
        EXPECT_EQ(t.Status(), vSTREAM_OK);
        EXPECT_EQ(t.Mode(), (long)vFILE_TEMPORARY);
        name = t.Name()();
        const char* base = strrchr(name.c_str(), '\\');
        ASSERT_NE(base, nullptr);
        EXPECT_EQ(strncmp(base + 1, "rl", 2), 0) << name;
        EXPECT_TRUE(Exists(name));
        t.WriteULong(42);
        t.MoveFromStart(0);
        EXPECT_EQ(t.ReadULong(), 42UL);
    }
    EXPECT_FALSE(Exists(name));

    // A stream still referenced keeps its file when destroyed.
    std::string kept;
    {
        vFILE t;
        kept = t.Name()();
        t.IncCount();
    }
    EXPECT_TRUE(Exists(kept));
    DeleteFileA(kept.c_str());
}

TEST(StreamFile, CloseWritesTheCacheAndReOpenResumes)
{
    TempFile tmp;
    vFILE f(tmp.Name(), vFILE_UPDATE, 1);
    f.WriteULong(0x0A0B0C0D);
    EXPECT_EQ(f.Close(), 1);
    EXPECT_EQ(f.Close(), 0);
    EXPECT_EQ(FileBytes(tmp.path), Bytes({0x0D, 0x0C, 0x0B, 0x0A}));
    EXPECT_EQ(f.ReadULong(), 0UL);
    EXPECT_EQ(f.Status(), vSTREAM_READERROR);
    EXPECT_EQ(f.ReOpen(), 1);
    EXPECT_EQ(f.Status(), vSTREAM_OK);
    EXPECT_EQ(f.ReadULong(), 0x0A0B0C0DUL);
    // Reopened without the cache: the write is on disk at once.
    f.WriteUByte(0xEE);
    EXPECT_EQ(f.Size(), 5UL);

    vFILE t;
    std::string first = t.Name()();
    t.WriteULong(1);
    EXPECT_EQ(t.Close(), 1);
    EXPECT_EQ(t.ReOpen(), 1);
    EXPECT_EQ(t.ReadULong(), 1UL);
    (void)first;
}

TEST(StreamFile, FileToFileCopyTakesTheRestOfTheSource)
{
    TempFile src, dst;
    Bytes data = Incompressible(5000, 3);
    PutFile(src.path, data);
    {
        vFILE in(src.Name(), vFILE_READONLY, 0);
        vFILE out(dst.Name(), vFILE_WRITENEW, 1);
        in.MoveFromStart(1000);
        out = in;
        EXPECT_EQ(in.Status(), vSTREAM_OK);
        EXPECT_EQ(out.Status(), vSTREAM_OK);
        EXPECT_TRUE(in.AtEnd());
    }
    EXPECT_EQ(FileBytes(dst.path), Bytes(data.begin() + 1000, data.end()));

    // The copy constructor gives a temporary file with the rest of the source.
    vFILE in(src.Name(), vFILE_READONLY, 0);
    in.MoveFromStart(4990);
    vFILE copy(in);
    EXPECT_EQ(in.CurrentPos(), 4990UL);
    EXPECT_EQ(copy.Size(), 10UL);
    unsigned char b[10];
    EXPECT_EQ(copy.ReadByteString(b, 10), 10);
    EXPECT_EQ(Bytes(b, b + 10), Bytes(data.end() - 10, data.end()));
    std::string name = copy.Name()();
    EXPECT_NE(name, src.path);

    // A cached, unflushed source is copied with its cached bytes.
    TempFile cached, out2;
    {
        vFILE c(cached.Name(), vFILE_WRITENEW, 1);
        c.WriteULong(0x01020304);
        c.WriteULong(0x05060708);
        c.MoveFromStart(0);
        vMEMSTREAM m;
        m = c;
        ASSERT_EQ(m.Size(), 8UL);
        EXPECT_EQ(LE32(m.Buffer() + 4), 0x05060708UL);
    }
}
