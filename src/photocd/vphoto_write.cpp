// Writing a photo's full image as a file of a common format, through the
// export plug-in the stream's name asks for.
//
// The plug-in writes a file by name, so the image goes to a temporary file
// first and from there through the stream: the stream may be any stream, and
// a file stream open on the target name is not written behind its back. Only
// a complete export reaches the stream.
#include <windows.h>
#include "rl132/photocd/vphoto.h"
#include "rl132/streams/vstream.h"
#include "photocd/pcdaccess.h"
#include "photocd/photoexport.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"

namespace {

// The plug-in's name part for the file's extension; null for one not known.
const char* FormatOf(const char* fileName)
{
    static const struct {
        const char* extension;
        const char* format;
    } kFormats[] = {{".BMP", "bmp"}, {".PCX", "pcx"}, {".TIF", "tif"}};
    if (!fileName)
        return nullptr;
    const char* dot = nullptr;
    for (const char* p = fileName; *p; ++p)
        if (*p == '.')
            dot = p;
        else if (*p == '\\' || *p == '/')
            dot = nullptr;
    if (!dot)
        return nullptr;
    for (const auto& f : kFormats)
        if (lstrcmpiA(dot, f.extension) == 0)
            return f.format;
    return nullptr;
}

// Copies the file into the stream; PHOTOEXPORT_SHORT when a read or a write
// fell short.
unsigned short CopyInto(const char* fileName, vSTREAM& stream)
{
    HANDLE f = CreateFileA(fileName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE)
        return PHOTOEXPORT_SHORT;
    const unsigned long kChunk = 32768;
    unsigned char* buffer = static_cast<unsigned char*>(vMemAlloc(kChunk));
    unsigned short status = buffer ? PHOTOEXPORT_OK : PHOTOEXPORT_NO_MEMORY;
    DWORD got = 0;
    while (status == PHOTOEXPORT_OK) {
        if (!ReadFile(f, buffer, kChunk, &got, nullptr)) {
            status = PHOTOEXPORT_SHORT;
            break;
        }
        if (!got)
            break;
        stream.WriteBlock(buffer, got);
        if (stream.Status() != vSTREAM_OK)
            status = PHOTOEXPORT_SHORT;
    }
    vMemFree(buffer);
    CloseHandle(f);
    return status;
}

} // namespace

vINT vPHOTO::Write(vSTREAM& stream, int palette) const
{
    vTrace(2, "vPHOTO::Write()");
    const char* format = FormatOf(stream.Name()());
    if (!format || packName.Null())
        return vINT((long)PHOTOEXPORT_BAD_ARGUMENTS);
    PCDACCESS& pcd = PCDACCESS::Process();
    vPHOTOVOLUME* vol = const_cast<vPHOTOVOLUME*>(volume);
    PCDpkHdl h = nullptr;
    PCDstatus s = pcd.PCDopen(packName(), &h);
    vol->status = (vPHOTOVOLSTATUS)s;
    if (s != PCD_OK)
        return vINT((long)PHOTOEXPORT_BAD_ARGUMENTS);
    PCDtransform t = {image.rotation, image.mirror, {crop.Left()(), crop.Top()(), crop.Right()(), crop.Bottom()()}};
    pcd.PCDsetDiscChanged(h, &vPHOTOVOLUME::VolumeChangeCallback, vol);
    pcd.PCDsetAbort(h, &vPHOTO::AbortCallback, const_cast<vPHOTO*>(this));
    pcd.PCDsetProgress(h, &vPHOTO::ProgressCallback, const_cast<vPHOTO*>(this));
    s = pcd.PCDsetResolution(h, image.resolution);
    if (s == PCD_OK)
        s = pcd.PCDsetTransform(h, &t);
    vol->status = (vPHOTOVOLSTATUS)s;
    unsigned short status = s == PCD_OK ? (unsigned short)PHOTOEXPORT_OK : (unsigned short)PHOTOEXPORT_SHORT;
    char dir[MAX_PATH], temp[MAX_PATH];
    if (status == PHOTOEXPORT_OK) {
        DWORD n = GetTempPathA(sizeof dir, dir);
        if (!n || n >= sizeof dir || !GetTempFileNameA(dir, "rph", 0, temp))
            status = PHOTOEXPORT_SHORT;
    }
    if (status == PHOTOEXPORT_OK) {
        status = PhotoExport(h, format, temp, palette ? PCD_FORMAT_PAL8 : PCD_FORMAT_RGB24, pcd);
        if (status == PHOTOEXPORT_OK)
            status = CopyInto(temp, stream);
        DeleteFileA(temp);
    }
    pcd.PCDclose(h);
    return vINT((long)status);
}
