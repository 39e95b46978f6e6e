// vFILE: open modes and statuses, the 1,024-byte write cache, temporary files,
// Close and ReOpen, and random operations checked against a byte vector.
#include <gtest/gtest.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamFile, OpenModesAndTheirStatuses)
{
    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_READ, 0);
        EXPECT_EQ(f.Status(), vSTREAM_NOTFOUND);
        EXPECT_EQ(f.ReadULong(), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_READERROR);
        EXPECT_EQ(f.WriteULong(1), 0);
        EXPECT_EQ(f.Status(), vSTREAM_WRITEERROR);
    }
    EXPECT_FALSE(Exists(tmp.path));
    PutFile(tmp.path, Bytes({1, 2, 3, 4, 5, 6}));
    {
        vFILE f(tmp.Name(), vFILE_READONLY, 1);
        EXPECT_EQ(f.WriteByteString((const unsigned char*)"xy"), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_READONLY);
        EXPECT_EQ(f.MoveFromCur(-100), 0UL);
        EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
    }
    EXPECT_EQ(FileBytes(tmp.path), Bytes({1, 2, 3, 4, 5, 6}));
    { vFILE f(tmp.Name(), vFILE_WRITENEW, 0); }
    EXPECT_TRUE(Exists(tmp.path));
    EXPECT_EQ(FileBytes(tmp.path).size(), 0u);
    vFILE bad(vSTRING((char*)"Z:\\no\\such\\folder\\x.bin"), vFILE_UPDATE, 0);
    EXPECT_EQ(bad.Status(), vSTREAM_OPENFAILED);
}

TEST(StreamFile, CacheWritesOutOnlyWhenTheNextWriteDoesNotFit)
{
    for (unsigned long n : {1023UL, 1024UL, 1025UL}) {
        TempFile tmp;
        Bytes data = Incompressible(n, (unsigned)n);
        {
            vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
            f.WriteBlock(data.data(), n);
            EXPECT_EQ(f.Size(), n > 1024 ? n : 0UL) << n;
            f.WriteUByte(0x5A);  // what is cached goes out only when this does not fit
            EXPECT_EQ(f.Size(), n == 1023 ? 0UL : n) << n;
        }
        EXPECT_EQ(FileBytes(tmp.path), Cat(data, {0x5A})) << n;  // destruction writes the cache out
    }
    // A copy of a cached source includes the bytes not yet on disk.
    TempFile other;
    vFILE c(other.Name(), vFILE_WRITENEW, 1);
    c.WriteULong(0x01020304);
    c.MoveFromStart(0);
    vMEMSTREAM m;
    m = c;
    ASSERT_EQ(m.Size(), 4UL);
    EXPECT_EQ(LE32(m.Buffer()), 0x01020304UL);
}

TEST(StreamFile, TemporaryFilesCloseAndReOpen)
{
    std::string name, kept;
    {
        vFILE t;
        EXPECT_EQ(t.Mode(), (long)vFILE_TEMPORARY);
        name = t.Name()();
        EXPECT_EQ(strncmp(strrchr(name.c_str(), '\\') + 1, "rl", 2), 0) << name;
        EXPECT_TRUE(Exists(name));
        t.WriteULong(42);
        EXPECT_EQ(t.Close(), 1);
        EXPECT_EQ(t.Close(), 0);
        EXPECT_EQ(t.ReadULong(), 0UL);
        EXPECT_EQ(t.Status(), vSTREAM_READERROR);
        EXPECT_EQ(t.ReOpen(), 1);
        EXPECT_EQ(t.ReadULong(), 42UL);
        vFILE held;
        kept = held.Name()();
        held.IncCount();  // still referenced: its file stays
    }
    EXPECT_FALSE(Exists(name));
    EXPECT_TRUE(Exists(kept));
    DeleteFileA(kept.c_str());
}

TEST(StreamFile, RandomOperationsMatchAModelFile)
{
    // Random writes, reads and moves on a file, cached and not, checked step by
    // step against a byte vector; the file must end as the vector.
    for (int cached = 0; cached < 2; ++cached) {
        for (unsigned seed = 1; seed <= 6; ++seed) {
            Rng r(seed * 7919 + cached);
            TempFile tmp;
            Bytes model = Incompressible(r.Next() % 3000, seed);
            PutFile(tmp.path, model);
            unsigned long pos = 0;
            {
                vFILE f(tmp.Name(), vFILE_UPDATE, cached);
                f.DetectCompressed(0);
                for (int step = 0; step < 1500; ++step) {
                    SCOPED_TRACE(testing::Message() << "seed " << seed << " cached " << cached << " step " << step);
                    unsigned op = r.Next() % 9;
                    if (op <= 2) {  // write 1 or 4 bytes or a block
                        unsigned long n = op == 0 ? 1 : op == 1 ? 4 : r.Next() % 1500;
                        Bytes v = Incompressible(n, r.Next());
                        if (n == 1)
                            f.WriteUByte(v[0]);
                        else if (n == 4)
                            f.WriteULong(LE32(v.data()));
                        else
                            f.WriteBlock(v.data(), n);
                        if (model.size() < pos + n)
                            model.resize(pos + n);
                        std::copy(v.begin(), v.end(), model.begin() + pos);
                        pos += n;
                    } else if (op <= 5) {  // read 2 bytes or a run
                        unsigned long n = op == 3 ? 2 : r.Next() % 2000;
                        unsigned long expect = std::min(n, pos < model.size() ? (unsigned long)(model.size() - pos) : 0UL);
                        Bytes got(n + 1, 0);
                        if (op == 3) {
                            unsigned short w = f.ReadUWord(), m = 0;
                            for (unsigned long i = 0; i < expect; ++i)
                                m |= model[pos + i] << (8 * i);
                            ASSERT_EQ(w, m);
                        } else {
                            ASSERT_EQ(f.ReadByteString(got.data(), n), (long)expect);
                            ASSERT_TRUE(std::equal(got.begin(), got.begin() + expect, model.begin() + pos));
                        }
                        pos += expect;
                    } else if (op == 6) {
                        pos = model.empty() ? 0 : r.Next() % (model.size() + 1);
                        ASSERT_EQ(f.MoveFromStart(pos), pos);
                    } else if (op == 7) {
                        long d = (long)(r.Next() % 200) - 100;
                        if ((long)pos + d < 0 || pos + d > model.size())
                            d = 0;
                        ASSERT_EQ(f.MoveFromCur(d), pos + d);
                        pos += d;
                    } else {
                        // With unwritten cached bytes the disk's end is earlier;
                        // the position is wherever the system put it.
                        long d = -(long)(r.Next() % 50);
                        f.MoveFromEnd((long)model.size() + d < 0 ? 0 : d);
                        pos = f.CurrentPos();
                        ASSERT_LE(pos, model.size());
                    }
                    ASSERT_EQ(f.CurrentPos(), pos);
                    ASSERT_LE(f.Size(), model.size());
                }
            }
            ASSERT_EQ(FileBytes(tmp.path), model) << "seed " << seed << " cached " << cached;
        }
    }
}
