// The whole DIB read path (dibread_test.cpp, fuzz_dibread.cpp): one input read by
// every reader, then copied, converted, cut, written and read back, resampled;
// any disagreement aborts. First byte 0xFF: a framed picture, damaged (Framed).
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
#include "bitmaps/resample.h"
#include "native_support.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/core/vgeom.h"
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
    const unsigned long rowsAt = src.Position();
    rlnative::Exact all(plan.keptSize ? plan.keptSize : 1);
    rldib::RowReader whole(src, plan);
    if (!whole.ReadAll(all.p))
        return kRefused;
    rows->assign(all.p, all.p + plan.keptSize);
    src.Seek(rowsAt);
    rldib::RowReader each(src, plan);
    if (plan.height && plan.storedStride && each.Init()) {
        for (std::uint32_t y = 0; y < plan.height; ++y) {
            const unsigned char* r = each.Next(y % 3 == 2);
            DIBFUZZ_CHECK(r != nullptr);
            if (y % 3 != 2)
                DIBFUZZ_CHECK(std::memcmp(r, all.p + (std::size_t)y * plan.keptStride, plan.keptStride) == 0);
        }
        DIBFUZZ_CHECK(each.Next() == nullptr);
    }
    return kRead;
}

// A small picture the input describes, stored in compressed frames, then damaged.
inline Bytes Framed(const std::uint8_t* data, std::size_t size)
{
    if (size < 6)
        return Bytes(data, data + size);
    static const unsigned short kBits[] = {1, 4, 8, 24};
    static const oCOLOUR_MODEL kModels[] = {oCM_MONO, oCM_PAL16, oCM_PAL256, oCM_RGB24};
    const unsigned k = data[1] & 3;
    // Wide 24-bit pictures reach more than one 12,000-byte block.
    const unsigned long w = 1 + (data[2] % (k == 3 ? 64 : 200)) * (k == 3 && (data[1] & 4) ? 70 : 1);
    const unsigned long h = 1 + data[3] % 24;
    oMEMDIB pic(w, h, kBits[k], kModels[k], 0);
    unsigned char* rows = nullptr;
    if (!pic.LockImageLines(0, h, &rows, kModels[k]))
        return Bytes();
    // Smooth rows, so that they compress, with the input's bytes as detail.
    for (unsigned long i = 0; i < h * pic.Stride(); ++i)
        rows[i] = (unsigned char)(i / 5 + ((data[1] & 8) && size > 6 ? data[6 + i % (size - 6)] : 0));
    pic.ReleaseImageLines(1);
    if (k < 3) {
        rlnative::Rng rng(data[4]);
        std::vector<rldib::Quad> quads(1u << kBits[k]);
        for (auto& q : quads)
            q = rldib::Quad{rng.Byte(), rng.Byte(), rng.Byte(), 0};
        pic.SetPalette(oDIBPALETTE(reinterpret_cast<const RGBQUAD*>(quads.data()), (unsigned short)quads.size()));
    }
    vFILE out(TempName("framed"), vFILE_WRITENEW, 1);
    if (data[5] & 2) {
        // Top row first: a header with a negative height, the rows turned over.
        oDIBHEADER head(w, h, 72, 72, kModels[k]);
        head.biHeight = -(LONG)h;
        oDIBPALETTE* p = nullptr;
        pic.GetPalette(&p);
        head.Palette(p);
        head >> out;
        if (p)
            *p >> out;
        Bytes turned;
        for (unsigned long y = h; y-- > 0;)
            turned.insert(turned.end(), rows + y * pic.Stride(), rows + (y + 1) * pic.Stride());
        out.Compress(1);
        rldib::RowWriter::Write(out, kBits[k], turned.data(), (unsigned long)turned.size());
    } else {
        out.Compress(1);
        pic >> out;
    }
    Bytes b = Contents(out);
    out.Close();
    // Edits: (offset, value) pairs from the rest of the input.
    for (std::size_t i = 6; i + 2 < size && !b.empty(); i += 3) {
        std::size_t at = ((std::size_t)data[i] << 8 | data[i + 1]) % b.size();
        switch (data[i + 2] & 3) {
        case 0: b[at] = data[i + 2]; break;
        case 1: b[at] ^= (unsigned char)(1u << (data[i + 2] >> 5)); break;
        case 2: b.resize(at); break;
        default: b.insert(b.begin() + at, data[i + 2]); break;
        }
    }
    if (data[5] & 1)  // a file header in front: such a file is read as plain bytes
        b.insert(b.begin(), {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    return b;
}

// Whether a block of the stored form (header, palette, rows in one block or
// 12,000-byte blocks for 24 bits) written as it stands reads as a whole frame.
inline bool Ambiguous(const oMEMDIB& d)
{
    vMEMSTREAM m;
    d >> m;
    const Bytes b = Contents(m);
    std::vector<std::pair<unsigned long, unsigned long>> blocks = {{0, 40}};
    const unsigned long palette = 4UL * d.GetPalette(nullptr);
    if (palette)
        blocks.push_back({40, palette});
    for (unsigned long at = 40 + palette; at < b.size();) {
        const unsigned long n = d.BitCount() == 24 ? std::min<unsigned long>(12000, b.size() - at) : b.size() - at;
        blocks.push_back({at, n});
        at += n;
    }
    for (const auto& k : blocks) {  // a reader takes a frame for a block when it yields all of it
        const rlframe::Verdict v = k.first < b.size() ? rlframe::Peek(&b[k.first], (unsigned long)b.size() - k.first) : rlframe::Verdict();
        if (v.frame && v.expanded >= k.second)
            return true;
    }
    return false;
}

// What was read: copies and conversions, rectangles, rows taken in again,
// the stored form written and read back, and the resampler.
inline void Exercise(const oMEMDIB& d, const std::uint8_t* data, std::size_t size)
{
    rlnative::Rng rng(size ? data[size - 1] * 131u + size : 7);
    const unsigned long w = d.Width(), h = d.Height(), stride = d.Stride(), bits = d.BitCount();
    const Bytes rows = Rows(d), pal = PaletteOf(d);
    DIBFUZZ_CHECK(rows.size() == h * stride);

    // To memory, a plain and a compressing file, and back. Only a plain file may
    // give back other pixels: a block that is itself a whole frame.
    const bool ambiguous = Ambiguous(d);
    for (int kind = 0; kind < 3; ++kind) {
        vMEMSTREAM m;
        vFILE f(TempName("written"), vFILE_WRITENEW, 1);
        vSTREAM& s = kind ? (vSTREAM&)f : (vSTREAM&)m;
        s.Compress(kind == 2);
        d >> s;
        s.Compress(0);
        s.MoveFromStart(0);
        oMEMDIB back(s, 0);
        DIBFUZZ_CHECK(back.Width() == w && back.Height() == h && back.BitCount() == bits);
        DIBFUZZ_CHECK(Rows(back) == rows || (kind == 1 && ambiguous));
        DIBFUZZ_CHECK(pal.empty() || PaletteOf(back) == pal || (kind == 1 && ambiguous));
        s.MoveFromStart(0);
        oSTREAMDIB carried(s, 0);
        DIBFUZZ_CHECK(carried.Height() == 0 ? s.Size() <= 40 : Rows(carried) == Rows(back));
    }

    // Rectangles, indices or colours, in buffers of exactly the size asked for:
    // whole rows go out as stored, otherwise the pixels asked for.
    for (int i = 0; i < 4 && w && h; ++i) {
        const unsigned long x = rng.Below(w), first = rng.Below(h), last = first + rng.Below(h - first);
        const unsigned long cw = 1 + rng.Below(w - x);
        oCOLOUR_MODEL model = rng.Chance(2) ? oCM_RGB24 : oCM_PAL256;
        const bool expand = bits <= 8 && model == oCM_RGB24;
        const unsigned long per = x == 0 && cw == w ? stride
                                  : bits > 8      ? ((x + cw) * bits + 7) / 8 - x * bits / 8
                                  : expand        ? 3 * cw
                                                  : cw;
        rlnative::Exact buf((last - first + 1) * per);
        DIBFUZZ_CHECK(d.GetImageBlock(x, first, cw, last, buf.p, &model) == 1);
    }

    // Rows delivered top row first come out as the image.
    if (!rows.empty() && rows.size() <= (1u << 20)) {
        oSTREAMDIB again(0);
        again.SetHeader(*const_cast<oMEMDIB&>(d).GetHeader());
        const unsigned long block = 1 + rng.Below(h);
        for (long last = (long)h - 1; last >= 0; last -= (long)block) {
            unsigned long first = last + 1 >= (long)block ? last + 1 - block : 0;
            DIBFUZZ_CHECK(again.SetImageLines(const_cast<unsigned char*>(&rows[first * stride]), oCM_RGB24, first, last) == 1);
        }
        DIBFUZZ_CHECK(Rows(again) == rows);
    }

    // Converting copies: a mirrored copy is the plain one reversed.
    if (w && h && w <= 0xFFFF && h <= 0xFFFF) {
        static const oCOLOUR_MODEL kTargets[] = {oCM_RGB24, oCM_PAL256, oCM_PAL256_C, oCM_MONO};
        const oCOLOUR_MODEL model = kTargets[rng.Below(4)];
        const long tw = 1 + (long)rng.Below(40), th = 1 + (long)rng.Below(30);
        const long left = (long)rng.Below(w), top = (long)rng.Below(h);
        vRECT rect(left, top, left + 1 + (long)rng.Below(w - left), top + 1 + (long)rng.Below(h - top));
        vRECT* r = rng.Chance(2) ? &rect : nullptr;
        oMEMDIB plain(d, model, tw, th, r), mirrored(d, model, -tw, -th, r);
        DIBFUZZ_CHECK(plain.Width() == (unsigned long)tw && mirrored.Height() == (unsigned long)th);
        const Bytes a = Rows(plain), b = Rows(mirrored);
        const unsigned px = plain.BitCount() / 8;
        for (long y = 0; y < th; ++y)
            for (long x = 0; x < tw; ++x)
                DIBFUZZ_CHECK(std::memcmp(&a[y * plain.Stride() + px * x],
                                          &b[(th - 1 - y) * plain.Stride() + px * (tw - 1 - x)], px) == 0);
    }
}

// The resampler on the stream as it stands, into memory or a compressing
// file; what it writes must read back at the size asked for.
inline void Resample(vSTREAM& source, const std::uint8_t* data, std::size_t size)
{
    rlnative::Rng rng(size ? data[0] * 7u + size : 3);
    static const unsigned kBits[] = {0, 1, 4, 8, 24};
    vMEMSTREAM m;
    vFILE f(TempName("scaled"), vFILE_WRITENEW, 1);
    vSTREAM& target = rng.Chance(2) ? (vSTREAM&)f : (vSTREAM&)m;
    target.Compress(&target == &f);
    source.MoveFromStart(0);
    rldib::ResampleJob job = {&source, &target, rng.Below(50), rng.Below(50), kBits[rng.Below(5)],
                              rng.Chance(2), nullptr, nullptr};
    if (!rldib::Resample(job))
        return;
    target.Compress(0);
    target.MoveFromStart(0);
    oMEMDIB out(target, 0);
    DIBFUZZ_CHECK(out.Height() != 0);
    DIBFUZZ_CHECK(!job.width || out.Width() == job.width);
    DIBFUZZ_CHECK(!job.height || out.Height() == job.height);
}

inline void Run(const std::uint8_t* data, std::size_t size)
{
    const Bytes in = size && data[0] == 0xFF ? Framed(data, size) : Bytes(data, data + size);
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
        Exercise(dm, data, size);
    if (df.Height())
        Exercise(df, data, size);
    Resample(f, data, size);
}

} // namespace dibfuzz

#endif
