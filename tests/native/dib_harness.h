// The whole DIB read path (dibread_test.cpp, fuzz_dibread.cpp): one input read by
// every reader, then written and read back;
// any disagreement aborts.
#ifndef RL132_TESTS_NATIVE_DIB_HARNESS_H
#define RL132_TESTS_NATIVE_DIB_HARNESS_H
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dibstore.h"
#include "native_support.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/core/vstring.h"
#include "rl132/streams/vfile.h"
#include "rl132/streams/vmemstream.h"
#include "streams/frame.h"

namespace dibfuzz {

typedef std::vector<unsigned char> Bytes;

inline void Fail(const char* what) { std::fprintf(stderr, "dib harness: %s\n", what), std::abort(); }
#define DIBFUZZ_CHECK(c) ((c) ? (void)0 : dibfuzz::Fail(#c))

// A file of this process's own, in TMPDIR when it is set.
inline vSTRING TempName(const char* what)
{
    const char* dir = std::getenv("TMPDIR");
    return vSTRING("%s/rl132-dibfuzz-%ld-%s", dir && *dir ? dir : "/tmp", (long)getpid(), what);
}

inline void Load(vMEMSTREAM& m, const Bytes& b)
{
    if (!b.empty())
        m.WriteBlock(b.data(), (unsigned long)b.size());
    m.MoveFromStart(0);
}

// The bytes of a stream as they stand, frames unexpanded.
inline Bytes Contents(vSTREAM& s)
{
    Bytes b(s.Size());
    s.MoveFromStart(0);
    s.DetectCompressed(0);
    if (!b.empty() && s.ReadByteString(b.data(), (unsigned long)b.size()) != (long)b.size())
        Fail("a stream did not give back its bytes");
    s.DetectCompressed(1);
    s.MoveFromStart(0);
    return b;
}

// Whole stored rows of an image, bottom row first, through GetImageLines.
inline Bytes Rows(const oDIB& d)
{
    const unsigned long size = d.Height() * d.Stride();
    rlnative::Exact buf(size ? size : 1);
    oCOLOUR_MODEL m = oCM_RGB24;
    return d.Height() && d.GetImageLines(0, d.Height() - 1, buf.p, &m) ? Bytes(buf.p, buf.p + size) : Bytes();
}

inline Bytes PaletteOf(const oDIB& d)
{
    oDIBPALETTE* p = nullptr;
    unsigned n = d.GetPalette(&p);
    const unsigned char* q = n ? reinterpret_cast<const unsigned char*>(p->GetRgbQuad()) : nullptr;
    return q ? Bytes(q, q + 4 * n) : Bytes();
}

enum RangeRead { kRefused, kTooLarge, kRead };

// The stored rows over a byte range: all at once, then row by row; both must agree.
inline RangeRead ReadRange(const Bytes& in, Bytes* rows, rldib::StoredHead* head)
{
    rldib::StoredSource src(in.data(), (unsigned long)in.size());
    if (!rldib::ReadHead(src, head) || !rldib::RowsAvailable(src, head->plan))
        return kRefused;
    const rldib::InfoPlan& plan = head->plan;
    if (plan.keptSize > (64u << 20))
        return kTooLarge;
    rlnative::Exact all(plan.keptSize ? plan.keptSize : 1);
    rldib::RowReader whole(src, plan);
    if (!whole.ReadAll(all.p))
        return kRefused;
    rows->assign(all.p, all.p + plan.keptSize);
    return kRead;
}

// What was read: the stored form written and read back.
inline void Exercise(const oMEMDIB& d)
{
    const unsigned long w = d.Width(), h = d.Height(), stride = d.Stride(), bits = d.BitCount();
    const Bytes rows = Rows(d), pal = PaletteOf(d);
    DIBFUZZ_CHECK(rows.size() == h * stride);

    // To memory and to a compressing file, and back: both give back the pixels.
    for (int kind = 0; kind < 2; ++kind) {
        vMEMSTREAM m;
        vFILE f(TempName("written"), vFILE_WRITENEW, 1);
        vSTREAM& s = kind ? (vSTREAM&)f : (vSTREAM&)m;
        s.Compress(kind);
        d >> s;
        s.Compress(0);
        s.MoveFromStart(0);
        oMEMDIB back(s, 0);
        DIBFUZZ_CHECK(back.Width() == w && back.Height() == h && back.BitCount() == bits);
        DIBFUZZ_CHECK(Rows(back) == rows && (pal.empty() || PaletteOf(back) == pal));
        s.MoveFromStart(0);
        oSTREAMDIB carried(s, 0);
        DIBFUZZ_CHECK(carried.Height() == 0 ? s.Size() <= 40 : Rows(carried) == Rows(back));
    }
}

inline void Run(const std::uint8_t* data, std::size_t size)
{
    const Bytes in(data, data + size);
    rldib::StoredHead head;
    Bytes rangeRows;
    const RangeRead range = ReadRange(in, &rangeRows, &head);
    if (range == kTooLarge)
        return;

    // Bytes as stored: the memory stream and the byte range read the same.
    vMEMSTREAM m;
    Load(m, in);
    oMEMDIB dm(m, 0);
    DIBFUZZ_CHECK((dm.Height() != 0) == (range == kRead && head.plan.height != 0));
    DIBFUZZ_CHECK(dm.Height() == 0 || Rows(dm) == rangeRows);

    // On a file, frames are expanded; both image kinds read alike.
    const vSTRING name = TempName("input");
    {
        vFILE out(name, vFILE_WRITENEW, 1);
        if (!in.empty())
            out.WriteBlock(in.data(), (unsigned long)in.size());
    }
    vFILE f(name, vFILE_READONLY, 0);
    oMEMDIB df(f, 0);
    f.MoveFromStart(0);
    oSTREAMDIB sf(f, 0);
    DIBFUZZ_CHECK(sf.Height() == 0 ? df.Height() == 0 || in.size() <= 40 : Rows(sf) == Rows(df));
    if (dm.Height())
        Exercise(dm);
    if (df.Height())
        Exercise(df);
}

} // namespace dibfuzz

#endif
