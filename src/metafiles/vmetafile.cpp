// vMETAFILE: construction and the header of the own format.
#include <windows.h>
#include "rl132/metafiles/vmetafile.h"
#include "rl132/streams/vstream.h"

vMETAFILE::vMETAFILE() : vDEVICE(0, 0)
{
    Init();
}

vMETAFILE::vMETAFILE(vSTREAM& source) : vDEVICE(0, 0)
{
    Init();
    Constructor(source);
}

vMETAFILE::~vMETAFILE()
{
    Detach();
}

void vMETAFILE::Init()
{
    stream = nullptr;
    ownStream = 0;
    dataStart = vMETAFILE_HEADERSIZE;
    native = 1;
    status = 0;
    left = right = top = bottom = 0;
    haveExtents = 0;
    unitsH = unitsV = 576;
    logPageX = logPageY = physPageX = physPageY = 0;
    version = 16;
    reserved = 0;
    for (unsigned char& b : wmfHeader)
        b = 0;
    progress = nullptr;
    refDC = nullptr;
    play = nullptr;
}

int vMETAFILE::Constructor(vSTREAM& source)
{
    stream = &source;
    return status;
}

unsigned long vMETAFILE::Length() { return stream ? stream->Size() : 0; }
vDEV_TYPE vMETAFILE::DeviceType() const { return vDT_METAFILE; }
int vMETAFILE::Native() const { return native; }
int vMETAFILE::Status() const { return status; }
long vMETAFILE::XExtent() const { return right - left; }
long vMETAFILE::YExtent() const { return bottom - top; }
long vMETAFILE::XOffset() const { return left; }
long vMETAFILE::YOffset() const { return top; }
vRECT vMETAFILE::Bounds() const { return vRECT(vINT(left), vINT(top), vINT(right), vINT(bottom)); }
void vMETAFILE::LogicalPageSize(long, long) {}
void vMETAFILE::LogicalExtents(long, long, long, long) {}
void vMETAFILE::PhysicalPageSize(long, long) {}
vSIZE vMETAFILE::PhysicalPageSize() const { return vSIZE(vINT(physPageX), vINT(physPageY)); }
vSIZE vMETAFILE::LogicalPageSize() const { return vSIZE(vINT(logPageX), vINT(logPageY)); }
void vMETAFILE::LogUnitsPerHorzInch(const vINT&) {}
vINT vMETAFILE::LogUnitsPerHorzInch() { return vINT(unitsH); }
void vMETAFILE::LogUnitsPerVertInch(const vINT&) {}
vINT vMETAFILE::LogUnitsPerVertInch() { return vINT(unitsV); }
vINT vMETAFILE::DevUnitsPerHorzInch() { return vINT(unitsH); }
vINT vMETAFILE::DevUnitsPerVertInch() { return vINT(unitsV); }
int vMETAFILE::EndMetaFile() { return 0; }
void vMETAFILE::SetProgressInd(oPROGRESS& p) { progress = &p; }
void vMETAFILE::RemoveProgressInd() { progress = nullptr; }
vSTREAM& vMETAFILE::operator<<(vSTREAM& from) { return from; }
vSTREAM& vMETAFILE::operator>>(vSTREAM& to) { return to; }
int vMETAFILE::Draw(vDEVICE&, const vRECT&, vCOLOUR*) { return 0; }
int vMETAFILE::InsertInto(vMETAFILE&, const vRECT&) { return 0; }
HDC vMETAFILE::GetWinDC() { return GetMSDC(); }
int vMETAFILE::ReleaseWinDC() { return ReleaseMSDC(); }
HDC vMETAFILE::GetMSDC() { return refDC; }
int vMETAFILE::ReleaseMSDC() { return 1; }
int vMETAFILE::PushState() { return 0; }
int vMETAFILE::PopState() { return 0; }
void vMETAFILE::LineSpec(const vLINESPEC& s) { vDEVICE::LineSpec(s); }
const vLINESPEC& vMETAFILE::LineSpec() { return vDEVICE::LineSpec(); }
int vMETAFILE::PushLineSpec() { return 0; }
int vMETAFILE::PopLineSpec() { return 0; }
void vMETAFILE::FillSpec(const vFILLSPEC& s) { vDEVICE::FillSpec(s); }
const vFILLSPEC& vMETAFILE::FillSpec() { return vDEVICE::FillSpec(); }
int vMETAFILE::PushFillSpec() { return 0; }
int vMETAFILE::PopFillSpec() { return 0; }
void vMETAFILE::FontSpec(const vFONTSPEC& s) { vDEVICE::FontSpec(s); }
const vFONTSPEC& vMETAFILE::FontSpec() { return vDEVICE::FontSpec(); }
int vMETAFILE::PushFontSpec() { return 0; }
int vMETAFILE::PopFontSpec() { return 0; }
int vMETAFILE::ClipArea(const vSHAPE&) { return 0; }
int vMETAFILE::ClipArea(const vRECT&) { return 1; }
vRECT vMETAFILE::ClipArea() { return Bounds(); }
void vMETAFILE::ClearClipArea() {}
int vMETAFILE::PushClipArea() { return 0; }
int vMETAFILE::PopClipArea() { return 0; }
int vMETAFILE::DrawLine(const vPOINT&, const vPOINT&) { return 0; }
int vMETAFILE::DrawLine(vINT, ...) { return 0; }
int vMETAFILE::DrawLine(vINT, vCOLLECTION&) { return 0; }
int vMETAFILE::DrawRect(const vRECT&) { return 0; }
int vMETAFILE::DrawRoundRect(const vRECT&, const vSIZE&) { return 0; }
int vMETAFILE::DrawEllipse(const vRECT&) { return 0; }
int vMETAFILE::DrawArc(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vMETAFILE::DrawPie(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vMETAFILE::DrawChord(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vMETAFILE::DrawShape(const vSHAPE&) { return 0; }
int vMETAFILE::DrawTextA(const vSTRING&, const vRECT&, vTEXTALIGN) { return 0; }
int vMETAFILE::DrawTextOnLine(const vSTRING&, const vPOINT&, const short*) { return 0; }
int vMETAFILE::Transparency(int) { return 0; }
int vMETAFILE::DrawMetafile(vMETAFILE&, const vRECT&) { return 0; }
int vMETAFILE::DrawDIB(const oDIB&, const vRECT&, vCOLOUR*) { return 0; }
void vMETAFILE::UpdateExtents(long, long) {}
