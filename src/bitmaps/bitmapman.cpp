// Bitmap resources, the shared file-name records and the bitmap manager
// (see rl132/bitmaps/vbitmapman.h).
#include <windows.h>
#include "rl132/bitmaps/vbitmapman.h"
#include "bitmaps/bitmapman.h"
#include "bitmaps/bmread.h"
#include "bitmaps/bmrecord.h"
#include "core/rlstate.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vpageout.h"
#include "rl132/core/vtrace.h"
#include "rl132/streams/vfile.h"

// ---------------------------------------------------------------- counted objects

vRESOURCE::vRESOURCE() : refCount(0) {}

vRESOURCE::~vRESOURCE()
{
    vTrace(2, "Destruct vRESOURCE");
}

// ---------------------------------------------------------------- file names

REFSTRING*& REFSTRING::Head(KIND k)
{
    return k == PHOTOVOLUME ? rlstate::bmState.volumes : rlstate::bmState.files;
}

REFSTRING::REFSTRING(KIND k, const vSTRING& n)
    : name(n), next(Head(k)), prev(nullptr), stream(nullptr), streamAlive(0), kind(k)
{
    if (next)
        next->prev = this;
    Head(k) = this;
}

REFSTRING::~REFSTRING()
{
    SetStream(nullptr);
    if (prev)
        prev->next = next;
    else
        Head(kind) = next;
    if (next)
        next->prev = prev;
    if (rlstate::bmState.lastFile == this)
        rlstate::bmState.lastFile = nullptr;
    // No bitmap comes back from this file any more: the shared re-read file
    // lets go of it, so that the application can write it again.
    vFILE*& reread = rlstate::bmState.rereadFile;
    if (kind == BITMAPFILE && reread && reread->Name() == name) {
        delete reread;
        reread = nullptr;
    }
    // Written whatever the trace level.
    vTrace(0, "REFSTRING is destoyed");
}

REFSTRING* REFSTRING::Acquire(KIND k, const vSTRING& n)
{
    REFSTRING* found = nullptr;
    REFSTRING* last = rlstate::bmState.lastFile;
    if (k == BITMAPFILE && last && last->name == n)
        found = last;
    for (REFSTRING* r = Head(k); !found && r; r = r->next)
        if (r->name == n)
            found = r;
    if (!found && (found = new REFSTRING(k, n)) == nullptr)
        return nullptr;
    if (k == BITMAPFILE)
        rlstate::bmState.lastFile = found;
    found->AddRef();
    return found;
}

void REFSTRING::Release()
{
    if (DropRef() == 0)
        delete this;
}

void REFSTRING::SetStream(vSTREAM* s)
{
    if (s == stream && streamAlive)
        return;
    // The stream clears streamAlive when it goes; a stream let go must not
    // write into this record afterwards.
    if (stream && streamAlive)
        stream->Attach(nullptr);
    stream = s;
    streamAlive = s != nullptr;
    if (s)
        s->Attach(&streamAlive);
}

// ---------------------------------------------------------------- strips

gdiRESOURCE::gdiRESOURCE() : pageable(1), table(&one), count(0), outPrev(nullptr), outNext(nullptr), pagedOut(0)
{
    one.bitmap = nullptr;
    one.rows = 0;
}

gdiRESOURCE::~gdiRESOURCE()
{
    vTrace(2, "gdiRESOURCE::~ No References");
    DeleteStrips();
    if (table != &one)
        vMemFree(table);
}

unsigned short gdiRESOURCE::StripCount() const { return count; }
void gdiRESOURCE::SetPageable(int on) { pageable = on ? 1 : 0; }
int gdiRESOURCE::IsPageable() const { return pageable; }

void gdiRESOURCE::DeleteStrips()
{
    for (unsigned short i = 0; i < count; ++i) {
        if (table[i].bitmap) {
            vTrace(2, "gdiRESOURCE::Deleteing Object handle");
            DeleteObject(table[i].bitmap);
            table[i].bitmap = nullptr;
        }
    }
}

int gdiRESOURCE::SetStripCount(unsigned short n)
{
    DeleteStrips();
    if (table != &one)
        vMemFree(table);
    table = &one;
    count = 0;
    if (n > 1) {
        table = static_cast<vBITMAPSTRIP*>(vMemAlloc((unsigned long)n * sizeof(vBITMAPSTRIP)));
        if (!table) {
            table = &one;
            return 0;
        }
    }
    for (unsigned short i = 0; i < n; ++i) {
        table[i].bitmap = nullptr;
        table[i].rows = 0;
    }
    count = n;
    return 1;
}

void gdiRESOURCE::SetStrip(unsigned short i, HBITMAP bitmap, unsigned short rows)
{
    if (i >= count) {
        if (bitmap)
            DeleteObject(bitmap);
        return;
    }
    if (table[i].bitmap)
        DeleteObject(table[i].bitmap);
    table[i].bitmap = bitmap;
    table[i].rows = rows;
}

// ---------------------------------------------------------------- memory bitmaps

memRESOURCE::memRESOURCE(HBITMAP bitmap) : given(bitmap)
{
    pageable = 0;
    if (SetStripCount(1))
        PageIn();
}

// The copy is made once, from the bitmap handed in; after that there is
// nothing left to make it from.
int memRESOURCE::PageIn()
{
    if (!given)
        return IsResident();
    BITMAP bm;
    HBITMAP copy = nullptr;
    if (GetObjectA(given, sizeof bm, &bm)) {
        copy = CreateBitmap(bm.bmWidth, bm.bmHeight, bm.bmPlanes, bm.bmBitsPixel, nullptr);
        rlbmread::SCREENDC screen;
        HDC from = CreateCompatibleDC(screen.dc), to = CreateCompatibleDC(screen.dc);
        if (copy && from && to) {
            HPALETTE pal = rlstate::devState.palette;
            if (pal) {
                SelectPalette(from, pal, FALSE);
                SelectPalette(to, pal, FALSE);
            }
            HGDIOBJ oldFrom = SelectObject(from, given), oldTo = SelectObject(to, copy);
            BitBlt(to, 0, 0, bm.bmWidth, bm.bmHeight, from, 0, 0, SRCCOPY);
            SelectObject(from, oldFrom);
            SelectObject(to, oldTo);
        }
        if (from)
            DeleteDC(from);
        if (to)
            DeleteDC(to);
        SetStrip(0, copy, (unsigned short)bm.bmHeight);
    }
    DeleteObject(given);
    given = nullptr;
    return IsResident();
}

// ---------------------------------------------------------------- module bitmaps

resRESOURCE::resRESOURCE(const vRESID& id) : resId(id)
{
    if (SetStripCount(1))
        PageIn();
}

int resRESOURCE::PageIn()
{
    vTrace(2, "resRESOURCE::Paging In");
    HINSTANCE module = resId.Module();
    LPCSTR name = MAKEINTRESOURCEA(resId.Id());
    if (!module || !FindResourceA(module, name, MAKEINTRESOURCEA(2)))
        module = nullptr;
    HBITMAP b = LoadBitmapA(module, name);
    BITMAP bm;
    if (b && GetObjectA(b, sizeof bm, &bm))
        SetStrip(0, b, (unsigned short)bm.bmHeight);
    else if (b)
        DeleteObject(b);
    return IsResident();
}

// ---------------------------------------------------------------- records of files

namespace {

// A name that a later page-in can open again: a file that exists now and is
// not a temporary file the stream deletes when it goes.
bool Reopenable(vSTREAM& s)
{
    const char* name = s.Name()();
    if (!name || !name[0])
        return false;
    vFILE* f = dynamic_cast<vFILE*>(&s);
    if (f && f->Mode() == (long)vFILE_TEMPORARY)
        return false;
    return GetFileAttributesA(name) != INVALID_FILE_ATTRIBUTES;
}

// Moves a stream to `position` the way a page-in does: forward from where it
// is when the position lies ahead, from the start otherwise.
void SeekTo(vSTREAM& s, unsigned long position)
{
    unsigned long here = s.CurrentPos();
    if (position >= here)
        s.MoveFromCur((long)(position - here));
    else
        s.MoveFromStart(position);
}

} // namespace

fileRESOURCE::fileRESOURCE(vSTREAM& stream) : file(nullptr), position(stream.CurrentPos()), length(0), valid(0)
{
    pageable = 0;
    if (Reopenable(stream)) {
        file = REFSTRING::Acquire(REFSTRING::BITMAPFILE, stream.Name());
        if (file) {
            file->SetStream(&stream);
            pageable = 1;
        }
    }
    valid = ReadFrom(stream);
    length = stream.CurrentPos() - position;
}

fileRESOURCE::~fileRESOURCE()
{
    if (file)
        file->Release();
}

int fileRESOURCE::IsPageable() const
{
    return pageable && file;
}

int fileRESOURCE::ReadFrom(vSTREAM& stream)
{
    // The first read sets the table up; a read again must find the record as
    // it was.
    struct SINK : rlbmread::STRIPSINK {
        fileRESOURCE* r;
        bool again;
        bool Begin(unsigned short n) override
        {
            vTrace(2, "fileRESOURCE::DIBToBitmap");
            return again ? n == r->StripCount() : r->SetStripCount(n) != 0;
        }
        void Put(unsigned short i, HBITMAP b, unsigned short rows) override
        {
            if (again && rows != r->Rows(i)) {
                DeleteObject(b);
                return;
            }
            r->SetStrip(i, b, rows);
        }
    } sink;
    sink.r = this;
    sink.again = StripCount() != 0;
    bool good = rlbmread::ReadStrips(stream, sink);
    if (!good)
        DeleteStrips();
    return good && IsResident();
}

int fileRESOURCE::PageIn()
{
    vTrace(2, "fileRESOURCE::Paging In");
    if (!file)
        return 0;
    if (vSTREAM* s = file->Stream()) {
        vTrace(2, "fileRESOURCE::File Ref File Exists");
        // The caller's stream is where the caller left it afterwards.
        unsigned long here = s->CurrentPos();
        SeekTo(*s, position);
        int good = ReadFrom(*s);
        s->MoveFromStart(here);
        if (good)
            return 1;
    }
    vBITMAPMAN* m = vBITMAPMAN::Get();
    vFILE* f = m ? m->RereadFile(file->Name()) : nullptr;
    if (!f)
        return 0;
    SeekTo(*f, position);
    return ReadFrom(*f);
}

// ---------------------------------------------------------------- the manager

vBITMAPMAN::vBITMAPMAN() : outHead(nullptr), outCount(0), pageIns(0) {}

vBITMAPMAN::~vBITMAPMAN()
{
    delete rlstate::bmState.rereadFile;
    rlstate::bmState.rereadFile = nullptr;
}

vBITMAPMAN* vBITMAPMAN::Get()
{
    return rlstate::bmState.manager;
}

unsigned short vBITMAPMAN::ResidentLimit() const { return vPAGEOUT::GetResidentLimit(); }
void vBITMAPMAN::SetResidentLimit(unsigned short limit) { vPAGEOUT::SetResidentLimit(limit); }

void vBITMAPMAN::MakeRoom()
{
    if (NoItems() >= ResidentLimit())
        PageOut();
}

void vBITMAPMAN::PushOut(gdiRESOURCE* r)
{
    r->outPrev = nullptr;
    r->outNext = outHead;
    if (outHead)
        outHead->outPrev = r;
    outHead = r;
    r->pagedOut = 1;
    ++outCount;
}

void vBITMAPMAN::TakeOut(gdiRESOURCE* r)
{
    if (!r->pagedOut)
        return;
    if (r->outPrev)
        r->outPrev->outNext = r->outNext;
    else
        outHead = r->outNext;
    if (r->outNext)
        r->outNext->outPrev = r->outPrev;
    r->outPrev = r->outNext = nullptr;
    r->pagedOut = 0;
    --outCount;
}

template <class F> gdiRESOURCE* vBITMAPMAN::Find(F f)
{
    for (fLINK* l = Next(nullptr); l; l = Next(l)) {
        gdiRESOURCE* r = static_cast<gdiRESOURCE*>(l->Object());
        if (f(r))
            return r;
    }
    for (gdiRESOURCE* r = outHead; r; r = r->outNext)
        if (f(r))
            return r;
    return nullptr;
}

void vBITMAPMAN::Track(gdiRESOURCE* r)
{
    Prepend(*r);
    r->AddRef();
}

unsigned short vBITMAPMAN::PageOut()
{
    vTrace(2, "vBITMAPMAN::Paging Out");
    for (int pass = 0; pass < 5; ++pass) {
        if (IsEmpty())
            return 0;
        gdiRESOURCE* r = static_cast<gdiRESOURCE*>(Last());
        // One that may not go stays where it is, and so does every pass after it.
        if (r->StripCount() && r->IsResident() && r->IsPageable()) {
            r->DeleteStrips();
            Remove(*r);
            PushOut(r);
        }
    }
    return 5;
}

gdiRESOURCE* vBITMAPMAN::Add(const vRESID& id)
{
    gdiRESOURCE* same = Find([&](gdiRESOURCE* r) {
        return r->Type() == gdiRESOURCE::MODULEKIND && static_cast<resRESOURCE*>(r)->Id() == id;
    });
    if (same) {
        same->AddRef();
        return same;
    }
    MakeRoom();
    resRESOURCE* r = new resRESOURCE(id);
    if (r && !r->IsResident()) {
        delete r;
        r = nullptr;
    }
    if (r)
        Track(r);
    return r;
}

gdiRESOURCE* vBITMAPMAN::Add(HBITMAP bitmap)
{
    if (!bitmap)
        return nullptr;
    MakeRoom();
    memRESOURCE* r = new memRESOURCE(bitmap);
    if (!r) {
        DeleteObject(bitmap);
        return nullptr;
    }
    if (!r->IsResident()) {
        delete r;
        return nullptr;
    }
    Track(r);
    return r;
}

gdiRESOURCE* vBITMAPMAN::Add(vSTREAM& stream, int share)
{
    const char* name = stream.Name()();
    if (share && name && name[0]) {
        unsigned long at = stream.CurrentPos();
        gdiRESOURCE* same = Find([&](gdiRESOURCE* r) {
            if (r->Type() != gdiRESOURCE::FILEKIND)
                return false;
            fileRESOURCE* f = static_cast<fileRESOURCE*>(r);
            return f->Position() == at && f->File() && f->File()->Name() == stream.Name();
        });
        if (same) {
            same->AddRef();
            GetStrip(same, 0, nullptr);
            stream.MoveFromStart(at + static_cast<fileRESOURCE*>(same)->Length());
            return same;
        }
    }
    MakeRoom();
    fileRESOURCE* r = new fileRESOURCE(stream);
    if (r && !r->Valid()) {
        delete r;
        r = nullptr;
    }
    if (r)
        Track(r);
    return r;
}

gdiRESOURCE* vBITMAPMAN::Add(gdiRESOURCE* r)
{
    if (!r)
        return nullptr;
    if (!r->IsResident()) {
        delete r;
        return nullptr;
    }
    MakeRoom();
    Track(r);
    return r;
}

void vBITMAPMAN::Release(gdiRESOURCE* r)
{
    if (!r || r->DropRef())
        return;
    if (r->pagedOut)
        TakeOut(r);
    else
        Remove(*r);
    delete r;
}

HBITMAP vBITMAPMAN::GetStrip(gdiRESOURCE* r, unsigned short strip, unsigned short* rows)
{
    if (!r)
        return nullptr;
    vTrace(2, "gdiRESOURCE::GetMSBitmap");
    if (!r->IsResident()) {
        MakeRoom();
        if (r->PageIn()) {
            ++pageIns;
            TakeOut(r);
            Prepend(*r);
        }
    } else if (First() != r) {
        // Most recently used first: page-out takes from the other end.
        Remove(*r);
        Prepend(*r);
    }
    if (rows && r->StripCount())
        *rows = r->Rows(strip);
    return r->Strip(strip);
}

vFILE* vBITMAPMAN::RereadFile(const vSTRING& name)
{
    vFILE*& f = rlstate::bmState.rereadFile;
    if (f && f->Name() == name) {
        vTrace(2, "fileRESOURCE::Cache File Right Name");
    } else {
        if (f) {
            vTrace(2, "fileRESOURCE::Cache File Wrong name");
            delete f;
            f = nullptr;
        } else {
            vTrace(2, "fileRESOURCE::No Cache File");
        }
        if (!name.Length())
            return nullptr;
        f = new vFILE(name, vFILE_READ, 1);
        if (f && f->Status() != vSTREAM_OK) {
            delete f;
            f = nullptr;
        }
    }
    return f;
}

// ---------------------------------------------------------------- start and stop

namespace {
unsigned short PageOutRequest()
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    return m ? m->PageOut() : 0;
}
} // namespace

namespace rlbitmapman {

void Start()
{
    if (rlstate::bmState.manager)
        return;
    rlstate::bmState.manager = new vBITMAPMAN;
    MEMORYSTATUS status;
    status.dwLength = sizeof status;
    GlobalMemoryStatus(&status);
    vPAGEOUT::SetResidentLimit(rlbmrec::ResidentLimitFor((std::uint32_t)status.dwAvailPhys));
    vPAGEOUT::SetProc(PageOutRequest);
}

void Stop()
{
    vPAGEOUT::SetProc(nullptr);
    delete rlstate::bmState.manager;
    rlstate::bmState.manager = nullptr;
    rlbmread::FreeDisplayDC();
}

} // namespace rlbitmapman
