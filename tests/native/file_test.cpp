// The file stream on a disk that fills, and with no data at all: the defects found.
#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <string>
#include <vector>
#include "rl132/core/vstring.h"
#include "rl132/streams/vfile.h"
#include "sys_file_faults.h"

namespace {

typedef std::vector<unsigned char> Bytes;

// A temporary path that is removed at the end of the test.
struct ScratchFile {
    std::string path;
    ScratchFile()
    {
        const char* dir = getenv("TMPDIR");
        char name[512];
        std::snprintf(name, sizeof name, "%s/rlnfXXXXXX", dir && *dir ? dir : "/tmp");
        int fd = mkstemp(name);
        if (fd >= 0)
            close(fd);
        path = name;
    }
    ~ScratchFile() { unlink(path.c_str()); }
    Bytes Read() const
    {
        Bytes out;
        FILE* f = std::fopen(path.c_str(), "rb");
        for (int c; f && (c = std::fgetc(f)) != EOF;)
            out.push_back((unsigned char)c);
        if (f)
            std::fclose(f);
        return out;
    }
};

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
    EXPECT_EQ(tmp.Read(), Bytes({4, 3, 2, 1}));
}

TEST(NativeFile, ACacheWriteOutCutShortKeepsThePosition)
{
    // Found: a disk that filled while the cache went out left the position at
    // 650 instead of 1,000, and later writes went to the wrong place.
    ScratchFile tmp;
    Bytes data(1000);
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
    EXPECT_EQ(tmp.Read(), data);
}

} // namespace
