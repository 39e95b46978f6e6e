// One input through the binary stream readers (tests and fuzz programs): false on
// the first breach. The first byte seeds the operations, the rest is the content.
#ifndef RL132_TESTS_NATIVE_STREAM_HARNESS_H
#define RL132_TESTS_NATIVE_STREAM_HARNESS_H
#include <algorithm>
#include <vector>
#include "native_support.h"
#include "rl132/attributes/vcolour.h"
#include "rl132/attributes/vfillspec.h"
#include "rl132/attributes/vlinespec.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vstring.h"
#include "rl132/streams/vmemstream.h"
#include "streams/frame.h"

namespace rlnative {

// The content after the seed byte, in a heap block of exactly its size.
struct Content : Exact {
    unsigned long n;
    Content(const unsigned char* data, size_t size) : Exact(size > 1 ? size - 1 : 1), n((unsigned long)(size - 1))
    {
        std::memcpy(p, data + 1, n);
    }
};

// A memory stream that looks for frames in ReadByteString, as the file and OLE streams do.
class FramedMem : public vMEMSTREAM {
public:
    FramedMem(unsigned char** buffer, unsigned long length) : vMEMSTREAM(buffer, length, vSTRING(), 0, 0) {}
    virtual long ReadByteString(unsigned char* buffer, unsigned long count)
    {
        return vSTREAM::ReadByteString(buffer, count);
    }
};

// Typed reads, byte strings with and without frames, strings, numbers, the frame
// module on the stream and in memory, moves anywhere, and the stream copy.
inline bool ReadEverything(const unsigned char* data, size_t size)
{
    if (size == 0)
        return true;
    Rng rng(data[0]);
    Content content(data, size);
    const unsigned long n = content.n;
    unsigned char* p = content.p;
    FramedMem s(&p, n);
    for (int op = 0; op < 48; ++op) {
        const unsigned long at = s.CurrentPos();
        if (at > n)
            return Fail("position beyond the data");
        s.SwapByteOrder((unsigned char)rng.Below(2));
        s.DetectCompressed(rng.Below(4) != 0);
        switch (rng.Below(10)) {
        case 0: s.ReadULong(); s.ReadSWord(); s.ReadUByte(); break;
        case 1: s.ReadSLong(); s.ReadUWord(); s.ReadSByte(); s.ReadPointer(); break;
        case 2: case 3: case 4: {
            // What a frame at the position gives, or the bytes as stored; never beyond the count.
            unsigned long count = rng.Chance(3) ? rng.Below(8) : rng.Below(n + 64);
            Exact out(count ? count : 1);
            rlframe::Verdict v = rlframe::Peek(content.p + at, n - at);
            long got = s.ReadByteString(count ? out.p : nullptr, count);
            if (got < 0 || (unsigned long)got > count)
                return Fail("byte string: count exceeded");
            bool framed = s.DetectingCompressed() && count >= 4 && v.frame;
            if (framed != (s.UnCompressed() != 0))
                return Fail("byte string: frame flag disagrees with the verdict");
            if (framed) {
                if ((unsigned long)got != (v.expanded < count ? v.expanded : count) || s.CurrentPos() != at + v.stored)
                    return Fail("byte string: frame delivery or position");
            } else if ((unsigned long)got != std::min(n - at, count) || std::memcmp(out.p, content.p + at, got) != 0) {
                return Fail("byte string: raw bytes differ");
            }
            break;
        }
        case 5: { vSTRING text("old"); text << s; vINT i; i << s; vREAL r; r << s; break; }
        case 6: {
            // The frame module on the stream agrees with its memory form.
            rlframe::Verdict m = rlframe::Peek(content.p + at, n - at);
            unsigned long cap = rng.Below(5000);
            Exact out(cap ? cap : 1);
            rlframe::Verdict v = rng.Chance(2) ? rlframe::Expand(s, out.p, cap) : rlframe::Skip(s, rng.Below(9));
            if (v.frame != m.frame || v.stored != m.stored || v.expanded != m.expanded)
                return Fail("frame module: stream and memory verdicts differ");
            break;
        }
        case 8:
            switch (rng.Below(3)) {
            case 0: s.MoveFromStart(rng.Chance(4) ? rng.U32() : rng.Below(n + 2)); break;
            case 1: s.MoveFromCur((long)(rng.Chance(4) ? rng.U32() : rng.Below(40)) - 20); break;
            default: s.MoveFromEnd(-(long)rng.Below(n + 2)); break;
            }
            break;
        default: {
            // The copy from here on: frames expanded, raw runs as stored.
            vMEMSTREAM copy;
            copy = s;
            if (copy.Size() > 0 && !copy.Buffer())
                return Fail("stream copy lost its buffer");
            s.MoveFromStart(at);
            break;
        }
        }
    }
    return true;
}

// The colour, line style and fill style readers: each consumes exactly its form
// (or what is left), and what was read writes back as the same bytes.
inline bool ReadAttributes(const unsigned char* data, size_t size)
{
    if (size == 0)
        return true;
    Rng rng(data[0]);
    Content content(data, size);
    const unsigned long n = content.n;
    unsigned char* p = content.p;
    vMEMSTREAM s(&p, n, vSTRING(), 0, 0);
    // The conversions' results go somewhere the compiler cannot drop.
    volatile unsigned long sink = 0;
    while (!s.AtEnd()) {
        const unsigned long at = s.CurrentPos();
        const bool swap = rng.Below(2) != 0;
        s.SwapByteOrder(swap);
        vMEMSTREAM back;
        unsigned long form;
        switch (rng.Below(3)) {
        case 0: {
            vCOLOUR c;
            c << s;
            form = 8;
            c >> back;
            sink = sink + c.PackedRGB() + c.Cyan() + c.Hue() + c.TintFormat(rng.Below(300)).Value();
            break;
        }
        case 1: {
            vLINESPEC l(s);
            form = 24;
            l >> back;
            for (unsigned short i = 0; i < 8; ++i)
                sink = sink + l.Pattern(i);
            break;
        }
        default: {
            // Its fields and a word saying whether an image follows (40); the
            // image is not in the native build: a stream announcing one stays at its start.
            vFILLSPEC f(s);
            const unsigned char* w = content.p + at;
            form = n - at >= 26 && (swap ? (w[24] << 8 | w[25]) : (w[24] | w[25] << 8)) == 40 ? 24 : 26;
            f >> back;
            break;
        }
        }
        const unsigned long used = s.CurrentPos() - at, compare = std::min(form, 24UL);
        if (used != std::min(form, n - at))
            return Fail("attribute: bytes consumed");
        // Unswapped, the stored bytes come back as they were (but the fill's image word).
        if (!swap && used == form && (back.Size() < compare || std::memcmp(back.Buffer(), content.p + at, compare) != 0))
            return Fail("attribute: bytes written back differ");
    }
    return true;
}

} // namespace rlnative

#endif
