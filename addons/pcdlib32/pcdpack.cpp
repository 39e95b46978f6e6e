// Photo CD image packs as this library reads them.
//
// An image pack is a file of 2048-byte sectors:
//   sector 0        control area (not used here)
//   sector 1        image pack information: "PCD_IPI" at 0x800, format
//                   version at 0x807 (major, minor), scanning time at 0x80D
//                   (big-endian seconds since 1970), and at 0xE02 the
//                   attribute byte: bits 0-1 the quarter turns
//                   counter-clockwise that bring the picture upright, bits
//                   2-3 the highest resolution stored (0 Base, 1 4Base,
//                   2 16Base).
//   sector 4        Base/16, 192 x 128   (0x2000)
//   sector 23       Base/4,  384 x 256   (0xB800)
//   sector 96       Base,    768 x 512   (0x30000)
//   later           4Base and 16Base as Huffman-coded residuals: not decoded.
// Each base image is stored uncompressed as Photo YCC with 4:2:0 chroma, in
// pairs of rows: luma row, luma row, one row of C1 and one of C2 at half
// width, so 3 * width bytes a pair. Chroma samples sit on the even luma rows
// and columns; the odd ones are interpolated between their neighbours.
//
// Photo YCC to RGB (Kodak's published decoding, 8-bit code values):
//   L  = 1.3584 Y
//   C1 = 2.2179 (c1 - 156)        C2 = 1.8215 (c2 - 137)
//   R = L + C2,   G = L - 0.194 C1 - 0.509 C2,   B = L + C1,  clipped to 0..255.
// The products are kept in tables of 16.16 fixed point built at compile time,
// so a pixel costs five look-ups and three additions.
#include "pcdpack.h"

#include <cstring>

namespace pcdpack {

namespace {

uint32_t Be16(const uint8_t* p) { return (uint32_t)p[0] << 8 | p[1]; }
uint32_t Be32(const uint8_t* p) { return (uint32_t)p[0] << 24 | (uint32_t)p[1] << 16 | (uint32_t)p[2] << 8 | p[3]; }
void Le16(uint8_t* p, uint32_t v) { p[0] = (uint8_t)v; p[1] = (uint8_t)(v >> 8); }
void Le32(uint8_t* p, uint32_t v) { Le16(p, v); Le16(p + 2, v >> 16); }
uint32_t GetLe16(const uint8_t* p) { return (uint32_t)p[0] | (uint32_t)p[1] << 8; }
uint32_t GetLe32(const uint8_t* p) { return GetLe16(p) | GetLe16(p + 2) << 16; }

const uint32_t kIpiOffset = kSector;
const uint32_t kAttrOffset = 0xE02;
const long kMaxWidth = 768;

// The three base resolutions: size and first sector.
const struct { long width, height; uint32_t sector; } kBase[3] = {
    {192, 128, 4}, {384, 256, 23}, {768, 512, 96}};

constexpr int32_t Fix(double v) { return (int32_t)(v * 65536.0 + (v < 0 ? -0.5 : 0.5)); }

// A sum of one luma and one or two chroma terms lies within -347 .. 567 once
// shifted down; the clip table covers -384 .. 639 so that no sum needs a test.
const int kClipLow = 384, kClipSize = 1024;

struct YccTables {
    // luma carries the rounding half (0x8000), so a sum shifts down to the
    // nearest integer.
    int32_t luma[256], bFromC1[256], gFromC1[256], gFromC2[256], rFromC2[256];
    uint8_t clip[kClipSize];
    constexpr YccTables() : luma(), bFromC1(), gFromC1(), gFromC2(), rFromC2(), clip()
    {
        for (int i = 0; i < 256; ++i) {
            double c1 = 2.2179 * (i - 156), c2 = 1.8215 * (i - 137);
            luma[i] = Fix(1.3584 * i) + 0x8000;
            bFromC1[i] = Fix(c1);
            gFromC1[i] = Fix(-0.194 * c1);
            gFromC2[i] = Fix(-0.509 * c2);
            rFromC2[i] = Fix(c2);
        }
        for (int i = 0; i < kClipSize; ++i)
            clip[i] = (uint8_t)(i < kClipLow ? 0 : i - kClipLow > 255 ? 255 : i - kClipLow);
    }
};
constexpr YccTables kYcc;
static_assert((kYcc.luma[255] >> 16) + (kYcc.bFromC1[255] >> 16) + kClipLow + 1 < kClipSize &&
              (kYcc.luma[0] >> 16) + (kYcc.bFromC1[0] >> 16) + kClipLow - 1 >= 0 &&
              (kYcc.luma[0] + kYcc.rFromC2[0]) >> 16 > -kClipLow &&
              (kYcc.luma[0] + kYcc.gFromC1[255] + kYcc.gFromC2[255]) >> 16 > -kClipLow &&
              (kYcc.luma[255] + kYcc.gFromC1[0] + kYcc.gFromC2[0]) >> 16 < kClipSize - kClipLow,
              "the clip table covers every sum");

inline uint8_t Clip(int32_t fixed) { return kYcc.clip[(fixed >> 16) + kClipLow]; }

// One chroma row of half width to full width: even columns take the sample,
// odd ones the mean of their two neighbours (the last repeats its left one).
void Widen(const uint8_t* half, long halfWidth, uint8_t* full)
{
    for (long x = 0; x + 1 < halfWidth; ++x) {
        full[2 * x] = half[x];
        full[2 * x + 1] = (uint8_t)((half[x] + half[x + 1] + 1) >> 1);
    }
    full[2 * halfWidth - 2] = full[2 * halfWidth - 1] = half[halfWidth - 1];
}

void Average(const uint8_t* a, const uint8_t* b, uint8_t* out, long n)
{
    for (long i = 0; i < n; ++i)
        out[i] = (uint8_t)((a[i] + b[i] + 1) >> 1);
}

void ConvertRow(const uint8_t* y, const uint8_t* c1, const uint8_t* c2, uint8_t* out, long width)
{
    for (long x = 0; x < width; ++x, out += 3) {
        int32_t l = kYcc.luma[y[x]];
        out[0] = Clip(l + kYcc.bFromC1[c1[x]]);
        out[1] = Clip(l + kYcc.gFromC1[c1[x]] + kYcc.gFromC2[c2[x]]);
        out[2] = Clip(l + kYcc.rFromC2[c2[x]]);
    }
}

}  // namespace

PCDstatus ParseHeader(const uint8_t* head, size_t headBytes, uint64_t fileSize, PackHeader* out)
{
    if (!head || !out)
        return PCD_ERR_BAD_ARG;
    if (headBytes < kAttrOffset + 1 || fileSize < kAttrOffset + 1 || headBytes > fileSize)
        return fileSize < kIpiOffset + 7 ? PCD_ERR_NOT_PCD : PCD_ERR_DAMAGED;
    if (memcmp(head + kIpiOffset, "PCD_IPI", 7) != 0)
        return PCD_ERR_NOT_PCD;
    uint8_t attr = head[kAttrOffset];
    long highest = (attr >> 2) & 3;
    if (highest == 3)
        return PCD_ERR_DAMAGED;
    out->versionMajor = head[kIpiOffset + 7];
    out->versionMinor = head[kIpiOffset + 8];
    out->rotation = attr & 3;
    out->highest = PCD_BASE + highest;
    out->resolutions = 3 + highest;
    out->scanTime = Be32(head + kIpiOffset + 13);
    return PCD_OK;
}

PCDstatus FindPlane(const PackHeader& header, uint64_t fileSize, long resolution, Plane* out)
{
    if (resolution == PCD_4BASE || resolution == PCD_16BASE)
        return PCD_ERR_RES_NOT_SUPPORTED;
    if (resolution < PCD_BASE_OVER_16 || resolution > PCD_BASE || !out)
        return PCD_ERR_BAD_ARG;
    (void)header;  // every pack holds the three base images
    const auto& b = kBase[resolution];
    Plane p = {b.width, b.height, b.sector * kSector, (uint32_t)(b.width * b.height * 3 / 2)};
    if ((uint64_t)p.offset + p.bytes > fileSize)
        return PCD_ERR_DAMAGED;
    *out = p;
    return PCD_OK;
}

void YccToBgr(uint8_t y, uint8_t c1, uint8_t c2, uint8_t bgr[3]) { ConvertRow(&y, &c1, &c2, bgr, 1); }

PCDstatus DecodePlanes(const Plane& plane, const uint8_t* planes, size_t planeBytes,
                       uint8_t* out, ptrdiff_t stride, const Progress* progress)
{
    const long w = plane.width, h = plane.height, hw = w / 2;
    if (!planes || !out || w < 2 || h < 2 || w > kMaxWidth || (w | h) & 1 ||
        planeBytes < (size_t)w * h * 3 / 2)
        return PCD_ERR_BAD_ARG;
    uint8_t c1[2][kMaxWidth], c2[2][kMaxWidth], m1[kMaxWidth], m2[kMaxWidth];
    const long pairs = h / 2;
    const size_t pairBytes = (size_t)w * 3;
    // c1[cur] / c2[cur] hold this pair's widened chroma, the other slot the next pair's.
    int cur = 0;
    Widen(planes + 2 * w, hw, c1[0]);
    Widen(planes + 2 * w + hw, hw, c2[0]);
    for (long p = 0; p < pairs; ++p) {
        if (progress && progress->step && (p & 15) == 0 &&
            !progress->step(progress->context, (unsigned)p, (unsigned)pairs))
            return PCD_ERR_ABORTED;
        const uint8_t* pair = planes + p * pairBytes;
        int nxt = cur ^ 1;
        if (p + 1 < pairs) {
            const uint8_t* next = pair + pairBytes;
            Widen(next + 2 * w, hw, c1[nxt]);
            Widen(next + 2 * w + hw, hw, c2[nxt]);
        } else {
            memcpy(c1[nxt], c1[cur], w);
            memcpy(c2[nxt], c2[cur], w);
        }
        Average(c1[cur], c1[nxt], m1, w);
        Average(c2[cur], c2[nxt], m2, w);
        uint8_t* row = out + (2 * p) * stride;
        ConvertRow(pair, c1[cur], c2[cur], row, w);
        ConvertRow(pair + w, m1, m2, row + stride, w);
        cur = nxt;
    }
    if (progress && progress->step && !progress->step(progress->context, (unsigned)pairs, (unsigned)pairs))
        return PCD_ERR_ABORTED;
    return PCD_OK;
}

PCDstatus ParseOverview(const uint8_t* head, size_t headBytes, uint64_t fileSize, long* count)
{
    if (!head || !count)
        return PCD_ERR_BAD_ARG;
    if (headBytes < 12 || fileSize < 12 || headBytes > fileSize || memcmp(head, "PCD_OPA", 7) != 0)
        return PCD_ERR_NOT_PCD;
    *count = (long)Be16(head + 10);
    return PCD_OK;
}

PCDstatus FindOverviewEntry(long count, uint64_t fileSize, long entry, uint32_t* attrOffset,
                            Plane* planes)
{
    if (!attrOffset || !planes)
        return PCD_ERR_BAD_ARG;
    if (entry < 1 || entry > count)
        return PCD_ERR_NOT_FOUND;
    uint64_t at = (1 + (uint64_t)(entry - 1) * kOviewEntrySectors) * kSector;
    Plane p = {192, 128, 0, 192 * 128 * 3 / 2};
    if (at + kSector + p.bytes > fileSize)
        return PCD_ERR_DAMAGED;
    p.offset = (uint32_t)(at + kSector);
    *attrOffset = (uint32_t)at;
    *planes = p;
    return PCD_OK;
}

// INFO.PCD: "PHOTO_CD" at 0, version at 8 (major, minor), the disc's serial
// number in the 12 bytes at 12, creation and modification times at 24 and
// 28, the image count at 32 and the session count at 38 (big-endian).
PCDstatus ParseInfo(const uint8_t* data, size_t bytes, PCDvolumeInfo* out)
{
    if (!data || !out)
        return PCD_ERR_BAD_ARG;
    if (bytes < 40 || memcmp(data, "PHOTO_CD", 8) != 0)
        return PCD_ERR_NOT_PCD;
    out->versionMajor = data[8];
    out->versionMinor = data[9];
    memcpy(out->volumeId, data + 12, 12);
    out->created = Be32(data + 24);
    out->modified = Be32(data + 28);
    out->imageCount = (long)Be16(data + 32);
    out->sessionCount = (long)Be16(data + 38);
    return PCD_OK;
}

// ---- transform ----

PCDrect ScaleCrop(const PCDrect& base, int shift)
{
    // Clamped first so that rounding up cannot overflow; no picture is that large.
    const long lim = 1L << 24, unit = (1L << shift) - 1;
    auto clamp = [lim](long v) { return v < -lim ? -lim : v > lim ? lim : v; };
    PCDrect r;
    r.left = clamp(base.left) >> shift;
    r.top = clamp(base.top) >> shift;
    r.right = (clamp(base.right) + unit) >> shift;
    r.bottom = (clamp(base.bottom) + unit) >> shift;
    return r;
}

PCDstatus PlanTransform(long srcWidth, long srcHeight, const PCDtransform& t,
                        const PCDrect& crop, TransformPlan* plan)
{
    if (!plan || srcWidth < 1 || srcHeight < 1 || t.rotation < 0 || t.rotation > 3)
        return PCD_ERR_BAD_ARG;
    const long k = t.rotation;
    const long tw = (k & 1) ? srcHeight : srcWidth, th = (k & 1) ? srcWidth : srcHeight;
    long l = 0, tp = 0, r = tw, b = th;
    if (crop.right > crop.left && crop.bottom > crop.top) {
        l = crop.left > 0 ? crop.left : 0;
        tp = crop.top > 0 ? crop.top : 0;
        r = crop.right < tw ? crop.right : tw;
        b = crop.bottom < th ? crop.bottom : th;
        if (r <= l || b <= tp)
            return PCD_ERR_BAD_ARG;
    }
    // Turned coordinates of result pixel (cx, cy): tx = tx0 + dtx cx, ty = tp + cy.
    const long tx0 = t.mirror ? tw - 1 - l : l, dtx = t.mirror ? -1 : 1;
    const long W = srcWidth, H = srcHeight;
    TransformPlan p;
    p.width = r - l;
    p.height = b - tp;
    switch (k) {
    case 0:  // source (tx, ty)
        p.originX = tx0; p.originY = tp; p.stepXx = dtx; p.stepXy = 0; p.stepYx = 0; p.stepYy = 1;
        break;
    case 1:  // source (W-1-ty, tx): the right column becomes the top row
        p.originX = W - 1 - tp; p.originY = tx0; p.stepXx = 0; p.stepXy = dtx; p.stepYx = -1; p.stepYy = 0;
        break;
    case 2:  // source (W-1-tx, H-1-ty)
        p.originX = W - 1 - tx0; p.originY = H - 1 - tp; p.stepXx = -dtx; p.stepXy = 0; p.stepYx = 0; p.stepYy = -1;
        break;
    default:  // source (ty, H-1-tx): the left column becomes the top row, reversed
        p.originX = tp; p.originY = H - 1 - tx0; p.stepXx = 0; p.stepXy = -dtx; p.stepYx = 1; p.stepYy = 0;
        break;
    }
    *plan = p;
    return PCD_OK;
}

bool IsIdentity(const TransformPlan& p, long srcWidth, long srcHeight)
{
    return p.width == srcWidth && p.height == srcHeight && p.originX == 0 && p.originY == 0 &&
           p.stepXx == 1 && p.stepXy == 0 && p.stepYx == 0 && p.stepYy == 1;
}

void ApplyTransform(const TransformPlan& plan, const uint8_t* src, ptrdiff_t srcStride,
                    int pixelBytes, uint8_t* dst, ptrdiff_t dstStride, long firstRow, long rows)
{
    const ptrdiff_t step = plan.stepXy * srcStride + plan.stepXx * pixelBytes;
    for (long r = firstRow; r < firstRow + rows; ++r, dst += dstStride) {
        const uint8_t* s = src + (plan.originY + r * plan.stepYy) * srcStride +
                           (plan.originX + r * plan.stepYx) * pixelBytes;
        if (step == pixelBytes) {
            memcpy(dst, s, (size_t)plan.width * pixelBytes);
        } else if (pixelBytes == 3) {
            uint8_t* d = dst;
            for (long x = 0; x < plan.width; ++x, s += step, d += 3) {
                d[0] = s[0]; d[1] = s[1]; d[2] = s[2];
            }
        } else {
            for (long x = 0; x < plan.width; ++x, s += step)
                dst[x] = s[0];
        }
    }
}

// ---- palette ----

namespace {

inline int Cell(const uint8_t* bgr) { return (bgr[2] >> 3) << 10 | (bgr[1] >> 3) << 5 | (bgr[0] >> 3); }

struct Box {
    uint8_t lo[3], hi[3];  // red, green, blue cells, inclusive
    uint64_t count;
};

// Shrinks the box to its occupied cells and counts them; false when empty.
bool Shrink(const Quantizer* q, Box* box)
{
    uint8_t lo[3] = {31, 31, 31}, hi[3] = {0, 0, 0};
    uint64_t n = 0;
    for (int r = box->lo[0]; r <= box->hi[0]; ++r)
        for (int g = box->lo[1]; g <= box->hi[1]; ++g)
            for (int b = box->lo[2]; b <= box->hi[2]; ++b) {
                uint32_t c = q->counts[r << 10 | g << 5 | b];
                if (!c)
                    continue;
                n += c;
                const int v[3] = {r, g, b};
                for (int a = 0; a < 3; ++a) {
                    if (v[a] < lo[a]) lo[a] = (uint8_t)v[a];
                    if (v[a] > hi[a]) hi[a] = (uint8_t)v[a];
                }
            }
    if (!n)
        return false;
    memcpy(box->lo, lo, 3);
    memcpy(box->hi, hi, 3);
    box->count = n;
    return true;
}

int LongestAxis(const Box& b)
{
    int axis = 0;
    for (int a = 1; a < 3; ++a)
        if (b.hi[a] - b.lo[a] > b.hi[axis] - b.lo[axis])
            axis = a;
    return axis;
}

}  // namespace

void QuantizerStart(Quantizer* q)
{
    memset(q->counts, 0, sizeof q->counts);
    memset(q->map, 0xff, sizeof q->map);
    memset(&q->palette, 0, sizeof q->palette);
}

void QuantizerAdd(Quantizer* q, const uint8_t* bgr, long pixels)
{
    for (long i = 0; i < pixels; ++i, bgr += 3)
        ++q->counts[Cell(bgr)];
}

void QuantizerMake(Quantizer* q, long colours)
{
    colours = colours < 2 ? 2 : colours > 256 ? 256 : colours;
    Box boxes[256];
    int n = 0;
    Box all = {{0, 0, 0}, {31, 31, 31}, 0};
    if (Shrink(q, &all))
        boxes[n++] = all;
    while (n < colours) {
        // The box with the most pixels times its longest side goes next: big
        // sparse boxes split before crowded small ones.
        int pick = -1;
        uint64_t best = 0;
        for (int i = 0; i < n; ++i) {
            int a = LongestAxis(boxes[i]);
            uint64_t score = boxes[i].count * (uint64_t)(boxes[i].hi[a] - boxes[i].lo[a]);
            if (score > best) { best = score; pick = i; }
        }
        if (pick < 0)
            break;
        Box& b = boxes[pick];
        const int a = LongestAxis(b);
        // Pixels per slice along the axis, then the cut at the median.
        uint64_t slice[32] = {};
        for (int r = b.lo[0]; r <= b.hi[0]; ++r)
            for (int g = b.lo[1]; g <= b.hi[1]; ++g)
                for (int bl = b.lo[2]; bl <= b.hi[2]; ++bl) {
                    const int v[3] = {r, g, bl};
                    slice[v[a]] += q->counts[r << 10 | g << 5 | bl];
                }
        uint64_t sum = 0;
        int cut = b.lo[a];
        for (; cut < b.hi[a] - 1; ++cut) {
            sum += slice[cut];
            if (sum * 2 >= b.count)
                break;
        }
        Box upper = b;
        b.hi[a] = (uint8_t)cut;
        upper.lo[a] = (uint8_t)(cut + 1);
        bool keepLower = Shrink(q, &b), keepUpper = Shrink(q, &upper);
        if (keepLower && keepUpper)
            boxes[n++] = upper;
        else if (keepUpper)
            b = upper;
    }
    PCDpalette& pal = q->palette;
    memset(&pal, 0, sizeof pal);
    pal.count = n ? n : 1;
    for (int i = 0; i < n; ++i) {
        uint64_t s[3] = {0, 0, 0};
        const Box& b = boxes[i];
        for (int r = b.lo[0]; r <= b.hi[0]; ++r)
            for (int g = b.lo[1]; g <= b.hi[1]; ++g)
                for (int bl = b.lo[2]; bl <= b.hi[2]; ++bl) {
                    uint64_t c = q->counts[r << 10 | g << 5 | bl];
                    s[0] += c * (uint64_t)(r * 8 + 4);
                    s[1] += c * (uint64_t)(g * 8 + 4);
                    s[2] += c * (uint64_t)(bl * 8 + 4);
                }
        pal.entries[i][2] = (uint8_t)((s[0] + b.count / 2) / b.count);
        pal.entries[i][1] = (uint8_t)((s[1] + b.count / 2) / b.count);
        pal.entries[i][0] = (uint8_t)((s[2] + b.count / 2) / b.count);
    }
    memset(q->map, 0xff, sizeof q->map);
}

bool QuantizerUse(Quantizer* q, const PCDpalette& palette)
{
    if (palette.count < 1 || palette.count > 256)
        return false;
    q->palette = palette;
    memset(q->map, 0xff, sizeof q->map);
    return true;
}

void QuantizerMap(Quantizer* q, const uint8_t* bgr, uint8_t* index, long pixels)
{
    const PCDpalette& pal = q->palette;
    for (long i = 0; i < pixels; ++i, bgr += 3) {
        int cell = Cell(bgr);
        int16_t m = q->map[cell];
        if (m < 0) {
            // Nearest entry to the cell's centre, by squared distance.
            int r = (cell >> 10) * 8 + 4, g = ((cell >> 5) & 31) * 8 + 4, b = (cell & 31) * 8 + 4;
            long best = 0x7fffffff;
            for (long e = 0; e < pal.count; ++e) {
                int dr = r - pal.entries[e][2], dg = g - pal.entries[e][1], db = b - pal.entries[e][0];
                long d = dr * dr + dg * dg + db * db;
                if (d < best) { best = d; m = (int16_t)e; }
            }
            q->map[cell] = m;
        }
        index[i] = (uint8_t)m;
    }
}

// ---- packed DIBs ----

uint32_t DibBytes(long width, long height, long bits, uint32_t limit)
{
    if (width < 1 || height < 1 || (bits != 8 && bits != 24) || width > 65535 || height > 65535)
        return 0;
    uint64_t stride = ((uint64_t)width * bits + 31) / 32 * 4;
    uint64_t total = kDibHeaderBytes + (bits == 8 ? 1024 : 0) + stride * (uint64_t)height;
    return total > limit ? 0 : (uint32_t)total;
}

void WriteDibHeader(uint8_t* dib, long width, long height, long bits, const PCDpalette* palette)
{
    uint32_t stride = (uint32_t)(((uint64_t)width * bits + 31) / 32 * 4);
    memset(dib, 0, kDibHeaderBytes);
    Le32(dib, kDibHeaderBytes);
    Le32(dib + 4, (uint32_t)width);
    Le32(dib + 8, (uint32_t)height);
    Le16(dib + 12, 1);
    Le16(dib + 14, (uint32_t)bits);
    Le32(dib + 20, stride * (uint32_t)height);
    if (bits == 8) {
        Le32(dib + 32, 256);
        uint8_t* table = dib + kDibHeaderBytes;
        memset(table, 0, 1024);
        if (palette)
            for (long i = 0; i < palette->count && i < 256; ++i) {
                memcpy(table + 4 * i, palette->entries[i], 3);
                table[4 * i + 3] = 0;
            }
    }
}

PCDstatus ReadDibHeader(const uint8_t* dib, uint32_t limit, DibView* view)
{
    if (!dib || !view)
        return PCD_ERR_BAD_ARG;
    long width = (int32_t)GetLe32(dib + 4), height = (int32_t)GetLe32(dib + 8);
    long bits = GetLe16(dib + 14);
    uint32_t used = GetLe32(dib + 32);
    if (GetLe32(dib) != kDibHeaderBytes || GetLe16(dib + 12) != 1 || GetLe32(dib + 16) != 0 ||
        (bits != 8 && bits != 24) || used > 256 || !DibBytes(width, height, bits, limit))
        return PCD_ERR_FORMAT_NOT_SUPPORTED;
    view->width = width;
    view->height = height;
    view->bits = bits;
    view->colours = bits == 8 ? (used ? used : 256) : 0;
    view->headerBytes = kDibHeaderBytes + view->colours * 4;
    view->stride = (ptrdiff_t)(((uint64_t)width * bits + 31) / 32 * 4);
    return PCD_OK;
}

uint8_t* DibTopRow(uint8_t* dib, const DibView& view)
{
    return dib + view.headerBytes + (view.height - 1) * view.stride;
}

}  // namespace pcdpack
