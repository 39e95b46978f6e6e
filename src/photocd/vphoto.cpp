// Photos on a Photo CD volume: their two faces (overview and full image),
// read into bitmap resources on first need and drawn like bitmaps.
#include <windows.h>
#include "rl132/photocd/vphoto.h"
#include "photocd/pcdaccess.h"
#include "photocd/photoresource.h"
#include "rl132/core/vtrace.h"

namespace {
vSTRING Text(const char* s)
{
    vSTRING t;
    t = s ? s : "";
    return t;
}

// The root with a sub-folder after it, without doubling the separator when
// the root already ends in one ("D:\" as well as "D:").
vSTRING Under(const vSTRING& root, const char* sub)
{
    char path[MAX_PATH];
    const char* r = root();
    size_t n = lstrlenA(r);
    const char* sep = n && (r[n - 1] == '\\' || r[n - 1] == '/') ? "" : "\\";
    if (n + lstrlenA(sep) + lstrlenA(sub) >= sizeof path)
        return vSTRING();
    lstrcpyA(path, r);
    lstrcatA(path, sep);
    lstrcatA(path, sub);
    return Text(path);
}
} // namespace

vPHOTO::vPHOTO(const vPHOTOVOLUME& v, vPCD_OVIEW_RES resolution, vPCD_COLOUR colour, vROTATEANGLE rotation,
               int mirror)
    : volume(&v), number(0), crop(0, 0, 0, 0), rights(0)
{
    vTrace(2, "vPHOTO::vPHOTO()");
    vPHOTOVOLUME& vol = const_cast<vPHOTOVOLUME&>(v);
    number = ++vol.photos;
    oview.resolution = resolution;
    oview.colour = colour;
    oview.rotation = rotation;
    oview.mirror = mirror ? 1 : 0;
    image = oview;
    image.resolution = vPCD_BASE;
    imagePath = Under(vol.name, "IMAGES\\");
    char pack[MAX_PATH] = "";
    vol.status = (vPHOTOVOLSTATUS)PCDACCESS::Process().PCDOgetFriend(vol.overview, imagePath(), (long)number, pack,
                                                                    (unsigned long)sizeof pack);
    if (vol.status == vPCD_OK)
        packName = Text(pack);
    FindRights();
}

vPHOTO::~vPHOTO() { vTrace(2, "vPHOTO::~vPHOTO()"); }

// The disc's rights file is whatever file its RIGHTS folder holds first.
void vPHOTO::FindRights()
{
    vSTRING pattern = Under(volume->name, "RIGHTS\\*");
    if (pattern.Null())
        return;
    WIN32_FIND_DATAA found;
    HANDLE h = FindFirstFileA(pattern(), &found);
    if (h == INVALID_HANDLE_VALUE)
        return;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
            vSTRING dir = Under(volume->name, "RIGHTS");
            rightsFile = Under(dir, found.cFileName);
            rights = !rightsFile.Null();
            break;
        }
    } while (FindNextFileA(h, &found));
    FindClose(h);
}

// ---------------------------------------------------------------- settings

void vPHOTO::Drop(int full)
{
    if (full)
        imageBitmap = vBITMAP();
    else
        oviewBitmap = vBITMAP();
}

void vPHOTO::Rotate(const vROTATEANGLE& r)
{
    oview.rotation = r;
    Drop(0);
}

void vPHOTO::Mirror(int on)
{
    oview.mirror = on ? 1 : 0;
    Drop(0);
}

void vPHOTO::Resolution(vPCD_OVIEW_RES r)
{
    oview.resolution = r;
    Drop(0);
}

void vPHOTO::ColourFormat(vPCD_COLOUR c)
{
    oview.colour = c;
    Drop(0);
}

void vPHOTO::PhotoRotate(const vROTATEANGLE& r)
{
    image.rotation = r;
    Drop(1);
}

void vPHOTO::PhotoMirror(int on)
{
    image.mirror = on ? 1 : 0;
    Drop(1);
}

void vPHOTO::PhotoResolution(vPCD_IMAGE_RES r)
{
    image.resolution = r;
    Drop(1);
}

void vPHOTO::PhotoColourFormat(vPCD_COLOUR c)
{
    image.colour = c;
    Drop(1);
}

void vPHOTO::Crop(const vRECT& r)
{
    crop = r;
    Drop(0);
    Drop(1);
}

void vPHOTO::ClearCrop() { Crop(vRECT(0, 0, 0, 0)); }

// ---------------------------------------------------------------- reading

int vPHOTO::Ensure(int full) const
{
    vBITMAP& b = full ? imageBitmap : oviewBitmap;
    if (b.Resource())
        return b.Valid();
    vBITMAPMAN* m = vBITMAPMAN::Get();
    if (!m)
        return 0;
    const FACE& f = full ? image : oview;
    photoRESOURCE::SOURCE s;
    s.entry = number;
    s.pack = full ? packName() : nullptr;
    s.resolution = f.resolution;
    s.format = f.colour;
    s.rotation = f.rotation;
    s.mirror = f.mirror;
    s.crop.left = crop.Left()();
    s.crop.top = crop.Top()();
    s.crop.right = crop.Right()();
    s.crop.bottom = crop.Bottom()();
    if (full && packName.Null()) {
        const_cast<vPHOTOVOLUME*>(volume)->status = vPCD_NOT_FOUND;
        return 0;
    }
    photoRESOURCE* r = new photoRESOURCE(*volume, s);
    if (!r) {
        const_cast<vPHOTOVOLUME*>(volume)->status = vPCD_NO_MEMORY;
        return 0;
    }
    r->Read(const_cast<vPHOTO*>(this));
    b.Adopt(m->Add(r));
    return b.Resource() != nullptr;
}

int vPHOTO::Load() { return Ensure(0); }
int vPHOTO::LoadPhoto() { return Ensure(1); }

vRECT vPHOTO::Size() const { return Ensure(0) ? oviewBitmap.Size() : vRECT(0, 0, 0, 0); }

// The full image's size is had from the library without decoding the image.
vRECT vPHOTO::PhotoSize() const
{
    if (imageBitmap.Resource())
        return imageBitmap.Size();
    PCDACCESS& pcd = PCDACCESS::Process();
    vPHOTOVOLUME* vol = const_cast<vPHOTOVOLUME*>(volume);
    PCDpkHdl h = nullptr;
    long w = 0, ht = 0;
    PCDtransform t = {image.rotation, image.mirror, {crop.Left()(), crop.Top()(), crop.Right()(), crop.Bottom()()}};
    PCDstatus s = pcd.PCDopen(packName(), &h);
    if (s == PCD_OK) {
        s = pcd.PCDsetResolution(h, image.resolution);
        if (s == PCD_OK)
            s = pcd.PCDsetTransform(h, &t);
        if (s == PCD_OK)
            s = pcd.PCDgetSize(h, &w, &ht);
        pcd.PCDclose(h);
    }
    vol->status = (vPHOTOVOLSTATUS)s;
    return s == PCD_OK ? vRECT(0, 0, w, ht) : vRECT(0, 0, 0, 0);
}

// ---------------------------------------------------------------- drawing

int vPHOTO::Draw(vDEVICE& d, const vPOINT& at) const { return Ensure(0) && oviewBitmap.Draw(d, at); }
int vPHOTO::Draw(vDEVICE& d, const vRECT& target) const { return Ensure(0) && oviewBitmap.Draw(d, target); }
int vPHOTO::Draw(vDEVICE& d, const vRECT& target, const vRECT& source) const
{
    return Ensure(0) && oviewBitmap.Draw(d, target, source);
}
int vPHOTO::PhotoDraw(vDEVICE& d, const vPOINT& at) const { return Ensure(1) && imageBitmap.Draw(d, at); }
int vPHOTO::PhotoDraw(vDEVICE& d, const vRECT& target) const { return Ensure(1) && imageBitmap.Draw(d, target); }
int vPHOTO::PhotoDraw(vDEVICE& d, const vRECT& target, const vRECT& source) const
{
    return Ensure(1) && imageBitmap.Draw(d, target, source);
}

// ---------------------------------------------------------------- callbacks

int vPHOTO::vAbortAction() { return 0; }
void vPHOTO::vProgress(unsigned short, unsigned short) {}

long PCDAPI vPHOTO::AbortCallback(void* user)
{
    return user ? static_cast<vPHOTO*>(user)->vAbortAction() : 0;
}

long PCDAPI vPHOTO::ProgressCallback(unsigned short done, unsigned short total, void* user)
{
    if (user)
        static_cast<vPHOTO*>(user)->vProgress(done, total);
    return 0;
}
