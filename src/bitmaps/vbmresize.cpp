// Resampling between streams (see vbmresize.h).
//
// The pipeline, one source row at a time:
//   RowSource   reads stored rows in order (12,000-byte blocks for 24 bits, so
//               compressed frames come back whole and difference-coded blocks
//               are decoded), converting 16- and 32-bit rows to 24 bits;
//   Stepper     says how often each source row is emitted (0 drops it);
//   Widen       scales the row horizontally through a precomputed column map,
//               into 24-bit colour when the depth changes;
//   Ditherer    reduces emitted rows to 8, 4 or 1 bits;
//   BlockSink   collects target rows into blocks for the target stream.
#include <windows.h>
#include "rl132/bitmaps/vbmresize.h"
#include <cstring>
#include "bitmaps/dibread.h"
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"
#include "rl132/core/vmem.h"
#include "rl132/platform/oprogress.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/streams/vstream.h"

RGBQUAD vBMRESIZE::pPalette[256];
unsigned char* vBMRESIZE::pLevelTable = nullptr;
signed char* vBMRESIZE::pResidueTable = nullptr;
oPROGRESS* vBMRESIZE::progress = nullptr;

vBMRESIZE::vBMRESIZE()
    : source(nullptr), target(nullptr), width(0), height(0), bitCount(0), average(0)
{
}

vBMRESIZE::~vBMRESIZE() {}

void vBMRESIZE::SetProgressInd(oPROGRESS& p) { progress = &p; }
void vBMRESIZE::RemoveProgressInd() { progress = nullptr; }

int vBMRESIZE::Create256ColourTables()
{
    rldib::FillCubePalette((unsigned char*)pPalette);
    if (pLevelTable && pResidueTable)
        return 1;
    Free256ColourTables();
    pLevelTable = (unsigned char*)vMemAlloc(256);
    pResidueTable = (signed char*)vMemAlloc(256);
    if (!pLevelTable || !pResidueTable) {
        Free256ColourTables();
        return 0;
    }
    for (int v = 0; v < 256; ++v) {
        int level = rldib::CubeLevel(v);
        pLevelTable[v] = (unsigned char)level;
        pResidueTable[v] = (signed char)(v - rldib::kCubeStep * level);
    }
    return 1;
}

void vBMRESIZE::Free256ColourTables()
{
    vMemFree(pLevelTable);
    vMemFree(pResidueTable);
    pLevelTable = nullptr;
    pResidueTable = nullptr;
}

void vBMRESIZE::PreserveAspect(short w, short h, unsigned short* newWidth, unsigned short* newHeight)
{
    if (!w || !h || !newWidth || !newHeight)
        return;
    int fitted = MulDiv(*newWidth, h, w);
    if (*newHeight < fitted)
        *newWidth = (unsigned short)MulDiv(*newHeight, w, h);
    else
        *newHeight = (unsigned short)fitted;
}

namespace {

// ---------------------------------------------------------------- source rows

class RowSource {
public:
    RowSource(vSTREAM& s, const rldib::InfoPlan& plan)
        : s_(s), plan_(plan), chunk_(nullptr), cap_(0), fill_(0), at_(0), consumed_(0),
          stored_(nullptr), row_(nullptr) {}
    ~RowSource()
    {
        vMemFree(chunk_);
        vMemFree(stored_);
        vMemFree(row_);
    }
    bool Init()
    {
        if (plan_.storedBits == 24)
            cap_ = rldib::kDiffBlock;
        else if (dibread::RowsAvailable(s_, plan_) && plan_.storedSize > RemainingRaw())
            cap_ = plan_.storedSize;   // one compressed frame: it must come whole
        else
            cap_ = plan_.storedSize < 262144 ? plan_.storedSize : 262144;
        if (cap_ == 0)
            return false;
        chunk_ = (unsigned char*)vMemAlloc(cap_);
        stored_ = (unsigned char*)vMemAlloc(plan_.storedStride);
        row_ = (unsigned char*)vMemAlloc(plan_.keptStride);
        if (row_)
            std::memset(row_, 0, plan_.keptStride);
        return chunk_ && stored_ && row_;
    }
    // The next row in the kept format, or null when the stream ran short. With
    // skip, the row is consumed without being assembled.
    const unsigned char* Next(bool skip)
    {
        unsigned long need = plan_.storedStride, got = 0;
        bool direct = fill_ - at_ >= need;
        if (direct && plan_.storedBits == plan_.keptBits) {
            const unsigned char* p = chunk_ + at_;
            at_ += need;
            return p;
        }
        while (got < need) {
            if (at_ == fill_ && !Refill())
                return nullptr;
            unsigned long n = fill_ - at_;
            if (n > need - got)
                n = need - got;
            if (!skip)
                std::memcpy(stored_ + got, chunk_ + at_, n);
            at_ += n;
            got += n;
        }
        if (skip)
            return stored_;
        if (plan_.storedBits == 16)
            rldib::Row16To24(stored_, row_, plan_.width);
        else if (plan_.storedBits == 32)
            rldib::Row32To24(stored_, row_, plan_.width);
        else
            return stored_;
        return row_;
    }

private:
    unsigned long RemainingRaw()
    {
        unsigned long size = s_.Size(), pos = s_.CurrentPos();
        return size > pos ? size - pos : 0;
    }
    bool Refill()
    {
        unsigned long left = plan_.storedSize - consumed_;
        unsigned long n = left < cap_ ? left : cap_;
        if (n == 0 || s_.ReadByteString(chunk_, n) != (long)n)
            return false;
        if (plan_.storedBits == 24 && s_.UnCompressed())
            rldib::DiffDecodeBlock(chunk_, n);
        consumed_ += n;
        fill_ = n;
        at_ = 0;
        return true;
    }
    vSTREAM& s_;
    const rldib::InfoPlan& plan_;
    unsigned char* chunk_;
    unsigned long cap_, fill_, at_, consumed_;
    unsigned char* stored_;
    unsigned char* row_;
};

// ---------------------------------------------------------------- target rows

class BlockSink {
public:
    explicit BlockSink(vSTREAM& s)
        : s_(s), block_(nullptr), coded_(nullptr), cap_(0), fill_(0), diff_(false), whole_(nullptr) {}
    ~BlockSink()
    {
        vMemFree(block_);
        vMemFree(coded_);
        delete whole_;
    }
    bool Init(unsigned bits)
    {
        // 24-bit rows on a compressing stream go out difference-coded in the
        // readers' block size; other rows on such a stream must form one block,
        // so they are gathered first.
        diff_ = s_.Compressed() && bits == 24;
        if (s_.Compressed() && !diff_) {
            whole_ = new vMEMSTREAM;
            if (!whole_)
                return false;
        }
        cap_ = diff_ ? (unsigned long)rldib::kDiffBlock : 65536UL;
        block_ = (unsigned char*)vMemAlloc(cap_);
        if (diff_)
            coded_ = (unsigned char*)vMemAlloc(cap_);
        return block_ != nullptr && (!diff_ || coded_ != nullptr);
    }
    void Put(const unsigned char* data, unsigned long n)
    {
        if (fill_ == 0 && n >= cap_ && !diff_) {
            Emit(data, n);
            return;
        }
        while (n) {
            unsigned long k = cap_ - fill_ < n ? cap_ - fill_ : n;
            std::memcpy(block_ + fill_, data, k);
            fill_ += k;
            data += k;
            n -= k;
            if (fill_ == cap_)
                Flush();
        }
    }
    void Finish()
    {
        Flush();
        if (whole_ && whole_->Size() && whole_->Buffer())
            s_.WriteBlock(whole_->Buffer(), whole_->Size());
    }

private:
    void Flush()
    {
        if (!fill_)
            return;
        if (diff_) {
            rldib::DiffEncodeCopy(block_, coded_, fill_);
            dibread::WriteCodedBlock(s_, block_, coded_, fill_);
        } else {
            Emit(block_, fill_);
        }
        fill_ = 0;
    }
    void Emit(const unsigned char* data, unsigned long n)
    {
        if (whole_)
            whole_->WriteBlock(data, n);
        else
            s_.WriteBlock(data, n);
    }
    vSTREAM& s_;
    unsigned char* block_;
    unsigned char* coded_;
    unsigned long cap_, fill_;
    bool diff_;
    vMEMSTREAM* whole_;
};

// ---------------------------------------------------------------- horizontal

// Pixel readers and writers, chosen once per scaling by the bit counts.
typedef void (*PixelRowFn)(const unsigned char* src, unsigned char* dst, const std::uint32_t* map,
                           std::uint32_t count, const unsigned char* palette, std::uint32_t palCount);

void Row1(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
          const unsigned char*, std::uint32_t)
{
    std::memset(d, 0, (n + 7) / 8);
    for (std::uint32_t i = 0; i < n; ++i)
        if ((s[m[i] >> 3] >> (7 - (m[i] & 7))) & 1)
            d[i >> 3] = (unsigned char)(d[i >> 3] | (0x80 >> (i & 7)));
}
void Row4(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
          const unsigned char*, std::uint32_t)
{
    std::memset(d, 0, (n + 1) / 2);
    for (std::uint32_t i = 0; i < n; ++i) {
        unsigned v = m[i] & 1 ? s[m[i] >> 1] & 15 : s[m[i] >> 1] >> 4;
        d[i >> 1] = (unsigned char)(d[i >> 1] | (i & 1 ? v : v << 4));
    }
}
void Row8(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
          const unsigned char*, std::uint32_t)
{
    for (std::uint32_t i = 0; i < n; ++i)
        d[i] = s[m[i]];
}
void Row24(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
           const unsigned char*, std::uint32_t)
{
    // The map holds byte offsets (3 × column) for this routine.
    std::uint32_t i = 0;
    for (; i + 2 <= n; i += 2, d += 6) {
        const unsigned char* a = s + m[i];
        const unsigned char* b = s + m[i + 1];
        d[0] = a[0]; d[1] = a[1]; d[2] = a[2];
        d[3] = b[0]; d[4] = b[1]; d[5] = b[2];
    }
    if (i < n) {
        const unsigned char* a = s + m[i];
        d[0] = a[0]; d[1] = a[1]; d[2] = a[2];
    }
}
// Palette images widened to colour for the dither.
void Colour1(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
             const unsigned char* pal, std::uint32_t pc)
{
    for (std::uint32_t i = 0; i < n; ++i, d += 3)
        rldib::ReadLine1To24(s, d, 1, m[i] << 16, 0, pal, pc);
}
void Colour4(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
             const unsigned char* pal, std::uint32_t pc)
{
    for (std::uint32_t i = 0; i < n; ++i, d += 3)
        rldib::ReadLine4To24(s, d, 1, m[i] << 16, 0, pal, pc);
}
void Colour8(const unsigned char* s, unsigned char* d, const std::uint32_t* m, std::uint32_t n,
             const unsigned char* pal, std::uint32_t pc)
{
    std::uint32_t table[256];
    for (unsigned i = 0; i < 256; ++i)
        table[i] = i < pc && pal ? pal[4 * i] | (pal[4 * i + 1] << 8) | (pal[4 * i + 2] << 16) : 0;
    for (std::uint32_t i = 0; i < n; ++i, d += 3) {
        std::uint32_t c = table[s[m[i]]];
        d[0] = (unsigned char)c;
        d[1] = (unsigned char)(c >> 8);
        d[2] = (unsigned char)(c >> 16);
    }
}

// A reduced 24-bit row whose target pixels are the rounded means of the source
// pixels they stand for: target i covers source columns from its pick up to the
// next target's pick (the first from column 0, the last to the row's end).
// The map holds byte offsets (3 × column).
void AverageRow(const unsigned char* s, unsigned char* d, const std::uint32_t* map, std::uint32_t n,
                std::uint32_t sourceWidth)
{
    for (std::uint32_t i = 0; i < n; ++i, d += 3) {
        std::uint32_t from = i ? map[i] / 3 : 0;
        std::uint32_t to = i + 1 < n ? map[i + 1] / 3 : sourceWidth;
        std::uint32_t sum[3] = {0, 0, 0}, count = to - from;
        for (const unsigned char* p = s + 3 * from; p < s + 3 * to; p += 3) {
            sum[0] += p[0];
            sum[1] += p[1];
            sum[2] += p[2];
        }
        for (int c = 0; c < 3; ++c)
            d[c] = (unsigned char)((sum[c] + count / 2) / count);
    }
}

PixelRowFn GetPixelRoutines(unsigned sourceBits, bool toColour)
{
    switch (sourceBits) {
    case 1: return toColour ? Colour1 : Row1;
    case 4: return toColour ? Colour4 : Row4;
    case 8: return toColour ? Colour8 : Row8;
    case 24: return Row24;
    default: return nullptr;
    }
}

} // namespace

int vBMRESIZE::Scale(vSTREAM& src, vSTREAM& dst, unsigned short w, unsigned short h,
                     unsigned char bits, int avg)
{
    {
        unsigned long size = src.Size(), pos = src.CurrentPos();
        if (size == 0 || pos >= size)
            return 0;
    }
    source = &src;
    target = &dst;
    width = w;
    height = h;
    bitCount = bits;
    average = avg;
    return BresenhamScale();
}

int vBMRESIZE::BresenhamScale()
{
    vSTREAM& src = *source;
    vSTREAM& dst = *target;
    oDIBHEADER sh;
    oDIBPALETTE* sp = nullptr;
    rldib::InfoPlan plan;
    if (!dibread::ReadHead(src, &sh, &sp, &plan)) {
        delete sp;
        return 0;
    }
    struct PaletteHolder {
        oDIBPALETTE* p;
        ~PaletteHolder() { delete p; }
    } holdSource = {sp};
    if (plan.width == 0 || plan.height == 0 || plan.width > 0xFFFF || plan.height > 0xFFFF ||
        !dibread::RowsAvailable(src, plan))
        return 0;

    const std::uint32_t sw = plan.width, shh = plan.height;
    const std::uint32_t tw = width ? width : sw, th = height ? height : shh;
    const unsigned sourceBits = plan.keptBits;
    unsigned targetBits = sourceBits;
    if (bitCount)
        targetBits = bitCount < 4 ? 1 : bitCount < 8 ? 4 : bitCount == 8 ? 8 : 24;
    const bool change = targetBits != sourceBits;
    // A target whose rows would not fit the header's 32-bit size is refused
    // before anything is written.
    if (!rldib::CheckedImageSize(targetBits, tw, th, nullptr, nullptr))
        return 0;
    if (change && targetBits == 8 && !Create256ColourTables())
        return 0;

    // The target palette follows the target depth: black and white, the 16
    // standard colours, the cube, or the source's own when the depth stays or
    // grows.
    // The screen device's palettes plug in here once it exists: its 16-colour
    // palette for 4 bits, and its 256-colour palette (when the display has one)
    // in place of pPalette for 8 bits; the dithers then map onto those entries.
    oDIBPALETTE* tp = nullptr;
    if (change && targetBits == 1) {
        RGBQUAD bw[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
        tp = new oDIBPALETTE(bw, 2);
    } else if (change && targetBits == 4) {
        RGBQUAD q[16];
        rldib::FillPalette16((unsigned char*)q);
        tp = new oDIBPALETTE(q, 16);
    } else if (change && targetBits == 8) {
        tp = new oDIBPALETTE(pPalette, 256);
    } else if (sp) {
        // Unchanged or deeper: the source's table goes along as it is.
        tp = new oDIBPALETTE(*sp);
    }
    PaletteHolder holdTarget = {tp};
    if (change && targetBits <= 8 && !tp)
        return 0;

    oDIBHEADER targetHeader(tw, th, sh.HorzDPI(), sh.VertDPI(), dibread::ModelForBits(targetBits));
    targetHeader.Palette(tp);
    const std::uint32_t tstride = rldib::Stride(targetBits, tw);

    // Horizontal map: source column per target column (byte offsets for 24 bits).
    std::uint32_t* xmap = (std::uint32_t*)vMemAlloc(tw * sizeof(std::uint32_t));
    const bool toColour = change && sourceBits <= 8;
    PixelRowFn widen = GetPixelRoutines(sourceBits, toColour);
    const bool identity = tw == sw && !toColour;
    // Averaging applies where the source columns are colours to be reduced.
    const bool averaging = average && tw < sw && sourceBits == 24;
    const unsigned rowBits = change ? 24 : sourceBits;
    unsigned char* line = (unsigned char*)vMemAlloc(rldib::Stride(rowBits, tw) + 4);
    unsigned char* out = (unsigned char*)vMemAlloc(tstride + 4);
    rldib::Ditherer dither;
    RowSource rows(src, plan);
    BlockSink sink(dst);
    struct Buffers {
        void* a; void* b; void* c;
        ~Buffers() { vMemFree(a); vMemFree(b); vMemFree(c); }
    } holdBuffers = {xmap, line, out};
    if (!xmap || !line || !out || !widen || !rows.Init() || !sink.Init(targetBits) ||
        (change && targetBits != 24 && !dither.Init(tw)))
        return 0;
    rldib::StepMap(sw, tw, xmap);
    if (sourceBits == 24)
        for (std::uint32_t i = 0; i < tw; ++i)
            xmap[i] *= 3;
    std::memset(line, 0, rldib::Stride(rowBits, tw) + 4);
    std::memset(out, 0, tstride + 4);

    targetHeader >> dst;
    if (tp)
        *tp >> dst;

    const unsigned char* pal = sp ? (const unsigned char*)sp->GetRgbQuad() : nullptr;
    const std::uint32_t palCount = pal ? sp->GetNumColours() : 0;
    if (progress)
        progress->Begin(src.Size());
    rldib::Stepper step(shh, th);
    int ok = 1;
    for (std::uint32_t y = 0; y < shh && !step.Done(); ++y) {
        std::uint32_t times = step.Take();
        const unsigned char* row = rows.Next(times == 0);
        if (!row) {
            ok = 0;
            break;
        }
        if (times) {
            const unsigned char* wide = row;
            if (averaging) {
                AverageRow(row, line, xmap, tw, sw);
                wide = line;
            } else if (!identity) {
                widen(row, line, xmap, tw, pal, palCount);
                wide = line;
            }
            for (std::uint32_t k = 0; k < times; ++k) {
                const unsigned char* emit = wide;
                switch (change ? targetBits : 0) {
                case 8: dither.Line8(wide, out); emit = out; break;
                case 4: dither.Line4(wide, out); emit = out; break;
                case 1: dither.Line1(wide, out); emit = out; break;
                default: break;
                }
                sink.Put(emit, tstride);
            }
        }
        if (progress) {
            progress->Update(src.CurrentPos());
            if (progress->Stop()) {
                ok = 0;
                break;
            }
        }
    }
    sink.Finish();
    if (progress)
        progress->End();
    return ok && step.Done();
}
