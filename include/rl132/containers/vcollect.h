// Growable typed arrays.
//
// A vCOLLECTION is the block the device takes polygons and polylines in. Of the
// element kinds it names only points are stored and read back; the other
// members exist and give fixed results.
#ifndef RL132_CONTAINERS_VCOLLECT_H
#define RL132_CONTAINERS_VCOLLECT_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vgeom.h"

// The element kind of a collection. The growth test assumes the bytes per
// counted 16-bit value shown beside each kind.
enum vARRAYTYPE {
    vARRAY_ANY = 0,    // 4 bytes
    vARRAY_POINT = 1,  // 8 bytes; the only kind that accepts points
    vARRAY_RECT = 2,   // 16 bytes
    vARRAY_UWORD = 3,  // 2 bytes; the default, and readable as points
    vARRAY_INT = 4     // 4 bytes; readable as points
};

class RL132_API vCOLLECTION : public vOBJECT {
public:
    // Empty and owning; the first append allocates 256 bytes.
    vCOLLECTION(vARRAYTYPE type = vARRAY_UWORD);
    // Wraps the caller's buffer of `capacity` bytes holding `count` 16-bit
    // values. The buffer is never grown or freed; an append that would write
    // past its `capacity` bytes fails (returns 0), and reads past them give
    // (0, 0).
    vCOLLECTION(unsigned char* buffer, vARRAYTYPE type, unsigned short capacity,
                unsigned short count);
    // Copying shares the block as it stands; an owning source makes both
    // owners, so copy or assign only non-owning collections or give one up.
    vCOLLECTION(const vCOLLECTION& o);
    vCOLLECTION& operator=(const vCOLLECTION& o);
    ~vCOLLECTION();

    RL132_INLINE vARRAYTYPE Type() const { return type; }
    // In 16-bit values: twice the number of points.
    RL132_INLINE unsigned short NoValues() const { return count; }
    // Forgets the values and keeps the block.
    RL132_INLINE void Reset() { count = 0; }

    // 1 when appended. Coordinates keep their low 16 bits.
    int AddPoint(const vPOINT& p);
    // The n-th point (from 0), sign-extended from 16 bits, for the point,
    // word and integer kinds; (0, 0) for the others, when there is no block or
    // when the point lies past the block's bytes. n is not checked against
    // the count.
    vPOINT GetPoint(unsigned short n) const;

    // These kinds are not stored: the appends return 0 and the reads 0.
    int AddInt(const vINT& v);
    int AddRect(const vRECT& r);
    int AddUWord(unsigned short v);
    vINT GetInt(unsigned short n) const;
    vRECT GetRect(unsigned short n) const;
    unsigned short GetUWord(unsigned short n) const;

private:
    int Update();

    unsigned char* base;   // the block: ours from vMemAlloc, or the caller's
    short* current;        // where values are appended and read; equals base
    void* spare;           // kept equal to base
    vARRAYTYPE type;
    unsigned short capacity;  // bytes
    unsigned short count;     // 16-bit values stored
    int owns;                 // 1 when the block is ours to grow and free
};

#endif
