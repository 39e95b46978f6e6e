// The file stream against a model on a filling disk (file_harness.h), and the defects found.
#include <gtest/gtest.h>
#include "file_harness.h"

using namespace rlnative;

namespace {

TEST(NativeFile, ScriptsAgainstTheModelOnAFillingDisk)
{
    Rng rng(6);
    for (int iter = 0; iter < 2000; ++iter) {
        std::vector<unsigned char> script(1 + rng.Below(iter % 10 == 0 ? 3000 : 600));
        rng.Fill(script.data(), script.size());
        // Every cache and disk setting in turn; the rest of the script is noise.
        script[0] = (unsigned char)(iter & 0x3F);
        ASSERT_TRUE(FileAgainstModel(script.data(), script.size())) << "iteration " << iter << ": " << LastFailure();
    }
}

TEST(NativeFile, EmptyWritesWithNoDataAtAll)
{
    // Found: WriteBlock(nullptr, 0) on a cached file handed the null pointer
    // to memcpy (a zero count does not make that defined).
    ScratchFile tmp;
    for (int cached = 0; cached < 2; ++cached) {
        vFILE f(vSTRING("%s", tmp.path.c_str()), vFILE_WRITENEW, cached);
        f.WriteULong(0x01020304);
        EXPECT_EQ(f.WriteBlock(nullptr, 0), 0UL);
        f.MoveFromStart(2);
        EXPECT_TRUE(f.WriteBlock(nullptr, 0) == 0 && f.ReadByteString(nullptr, 0) == 0);
        EXPECT_TRUE(f.Status() == vSTREAM_OK && f.CurrentPos() == 2UL);
    }
    EXPECT_EQ(ReadWholeFile(tmp.path), std::vector<unsigned char>({4, 3, 2, 1}));
}

TEST(NativeFile, ACacheWriteOutCutShortKeepsThePosition)
{
    // Found: a disk that filled while the cache went out left the position at
    // 650 instead of 1,000, and later writes went to the wrong place.
    ScratchFile tmp;
    std::vector<unsigned char> data(1000);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = (unsigned char)(i * 7 + 1);
    rlsys::faults::SetDiskLimit(650);
    {
        vFILE f(vSTRING("%s", tmp.path.c_str()), vFILE_WRITENEW, 1);
        EXPECT_EQ(f.WriteBlock(data.data(), 1000), 1000UL);
        EXPECT_EQ(f.ReadUByte(), 0);  // the cache goes out first, and only 650 bytes fit
        EXPECT_TRUE(f.CurrentPos() == 1000UL && f.Size() == 650UL);
        rlsys::faults::SetDiskLimit(~0ULL);  // room again: the next bytes land where they belong
        f.WriteULong(0x04030201);
        EXPECT_EQ(f.CurrentPos(), 1004UL);
    }
    rlsys::faults::Reset();
    std::fill(data.begin() + 650, data.end(), 0);
    data.insert(data.end(), {1, 2, 3, 4});
    EXPECT_EQ(ReadWholeFile(tmp.path), data);
}

} // namespace
