// Text block placement: blocks that fit land where the alignment says; extremes stay defined.
#include <gtest/gtest.h>
#include <algorithm>
#include <vector>
#include "devices/textlayout.h"
#include "native_support.h"

using namespace rlnative;
using namespace rltext;

namespace {

struct BOX {
    long long x0, y0, x1, y1;   // pixels x0..x1-1, y0..y1-1
};

// The lines' bounding box, each a width × lineHeight cell turned about its reference point.
BOX Covered(const LAYOUTIN& in, const std::vector<LINEPOS>& pos, int quarter)
{
    BOX b = {1LL << 62, 1LL << 62, -(1LL << 62), -(1LL << 62)};
    for (int i = 0; i < in.count; ++i) {
        long long w = in.widths[i] + pos[i].extra, h = in.lineHeight, x = pos[i].x, y = pos[i].y;
        long long cx0, cy0, cx1, cy1;
        switch (quarter) {
        case 0: cx0 = x, cy0 = y, cx1 = x + w, cy1 = y + h; break;
        case 1: cx0 = x, cy0 = y - w, cx1 = x + h, cy1 = y; break;       // up
        case 2: cx0 = x - w, cy0 = y - h, cx1 = x, cy1 = y; break;       // upside down
        default: cx0 = x - h, cy0 = y, cx1 = x, cy1 = y + w; break;      // down
        }
        b.x0 = std::min(b.x0, cx0), b.y0 = std::min(b.y0, cy0);
        b.x1 = std::max(b.x1, cx1), b.y1 = std::max(b.y1, cy1);
    }
    return b;
}

TEST(NativeTextLayout, BlocksThatFitLandInside)
{
    Rng rng(99);
    for (int iter = 0; iter < 10000; ++iter) {
        int quarter = (int)rng.Below(4);
        LAYOUTIN in;
        AngleVector(quarter * 900 + 3600 * ((int)rng.Below(3) - 1), &in.cos16, &in.sin16);
        in.count = 1 + (int)rng.Below(5);
        in.lineHeight = 1 + (int)rng.Below(40);
        in.ascent = (int)rng.Below((unsigned)in.lineHeight + 1);
        std::vector<std::int32_t> widths(in.count);
        for (auto& w : widths)
            w = (int)rng.Below(300);
        in.widths = widths.data();
        in.h = (HALIGN)rng.Below(4), in.v = (VALIGN)rng.Below(3);
        long long blockW = *std::max_element(widths.begin(), widths.end());
        long long blockH = (long long)in.lineHeight * in.count;
        bool side = quarter % 2 == 1;
        long long needW = side ? blockH : blockW, needH = side ? blockW : blockH;
        in.left = (int)rng.Below(2000) - 1000, in.top = (int)rng.Below(2000) - 1000;
        in.right = (int)(in.left + needW + rng.Below(50));
        in.bottom = (int)(in.top + needH + rng.Below(50));
        std::vector<LINEPOS> pos(in.count);
        LayOut(in, pos.data());
        if (in.h == H_JUSTIFY && quarter == 0)
            needW = in.right - in.left + 1;
        BOX b = Covered(in, pos, quarter);
        SCOPED_TRACE(testing::Message() << "iteration " << iter << " quarter " << quarter);
        ASSERT_TRUE(b.x1 - b.x0 == needW && b.y1 - b.y0 == needH);
        ASSERT_TRUE(b.x0 >= in.left && b.x1 <= in.right + 1LL && b.y0 >= in.top && b.y1 <= in.bottom + 1LL);
        long long spareX = in.right + 1LL - in.left - needW, spareY = in.bottom + 1LL - in.top - needH;
        long long wantX = in.h == H_CENTRE ? in.left + spareX / 2 : in.h == H_RIGHT ? in.left + spareX : in.left;
        long long wantY = in.v == V_MIDDLE ? in.top + spareY / 2 : in.v == V_BOTTOM ? in.top + spareY : in.top;
        ASSERT_TRUE(b.x0 == wantX && b.y0 == wantY);
    }
}

TEST(NativeTextLayout, ExtremeInputsStayDefined)
{
    Rng rng(5);
    for (int iter = 0; iter < 10000; ++iter) {
        LAYOUTIN in;
        AngleVector((std::int32_t)rng.Edgy(), &in.cos16, &in.sin16);
        ASSERT_LE((long long)in.cos16 * in.cos16 + (long long)in.sin16 * in.sin16, 65537LL * 65537LL);
        in.count = 1 + (int)rng.Below(4);
        in.lineHeight = (std::int32_t)(rng.Below(65536));
        in.ascent = (std::int32_t)rng.Below(65536);
        std::vector<std::int32_t> widths(in.count);
        for (auto& w : widths)
            w = (std::int32_t)rng.Below(1u << 20);
        in.widths = widths.data();
        in.h = (HALIGN)rng.Below(4), in.v = (VALIGN)rng.Below(4);
        auto edge = [&] { return (std::int32_t)(rng.Below(1u << 24)) - (1 << 23); };
        in.left = edge(), in.top = edge(), in.right = edge(), in.bottom = edge();
        std::vector<LINEPOS> pos(in.count);
        LayOut(in, pos.data());
    }
    LAYOUTIN none = {};
    LayOut(none, nullptr);   // no lines: nothing written
}

} // namespace
