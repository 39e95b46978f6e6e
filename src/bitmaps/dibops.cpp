// Row access shared by the two image kinds (see dibops.h).
#include "bitmaps/dibops.h"
#include <cstring>
#include "bitmaps/dibrows.h"
#include "bitmaps/pixfmt.h"
#include "rl132/core/vmem.h"

namespace dibops {

int GetBlock(const oDIBHEADER& h, const oDIBPALETTE* palette, const unsigned char* rows,
             unsigned long held, unsigned long x, unsigned long firstLine, unsigned long width,
             unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model)
{
    const unsigned long height = h.Height(), imageWidth = h.Width(), bits = h.biBitCount;
    if (!rows || !buffer || height == 0 || firstLine > lastLine || firstLine >= height)
        return 0;
    if (lastLine >= height)
        lastLine = height - 1;
    std::uint32_t stride = 0;
    if (!rldib::CheckedImageSize(bits, imageWidth, 1, &stride, nullptr) || stride == 0)
        return 0;
    const unsigned long long offset = (unsigned long long)firstLine * stride;
    if (offset >= held)
        return 0;
    const unsigned long count = lastLine - firstLine + 1;

    if (x == 0 && width == imageWidth) {
        unsigned long long want = (unsigned long long)count * stride;
        unsigned long long avail = held - offset;
        std::memcpy(buffer, rows + offset, (size_t)(want < avail ? want : avail));
        return want <= avail ? 1 : 0;
    }

    if (x >= imageWidth)
        return 0;
    if (width > imageWidth - x)
        width = imageWidth - x;
    const bool indexed = bits <= 8;
    const bool expand = indexed && model && *model == oCM_RGB24;
    if (model && !expand)
        *model = indexed ? oCM_PAL256 : oCM_RGB24;
    const rldib::PixelFormat& format = rldib::Format(bits);
    const unsigned char* quads = palette ? (const unsigned char*)palette->GetRgbQuad() : nullptr;
    const unsigned long palCount = quads ? palette->GetNumColours() : 0;
    const unsigned long firstByte = x * bits / 8;
    const unsigned long endByte = ((x + width) * bits + 7) / 8;
    unsigned char* out = buffer;
    int complete = 1;
    for (unsigned long r = 0; r < count; ++r) {
        unsigned long long at = offset + (unsigned long long)r * stride;
        if (at + stride > held) {
            complete = 0;
            break;
        }
        const unsigned char* row = rows + at;
        if (!indexed) {
            std::memcpy(out, row + firstByte, endByte - firstByte);
            out += endByte - firstByte;
        } else if (!expand) {
            // Indices one per byte; a bit count without a format gives zeros.
            format.unpack(row, x, width, out);
            out += width;
        } else {
            format.expand(row, x, width, quads, palCount, out);
            out += 3 * width;
        }
    }
    return complete;
}

void ResetStore(LineStore& s)
{
    vMemFree(s.staging);
    s.staging = nullptr;
    s.stagingCursor = 0;
    s.writeCursor = 0;
}

int StoreLines(LineStore& s, unsigned char* rows, unsigned long held, const oDIBHEADER& h,
               const unsigned char* buffer, unsigned long firstLine, unsigned long lastLine)
{
    if (!rows || !buffer || firstLine > lastLine)
        return 0;
    std::uint32_t stride = 0, total = 0;
    if (!rldib::CheckedImageSize(h.biBitCount, h.Width(), h.Height(), &stride, &total))
        return 0;
    if (total > held)
        total = (std::uint32_t)held;
    const unsigned long long bytes = (unsigned long long)(lastLine - firstLine + 1) * stride;

    // The write cursor counts bytes while firstLine counts rows: a producer that
    // starts at the bottom is copied straight through, one that starts anywhere
    // higher is staged.
    if (firstLine <= s.writeCursor && !s.staging) {
        unsigned long avail = total > s.writeCursor ? total - s.writeCursor : 0;
        unsigned long n = bytes < avail ? (unsigned long)bytes : avail;
        std::memcpy(rows + s.writeCursor, buffer, n);
        s.writeCursor += n;
        return 1;
    }
    if (!s.staging) {
        s.staging = (unsigned char*)vMemAlloc(total + 1UL);
        if (!s.staging)
            return 0;
        s.stagingCursor = total;
    }
    // Each block goes just below the one before: top-first delivery ends up in
    // stored order.
    if (bytes > s.stagingCursor)
        return 0;
    s.stagingCursor -= (unsigned long)bytes;
    std::memcpy(s.staging + s.stagingCursor, buffer, (size_t)bytes);
    if (firstLine == 0) {
        std::memcpy(rows + s.stagingCursor, s.staging + s.stagingCursor, total - s.stagingCursor);
        vMemFree(s.staging);
        s.staging = nullptr;
        s.stagingCursor = 0;
    }
    return 1;
}

} // namespace dibops
