// Images whose rows live in a private memory stream: the form used when an
// image is carried between streams (fill patterns, bitmap records). The rows
// are reached in place through the stream's buffer.
#include "rl132/bitmaps/odib.h"
#include <cstring>
#include "bitmaps/dibops.h"
#include "bitmaps/dibread.h"
#include "bitmaps/dibrows.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vmemstream.h"

namespace {
// A stream of `size` zero bytes, or null.
vMEMSTREAM* ZeroRows(unsigned long size)
{
    vMEMSTREAM* m = new vMEMSTREAM;
    if (!m)
        return nullptr;
    static const unsigned char zeros[4096] = {};
    for (unsigned long at = 0; at < size;) {
        unsigned long n = size - at > sizeof zeros ? sizeof zeros : size - at;
        m->WriteBlock(zeros, n);
        at += n;
    }
    if (m->Size() != size || (size && !m->Buffer())) {
        delete m;
        return nullptr;
    }
    return m;
}
} // namespace

oSTREAMDIB::oSTREAMDIB(int c)
    : oDIB(c), rows(nullptr), paletteBytes(0), rowOffset(0), staging(nullptr), stagingCursor(0),
      writeCursor(0), locked(0)
{
}

oSTREAMDIB::oSTREAMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
                       oCOLOUR_MODEL model, int c)
    : oDIB(c), rows(nullptr), paletteBytes(0), rowOffset(0), staging(nullptr), stagingCursor(0),
      writeCursor(0), locked(0)
{
    header.biWidth = (LONG)width;
    header.biHeight = (LONG)height;
    header.biBitCount = bitCount;
    header.colourModel = model;
    header.biXPelsPerMeter = header.biYPelsPerMeter = 100;
    header.biClrUsed = bitCount < 32 ? 1UL << bitCount : 0;
    paletteBytes = (unsigned short)(bitCount < 24 ? 4u << bitCount : 0);
    std::uint32_t size = 0;
    if (!rldib::CheckedImageSize(bitCount, width, height, nullptr, &size)) {
        MakeEmpty();
        return;
    }
    header.biSizeImage = size;
    rows = ZeroRows(size);
    if (!rows)
        MakeEmpty();
}

oSTREAMDIB::oSTREAMDIB(vSTREAM& stream, int c)
    : oDIB(c), rows(nullptr), paletteBytes(0), rowOffset(0), staging(nullptr), stagingCursor(0),
      writeCursor(0), locked(0)
{
    *this << stream;
}

oSTREAMDIB::oSTREAMDIB(const oDIB& source, int c)
    : oDIB(c), rows(nullptr), paletteBytes(0), rowOffset(0), staging(nullptr), stagingCursor(0),
      writeCursor(0), locked(0)
{
    Copy(source);
}

oSTREAMDIB::oSTREAMDIB(const oDIB&, oCOLOUR_MODEL, long, long, vRECT*)
    : oDIB(0), rows(nullptr), paletteBytes(0), rowOffset(0), staging(nullptr), stagingCursor(0),
      writeCursor(0), locked(0)
{
}

oSTREAMDIB::~oSTREAMDIB() { Clear(); }

void oSTREAMDIB::Copy(const oDIB& source)
{
    vMEMSTREAM temp;
    source >> temp;
    temp.MoveFromStart(0);
    *this << temp;
}

void oSTREAMDIB::Clear()
{
    delete rows;
    rows = nullptr;
    rowOffset = 0;
    vMemFree(staging);
    staging = nullptr;
    stagingCursor = writeCursor = 0;
    locked = 0;
    AdoptPalette(nullptr);
    paletteBytes = 0;
}

void oSTREAMDIB::MakeEmpty()
{
    Clear();
    header = oDIBHEADER();
}

unsigned char* oSTREAMDIB::Rows() const
{
    if (!rows || rows->Spilled() || rows->Size() == 0)
        return nullptr;
    return const_cast<unsigned char*>(rows->Buffer()) + rowOffset;
}

vSTREAM& oSTREAMDIB::operator<<(vSTREAM& s)
{
    {
        unsigned long size = s.Size(), pos = s.CurrentPos();
        if (size <= pos || size - pos <= 40)
            return s;
    }
    oDIBHEADER h;
    oDIBPALETTE* pal = nullptr;
    rldib::InfoPlan plan;
    if (!dibread::ReadHead(s, &h, &pal, &plan)) {
        delete pal;
        return s;
    }
    unsigned char* block = nullptr;
    int ok = dibread::RowsAvailable(s, plan);
    if (ok && plan.keptSize) {
        block = (unsigned char*)vMemAlloc(plan.keptSize);
        ok = block != nullptr;
    }
    if (ok)
        ok = dibread::ReadRows(s, plan, block);
    vMEMSTREAM* m = nullptr;
    if (ok) {
        m = new vMEMSTREAM;
        ok = m != nullptr;
        if (ok && plan.keptSize) {
            m->WriteBlock(block, plan.keptSize);
            ok = m->Size() == plan.keptSize && m->Buffer();
        }
    }
    vMemFree(block);
    Clear();
    if (!ok) {
        delete m;
        delete pal;
        MakeEmpty();
        return s;
    }
    header = h;
    AdoptPalette(pal);
    paletteBytes = (unsigned short)(plan.paletteCount * 4);
    rows = m;
    return s;
}

vSTREAM& oSTREAMDIB::operator>>(vSTREAM& s) const
{
    unsigned long size = header.biSizeImage;
    unsigned long have = rows ? rows->Size() : 0;
    if (size > have)
        size = have;
    dibread::Write(s, header, palette, Rows(), size);
    return s;
}

int oSTREAMDIB::GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                              unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model) const
{
    unsigned char* r = Rows();
    if (!r)
        return 0;
    return dibops::GetBlock(header, palette, r, rows->Size() - rowOffset, x, firstLine, width,
                            lastLine, buffer, model);
}

int oSTREAMDIB::GetImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char* buffer,
                              oCOLOUR_MODEL* model) const
{
    return GetImageBlock(0, firstLine, header.Width(), lastLine, buffer, model);
}

int oSTREAMDIB::SetImageLines(unsigned char* buffer, oCOLOUR_MODEL, unsigned long firstLine,
                              unsigned long lastLine)
{
    if (!Rows()) {
        std::uint32_t size = 0;
        if (!rldib::CheckedImageSize(header.biBitCount, header.Width(), header.Height(), nullptr, &size) ||
            size == 0)
            return 0;
        vMEMSTREAM* m = ZeroRows(size);
        if (!m)
            return 0;
        delete rows;
        rows = m;
        rowOffset = 0;
        writeCursor = 0;
    }
    dibops::LineStore st = {staging, stagingCursor, writeCursor};
    int r = dibops::StoreLines(st, Rows(), rows->Size() - rowOffset, header, buffer, firstLine, lastLine);
    staging = st.staging;
    stagingCursor = st.stagingCursor;
    writeCursor = st.writeCursor;
    return r;
}

int oSTREAMDIB::LockImageLines(unsigned long firstLine, unsigned long, unsigned char** out, oCOLOUR_MODEL)
{
    unsigned char* r = Rows();
    unsigned long stride = Stride();
    if (locked || !r || (firstLine && (unsigned long long)firstLine * stride >= rows->Size() - rowOffset)) {
        if (out)
            *out = nullptr;
        return 0;
    }
    if (out)
        *out = r + firstLine * stride;
    locked = 1;
    return 1;
}

int oSTREAMDIB::ReleaseImageLines(int)
{
    if (!locked)
        return 0;
    locked = 0;
    return 1;
}
