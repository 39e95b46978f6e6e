// vSHAPE and its rectangle and ellipse builders.
//
// The table holds pointers to individually allocated points, and every slot up
// to the capacity holds one (a blank (0, 0) with flags 0 until it is used), so
// that the device's walk and the callers of operator[] can read any slot. A
// slot whose point could not be allocated stays null; the members that reach
// it allocate it then or fail.
#include "rl132/devices/vshape.h"
#include <cstring>
#include "devices/geom/listinfo.h"
#include "devices/geom/walk.h"
#include "devices/geom/walkhit.h"
#include "rl132/core/vmem.h"

namespace {

// The table grows by this many slots at a time.
const unsigned kGrowth = 10;
// The 16-bit capacity's ceiling.
const unsigned kMaxPoints = 0xFFFFu;

// A point that closes its contour: it ends the contour (0x02) and starts a
// segment (0x08 or 0x10), which therefore runs back to the first point.
inline bool Closes(unsigned char f)
{
    return (f & vBEZPOINT::LAST) && (f & (vBEZPOINT::LINETO | vBEZPOINT::CURVETO));
}

// Handed out for slots that do not exist; reset on every use so that a caller
// who wrote through it last time sees a blank point again.
vBEZPOINT& Scratch()
{
    static vBEZPOINT scratch;
    scratch = vBEZPOINT();
    return scratch;
}

// The ellipse's control-point factor: raw 16.16 value 18097, 0.27614. That is
// half of 0.55228, the quarter-circle factor 4/3 (sqrt 2 - 1), because it is
// applied to the full width and height, not to the radii.
const long kEllipseRaw = 18097;

} // namespace

vSHAPE::vSHAPE(unsigned short n, vBEZPOINT** points) : capacity(0), count(0), table(0), closed(0)
{
    if (n == 0)
        return;
    table = static_cast<vBEZPOINT**>(vMemAlloc((unsigned long)n * sizeof(vBEZPOINT*)));
    if (!table) {
        // The shape was given the points; it cannot keep them, so it frees them.
        if (points)
            for (unsigned i = 0; i < n; ++i)
                delete points[i];
        return;
    }
    capacity = n;
    if (points) {
        for (unsigned i = 0; i < n; ++i) {
            table[i] = points[i];
            if (points[i])
                NoteClosing(points[i]->flags);
        }
        count = n;
    } else {
        for (unsigned i = 0; i < n; ++i)
            table[i] = new vBEZPOINT();
    }
}

vSHAPE::vSHAPE(const vSHAPE& o) : capacity(0), count(0), table(0), closed(0)
{
    CopyFrom(o);
}

vSHAPE& vSHAPE::operator=(const vSHAPE& o)
{
    if (this != &o) {
        Free();
        CopyFrom(o);
    }
    return *this;
}

vSHAPE::~vSHAPE()
{
    Free();
}

void vSHAPE::Free()
{
    for (unsigned i = 0; i < capacity; ++i)
        delete table[i];
    vMemFree(table);
    table = 0;
    capacity = count = 0;
    closed = 0;
    box = vRECT();
}

int vSHAPE::CopyFrom(const vSHAPE& o)
{
    if (o.capacity == 0)
        return 1;
    table = static_cast<vBEZPOINT**>(vMemAlloc((unsigned long)o.capacity * sizeof(vBEZPOINT*)));
    if (!table)
        return 0;
    capacity = o.capacity;
    for (unsigned i = 0; i < capacity; ++i)
        table[i] = o.table[i] ? new vBEZPOINT(*o.table[i]) : new vBEZPOINT();
    count = o.count;
    closed = o.closed;
    box = o.box;
    return 1;
}

int vSHAPE::Allocate()
{
    if (count < capacity)
        return 1;
    unsigned want = (unsigned)capacity + kGrowth;
    if (want > kMaxPoints)
        want = kMaxPoints;
    if (want <= count)
        return 0;
    unsigned long bytes = (unsigned long)want * sizeof(vBEZPOINT*);
    vBEZPOINT** grown =
        static_cast<vBEZPOINT**>(table ? vMemRealloc(table, bytes) : vMemAlloc(bytes));
    if (!grown)
        return 0;
    for (unsigned i = capacity; i < want; ++i)
        grown[i] = new vBEZPOINT();
    table = grown;
    capacity = (unsigned short)want;
    return 1;
}

void vSHAPE::NoteClosing(unsigned char flags)
{
    if (Closes(flags))
        closed = 1;
}

void vSHAPE::Widen(const vPOINT& p, int first)
{
    if (first) {
        box = vRECT(p.x, p.y, p.x, p.y);
        return;
    }
    if (p.x < box.left)
        box.left = p.x;
    if (p.y < box.top)
        box.top = p.y;
    if (p.x > box.right)
        box.right = p.x;
    if (p.y > box.bottom)
        box.bottom = p.y;
}

void vSHAPE::Recount()
{
    box = vRECT();
    closed = 0;
    int first = 1;
    for (unsigned i = 0; i < count; ++i) {
        if (table[i]) {
            Widen(table[i]->point, first);
            NoteClosing(table[i]->flags);
            first = 0;
        }
    }
}

int vSHAPE::AppendPoint(const vBEZPOINT& p)
{
    if (!Allocate())
        return 0;
    vBEZPOINT*& slot = table[count];
    if (!slot && !(slot = new vBEZPOINT()))
        return 0;
    NoteClosing(p.flags);
    Widen(p.point, count == 0);
    *slot = p;
    ++count;
    return 1;
}

int vSHAPE::InsertPoint(unsigned short index, const vBEZPOINT& p)
{
    if (index > count)
        return 0;
    if (!Allocate())
        return 0;
    // The spare slot past the points moves to the index.
    vBEZPOINT* spare = table[count];
    if (!spare && !(spare = new vBEZPOINT()))
        return 0;
    std::memmove(table + index + 1, table + index, (count - index) * sizeof(vBEZPOINT*));
    table[index] = spare;
    NoteClosing(p.flags);
    Widen(p.point, count == 0);
    *spare = p;
    ++count;
    return 1;
}

int vSHAPE::DeletePoint(unsigned short index)
{
    if (index >= count)
        return 0;
    // The point object is kept, blank, as the spare slot past the points.
    vBEZPOINT* gone = table[index];
    std::memmove(table + index, table + index + 1, (count - index - 1) * sizeof(vBEZPOINT*));
    --count;
    table[count] = gone;
    if (gone)
        *gone = vBEZPOINT();
    Recount();
    return 1;
}

vBEZPOINT& vSHAPE::operator[](unsigned short index)
{
    if (index < capacity && table[index])
        return *table[index];
    return Scratch();
}

const vBEZPOINT& vSHAPE::operator[](unsigned short index) const
{
    if (index < capacity && table[index])
        return *table[index];
    return Scratch();
}

int vSHAPE::NoOfContours() const
{
    int n = 0;
    for (unsigned i = 0; i < count; ++i)
        if (table[i] && (table[i]->flags & vBEZPOINT::LAST))
            ++n;
    return n;
}

int vSHAPE::Contains(const vPOINT& p) const
{
    rlgeom::WALKSHAPE s = {table, count};
    rlgeom::LISTINFO list;
    GPOINT* points = 0;
    int* counts = 0;
    int contours = rlgeom::ConvertShapeToPoints(s, rlgeom::IdentityMap(), list, &points, &counts);
    GPOINT at = {(std::int32_t)p.x(), (std::int32_t)p.y()};
    int inside = contours > 0 && rlgeom::PointInContours(points, counts, contours, at);
    vMemFree(points);
    vMemFree(counts);
    return inside;
}

int vPOINT::operator^(const vSHAPE& s) const
{
    return s.Contains(*this);
}

// ---------------------------------------------------------------- builders

vRECTSHAPE::vRECTSHAPE(const vRECT& r) : vSHAPE(4, 0)
{
    AppendPoint(vBEZPOINT(vPOINT(r.left, r.top), 0x09));
    AppendPoint(vBEZPOINT(vPOINT(r.right, r.top), 0x08));
    AppendPoint(vBEZPOINT(vPOINT(r.right, r.bottom), 0x08));
    AppendPoint(vBEZPOINT(vPOINT(r.left, r.bottom), 0x0A));
}

vELPSSHAPE::vELPSSHAPE(const vRECT& r) : vSHAPE(12, 0)
{
    // The centre rounds half up: (left + right + 1) / 2.
    vINT cx = (r.left + r.right + 1) / 2;
    vINT cy = (r.top + r.bottom + 1) / 2;
    const vREAL k = vREAL::FromRaw(kEllipseRaw);
    // vINT * vREAL, then back to vINT truncating toward zero: 100 wide gives 27.
    vINT kx = vINT((r.right - r.left) * k);
    vINT ky = vINT((r.bottom - r.top) * k);
    const struct {
        vINT x, y;
        unsigned char flags;
    } pts[12] = {
        {cx, r.top, 0x11},      {cx + kx, r.top, 0x20},    {r.right, cy - ky, 0x20},
        {r.right, cy, 0x10},    {r.right, cy + ky, 0x20},  {cx + kx, r.bottom, 0x20},
        {cx, r.bottom, 0x10},   {cx - kx, r.bottom, 0x20}, {r.left, cy + ky, 0x20},
        {r.left, cy, 0x12},     {r.left, cy - ky, 0x20},   {cx - kx, r.top, 0x20},
    };
    for (int i = 0; i < 12; ++i)
        AppendPoint(vBEZPOINT(vPOINT(pts[i].x, pts[i].y), pts[i].flags));
}
