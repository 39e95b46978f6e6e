// Round, mitre and bevel joins and round caps.
#include "devices/geom/joingeom.h"
#include "devices/geom/linemath.h"

namespace rlstroke {

namespace {

// A polygon needs three distinct corners and the closing repeat.
const std::int32_t kMinPolygon = 4;

// Twice the signed area, in device coordinates; negative is the outline's turn.
std::int64_t Shoelace(const GPOINT* p, int n)
{
    // The sum does not change when every point moves by the same amount. Taken
    // from the first point, the joins and caps span a width or so: below 2^14
    // every product stays below 2^28, and the sum of a few of them in 32 bits.
    if (n <= 4) {
        std::int32_t x0 = p[0].x, y0 = p[0].y;
        std::int32_t dx[4], dy[4];
        bool small = true;
        for (int i = 0; i < n; ++i) {
            dx[i] = p[i].x - x0;
            dy[i] = p[i].y - y0;
            small = small && Abs32(dx[i]) < 0x4000 && Abs32(dy[i]) < 0x4000;
        }
        if (small) {
            // The terms with the first point vanish: it is the origin now.
            std::int32_t sum = 0;
            for (int i = 1; i + 1 < n; ++i)
                sum += dx[i] * dy[i + 1] - dx[i + 1] * dy[i];
            return sum;
        }
    }
    std::int64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        const GPOINT& a = p[i];
        const GPOINT& b = p[i + 1 < n ? i + 1 : 0];
        sum += (std::int64_t)a.x * b.y - (std::int64_t)b.x * a.y;
    }
    return sum;
}

std::int64_t Dist2(GPOINT a, GPOINT b)
{
    std::int64_t dx = (std::int64_t)a.x - b.x, dy = (std::int64_t)a.y - b.y;
    return dx * dx + dy * dy;
}

} // namespace

unsigned char CalcCircleSegments(GPOINT a, GPOINT b)
{
    // Clamped points (linemath.h): the differences fit 32 bits.
    std::int32_t dx = b.x - a.x, dy = b.y - a.y;
    std::int32_t ax = Abs32(dx), ay = Abs32(dy);
    if (ax < 3 && ay < 3)
        return 0xFF;
    // Octants count anticlockwise on the screen, where y grows downward: a
    // direction with dy <= 0 points into the upper half, octants 0 to 3.
    if (dx == 0)
        return dy <= 0 ? 0x0F : 0xF0;
    if (dy == 0)
        return dx <= 0 ? 0x3C : 0xC3;
    bool flat = ay < ax;
    if (dx <= 0)
        return dy <= 0 ? (flat ? 0x3E : 0x1F) : (flat ? 0x7C : 0xF8);
    return dy <= 0 ? (flat ? 0xC7 : 0x8F) : (flat ? 0xE3 : 0xF1);
}

GPOINT ArcPoint(GPOINT centre, int k, std::int32_t radius, const std::int32_t circle[8])
{
    // (cos, sin) magnitudes of 0 .. 78.75 degrees in steps of 11.25: the
    // offsets pair up as (cos, sin) and mirror about 45 degrees.
    const std::int32_t* o = circle;
    std::int32_t c, s;
    switch (k & 7) {
    case 0: c = radius; s = 0; break;
    case 1: c = o[0]; s = o[1]; break;
    case 2: c = o[2]; s = o[3]; break;
    case 3: c = o[4]; s = o[5]; break;
    case 4: c = o[6]; s = o[7]; break;
    case 5: c = o[5]; s = o[4]; break;
    case 6: c = o[3]; s = o[2]; break;
    default: c = o[1]; s = o[0]; break;
    }
    // Turn by the quadrant, then flip y for the screen.
    std::int32_t x, y;
    switch ((k >> 3) & 3) {
    case 0: x = c; y = s; break;
    case 1: x = -s; y = c; break;
    case 2: x = -c; y = -s; break;
    default: x = s; y = -c; break;
    }
    return GPOINT{centre.x + x, centre.y - y};
}

void BuildArcTable(std::int32_t radius, const std::int32_t circle[8], ARCTABLE* table)
{
    for (int k = 0; k < 32; ++k)
        table->off[k] = ArcPoint(GPOINT{0, 0}, k, radius, circle);
}

int AppendArc(POLYLIST& list, GPOINT centre, unsigned char mask, const ARCTABLE& table)
{
    if (!mask)
        return 0;
    // Eight octants of five points and the closing repeat at most.
    GPOINT* w = list.Room(41);
    if (!w)
        return list.Close(kMinPolygon);
    const GPOINT* open = list.OpenStart();
    GPOINT first{0, 0};
    bool any = false;
    for (int octant = 0; octant < 8; ++octant) {
        if (!(mask & (1u << octant)))
            continue;
        for (int k = 4 * octant; k <= 4 * octant + 4; ++k) {
            const GPOINT& o = table.off[k & 31];
            GPOINT p{centre.x + o.x, centre.y + o.y};
            if (!any)
                first = p;
            any = true;
            POLYLIST::Put(w, open, p);
        }
    }
    POLYLIST::Put(w, open, first);
    list.Written(w);
    return list.Close(kMinPolygon);
}

int AppendArc(POLYLIST& list, GPOINT centre, unsigned char mask, std::int32_t radius, const std::int32_t circle[8])
{
    ARCTABLE table;
    BuildArcTable(radius, circle, &table);
    return AppendArc(list, centre, mask, table);
}

namespace {

// The slot of each mask CalcCircleSegments gives, or -1.
struct ARCSLOTS {
    signed char slot[256];
    constexpr ARCSLOTS() : slot()
    {
        const unsigned char masks[13] = {0xFF, 0x0F, 0xF0, 0x3C, 0xC3, 0x3E, 0x1F, 0x7C, 0xF8, 0xC7, 0x8F, 0xE3, 0xF1};
        for (int m = 0; m < 256; ++m)
            slot[m] = -1;
        for (int i = 0; i < 13; ++i)
            slot[masks[i]] = (signed char)i;
    }
};
constexpr ARCSLOTS kArcSlots{};

} // namespace

ARCCACHE::ARCCACHE()
{
    for (int i = 0; i < kSlots; ++i)
        count_[i] = -1;
}

void ARCCACHE::Reset(std::int32_t radius, const std::int32_t circle[8])
{
    BuildArcTable(radius, circle, &table_);
    for (int i = 0; i < kSlots; ++i)
        count_[i] = -1;
}

std::int32_t ARCCACHE::Build(int slot, unsigned char mask)
{
    // Duplicates depend on the offsets only, so the polygon around (0, 0)
    // drops the same points as it would around any centre.
    POLYLIST scratch;
    AppendArc(scratch, GPOINT{0, 0}, mask, table_);
    std::int32_t n = scratch.NumPolys() ? scratch.Counts()[0] : 0;
    for (std::int32_t i = 0; i < n; ++i)
        off_[slot][i] = scratch.Points()[i];
    // Out of memory, the slot is tried again next time.
    if (!scratch.Failed())
        count_[slot] = n;
    return n;
}

int ARCCACHE::Append(POLYLIST& list, GPOINT centre, unsigned char mask)
{
    int slot = kArcSlots.slot[mask];
    if (slot < 0)
        return AppendArc(list, centre, mask, table_);
    std::int32_t n = count_[slot];
    if (n < 0)
        n = Build(slot, mask);
    GPOINT* w = list.Room(n);
    if (!w || n == 0)
        return 0;
    // One index running up to 0 over both arrays, and the centre in locals:
    // few enough live values for the registers of a 32-bit processor.
    // Two points a pass halve the loop's own work; an odd count puts its
    // extra point first.
    const GPOINT* fromEnd = off_[slot] + n;
    GPOINT* toEnd = w + n;
    const std::int32_t cx = centre.x, cy = centre.y;
    std::int32_t i = -n;
    if (n & 1) {
        toEnd[i].x = cx + fromEnd[i].x;
        toEnd[i].y = cy + fromEnd[i].y;
        ++i;
    }
    for (; i != 0; i += 2) {
        toEnd[i].x = cx + fromEnd[i].x;
        toEnd[i].y = cy + fromEnd[i].y;
        toEnd[i + 1].x = cx + fromEnd[i + 1].x;
        toEnd[i + 1].y = cy + fromEnd[i + 1].y;
    }
    list.Written(toEnd);
    return list.Close(kMinPolygon);
}

int AppendOriented(POLYLIST& list, const GPOINT* pts, int n)
{
    if (n < 3)
        return 0;
    GPOINT* w = list.Room(n + 1);
    if (!w)
        return list.Close(kMinPolygon);
    const GPOINT* open = list.OpenStart();
    if (Shoelace(pts, n) > 0) {
        for (int i = n - 1; i >= 0; --i)
            POLYLIST::Put(w, open, pts[i]);
        POLYLIST::Put(w, open, pts[n - 1]);
    } else {
        for (int i = 0; i < n; ++i)
            POLYLIST::Put(w, open, pts[i]);
        POLYLIST::Put(w, open, pts[0]);
    }
    list.Written(w);
    return list.Close(kMinPolygon);
}

bool MitreWithinLimit(GPOINT din, GPOINT dout)
{
    std::int64_t dot = (std::int64_t)din.x * dout.x + (std::int64_t)din.y * dout.y;
    if (dot >= 0)
        return true;
    std::int64_t lin = IntSqrt((std::uint64_t)((std::int64_t)din.x * din.x + (std::int64_t)din.y * din.y));
    std::int64_t lout = IntSqrt((std::uint64_t)((std::int64_t)dout.x * dout.x + (std::int64_t)dout.y * dout.y));
    // cos(turn) >= 2 / 16 - 1: 8 · dot >= -7 · |din| · |dout|.
    return 8 * dot >= -7 * lin * lout;
}

int AppendJoin(POLYLIST& list, GPOINT joint, GPOINT a, GPOINT b, GPOINT din, GPOINT dout, bool mitre)
{
    if (!mitre) {
        // The bevel triangle, turned as AppendOriented would turn it: its
        // shoelace sum is (a − joint) × (b − joint), and the two offsets below
        // 2^15 keep that cross product in 32 bits.
        std::int32_t ax = a.x - joint.x, ay = a.y - joint.y, bx = b.x - joint.x, by = b.y - joint.y;
        if (Abs32(ax) < 0x8000 && Abs32(ay) < 0x8000 && Abs32(bx) < 0x8000 && Abs32(by) < 0x8000) {
            GPOINT* w = list.Room(4);
            if (!w)
                return list.Close(kMinPolygon);
            const GPOINT* open = list.OpenStart();
            bool reverse = ax * by - ay * bx > 0;
            GPOINT first = reverse ? b : joint, last = reverse ? joint : b;
            POLYLIST::Put(w, open, first);
            POLYLIST::Put(w, open, a);
            POLYLIST::Put(w, open, last);
            POLYLIST::Put(w, open, first);
            list.Written(w);
            return list.Close(kMinPolygon);
        }
    }
    GPOINT pts[4];
    int n = 0;
    pts[n++] = joint;
    pts[n++] = a;
    std::int64_t den = (std::int64_t)din.x * dout.y - (std::int64_t)din.y * dout.x;
    if (mitre && den != 0 && MitreWithinLimit(din, dout)) {
        // a + t · din meets b + s · dout at t = ((b − a) × dout) / (din × dout).
        // |b − a| stays below 2^17 and the directions below 2^20, so every
        // product here stays below 2^57.
        std::int64_t num = ((std::int64_t)b.x - a.x) * dout.y - ((std::int64_t)b.y - a.y) * dout.x;
        GPOINT m{a.x + (std::int32_t)MulDivRound64(din.x, num, den), a.y + (std::int32_t)MulDivRound64(din.y, num, den)};
        // The limit test works on rounded lengths; the tip is checked again
        // against the half-widths it came from, plus a pixel for the rounding.
        std::int64_t half2 = Dist2(joint, a) > Dist2(joint, b) ? Dist2(joint, a) : Dist2(joint, b);
        std::int64_t reach = (std::int64_t)kMitreLimit * IntSqrt((std::uint64_t)half2) + 2;
        if (Dist2(joint, m) <= reach * reach && m != a && m != b)
            pts[n++] = m;
    }
    pts[n++] = b;
    return AppendOriented(list, pts, n);
}

} // namespace rlstroke
