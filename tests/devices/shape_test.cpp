// vSHAPE as a container (growth, bounding box, closed flag, insertion and
// deletion, adoption, contours, containment) and the point tables of the
// rectangle and ellipse shapes.
#include <windows.h>
#include <gtest/gtest.h>
#include <new>
#include <vector>
#include "rl132/core/vmem.h"
#include "rl132/devices/vdevice.h"
#include "rl132/devices/vshape.h"

namespace {

vBEZPOINT B(long x, long y, unsigned char f) { return vBEZPOINT(vPOINT(vINT(x), vINT(y)), f); }

::testing::AssertionResult Box(const vSHAPE& s, long l, long t, long r, long b)
{
    const vRECT& x = s.BoundBox();
    if (x.left() == l && x.top() == t && x.right() == r && x.bottom() == b)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << x.left() << "," << x.top() << "," << x.right() << ","
                                         << x.bottom() << ")";
}

// The points of a shape as (x, y, flags) triples.
std::vector<long> Table(const vSHAPE& s)
{
    std::vector<long> v;
    for (unsigned short i = 0; i < s.NoPoint(); ++i)
        v.insert(v.end(), {s[i].point.x(), s[i].point.y(), (long)s[i].flags});
    return v;
}

} // namespace

TEST(Shape, GrowsByTenWithBlankPointsInEverySlot)
{
    vSHAPE s;
    EXPECT_EQ(0, s.Capacity());
    for (int i = 0; i < 25; ++i) {
        ASSERT_TRUE(s.AppendPoint(B(i, -i, 0x08)));
        EXPECT_EQ(((i / 10) + 1) * 10, s.Capacity()) << i;
    }
    EXPECT_EQ(25, s.NoPoint());
    // The slots past the points hold real blank points: what is written there
    // stays; past the capacity a scratch point reads blank every time.
    EXPECT_EQ(0, s[29].point.x());
    EXPECT_EQ(0, s[29].flags);
    s[29].flags = 0x20;
    EXPECT_EQ(0x20, s[29].flags);
    s[30].flags = 0x20;
    EXPECT_EQ(0, s[30].flags);

    // A capacity given up front is used before any growth; 16 bits is the end.
    vSHAPE fixed(3);
    EXPECT_EQ(3, fixed.Capacity());
    EXPECT_EQ(0, fixed.NoPoint());
    for (int i = 0; i < 3; ++i)
        fixed.AppendPoint(B(1, 1, 0));
    EXPECT_EQ(3, fixed.Capacity());
    fixed.AppendPoint(B(1, 1, 0));
    EXPECT_EQ(13, fixed.Capacity());

    vSHAPE full(65534);
    for (int i = 0; i < 65535; ++i)
        ASSERT_TRUE(full.AppendPoint(B(i, 0, 0x08))) << i;
    EXPECT_EQ(65535, full.Capacity());
    EXPECT_FALSE(full.AppendPoint(B(0, 0, 0)));
    EXPECT_FALSE(full.InsertPoint(0, B(0, 0, 0)));
    EXPECT_EQ(65535, full.NoPoint());
    EXPECT_TRUE(Box(full, 0, 0, 65534, 0));
}

TEST(Shape, BoundingBoxClosedFlagAndContours)
{
    vSHAPE s;
    EXPECT_TRUE(Box(s, 0, 0, 0, 0));
    s.AppendPoint(B(5, 7, 0x09));   // the first point is the whole box
    EXPECT_TRUE(Box(s, 5, 7, 5, 7));
    s.AppendPoint(B(9, 3, 0x08));
    s.AppendPoint(B(-2, 8, 0x02));   // ends an open contour: not closed
    EXPECT_TRUE(Box(s, -2, 3, 9, 8));
    EXPECT_FALSE(s.Closed());
    EXPECT_EQ(1, s.NoOfContours());
    s.AppendPoint(B(0, 0, 0x09));
    s.AppendPoint(B(1, 0, 0x08));   // a line alone does not close
    EXPECT_FALSE(s.Closed());
    s.AppendPoint(B(1, 1, 0x0A));
    EXPECT_TRUE(s.Closed());
    EXPECT_EQ(2, s.NoOfContours());

    vSHAPE curve;
    curve.AppendPoint(B(0, 0, 0x13));   // a closing curve closes too
    EXPECT_TRUE(curve.Closed());
}

TEST(Shape, InsertAndDeleteKeepOrderAndBox)
{
    vSHAPE s;
    s.AppendPoint(B(0, 0, 0x09));
    s.AppendPoint(B(10, 0, 0x08));
    s.AppendPoint(B(10, 10, 0x0A));
    EXPECT_TRUE(s.Closed());

    EXPECT_TRUE(s.InsertPoint(1, B(5, -20, 0x08)));
    EXPECT_TRUE(s.InsertPoint(4, B(-3, 4, 0x02)));   // at the end
    EXPECT_FALSE(s.InsertPoint(6, B(0, 0, 0)));      // past the end
    EXPECT_EQ((std::vector<long>{0, 0, 9, 5, -20, 8, 10, 0, 8, 10, 10, 10, -3, 4, 2}), Table(s));
    EXPECT_TRUE(Box(s, -3, -20, 10, 10));

    // Deleting works the box and the closed flag out again from what is left.
    EXPECT_TRUE(s.DeletePoint(1));
    EXPECT_TRUE(Box(s, -3, 0, 10, 10));
    EXPECT_TRUE(s.DeletePoint(2));
    EXPECT_FALSE(s.Closed());
    EXPECT_FALSE(s.DeletePoint(3));
    EXPECT_EQ((std::vector<long>{0, 0, 9, 10, 0, 8, -3, 4, 2}), Table(s));
    EXPECT_TRUE(Box(s, -3, 0, 10, 4));
    EXPECT_EQ(10, s.Capacity());
    // The freed slot is a blank spare.
    EXPECT_EQ(0, s[3].flags);
    while (s.NoPoint())
        s.DeletePoint(0);
    EXPECT_TRUE(Box(s, 0, 0, 0, 0));
    EXPECT_TRUE(s.InsertPoint(0, B(4, 4, 0x01)));
    EXPECT_TRUE(Box(s, 4, 4, 4, 4));
}

TEST(Shape, AdoptsTheCallersPointsAndCopiesDeeply)
{
    // Points for adoption come from the library's memory layer, which the
    // shape frees them to.
    vBEZPOINT* given[3];
    const vBEZPOINT src[3] = {B(3, 3, 0x09), B(8, 3, 0x08), B(8, 9, 0x0A)};
    for (int i = 0; i < 3; ++i)
        given[i] = new (vMemAlloc(sizeof(vBEZPOINT))) vBEZPOINT(src[i]);
    {
        vSHAPE s(3, given);
        EXPECT_EQ(3, s.NoPoint());
        EXPECT_EQ(3, s.Capacity());
        EXPECT_TRUE(s.Closed());
        EXPECT_TRUE(Box(s, 0, 0, 0, 0));   // not computed from adopted points
        EXPECT_EQ(given[1], &s[1]);
        EXPECT_EQ(1, s.NoOfContours());
        s.AppendPoint(B(20, -1, 0x09));   // widens the stored box
        EXPECT_TRUE(Box(s, 0, -1, 20, 0));

        vSHAPE copy(s);
        vSHAPE assigned;
        assigned.AppendPoint(B(1, 1, 0));
        assigned = s;
        s[0].point.x = vINT(99L);
        for (const vSHAPE* c : {&copy, &assigned}) {
            EXPECT_EQ((std::vector<long>{3, 3, 9, 8, 3, 8, 8, 9, 10, 20, -1, 9}), Table(*c));
            EXPECT_TRUE(c->Closed());
            EXPECT_TRUE(Box(*c, 0, -1, 20, 0));
        }
    }
}

TEST(Shape, RectangleAndEllipseTables)
{
    vRECTSHAPE r(vRECT(vINT(10L), vINT(20L), vINT(110L), vINT(70L)));
    EXPECT_EQ((std::vector<long>{10, 20, 9, 110, 20, 8, 110, 70, 8, 10, 70, 10}), Table(r));
    EXPECT_TRUE(r.Closed());
    EXPECT_TRUE(Box(r, 10, 20, 110, 70));

    // 100 x 50: control offsets 100 * 0.27614 = 27 and 50 * 0.27614 = 13
    // (truncated); centre (50, 25).
    vELPSSHAPE e(vRECT(vINT(0L), vINT(0L), vINT(100L), vINT(50L)));
    EXPECT_EQ((std::vector<long>{50, 0, 0x11, 77, 0, 0x20, 100, 12, 0x20, 100, 25, 0x10,
                                 100, 38, 0x20, 77, 50, 0x20, 50, 50, 0x10, 23, 50, 0x20,
                                 0, 38, 0x20, 0, 25, 0x12, 0, 12, 0x20, 23, 0, 0x20}),
              Table(e));
    EXPECT_TRUE(e.Closed());
    EXPECT_EQ(1, e.NoOfContours());
    EXPECT_TRUE(Box(e, 0, 0, 100, 50));

    // Odd sizes round the centre up; a rectangle stored right to left keeps
    // its signs (offsets truncate toward zero: -27).
    vELPSSHAPE odd(vRECT(vINT(-7L), vINT(-3L), vINT(0L), vINT(0L)));
    EXPECT_EQ(-3, odd[0].point.x());
    EXPECT_EQ(-1, odd[3].point.y());
    vELPSSHAPE back(vRECT(vINT(100L), vINT(0L), vINT(0L), vINT(50L)));
    EXPECT_EQ(50 - 27, back[1].point.x());
}

TEST(Shape, PointContainment)
{
    vRECTSHAPE r(vRECT(vINT(0L), vINT(0L), vINT(10L), vINT(10L)));
    EXPECT_TRUE(vPOINT(5L, 5L) ^ r);
    EXPECT_TRUE(vPOINT(10L, 3L) ^ r);   // edges count
    EXPECT_TRUE(vPOINT(0L, 0L) ^ r);
    EXPECT_FALSE(vPOINT(11L, 5L) ^ r);
    EXPECT_FALSE(vPOINT(-1L, -1L) ^ r);

    vELPSSHAPE e(vRECT(vINT(0L), vINT(0L), vINT(100L), vINT(50L)));
    EXPECT_TRUE(vPOINT(50L, 25L) ^ e);
    EXPECT_TRUE(vPOINT(2L, 25L) ^ e);
    EXPECT_FALSE(vPOINT(3L, 3L) ^ e);   // the box's corner is outside the ellipse

    // Two contours, one inside the other: the alternate rule leaves a hole.
    vSHAPE ring;
    for (const vBEZPOINT& p : {B(0, 0, 0x09), B(30, 0, 0x08), B(30, 30, 0x08), B(0, 30, 0x0A), B(10, 10, 0x09),
                               B(20, 10, 0x08), B(20, 20, 0x08), B(10, 20, 0x0A)})
        ring.AppendPoint(p);
    EXPECT_TRUE(vPOINT(5L, 15L) ^ ring);
    EXPECT_FALSE(vPOINT(15L, 15L) ^ ring);
    EXPECT_TRUE(vPOINT(20L, 15L) ^ ring);   // on the hole's edge
    EXPECT_FALSE(vPOINT(5L, 5L) ^ vSHAPE());
}

namespace {

// A device that only notes which shape it was asked to draw.
class PROBE : public vDEVICEID {
public:
    explicit PROBE(HDC dc) : vDEVICEID(dc) {}
    int DrawShape(const vSHAPE& s) override
    {
        seen = &s;
        return 7;
    }
    const vSHAPE* seen = nullptr;
};

} // namespace

TEST(Shape, DrawHandsTheShapeToTheDevice)
{
    HDC dc = CreateCompatibleDC(nullptr);
    {
        PROBE device(dc);
        vELPSSHAPE e(vRECT(vINT(0L), vINT(0L), vINT(20L), vINT(10L)));
        EXPECT_EQ(7, e.Draw(device));
        EXPECT_EQ(&e, device.seen);
    }
    DeleteDC(dc);
}
