// vNATIVEMETA: a Windows metafile in memory, converted from a vMETAFILE or
// drawn directly through a metafile recording context.
#include <windows.h>
#include <cstring>
#include "rl132/metafiles/vnativemeta.h"
#include "rl132/metafiles/vmetafile.h"
#include "rl132/core/vmem.h"
#include "rl132/devices/vscreen.h"
#include "rl132/streams/vfile.h"
#include "metafiles/wmfstate.h"
#include "core/rlstate.h"
#include "metafiles/wmfguard.h"
#include "platform/sys_file.h"

namespace {

const short kA4Width = 21000;    // hundredths of a millimetre
const short kA4Height = 29700;
const long kPageUnitsPerInch = 2540;
// The open mode of the temporary file: created when missing, kept otherwise
// (it is deleted beforehand so that no older, longer file shows through).
const unsigned long kTempMode = 0x40000000ul;


void PutWord(unsigned char* p, unsigned v) { p[0] = (unsigned char)v, p[1] = (unsigned char)(v >> 8); }
void PutLong(unsigned char* p, unsigned long v) { PutWord(p, (unsigned)(v & 0xFFFF)), PutWord(p + 2, (unsigned)(v >> 16)); }

// Copies a Windows metafile's records from `from` (positioned at its first
// record) to `to`, behind a standard header. Only records the playback guard
// frames and passes are copied, so the system's player, which reads the
// file next, never meets one that overruns; the header is rewritten with the
// sizes of what was copied. Returns 0 when the file could not be written.
int CopyGuardedRecords(vSTREAM& from, const unsigned char* wmfHeader, unsigned long dataStart, vSTREAM& to)
{
    const unsigned long total = from.Size();
    const unsigned long objects = [&] {
        rlwmf::MetaHeader meta;
        rlwmf::DecodeMetaHeader(wmfHeader, &meta);
        return rlwmf::ClampObjects(meta.objects, total - dataStart);
    }();
    unsigned char header[rlwmf::kMetaHeaderBytes];
    memcpy(header, wmfHeader, sizeof header);
    PutWord(header + 2, 9);
    if (to.WriteBlock(header, sizeof header) != sizeof header)
        return 0;
    unsigned long words = 9, largest = 3;
    unsigned char* rec = nullptr;
    unsigned long capacity = 0;
    int detect = from.DetectingCompressed();
    from.DetectCompressed(0);
    from.MoveFromStart(dataStart);
    for (;;) {
        unsigned long at = from.CurrentPos();
        unsigned char size[4];
        if (at >= total || total - at < 6 || from.ReadByteString(size, 4) != 4)
            break;
        unsigned long n = rlwmf::Long(size);
        if (n < 3 || n > (total - at) / 2)
            break;
        if (n * 2 > capacity) {
            void* p = vMemRealloc(rec, n * 2);
            if (!p)
                break;
            rec = static_cast<unsigned char*>(p);
            capacity = n * 2;
        }
        memcpy(rec, size, 4);
        if (from.ReadByteString(rec + 4, n * 2 - 4) != (long)(n * 2 - 4))
            break;
        std::uint32_t bytes = 0;
        rlwmf::RecordVerdict v = rlwmf::CheckRecord(rec, n * 2, objects, &bytes);
        if (rlwmf::EndsPlayback(v) || rlwmf::Word(rec + 4) == rlwmf::fnEof)
            break;
        if (v != rlwmf::kRecordOk)
            continue;
        if (to.WriteBlock(rec, n * 2) != n * 2)
            break;
        words += n;
        if (n > largest)
            largest = n;
    }
    from.DetectCompressed(detect);
    vMemFree(rec);
    static const unsigned char eof[6] = {3, 0, 0, 0, 0, 0};
    int ok = to.WriteBlock(eof, sizeof eof) == sizeof eof;
    words += 3;
    PutLong(header + 6, words);
    PutWord(header + 10, (unsigned)objects);
    PutLong(header + 12, largest);
    to.MoveFromStart(0);
    return ok && to.WriteBlock(header, sizeof header) == sizeof header && to.Status() == 0;
}

} // namespace

vNATIVEMETA::vNATIVEMETA() : vDEVICE(0, 0)
{
    Init();
    recording = CreateMetaFileA(nullptr);
}

vNATIVEMETA::vNATIVEMETA(vMETAFILE& from) : vDEVICE(0, 0)
{
    Init();
    source = &from;
    if (!from.Status())
        return;
    if (!from.Native()) {
        FromWindowsMetafile(from);
        return;
    }
    recording = CreateMetaFileA(nullptr);
    if (recording)
        ConvertToNative(from);
    Finish();
}

vNATIVEMETA::~vNATIVEMETA()
{
    Detach();
    if (metafile)
        DeleteMetaFile(metafile);
    if (recording) {
        HMETAFILE left = CloseMetaFile(recording);
        if (left)
            DeleteMetaFile(left);
    }
}

void vNATIVEMETA::Init()
{
    source = nullptr;
    metafile = nullptr;
    recording = nullptr;
    pageX = kA4Width;
    pageY = kA4Height;
}

void vNATIVEMETA::FromWindowsMetafile(vMETAFILE& from)
{
    char path[MAX_PATH + 1];
    size_t nameLength = strlen(rlstate::kTempMetafileName);
    if (!rlsys::TempDirectory(path, sizeof path - nameLength))
        return;
    strcat(path, rlstate::kTempMetafileName);
    rlsys::FileDelete(path);

    // Past the placeable header (if any) to the standard header and records;
    // the bounds were taken from it when the source was read.
    vSTREAM& in = *from.stream;
    int copied = 0;
    {
        vFILE* out = new vFILE(vSTRING("%s", path), kTempMode, 1);
        if (!out)
            return;
        if (out->Status() == 0)
            copied = CopyGuardedRecords(in, from.wmfHeader, from.dataStart, *out);
        out->Close();
        delete out;
    }
    long w = from.right - from.left, h = from.bottom - from.top;
    pageX = (short)(w < 0 ? -w : w);
    pageY = (short)(h < 0 ? -h : h);

    if (copied) {
        HMETAFILE disk = GetMetaFileA(path);
        HMETAFILE memory = disk ? CopyMetaFileA(disk, nullptr) : nullptr;
        recording = CreateMetaFileA(nullptr);
        if (recording && memory)
            PlayMetaFile(recording, memory);
        Finish();
        if (memory)
            DeleteMetaFile(memory);
        if (disk)
            DeleteMetaFile(disk);
    }
    rlsys::FileDelete(path);
}

int vNATIVEMETA::ConvertToNative(vMETAFILE& from)
{
    HDC dc = recording;
    // The recording context starts where a Windows metafile does.
    DefaultMetafileState(dc, false);
    vSCREEN* screen = rlstate::devState.screen;
    int palette = screen && screen->PaletteEnabled();
    if (palette)
        screen->EnablePalette(0);

    vRECT bounds = from.Bounds();
    PreserveAspect((short)(bounds.Right()() - bounds.Left()()), (short)(bounds.Bottom()() - bounds.Top()()), &pageX,
                   &pageY);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetWindowExtEx(dc, pageX, pageY, nullptr);
    SetWindowOrgEx(dc, 0, 0, nullptr);
    LogUnitsPerHorzInch(vINT(kPageUnitsPerInch));
    LogUnitsPerVertInch(vINT(kPageUnitsPerInch));
    int drawn = from.Draw(*this, vRECT(vINT(0L), vINT(0L), vINT((long)pageX), vINT((long)pageY)), nullptr);

    if (palette)
        screen->EnablePalette(1);
    return drawn;
}

void vNATIVEMETA::PreserveAspect(short w, short h, short* x, short* y)
{
    rlwmf::PreserveAspect(w, h, x, y);
}

void vNATIVEMETA::Finish()
{
    if (!recording)
        return;
    // The device must not keep the context it is about to lose.
    ReleaseDC();
    HMETAFILE made = CloseMetaFile(recording);
    recording = nullptr;
    if (metafile && made)
        DeleteMetaFile(made);
    else if (made)
        metafile = made;
}

vDEV_TYPE vNATIVEMETA::DeviceType() const
{
    return vDT_METAFILE;
}

int vNATIVEMETA::Write(const vSTRING& fileName)
{
    Finish();
    if (!metafile)
        return 0;
    HMETAFILE copy = CopyMetaFileA(metafile, fileName());
    return copy ? DeleteMetaFile(copy) : 0;
}

HMETAFILE vNATIVEMETA::RemoveFileHandle()
{
    Finish();
    HMETAFILE h = metafile;
    metafile = nullptr;
    return h;
}

HDC vNATIVEMETA::GetWinDC()
{
    return GetMSDC();
}

int vNATIVEMETA::ReleaseWinDC()
{
    return ReleaseMSDC();
}

HDC vNATIVEMETA::GetMSDC()
{
    return recording;
}

int vNATIVEMETA::ReleaseMSDC()
{
    // The recording context stays open until the metafile is finished.
    return 1;
}

vINT vNATIVEMETA::DevUnitsPerHorzInch()
{
    return vINT(kPageUnitsPerInch);
}

vINT vNATIVEMETA::DevUnitsPerVertInch()
{
    return vINT(kPageUnitsPerInch);
}

int vNATIVEMETA::ClipAreaIntersect(const vPOINT&)
{
    return 1;
}

int vNATIVEMETA::ClipAreaIntersect(const vRECT&)
{
    return 1;
}

int vNATIVEMETA::LastPoint(POINT& point)
{
    // A recording context keeps no position that could be read back.
    point.x = point.y = 0;
    return recording != nullptr;
}
