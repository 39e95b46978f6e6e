// The containers with every block from the C heap.
#include <gtest/gtest.h>
#include <cstring>
#include <vector>
#include "rl132/containers/vcollect.h"
#include "rl132/containers/vlist.h"
#include "rl132/core/vstring.h"
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
