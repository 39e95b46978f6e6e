// The outline renderer's output lists, in the forms GDI takes unchanged.
//
// Plain C++ with no Windows headers (built natively for sanitizers too).
//
// POLYLIST is a run of points cut into polygons (or polylines) by a list of
// counts: exactly the arguments of PolyPolygon and PolyPolyline. Points go in
// one at a time; a point equal to the one stored just before it is dropped
// unless it starts a polygon, so each count is the number of distinct
// consecutive points recorded, the closing repeat included.
//
// LINEBLOCK records are the brush method's output: a rectangle for PatBlt, or
// the two ends of a LineDDA walk whose every point the device's callback
// paints as a width × width block.
#ifndef RL132_SRC_DEVICES_GEOM_LINELIST_H
#define RL132_SRC_DEVICES_GEOM_LINELIST_H
#include <cstdint>
#include "devices/geom/gpoint.h"

namespace rlstroke {

class POLYLIST {
public:
    POLYLIST();
    ~POLYLIST();
    POLYLIST(const POLYLIST&) = delete;
    POLYLIST& operator=(const POLYLIST&) = delete;

    // Forgets every point and count and the failure; keeps the memory.
    void Clear();
    // Records one point of the polygon being built.
    void Add(GPOINT p)
    {
        if (count_ > start_ && points_[count_ - 1] == p)
            return;
        if (count_ == capacity_ && !GrowPoints(1))
            return;
        points_[count_++] = p;
    }
    // Ends the polygon being built: its count is stored when it has at least
    // minPoints points, and it is dropped otherwise (and when memory ran out
    // while it was built). Returns 1 when a polygon was stored, else 0.
    int Close(std::int32_t minPoints)
    {
        std::int32_t n = count_ - start_;
        if (failed_ || n < minPoints || npolys_ == countCapacity_)
            return CloseSlow(minPoints);
        counts_[npolys_++] = n;
        start_ = count_;
        return 1;
    }
    // Bulk writing, for the hot paths: Room(n) makes space for n more points
    // and returns where they go (null when memory ran out); the writer stores
    // them with Put, which drops duplicates as Add does, and hands the end
    // back through Written. Keeping the write position in a local lets the
    // compiler hold it in a register: stores to points could alias count_.
    GPOINT* Room(std::int32_t n)
    {
        if (capacity_ - count_ < n && !GrowPoints(n))
            return nullptr;
        return points_ + count_;
    }
    // Where the open polygon begins: Put never drops a point written there.
    const GPOINT* OpenStart() const { return points_ + start_; }
    static void Put(GPOINT*& w, const GPOINT* open, GPOINT p)
    {
        if (w == open || w[-1] != p)
            *w++ = p;
    }
    void Written(const GPOINT* end) { count_ = (std::int32_t)(end - points_); }
    // Drops the polygon being built.
    void Abandon() { count_ = start_; }
    // Points recorded since the last Close (0 when none is open).
    std::int32_t OpenPoints() const { return count_ - start_; }

    const GPOINT* Points() const { return points_; }
    std::int32_t NumPoints() const { return start_; }
    // One count per polygon; int-sized, as PolyPolygon and PolyPolyline take.
    const std::int32_t* Counts() const { return counts_; }
    std::int32_t NumPolys() const { return npolys_; }
    // Set when memory ran out; what was stored before stays valid.
    bool Failed() const { return failed_; }

private:
    template <class T> bool Grow(T*& array, std::int32_t& capacity, std::int32_t need);
    bool GrowPoints(std::int32_t more);
    int CloseSlow(std::int32_t minPoints);

    GPOINT* points_;
    std::int32_t count_, capacity_;
    std::int32_t start_; // first point of the polygon being built
    std::int32_t* counts_;
    std::int32_t npolys_, countCapacity_;
    bool failed_;
};

enum LINEBLOCKKIND : std::int32_t {
    kBlockRect = 0, // PatBlt(a.x, a.y, b.x, b.y, PATCOPY): a the top-left corner, b the size
    kBlockDDA = 1   // LineDDA(a.x, a.y, b.x, b.y) painting a width × width block per point
};

struct LINEBLOCK {
    std::int32_t kind;
    GPOINT a, b;
};

class BLOCKLIST {
public:
    BLOCKLIST();
    ~BLOCKLIST();
    BLOCKLIST(const BLOCKLIST&) = delete;
    BLOCKLIST& operator=(const BLOCKLIST&) = delete;

    void Clear() { count_ = 0; failed_ = false; }
    void Add(std::int32_t kind, GPOINT a, GPOINT b);
    const LINEBLOCK* Blocks() const { return blocks_; }
    std::int32_t NumBlocks() const { return count_; }
    bool Failed() const { return failed_; }

private:
    LINEBLOCK* blocks_;
    std::int32_t count_, capacity_;
    bool failed_;
};

} // namespace rlstroke

#endif
