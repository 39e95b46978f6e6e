// rltool resize: scale a bitmap file, reducing its colour depth on the way
// with error diffusion if asked.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "rl132.h"
#include "rltool.h"
#include "bmpfile.h"

namespace {
// Sources of this many bytes or more get a progress bar on a terminal.
const unsigned long kProgressFrom = 4ul << 20;

class Bar : public oPROGRESS {
public:
    explicit Bar(RlProgressLine& line) : line_(line) {}
    void Update(unsigned long done) override
    {
        oPROGRESS::Update(done);
        unsigned p = Percent();
        if (p == shown_)
            return;
        shown_ = p;
        char bar[41];
        unsigned fill = p * 40 / 100;
        for (unsigned i = 0; i < 40; ++i)
            bar[i] = i < fill ? '#' : '.';
        bar[40] = 0;
        line_.Update("resizing [%s] %3u%%", bar, p);
    }
    void End() override { line_.End(); }

private:
    RlProgressLine& line_;
    unsigned shown_ = 101;
};

unsigned long U32(const unsigned char* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | ((unsigned long)p[3] << 24);
}
void Put32(unsigned char* p, unsigned long v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = (unsigned char)(v >> (8 * i));
}
} // namespace

static int RunResize(int argc, char** argv)
{
    const char* in = nullptr;
    const char* out = nullptr;
    unsigned long width = 0, height = 0, bits = 0;
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        const char* a = argv[i];
        long long v;
        if (strcmp(a, "--width") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 65535, &v))
                return rltool_fail(RLTOOL_USAGE, "--width takes a number from 1 to 65535, not '%s'", argv[i]);
            width = (unsigned long)v;
        } else if (strcmp(a, "--height") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 65535, &v))
                return rltool_fail(RLTOOL_USAGE, "--height takes a number from 1 to 65535, not '%s'", argv[i]);
            height = (unsigned long)v;
        } else if (strcmp(a, "--bits") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 24, &v) || (v != 8 && v != 4 && v != 1 && v != 24))
                return rltool_fail(RLTOOL_USAGE, "--bits takes 8, 4, 1 or 24, not '%s'", argv[i]);
            bits = (unsigned long)v;
        } else if (strcmp(a, "--keep-aspect") == 0) {
            keep = true;
        } else if (a[0] == '-' && a[1]) {
            return rltool_usage("resize");
        } else if (!in) {
            in = a;
        } else if (!out) {
            out = a;
        } else {
            return rltool_usage("resize");
        }
    }
    if (!in || !out)
        return rltool_usage("resize");
    if (rltool_same_file(in, out))
        return rltool_fail(RLTOOL_USAGE, "'%s' is the same file as the input '%s'; give another name for the output", out, in);

    RlBmpSummary s;
    if (!rltool_bmp_summary(in, &s))
        return rltool_fail(RLTOOL_FAILED, "%s: cannot read a bitmap header from this file", in);
    long sw = s.width, sh = s.height < 0 ? -s.height : s.height;
    if (keep && sw > 0 && sh > 0 && sw <= 32767 && sh <= 32767) {
        // Fit inside the box given; a missing side is free.
        unsigned short w = (unsigned short)(width ? width : 65535);
        unsigned short h = (unsigned short)(height ? height : 65535);
        if (!width && !height)
            w = (unsigned short)sw, h = (unsigned short)sh;
        vBMRESIZE::PreserveAspect((short)sw, (short)sh, &w, &h);
        width = w ? w : 1;
        height = h ? h : 1;
    }

    vFILE source(vSTRING("%s", in), vFILE_READONLY, 0);
    if (source.Status() != vSTREAM_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot open the file", in);
    vMEMSTREAM scaled;
    RlProgressLine line((long long)source.Size(), kProgressFrom);
    Bar bar(line);
    bool progress = line.Shown();
    if (progress)
        vBMRESIZE::SetProgressInd(bar);
    vBMRESIZE r;
    int ok = r.Scale(source, scaled, (unsigned short)width, (unsigned short)height, (unsigned char)bits, 0);
    if (progress)
        vBMRESIZE::RemoveProgressInd();
    line.End();
    if (!ok || scaled.Size() < 40)
        return rltool_fail(RLTOOL_FAILED, "%s: the library cannot read this bitmap: %s", in, rltool_bmp_refusal(s));

    // The scaled image is a stored DIB; a file on disk also wants the 14-byte
    // "BM" header in front, with the file size and the offset of the rows.
    // Read through the stream: a large result has moved to a spill file and
    // has no buffer in memory.
    unsigned char info[40];
    scaled.MoveFromStart(0);
    if (scaled.ReadByteString(info, sizeof info) != (long)sizeof info)
        return rltool_fail(RLTOOL_FAILED, "%s: the scaled image could not be read back", in);
    unsigned long total = 14 + scaled.Size();
    unsigned long offBits = 14 + 40 + U32(info + 32) * 4;
    unsigned char fileHeader[14] = {'B', 'M'};
    Put32(fileHeader + 2, total);
    Put32(fileHeader + 10, offBits);
    RlOutput output;
    if (!output.Create(out))
        return RLTOOL_FAILED;
    FILE* f = output.File();
    bool written = fwrite(fileHeader, 1, 14, f) == 14 && fwrite(info, 1, 40, f) == 40;
    static unsigned char piece[65536];
    for (unsigned long left = scaled.Size() - 40; written && left;) {
        unsigned long n = left < sizeof piece ? left : (unsigned long)sizeof piece;
        written = scaled.ReadByteString(piece, n) == (long)n && fwrite(piece, 1, n, f) == n;
        left -= n;
    }
    if (!written)
        return rltool_fail(RLTOOL_FAILED, "%s: could not write the file", out);
    if (!output.Commit())
        return RLTOOL_FAILED;
    printf("%s: %ld x %ld, %u bits -> %s: %lu x %lu, %u bits\n", in, sw, sh, s.bits, out,
           U32(info + 4), U32(info + 8), info[14]);
    return RLTOOL_OK;
}

RLTOOL_COMMAND(resize, "resize", "IN.bmp OUT.bmp [--width W] [--height H] [--bits 8|4|1] [--keep-aspect]",
               "scale a bitmap, dithering to 8, 4 or 1 bits if asked", RunResize);
