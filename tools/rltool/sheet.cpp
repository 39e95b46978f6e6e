#include "sheet.h"
#include <cstdio>
#include <cstring>
#include "rltool.h"

namespace {

// At 8 bits the device takes the sheet's colours as the library's palette.
class SHEETDEVICE : public vDEVICEID {
public:
    explicit SHEETDEVICE(HDC dc) : vDEVICEID(dc) {}
    using vDEVICE::SetScreenPalette;
};

bool Put(FILE* f, const void* p, size_t n) { return fwrite(p, 1, n, f) == n; }

// A 6 x 6 x 6 colour cube from entry 20, greys around it.
void CubePalette(RGBQUAD* q)
{
    for (int i = 0; i < 256; ++i) {
        if (i >= 20 && i < 236) {
            q[i].rgbRed = (BYTE)(51 * ((i - 20) / 36));
            q[i].rgbGreen = (BYTE)(51 * ((i - 20) / 6 % 6));
            q[i].rgbBlue = (BYTE)(51 * ((i - 20) % 6));
        } else {
            BYTE g = (BYTE)(i < 20 ? i * 13 : 255 - (255 - i) * 12);
            q[i].rgbRed = q[i].rgbGreen = q[i].rgbBlue = g;
        }
        q[i].rgbReserved = 0;
    }
}

} // namespace

RLSHEET::RLSHEET(long w, long h, int bits) : width(w), height(h), colours(bits == 8 ? 256 : 0)
{
    memset(&info, 0, sizeof info);
    info.h.biSize = sizeof(BITMAPINFOHEADER);
    info.h.biWidth = w;
    info.h.biHeight = h;
    info.h.biPlanes = 1;
    info.h.biBitCount = (WORD)bits;
    info.h.biCompression = BI_RGB;
    info.h.biXPelsPerMeter = info.h.biYPelsPerMeter = 3780;
    if (colours) {
        info.h.biClrUsed = 256;
        CubePalette(info.colours);
    }
    dc = CreateCompatibleDC(nullptr);
    bitmap = dc ? CreateDIBSection(dc, (BITMAPINFO*)&info, DIB_RGB_COLORS, &pixels, nullptr, 0) : nullptr;
    if (!bitmap)
        return;
    old = SelectObject(dc, bitmap);
    PatBlt(dc, 0, 0, (int)w, (int)h, WHITENESS);
}

RLSHEET::~RLSHEET()
{
    if (bitmap) {
        SelectObject(dc, old);
        DeleteObject(bitmap);
    }
    if (dc)
        DeleteDC(dc);
}

int RLSHEET::Draw(const std::function<int(vDEVICE&)>& draw)
{
    HPALETTE palette = nullptr;
    if (colours) {
        struct {
            WORD version, count;
            PALETTEENTRY entries[256];
        } lp;
        lp.version = 0x300;
        lp.count = 256;
        for (int i = 0; i < 256; ++i)
            lp.entries[i] = {info.colours[i].rgbRed, info.colours[i].rgbGreen, info.colours[i].rgbBlue, 0};
        palette = CreatePalette((LOGPALETTE*)&lp);
    }
    int result;
    {
        SHEETDEVICE d(dc);
        if (palette) {
            SHEETDEVICE::SetScreenPalette(palette);
            vDEVICE::SetNoColours(8);
            SelectPalette(dc, palette, FALSE);
        }
        result = draw(d);
    }
    GdiFlush();
    if (palette) {
        SHEETDEVICE::SetScreenPalette(nullptr);
        SelectPalette(dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
        DeleteObject(palette);
    }
    return result;
}

bool RLSHEET::Save(const char* path)
{
    const unsigned long stride = ((unsigned long)width * info.h.biBitCount + 31) / 32 * 4;
    const unsigned long offset = 14 + sizeof(BITMAPINFOHEADER) + colours * sizeof(RGBQUAD);
    const unsigned long size = offset + stride * (unsigned long)height;
    unsigned char fileHeader[14] = {'B', 'M'};
    for (int i = 0; i < 4; ++i) {
        fileHeader[2 + i] = (unsigned char)(size >> (8 * i));
        fileHeader[10 + i] = (unsigned char)(offset >> (8 * i));
    }
    info.h.biSizeImage = stride * (unsigned long)height;
    RlOutput file;
    return file.Create(path) && Put(file.File(), fileHeader, sizeof fileHeader) &&
           Put(file.File(), &info.h, sizeof info.h) &&
           (!colours || Put(file.File(), info.colours, colours * sizeof(RGBQUAD))) &&
           Put(file.File(), pixels, stride * (unsigned long)height) && file.Commit();
}
