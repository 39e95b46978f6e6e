// The outline renderer's polygon and block lists.
#include "devices/geom/linelist.h"
#include "rl132/core/vmem.h"

namespace rlstroke {

namespace {

// Lists double as they fill, from a first block big enough for a few joins.
// Past 2^26 entries a list refuses to grow: the byte size would leave 31 bits
// for an 8-byte entry, and no platform call takes that many points anyway.
const std::int32_t kFirstCapacity = 256;
const std::int32_t kMaxEntries = 1 << 26;

template <class T> T* Resize(T* array, std::int32_t entries)
{
    return static_cast<T*>(vMemRealloc(array, (unsigned long)entries * sizeof(T)));
}

} // namespace

POLYLIST::POLYLIST()
    : points_(nullptr), count_(0), capacity_(0), start_(0), counts_(nullptr), npolys_(0), countCapacity_(0),
      failed_(false)
{
}

POLYLIST::~POLYLIST()
{
    vMemFree(points_);
    vMemFree(counts_);
}

void POLYLIST::Clear()
{
    count_ = start_ = npolys_ = 0;
    failed_ = false;
}

template <class T> bool POLYLIST::Grow(T*& array, std::int32_t& capacity, std::int32_t need)
{
    if (failed_)
        return false;
    std::int32_t wanted = capacity ? capacity : kFirstCapacity;
    while (wanted < need && wanted < kMaxEntries)
        wanted *= 2;
    T* grown = wanted >= need ? Resize(array, wanted) : nullptr;
    if (!grown) {
        // The polygon in progress is incomplete: Close drops it.
        failed_ = true;
        return false;
    }
    array = grown;
    capacity = wanted;
    return true;
}

bool POLYLIST::GrowPoints(std::int32_t more)
{
    if (more > kMaxEntries - count_) {
        failed_ = true;
        return false;
    }
    return Grow(points_, capacity_, count_ + more);
}

int POLYLIST::CloseSlow(std::int32_t minPoints)
{
    std::int32_t n = count_ - start_;
    if (failed_ || n < minPoints || (npolys_ == countCapacity_ && !Grow(counts_, countCapacity_, npolys_ + 1))) {
        count_ = start_;
        return 0;
    }
    counts_[npolys_++] = n;
    start_ = count_;
    return 1;
}

BLOCKLIST::BLOCKLIST() : blocks_(nullptr), count_(0), capacity_(0), failed_(false) {}

BLOCKLIST::~BLOCKLIST() { vMemFree(blocks_); }

void BLOCKLIST::Add(std::int32_t kind, GPOINT a, GPOINT b)
{
    if (count_ == capacity_) {
        std::int32_t wanted = capacity_ ? capacity_ * 2 : kFirstCapacity;
        LINEBLOCK* grown = wanted <= kMaxEntries ? Resize(blocks_, wanted) : nullptr;
        if (!grown) {
            failed_ = true;
            return;
        }
        blocks_ = grown;
        capacity_ = wanted;
    }
    blocks_[count_].kind = kind;
    blocks_[count_].a = a;
    blocks_[count_].b = b;
    ++count_;
}

} // namespace rlstroke
