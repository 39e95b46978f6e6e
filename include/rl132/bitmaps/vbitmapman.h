// Bitmap resources and the bitmap manager.
//
// A vBITMAP never owns its pixels. It holds a counted reference to a bitmap
// resource, which owns the device-dependent bitmaps (one or more strips) and
// knows how to make them again from where they came from: a module resource,
// a record in a named file, or nothing (a bitmap made in memory). The one
// manager of the process keeps every resource on one of two lists: the
// resident ones, most recently used first, and the paged-out ones. When too
// many are resident, or when an allocation fails, it deletes the strips of the
// least recently used ("paging out"); drawing such a bitmap makes them again
// ("paging in").
//
// Records read from one file share one counted record of the file's name, so
// that a bitmap can come back from its file long after the stream that read it
// was closed: the manager keeps one shared file open for such reads.
//
// Everything here is process-wide and unlocked: bitmaps are used from the
// thread that owns the windows.
#ifndef RL132_BITMAPS_VBITMAPMAN_H
#define RL132_BITMAPS_VBITMAPMAN_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vstring.h"
#include "rl132/containers/vlist.h"
#include "rl132/platform/vresid.h"

class vSTREAM;
class vFILE;

// A counted object: every holder counts itself in and out.
class RL132_API vRESOURCE : public vOBJECT {
public:
    vRESOURCE();
    virtual ~vRESOURCE();
    unsigned short AddRef() { return ++refCount; }
    // Counts one holder out; the count left (the last holder destroys it).
    unsigned short DropRef() { return refCount ? --refCount : 0; }
    unsigned short RefCount() const { return refCount; }

private:
    vRESOURCE(const vRESOURCE&);
    vRESOURCE& operator=(const vRESOURCE&);
    unsigned short refCount;
};

// The name of a source file (or a Photo CD volume), shared by every resource
// read from it. Each kind has its own list, searched by name; the last record
// found in the bitmap-file list is remembered, since bitmaps are read in runs
// from one file.
class RL132_API REFSTRING : public vRESOURCE {
public:
    enum KIND { BITMAPFILE = 0, PHOTOVOLUME = 1 };

    // The record of that name, made when missing, with its count raised; null
    // when memory is short.
    static REFSTRING* Acquire(KIND kind, const vSTRING& name);
    // Counts one holder out and destroys the record with the last.
    void Release();

    const vSTRING& Name() const { return name; }
    // The stream known to be open on the file, null when none is. The record
    // learns of the stream's end through the stream's attached flag, which it
    // takes for as long as it keeps the stream.
    vSTREAM* Stream() const { return streamAlive ? stream : nullptr; }
    void SetStream(vSTREAM* s);

private:
    REFSTRING(KIND kind, const vSTRING& name);
    ~REFSTRING() override;
    static REFSTRING*& Head(KIND kind);

    vSTRING name;
    REFSTRING* next;
    REFSTRING* prev;
    vSTREAM* stream;
    int streamAlive;
    KIND kind;
};

// One strip: its bitmap (null while paged out) and its rows.
struct RL132_API vBITMAPSTRIP : public vOBJECT {
    HBITMAP bitmap;
    unsigned short rows;
};

// A resource made of device-dependent bitmaps in strips, bottom strip first:
// strip 0 holds the picture's bottom rows.
class RL132_API gdiRESOURCE : public vRESOURCE {
public:
    // Kinds, as Type() gives them.
    enum { MEMORYKIND = 0, FILEKIND = 1, MODULEKIND = 2, PHOTOKIND = 3 };

    ~gdiRESOURCE() override;
    // Makes the strips again; 1 when the first one is there afterwards.
    virtual int PageIn() = 0;
    virtual int Type() const = 0;
    virtual unsigned short StripCount() const;
    virtual void SetPageable(int on);
    virtual int IsPageable() const;

    // The strip's bitmap as it is now (null while paged out or past the end),
    // and its rows.
    HBITMAP Strip(unsigned short i) const { return i < count ? table[i].bitmap : nullptr; }
    unsigned short Rows(unsigned short i) const { return i < count ? table[i].rows : 0; }
    // The first strip is there.
    int IsResident() const { return count && table[0].bitmap; }
    // Deletes every strip's bitmap; the rows stay.
    void DeleteStrips();

protected:
    gdiRESOURCE();
    // A table of n empty strips (kept inside the object for one); 0 when
    // memory is short.
    int SetStripCount(unsigned short n);
    void SetStrip(unsigned short i, HBITMAP bitmap, unsigned short rows);
    int pageable;

private:
    friend class vBITMAPMAN;
    vBITMAPSTRIP one;
    vBITMAPSTRIP* table;
    unsigned short count;
    // Links of the manager's paged-out list, kept in the resource so that a
    // page-in takes it off in one step however long the list is.
    gdiRESOURCE* outPrev;
    gdiRESOURCE* outNext;
    int pagedOut;
};

// A bitmap made in memory. It keeps a copy of its own and cannot be made
// again, so it never pages out, whatever its flag says.
class RL132_API memRESOURCE : public gdiRESOURCE {
public:
    // Takes a copy of `bitmap` and deletes the original.
    explicit memRESOURCE(HBITMAP bitmap);
    int PageIn() override;
    int Type() const override { return MEMORYKIND; }
    int IsPageable() const override { return 0; }

private:
    HBITMAP given;
};

// A bitmap resource of a module (the system's own bitmaps when the module has
// no bitmap of that id).
class RL132_API resRESOURCE : public gdiRESOURCE {
public:
    explicit resRESOURCE(const vRESID& id);
    int PageIn() override;
    int Type() const override { return MODULEKIND; }
    const vRESID& Id() const { return resId; }

private:
    vRESID resId;
};

// A bitmap record at a position of a named file (or of an unnamed stream,
// which cannot be read again: such a resource never pages out).
class RL132_API fileRESOURCE : public gdiRESOURCE {
public:
    // Reads the record at the stream's position; Valid() says whether it could.
    explicit fileRESOURCE(vSTREAM& stream);
    ~fileRESOURCE() override;
    int PageIn() override;
    int Type() const override { return FILEKIND; }
    int IsPageable() const override;
    int Valid() const { return valid; }
    REFSTRING* File() const { return file; }
    unsigned long Position() const { return position; }
    // The record's bytes on the stream.
    unsigned long Length() const { return length; }

private:
    int ReadFrom(vSTREAM& stream);
    REFSTRING* file;
    unsigned long position;
    unsigned long length;
    int valid;
};

// The manager: the resident resources (the list itself, most recently used
// first) and the paged-out ones. The resident limit is the one the
// new-failure handler lowers (vPAGEOUT::GetResidentLimit).
class RL132_API vBITMAPMAN : public fLIST {
public:
    vBITMAPMAN();
    ~vBITMAPMAN() override;

    // The manager of the process; null before the library has started it.
    static vBITMAPMAN* Get();

    // Resources with a reference counted for the caller; null when none could
    // be made. Module resources are shared by module and id; records of named
    // files, when `share` is set, by file name and position (the stream is then
    // moved past the record as if it had been read).
    gdiRESOURCE* Add(const vRESID& id);
    gdiRESOURCE* Add(HBITMAP bitmap);
    gdiRESOURCE* Add(vSTREAM& stream, int share);
    // A resource made elsewhere (a Photo CD image's), resident already; null,
    // with the resource deleted, when it is not.
    gdiRESOURCE* Add(gdiRESOURCE* made);
    // Counts the caller out; the last holder's release deletes the resource.
    void Release(gdiRESOURCE* resource);

    // The strip's bitmap, paged in when needed; the resource becomes the most
    // recently used. `rows` (may be null) receives the strip's rows.
    HBITMAP GetStrip(gdiRESOURCE* resource, unsigned short strip, unsigned short* rows);

    // Up to five passes, each looking at the least recently used resident
    // resource and paging it out when it may; 0 when the resident list is
    // empty, else 5.
    unsigned short PageOut();

    unsigned short ResidentLimit() const;
    void SetResidentLimit(unsigned short limit);
    unsigned short ResidentCount() const { return NoItems(); }
    unsigned short PagedOutCount() const { return outCount; }
    // Page-ins since the manager was made.
    unsigned long PageIns() const { return pageIns; }

    // The one file kept open for reading records again (opened on first
    // need, under the name of the record last read through it).
    vFILE* RereadFile(const vSTRING& name);

private:
    vBITMAPMAN(const vBITMAPMAN&);
    vBITMAPMAN& operator=(const vBITMAPMAN&);
    void MakeRoom();
    void Track(gdiRESOURCE* resource);
    // The paged-out list: most recently paged out first.
    void PushOut(gdiRESOURCE* resource);
    void TakeOut(gdiRESOURCE* resource);
    // Calls f on every resource, resident ones first; stops at the first
    // that f accepts and returns it.
    template <class F> gdiRESOURCE* Find(F f);

    gdiRESOURCE* outHead;
    unsigned short outCount;
    unsigned long pageIns;
};

#endif
