// Linked lists, queues, stacks and iterators.
//
// The containers hold library objects by address and never own them: removing
// an entry or destroying a container frees only the link. Membership is decided
// by identity (the object's address), never by value. Like every class of the
// library they derive from vOBJECT, so a list can hold lists, queues and stacks.
#ifndef RL132_CONTAINERS_VLIST_H
#define RL132_CONTAINERS_VLIST_H
#include "rl132/core/vobject.h"

class fLIST;

// One entry of a list: its neighbours and the object it refers to.
class RL132_API fLINK : public vOBJECT {
public:
    fLINK(const vOBJECT* object, fLINK* previous = nullptr, fLINK* next = nullptr);
    // Unlinks: the neighbours are joined to each other and both of this link's
    // own pointers are cleared. The object is left alone.
    virtual ~fLINK();

    // 1 when the link refers to that very object.
    int Compare(const vOBJECT& object) const;
    vOBJECT* Object() const;
    fLINK* Previous() const;
    fLINK* Next() const;

private:
    friend class fLIST;
    fLINK(const fLINK&) = delete;
    fLINK& operator=(const fLINK&) = delete;

    fLINK* pPrev;
    fLINK* pNext;
    vOBJECT* pObject;
};

// A doubly linked list of object references.
class RL132_API fLIST : public vOBJECT {
public:
    fLIST();
    // Copies refer to the same objects through links of their own.
    fLIST(const fLIST& list);
    fLIST& operator=(const fLIST& list);
    // Frees every link, head to tail; the objects stay untouched.
    virtual ~fLIST();

    unsigned short NoItems() const;
    int IsEmpty() const;
    // The objects at the head and the tail; null when empty.
    vOBJECT* First() const;
    vOBJECT* Last() const;
    // 1, or 0 when no link could be allocated.
    int Append(const vOBJECT& object);
    int Prepend(const vOBJECT& object);
    // 1 when an entry was removed, 0 when the object is not in the list. With
    // several entries for one object the head goes first, then the tail, then
    // the first match from the front.
    int Remove(const vOBJECT& object);
    // 1 when the object is in the list.
    int Search(const vOBJECT& object) const;
    // The neighbouring links; Next(null) is the head and Prev(null) the tail,
    // so a walk is `for (l = list.Next(nullptr); l; l = list.Next(l))`.
    fLINK* Next(const fLINK* link) const;
    fLINK* Prev(const fLINK* link) const;

private:
    friend class fQUEUE;
    friend class fSTACK;
    // Remove the tail (Pull) or the head (Pop) and return its object; null
    // when the list is empty.
    vOBJECT* Pull();
    vOBJECT* Pop();
    // Takes the link out of the list's ends, destroys it and counts it off.
    void Unlink(fLINK* link);
    void Clear();

    fLINK* pHead;
    fLINK* pTail;
    unsigned short uItems;
};

// First in, first out: Push adds at the head, Pull takes from the tail. A queue
// is a list (so it is a vOBJECT a list can hold) whose general list operations
// are hidden; only the queue's own are offered.
class RL132_API fQUEUE : public fLIST {
public:
    fQUEUE();
    fQUEUE(const fQUEUE& queue);
    fQUEUE& operator=(const fQUEUE& queue);
    virtual ~fQUEUE();

    int Push(const vOBJECT& object);
    // The oldest entry, or null when the queue is empty.
    vOBJECT* Pull();
    // Top is the entry that leaves next (the oldest); Bottom the newest. Both
    // stay in the queue; null when it is empty.
    vOBJECT* Top() const;
    vOBJECT* Bottom() const;
    int IsEmpty() const;
    unsigned short NoItems() const;
    int Remove(const vOBJECT& object);
    // Walks from the newest entry (Next(null)) towards the oldest.
    fLINK* Next(const fLINK* link) const;

private:
    using fLIST::Append;
    using fLIST::Prepend;
    using fLIST::First;
    using fLIST::Last;
    using fLIST::Search;
    using fLIST::Prev;
};

// Last in, first out: Push and Pop both work at the head. A list with the
// general list operations hidden, like the queue.
class RL132_API fSTACK : public fLIST {
public:
    fSTACK();
    fSTACK(const fSTACK& stack);
    fSTACK& operator=(const fSTACK& stack);
    virtual ~fSTACK();

    int Push(const vOBJECT& object);
    // The newest entry, or null when the stack is empty.
    vOBJECT* Pop();
    // The newest entry, left in place.
    vOBJECT* Top() const;
    int IsEmpty() const;
    unsigned short NoItems() const;
    // Walks from the top (Next(null)) downwards.
    fLINK* Next(const fLINK* link) const;

private:
    using fLIST::Append;
    using fLIST::Prepend;
    using fLIST::First;
    using fLIST::Last;
    using fLIST::Remove;
    using fLIST::Search;
    using fLIST::Prev;
};

// A cursor over links: a position index and the current link.
class RL132_API ITERATOR : public vOBJECT {
public:
    ITERATOR();
    ITERATOR(const ITERATOR& it);
    // Places the cursor on a link; the index is left as it is.
    void SetLink(fLINK* link);
    fLINK* GetLink() const;
    // Index + 1 and on to the next link (null past the tail).
    ITERATOR& Next();
    // Index - 1 and back to the previous link (null before the head).
    ITERATOR& Previous();
    // Equal when both the link and the index agree.
    int operator==(const ITERATOR& it) const;
    unsigned short operator()() const;
    // Index 0 and no link: SetLink again before walking.
    void Reset();
    ITERATOR& operator=(const ITERATOR& it);

private:
    unsigned short uIndex;
    fLINK* pLink;
};

#endif
