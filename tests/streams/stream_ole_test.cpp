// vOLESTREAM over an IStream the caller owns.
#include <gtest/gtest.h>
#include <objbase.h>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

namespace {
struct HGlobalStream {
    IStream* s = nullptr;
    HGlobalStream()
    {
        // Looked up at run time: the test programs do not link the OLE library.
        typedef HRESULT(WINAPI * Create)(HGLOBAL, BOOL, IStream**);
        HMODULE ole = LoadLibraryA("ole32.dll");
        Create create = ole ? (Create)(void*)GetProcAddress(ole, "CreateStreamOnHGlobal") : nullptr;
        if (create)
            create(nullptr, TRUE, &s);
    }
    ~HGlobalStream()
    {
        if (s)
            s->Release();
    }
    ULONG Refs()
    {
        s->AddRef();
        return s->Release();
    }
    Bytes Contents()
    {
        STATSTG st;
        s->Stat(&st, STATFLAG_NONAME);
        Bytes out((size_t)st.cbSize.QuadPart);
        LARGE_INTEGER zero;
        zero.QuadPart = 0;
        ULARGE_INTEGER keep;
        s->Seek(zero, STREAM_SEEK_CUR, &keep);
        s->Seek(zero, STREAM_SEEK_SET, nullptr);
        ULONG got = 0;
        if (!out.empty())
            s->Read(out.data(), (ULONG)out.size(), &got);
        LARGE_INTEGER back;
        back.QuadPart = (LONGLONG)keep.QuadPart;
        s->Seek(back, STREAM_SEEK_SET, nullptr);
        return out;
    }
};
} // namespace

TEST(StreamOle, WritesReadsAndNeverReleases)
{
    HGlobalStream h;
    ASSERT_NE(h.s, nullptr);
    ULONG refs = h.Refs();
    {
        vOLESTREAM o(&h.s, vSTRING((char*)"ole"), 0);
        EXPECT_EQ(o.Status(), vSTREAM_OK);
        EXPECT_EQ(o.Size(), 0UL);
        o << (unsigned long)0x01020304UL << (short)-2 << (unsigned char)7;
        vINT(123456) >> o;
        vREAL(-3.5) >> o;
        o.WritePointer(&o);
        o.WriteByteString((const unsigned char*)"end");
        EXPECT_EQ(o.Size(), 22UL);
        EXPECT_EQ(o.CurrentPos(), 22UL);
        EXPECT_TRUE(o.AtEnd());
        EXPECT_EQ(o.MoveFromStart(0), 0UL);
        unsigned long l;
        short s;
        unsigned char c;
        o >> l >> s >> c;
        EXPECT_EQ(l, 0x01020304UL);
        EXPECT_EQ(s, -2);
        EXPECT_EQ(c, 7);
        vINT i;
        vREAL r;
        i << o;
        r << o;
        EXPECT_EQ(i(), 123456);
        EXPECT_EQ(r(), -0x38000);
        EXPECT_EQ(o.ReadPointer(), (vOBJECT*)&o);
        EXPECT_EQ(o.MoveFromCur(1), 20UL);
        EXPECT_EQ(o.ReadUWord(), ('d' << 8) | 'n');
        EXPECT_EQ(o.ReadUByte(), 0);
        EXPECT_EQ(o.Status(), vSTREAM_SHORTREAD);
        EXPECT_EQ(o.MoveFromEnd(-3), 19UL);
        EXPECT_EQ(o.Status(), vSTREAM_OK);
        o.SwapByteOrder(1);
        EXPECT_EQ(o.ReadUWord(), ('e' << 8) | 'n');
    }
    EXPECT_EQ(h.Refs(), refs);
    Bytes bytes = h.Contents();
    ASSERT_EQ(bytes.size(), 22u);
    EXPECT_EQ(LE32(bytes.data()), 0x01020304UL);
    EXPECT_EQ(memcmp(&bytes[19], "end", 3), 0);
}

TEST(StreamOle, TakesOverSizeAndPositionAndCompresses)
{
    HGlobalStream h;
    Bytes initial = Incompressible(40, 5);
    h.s->Write(initial.data(), 40, nullptr);
    LARGE_INTEGER at;
    at.QuadPart = 10;
    h.s->Seek(at, STREAM_SEEK_SET, nullptr);
    vOLESTREAM o(&h.s, vSTRING(), 0);
    EXPECT_EQ(o.Size(), 40UL);
    EXPECT_EQ(o.CurrentPos(), 10UL);
    EXPECT_EQ(o.ReadUByte(), initial[10]);

    o.MoveFromEnd(0);
    o.Compress(1);
    Bytes text = Compressible(3000);
    unsigned long framed = o.WriteBlock(text.data(), 3000);
    EXPECT_LT(framed, 3000UL);
    EXPECT_EQ(o.Size(), 40UL + framed);
    Bytes raw = Incompressible(500, 8);
    EXPECT_EQ(o.WriteBlock(raw.data(), 500), 500UL);
    // The longer compressed attempt left nothing behind the raw bytes.
    EXPECT_EQ(o.Size(), 40UL + framed + 500);
    EXPECT_EQ(h.Contents().size(), 40u + framed + 500);

    o.MoveFromStart(40);
    Bytes back(3000);
    EXPECT_EQ(o.ReadByteString(back.data(), 3000), 3000);
    EXPECT_EQ(o.UnCompressed(), 1);
    EXPECT_EQ(back, text);
    EXPECT_EQ(o.CurrentPos(), 40UL + framed);
    Bytes back2(500);
    EXPECT_EQ(o.ReadByteString(back2.data(), 500), 500);
    EXPECT_EQ(o.UnCompressed(), 0);
    EXPECT_EQ(back2, raw);
    EXPECT_EQ(o.Status(), vSTREAM_OK);

    // Without an interface everything fails cleanly.
    IStream* none = nullptr;
    vOLESTREAM n(&none, vSTRING(), 0);
    EXPECT_EQ(n.Status(), vSTREAM_OPENFAILED);
    EXPECT_EQ(n.WriteULong(1), 0);
    EXPECT_EQ(n.ReadULong(), 0UL);
    EXPECT_EQ(n.Status(), vSTREAM_READERROR);
}
