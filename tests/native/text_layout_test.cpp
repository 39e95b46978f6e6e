// Text block placement stays defined for any input (placement itself is pinned by the drawn text).
#include <gtest/gtest.h>
#include <algorithm>
#include <vector>
#include "devices/textlayout.h"
#include "native_support.h"

using namespace rlnative;
using namespace rltext;

namespace {

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
