// Images whose rows live in a private memory stream: the form used when an
// image is carried between streams (fill patterns, bitmap records). The rows
// are reached in place through the stream's buffer. What the two image kinds
// share is in dibimage.h; here is the stream that holds the rows.
#include "rl132/bitmaps/odib.h"
#include "bitmaps/dibimage.h"

// ---------------------------------------------------------------- the stream

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

// Null when the stream is empty or has moved to its spill file.
unsigned char* DIBIMAGE::Rows(const oSTREAMDIB& d)
{
    if (!d.rows || d.rows->Spilled() || d.rows->Size() <= d.rowOffset)
        return nullptr;
    return const_cast<unsigned char*>(d.rows->Buffer()) + d.rowOffset;
}

unsigned long DIBIMAGE::Held(const oSTREAMDIB& d) { return Rows(d) ? d.rows->Size() - d.rowOffset : 0; }

bool DIBIMAGE::Zero(oSTREAMDIB& d, unsigned long size)
{
    Drop(d);
    d.rows = ZeroRows(size);
    return d.rows != nullptr;
}

bool DIBIMAGE::Take(oSTREAMDIB& d, unsigned char* block, unsigned long size)
{
    Drop(d);
    vMEMSTREAM* m = new vMEMSTREAM;
    bool ok = m != nullptr;
    if (ok && block && size) {
        m->WriteBlock(block, size);
        ok = m->Size() == size && m->Buffer();
    }
    vMemFree(block);
    if (!ok) {
        delete m;
        return false;
    }
    d.rows = m;
    return true;
}

void DIBIMAGE::Drop(oSTREAMDIB& d)
{
    delete d.rows;
    d.rows = nullptr;
    d.rowOffset = 0;
}

// A stream DIB reads only streams that hold more than a bare header.
bool DIBIMAGE::Readable(const oSTREAMDIB&, vSTREAM& s)
{
    unsigned long size = s.Size(), pos = s.CurrentPos();
    return size > pos && size - pos > 40;
}

// ---------------------------------------------------------------- the image

oSTREAMDIB::oSTREAMDIB(int c) : oDIB(c) {}

oSTREAMDIB::oSTREAMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
                       oCOLOUR_MODEL model, int c)
    : oDIB(c)
{
    DIBIMAGE::Sized(*this, width, height, bitCount, model);
}

oSTREAMDIB::oSTREAMDIB(vSTREAM& stream, int c) : oDIB(c) { DIBIMAGE::Read(*this, stream); }

oSTREAMDIB::oSTREAMDIB(const oDIB& source, int c) : oDIB(c) { DIBIMAGE::Copy(*this, source); }

oSTREAMDIB::oSTREAMDIB(const oDIB&, oCOLOUR_MODEL, long, long, vRECT*) : oDIB(0) {}

oSTREAMDIB::~oSTREAMDIB() { DIBIMAGE::Clear(*this); }

vSTREAM& oSTREAMDIB::operator<<(vSTREAM& s)
{
    DIBIMAGE::Read(*this, s);
    return s;
}

vSTREAM& oSTREAMDIB::operator>>(vSTREAM& s) const
{
    DIBIMAGE::Write(*this, s);
    return s;
}

int oSTREAMDIB::GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                              unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model) const
{
    return DIBIMAGE::GetBlock(*this, x, firstLine, width, lastLine, buffer, model);
}

int oSTREAMDIB::GetImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char* buffer,
                              oCOLOUR_MODEL* model) const
{
    return DIBIMAGE::GetBlock(*this, 0, firstLine, header.Width(), lastLine, buffer, model);
}

int oSTREAMDIB::SetImageLines(unsigned char* buffer, oCOLOUR_MODEL, unsigned long firstLine,
                              unsigned long lastLine)
{
    return DIBIMAGE::SetLines(*this, buffer, firstLine, lastLine);
}

int oSTREAMDIB::LockImageLines(unsigned long firstLine, unsigned long, unsigned char** rows, oCOLOUR_MODEL)
{
    return DIBIMAGE::Lock(*this, firstLine, rows);
}

int oSTREAMDIB::ReleaseImageLines(int) { return DIBIMAGE::Release(*this); }
