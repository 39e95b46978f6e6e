// Linked lists, queues, stacks and iterators over object references.
#include "rl132/containers/vlist.h"

// ---------------------------------------------------------------- fLINK

fLINK::fLINK(const vOBJECT* object, fLINK* previous, fLINK* next)
    : pPrev(previous), pNext(next), pObject(const_cast<vOBJECT*>(object))
{
}

fLINK::~fLINK()
{
    if (pNext)
        pNext->pPrev = pPrev;
    if (pPrev)
        pPrev->pNext = pNext;
    pPrev = nullptr;
    pNext = nullptr;
}

int fLINK::Compare(const vOBJECT& object) const { return pObject == &object ? 1 : 0; }
vOBJECT* fLINK::Object() const { return pObject; }
fLINK* fLINK::Previous() const { return pPrev; }
fLINK* fLINK::Next() const { return pNext; }

// ---------------------------------------------------------------- fLIST

fLIST::fLIST() : pHead(nullptr), pTail(nullptr), uItems(0) {}

fLIST::fLIST(const fLIST& list) : vOBJECT(), pHead(nullptr), pTail(nullptr), uItems(0)
{
    for (fLINK* l = list.pHead; l; l = l->pNext)
        if (!Append(*l->pObject))
            break;
}

fLIST& fLIST::operator=(const fLIST& list)
{
    if (&list == this)
        return *this;
    Clear();
    for (fLINK* l = list.pHead; l; l = l->pNext)
        if (!Append(*l->pObject))
            break;
    return *this;
}

fLIST::~fLIST() { Clear(); }

void fLIST::Clear()
{
    while (pHead) {
        fLINK* l = pHead;
        pHead = l->pNext;
        delete l;
    }
    pTail = nullptr;
    uItems = 0;
}

unsigned short fLIST::NoItems() const { return uItems; }
int fLIST::IsEmpty() const { return pHead ? 0 : 1; }
vOBJECT* fLIST::First() const { return pHead ? pHead->pObject : nullptr; }
vOBJECT* fLIST::Last() const { return pTail ? pTail->pObject : nullptr; }

int fLIST::Append(const vOBJECT& object)
{
    // The count is 16-bit: a list that cannot count another entry refuses it.
    if (uItems == 0xFFFF)
        return 0;
    fLINK* l = new fLINK(&object, pTail, nullptr);
    if (!l)
        return 0;
    if (pTail)
        pTail->pNext = l;
    else
        pHead = l;
    pTail = l;
    ++uItems;
    return 1;
}

int fLIST::Prepend(const vOBJECT& object)
{
    if (uItems == 0xFFFF)
        return 0;
    fLINK* l = new fLINK(&object, nullptr, pHead);
    if (!l)
        return 0;
    if (pHead)
        pHead->pPrev = l;
    else
        pTail = l;
    pHead = l;
    ++uItems;
    return 1;
}

void fLIST::Unlink(fLINK* l)
{
    if (l == pHead)
        pHead = l->pNext;
    if (l == pTail)
        pTail = l->pPrev;
    // The link's destructor joins its neighbours.
    delete l;
    --uItems;
}

int fLIST::Remove(const vOBJECT& object)
{
    if (!pHead)
        return 0;
    // The ends are tried before the inside: with duplicates the head entry
    // goes first, then the tail entry, then the first match from the front.
    if (pHead->Compare(object)) {
        Unlink(pHead);
        return 1;
    }
    if (pTail->Compare(object)) {
        Unlink(pTail);
        return 1;
    }
    for (fLINK* l = pHead->pNext; l; l = l->pNext) {
        if (l->Compare(object)) {
            Unlink(l);
            return 1;
        }
    }
    return 0;
}

int fLIST::Search(const vOBJECT& object) const
{
    for (fLINK* l = pHead; l; l = l->pNext)
        if (l->Compare(object))
            return 1;
    return 0;
}

fLINK* fLIST::Next(const fLINK* link) const { return link ? link->pNext : pHead; }
fLINK* fLIST::Prev(const fLINK* link) const { return link ? link->pPrev : pTail; }

vOBJECT* fLIST::Pull()
{
    if (!pTail)
        return nullptr;
    vOBJECT* object = pTail->pObject;
    Unlink(pTail);
    return object;
}

vOBJECT* fLIST::Pop()
{
    if (!pHead)
        return nullptr;
    vOBJECT* object = pHead->pObject;
    Unlink(pHead);
    return object;
}

// ---------------------------------------------------------------- fQUEUE

fQUEUE::fQUEUE() {}
fQUEUE::fQUEUE(const fQUEUE& queue) : fLIST(queue) {}
fQUEUE& fQUEUE::operator=(const fQUEUE& queue)
{
    fLIST::operator=(queue);
    return *this;
}
fQUEUE::~fQUEUE() {}

int fQUEUE::Push(const vOBJECT& object) { return Prepend(object); }
vOBJECT* fQUEUE::Pull() { return fLIST::Pull(); }
vOBJECT* fQUEUE::Top() const { return Last(); }
vOBJECT* fQUEUE::Bottom() const { return First(); }
int fQUEUE::IsEmpty() const { return fLIST::IsEmpty(); }
unsigned short fQUEUE::NoItems() const { return fLIST::NoItems(); }
int fQUEUE::Remove(const vOBJECT& object) { return fLIST::Remove(object); }
fLINK* fQUEUE::Next(const fLINK* link) const { return fLIST::Next(link); }

// ---------------------------------------------------------------- fSTACK

fSTACK::fSTACK() {}
fSTACK::fSTACK(const fSTACK& stack) : fLIST(stack) {}
fSTACK& fSTACK::operator=(const fSTACK& stack)
{
    fLIST::operator=(stack);
    return *this;
}
fSTACK::~fSTACK() {}

int fSTACK::Push(const vOBJECT& object) { return Prepend(object); }
vOBJECT* fSTACK::Pop() { return fLIST::Pop(); }
vOBJECT* fSTACK::Top() const { return First(); }
int fSTACK::IsEmpty() const { return fLIST::IsEmpty(); }
unsigned short fSTACK::NoItems() const { return fLIST::NoItems(); }
fLINK* fSTACK::Next(const fLINK* link) const { return fLIST::Next(link); }

// ---------------------------------------------------------------- ITERATOR

ITERATOR::ITERATOR() : uIndex(0), pLink(nullptr) {}
ITERATOR::ITERATOR(const ITERATOR& it) : vOBJECT(), uIndex(it.uIndex), pLink(it.pLink) {}
void ITERATOR::SetLink(fLINK* link) { pLink = link; }
fLINK* ITERATOR::GetLink() const { return pLink; }

ITERATOR& ITERATOR::Next()
{
    ++uIndex;
    if (pLink)
        pLink = pLink->Next();
    return *this;
}

ITERATOR& ITERATOR::Previous()
{
    --uIndex;
    if (pLink)
        pLink = pLink->Previous();
    return *this;
}

int ITERATOR::operator==(const ITERATOR& it) const { return uIndex == it.uIndex && pLink == it.pLink; }
unsigned short ITERATOR::operator()() const { return uIndex; }

void ITERATOR::Reset()
{
    uIndex = 0;
    pLink = nullptr;
}

ITERATOR& ITERATOR::operator=(const ITERATOR& it)
{
    uIndex = it.uIndex;
    pLink = it.pLink;
    return *this;
}
