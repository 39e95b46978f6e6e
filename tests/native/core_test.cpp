// The core frame, strings and containers with every block from the C heap.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include <vector>
#include "rl132/containers/vcollect.h"
#include "rl132/containers/vlist.h"
#include "rl132/core/vstring.h"
#include "rl132/platform/vsystem.h"
#include "core/rlframe.h"
#include "native_support.h"

using namespace rlnative;

namespace {

TEST(NativeCore, CollectionsStayInsideExactCallerBuffers)
{
    // Regression: 16 bytes took 8 points before, 16 bytes past the block. Values
    // already held (two to a point) leave less room; counts beyond the capacity, none.
    for (unsigned short held : {0, 2, 8, 30})
        for (unsigned short capacity = 0; capacity <= 40; ++capacity) {
            Exact block(capacity ? capacity : 1);
            std::memset(block.p, 0, block.n);
            vCOLLECTION c(block.p, vARRAY_POINT, capacity, held);
            int added = 0;
            while (added < 100 && c.AddPoint(vPOINT((long)added, (long)-added)))
                ++added;
            EXPECT_EQ(added, capacity / 4 > held / 2 ? capacity / 4 - held / 2 : 0) << capacity << " " << held;
            for (unsigned short n = 0; held == 0 && n < 30; ++n)
                ASSERT_EQ(c.GetPoint(n).x(), n < added ? n : 0) << capacity << " " << n;
        }
    // Words read as 16-bit pairs but take no points.
    short words[6] = {1, -2, 300, -32768, 32767, 0};
    vCOLLECTION w((unsigned char*)words, vARRAY_UWORD, sizeof words, 6);
    EXPECT_TRUE(w.GetPoint(1) == vPOINT(300L, -32768L) && w.AddPoint(vPOINT(5L, 5L)) == 0);
}

TEST(NativeCore, StringsFormatAndCutWithinTheirBuffers)
{
    rlframe::Start(nullptr);   // the entry steps, against the native profile's defaults
    EXPECT_TRUE(vSYSTEM::GetTraceLevel() == 0 && vSYSTEM::CheckHeap() == 0);
    // Extracted text is formatted again with zeros behind every directive.
    const struct { const char* text; const char* want; } bare[] = {
        {"a%db", "a0b"}, {"%5d|", "    0|"}, {"%-3x|", "0  |"}, {"%s", "(null)"}, {"%%", "%"},
        {"x%cy", "x"}, {"%.2s|", "(n|"}, {"%", ""}, {"%l", ""}, {"%04X", "0000"},
    };
    for (const auto& b : bare) {
        vSTRING s("%s", b.text);
        EXPECT_STREQ(s.GetSubString(0, 0xFFFF)(), b.want) << b.text;
    }
    // Widths far beyond the scratch buffer are cut at its end.
    vSTRING wide("%s", "%99999d");
    EXPECT_EQ(wide.GetSubString(0, 100).Length(), 1023);
    vSTRING big;
    big = std::string(70000, 'x').c_str();
    EXPECT_TRUE(big.Length() == 65535 && (big + vSTRING("tail")).Length() == 65535);
    Rng rng(7);
    for (int i = 0; i < 1000; ++i) {
        std::string t;
        for (unsigned n = rng.Below(40); n; --n)
            t += " ,;a%d"[rng.Below(6)];
        vSTRING s;
        s = t.c_str();
        char c = ",; "[rng.Below(3)];
        unsigned short k = (unsigned short)rng.Below(6);
        s.GetDelimitedSubString(vCHAR(c), k), s.GetPreDelimitedSubString(vCHAR(c), k), s.Word(k);
        s.GetSubString((unsigned short)rng.Below(45), (unsigned short)rng.Below(45));
        s.RemoveLeadAndTrailing(vCHAR(c)), s.StripLTChar(vCHAR(c)), s.RemoveFromEnd(vCHAR(c));
        s.Char((unsigned short)rng.Below(45), vCHAR('z'));
        ASSERT_LE(s.Length(), t.size() + 1);
    }
}

TEST(NativeCore, ListsHoldListsAndFreeOnlyTheirLinks)
{
    fLIST outer;
    std::vector<fLIST*> inner;
    for (int i = 0; i < 50; ++i) {
        inner.push_back(new fLIST);
        inner.back()->Append(outer);
        ASSERT_EQ(outer.Append(*inner.back()), 1);
    }
    // Regression: the containers did not derive from vOBJECT, so none could be put in a list.
    fQUEUE queue;
    fSTACK stack;
    fLIST a, b, c;
    for (fLIST* i : {&a, &b, &c})
        queue.Push(*i), stack.Push(*i);
    EXPECT_TRUE(queue.Bottom() == &c && queue.Remove(b) == 1 && queue.Pull() == &a && stack.Top() == &c);  // bottom: the newest
    EXPECT_TRUE(stack.Pop() == &c && stack.Pop() == &b && stack.Pop() == &a && stack.Pop() == nullptr);
    EXPECT_EQ(queue.NoItems(), 1);
    ASSERT_EQ(outer.Prepend(queue), 1);
    ASSERT_EQ(outer.Prepend(stack), 1);
    fLIST copy(outer);
    for (fLIST* l : inner) {
        EXPECT_EQ(outer.Remove(*l), 1);
        delete l;   // the copy's links still name it: links never reach their objects
    }
    EXPECT_TRUE(outer.NoItems() == 2 && copy.NoItems() == 52);
}

} // namespace
