// fLIST against a vector model (copies, queues, stacks and lists held in lists: tests/native).
#include <gtest/gtest.h>
#include <algorithm>
#include <random>
#include <vector>
#include "rl132.h"

namespace {
struct Item : vOBJECT { int id = 0; };
int Id(vOBJECT* o) { return o ? static_cast<Item*>(o)->id : -1; }
std::vector<int> Walk(const fLIST& list, bool forward)
{
    std::vector<int> ids;
    for (fLINK* l = forward ? list.Next(nullptr) : list.Prev(nullptr); l; l = forward ? list.Next(l) : list.Prev(l))
        ids.push_back(Id(l->Object()));
    return ids;
}
} // namespace

TEST(List, AgreesWithAVectorUnderRandomOperations)
{
    // Removal takes the head if it matches, else the tail, else the first match from the front.
    Item items[5];
    for (int i = 0; i < 5; ++i)
        items[i].id = i;
    std::mt19937 rng(21);
    fLIST list;
    std::vector<int> model;
    int tailFirst = 0;   // removals where the tail goes before an earlier match
    for (int step = 0; step < 3000; ++step) {
        int k = (int)(rng() % 5);
        unsigned op = rng() % 6;
        if (op < 2) {
            ASSERT_EQ(list.Append(items[k]), 1);
            model.push_back(k);
        } else if (op == 2) {
            ASSERT_EQ(list.Prepend(items[k]), 1);
            model.insert(model.begin(), k);
        } else {
            size_t at = std::find(model.begin(), model.end(), k) - model.begin();
            if (at != 0 && !model.empty() && model.back() == k) {
                tailFirst += at != model.size() - 1;
                at = model.size() - 1;
            }
            int found = at < model.size();
            if (found)
                model.erase(model.begin() + at);
            ASSERT_EQ(list.Remove(items[k]), found) << "step " << step;
        }
        ASSERT_TRUE(list.NoItems() == model.size() && Walk(list, true) == model);
        ASSERT_EQ(Walk(list, false), std::vector<int>(model.rbegin(), model.rend()));
        ASSERT_TRUE(list.Search(items[k]) == (std::count(model.begin(), model.end(), k) > 0 ? 1 : 0) &&
                    Id(list.Last()) == (model.empty() ? -1 : model.back()));
    }
    EXPECT_GT(tailFirst, 30);
}
