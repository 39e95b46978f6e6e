// Compressed block frames on a read-only file: refused writes and earlier failures
// (framing, expansion and damaged frames: tests/native).
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
