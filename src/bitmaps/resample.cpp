// The resampler's work (see resample.h).
//
// The pipeline, one source row at a time:
//   RowReader   (dibstore) the stored rows, bottom row first, in the kept
//               format: compressed frames expanded, coded blocks decoded,
//               16 and 32 bits as 24;
//   Stepper     says how often each source row is emitted (0 drops it);
//   widen       scales the row horizontally through a precomputed column map,
//               into 24-bit colour when the depth changes (the source
//               format's gather, from the pixel-format table);
//   dither      reduces emitted rows to 8, 4 or 1 bits (the target's entry
//               of the dither table);
//   RowWriter   (dibstore) collects target rows into blocks for the target.
#include "bitmaps/resample.h"
#include <cstring>
#include "bitmaps/dibimage.h"
#include "bitmaps/dibstore.h"
#include "bitmaps/dither.h"
#include "bitmaps/pixfmt.h"
#include "rl132/core/vmem.h"
#include "rl132/platform/oprogress.h"
#include "rl132/streams/vstream.h"

namespace rldib {

namespace {

// A reduced 24-bit row whose target pixels are the rounded means of the source
// pixels they stand for: target i covers source columns from its pick up to the
// next target's pick (the first from column 0, the last to the row's end).
void AverageRow(const unsigned char* s, unsigned char* d, const std::uint32_t* map, std::uint32_t n,
                std::uint32_t sourceWidth)
{
    for (std::uint32_t i = 0; i < n; ++i, d += 3) {
        std::uint32_t from = i ? map[i] : 0;
        std::uint32_t to = i + 1 < n ? map[i + 1] : sourceWidth;
        std::uint32_t sum[3] = {0, 0, 0}, count = to - from;
        for (const unsigned char* p = s + 3 * (std::size_t)from; p < s + 3 * (std::size_t)to; p += 3) {
            sum[0] += p[0];
            sum[1] += p[1];
            sum[2] += p[2];
        }
        for (int c = 0; c < 3; ++c)
            d[c] = (unsigned char)((sum[c] + count / 2) / count);
    }
}

// Blocks freed on every way out.
struct Owned {
    void* p[3] = {nullptr, nullptr, nullptr};
    oDIBPALETTE* palette = nullptr;
    ~Owned()
    {
        for (void* q : p)
            vMemFree(q);
        delete palette;
    }
};

} // namespace

int Resample(const ResampleJob& job)
{
    vSTREAM& dst = *job.target;
    StoredSource src(*job.source);
    StoredHead head;
    if (!ReadHead(src, &head))
        return 0;
    const InfoPlan& plan = head.plan;
    if (plan.width == 0 || plan.height == 0 || plan.width > 0xFFFF || plan.height > 0xFFFF ||
        !RowsAvailable(src, plan))
        return 0;

    const std::uint32_t sw = plan.width, shh = plan.height;
    const std::uint32_t tw = job.width ? job.width : sw, th = job.height ? job.height : shh;
    const unsigned sourceBits = plan.keptBits;
    unsigned targetBits = sourceBits;
    if (job.bitCount)
        targetBits = job.bitCount < 4 ? 1 : job.bitCount < 8 ? 4 : job.bitCount == 8 ? 8 : 24;
    const bool change = targetBits != sourceBits;
    // A target whose rows would not fit the header's 32-bit size is refused
    // before anything is written.
    if (!CheckedImageSize(targetBits, tw, th, nullptr, nullptr))
        return 0;

    // The target palette follows the target depth: black and white, the 16
    // standard colours, the cube, or the source's own when the depth stays or
    // grows. The screen device's palettes plug in here once it exists: its
    // 16-colour palette for 4 bits, and its 256-colour palette (when the
    // display has one) in place of the cube for 8 bits; the dithers then map
    // onto those entries.
    const DitherTarget& dither = DitherFor(change ? targetBits : 0);
    Owned held;
    if (dither.bits) {
        Quad quads[kMaxPalette];
        if (dither.bits == 8 && job.cube)
            std::memcpy(quads, job.cube, sizeof quads);
        else
            dither.palette(reinterpret_cast<unsigned char*>(quads));
        held.palette = new oDIBPALETTE(reinterpret_cast<const RGBQUAD*>(quads), (unsigned short)dither.colours);
        if (!held.palette)
            return 0;
    } else if (plan.paletteCount) {
        // Unchanged or deeper: the source's table goes along as it is.
        held.palette = new oDIBPALETTE(reinterpret_cast<const RGBQUAD*>(head.palette),
                                       (unsigned short)plan.paletteCount);
    }
    const oDIBHEADER sourceHeader = DIBIMAGE::HeaderFor(head);
    oDIBHEADER targetHeader(tw, th, sourceHeader.HorzDPI(), sourceHeader.VertDPI(),
                            DIBIMAGE::ModelForBits(targetBits));
    targetHeader.Palette(held.palette);
    const std::uint32_t tstride = Stride(targetBits, tw);

    // Horizontal map: the source column each target column takes.
    const PixelFormat& from = Format(sourceBits);
    const bool toColour = change && sourceBits <= 8;
    const GatherFn widen = toColour ? from.gatherColour : from.gatherSame;
    const bool identity = tw == sw && !toColour;
    // Averaging applies where the source columns are colours to be reduced.
    const bool averaging = job.average && tw < sw && sourceBits == 24;
    const std::uint32_t lineBytes = Stride(change ? 24 : sourceBits, tw) + 4;
    std::uint32_t* xmap = (std::uint32_t*)vMemAlloc(tw * sizeof(std::uint32_t));
    unsigned char* line = (unsigned char*)vMemAlloc(lineBytes);
    unsigned char* out = (unsigned char*)vMemAlloc(tstride + 4);
    held.p[0] = xmap;
    held.p[1] = line;
    held.p[2] = out;
    Ditherer ditherer;
    RowReader rows(src, plan);
    RowWriter sink(dst);
    if (!xmap || !line || !out || !from.bits || !rows.Init() || !sink.Init(targetBits) ||
        (dither.bits && !ditherer.Init(tw)))
        return 0;
    StepMap(sw, tw, xmap);
    std::memset(line, 0, lineBytes);
    std::memset(out, 0, tstride + 4);

    targetHeader >> dst;
    if (held.palette)
        *held.palette >> dst;

    const unsigned char* pal = reinterpret_cast<const unsigned char*>(head.palette);
    const std::uint32_t palCount = plan.paletteCount;
    if (job.progress)
        job.progress->Begin(job.source->Size());
    Stepper step(shh, th);
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
            const unsigned char* emit = wide;
            for (std::uint32_t k = 0; k < times; ++k) {
                if (dither.bits) {
                    (ditherer.*dither.line)(wide, out);
                    emit = out;
                }
                sink.Put(emit, tstride);
            }
        }
        if (job.progress) {
            job.progress->Update(rows.Progress());
            if (job.progress->Stop()) {
                ok = 0;
                break;
            }
        }
    }
    sink.Finish();
    if (job.progress)
        job.progress->End();
    return ok && step.Done();
}

} // namespace rldib
