// vLINESPEC: defaults, line types with their stock patterns, the comparison
// that ignores the pattern, getters and setters.
#include <gtest/gtest.h>
#include <vector>
#include "rl132.h"

namespace {
std::vector<int> PatternOf(const vLINESPEC& s)
{
    std::vector<int> p;
    for (unsigned short i = 0; i < 6; ++i)
        p.push_back(s.Pattern(i));
    return p;
}
const unsigned char kUser[6] = {9, 8, 7, 6, 5, 4};
} // namespace

TEST(LineSpec, DefaultsAreASolidBlackLineOneUnitWide)
{
    vLINESPEC s;
    EXPECT_EQ(s.LineType(), vLT_SOLID);
    EXPECT_TRUE(s.Colour() == vCOLOUR());
    EXPECT_EQ(s.Width()(), 1);
    EXPECT_EQ((int)s.CornerType(), 2);
    EXPECT_EQ((int)s.DashType(), 0);
    EXPECT_EQ(PatternOf(s), std::vector<int>(6, 0));
    EXPECT_EQ(s.Pattern(6), 0);      // past the pattern: nothing, not a stray byte
    EXPECT_EQ(s.Pattern(0xFFFF), 0);

    vLINESPEC row[4];
    for (const vLINESPEC& r : row)
        EXPECT_TRUE(r == s);

    vCOLOUR red(vRGB, 0xFF, 60, 1);
    vLINESPEC full(vLT_DASH3, red, vINT(7), (vCORNERTYPE)1, (vDASHTYPE)2, kUser);
    EXPECT_EQ(full.LineType(), vLT_DASH3);
    EXPECT_TRUE(full.Colour() == red);
    EXPECT_EQ(full.Width()(), 7);
    EXPECT_EQ((int)full.CornerType(), 1);
    EXPECT_EQ((int)full.DashType(), 2);
    // A stock type installs its own pattern whatever the caller passes.
    EXPECT_EQ(PatternOf(full), (std::vector<int>{5, 3, 3, 3, 0, 0}));

    // The constructor's line type goes through LineType: no line, no width.
    vLINESPEC none(vLT_NONE, red, vINT(12));
    EXPECT_EQ(none.Width()(), 0);
    vLINESPEC user(vLT_USER, red, vINT(3), (vCORNERTYPE)0, (vDASHTYPE)0, kUser);
    EXPECT_EQ(PatternOf(user), (std::vector<int>{9, 8, 7, 6, 5, 4}));
}

TEST(LineSpec, LineTypesAndTheirPatterns)
{
    struct { vLINETYPE type; std::vector<int> pattern; } stock[] = {
        {vLT_DASH1, {3, 3, 0, 0, 0, 0}},
        {vLT_DASH2, {5, 3, 0, 0, 0, 0}},
        {vLT_DASH3, {5, 3, 3, 3, 0, 0}},
        {vLT_DASH4, {5, 3, 3, 3, 3, 3}},
    };
    for (const auto& c : stock) {
        vLINESPEC s(vLT_USER, vCOLOUR(), vINT(4), (vCORNERTYPE)2, (vDASHTYPE)0, kUser);
        s.LineType(c.type, kUser);
        EXPECT_EQ(s.LineType(), c.type);
        EXPECT_EQ(PatternOf(s), c.pattern) << (int)c.type;
        EXPECT_EQ(s.Width()(), 4);
        s.LineType(c.type, nullptr);
        EXPECT_EQ(PatternOf(s), c.pattern) << (int)c.type;
    }

    vLINESPEC s(vLT_DASH2, vCOLOUR(), vINT(9));
    // Solid and unknown types keep whatever pattern was there.
    s.LineType(vLT_SOLID, kUser);
    EXPECT_EQ(PatternOf(s), (std::vector<int>{5, 3, 0, 0, 0, 0}));
    s.LineType((vLINETYPE)42, kUser);
    EXPECT_EQ((int)s.LineType(), 42);
    EXPECT_EQ(PatternOf(s), (std::vector<int>{5, 3, 0, 0, 0, 0}));
    EXPECT_EQ(s.Width()(), 9);
    // A user type without a pattern keeps the old one; with one, copies six bytes.
    s.LineType(vLT_USER, nullptr);
    EXPECT_EQ(PatternOf(s), (std::vector<int>{5, 3, 0, 0, 0, 0}));
    const unsigned char longer[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    s.LineType(vLT_USER, longer);
    EXPECT_EQ(PatternOf(s), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    // No line: the width goes, the pattern stays.
    s.LineType(vLT_NONE, kUser);
    EXPECT_EQ(s.Width()(), 0);
    EXPECT_EQ(PatternOf(s), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    // Setting a width afterwards is allowed and kept.
    s.Width(vINT(5));
    EXPECT_EQ(s.Width()(), 5);
    EXPECT_EQ(s.LineType(), vLT_NONE);
}

TEST(LineSpec, ComparisonIgnoresOnlyThePattern)
{
    const unsigned char other[6] = {1, 1, 1, 1, 1, 1};
    vCOLOUR blue(0, 0, 255);
    vLINESPEC a(vLT_USER, blue, vINT(3), (vCORNERTYPE)1, (vDASHTYPE)2, kUser);
    vLINESPEC b(vLT_USER, blue, vINT(3), (vCORNERTYPE)1, (vDASHTYPE)2, other);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);

    vLINESPEC c = a;
    c.Colour(vCOLOUR(vRGB, 0xFF0000, 99, 0));  // same RGB, other tint
    EXPECT_TRUE(c != a);
    c = a;
    c.Colour(vCOLOUR(0xFF0000L, 1));            // same value, system flag
    EXPECT_TRUE(c != a);
    c = a;
    c.Width(vINT(4));
    EXPECT_TRUE(c != a);
    c = a;
    c.LineType(vLT_DASH1);
    EXPECT_TRUE(c != a);
    c = a;
    c.CornerType((vCORNERTYPE)2);
    EXPECT_TRUE(c != a);
    c = a;
    c.DashType((vDASHTYPE)0);
    EXPECT_TRUE(c != a);
}

TEST(LineSpec, CopiesCarryEveryFieldAndSettersStoreUnchecked)
{
    vLINESPEC a(vLT_USER, vCOLOUR(vCMYK, 0x64000000, 40, 1), vINT(-6), (vCORNERTYPE)-1, (vDASHTYPE)77, kUser);
    vLINESPEC b;
    b = a;
    vLINESPEC c(a);
    for (const vLINESPEC* s : {&b, &c}) {
        EXPECT_TRUE(*s == a);
        EXPECT_EQ(PatternOf(*s), (std::vector<int>{9, 8, 7, 6, 5, 4}));
        EXPECT_EQ(s->Width()(), -6);
        EXPECT_EQ((int)s->CornerType(), -1);
        EXPECT_EQ((int)s->DashType(), 77);
        EXPECT_EQ(s->Colour().GetTint(), 40);
    }
    b.Width(vINT(-2147483647L - 1));
    EXPECT_EQ(b.Width()(), -2147483647L - 1);
}
