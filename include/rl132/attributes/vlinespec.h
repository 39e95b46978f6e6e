// Line styles: how a line or outline is stroked.
#ifndef RL132_ATTRIBUTES_VLINESPEC_H
#define RL132_ATTRIBUTES_VLINESPEC_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/attributes/vcolour.h"

// Line types. Types 2 to 5 are stock dash patterns, 6 a pattern of the
// caller's; other values are kept as given.
enum vLINETYPE : int {
    vLT_NONE = 0,
    vLT_SOLID = 1,
    vLT_DASH1 = 2,   // 3 on, 3 off
    vLT_DASH2 = 3,   // 5 on, 3 off
    vLT_DASH3 = 4,   // 5, 3, 3, 3
    vLT_DASH4 = 5,   // 5, 3, 3, 3, 3, 3
    vLT_USER = 6
};

// Corner (join) and dash (end) styles: plain numbers that the line renderer
// interprets; the line style stores them unchanged.
enum vCORNERTYPE : int {};
enum vDASHTYPE : int {};

class RL132_API vLINESPEC : public vOBJECT {
public:
    enum { PATTERN_SIZE = 6 };

    // Stores colour, width, corner and dash, then applies LineType(type, pattern).
    // The defaults give a solid black line one unit wide, corner type 2, dash type 0.
    vLINESPEC(vLINETYPE type = vLT_SOLID, const vCOLOUR& colour = vCOLOUR(), const vINT& width = vINT(1),
              vCORNERTYPE corner = (vCORNERTYPE)2, vDASHTYPE dash = (vDASHTYPE)0,
              const unsigned char* pattern = nullptr);
    // RGB black, width 0, then the stream form.
    explicit vLINESPEC(vSTREAM& stream);
    vLINESPEC(const vLINESPEC& other);
    vLINESPEC& operator=(const vLINESPEC& other);

    // Colour, width, line, corner and dash types; the pattern is not compared.
    int operator==(const vLINESPEC& other) const;
    int operator!=(const vLINESPEC& other) const;

    vLINETYPE LineType() const { return lineType; }
    const vCOLOUR& Colour() const { return colour; }
    const vINT& Width() const { return width; }
    vCORNERTYPE CornerType() const { return cornerType; }
    vDASHTYPE DashType() const { return dashType; }
    // Pattern byte i, alternately dash and gap lengths; 0 for i beyond 5.
    unsigned char Pattern(unsigned short i) const;

    // vLT_NONE also sets the width to 0; the stock dash types install their
    // pattern; vLT_USER copies six bytes from `pattern` unless it is null.
    void LineType(vLINETYPE type, const unsigned char* pattern = nullptr);
    void Colour(const vCOLOUR& c) { colour = c; }
    void Width(const vINT& w) { width = w; }
    void CornerType(vCORNERTYPE c) { cornerType = c; }
    void DashType(vDASHTYPE d) { dashType = d; }

    // Stream form, 24 bytes: the colour's 8, width (long), line, corner and dash
    // types (words), six pattern bytes. `line << stream` loads exactly what was
    // stored (no stock pattern, no width rule); `line >> stream` stores.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

private:
    vCOLOUR colour;
    vINT width;
    vLINETYPE lineType;
    vCORNERTYPE cornerType;
    vDASHTYPE dashType;
    unsigned char pattern[PATTERN_SIZE];
};

#endif
