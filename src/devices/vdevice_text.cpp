// The device's text output and font cache.
//
// Text is drawn in the line colour with the current font description
// realised as a system font (vFONTDETAIL). Three ways in:
//   DrawTextOnLine  a run on a baseline from a point, optionally with the
//                   distance from each character to the next given
//   DrawChar        one character on a baseline
//   DrawTextA       lines (split at '\n') placed in a rectangle, left,
//                   centred, right or justified and at its top, middle,
//                   bottom or on its bottom edge, clipped to it
// Turned text (a font angle) turns about each run's reference point, and the
// rectangle placement uses the turned block's bounding box. In fast-update
// mode text is drawn as glyph outlines, as shapes are.
//
// The font cache keeps one vFONTDETAIL per description the device has
// used, most recently used first; the current one's font is selected into
// the device's context while the device is active, and deleted when the
// context goes (ClearFont).
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "rl132/attributes/vfont.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vmem.h"
#include "core/rlstate.h"
#include "devices/textlayout.h"

namespace {

// Per-character and per-line arrays live on the stack up to this many
// entries and go to the heap beyond.
const int kInline = 64;

template <class T>
class SCRATCH {
public:
    explicit SCRATCH(unsigned long n) : p(n <= (unsigned long)kInline ? small : static_cast<T*>(vMemAlloc(n * sizeof(T)))) {}
    ~SCRATCH()
    {
        if (p != small)
            vMemFree(p);
    }
    T* p;

private:
    SCRATCH(const SCRATCH&);
    SCRATCH& operator=(const SCRATCH&);
    T small[kInline];
};

// One run of text at a device point with the context's current alignment:
// the glyphs themselves, or their outlines stroked with a pen of the colour.
int TextRun(HDC dc, int x, int y, const char* s, int len, const INT* dx, int outline, COLORREF colour, int penWidth)
{
    if (!outline)
        return ExtTextOutA(dc, x, y, 0, nullptr, s, (UINT)len, dx) ? 1 : 0;
    int bk = SetBkMode(dc, TRANSPARENT);
    BeginPath(dc);
    ExtTextOutA(dc, x, y, 0, nullptr, s, (UINT)len, dx);
    EndPath(dc);
    SetBkMode(dc, bk);
    HPEN pen = CreatePen(PS_SOLID, penWidth, colour);
    if (!pen) {
        AbortPath(dc);
        return 0;
    }
    HGDIOBJ old = SelectObject(dc, pen);
    int ok = StrokePath(dc) ? 1 : 0;
    SelectObject(dc, old);
    DeleteObject(pen);
    return ok;
}

int Breaks(const char* s, int len)
{
    int n = 0;
    for (int i = 0; i < len; ++i)
        n += s[i] == ' ';
    return n;
}

} // namespace

// ---- the font cache ---------------------------------------------------------

vFONTDETAIL* vDEVICE::GetCurFontDetail()
{
    return curFont;
}

// The first entry is made for the description the device starts with; its
// metrics are read when first needed, once the device can give a context of
// its own (a constructor cannot yet: its sub-class is not there).
void vDEVICE::InitFontCache()
{
    fontCache = curFont = new vFONTDETAIL(fontSpec, *this);
}

void vDEVICE::FreeFontCache()
{
    if (rlstate::devState.active == this)
        ClearFont();
    while (fontCache) {
        vFONTDETAIL* d = fontCache;
        fontCache = d->next;
        delete d;
    }
    curFont = nullptr;
}

int vDEVICE::SelectFontDetail(const vFONTSPEC& desc)
{
    if (curFont && *curFont == desc)
        return 1;
    // The present font leaves the context before another one is current, or
    // nothing would delete it.
    if (rlstate::devState.active == this)
        ClearFont();

    vFONTDETAIL* prev = nullptr;
    vFONTDETAIL* d = fontCache;
    while (d && !(*d == desc)) {
        prev = d;
        d = d->next;
    }
    if (d) {
        vTrace(1, "vDEVICE::Found Font");
        if (prev) {
            prev->next = d->next;
            d->next = fontCache;
            fontCache = d;
        }
        curFont = d;
        return 1;
    }

    vTrace(1, "vDEVICE - New Font");
    d = new vFONTDETAIL(desc, *this);
    if (!d) {
        curFont = nullptr;
        return 0;
    }
    d->Init(*this);
    d->device = this;
    d->next = fontCache;
    fontCache = d;
    curFont = d;
    return 1;
}

void vDEVICE::ClearFont()
{
    HDC dc = GetRLDC();
    if (!dc)
        return;
    HGDIOBJ was = SelectObject(dc, GetStockObject(SYSTEM_FONT));
    if (curFont && curFont->font && was == curFont->font) {
        DeleteObject(curFont->font);
        curFont->font = nullptr;
    }
}

int vDEVICE::ActivateFont()
{
    HDC dc = ActivateDC();
    if (!dc || !curFont)
        return 0;
    if (!curFont->device)
        curFont->device = this;
    if (!curFont->font && (curFont->font = curFont->CreateSystemFont(dc)) == nullptr)
        return 0;
    SelectObject(dc, curFont->font);
    return 1;
}

// The em height of the current font on this device, in device pixels.
vINT vDEVICE::GetLogFontHeight()
{
    LOGFONTA lf;
    if (!curFont || !curFont->LogFont(lf))
        return vINT(0L);
    return vINT(lf.lfHeight < 0 ? -lf.lfHeight : lf.lfHeight);
}

// ---- text output ------------------------------------------------------------

int vDEVICE::DrawTextOnLine(const vSTRING& text, const vPOINT& at, const short* advances)
{
    if (!visible)
        return 0;
    return FastUpdate() ? LineText(text, at, advances) : FillText(text, at, advances);
}

int vDEVICE::DrawChar(const vCHAR& c, const vPOINT& at)
{
    vSTRING s;
    s = c;
    return DrawTextOnLine(s, at, nullptr);
}

int vDEVICE::FillText(const vSTRING& text, const vPOINT& at, const short* advances)
{
    return curFont ? curFont->DrawRun(text, at, advances, 0) : 0;
}

int vDEVICE::LineText(const vSTRING& text, const vPOINT& at, const short* advances)
{
    return curFont ? curFont->DrawRun(text, at, advances, 1) : 0;
}

int vDEVICE::DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align)
{
    if (!visible || !curFont)
        return 0;
    return curFont->DrawBlock(text, rect, align, FastUpdate());
}

// ---- the runs themselves ------------------------------------------------------
// vFONTDETAIL draws for the device: it is the device's friend, and the font
// is what the text is made of.

// Per-character advances are logical distances; they are summed first and the
// sums converted, so that rounding never accumulates along the run.
int vFONTDETAIL::DrawRun(const vSTRING& text, const vPOINT& at, const short* advances, int outline)
{
    vDEVICE& dev = *device;
    HDC dc = dev.ActivateDC();
    if (!dc || dev.curFont != this || !dev.ActivateFont())
        return 0;
    const char* s = text();
    int len = text.Length();
    if (!s || len == 0)
        return 1;
    SCRATCH<INT> dx((unsigned long)len);
    if (advances && !dx.p)
        return 0;
    if (advances) {
        long sum = 0, prev = 0;
        for (int i = 0; i < len; ++i) {
            sum += advances[i];
            long next = dev.LHtoDH(vINT(sum))();
            dx.p[i] = (INT)(next - prev);
            prev = next;
        }
    }
    vPOINT p = dev.LPtoDP(at);
    COLORREF colour = (COLORREF)dev.lineSpec.Colour().PackedRGB();
    long pen = dev.LHtoDH(dev.lineSpec.Width())();

    int saved = SaveDC(dc);
    SetTextColor(dc, colour);
    SetTextAlign(dc, TA_BASELINE | TA_LEFT | TA_NOUPDATECP);
    int ok = TextRun(dc, p.x(), p.y(), s, len, advances ? dx.p : nullptr, outline, colour, pen > 1 ? (int)pen : 1);
    RestoreDC(dc, saved);
    return ok;
}

int vFONTDETAIL::DrawBlock(const vSTRING& text, const vRECT& rect, int align, int outline)
{
    vDEVICE& dev = *device;
    HDC dc = dev.ActivateDC();
    if (!dc || dev.curFont != this || !dev.ActivateFont())
        return 0;
    const char* s = text();
    int len = text.Length();
    if (!s || len == 0)
        return 1;

    int lines = 1;
    for (int i = 0; i < len; ++i)
        lines += s[i] == '\n';
    SCRATCH<int> start((unsigned long)lines), count((unsigned long)lines);
    SCRATCH<std::int32_t> widths((unsigned long)lines);
    SCRATCH<rltext::LINEPOS> pos((unsigned long)lines);
    if (!start.p || !count.p || !widths.p || !pos.p)
        return 0;
    for (int i = 0, line = 0, from = 0; i <= len; ++i) {
        if (i == len || s[i] == '\n') {
            int end = i;
            if (end > from && s[end - 1] == '\r')
                --end;
            start.p[line] = from;
            count.p[line] = end - from;
            SIZE size = {0, 0};
            if (end > from)
                GetTextExtentPoint32A(dc, s + from, end - from, &size);
            widths.p[line] = size.cx;
            ++line;
            from = i + 1;
        }
    }

    TEXTMETRICA tm;
    LOGFONTA lf;
    if (!GetTextMetricsA(dc, &tm) || !LogFont(lf))
        return 0;
    vRECT r = dev.LPtoDP(rect);
    rltext::LAYOUTIN in;
    in.left = r.left();
    in.top = r.top();
    in.right = r.right();
    in.bottom = r.bottom();
    static const rltext::HALIGN kH[4] = {rltext::H_LEFT, rltext::H_CENTRE, rltext::H_RIGHT, rltext::H_JUSTIFY};
    static const rltext::VALIGN kV[4] = {rltext::V_TOP, rltext::V_MIDDLE, rltext::V_BOTTOM, rltext::V_BASELINE};
    in.h = kH[align & vTA_HMASK];
    in.v = kV[(align & vTA_VMASK) >> 2];
    rltext::AngleVector(lf.lfEscapement, &in.cos16, &in.sin16);
    in.lineHeight = tm.tmHeight + tm.tmExternalLeading;
    in.ascent = tm.tmAscent;
    in.count = lines;
    in.widths = widths.p;
    rltext::LayOut(in, pos.p);

    COLORREF colour = (COLORREF)dev.lineSpec.Colour().PackedRGB();
    long pen = dev.LHtoDH(dev.lineSpec.Width())();
    int saved = SaveDC(dc);
    SetTextColor(dc, colour);
    SetTextAlign(dc, TA_TOP | TA_LEFT | TA_NOUPDATECP);
    // The rectangle's edges belong to it, as a filled rectangle's do.
    IntersectClipRect(dc, in.left < in.right ? in.left : in.right, in.top < in.bottom ? in.top : in.bottom,
                      (in.left < in.right ? in.right : in.left) + 1, (in.top < in.bottom ? in.bottom : in.top) + 1);
    int ok = 1;
    for (int i = 0; i < lines; ++i) {
        if (count.p[i] == 0)
            continue;
        const char* line = s + start.p[i];
        int breaks = pos.p[i].extra > 0 ? Breaks(line, count.p[i]) : 0;
        if (breaks)
            SetTextJustification(dc, pos.p[i].extra, breaks);
        ok &= TextRun(dc, pos.p[i].x, pos.p[i].y, line, count.p[i], nullptr, outline, colour, pen > 1 ? (int)pen : 1);
        if (breaks)
            SetTextJustification(dc, 0, 0);
    }
    RestoreDC(dc, saved);
    return ok;
}
