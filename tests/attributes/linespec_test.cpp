// vLINESPEC: defaults, line types with their stock patterns, the comparison
// that ignores the pattern, getters and setters.
#include <gtest/gtest.h>
#include <cstring>
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

// ---------------------------------------------------------------- stream form

TEST(LineSpecStream, TwentyFourBytesByteForByte)
{
    vMEMSTREAM m;
    vLINESPEC dashed(vLT_DASH3, vCOLOUR(vCMYK, 0x64000000, 80, 1), vINT(-3), (vCORNERTYPE)1, (vDASHTYPE)2);
    vSTREAM& back = (dashed >> m);
    EXPECT_EQ(&back, &m);
    vLINESPEC() >> m;
    const unsigned char expected[] = {
        0x00, 0x00, 0x00, 0x64, 2, 80, 0x10, 0x00,   // colour
        0xFD, 0xFF, 0xFF, 0xFF,                       // width -3
        4, 0, 1, 0, 2, 0,                             // line, corner, dash types
        5, 3, 3, 3, 0, 0,                             // pattern
        0x00, 0x00, 0x00, 0x00, 0, 100, 0x00, 0x00,
        0x01, 0x00, 0x00, 0x00,
        1, 0, 2, 0, 0, 0,
        0, 0, 0, 0, 0, 0,                             // solid: zeroed, not stray bytes
    };
    ASSERT_EQ(m.Size(), sizeof expected);
    for (size_t i = 0; i < sizeof expected; ++i)
        EXPECT_EQ(m.Buffer()[i], expected[i]) << "byte " << i;
}

TEST(LineSpecStream, ReadingRestoresEveryFieldWithoutApplyingTheLineType)
{
    // A pattern no stock type would give, on a stock type; and "no line" with
    // a width: reading keeps both as saved.
    const unsigned char odd[6] = {1, 2, 3, 4, 5, 6};
    vLINESPEC a(vLT_USER, vCOLOUR(10, 20, 30), vINT(8), (vCORNERTYPE)0, (vDASHTYPE)1, odd);
    a.LineType(vLT_DASH1, nullptr);   // pattern becomes 3, 3, 0, 0, 0, 0
    vLINESPEC saved = a;
    vMEMSTREAM m;
    a >> m;
    // Patch the saved line type to vLT_NONE and the pattern to 1..6 by hand.
    std::vector<unsigned char> bytes(m.Buffer(), m.Buffer() + m.Size());
    ASSERT_EQ(bytes.size(), 24u);
    bytes[12] = 0;
    for (int i = 0; i < 6; ++i)
        bytes[18 + i] = (unsigned char)(i + 1);
    unsigned char* buffer = (unsigned char*)vMemAlloc(24);
    memcpy(buffer, bytes.data(), 24);
    {
        vMEMSTREAM in(&buffer, 24, vSTRING(), 0, 0);
        vLINESPEC r;
        r << in;
        EXPECT_EQ(r.LineType(), vLT_NONE);
        EXPECT_EQ(r.Width()(), 8);
        EXPECT_EQ(PatternOf(r), (std::vector<int>{1, 2, 3, 4, 5, 6}));
        EXPECT_TRUE(r.Colour() == vCOLOUR(10, 20, 30));
        EXPECT_EQ((int)r.DashType(), 1);
        EXPECT_EQ(in.Status(), vSTREAM_OK);
    }
    vMemFree(buffer);

    // The stream constructor reads the same way.
    m.MoveFromStart(0);
    vLINESPEC c(m);
    EXPECT_TRUE(c == saved);
    EXPECT_EQ(PatternOf(c), (std::vector<int>{3, 3, 0, 0, 0, 0}));

    // Types travel as words and come back zero-extended.
    vLINESPEC wide(vLT_SOLID, vCOLOUR(), vINT(1), (vCORNERTYPE)-1, (vDASHTYPE)0x12345);
    vMEMSTREAM w;
    wide >> w;
    w.MoveFromStart(0);
    vLINESPEC narrow(w);
    EXPECT_EQ((int)narrow.CornerType(), 0xFFFF);
    EXPECT_EQ((int)narrow.DashType(), 0x2345);
}

TEST(LineSpecStream, CompressingStreamsKeepThePatternRawAndShortDataReadsZeros)
{
    vLINESPEC a(vLT_DASH4, vCOLOUR(1, 2, 3), vINT(2));
    {
        vFILE f;
        f.Compress(1);
        a >> f;
        EXPECT_EQ(f.CurrentPos(), 24u);
        f.MoveFromStart(0);
        vLINESPEC r(f);
        EXPECT_TRUE(r == a);
        EXPECT_EQ(PatternOf(r), (std::vector<int>{5, 3, 3, 3, 3, 3}));
        EXPECT_EQ(f.Status(), vSTREAM_OK);
    }
    // A user pattern that begins like a compressed frame is still six plain
    // bytes, and the record after it starts where it should.
    {
        const unsigned char magic[6] = {0xB1, 0xAA, 0x12, 0x00, 7, 9};
        vLINESPEC odd(vLT_USER, vCOLOUR(4, 5, 6), vINT(3), (vCORNERTYPE)1, (vDASHTYPE)0, magic);
        vFILE f;
        odd >> f;
        a >> f;
        EXPECT_EQ(f.CurrentPos(), 48u);
        f.MoveFromStart(0);
        vLINESPEC r1(f), r2(f);
        EXPECT_EQ(PatternOf(r1), (std::vector<int>{0xB1, 0xAA, 0x12, 0x00, 7, 9}));
        EXPECT_TRUE(r1 == odd);
        EXPECT_TRUE(r2 == a);
        EXPECT_EQ(PatternOf(r2), (std::vector<int>{5, 3, 3, 3, 3, 3}));
        EXPECT_EQ(f.CurrentPos(), 48u);
        EXPECT_EQ(f.Status(), vSTREAM_OK);
        EXPECT_TRUE(f.DetectingCompressed());
    }
    // A record cut inside its pattern: the missing bytes read as 0, the
    // status says the data ended, nothing outside the pattern is touched.
    vMEMSTREAM m;
    a >> m;
    unsigned char* buffer = (unsigned char*)vMemAlloc(21);
    memcpy(buffer, m.Buffer(), 21);
    {
        vMEMSTREAM in(&buffer, 21, vSTRING(), 0, 0);
        vLINESPEC r(in);
        EXPECT_EQ(PatternOf(r), (std::vector<int>{5, 3, 3, 0, 0, 0}));
        EXPECT_EQ(r.LineType(), vLT_DASH4);
        EXPECT_EQ(in.Status(), vSTREAM_SHORTREAD);
    }
    vMemFree(buffer);
}
