// Photo CD volumes and photos on volumes the tests write, their pixels against
// what PCDLIB32.DLL hands out for the same settings, drawn by plain GDI.
#include <gtest/gtest.h>
#include <windows.h>
#include "../bitmaps/bitmap_oracle.h"
#include "export_files.h"
#include "pcdvolume.h"
#include "photocd/pcdaccess.h"
#include "rltest.h"

namespace {

using BYTES = std::vector<unsigned char>;

vSTRING Text(const std::string& s) { return vSTRING("%s", s.c_str()); }

// Three pictures, the second stored turned, with an overview pack.
struct VOLUME : PCDVOLUME {
    explicit VOLUME(bool rights = false) : PCDVOLUME({0, 1, 0}, true, rights) {}
};

struct PHOTO : vPHOTO {
    explicit PHOTO(const vPHOTOVOLUME& v) : vPHOTO(v, vPCD_OVIEW_BASE16, vPCD_RGB24, vROTATE_NONE, 0) {}
};

// The library's own packed DIB for an entry: the overview's or the image pack's.
BYTES LibraryDib(const VOLUME& v, int entry, bool full, long resolution, long format, PCDtransform t)
{
    PCDACCESS& pcd = PCDACCESS::Process();
    EXPECT_EQ(1, pcd.Acquire());
    void* dib = nullptr;
    PCDpkHdl pk = nullptr;
    PCDoviewHdl ov = nullptr;
    if (full && pcd.PCDopen(v.Pack(entry).c_str(), &pk) == PCD_OK)
        pcd.PCDsetResolution(pk, resolution), pcd.PCDsetFormat(pk, format), pcd.PCDsetTransform(pk, &t),
            pcd.PCDloadImage(pk, &dib), pcd.PCDclose(pk);
    if (!full && pcd.PCDOopen(v.root.c_str(), &ov) == PCD_OK)
        pcd.PCDOsetSelect(ov, entry), pcd.PCDOsetFormat(ov, format), pcd.PCDOsetTransform(ov, &t),
            pcd.PCDOloadImage(ov, &dib), pcd.PCDOclose(ov);
    BYTES out;
    if (const BITMAPINFOHEADER* h = (const BITMAPINFOHEADER*)dib)
        out.assign((const unsigned char*)dib, (const unsigned char*)dib + 40 + (h->biBitCount == 8 ? 1024 : 0) +
                                                  ((h->biWidth * h->biBitCount + 31) / 32) * 4 * h->biHeight);
    pcd.PCDfreeBitmap(dib), pcd.Release();
    return out;
}

// The DIB's pixels as a plain program shows them: CreateDIBitmap, then BitBlt.
BYTES Expected(const BYTES& dib, long* w, long* h)
{
    const BITMAPINFOHEADER* hd = (const BITMAPINFOHEADER*)dib.data();
    bmo::PIC p{*w = hd->biWidth, *h = hd->biHeight, hd->biBitCount, BYTES(14, 0)};
    p.bytes.insert(p.bytes.end(), dib.begin(), dib.end());
    bmo::CANVAS c(*w, *h);
    c.Draw(p, {0, 0, *w, *h}, {0, 0, *w, *h});
    return BYTES(c.Bytes(), c.Bytes() + c.size);
}

const vPOINT kOrigin(vINT(0L), vINT(0L));

template <class DRAW>   // drawn at (0, 0) on a memory device of w x h
BYTES Drawn(long w, long h, DRAW draw)
{
    vMEMDEVICE dev{vINT(w), vINT(h)};
    dev.GetDIB();
    EXPECT_TRUE(draw(dev));
    return BYTES(dev.GetDIB(), dev.GetDIB() + bmo::CANVAS(w, h).size);
}

struct RECORDER : vPHOTOVOLUME {
    explicit RECORDER(const vSTRING& n) : vPHOTOVOLUME(n) {}
    int vVolumeChange(vSTRING& id) override { return text = id(), answer; }
    std::string text;
    int answer = 0;
};

} // namespace

TEST(PhotoVolume, StatusesCountNumberingRightsAndVolumeChange)
{
    VOLUME v(true);
    PCDACCESS& pcd = PCDACCESS::Process();
    const struct { std::string name; unsigned short status; long count; } cases[] = {
        {"", vPCD_NOT_FOUND, 0}, {v.root + "\\nothing-here", vPCD_NOT_FOUND, 0}, {v.root, vPCD_OK, 3}};
    for (const auto& c : cases) {
        vPHOTOVOLUME vol(Text(c.name));
        EXPECT_TRUE(c.status == vol.Status() && pcd.Uses() == 1 && c.count == vol.Count()) << c.name;
    }
    EXPECT_TRUE(pcd.IsLoaded() == 0 && vPHOTOVOLUME::ToolkitVersion() != 0u);
    {
        // The version's use is taken over by the first volume and goes with it.
        vPHOTOVOLUME vol(Text(v.root));
        EXPECT_EQ(1, pcd.Uses());
        PHOTO a(vol), b(vol);
        EXPECT_TRUE(a.OverviewNumber() == 1 && b.OverviewNumber() == 2 && vol.Status() == vPCD_OK);
        EXPECT_EQ(v.root + "\\IMAGES\\", std::string(b.ImagePath()()));
        EXPECT_EQ(0, lstrcmpiA(v.Pack(2).c_str(), b.PackName()()));
        EXPECT_EQ(1, b.IsCopyrighted());
        EXPECT_EQ(v.root + "\\RIGHTS\\COPYRGHT.TXT", std::string(b.CopyrightFileName()()));
    }
    EXPECT_EQ(0, pcd.IsLoaded());
    VOLUME plain;
    RECORDER vol(Text(plain.root));
    PHOTO p(vol);
    EXPECT_TRUE(p.IsCopyrighted() == 0 && p.CopyrightFileName().Null());
    const struct { const char* id; const char* text; int answer; } ids[] = {
        {"1234567890XY", "1234 5678 90XY", 0}, {"A\0B\0\0\0\0\0\0\0\0Z", "A B          Z", 1},
    };
    for (const auto& c : ids) {
        vol.answer = c.answer;
        EXPECT_EQ(c.answer, vPHOTOVOLUME::VolumeChangeCallback((const unsigned char*)c.id, &vol));
        EXPECT_EQ(c.text, vol.text);
    }
}

TEST(Photo, PixelsMatchTheAccessLibrary)
{
    VOLUME v;
    vPHOTOVOLUME vol(Text(v.root));
    PHOTO one(vol), two(vol), three(vol);
    PHOTO* photos[3] = {&one, &two, &three};
    const struct { int entry; bool full; long resolution, format; PCDtransform t; } cases[] = {
        {3, false, PCD_BASE_OVER_16, PCD_FORMAT_PAL8, {3, 0, {100, 40, 500, 300}}},
        {2, true, PCD_BASE_OVER_4, PCD_FORMAT_RGB24, {0, 1, {13, 7, 301, 250}}},
        {3, true, PCD_BASE, PCD_FORMAT_RGB24, {1, 0, {0, 0, 0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.entry << (c.full ? " full " : " view ") << c.resolution << " " << c.t.rotation);
        vPHOTO& p = *photos[c.entry - 1];
        p.Crop(vRECT(c.t.crop.left, c.t.crop.top, c.t.crop.right, c.t.crop.bottom));
        if (c.full)
            p.PhotoResolution((vPCD_IMAGE_RES)c.resolution), p.PhotoColourFormat((vPCD_COLOUR)c.format),
                p.PhotoRotate((vROTATEANGLE)c.t.rotation), p.PhotoMirror(c.t.mirror);
        else
            p.ColourFormat((vPCD_COLOUR)c.format), p.Rotate((vROTATEANGLE)c.t.rotation), p.Mirror(c.t.mirror);
        BYTES dib = LibraryDib(v, c.entry, c.full, c.resolution, c.format, c.t);
        ASSERT_FALSE(dib.empty());
        long w = 0, h = 0;
        BYTES want = Expected(dib, &w, &h);
        vRECT size = c.full ? p.PhotoSize() : p.Size();
        EXPECT_TRUE(w == size.Width()() && h == size.Height()());
        EXPECT_TRUE((c.full ? p.LoadPhoto() : p.Load()) == 1 && vol.Status() == vPCD_OK);
        EXPECT_TRUE(Drawn(w, h, [&](vDEVICE& d) { return c.full ? p.PhotoDraw(d, kOrigin) : p.Draw(d, kOrigin); }) == want);
        if (c.full) {   // a bitmap on the photo shares the photo's resource
            vBITMAP b(p);
            ASSERT_TRUE(b.Resource() != nullptr && b.Resource() == p.PhotoBitmap().Resource());
            EXPECT_TRUE(b.Resource()->Type() == gdiRESOURCE::PHOTOKIND && b.Resource()->StripCount() == 1);
            EXPECT_TRUE(Drawn(w, h, [&](vDEVICE& d) { return b.Draw(d, kOrigin); }) == want);
        }
    }
    // The higher resolutions are not decoded: a status, no bitmap.
    one.PhotoResolution(vPCD_4BASE);
    EXPECT_TRUE(one.LoadPhoto() == 0 && vol.Status() == vPCD_RES_NOT_SUPPORTED && !vBITMAP(one).Valid());
}
TEST(Photo, WriteThroughThePlugins)
{
    VOLUME v;
    vPHOTOVOLUME vol(Text(v.root));
    PHOTO p(vol), second(vol);
    second.PhotoResolution(vPCD_BASE16), second.PhotoRotate(vROTATE_90), second.PhotoMirror(1);
    BYTES dib = LibraryDib(v, 2, true, PCD_BASE_OVER_16, PCD_FORMAT_RGB24, {1, 1, {0, 0, 0, 0}});
    ASSERT_FALSE(dib.empty());
    const BITMAPINFOHEADER* h = (const BITMAPINFOHEADER*)dib.data();
    BYTES rgb;
    for (long y = h->biHeight - 1; y >= 0; --y)
        for (long x = 0; x < h->biWidth; ++x) {
            const unsigned char* px = dib.data() + 40 + y * ((h->biWidth * 24 + 31) / 32 * 4) + 3 * x;
            rgb.insert(rgb.end(), {px[2], px[1], px[0]});
        }
    const struct { const char* extension; bool (*read)(const BYTES&, exportfiles::PICTURE&); } formats[] = {
        {".bmp", exportfiles::ReadBmp}, {".PCX", exportfiles::ReadPcx}, {".Tif", exportfiles::ReadTif}};
    for (const auto& f : formats) {
        SCOPED_TRACE(f.extension);
        std::string path = rltest::TempPath("pw") + f.extension;
        {
            vFILE file(Text(path), vFILE_WRITENEW, 0);
            EXPECT_EQ(0, second.Write(file, 0)());
        }
        exportfiles::PICTURE pic;
        ASSERT_TRUE(f.read(bmt::Load(path), pic)) << pic.error;
        EXPECT_TRUE(pic.width == h->biWidth && pic.height == h->biHeight && pic.rgb == rgb);
        DeleteFileA(path.c_str());
    }
    vMEMSTREAM unnamed;
    EXPECT_EQ(3001, p.Write(unnamed, 0)());
    std::string jpg = rltest::TempPath("pw") + ".jpg";
    {
        vFILE file(Text(jpg), vFILE_WRITENEW, 0);
        EXPECT_TRUE(p.Write(file, 0)() == 3001 && file.Size() == 0ul);
    }
    DeleteFileA(jpg.c_str());
}

