// Reading bitmap records (see bmread.h and bmrecord.h).
#include "bitmaps/bmread.h"
#include <cstring>
#include "bitmaps/rowwiden.h"
#include "core/rlstate.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vimplode.h"
#include "rl132/streams/vstream.h"

namespace rlbmread {

namespace {

// The expander's input: the compressed bytes already in memory.
struct INPUT {
    const unsigned char* data;
    unsigned long left;
};

// The expander's output, grown as it comes and never past `cap`: no record
// holds more than the largest image with its header and palette.
struct OUTPUT {
    unsigned char* data;
    std::uint32_t size;
    std::uint32_t capacity;
    bool overflow;
};
const std::uint32_t kOutputCap = rlbmrec::kMaxImageBytes + 40u + 1024u;

// The rows of a page-in: one block, grown as needed and kept while it stays
// small enough that keeping it costs little beside the bitmaps made from it.
unsigned char* rowBuffer = nullptr;
std::uint32_t rowBufferBytes = 0;
const std::uint32_t kKeptRowBytes = 1u << 20;

unsigned int FeedInput(char* buf, unsigned int* size, void* param)
{
    INPUT* in = static_cast<INPUT*>(param);
    unsigned int n = *size < in->left ? *size : (unsigned int)in->left;
    std::memcpy(buf, in->data, n);
    in->data += n;
    in->left -= n;
    return n;
}

void TakeOutput(char* buf, unsigned int* size, void* param)
{
    OUTPUT* out = static_cast<OUTPUT*>(param);
    std::uint32_t n = *size;
    if (out->overflow)
        return;
    if (n > kOutputCap - out->size) {
        out->overflow = true;
        return;
    }
    if (out->size + n > out->capacity) {
        std::uint32_t grown = out->capacity ? out->capacity : 65536u;
        while (grown < out->size + n)
            grown = grown > kOutputCap / 2 ? kOutputCap : grown * 2;
        unsigned char* p = static_cast<unsigned char*>(out->data ? vMemRealloc(out->data, grown) : vMemAlloc(grown));
        if (!p) {
            out->overflow = true;
            return;
        }
        out->data = p;
        out->capacity = grown;
    }
    std::memcpy(out->data + out->size, buf, n);
    out->size += n;
}

// The header as GDI is to read it: no stated image size or colour count to
// second-guess the rows and the full palette that follow it.
void PrepareHeader(unsigned char* h)
{
    std::memset(h + 20, 0, 4);  // biSizeImage
    std::memset(h + 32, 0, 8);  // biClrUsed, biClrImportant
}

} // namespace

RECORD::RECORD(vSTREAM& stream)
    : s(stream), detect(stream.DetectingCompressed()), ok(false), expanded(nullptr), expandedBytes(0), at(0),
      rowsDone(0)
{
    std::memset(&plan, 0, sizeof plan);
    // Row bytes may begin like a compressed frame; the record's bytes are
    // taken as they stand.
    s.DetectCompressed(0);
    unsigned long start = s.CurrentPos();
    // A seek clears a failure an earlier operation left on the stream.
    s.MoveFromStart(start);
    // The first 54 bytes in one read: a file header and the info header, or
    // the start of a compressed record, or an info header without file header.
    unsigned char head[54];
    long got = s.ReadByteString(head, sizeof head);
    if (got < 4)
        return;
    std::uint32_t first = head[0] | head[1] << 8 | head[2] << 16 | (std::uint32_t)head[3] << 24;
    if (first == rlbmrec::kRecordMagic) {
        if (got < 8)
            return;
        std::uint32_t length = head[4] | head[5] << 8 | head[6] << 16 | (std::uint32_t)head[7] << 24;
        s.MoveFromStart(start + 8);
        ok = ReadCompressed(length);
    } else {
        ok = ReadPlain(start, head, got);
    }
}

RECORD::~RECORD()
{
    vMemFree(expanded);
    s.DetectCompressed(detect);
}

bool RECORD::ReadCompressed(unsigned long length)
{
    unsigned long pos = s.CurrentPos(), size = s.Size();
    if (pos > size || length > size - pos || length == 0)
        return false;
    unsigned char* packed = static_cast<unsigned char*>(vMemAlloc(length));
    char* work = static_cast<char*>(vMemAlloc(EXP_BUFFER_SIZE));
    bool good = packed && work && (unsigned long)s.ReadByteString(packed, length) == length;
    OUTPUT out = {nullptr, 0, 0, false};
    if (good) {
        INPUT in = {packed, length};
        // Both callbacks take their state through the one parameter.
        struct BOTH {
            INPUT* in;
            OUTPUT* out;
        } both = {&in, &out};
        good = explode(
                   [](char* b, unsigned int* n, void* p) { return FeedInput(b, n, static_cast<BOTH*>(p)->in); },
                   [](char* b, unsigned int* n, void* p) { TakeOutput(b, n, static_cast<BOTH*>(p)->out); },
                   work, &both) == CMP_NO_ERROR &&
               !out.overflow;
    }
    vMemFree(work);
    vMemFree(packed);
    expanded = out.data;
    expandedBytes = out.size;
    if (!good || rlbmrec::PlanCompressed(expanded, expandedBytes, &plan) != rlbmrec::kOk)
        return false;
    std::memcpy(info, expanded, InfoBytes());
    PrepareHeader(info);
    at = 40u + plan.paletteEntries * 4u + plan.skipBytes;
    return true;
}

bool RECORD::ReadPlain(unsigned long start, const unsigned char* head, long got)
{
    // Without the "BM" file header the info header starts the record.
    const bool file = got >= 2 && head[0] == 'B' && head[1] == 'M';
    const long infoAt = file ? 14 : 0;
    if (got < infoAt + 40)
        return false;
    std::memcpy(info, head + infoAt, 40);
    if (got != infoAt + 40)
        s.MoveFromStart(start + infoAt + 40);
    unsigned long pos = s.CurrentPos(), size = s.Size();
    std::uint64_t available = pos <= size ? size - pos : 0;
    if (rlbmrec::PlanHeader(info, available, &plan) != rlbmrec::kOk)
        return false;
    unsigned long palette = plan.paletteEntries * 4ul;
    if (palette && (unsigned long)s.ReadByteString(info + 40, palette) != palette)
        return false;
    if (plan.skipBytes)
        s.MoveFromCur((long)plan.skipBytes);
    PrepareHeader(info);
    return s.Status() == vSTREAM_OK;
}

bool RECORD::Rows(unsigned char* out, std::uint32_t rows)
{
    if (!ok || rows > plan.height - rowsDone)
        return false;
    std::uint32_t bytes = rows * plan.stride;
    rowsDone += rows;
    if (!expanded)
        return (std::uint32_t)s.ReadByteString(out, bytes) == bytes;
    // Rows a 16-bit byte count left out of the record read as zero.
    std::uint32_t have = at < expandedBytes ? expandedBytes - at : 0;
    if (have > bytes)
        have = bytes;
    std::memcpy(out, expanded + at, have);
    std::memset(out + have, 0, bytes - have);
    at += bytes;
    return true;
}

const unsigned char* RECORD::AllRows(std::uint32_t before)
{
    if (!ok || rowsDone != 0)
        return nullptr;
    if (expanded && at <= expandedBytes && expandedBytes - at >= plan.rowBytes) {
        rowsDone = plan.height;
        at += plan.rowBytes;
        return expanded + at - plan.rowBytes;
    }
    if (plan.rowBytes > 0xFFFFFFFFu - before)
        return nullptr;
    unsigned char* spare = RowBuffer(before + plan.rowBytes);
    return spare && Rows(spare + before, plan.height) ? spare + before : nullptr;
}

void RECORD::Finish()
{
    if (ok && !expanded && rowsDone == plan.height && plan.imageBytes > plan.rowBytes)
        s.MoveFromCur((long)(plan.imageBytes - plan.rowBytes));
}

SCREENDC::SCREENDC() : dc(nullptr), trueColour32(false), old(nullptr)
{
    rlstate::BMSTATE& st = rlstate::bmState;
    if (!st.displayDC) {
        st.displayDC = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
        if (!st.displayDC)
            return;
        // Under Wine every bitmap made on the display's context asks the
        // display driver for the screen's format, a fixed cost several times
        // that of converting a strip's rows. A memory context holding a
        // bitmap of that format makes the same bitmaps without asking. A
        // palette screen keeps the display's context, whose realised palette
        // the colours are matched against.
        if (!(GetDeviceCaps(st.displayDC, RASTERCAPS) & RC_PALETTE)) {
            st.formatDC = CreateCompatibleDC(st.displayDC);
            st.formatBitmap = st.formatDC ? CreateCompatibleBitmap(st.displayDC, 1, 1) : nullptr;
            st.formatOld = st.formatBitmap ? SelectObject(st.formatDC, st.formatBitmap) : nullptr;
            st.trueColour32 = GetDeviceCaps(st.displayDC, BITSPIXEL) * GetDeviceCaps(st.displayDC, PLANES) == 32;
            if (!st.formatOld) {
                if (st.formatBitmap)
                    DeleteObject(st.formatBitmap);
                if (st.formatDC)
                    DeleteDC(st.formatDC);
                st.formatDC = nullptr;
                st.formatBitmap = nullptr;
            }
        }
    }
    if (st.formatDC) {
        dc = st.formatDC;
        trueColour32 = st.trueColour32;
        return;
    }
    dc = st.displayDC;
    if (rlstate::devState.palette) {
        old = SelectPalette(dc, rlstate::devState.palette, FALSE);
        RealizePalette(dc);
    }
}

SCREENDC::~SCREENDC()
{
    if (dc && old)
        SelectPalette(dc, old, FALSE);
}

unsigned char* RowBuffer(std::uint32_t bytes)
{
    if (bytes <= rowBufferBytes)
        return rowBuffer;
    // The old rows are not wanted: a fresh block spares copying them.
    vMemFree(rowBuffer);
    rowBufferBytes = 0;
    rowBuffer = static_cast<unsigned char*>(vMemAlloc(bytes ? bytes : 1));
    if (rowBuffer)
        rowBufferBytes = bytes;
    return rowBuffer;
}

void ReleaseRowBuffer(bool all)
{
    if (!all && rowBufferBytes <= kKeptRowBytes)
        return;
    vMemFree(rowBuffer);
    rowBuffer = nullptr;
    rowBufferBytes = 0;
}

void FreeDisplayDC()
{
    ReleaseRowBuffer(true);
    rlstate::BMSTATE& st = rlstate::bmState;
    if (st.formatDC) {
        SelectObject(st.formatDC, st.formatOld);
        DeleteObject(st.formatBitmap);
        DeleteDC(st.formatDC);
    }
    if (st.displayDC)
        DeleteDC(st.displayDC);
    st.displayDC = st.formatDC = nullptr;
    st.formatBitmap = nullptr;
    st.formatOld = nullptr;
}

bool ReadStrips(vSTREAM& stream, STRIPSINK& sink)
{
    RECORD r(stream);
    if (!r.Ok())
        return false;
    const rlbmrec::Plan& p = r.Plan();
    if (p.stripCount > 0xFFFFu || p.rowsPerStrip > 0xFFFFu || !sink.Begin((unsigned short)p.stripCount))
        return false;
    SCREENDC screen;
    if (!screen.dc)
        return false;
    // On a true-colour screen of 32 bits per pixel, 24-bit rows are widened
    // here, a strip at a time just before GDI takes them: GDI converts
    // 24-bit rows far more slowly than it takes rows already at the screen's
    // depth, the pixels it keeps are the same either way, and a strip's
    // widened rows are still in the cache when GDI reads them.
    const std::uint64_t wideBytes = (std::uint64_t)p.width * 4u * p.rowsPerStrip;
    const bool widen = p.bits == 24 && wideBytes <= 0xFFFFFFFFu - p.rowBytes && screen.trueColour32;
    // One read of every row; each strip is made from its place in them.
    // A compressed record's rows are used where they were expanded. The
    // widened strip goes in front of read rows in the kept buffer.
    const unsigned char* rows = r.AllRows(widen ? (std::uint32_t)wideBytes : 0u);
    unsigned char* wide = rows && widen ? RowBuffer((std::uint32_t)wideBytes) : nullptr;
    if (!rows || (widen && !wide)) {
        ReleaseRowBuffer(false);
        return false;
    }
    BITMAPINFO* bi = r.Info();
    BITMAPINFOHEADER wideHead;
    if (widen) {
        wideHead = bi->bmiHeader;
        wideHead.biBitCount = 32;
        wideHead.biCompression = BI_RGB;
        bi = reinterpret_cast<BITMAPINFO*>(&wideHead);
    }
    bool good = true;
    for (std::uint32_t k = 0; good && k < p.stripCount; ++k) {
        std::uint32_t n = rlbmrec::StripRows(p.height, p.rowsPerStrip, k);
        bi->bmiHeader.biHeight = p.topDown ? -(LONG)n : (LONG)n;
        const unsigned char* strip = rows + (std::size_t)k * p.rowsPerStrip * p.stride;
        if (widen) {
            rlwiden::Widen24To32(strip, p.stride, wide, p.width, n);
            strip = wide;
        }
        HBITMAP b = CreateDIBitmap(screen.dc, &bi->bmiHeader, CBM_INIT, strip, bi, DIB_RGB_COLORS);
        if (!b) {
            good = false;
            break;
        }
        // Bottom strip first: stored top-down rows arrive top strip first.
        sink.Put((unsigned short)(p.topDown ? p.stripCount - 1 - k : k), b, (unsigned short)n);
    }
    ReleaseRowBuffer(false);
    if (good)
        r.Finish();
    return good;
}

unsigned char* ReadPacked(vSTREAM& stream, unsigned long* bytes)
{
    RECORD r(stream);
    if (!r.Ok())
        return nullptr;
    const rlbmrec::Plan& p = r.Plan();
    unsigned long head = r.InfoBytes();
    unsigned char* dib = static_cast<unsigned char*>(vMemAlloc(head + p.rowBytes));
    if (!dib)
        return nullptr;
    std::memcpy(dib, r.Info(), head);
    BITMAPINFOHEADER* h = reinterpret_cast<BITMAPINFOHEADER*>(dib);
    h->biHeight = (LONG)p.height;
    h->biSizeImage = p.rowBytes;
    bool good = true;
    if (!p.topDown)
        good = r.Rows(dib + head, p.height);
    for (std::uint32_t y = 0; good && p.topDown && y < p.height; ++y)
        good = r.Rows(dib + head + (p.height - 1 - y) * p.stride, 1);
    if (!good) {
        vMemFree(dib);
        return nullptr;
    }
    r.Finish();
    *bytes = head + p.rowBytes;
    return dib;
}

} // namespace rlbmread
