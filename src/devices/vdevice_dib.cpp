// Drawing a DIB on a device: the rows go to the context with StretchDIBits,
// the picture's source rectangle into the target's device rectangle.
//
// Three roads, the plainest that serves:
//   - as stored: no display mode, tint, negative or hidden colour; the DIB's
//     own rows and colour table go to GDI unchanged;
//   - a working copy (dibconv.h): the source rectangle expanded to 32-bit
//     pixels, turned negative, converted like every colour the device draws
//     (greyscale, the current process or spot plate, a tint) and drawn in one
//     call;
//   - the same with hidden pixels (the transparent colour, colours that do not
//     show on the plate): a 1-bit mask ANDed into the target, then the copy,
//     black where hidden, ORed over it.
// The negative and the ink planes of process plates are asked of the imaging
// library first (platform/leadlib.h); without it, or when it refuses, the
// library's own code does the same work.
#include <windows.h>
#include <cstring>
#include "rl132/devices/vdevice.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/core/vmem.h"
#include "devices/devmath.h"
#include "devices/dibconv.h"
#include "platform/leadlib.h"

namespace {

struct FULLINFO {
    BITMAPINFOHEADER h;
    RGBQUAD colours[256];
};

// The pixel block of a DIB, borrowed from an in-memory image or copied out
// of any other kind.
class ROWS {
public:
    explicit ROWS(const oDIB& dib) : rows(nullptr), size(0), owned(nullptr)
    {
        unsigned long need = dib.Stride() * dib.Height();
        if (const oMEMDIB* m = dynamic_cast<const oMEMDIB*>(&dib)) {
            rows = m->Bits();
            size = m->Bits() ? m->BitsSize() - m->RowOffset() : 0;
        } else if (need && dib.Height() && (owned = (unsigned char*)vMemAlloc(need)) != nullptr) {
            oCOLOUR_MODEL model = oCM_RGB24;
            if (dib.GetImageLines(0, dib.Height() - 1, owned, &model)) {
                rows = owned;
                size = need;
            }
        }
    }
    ~ROWS() { vMemFree(owned); }
    const unsigned char* rows;
    unsigned long size;

private:
    ROWS(const ROWS&) = delete;
    ROWS& operator=(const ROWS&) = delete;
    unsigned char* owned;
};

// A block of library memory for the life of one drawing.
struct BLOCK {
    explicit BLOCK(unsigned long bytes) : p(bytes ? vMemAlloc(bytes) : nullptr) {}
    ~BLOCK() { vMemFree(p); }
    BLOCK(const BLOCK&) = delete;
    BLOCK& operator=(const BLOCK&) = delete;
    void* p;
};

// Whether StretchDIBits drew: it answers the number of lines, which for a
// top-down DIB comes back negative on some systems, 0 for nothing drawn and
// GDI_ERROR (the same bits as -1) for a failure.
int Drew(int answer, long lines)
{
    return answer != 0 && (answer != (int)GDI_ERROR || lines == 1);
}

void TopDownInfo(FULLINFO& info, long w, long h, WORD bits)
{
    memset(&info, 0, sizeof info);
    info.h.biSize = sizeof(BITMAPINFOHEADER);
    info.h.biWidth = w;
    info.h.biHeight = -h;
    info.h.biPlanes = 1;
    info.h.biBitCount = bits;
    info.h.biCompression = BI_RGB;
}

} // namespace

int vDEVICE::DrawDIB(const oDIB& dib, const vRECT& target, vCOLOUR* transparent)
{
    vRECT where(target);
    return DrawDIB(dib, nullptr, nullptr, 0, 0, &where, 0, transparent);
}

int vDEVICE::DrawDIB(const oDIB& dib, vRECT* source, vCOLOUR* tint, int rop, int mode, vRECT* target, int flags,
                     vCOLOUR* transparent)
{
    ROWS rows(dib);
    oDIBPALETTE* pal = nullptr;
    unsigned colours = dib.GetPalette(&pal);
    const RGBQUAD* quads = pal ? pal->GetRgbQuad() : nullptr;
    if (!quads || colours > 256)
        colours = quads ? 256 : 0;
    dibconv::SOURCE src = {rows.rows, rows.size, (std::uint32_t)dib.Stride(), (std::int32_t)dib.Width(),
                           (std::int32_t)dib.Height(), dib.BitCount(), (const unsigned char*)quads, colours};
    if (dib.Width() > 0x7FFF || dib.Height() > 0x7FFF || !dibconv::Valid(src))
        return 0;

    // The source rectangle, in the picture's pixels from its top-left corner,
    // cut to the picture.
    long sx = 0, sy = 0, sx1 = src.width, sy1 = src.height;
    if (source) {
        sx = source->left() > 0 ? source->left() : 0;
        sy = source->top() > 0 ? source->top() : 0;
        sx1 = source->right() < sx1 ? source->right() : sx1;
        sy1 = source->bottom() < sy1 ? source->bottom() : sy1;
    }
    if (sx1 <= sx || sy1 <= sy)
        return 0;
    long sw = sx1 - sx, sh = sy1 - sy;

    // The target in device pixels; reversed corners mirror the picture.
    vRECT dr = target ? LPtoDP(*target) : vRECT(LPtoDP(vPOINT(vINT(0L), vINT(0L))), vINT(sw), vINT(sh));
    long dx = dr.left(), dy = dr.top(), dw = dr.right() - dr.left(), dh = dr.bottom() - dr.top();
    if (!dw || !dh)
        return 0;

    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    int oldMode = SetStretchBltMode(dc, mode ? mode : COLORONCOLOR);
    DWORD op = rop ? (DWORD)rop : SRCCOPY;
    int converts = !(flags & vDIB_ASIS) && (displayMode != vDM_NORMAL || tint);
    int drawn = 0;

    if (!converts && !(flags & vDIB_INVERT) && !transparent) {
        FULLINFO info;
        TopDownInfo(info, src.width, src.height, src.bits);
        info.h.biHeight = src.height;   // the stored rows, bottom-up
        info.h.biSizeImage = src.stride * (DWORD)src.height;
        info.h.biClrUsed = src.bits <= 8 ? 1u << src.bits : 0;
        if (colours)
            memcpy(info.colours, quads, 4u * colours);
        // Rows are bottom-up, so GDI counts the source rectangle from the
        // picture's bottom edge.
        drawn = Drew(StretchDIBits(dc, dx, dy, dw, dh, sx, src.height - sy1, sw, sh, src.rows, (BITMAPINFO*)&info,
                                   DIB_RGB_COLORS, op),
                     sh);
        SetStretchBltMode(dc, oldMode);
        return drawn;
    }

    unsigned long count = (unsigned long)sw * (unsigned long)sh;
    BLOCK canvasBlock(count * 4), hiddenBlock(count);
    std::uint32_t* canvas = (std::uint32_t*)canvasBlock.p;
    unsigned char* hidden = (unsigned char*)hiddenBlock.p;
    if (!canvas || !hidden) {
        SetStretchBltMode(dc, oldMode);
        return 0;
    }
    std::uint32_t key = transparent ? (std::uint32_t)(transparent->PackedRGB() & 0xFFFFFF) : 0;
    dibconv::Expand(src, sx, sy, sw, sh, canvas, hidden, key);
    if (!transparent)
        memset(hidden, 0, count);

    LEADBRIDGE& bridge = LEADBRIDGE::Instance();
    if ((flags & vDIB_INVERT) && !bridge.Invert(canvas, sw, sh))
        dibconv::Invert(canvas, count);
    if (converts) {
        // As Convert does: a printer draws every plate in black.
        if (DeviceType() == vDT_PRINTER)
            plateColour = vCOLOUR((vCOLOURTYPE)0, 0, 100, 0);
        devmath::SEPARATION s = {displayMode, plateColour, sepColour, knockOut, overprintDark, plate};
        if (dibconv::ProcessPlate(s) && !tint && plate >= 0 && plate <= 3) {
            BLOCK planeBlock(count);
            unsigned char* plane = (unsigned char*)planeBlock.p;
            if (!plane) {
                SetStretchBltMode(dc, oldMode);
                return 0;
            }
            if (!bridge.InkPlane(canvas, sw, sh, plate, plane))
                dibconv::InkPlane(canvas, count, plate, plane);
            dibconv::ApplyPlane(plateColour, plane, canvas, hidden, count);
        } else {
            dibconv::MapCanvas(s, tint, canvas, hidden, count);
        }
    }

    FULLINFO info;
    TopDownInfo(info, sw, sh, 32);
    unsigned long hiddenCount = 0;
    for (unsigned long i = 0; i < count; ++i)
        hiddenCount += hidden[i];
    if (!hiddenCount) {
        drawn = Drew(StretchDIBits(dc, dx, dy, dw, dh, 0, 0, sw, sh, canvas, (BITMAPINFO*)&info, DIB_RGB_COLORS, op), sh);
    } else if (hiddenCount == count) {
        drawn = 1;   // nothing of the picture shows
    } else {
        BLOCK maskBlock(dibconv::MaskStride(sw) * (unsigned long)sh);
        if (maskBlock.p) {
            dibconv::BuildMask(hidden, sw, sh, (unsigned char*)maskBlock.p, canvas);
            FULLINFO mask;
            TopDownInfo(mask, sw, sh, 1);
            mask.h.biClrUsed = 2;
            mask.colours[1].rgbRed = mask.colours[1].rgbGreen = mask.colours[1].rgbBlue = 255;
            drawn = Drew(StretchDIBits(dc, dx, dy, dw, dh, 0, 0, sw, sh, maskBlock.p, (BITMAPINFO*)&mask,
                                       DIB_RGB_COLORS, SRCAND),
                         sh) &&
                    Drew(StretchDIBits(dc, dx, dy, dw, dh, 0, 0, sw, sh, canvas, (BITMAPINFO*)&info, DIB_RGB_COLORS,
                                       SRCPAINT),
                         sh);
        }
    }
    SetStretchBltMode(dc, oldMode);
    return drawn;
}
