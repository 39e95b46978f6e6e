// Error diffusion and integer stepping (see dither.h).
#include "bitmaps/dither.h"
#include "bitmaps/pixfmt.h"
#include <cstdlib>
#include <cstring>
#include <new>

namespace rldib {

void FillCubePalette(unsigned char quads[1024])
{
    std::memset(quads, 0, 1024);
    for (int r = 0; r < 6; ++r)
        for (int g = 0; g < 6; ++g)
            for (int b = 0; b < 6; ++b) {
                unsigned char* q = quads + 4 * CubeIndex(r, g, b);
                q[0] = (unsigned char)(b * kCubeStep);
                q[1] = (unsigned char)(g * kCubeStep);
                q[2] = (unsigned char)(r * kCubeStep);
            }
}

const unsigned char kPalette16[16][3] = {
    {0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0},
    {0, 0, 128},     {128, 0, 128}, {0, 128, 128}, {192, 192, 192},
    {128, 128, 128}, {255, 0, 0},   {0, 255, 0},   {255, 255, 0},
    {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255}};

void FillPalette16(unsigned char quads[64])
{
    for (int i = 0; i < 16; ++i) {
        quads[4 * i] = kPalette16[i][2];
        quads[4 * i + 1] = kPalette16[i][1];
        quads[4 * i + 2] = kPalette16[i][0];
        quads[4 * i + 3] = 0;
    }
}

int Nearest16(int r, int g, int b)
{
    int best = 0;
    long bestD = -1;
    for (int i = 0; i < 16; ++i) {
        long dr = r - kPalette16[i][0], dg = g - kPalette16[i][1], db = b - kPalette16[i][2];
        long d = dr * dr + dg * dg + db * db;
        if (bestD < 0 || d < bestD) {
            bestD = d;
            best = i;
        }
    }
    return best;
}

// ---------------------------------------------------------------- the dither state

Ditherer::Ditherer() : cur_(nullptr), next_(nullptr), block_(nullptr), width_(0) {}

Ditherer::~Ditherer() { delete[] block_; }

bool Ditherer::Init(std::uint32_t width)
{
    delete[] block_;
    block_ = cur_ = next_ = nullptr;
    width_ = 0;
    if (width == 0 || width > 0x3FFFFFFu)
        return false;
    block_ = new (std::nothrow) PIXERR[2 * (std::size_t)(width + 2)];
    if (!block_)
        return false;
    std::memset(block_, 0, sizeof(PIXERR) * 2 * (std::size_t)(width + 2));
    cur_ = block_;
    next_ = block_ + width + 2;
    width_ = width;
    return true;
}

void Ditherer::Swap()
{
    PIXERR* t = cur_;
    cur_ = next_;
    next_ = t;
}

namespace {
inline int Clamp255(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

inline void Spread(std::int16_t PIXERR::*c, PIXERR* cur, PIXERR* next, std::uint32_t x, int e)
{
    ErrorShares s = SplitError(e);
    cur[x + 2].*c = (std::int16_t)(cur[x + 2].*c + s.right);
    next[x].*c = (std::int16_t)(next[x].*c + s.belowLeft);
    next[x + 1].*c = (std::int16_t)(next[x + 1].*c + s.below);
    next[x + 2].*c = (std::int16_t)(next[x + 2].*c + s.belowRight);
}
} // namespace

// Entry x + 1 of an error row belongs to pixel x. The plain form: the whole next
// row is cleared and every share is added where it lands.
void Ditherer::Line8Reference(const unsigned char* bgr, unsigned char* out)
{
    Swap();
    std::memset(next_, 0, sizeof(PIXERR) * (width_ + 2));
    for (std::uint32_t x = 0; x < width_; ++x, bgr += 3) {
        int vb = Clamp255(bgr[0] + cur_[x + 1].b);
        int vg = Clamp255(bgr[1] + cur_[x + 1].g);
        int vr = Clamp255(bgr[2] + cur_[x + 1].r);
        int lb = CubeLevel(vb), lg = CubeLevel(vg), lr = CubeLevel(vr);
        Spread(&PIXERR::b, cur_, next_, x, vb - kCubeStep * lb);
        Spread(&PIXERR::g, cur_, next_, x, vg - kCubeStep * lg);
        Spread(&PIXERR::r, cur_, next_, x, vr - kCubeStep * lr);
        out[x] = (unsigned char)CubeIndex(lr, lg, lb);
    }
}

namespace {
// The fast form looks everything up by the channel value plus its carried error.
// Carried errors stay within ±32 (four shares of residues of at most 25), so a
// table from -128 to 383 covers every sum with room to spare.
struct CubeEntry {
    std::int8_t right, belowLeft, below, belowRight;
    unsigned char level;
};
const int kTableBias = 128;
CubeEntry gCube[512];
bool gCubeReady = false;

void BuildCube()
{
    for (int i = 0; i < 512; ++i) {
        int v = Clamp255(i - kTableBias);
        int level = CubeLevel(v);
        ErrorShares s = SplitError(v - kCubeStep * level);
        gCube[i].right = (std::int8_t)s.right;
        gCube[i].belowLeft = (std::int8_t)s.belowLeft;
        gCube[i].below = (std::int8_t)s.below;
        gCube[i].belowRight = (std::int8_t)s.belowRight;
        gCube[i].level = (unsigned char)level;
    }
    gCubeReady = true;
}

} // namespace

// The three channels diffuse independently, so their dependency chains (value
// plus carried error, table lookup, share to the right) run side by side in one
// walk. The next row's entry x is final once pixel x has given its below-left
// share, so entries are written once, in order, and need no clearing; pending0
// and pending1 hold what entries x + 1 and x + 2 have received so far.
void Ditherer::Line8(const unsigned char* bgr, unsigned char* out)
{
    if (!gCubeReady)
        BuildCube();
    Swap();
    static_assert(sizeof(PIXERR) == 6, "error rows are read as plain 16-bit triples");
    const std::int16_t* cur = &cur_[1].b;   // entry 1 belongs to pixel 0
    std::int16_t* next = &next_[0].b;
    const CubeEntry* table = gCube + kTableBias;
    int rightB = 0, rightG = 0, rightR = 0;
    int pend0B = 0, pend0G = 0, pend0R = 0, pend1B = 0, pend1G = 0, pend1R = 0;
    for (std::uint32_t x = 0; x < width_; ++x, bgr += 3, cur += 3, next += 3) {
        const CubeEntry& qb = table[bgr[0] + cur[0] + rightB];
        const CubeEntry& qg = table[bgr[1] + cur[1] + rightG];
        const CubeEntry& qr = table[bgr[2] + cur[2] + rightR];
        rightB = qb.right;
        rightG = qg.right;
        rightR = qr.right;
        out[x] = (unsigned char)(qb.level + 6 * qg.level + 36 * qr.level + kCubeBase);
        next[0] = (std::int16_t)(pend0B + qb.belowLeft);
        pend0B = pend1B + qb.below;
        pend1B = qb.belowRight;
        next[1] = (std::int16_t)(pend0G + qg.belowLeft);
        pend0G = pend1G + qg.below;
        pend1G = qg.belowRight;
        next[2] = (std::int16_t)(pend0R + qr.belowLeft);
        pend0R = pend1R + qr.below;
        pend1R = qr.belowRight;
    }
    next[0] = (std::int16_t)pend0B;
    next[1] = (std::int16_t)pend0G;
    next[2] = (std::int16_t)pend0R;
    next[3] = (std::int16_t)pend1B;
    next[4] = (std::int16_t)pend1G;
    next[5] = (std::int16_t)pend1R;
}

void Ditherer::Line4(const unsigned char* bgr, unsigned char* out)
{
    Swap();
    std::memset(next_, 0, sizeof(PIXERR) * (width_ + 2));
    std::memset(out, 0, (width_ + 1) / 2);
    for (std::uint32_t x = 0; x < width_; ++x, bgr += 3) {
        int vb = Clamp255(bgr[0] + cur_[x + 1].b);
        int vg = Clamp255(bgr[1] + cur_[x + 1].g);
        int vr = Clamp255(bgr[2] + cur_[x + 1].r);
        int idx = Nearest16(vr, vg, vb);
        Spread(&PIXERR::r, cur_, next_, x, vr - kPalette16[idx][0]);
        Spread(&PIXERR::g, cur_, next_, x, vg - kPalette16[idx][1]);
        Spread(&PIXERR::b, cur_, next_, x, vb - kPalette16[idx][2]);
        out[x >> 1] = (unsigned char)(out[x >> 1] | (x & 1 ? idx : idx << 4));
    }
}

// Black and white dither the grey level; the error lives in the green slot.
void Ditherer::Line1(const unsigned char* bgr, unsigned char* out)
{
    Swap();
    std::memset(next_, 0, sizeof(PIXERR) * (width_ + 2));
    std::memset(out, 0, (width_ + 7) / 8);
    for (std::uint32_t x = 0; x < width_; ++x, bgr += 3) {
        int v = Clamp255(Grey(bgr[0], bgr[1], bgr[2]) + cur_[x + 1].g);
        int white = v >= 128;
        Spread(&PIXERR::g, cur_, next_, x, v - (white ? 255 : 0));
        if (white)
            out[x >> 3] = (unsigned char)(out[x >> 3] | (0x80 >> (x & 7)));
    }
}

// ---------------------------------------------------------------- targets

namespace {
void BlackAndWhite(unsigned char* quads)
{
    static const unsigned char kQuads[8] = {0, 0, 0, 0, 255, 255, 255, 0};
    std::memcpy(quads, kQuads, sizeof kQuads);
}
void Sixteen(unsigned char* quads) { FillPalette16(quads); }
void Cube(unsigned char* quads) { FillCubePalette(quads); }

const DitherTarget kTargets[] = {
    {0, 0, nullptr, nullptr},
    {1, 2, &Ditherer::Line1, BlackAndWhite},
    {4, 16, &Ditherer::Line4, Sixteen},
    {8, 256, &Ditherer::Line8, Cube},
};
} // namespace

const DitherTarget& DitherFor(std::uint32_t bits)
{
    switch (bits) {
    case 1: return kTargets[1];
    case 4: return kTargets[2];
    case 8: return kTargets[3];
    default: return kTargets[0];
    }
}

// ---------------------------------------------------------------- stepping

// Enlarging walks target items and decides when to move to the next source item,
// with the error terms of a line from (0, 0) to (run, src − 1): error
// 2 × (src − 1) − run at the start, −2 × run on each step up, +2 × (src − 1) per
// target item. Rows use run = dst, the library's row stepping: it can stop short
// of the last source row (3 rows onto 3 give rows 0, 1, 1), and pictures scaled
// before depend on it. Columns use run = dst − 1, so that the first and last
// columns are always kept and an unchanged width is an exact copy. Reducing
// walks source items and decides which to keep, error 2 × dst − (src − 1) at
// the start.
Stepper::Stepper(std::uint32_t src, std::uint32_t dst, bool endpoints)
    : src_(src), dst_(src ? dst : 0), taken_(0), emitted_(0), err_(0), enlarge_(src <= dst),
      run_((std::int64_t)dst - (endpoints ? 1 : 0))
{
    if (enlarge_)
        err_ = 2 * ((std::int64_t)src - 1) - run_;
    else
        err_ = 2 * (std::int64_t)dst - ((std::int64_t)src - 1);
}

std::uint32_t Stepper::Take()
{
    if (taken_ >= src_ || emitted_ >= dst_) {
        ++taken_;
        return 0;
    }
    ++taken_;
    std::uint32_t n = 0;
    if (enlarge_) {
        const std::int64_t dx = run_, dy = (std::int64_t)src_ - 1;
        // Emit this item until the line steps up to the next source item.
        for (;;) {
            ++n;
            ++emitted_;
            if (emitted_ >= dst_)
                break;
            bool advance = err_ > 0;
            if (advance)
                err_ -= 2 * dx;
            err_ += 2 * dy;
            if (advance)
                break;
        }
        // The last source item takes whatever targets remain.
        if (taken_ == src_ && emitted_ < dst_) {
            n += dst_ - emitted_;
            emitted_ = dst_;
        }
    } else {
        const std::int64_t dx = (std::int64_t)src_ - 1;
        if (err_ > 0) {
            n = 1;
            ++emitted_;
            err_ -= 2 * dx;
        }
        err_ += 2 * (std::int64_t)dst_;
        // Keep the count exact even if the walk would fall short at the end.
        if (src_ - taken_ < dst_ - emitted_) {
            n += (dst_ - emitted_) - (src_ - taken_);
            emitted_ = dst_ - (src_ - taken_);
        }
    }
    return n;
}

void StepMap(std::uint32_t src, std::uint32_t dst, std::uint32_t* map, bool endpoints)
{
    Stepper s(src, dst, endpoints);
    std::uint32_t t = 0;
    for (std::uint32_t i = 0; i < src && t < dst; ++i)
        for (std::uint32_t n = s.Take(); n > 0 && t < dst; --n)
            map[t++] = i;
    while (t < dst)
        map[t++] = src ? src - 1 : 0;
}

} // namespace rldib
