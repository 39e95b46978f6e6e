// vCOLLECTION: a point array in 16-bit storage.
#include "rl132/containers/vcollect.h"
#include "rl132/core/vmem.h"

namespace {

// Bytes per counted value that the growth test assumes for each kind. For
// points this is 8 although a stored value takes 2, so an owning point
// collection grows by 256 bytes every 16 points, long before it is full.
unsigned short BytesPerValue(vARRAYTYPE type)
{
    switch (type) {
    case vARRAY_POINT: return 8;
    case vARRAY_RECT:  return 16;
    case vARRAY_UWORD: return 2;
    default:           return 4;
    }
}

const unsigned short kGrowth = 256;

} // namespace

vCOLLECTION::vCOLLECTION(vARRAYTYPE t)
    : base(0), current(0), spare(0), type(t), capacity(0), count(0), owns(1)
{
}

vCOLLECTION::vCOLLECTION(unsigned char* buffer, vARRAYTYPE t, unsigned short cap,
                         unsigned short n)
    : base(buffer), current((short*)buffer), spare(buffer), type(t), capacity(cap),
      count(n), owns(0)
{
}

vCOLLECTION::vCOLLECTION(const vCOLLECTION& o)
    : vOBJECT(), base(o.base), current(o.current), spare(o.spare), type(o.type),
      capacity(o.capacity), count(o.count), owns(o.owns)
{
}

vCOLLECTION& vCOLLECTION::operator=(const vCOLLECTION& o)
{
    base = o.base;
    current = o.current;
    spare = o.spare;
    type = o.type;
    capacity = o.capacity;
    count = o.count;
    owns = o.owns;
    return *this;
}

vCOLLECTION::~vCOLLECTION()
{
    if (owns && base)
        vMemFree(base);
}

int vCOLLECTION::Update()
{
    if (owns && !base) {
        base = (unsigned char*)vMemAlloc(kGrowth);
        current = (short*)base;
        spare = base;
        if (base)
            capacity = kGrowth;
    } else if (owns) {
        unsigned short inUse = (unsigned short)(count * BytesPerValue(type));
        if (capacity <= inUse) {
            // Growing past 65,280 would wrap the 16-bit capacity to a block
            // smaller than what is stored; the collection is full instead.
            if (capacity > 0xFFFFu - kGrowth)
                return 0;
            unsigned short grown = (unsigned short)(capacity + kGrowth);
            void* p = vMemRealloc(base, grown);
            // A failed resize keeps the old block and everything in it.
            if (!p)
                return 0;
            base = (unsigned char*)p;
            current = (short*)base;
            spare = base;
            capacity = grown;
        }
    }
    if (!base)
        return 0;
    return capacity > count ? 1 : 0;
}

int vCOLLECTION::AddPoint(const vPOINT& p)
{
    if (!Update() || type != vARRAY_POINT)
        return 0;
    // The block must hold the two new values, whatever the count says: the
    // growth rule alone would let a caller's buffer take twice its declared
    // bytes, and our own block is bounded the same way.
    if ((unsigned long)(count + 2) * 2 > capacity)
        return 0;
    current[count] = (short)(unsigned short)((unsigned long)p.x() & 0xFFFFu);
    current[count + 1] = (short)(unsigned short)((unsigned long)p.y() & 0xFFFFu);
    count = (unsigned short)(count + 2);
    return 1;
}

vPOINT vCOLLECTION::GetPoint(unsigned short n) const
{
    if (type != vARRAY_POINT && type != vARRAY_UWORD && type != vARRAY_INT)
        return vPOINT(0L, 0L);
    if (!current)
        return vPOINT(0L, 0L);
    // Past the declared bytes of the block there is nothing to read.
    if (((unsigned long)n * 2 + 2) * 2 > capacity)
        return vPOINT(0L, 0L);
    unsigned long i = (unsigned long)n * 2;
    return vPOINT((long)current[i], (long)current[i + 1]);
}

int vCOLLECTION::AddInt(const vINT&) { return 0; }
int vCOLLECTION::AddRect(const vRECT&) { return 0; }
int vCOLLECTION::AddUWord(unsigned short) { return 0; }
vINT vCOLLECTION::GetInt(unsigned short) const { return vINT(0L); }
vRECT vCOLLECTION::GetRect(unsigned short) const { return vRECT(0L, 0L, 0L, 0L); }
unsigned short vCOLLECTION::GetUWord(unsigned short) const { return 0; }
