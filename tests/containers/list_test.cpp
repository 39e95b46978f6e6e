#include <gtest/gtest.h>
#include <algorithm>
#include <random>
#include <vector>
#include "rl132.h"

namespace {

// Objects the containers refer to; each knows its number and notices when it
// is destroyed, which the containers must never do.
struct Item : vOBJECT {
    int id = 0;
    bool* destroyed = nullptr;
    ~Item()
    {
        if (destroyed)
            *destroyed = true;
    }
};

int Id(vOBJECT* o) { return o ? static_cast<Item*>(o)->id : -1; }

std::vector<int> Forward(const fLIST& list)
{
    std::vector<int> ids;
    for (fLINK* l = list.Next(nullptr); l; l = list.Next(l))
        ids.push_back(Id(l->Object()));
    return ids;
}

std::vector<int> Backward(const fLIST& list)
{
    std::vector<int> ids;
    for (fLINK* l = list.Prev(nullptr); l; l = list.Prev(l))
        ids.push_back(Id(l->Object()));
    return ids;
}

} // namespace

TEST(List, AppendPrependAndIdentity)
{
    Item a, b, c;
    a.id = 1, b.id = 2, c.id = 3;
    fLIST list;
    EXPECT_EQ(list.IsEmpty(), 1);
    EXPECT_EQ(list.First(), nullptr);
    EXPECT_EQ(list.Last(), nullptr);
    EXPECT_EQ(list.Remove(a), 0);
    EXPECT_EQ(list.Next(nullptr), nullptr);

    EXPECT_EQ(list.Append(b), 1);
    EXPECT_EQ(list.Prepend(a), 1);
    EXPECT_EQ(list.Append(c), 1);
    EXPECT_EQ(list.IsEmpty(), 0);
    EXPECT_EQ(Forward(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Backward(list), (std::vector<int>{3, 2, 1}));

    // Membership is identity: an equal-looking object is not in the list.
    Item twin;
    twin.id = 2;
    EXPECT_EQ(list.Search(b), 1);
    EXPECT_EQ(list.Search(twin), 0);
    EXPECT_EQ(list.Remove(twin), 0);
    EXPECT_EQ(list.NoItems(), 3);
    EXPECT_EQ(list.Next(nullptr)->Compare(a), 1);
    EXPECT_EQ(list.Next(nullptr)->Compare(twin), 0);

    // Copies share the objects but not the links.
    fLIST copy(list);
    EXPECT_EQ(Forward(copy), Forward(list));
    EXPECT_NE(copy.Next(nullptr), list.Next(nullptr));
    EXPECT_EQ(copy.Remove(b), 1);
    EXPECT_EQ(list.NoItems(), 3);
    fLIST assigned;
    assigned.Append(c);
    assigned = copy;
    EXPECT_EQ(Forward(assigned), (std::vector<int>{1, 3}));
    assigned = assigned;
    EXPECT_EQ(Forward(assigned), (std::vector<int>{1, 3}));
}

TEST(List, RemovalOrderWithDuplicates)
{
    Item a, b, c;
    a.id = 1, b.id = 2, c.id = 3;
    fLIST list;
    list.Append(a);
    list.Append(a);
    EXPECT_EQ(list.Remove(a) + list.Remove(a), 2);
    EXPECT_EQ(list.Remove(a), 0);
    EXPECT_EQ(list.IsEmpty(), 1);

    // Head first, then tail, then the first match from the front.
    for (Item* i : {&b, &a, &c, &a, &b, &a, &c})
        list.Append(*i);
    // Remove(a): head is b, tail c, so the first inner a goes.
    EXPECT_EQ(list.Remove(a), 1);
    EXPECT_EQ(Forward(list), (std::vector<int>{2, 3, 1, 2, 1, 3}));
    // Remove(c): the tail goes, not the earlier c.
    EXPECT_EQ(list.Remove(c), 1);
    EXPECT_EQ(Forward(list), (std::vector<int>{2, 3, 1, 2, 1}));
    // Remove(a): the tail is now a.
    EXPECT_EQ(list.Remove(a), 1);
    EXPECT_EQ(Forward(list), (std::vector<int>{2, 3, 1, 2}));
    // Remove(b): the head.
    EXPECT_EQ(list.Remove(b), 1);
    EXPECT_EQ(Forward(list), (std::vector<int>{3, 1, 2}));
    EXPECT_EQ(Backward(list), (std::vector<int>{2, 1, 3}));
    EXPECT_EQ(list.NoItems(), 3);
}

TEST(List, AgreesWithAModelUnderRandomOperations)
{
    // The model applies the removal rule by positions in a vector; the links
    // must agree in both directions and in their count after every step.
    Item items[5];
    for (int i = 0; i < 5; ++i)
        items[i].id = i;
    std::mt19937 rng(21);
    std::uniform_int_distribution<int> op(0, 5), which(0, 4);
    fLIST list;
    std::vector<int> model;
    for (int step = 0; step < 5000; ++step) {
        int k = which(rng);
        switch (op(rng)) {
        case 0:
        case 1:
            ASSERT_EQ(list.Append(items[k]), 1);
            model.push_back(k);
            break;
        case 2:
            ASSERT_EQ(list.Prepend(items[k]), 1);
            model.insert(model.begin(), k);
            break;
        default: {
            int expected = 0;
            if (!model.empty()) {
                size_t at = model.size();
                if (model.front() == k)
                    at = 0;
                else if (model.back() == k)
                    at = model.size() - 1;
                else
                    at = std::find(model.begin(), model.end(), k) - model.begin();
                if (at < model.size()) {
                    model.erase(model.begin() + at);
                    expected = 1;
                }
            }
            ASSERT_EQ(list.Remove(items[k]), expected);
            break;
        }
        }
        ASSERT_EQ(list.NoItems(), model.size());
        ASSERT_EQ(Forward(list), model);
        std::vector<int> reversed(model.rbegin(), model.rend());
        ASSERT_EQ(Backward(list), reversed);
        ASSERT_EQ(list.Search(items[k]), std::count(model.begin(), model.end(), k) > 0 ? 1 : 0);
        ASSERT_EQ(Id(list.First()), model.empty() ? -1 : model.front());
        ASSERT_EQ(Id(list.Last()), model.empty() ? -1 : model.back());
    }
}

TEST(List, ContainersNeverOwn)
{
    bool gone[3] = {false, false, false};
    Item* items = new Item[3];
    for (int i = 0; i < 3; ++i)
        items[i].destroyed = &gone[i];
    {
        fLIST list;
        fQUEUE queue;
        fSTACK stack;
        for (int i = 0; i < 3; ++i) {
            list.Append(items[i]);
            queue.Push(items[i]);
            stack.Push(items[i]);
        }
        list.Remove(items[1]);
        queue.Remove(items[0]);
    }
    EXPECT_FALSE(gone[0] || gone[1] || gone[2]);
    for (int i = 0; i < 3; ++i)
        items[i].destroyed = nullptr;
    delete[] items;
}

TEST(List, LinksRepairTheirNeighbours)
{
    Item a, b, c;
    fLINK* first = new fLINK(&a);
    fLINK* last = new fLINK(&c);
    // The constructor only records its neighbours; its destructor joins them.
    fLINK* middle = new fLINK(&b, first, last);
    EXPECT_EQ(first->Next(), nullptr);
    EXPECT_EQ(middle->Object(), &b);
    EXPECT_EQ(middle->Compare(b), 1);
    delete middle;
    EXPECT_EQ(first->Next(), last);
    EXPECT_EQ(last->Previous(), first);
    delete first;
    EXPECT_EQ(last->Previous(), nullptr);
    EXPECT_EQ(last->Object(), &c);
    delete last;
}

TEST(List, QueueAndStackOrder)
{
    Item a, b, c;
    a.id = 1, b.id = 2, c.id = 3;
    fQUEUE queue;
    EXPECT_EQ(queue.Pull(), nullptr);
    EXPECT_EQ(queue.Top(), nullptr);
    EXPECT_EQ(queue.Bottom(), nullptr);
    queue.Push(a);
    queue.Push(b);
    queue.Push(c);
    EXPECT_EQ(queue.NoItems(), 3);
    EXPECT_EQ(queue.Top(), &a);      // the next to leave
    EXPECT_EQ(queue.Bottom(), &c);   // the newest
    EXPECT_EQ(Id(queue.Next(nullptr)->Object()), 3);
    fQUEUE queueCopy(queue);
    EXPECT_EQ(queue.Pull(), &a);
    EXPECT_EQ(queue.Pull(), &b);
    EXPECT_EQ(queue.Pull(), &c);
    EXPECT_EQ(queue.Pull(), nullptr);
    EXPECT_EQ(queue.IsEmpty(), 1);
    EXPECT_EQ(queueCopy.NoItems(), 3);
    EXPECT_EQ(queueCopy.Remove(b), 1);
    EXPECT_EQ(queueCopy.Pull(), &a);
    EXPECT_EQ(queueCopy.Pull(), &c);

    fSTACK stack;
    EXPECT_EQ(stack.Pop(), nullptr);
    EXPECT_EQ(stack.Top(), nullptr);
    stack.Push(a);
    stack.Push(b);
    stack.Push(c);
    EXPECT_EQ(stack.Top(), &c);
    fSTACK saved;
    saved = stack;
    EXPECT_EQ(stack.Pop(), &c);
    EXPECT_EQ(stack.Pop(), &b);
    EXPECT_EQ(stack.Pop(), &a);
    EXPECT_EQ(stack.Pop(), nullptr);
    EXPECT_EQ(stack.IsEmpty(), 1);
    EXPECT_EQ(saved.NoItems(), 3);
    EXPECT_EQ(Id(saved.Next(nullptr)->Object()), 3);
    EXPECT_EQ(saved.Pop(), &c);
}

TEST(List, IteratorWalksBothWays)
{
    Item items[4];
    fLIST list;
    for (int i = 0; i < 4; ++i) {
        items[i].id = 10 + i;
        list.Append(items[i]);
    }
    ITERATOR it;
    EXPECT_EQ(it(), 0);
    EXPECT_EQ(it.GetLink(), nullptr);
    it.SetLink(list.Next(nullptr));
    std::vector<int> seen;
    for (; it.GetLink(); it.Next())
        seen.push_back(Id(it.GetLink()->Object()));
    EXPECT_EQ(seen, (std::vector<int>{10, 11, 12, 13}));
    EXPECT_EQ(it(), 4);
    it.Next();   // past the tail the link stays null
    EXPECT_EQ(it.GetLink(), nullptr);
    EXPECT_EQ(it(), 5);

    ITERATOR back;
    back.SetLink(list.Prev(nullptr));
    back.Previous();
    EXPECT_EQ(Id(back.GetLink()->Object()), 12);
    EXPECT_EQ(back(), 0xFFFF);
    ITERATOR same(back);
    EXPECT_TRUE(same == back);
    same.Next();
    EXPECT_FALSE(same == back);
    same = back;
    EXPECT_TRUE(same == back);
    back.Reset();
    EXPECT_EQ(back(), 0);
    EXPECT_EQ(back.GetLink(), nullptr);
}
