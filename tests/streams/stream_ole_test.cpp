// vOLESTREAM over an IStream the caller owns.
#include <gtest/gtest.h>
#include <objbase.h>
#include "stream_util.h"

using namespace streamtest;

TEST(StreamOle, TakesOverSizeAndPositionCompressesAndNeverReleases)
{
    // Looked up at run time: the test programs do not link the OLE library.
    typedef HRESULT(WINAPI * Create)(HGLOBAL, BOOL, IStream**);
    Create create = (Create)(void*)GetProcAddress(LoadLibraryA("ole32.dll"), "CreateStreamOnHGlobal");
    IStream* s = nullptr;
    ASSERT_TRUE(create && create(nullptr, TRUE, &s) == S_OK);
    Bytes initial = Incompressible(40, 5);
    s->Write(initial.data(), 40, nullptr);
    LARGE_INTEGER at;
    at.QuadPart = 10;
    s->Seek(at, STREAM_SEEK_SET, nullptr);
    s->AddRef();
    ULONG refs = s->Release();
    Bytes text = Compressible(3000), raw = Incompressible(500, 8);
    unsigned long framed;
    {
        vOLESTREAM o(&s, vSTRING(), 0);
        EXPECT_EQ(o.Size(), 40UL);
        EXPECT_EQ(o.CurrentPos(), 10UL);
        EXPECT_EQ(o.ReadUByte(), initial[10]);
        o.MoveFromEnd(0);
        o.Compress(1);
        framed = o.WriteBlock(text.data(), 3000);
        EXPECT_LT(framed, 3000UL);
        // The longer compressed attempt leaves nothing behind the raw bytes.
        EXPECT_EQ(o.WriteBlock(raw.data(), 500), 500UL);
        EXPECT_EQ(o.Size(), 40UL + framed + 500);
        o.MoveFromStart(40);
        Bytes back(3000), back2(500);
        EXPECT_EQ(o.ReadByteString(back.data(), 3000), 3000);
        EXPECT_EQ(back, text);
        EXPECT_EQ(o.CurrentPos(), 40UL + framed);
        EXPECT_EQ(o.ReadByteString(back2.data(), 500), 500);
        EXPECT_EQ(back2, raw);
        EXPECT_EQ(o.ReadUByte(), 0);
        EXPECT_EQ(o.Status(), vSTREAM_SHORTREAD);
    }
    s->AddRef();
    EXPECT_EQ(s->Release(), refs);
    STATSTG st;
    s->Stat(&st, STATFLAG_NONAME);
    EXPECT_EQ(st.cbSize.QuadPart, 40u + framed + 500);
    s->Release();
}
