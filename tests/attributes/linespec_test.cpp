// vLINESPEC: stock patterns, the comparison that ignores the pattern, the stream form.
#include <gtest/gtest.h>
#include <vector>
#include "rl132.h"

namespace {
using P = std::vector<int>;
P PatternOf(const vLINESPEC& s)
{
    P p;
    for (unsigned short i = 0; i < 6; ++i)
        p.push_back(s.Pattern(i));
    return p;
}
const unsigned char kUser[6] = {9, 8, 7, 6, 5, 4};
} // namespace

TEST(LineStyle, LineTypesInstallTheirPatternsAndComparisonIgnoresThem)
{
    vLINESPEC s;
    EXPECT_EQ(s.Pattern(6) | s.Pattern(0xFFFF), 0);  // past the pattern: nothing, not a stray byte
    const struct { vLINETYPE type; P pattern; } stock[] = {{vLT_DASH1, {3, 3, 0, 0, 0, 0}}, {vLT_DASH4, {5, 3, 3, 3, 3, 3}}};
    for (const auto& c : stock)  // whatever pattern the caller passes
        EXPECT_EQ(PatternOf(vLINESPEC(c.type, vCOLOUR(), vINT(4), (vCORNERTYPE)2, (vDASHTYPE)0, kUser)), c.pattern);
    // Unknown types keep the pattern there; so does a user type without one.
    vLINESPEC t(vLT_DASH2, vCOLOUR(), vINT(9));
    t.LineType((vLINETYPE)42, kUser);
    t.LineType(vLT_USER, nullptr);
    EXPECT_TRUE((int)t.LineType() == 6 && PatternOf(t) == (P{5, 3, 0, 0, 0, 0}));
    const unsigned char longer[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    t.LineType(vLT_USER, longer);   // six bytes copied
    t.LineType(vLT_NONE, kUser);    // no line: the width goes (in the constructor too), the pattern stays
    EXPECT_TRUE(t.Width()() == 0 && PatternOf(t) == (P{1, 2, 3, 4, 5, 6}) && vLINESPEC(vLT_NONE, vCOLOUR(), vINT(12)).Width()() == 0);

    const unsigned char other[6] = {1, 1, 1, 1, 1, 1};
    vLINESPEC a(vLT_USER, vCOLOUR(0, 0, 255), vINT(3), (vCORNERTYPE)1, (vDASHTYPE)2, kUser);
    EXPECT_TRUE(a == vLINESPEC(vLT_USER, vCOLOUR(0, 0, 255), vINT(3), (vCORNERTYPE)1, (vDASHTYPE)2, other));
    vLINESPEC changed = a;
    changed.Colour(vCOLOUR(vRGB, 0xFF0000, 99, 0));  // same RGB, other tint
    EXPECT_TRUE(changed != a && !(changed == a));
}

TEST(LineStyle, StreamFormIsTwentyFourBytes)
{
    vMEMSTREAM m;
    vLINESPEC dashed(vLT_DASH3, vCOLOUR(vCMYK, 0x64000000, 80, 1), vINT(-3), (vCORNERTYPE)1, (vDASHTYPE)2);
    EXPECT_EQ(&(dashed >> m), &m);
    vLINESPEC() >> m;   // the defaults
    const unsigned char expected[] = {
        0x00, 0x00, 0x00, 0x64, 2, 80, 0x10, 0x00,  0xFD, 0xFF, 0xFF, 0xFF,  // colour, width -3
        4, 0, 1, 0, 2, 0,  5, 3, 3, 3, 0, 0,                                 // types, pattern
        0x00, 0x00, 0x00, 0x00, 0, 100, 0x00, 0x00,  0x01, 0x00, 0x00, 0x00,
        1, 0, 2, 0, 0, 0,  0, 0, 0, 0, 0, 0,                                 // solid: zeroed, not stray bytes
    };
    EXPECT_EQ(std::vector<unsigned char>(m.Buffer(), m.Buffer() + m.Size()), std::vector<unsigned char>(expected, std::end(expected)));
}

// Regression: a user pattern beginning with the frame magic was read as a frame.
TEST(LineStyle, APatternThatLooksLikeAFrameIsReadRaw)
{
    const unsigned char magic[6] = {0xB1, 0xAA, 0x12, 0x00, 7, 9};
    vLINESPEC odd(vLT_USER, vCOLOUR(4, 5, 6), vINT(3), (vCORNERTYPE)1, (vDASHTYPE)0, magic);
    vLINESPEC dashed(vLT_DASH4, vCOLOUR(1, 2, 3), vINT(2));
    for (int compress = 0; compress <= 1; ++compress) {
        vFILE f;
        f.Compress(compress);
        odd >> f;
        dashed >> f;
        f.MoveFromStart(0);
        vLINESPEC r1(f), r2(f);
        EXPECT_TRUE(r1 == odd && r2 == dashed && f.DetectingCompressed());
        EXPECT_TRUE(PatternOf(r1) == (P{0xB1, 0xAA, 0x12, 0x00, 7, 9}) && PatternOf(r2) == (P{5, 3, 3, 3, 3, 3}));
        EXPECT_TRUE(f.CurrentPos() == 48u && f.Status() == vSTREAM_OK);
    }
}
