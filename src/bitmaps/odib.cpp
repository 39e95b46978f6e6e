// The image base: header and palette handling, and the stored form that both
// image kinds read and write.
#include <windows.h>
#include "rl132/bitmaps/odib.h"
#include <cstring>
#include <new>
#include "bitmaps/dibread.h"
#include "bitmaps/dibrows.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vstream.h"

oDIB::oDIB(int c) : header(), palette(nullptr), compressed(c) {}

oDIB::~oDIB() { delete palette; }

void oDIB::GetHeader(oDIBHEADER& h) const { h = header; }

oDIBHEADER* oDIB::GetHeader() { return &header; }

void oDIB::SetHeader(const oDIBHEADER& h)
{
    header = h;
    if (palette)
        header.Palette(palette);
}

unsigned short oDIB::GetPalette(oDIBPALETTE** p) const
{
    if (!palette)
        return 0;
    if (p)
        *p = palette;
    return palette->GetNumColours();
}

void oDIB::SetPalette(const oDIBPALETTE& p)
{
    if (palette == &p)
        return;
    if (!palette)
        palette = new oDIBPALETTE(p);
    else
        *palette = p;
    header.Palette(palette);
}

int oDIB::SetImageBlock(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long x,
                        unsigned long firstLine, unsigned long width, unsigned long lastLine)
{
    if (x != 0 || width != header.Width())
        return 0;
    return SetImageLines(buffer, model, firstLine, lastLine);
}

int oDIB::IsCompressed() { return compressed; }

void oDIB::AdoptPalette(oDIBPALETTE* p)
{
    if (palette != p)
        delete palette;
    palette = p;
    header.Palette(p);
}

// ---------------------------------------------------------------- stored form

namespace {
// A compressed frame can expand a lot, but not without bound: this caps what
// a few stored bytes may claim to unfold into.
const unsigned long kFrameExpansion = 1024;
const unsigned long kFrameMagic = 0x0012AAB1UL;

unsigned long Remaining(vSTREAM& s)
{
    unsigned long size = s.Size(), pos = s.CurrentPos();
    return size > pos ? size - pos : 0;
}


unsigned long DpiFromPels(long pels)
{
    long dpi = pels / (long)oDIB_DPI_FACTOR;
    return dpi > 0 ? (unsigned long)dpi : 100UL;
}

} // namespace

int dibread::ReadHead(vSTREAM& s, oDIBHEADER* header, oDIBPALETTE** pal, rldib::InfoPlan* plan)
{
    *pal = nullptr;
    // The 14-byte file header is optional: without "BM" the bytes belong to the
    // info header.
    unsigned long pos = s.CurrentPos();
    unsigned char fileHeader[rldib::kFileHeaderBytes];
    long got = s.ReadByteString(fileHeader, sizeof fileHeader);
    if (got != (long)sizeof fileHeader || fileHeader[0] != 'B' || fileHeader[1] != 'M')
        s.MoveFromStart(pos);

    unsigned char raw[rldib::kInfoHeaderBytes];
    if (s.ReadByteString(raw, sizeof raw) != (long)sizeof raw)
        return 0;
    rldib::StoredInfo info;
    rldib::DecodeInfo(raw, &info);
    if (rldib::PlanInfo(info, plan) != rldib::kInfoOk)
        return 0;

    RGBQUAD quads[rldib::kMaxPalette];
    unsigned long paletteBytes = plan->paletteCount * 4UL;
    if (paletteBytes && s.ReadByteString((unsigned char*)quads, paletteBytes) != (long)paletteBytes)
        return 0;

    // The header is built afresh: compression 0, recomputed size, resolutions in
    // multiples of 40, bit count from the model (16 and 32 bits are kept as 24).
    *header = oDIBHEADER(plan->width, plan->height, DpiFromPels(info.xPelsPerMeter),
                         DpiFromPels(info.yPelsPerMeter), dibread::ModelForBits(plan->keptBits));
    // Every image read from a stream has a palette, empty when the stored
    // count is 0: an 8-bit copy of it then gets a full (black) table.
    *pal = new oDIBPALETTE(quads, (unsigned short)plan->paletteCount);
    return *pal != nullptr;
}

oCOLOUR_MODEL dibread::ModelForBits(unsigned bits)
{
    switch (bits) {
    case 1: return oCM_MONO;
    case 4: return oCM_PAL16;
    case 8: return oCM_PAL256;
    default: return oCM_RGB24;
    }
}

int dibread::RowsAvailable(vSTREAM& s, const rldib::InfoPlan& plan)
{
    unsigned long remaining = Remaining(s);
    if (plan.storedSize <= remaining)
        return 1;
    if (!s.DetectingCompressed())
        return 0;
    // Compressed frames make the stream shorter than the rows it holds. Walk the
    // blocks the writer produced (one block for most depths, 12,000-byte blocks
    // for 24 bits, any of which may be a frame) by their sizes alone: a frame is
    // skipped by its length field, a raw block by its size. Nothing is expanded,
    // and the stream is left where it was.
    const unsigned long block = plan.storedBits == 24 ? (unsigned long)rldib::kDiffBlock : plan.storedSize;
    const unsigned long start = s.CurrentPos();
    unsigned long at = start;
    const unsigned long end = start + remaining;
    int ok = 1;
    for (unsigned long done = 0; ok && done < plan.storedSize; done += block) {
        unsigned long n = plan.storedSize - done < block ? plan.storedSize - done : block;
        if (end - at >= 8) {
            s.MoveFromStart(at);
            unsigned long magic = s.ReadULong();
            unsigned long length = s.ReadULong();
            if (magic == kFrameMagic) {
                // A frame cannot unfold beyond what its block may hold.
                ok = length <= end - at - 8 && length <= n && n / kFrameExpansion <= length + 8;
                at += 8 + length;
                continue;
            }
        }
        ok = n <= end - at;
        at += n;
    }
    s.MoveFromStart(start);
    return ok;
}

int dibread::ReadRows(vSTREAM& s, const rldib::InfoPlan& plan, unsigned char* rows)
{
    if (plan.storedSize == 0)
        return 1;
    if (plan.storedBits == 24) {
        // Read in the writer's block size, so that each compressed frame comes
        // back whole. A block that came as a frame is difference-coded; one
        // stored raw holds the pixels as they are (see WriteCodedBlock).
        for (unsigned long at = 0; at < plan.storedSize; at += rldib::kDiffBlock) {
            unsigned long n = plan.storedSize - at;
            if (n > rldib::kDiffBlock)
                n = rldib::kDiffBlock;
            if (s.ReadByteString(rows + at, n) != (long)n)
                return 0;
            if (s.UnCompressed())
                rldib::DiffDecodeBlock(rows + at, n);
        }
    } else if (plan.storedBits == 16 || plan.storedBits == 32) {
        unsigned char* stored = (unsigned char*)vMemAlloc(plan.storedStride);
        if (!stored)
            return 0;
        int ok = 1;
        for (unsigned long y = 0; y < plan.height && ok; ++y) {
            if (s.ReadByteString(stored, plan.storedStride) != (long)plan.storedStride) {
                ok = 0;
                break;
            }
            unsigned char* kept = rows + y * plan.keptStride;
            std::memset(kept, 0, plan.keptStride);
            if (plan.storedBits == 16)
                rldib::Row16To24(stored, kept, plan.width);
            else
                rldib::Row32To24(stored, kept, plan.width);
        }
        vMemFree(stored);
        if (!ok)
            return 0;
    } else if (s.ReadByteString(rows, plan.storedSize) != (long)plan.storedSize) {
        return 0;
    }
    if (plan.topDown && plan.height > 1) {
        // Stored top row first: swap rows into the bottom-up order.
        for (unsigned long a = 0, b = plan.height - 1; a < b; ++a, --b) {
            unsigned char* p = rows + a * plan.keptStride;
            unsigned char* q = rows + b * plan.keptStride;
            for (unsigned long i = 0; i < plan.keptStride; ++i) {
                unsigned char t = p[i];
                p[i] = q[i];
                q[i] = t;
            }
        }
    }
    return 1;
}

void dibread::WriteCodedBlock(vSTREAM& s, const unsigned char* raw, const unsigned char* coded,
                              unsigned long n)
{
    // Only a compressed frame tells a reader that a block is coded. When the
    // stream keeps the coded block as it is (it would not shrink, or the stream
    // never compresses), the block is written again uncoded in its place.
    unsigned long occupied = s.WriteBlock(coded, n);
    if (occupied < n)
        return;
    s.MoveFromCur(-(long)occupied);
    s.Compress(0);
    s.WriteBlock(raw, n);
    s.Compress(1);
}

void dibread::Write(vSTREAM& s, const oDIBHEADER& header, const oDIBPALETTE* palette,
                    const unsigned char* rows, unsigned long size)
{
    // A stored count of 0 tells readers "1 << bits entries" for images of 8
    // bits or less, so such an image without colours carries a black table of
    // that size instead: otherwise its first rows would be read as a palette.
    oDIBPALETTE* written = const_cast<oDIBPALETTE*>(palette);
    oDIBPALETTE blank;
    const unsigned bits = header.biBitCount;
    if (bits >= 1 && bits <= 8 && (!written || written->GetNumColours() == 0)) {
        blank.SetNumColours((unsigned short)(1u << bits));
        written = &blank;
    }
    oDIBHEADER h(header);
    h.Palette(written);
    h >> s;
    if (written)
        *written >> s;
    if (!rows || size == 0)
        return;
    if (s.Compressed() && header.biBitCount == 24) {
        unsigned char block[rldib::kDiffBlock];
        for (unsigned long at = 0; at < size; at += rldib::kDiffBlock) {
            unsigned long n = size - at;
            if (n > rldib::kDiffBlock)
                n = rldib::kDiffBlock;
            rldib::DiffEncodeCopy(rows + at, block, n);
            WriteCodedBlock(s, rows + at, block, n);
        }
    } else {
        s.WriteBlock(rows, size);
    }
}
