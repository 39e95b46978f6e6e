// PCDLIB32.DLL: Photo CD volumes and image packs through the interface of
// rl132/photocd/pcdapi.h. The files are read here; everything about their
// bytes is in pcdpack.cpp.
//
// A volume is a folder holding IMAGES\IMGnnnn.PCD (directly or under
// PHOTO_CD\), optionally PHOTO_CD\OVERVIEW.PCD and PHOTO_CD\INFO.PCD. Image
// packs are opened for each read and closed again, so a disc may be changed
// between reads; the overview keeps its file until PCDOrefClose or PCDOclose.
// Before each read the disc's identifier (INFO.PCD's serial number) is taken
// again; when it differs from the one the handle was opened on, the
// disc-changed callback decides whether to go on.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <new>

#include "pcdpack.h"

using namespace pcdpack;

namespace {

const DWORD kPackMagic = 0x4b504350;   // "PCPK"
const DWORD kOviewMagic = 0x564f4350;  // "PCOV"
const unsigned long kVersion = 0x0100;
unsigned long g_allowance = 64ul << 20;
const PCDstatus kBadArg = PCD_ERR_BAD_ARG;

void* Alloc(size_t n) { return n ? HeapAlloc(GetProcessHeap(), 0, n) : nullptr; }
void Free(void* p) { if (p) HeapFree(GetProcessHeap(), 0, p); }

// ---- files ----

bool Exists(const char* path, bool folder)
{
    DWORD a = GetFileAttributesA(path);
    return a != INVALID_FILE_ATTRIBUTES && ((a & FILE_ATTRIBUTE_DIRECTORY) != 0) == folder;
}

bool Join(char* out, size_t size, const char* dir, const char* name)
{
    size_t n = strlen(dir);
    const char* sep = (n && (dir[n - 1] == '\\' || dir[n - 1] == '/')) ? "" : "\\";
    int w = snprintf(out, size, "%s%s%s", dir, sep, name);
    return w > 0 && (size_t)w < size;
}

struct File {
    HANDLE h = INVALID_HANDLE_VALUE;
    uint64_t size = 0;
    ~File() { Close(); }
    void Close()
    {
        if (h != INVALID_HANDLE_VALUE)
            CloseHandle(h);
        h = INVALID_HANDLE_VALUE;
    }
    PCDstatus Open(const char* path)
    {
        Close();
        h = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (h == INVALID_HANDLE_VALUE) {
            DWORD e = GetLastError();
            return e == ERROR_FILE_NOT_FOUND || e == ERROR_PATH_NOT_FOUND ? PCD_ERR_NOT_FOUND : PCD_ERR_READ;
        }
        LARGE_INTEGER li;
        if (!GetFileSizeEx(h, &li)) {
            Close();
            return PCD_ERR_READ;
        }
        size = (uint64_t)li.QuadPart;
        return PCD_OK;
    }
    // Exactly bytes at offset, which the caller has checked against size.
    PCDstatus Read(uint64_t offset, void* buffer, uint32_t bytes)
    {
        if (offset + bytes > size)
            return PCD_ERR_DAMAGED;
        LARGE_INTEGER li;
        li.QuadPart = (LONGLONG)offset;
        if (!SetFilePointerEx(h, li, nullptr, FILE_BEGIN))
            return PCD_ERR_READ;
        uint8_t* p = (uint8_t*)buffer;
        while (bytes) {
            DWORD got = 0;
            if (!ReadFile(h, p, bytes, &got, nullptr) || got == 0)
                return PCD_ERR_READ;
            p += got;
            bytes -= got;
        }
        return PCD_OK;
    }
};

// The disc's identifier from INFO.PCD in dir\PHOTO_CD or dir; zeros without one.
void ReadVolumeId(const char* dir, unsigned char id[12])
{
    memset(id, 0, 12);
    char path[MAX_PATH];
    const char* tries[2] = {"PHOTO_CD\\INFO.PCD", "INFO.PCD"};
    for (const char* t : tries) {
        File f;
        if (!Join(path, sizeof path, dir, t) || f.Open(path) != PCD_OK)
            continue;
        uint8_t data[kInfoBytes];
        uint32_t n = f.size < kInfoBytes ? (uint32_t)f.size : kInfoBytes;
        PCDvolumeInfo info;
        if (f.Read(0, data, n) == PCD_OK && ParseInfo(data, n, &info) == PCD_OK)
            memcpy(id, info.volumeId, 12);
        return;
    }
}

// The folder that holds IMAGES\ for a pack path (two levels up).
void VolumeDirOf(const char* pack, char* dir, size_t size)
{
    snprintf(dir, size, "%s", pack);
    for (int level = 0; level < 2; ++level) {
        char* cut = strrchr(dir, '\\');
        char* cut2 = strrchr(dir, '/');
        if (cut2 > cut)
            cut = cut2;
        if (!cut) {
            snprintf(dir, size, ".");
            return;
        }
        *cut = 0;
    }
}

// ---- what every handle keeps about its pictures ----

struct Callbacks {
    PCDprogressFn progress = nullptr;
    void* progressUser = nullptr;
    PCDabortFn abort = nullptr;
    void* abortUser = nullptr;
    PCDdiscChangedFn disc = nullptr;
    void* discUser = nullptr;
};

struct View {
    long resolution = PCD_BASE;
    long format = PCD_FORMAT_RGB24;
    PCDtransform transform = {PCD_ROTATE_0, 0, {0, 0, 0, 0}};
    bool hasPalette = false;
    PCDpalette palette = {};
    // The last picture made, top row first, rows of width * pixel bytes.
    uint8_t* cache = nullptr;
    long cacheWidth = 0, cacheHeight = 0, cachePixel = 0;
    void Drop()
    {
        Free(cache);
        cache = nullptr;
    }
};

// Where one picture's planes are.
struct Source {
    File* file;
    Plane plane;
    int shift;  // halvings from Base, for the crop
};

bool ProgressStep(void* context, unsigned done, unsigned total)
{
    const Callbacks* cb = (const Callbacks*)context;
    if (cb->progress)
        cb->progress((unsigned short)done, (unsigned short)total, cb->progressUser);
    return !(cb->abort && cb->abort(cb->abortUser));
}

PCDstatus CheckDisc(const char* volumeDir, unsigned char id[12], const Callbacks& cb)
{
    unsigned char now[12];
    ReadVolumeId(volumeDir, now);
    if (memcmp(now, id, 12) == 0)
        return PCD_OK;
    if (cb.disc && !cb.disc(now, cb.discUser))
        return PCD_ERR_DISC_CHANGED;
    memcpy(id, now, 12);
    return PCD_OK;
}

PCDstatus Plan(const View& v, const Plane& plane, int shift, TransformPlan* plan)
{
    return PlanTransform(plane.width, plane.height, v.transform, ScaleCrop(v.transform.crop, shift), plan);
}

// Makes the picture in format (24 or 8 bits) into out (top row; stride
// between rows, negative for a bottom-up DIB). For 8 bits without a palette
// of the caller's, one is made from the picture and kept in v.
PCDstatus Produce(const Source& src, View& v, const Callbacks& cb, long format, uint8_t* out,
                  ptrdiff_t stride, const TransformPlan& plan, bool wantPaletteOnly = false,
                  Quantizer** made = nullptr)
{
    const Plane& pl = src.plane;
    uint64_t need = (uint64_t)pl.bytes + (uint64_t)pl.width * pl.height * 3 * 2;
    if (need > g_allowance)
        return PCD_ERR_NO_MEMORY;
    uint8_t* planes = (uint8_t*)Alloc(pl.bytes);
    if (!planes)
        return PCD_ERR_NO_MEMORY;
    PCDstatus st = src.file->Read(pl.offset, planes, pl.bytes);
    Progress progress = {ProgressStep, (void*)&cb};
    const bool direct = format == PCD_FORMAT_RGB24 && !wantPaletteOnly && IsIdentity(plan, pl.width, pl.height);
    if (st == PCD_OK && direct) {
        st = DecodePlanes(pl, planes, pl.bytes, out, stride, &progress);
        Free(planes);
        return st;
    }
    const ptrdiff_t rgbStride = (ptrdiff_t)pl.width * 3;
    uint8_t* rgb = st == PCD_OK ? (uint8_t*)Alloc((size_t)rgbStride * pl.height) : nullptr;
    if (st == PCD_OK && !rgb)
        st = PCD_ERR_NO_MEMORY;
    if (st == PCD_OK)
        st = DecodePlanes(pl, planes, pl.bytes, rgb, rgbStride, &progress);
    Free(planes);
    if (st != PCD_OK) {
        Free(rgb);
        return st;
    }
    if (format == PCD_FORMAT_RGB24 && !wantPaletteOnly) {
        ApplyTransform(plan, rgb, rgbStride, 3, out, stride, 0, plan.height);
        Free(rgb);
        return PCD_OK;
    }
    // 8 bits: turn first (in 24 bits), then map each row.
    const ptrdiff_t tStride = (ptrdiff_t)plan.width * 3;
    uint8_t* turned = (uint8_t*)Alloc((size_t)tStride * plan.height);
    Quantizer* q = (Quantizer*)Alloc(sizeof(Quantizer));
    if (!turned || !q) {
        Free(rgb);
        Free(turned);
        Free(q);
        return PCD_ERR_NO_MEMORY;
    }
    ApplyTransform(plan, rgb, rgbStride, 3, turned, tStride, 0, plan.height);
    Free(rgb);
    QuantizerStart(q);
    if (v.hasPalette && !wantPaletteOnly) {
        QuantizerUse(q, v.palette);
    } else {
        QuantizerAdd(q, turned, plan.width * plan.height);
        QuantizerMake(q, 256);
    }
    if (!wantPaletteOnly) {
        if (!v.hasPalette) {
            v.palette = q->palette;
            v.hasPalette = true;
        }
        for (long y = 0; y < plan.height; ++y)
            QuantizerMap(q, turned + y * tStride, out + y * stride, plan.width);
    }
    Free(turned);
    if (made)
        *made = q;
    else
        Free(q);
    return PCD_OK;
}

// Fills v's cache with the current picture when it is not there.
PCDstatus Ensure(const Source& src, View& v, const Callbacks& cb)
{
    if (v.cache)
        return PCD_OK;
    TransformPlan plan;
    PCDstatus st = Plan(v, src.plane, src.shift, &plan);
    if (st != PCD_OK)
        return st;
    long px = v.format == PCD_FORMAT_PAL8 ? 1 : 3;
    uint8_t* cache = (uint8_t*)Alloc((size_t)plan.width * plan.height * px);
    if (!cache)
        return PCD_ERR_NO_MEMORY;
    st = Produce(src, v, cb, v.format, cache, plan.width * px, plan);
    if (st != PCD_OK) {
        Free(cache);
        return st;
    }
    v.cache = cache;
    v.cacheWidth = plan.width;
    v.cacheHeight = plan.height;
    v.cachePixel = px;
    return PCD_OK;
}

PCDstatus Block(const View& v, long firstRow, long rows, unsigned char* buffer, long rowBytes)
{
    if (!buffer || firstRow < 0 || rows < 1 || rows > v.cacheHeight - firstRow ||
        rowBytes < v.cacheWidth * v.cachePixel)
        return PCD_ERR_BAD_ARG;
    const size_t n = (size_t)v.cacheWidth * v.cachePixel;
    for (long r = 0; r < rows; ++r)
        memcpy(buffer + (size_t)r * rowBytes, v.cache + (size_t)(firstRow + r) * n, n);
    return PCD_OK;
}

PCDstatus LoadDib(const Source& src, View& v, const Callbacks& cb, void** dib)
{
    if (!dib)
        return PCD_ERR_BAD_ARG;
    TransformPlan plan;
    PCDstatus st = Plan(v, src.plane, src.shift, &plan);
    if (st != PCD_OK)
        return st;
    long bits = v.format == PCD_FORMAT_PAL8 ? 8 : 24;
    uint32_t bytes = DibBytes(plan.width, plan.height, bits, g_allowance);
    uint8_t* d = bytes ? (uint8_t*)Alloc(bytes) : nullptr;
    if (!d)
        return PCD_ERR_NO_MEMORY;
    WriteDibHeader(d, plan.width, plan.height, bits, nullptr);
    DibView view;
    ReadDibHeader(d, bytes, &view);
    st = Produce(src, v, cb, v.format, DibTopRow(d, view), -view.stride, plan);
    if (st != PCD_OK) {
        Free(d);
        return st;
    }
    if (bits == 8)
        WriteDibHeader(d, plan.width, plan.height, bits, &v.palette);
    *dib = d;
    return PCD_OK;
}

// The caller's palette for 8-bit output, for an image pack or the overview.
PCDstatus SetViewPalette(View* v, const PCDpalette* palette)
{
    if (!v || !palette || palette->count < 1 || palette->count > 256)
        return PCD_ERR_BAD_ARG;
    v->Drop();
    v->palette = *palette;
    v->hasPalette = true;
    return PCD_OK;
}

PCDstatus GetViewPalette(const View* v, PCDpalette* palette)
{
    if (!v || !palette)
        return PCD_ERR_BAD_ARG;
    if (!v->hasPalette)
        return PCD_ERR_NOT_FOUND;
    *palette = v->palette;
    return PCD_OK;
}

PCDstatus SetView(View& v, long resolution, long format, const PCDtransform* t)
{
    if (format != PCD_FORMAT_RGB24 && format != PCD_FORMAT_PAL8)
        return PCD_ERR_FORMAT_NOT_SUPPORTED;
    if (t && (t->rotation < 0 || t->rotation > 3))
        return PCD_ERR_BAD_ARG;
    v.Drop();
    v.resolution = resolution;
    v.format = format;
    if (t)
        v.transform = *t;
    return PCD_OK;
}

template <class T>
bool Put(T* out, const T& value)
{
    if (!out)
        return false;
    *out = value;
    return true;
}

}  // namespace

// ---- image packs ----

struct PCDpack_ {
    DWORD magic = 0;
    char path[MAX_PATH];
    char volumeDir[MAX_PATH];
    unsigned char volumeId[12];
    PackHeader header;
    View view;
    Callbacks cb;
    File file;  // open only while a picture is read
};

namespace {

PCDpack_* Pack(PCDpkHdl h) { return h && h->magic == kPackMagic ? h : nullptr; }

// Opens the pack's file, checks disc and header again, and finds the planes.
PCDstatus OpenSource(PCDpack_* p, Source* src)
{
    PCDstatus st = CheckDisc(p->volumeDir, p->volumeId, p->cb);
    if (st == PCD_OK)
        st = p->file.Open(p->path);
    uint8_t head[kHeaderBytes];
    uint32_t n = p->file.size < kHeaderBytes ? (uint32_t)p->file.size : kHeaderBytes;
    if (st == PCD_OK)
        st = p->file.Read(0, head, n);
    if (st == PCD_OK)
        st = ParseHeader(head, n, p->file.size, &p->header);
    if (st == PCD_OK)
        st = FindPlane(p->header, p->file.size, p->view.resolution, &src->plane);
    src->file = &p->file;
    src->shift = (int)(PCD_BASE - p->view.resolution);
    if (st != PCD_OK)
        p->file.Close();
    return st;
}

PCDstatus ReadHeaderOf(const char* path, PackHeader* header)
{
    File f;
    PCDstatus st = f.Open(path);
    uint8_t head[kHeaderBytes];
    uint32_t n = f.size < kHeaderBytes ? (uint32_t)f.size : kHeaderBytes;
    if (st == PCD_OK)
        st = f.Read(0, head, n);
    return st == PCD_OK ? ParseHeader(head, n, f.size, header) : st;
}

// Ends an image pack's or the overview's handle.
template <class HANDLE_> PCDstatus Destroy(HANDLE_* h)
{
    if (!h)
        return PCD_ERR_BAD_ARG;
    h->view.Drop();
    h->magic = 0;
    h->~HANDLE_();
    Free(h);
    return PCD_OK;
}

}  // namespace

extern "C" {

PCDstatus PCDAPI PCDopen(const char* packPath, PCDpkHdl* pack)
{
    if (!packPath || !pack || !*packPath || strlen(packPath) >= MAX_PATH)
        return PCD_ERR_BAD_ARG;
    PackHeader header;
    PCDstatus st = ReadHeaderOf(packPath, &header);
    if (st != PCD_OK)
        return st;
    void* mem = Alloc(sizeof(PCDpack_));
    if (!mem)
        return PCD_ERR_NO_MEMORY;
    PCDpack_* p = new (mem) PCDpack_();
    p->magic = kPackMagic;
    snprintf(p->path, sizeof p->path, "%s", packPath);
    VolumeDirOf(packPath, p->volumeDir, sizeof p->volumeDir);
    ReadVolumeId(p->volumeDir, p->volumeId);
    p->header = header;
    *pack = p;
    return PCD_OK;
}

PCDstatus PCDAPI PCDclose(PCDpkHdl pack) { return Destroy(Pack(pack)); }

PCDstatus PCDAPI PCDsetResolution(PCDpkHdl pack, long resolution)
{
    PCDpack_* p = Pack(pack);
    if (!p || resolution < PCD_BASE_OVER_16 || resolution > PCD_16BASE)
        return PCD_ERR_BAD_ARG;
    if (resolution > PCD_BASE)
        return PCD_ERR_RES_NOT_SUPPORTED;
    return SetView(p->view, resolution, p->view.format, nullptr);
}

PCDstatus PCDAPI PCDgetResolution(PCDpkHdl pack, long* resolution)
{
    PCDpack_* p = Pack(pack);
    return p && Put(resolution, p->view.resolution) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDgetRotation(PCDpkHdl pack, long* rotation)
{
    PCDpack_* p = Pack(pack);
    return p && Put(rotation, p->header.rotation) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDsetFormat(PCDpkHdl pack, long format)
{
    PCDpack_* p = Pack(pack);
    return p ? SetView(p->view, p->view.resolution, format, nullptr) : kBadArg;
}

PCDstatus PCDAPI PCDgetFormat(PCDpkHdl pack, long* format)
{
    PCDpack_* p = Pack(pack);
    return p && Put(format, p->view.format) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDgetCount(PCDpkHdl pack, long* count)
{
    PCDpack_* p = Pack(pack);
    return p && Put(count, p->header.resolutions) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDgetVolume(PCDpkHdl pack, unsigned char volumeId[12])
{
    PCDpack_* p = Pack(pack);
    if (!p || !volumeId)
        return PCD_ERR_BAD_ARG;
    memcpy(volumeId, p->volumeId, 12);
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetSize(PCDpkHdl pack, long* width, long* height)
{
    PCDpack_* p = Pack(pack);
    Plane plane;
    TransformPlan plan;
    if (!p || !width || !height)
        return PCD_ERR_BAD_ARG;
    PCDstatus st = FindPlane(p->header, UINT64_MAX, p->view.resolution, &plane);
    if (st == PCD_OK)
        st = Plan(p->view, plane, (int)(PCD_BASE - p->view.resolution), &plan);
    if (st == PCD_OK) {
        *width = plan.width;
        *height = plan.height;
    }
    return st;
}

PCDstatus PCDAPI PCDsetPalette(PCDpkHdl pack, const PCDpalette* palette)
{
    PCDpack_* p = Pack(pack);
    return SetViewPalette(p ? &p->view : nullptr, palette);
}

PCDstatus PCDAPI PCDgetPalette(PCDpkHdl pack, PCDpalette* palette)
{
    PCDpack_* p = Pack(pack);
    return GetViewPalette(p ? &p->view : nullptr, palette);
}

PCDstatus PCDAPI PCDsetTransform(PCDpkHdl pack, const PCDtransform* transform)
{
    PCDpack_* p = Pack(pack);
    return p && transform ? SetView(p->view, p->view.resolution, p->view.format, transform) : kBadArg;
}

PCDstatus PCDAPI PCDgetTransform(PCDpkHdl pack, PCDtransform* transform)
{
    PCDpack_* p = Pack(pack);
    return p && Put(transform, p->view.transform) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDgetBlock(PCDpkHdl pack, long firstRow, long rows, unsigned char* buffer, long rowBytes)
{
    PCDpack_* p = Pack(pack);
    if (!p)
        return PCD_ERR_BAD_ARG;
    if (!p->view.cache) {
        Source src;
        PCDstatus st = OpenSource(p, &src);
        if (st == PCD_OK)
            st = Ensure(src, p->view, p->cb);
        p->file.Close();
        if (st != PCD_OK)
            return st;
    }
    return Block(p->view, firstRow, rows, buffer, rowBytes);
}

PCDstatus PCDAPI PCDloadImage(PCDpkHdl pack, void** dib)
{
    PCDpack_* p = Pack(pack);
    if (!p || !dib)
        return PCD_ERR_BAD_ARG;
    Source src;
    PCDstatus st = OpenSource(p, &src);
    if (st == PCD_OK)
        st = LoadDib(src, p->view, p->cb, dib);
    p->file.Close();
    return st;
}

PCDstatus PCDAPI PCDconvertBitmap(const void* dib, long format, const PCDpalette* palette, void** result)
{
    DibView in;
    if (!dib || !result || (palette && (palette->count < 1 || palette->count > 256)))
        return PCD_ERR_BAD_ARG;
    if (format != PCD_FORMAT_RGB24 && format != PCD_FORMAT_PAL8)
        return PCD_ERR_FORMAT_NOT_SUPPORTED;
    PCDstatus st = ReadDibHeader((const uint8_t*)dib, g_allowance, &in);
    if (st != PCD_OK)
        return st;
    long bits = format == PCD_FORMAT_PAL8 ? 8 : 24;
    uint32_t bytes = DibBytes(in.width, in.height, bits, g_allowance);
    uint8_t* d = bytes ? (uint8_t*)Alloc(bytes) : nullptr;
    Quantizer* q = bits == 8 && in.bits == 24 ? (Quantizer*)Alloc(sizeof(Quantizer)) : nullptr;
    if (!d || (bits == 8 && in.bits == 24 && !q)) {
        Free(d);
        Free(q);
        return PCD_ERR_NO_MEMORY;
    }
    const uint8_t* src = (const uint8_t*)dib + in.headerBytes;
    PCDpalette pal = {};
    if (in.bits == 8 && bits == 8) {
        pal.count = (long)in.colours;
        memcpy(pal.entries, (const uint8_t*)dib + kDibHeaderBytes, in.colours * 4);
    } else if (q) {
        QuantizerStart(q);
        if (palette) {
            QuantizerUse(q, *palette);
        } else {
            for (long y = 0; y < in.height; ++y)
                QuantizerAdd(q, src + y * in.stride, in.width);
            QuantizerMake(q, 256);
        }
        pal = q->palette;
    }
    WriteDibHeader(d, in.width, in.height, bits, bits == 8 ? &pal : nullptr);
    DibView out;
    ReadDibHeader(d, bytes, &out);
    uint8_t* dst = d + out.headerBytes;
    const uint8_t* table = (const uint8_t*)dib + kDibHeaderBytes;
    for (long y = 0; y < in.height; ++y) {
        const uint8_t* s = src + y * in.stride;
        uint8_t* t = dst + y * out.stride;
        if (in.bits == bits) {
            memcpy(t, s, (size_t)out.stride);
        } else if (q) {
            QuantizerMap(q, s, t, in.width);
        } else {
            for (long x = 0; x < in.width; ++x) {
                uint32_t i = s[x] < in.colours ? s[x] : 0;
                memcpy(t + 3 * x, table + 4 * i, 3);
            }
        }
    }
    Free(q);
    *result = d;
    return PCD_OK;
}

PCDstatus PCDAPI PCDfreeBitmap(void* dib)
{
    if (!dib)
        return PCD_ERR_BAD_ARG;
    Free(dib);
    return PCD_OK;
}

#define PCD_CALLBACK_PAIR(Set, Get, Fn, field, user)                         \
    PCDstatus PCDAPI Set(PCDpkHdl pack, Fn fn, void* u)                      \
    {                                                                        \
        PCDpack_* p = Pack(pack);                                            \
        if (!p)                                                              \
            return PCD_ERR_BAD_ARG;                                          \
        p->cb.field = fn;                                                    \
        p->cb.user = u;                                                      \
        return PCD_OK;                                                       \
    }                                                                        \
    PCDstatus PCDAPI Get(PCDpkHdl pack, Fn* fn, void** u)                    \
    {                                                                        \
        PCDpack_* p = Pack(pack);                                            \
        if (!p || !fn || !u)                                                 \
            return PCD_ERR_BAD_ARG;                                          \
        *fn = p->cb.field;                                                   \
        *u = p->cb.user;                                                     \
        return PCD_OK;                                                       \
    }
PCD_CALLBACK_PAIR(PCDsetProgress, PCDgetProgress, PCDprogressFn, progress, progressUser)
PCD_CALLBACK_PAIR(PCDsetAbort, PCDgetAbort, PCDabortFn, abort, abortUser)
PCD_CALLBACK_PAIR(PCDsetDiscChanged, PCDgetDiscChanged, PCDdiscChangedFn, disc, discUser)

PCDstatus PCDAPI PCDapplyTransform(const void* dib, const PCDtransform* transform, void** result)
{
    DibView in;
    if (!dib || !transform || !result)
        return PCD_ERR_BAD_ARG;
    PCDstatus st = ReadDibHeader((const uint8_t*)dib, g_allowance, &in);
    if (st != PCD_OK)
        return st;
    long longer = in.width > in.height ? in.width : in.height;
    PCDrect crop = transform->crop;
    if (longer == 768 || longer == 384 || longer == 192)
        crop = ScaleCrop(crop, longer == 768 ? 0 : longer == 384 ? 1 : 2);
    TransformPlan plan;
    st = PlanTransform(in.width, in.height, *transform, crop, &plan);
    if (st != PCD_OK)
        return st;
    uint32_t bytes = DibBytes(plan.width, plan.height, in.bits, g_allowance);
    uint8_t* d = bytes ? (uint8_t*)Alloc(bytes) : nullptr;
    if (!d)
        return PCD_ERR_NO_MEMORY;
    PCDpalette pal = {};
    if (in.bits == 8) {
        pal.count = (long)in.colours;
        memcpy(pal.entries, (const uint8_t*)dib + kDibHeaderBytes, in.colours * 4);
    }
    WriteDibHeader(d, plan.width, plan.height, in.bits, in.bits == 8 ? &pal : nullptr);
    DibView out;
    ReadDibHeader(d, bytes, &out);
    ApplyTransform(plan, DibTopRow((uint8_t*)dib, in), -in.stride, (int)in.bits / 8,
                   DibTopRow(d, out), -out.stride, 0, plan.height);
    *result = d;
    return PCD_OK;
}

PCDstatus PCDAPI PCDreadImageInfo(const char* packPath, PCDimageInfo* info)
{
    if (!packPath || !info)
        return PCD_ERR_BAD_ARG;
    PackHeader h;
    PCDstatus st = ReadHeaderOf(packPath, &h);
    if (st != PCD_OK)
        return st;
    info->versionMajor = h.versionMajor;
    info->versionMinor = h.versionMinor;
    info->rotation = h.rotation;
    info->resolutions = h.resolutions;
    info->highestResolution = h.highest;
    info->width = 768;
    info->height = 512;
    info->scanTime = h.scanTime;
    return PCD_OK;
}

PCDstatus PCDAPI PCDcreatePalette(PCDpkHdl pack, long colours, PCDpalette** palette)
{
    PCDpack_* p = Pack(pack);
    if (!p || !palette || colours < 2 || colours > 256)
        return PCD_ERR_BAD_ARG;
    Source src;
    TransformPlan plan;
    PCDstatus st = OpenSource(p, &src);
    if (st == PCD_OK)
        st = Plan(p->view, src.plane, src.shift, &plan);
    Quantizer* q = nullptr;
    if (st == PCD_OK)
        st = Produce(src, p->view, p->cb, PCD_FORMAT_PAL8, nullptr, 0, plan, true, &q);
    p->file.Close();
    if (st != PCD_OK)
        return st;
    if (colours != 256)
        QuantizerMake(q, colours);
    PCDpalette* out = (PCDpalette*)Alloc(sizeof(PCDpalette));
    if (out)
        *out = q->palette;
    Free(q);
    if (!out)
        return PCD_ERR_NO_MEMORY;
    *palette = out;
    return PCD_OK;
}

PCDstatus PCDAPI PCDfreePalette(PCDpalette* palette)
{
    if (!palette)
        return PCD_ERR_BAD_ARG;
    Free(palette);
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetToolkitVersion(unsigned long* version)
{
    return Put(version, kVersion) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDgetAllowance(unsigned long* bytes)
{
    return Put(bytes, g_allowance) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDsetAllowance(unsigned long bytes)
{
    // Below one Base/16 picture nothing could be read at all.
    if (bytes < 192ul * 128 * 8)
        return PCD_ERR_BAD_ARG;
    g_allowance = bytes;
    return PCD_OK;
}

PCDstatus PCDAPI PCDreadInfoFile(const char* volumeRoot, PCDvolumeInfo* info)
{
    if (!volumeRoot || !info)
        return PCD_ERR_BAD_ARG;
    char path[MAX_PATH];
    const char* tries[2] = {"PHOTO_CD\\INFO.PCD", "INFO.PCD"};
    for (const char* t : tries) {
        File f;
        if (!Join(path, sizeof path, volumeRoot, t))
            return PCD_ERR_BAD_ARG;
        PCDstatus st = f.Open(path);
        if (st == PCD_ERR_NOT_FOUND)
            continue;
        uint8_t data[kInfoBytes];
        uint32_t n = f.size < kInfoBytes ? (uint32_t)f.size : kInfoBytes;
        if (st == PCD_OK)
            st = f.Read(0, data, n);
        return st == PCD_OK ? ParseInfo(data, n, info) : st;
    }
    return PCD_ERR_NOT_FOUND;
}

}  // extern "C"

// ---- the overview ----

struct PCDoview_ {
    DWORD magic = 0;
    char root[MAX_PATH];
    char images[MAX_PATH];
    char packPath[MAX_PATH];  // OVERVIEW.PCD, empty when built from the image packs
    unsigned char volumeId[12];
    long count = 0;
    long select = 1;
    bool released = false;
    View view;
    Callbacks cb;
    File file;
};

namespace {

PCDoview_* Oview(PCDoviewHdl h) { return h && h->magic == kOviewMagic ? h : nullptr; }

bool FriendPath(const PCDoview_* o, const char* dir, long entry, char* out, size_t size)
{
    char name[16];
    snprintf(name, sizeof name, "IMG%04ld.PCD", entry);
    return Join(out, size, dir && *dir ? dir : o->images, name);
}

PCDstatus TakeOverviewFile(PCDoview_* o)
{
    uint8_t head[kOviewHeaderBytes];
    PCDstatus st = o->file.Open(o->packPath);
    uint32_t n = o->file.size < kOviewHeaderBytes ? (uint32_t)o->file.size : kOviewHeaderBytes;
    if (st == PCD_OK)
        st = o->file.Read(0, head, n);
    if (st == PCD_OK)
        st = ParseOverview(head, n, o->file.size, &o->count);
    if (st != PCD_OK)
        o->file.Close();
    return st;
}

// The selected entry's planes and recorded turn: from the overview pack, or
// from the entry's image pack at Base/16 (its file then open in file).
PCDstatus OviewSource(PCDoview_* o, File* packFile, Source* src, long* rotation)
{
    PCDstatus st = CheckDisc(o->root, o->volumeId, o->cb);
    if (st != PCD_OK)
        return st;
    src->shift = 2;
    if (*o->packPath) {
        if (o->released)
            return PCD_ERR_CLOSED;
        uint32_t attrAt;
        st = FindOverviewEntry(o->count, o->file.size, o->select, &attrAt, &src->plane);
        uint8_t attr[4];
        if (st == PCD_OK)
            st = o->file.Read(attrAt, attr, sizeof attr);
        if (st == PCD_OK)
            *rotation = attr[2] & 3;
        src->file = &o->file;
        return st;
    }
    char path[MAX_PATH];
    if (o->select < 1 || o->select > o->count || !FriendPath(o, nullptr, o->select, path, sizeof path))
        return PCD_ERR_NOT_FOUND;
    st = packFile->Open(path);
    uint8_t head[kHeaderBytes];
    uint32_t n = packFile->size < kHeaderBytes ? (uint32_t)packFile->size : kHeaderBytes;
    PackHeader header;
    if (st == PCD_OK)
        st = packFile->Read(0, head, n);
    if (st == PCD_OK)
        st = ParseHeader(head, n, packFile->size, &header);
    if (st == PCD_OK)
        st = FindPlane(header, packFile->size, PCD_BASE_OVER_16, &src->plane);
    if (st == PCD_OK)
        *rotation = header.rotation;
    src->file = packFile;
    return st;
}

}  // namespace

extern "C" {

PCDstatus PCDAPI PCDOopen(const char* volumeRoot, PCDoviewHdl* oview)
{
    if (!volumeRoot || !oview || !*volumeRoot || strlen(volumeRoot) >= MAX_PATH - 32)
        return PCD_ERR_BAD_ARG;
    void* mem = Alloc(sizeof(PCDoview_));
    if (!mem)
        return PCD_ERR_NO_MEMORY;
    PCDoview_* o = new (mem) PCDoview_();
    o->magic = kOviewMagic;
    o->view.resolution = PCD_BASE_OVER_16;
    o->select = 1;
    snprintf(o->root, sizeof o->root, "%s", volumeRoot);
    char path[MAX_PATH];
    Join(o->images, sizeof o->images, volumeRoot, "IMAGES");
    if (!Exists(o->images, true))
        Join(o->images, sizeof o->images, volumeRoot, "PHOTO_CD\\IMAGES");
    const char* tries[2] = {"PHOTO_CD\\OVERVIEW.PCD", "OVERVIEW.PCD"};
    for (const char* t : tries)
        if (Join(path, sizeof path, volumeRoot, t) && Exists(path, false)) {
            snprintf(o->packPath, sizeof o->packPath, "%s", path);
            break;
        }
    PCDstatus st = PCD_OK;
    if (*o->packPath) {
        st = TakeOverviewFile(o);
    } else if (!Exists(o->images, true)) {
        st = PCD_ERR_NOT_FOUND;
    } else {
        // Built from the image packs: as many entries as IMG0001.PCD onwards
        // exist without a gap.
        while (o->count < 9999 && FriendPath(o, nullptr, o->count + 1, path, sizeof path) &&
               Exists(path, false))
            ++o->count;
    }
    if (st != PCD_OK) {
        o->~PCDoview_();
        Free(o);
        return st;
    }
    ReadVolumeId(volumeRoot, o->volumeId);
    *oview = o;
    return PCD_OK;
}

PCDstatus PCDAPI PCDOclose(PCDoviewHdl oview) { return Destroy(Oview(oview)); }

PCDstatus PCDAPI PCDOrefClose(PCDoviewHdl oview)
{
    PCDoview_* o = Oview(oview);
    if (!o)
        return PCD_ERR_BAD_ARG;
    o->file.Close();
    o->released = true;
    return PCD_OK;
}

PCDstatus PCDAPI PCDOrefOpen(PCDoviewHdl oview)
{
    PCDoview_* o = Oview(oview);
    if (!o)
        return PCD_ERR_BAD_ARG;
    if (!o->released)
        return PCD_OK;
    if (*o->packPath) {
        PCDstatus st = TakeOverviewFile(o);
        if (st != PCD_OK)
            return st;
    }
    o->released = false;
    o->view.Drop();
    return PCD_OK;
}

PCDstatus PCDAPI PCDOgetFriend(PCDoviewHdl oview, const char* imagesDir, long entry, char* packPath,
                               unsigned long pathSize)
{
    PCDoview_* o = Oview(oview);
    if (!o || !packPath || !pathSize)
        return PCD_ERR_BAD_ARG;
    if (entry < 1 || entry > o->count)
        return PCD_ERR_NOT_FOUND;
    char path[MAX_PATH];
    if (!FriendPath(o, imagesDir, entry, path, sizeof path))
        return PCD_ERR_BAD_ARG;
    if (strlen(path) >= pathSize)
        return PCD_ERR_BAD_ARG;
    if (!Exists(path, false))
        return PCD_ERR_NOT_FOUND;
    memcpy(packPath, path, strlen(path) + 1);
    return PCD_OK;
}

PCDstatus PCDAPI PCDOgetCount(PCDoviewHdl oview, long* count)
{
    PCDoview_* o = Oview(oview);
    return o && Put(count, o->count) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDOgetFormat(PCDoviewHdl oview, long* format)
{
    PCDoview_* o = Oview(oview);
    return o && Put(format, o->view.format) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDOgetBlock(PCDoviewHdl oview, long firstRow, long rows, unsigned char* buffer, long rowBytes)
{
    PCDoview_* o = Oview(oview);
    if (!o)
        return PCD_ERR_BAD_ARG;
    if (!o->view.cache) {
        File packFile;
        Source src;
        long rotation;
        PCDstatus st = OviewSource(o, &packFile, &src, &rotation);
        if (st == PCD_OK)
            st = Ensure(src, o->view, o->cb);
        if (st != PCD_OK)
            return st;
    }
    return Block(o->view, firstRow, rows, buffer, rowBytes);
}

PCDstatus PCDAPI PCDOloadImage(PCDoviewHdl oview, void** dib)
{
    PCDoview_* o = Oview(oview);
    if (!o || !dib)
        return PCD_ERR_BAD_ARG;
    File packFile;
    Source src;
    long rotation;
    PCDstatus st = OviewSource(o, &packFile, &src, &rotation);
    return st == PCD_OK ? LoadDib(src, o->view, o->cb, dib) : st;
}

PCDstatus PCDAPI PCDOgetResolution(PCDoviewHdl oview, long* resolution)
{
    PCDoview_* o = Oview(oview);
    return o && Put(resolution, o->view.resolution) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDOgetRotation(PCDoviewHdl oview, long* rotation)
{
    PCDoview_* o = Oview(oview);
    if (!o || !rotation)
        return PCD_ERR_BAD_ARG;
    File packFile;
    Source src;
    return OviewSource(o, &packFile, &src, rotation);
}

PCDstatus PCDAPI PCDOgetSelect(PCDoviewHdl oview, long* entry)
{
    PCDoview_* o = Oview(oview);
    return o && Put(entry, o->select) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDOgetSize(PCDoviewHdl oview, long* width, long* height)
{
    PCDoview_* o = Oview(oview);
    TransformPlan plan;
    if (!o || !width || !height)
        return PCD_ERR_BAD_ARG;
    Plane plane = {192, 128, 0, 0};
    PCDstatus st = Plan(o->view, plane, 2, &plan);
    if (st == PCD_OK) {
        *width = plan.width;
        *height = plan.height;
    }
    return st;
}

PCDstatus PCDAPI PCDOgetTransform(PCDoviewHdl oview, PCDtransform* transform)
{
    PCDoview_* o = Oview(oview);
    return o && Put(transform, o->view.transform) ? PCD_OK : PCD_ERR_BAD_ARG;
}

PCDstatus PCDAPI PCDOsetSelect(PCDoviewHdl oview, long entry)
{
    PCDoview_* o = Oview(oview);
    if (!o)
        return PCD_ERR_BAD_ARG;
    if (entry < 1 || entry > o->count)
        return PCD_ERR_NOT_FOUND;
    o->select = entry;
    o->view.Drop();
    return PCD_OK;
}

PCDstatus PCDAPI PCDOsetFormat(PCDoviewHdl oview, long format)
{
    PCDoview_* o = Oview(oview);
    return o ? SetView(o->view, o->view.resolution, format, nullptr) : kBadArg;
}

PCDstatus PCDAPI PCDOsetResolution(PCDoviewHdl oview, long resolution)
{
    PCDoview_* o = Oview(oview);
    if (!o || resolution < PCD_BASE_OVER_16 || resolution > PCD_16BASE)
        return PCD_ERR_BAD_ARG;
    return resolution == PCD_BASE_OVER_16 ? PCD_OK : PCD_ERR_RES_NOT_SUPPORTED;
}

PCDstatus PCDAPI PCDOsetTransform(PCDoviewHdl oview, const PCDtransform* transform)
{
    PCDoview_* o = Oview(oview);
    return o && transform ? SetView(o->view, o->view.resolution, o->view.format, transform) : kBadArg;
}

PCDstatus PCDAPI PCDOsetPalette(PCDoviewHdl oview, const PCDpalette* palette)
{
    PCDoview_* o = Oview(oview);
    return SetViewPalette(o ? &o->view : nullptr, palette);
}

PCDstatus PCDAPI PCDOgetPalette(PCDoviewHdl oview, PCDpalette* palette)
{
    PCDoview_* o = Oview(oview);
    return GetViewPalette(o ? &o->view : nullptr, palette);
}

PCDstatus PCDAPI PCDOsetDiscChanged(PCDoviewHdl oview, PCDdiscChangedFn fn, void* user)
{
    PCDoview_* o = Oview(oview);
    if (!o)
        return PCD_ERR_BAD_ARG;
    o->cb.disc = fn;
    o->cb.discUser = user;
    return PCD_OK;
}

PCDstatus PCDAPI PCDOgetDiscChanged(PCDoviewHdl oview, PCDdiscChangedFn* fn, void** user)
{
    PCDoview_* o = Oview(oview);
    if (!o || !fn || !user)
        return PCD_ERR_BAD_ARG;
    *fn = o->cb.disc;
    *user = o->cb.discUser;
    return PCD_OK;
}

}  // extern "C"
