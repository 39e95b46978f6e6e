// The one implementation of the two image kinds.
//
// oMEMDIB keeps its rows in one block of memory, oSTREAMDIB in a private
// memory stream. That is all they differ in, and all the per-kind hooks say
// (Rows, Held, Zero, Take, Drop, Readable; defined beside each kind). What
// works on the rows wherever they live (reading and writing the stored form,
// copying through it, rows handed out by rectangle, rows taken in from
// producers in either order, the lock) is written here once, over the
// fields the two kinds share by name.
#ifndef RL132_SRC_BITMAPS_DIBIMAGE_H
#define RL132_SRC_BITMAPS_DIBIMAGE_H
#include <cstring>
#include "bitmaps/dibops.h"
#include "bitmaps/dibstore.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vmemstream.h"

class DIBIMAGE {
public:
    // ------------------------------------------------ per kind
    // The first row (null when there are none) and the bytes from it on.
    static unsigned char* Rows(const oMEMDIB& d);
    static unsigned char* Rows(const oSTREAMDIB& d);
    static unsigned long Held(const oMEMDIB& d);
    static unsigned long Held(const oSTREAMDIB& d);
    // size zero bytes of rows in place of any the image had.
    static bool Zero(oMEMDIB& d, unsigned long size);
    static bool Zero(oSTREAMDIB& d, unsigned long size);
    // Rows read from a stream: a vMemAlloc block of size bytes (or null for
    // none), which the image owns or frees from here on.
    static bool Take(oMEMDIB& d, unsigned char* block, unsigned long size);
    static bool Take(oSTREAMDIB& d, unsigned char* block, unsigned long size);
    static void Drop(oMEMDIB& d);
    static void Drop(oSTREAMDIB& d);
    // Whether a read from this stream is tried at all.
    static bool Readable(const oMEMDIB&, vSTREAM&) { return true; }
    static bool Readable(const oSTREAMDIB& d, vSTREAM& s);

    // ------------------------------------------------ shared, non-template
    // The header the library keeps for a stored one: compression 0, the size
    // recomputed, resolutions in multiples of 40 (0 becoming 100 DPI), the
    // bit count that follows the model (16 and 32 bits kept as 24).
    static oDIBHEADER HeaderFor(const rldib::StoredHead& head);
    static oCOLOUR_MODEL ModelForBits(unsigned bits);
    // Header, palette and `size` bytes of rows in the stored form.
    static void WriteStored(vSTREAM& s, const oDIBHEADER& header, const oDIBPALETTE* palette,
                            const unsigned char* rows, unsigned long size);

    // ------------------------------------------------ the operations
    template <class D> static void Sized(D& d, unsigned long width, unsigned long height,
                                         unsigned short bitCount, oCOLOUR_MODEL model)
    {
        d.header.biWidth = (LONG)width;
        d.header.biHeight = (LONG)height;
        d.header.biBitCount = bitCount;
        d.header.colourModel = model;
        d.header.biXPelsPerMeter = d.header.biYPelsPerMeter = 100;
        // Also for 24 bits: the field is then only a bound, the written header
        // carries the real palette count.
        d.header.biClrUsed = bitCount < 32 ? 1UL << bitCount : 0;
        d.paletteBytes = (unsigned short)(bitCount < 24 ? 4u << bitCount : 0);
        std::uint32_t size = 0;
        if (!rldib::CheckedImageSize(bitCount, width, height, nullptr, &size)) {
            MakeEmpty(d);
            return;
        }
        d.header.biSizeImage = size;
        if (!Zero(d, size))
            MakeEmpty(d);
    }

    template <class D> static void Clear(D& d)
    {
        Drop(d);
        d.rowOffset = 0;
        vMemFree(d.staging);
        d.staging = nullptr;
        d.stagingCursor = d.writeCursor = 0;
        d.locked = 0;
        d.AdoptPalette(nullptr);
        d.paletteBytes = 0;
    }

    // Width and height 0, 24 bits: the image reports itself empty.
    template <class D> static void MakeEmpty(D& d)
    {
        Clear(d);
        d.header = oDIBHEADER();
    }

    template <class D> static void Read(D& d, vSTREAM& s)
    {
        if (!Readable(d, s))
            return;
        rldib::StoredSource source(s);
        rldib::StoredHead head;
        if (!rldib::ReadHead(source, &head))
            return;   // not a DIB: the image stays as it was
        const rldib::InfoPlan& plan = head.plan;
        // Every image read from a stream has a palette, empty when the stored
        // count is 0: an 8-bit copy of it then gets a full (black) table.
        oDIBPALETTE* pal = new oDIBPALETTE(reinterpret_cast<const RGBQUAD*>(head.palette),
                                           (unsigned short)plan.paletteCount);
        unsigned char* block = nullptr;
        bool ok = pal && rldib::RowsAvailable(source, plan);
        if (ok && plan.keptSize) {
            block = (unsigned char*)vMemAlloc(plan.keptSize);
            ok = block != nullptr;
        }
        if (ok) {
            rldib::RowReader rows(source, plan);
            ok = rows.ReadAll(block);
        }
        Clear(d);
        if (!ok) {
            vMemFree(block);
            delete pal;
            MakeEmpty(d);
            return;
        }
        d.header = HeaderFor(head);
        d.AdoptPalette(pal);
        d.paletteBytes = (unsigned short)(plan.paletteCount * 4);
        if (!Take(d, block, plan.keptSize))
            MakeEmpty(d);
    }

    template <class D> static void Write(const D& d, vSTREAM& s)
    {
        unsigned long size = d.header.biSizeImage;
        if (size > Held(d))
            size = Held(d);
        WriteStored(s, d.header, d.palette, Rows(d), size);
    }

    // Through the stored form, so any kind of image copies into any other.
    template <class D> static void Copy(D& d, const oDIB& source)
    {
        vMEMSTREAM temp;
        source >> temp;
        temp.MoveFromStart(0);
        Read(d, temp);
    }

    template <class D> static int GetBlock(const D& d, unsigned long x, unsigned long firstLine,
                                           unsigned long width, unsigned long lastLine,
                                           unsigned char* buffer, oCOLOUR_MODEL* model)
    {
        const unsigned char* rows = Rows(d);
        if (!rows)
            return 0;
        return dibops::GetBlock(d.header, d.palette, rows, Held(d), x, firstLine, width, lastLine,
                                buffer, model);
    }

    template <class D> static int SetLines(D& d, const unsigned char* buffer, unsigned long firstLine,
                                           unsigned long lastLine)
    {
        if (!Rows(d)) {
            // Rows are made on first use.
            std::uint32_t size = 0;
            if (!rldib::CheckedImageSize(d.header.biBitCount, d.header.Width(), d.header.Height(),
                                         nullptr, &size) ||
                size == 0 || !Zero(d, size))
                return 0;
            d.rowOffset = 0;
            d.writeCursor = 0;
        }
        dibops::LineStore store = {d.staging, d.stagingCursor, d.writeCursor};
        int r = dibops::StoreLines(store, Rows(d), Held(d), d.header, buffer, firstLine, lastLine);
        d.staging = store.staging;
        d.stagingCursor = store.stagingCursor;
        d.writeCursor = store.writeCursor;
        return r;
    }

    template <class D> static int Lock(D& d, unsigned long firstLine, unsigned char** out)
    {
        unsigned char* rows = Rows(d);
        const unsigned long stride = d.Stride();
        if (d.locked || !rows || (firstLine && (unsigned long long)firstLine * stride >= Held(d))) {
            if (out)
                *out = nullptr;
            return 0;
        }
        if (out)
            *out = rows + firstLine * stride;
        d.locked = 1;
        return 1;
    }

    template <class D> static int Release(D& d)
    {
        if (!d.locked)
            return 0;
        d.locked = 0;
        return 1;
    }
};

#endif
