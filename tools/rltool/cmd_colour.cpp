// rltool colour: one colour given in any model, shown in all of them.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "rl132.h"
#include "rltool.h"

namespace {
const char* kModelNames[] = {"RGB", "HLS", "CMYK", "Pantone"};

// Reads "a,b,c[,d]" into exactly `count` numbers within 0..max[i].
bool ParseList(const char* text, int count, const long* max, long* out)
{
    const char* p = text;
    for (int i = 0; i < count; ++i) {
        const char* comma = strchr(p, ',');
        bool last = i + 1 == count;
        if (last != !comma)
            return false;
        size_t n = comma ? size_t(comma - p) : strlen(p);
        long long v;
        if (!rltool_number_n(p, n, 0, max[i], &v))
            return false;
        out[i] = (long)v;
        p += n + 1;
    }
    return true;
}
} // namespace

static int RunColour(int argc, char** argv)
{
    int model = -1;
    unsigned long value = 0;
    long tint = 100;
    long hueGiven = -1;
    for (int i = 1; i < argc; ++i) {
        const char* opt = argv[i];
        const char* arg = i + 1 < argc ? argv[i + 1] : nullptr;
        long v[4];
        if (!arg)
            return rltool_usage("colour");
        if (strcmp(opt, "--rgb") == 0) {
            const long max[] = {255, 255, 255};
            if (!ParseList(arg, 3, max, v))
                return rltool_fail(RLTOOL_USAGE, "--rgb takes R,G,B with each 0..255, not '%s'", arg);
            model = vRGB;
            value = (unsigned long)(v[0] | v[1] << 8 | v[2] << 16);
        } else if (strcmp(opt, "--hls") == 0) {
            const long max[] = {359, 100, 100};
            if (!ParseList(arg, 3, max, v))
                return rltool_fail(RLTOOL_USAGE, "--hls takes H,L,S with H 0..359 and L, S 0..100, not '%s'", arg);
            model = vHLS;
            // The colour keeps only the low byte of the hue, as it always has.
            value = (unsigned long)((v[0] & 0xFF) | v[1] << 8 | v[2] << 16);
            hueGiven = v[0];
        } else if (strcmp(opt, "--cmyk") == 0) {
            const long max[] = {100, 100, 100, 100};
            if (!ParseList(arg, 4, max, v))
                return rltool_fail(RLTOOL_USAGE, "--cmyk takes C,M,Y,K with each 0..100, not '%s'", arg);
            model = vCMYK;
            value = (unsigned long)v[0] | (unsigned long)v[1] << 8 | (unsigned long)v[2] << 16 |
                    (unsigned long)v[3] << 24;
        } else if (strcmp(opt, "--pantone") == 0) {
            const long max[] = {0x3FFF, 0x3F, 0xFFF};
            if (!ParseList(arg, 3, max, v))
                return rltool_fail(RLTOOL_USAGE,
                                   "--pantone takes MARKER,SIMTYPE,INDEX within 16383, 63 and 4095, not '%s'", arg);
            model = vPANTONE;
            value = (unsigned long)v[0] | (unsigned long)v[1] << 14 | (unsigned long)v[2] << 20;
        } else if (strcmp(opt, "--tint") == 0) {
            const long max[] = {100};
            if (!ParseList(arg, 1, max, v))
                return rltool_fail(RLTOOL_USAGE, "--tint takes a percentage 0..100, not '%s'", arg);
            tint = v[0];
        } else {
            return rltool_usage("colour");
        }
        ++i;
    }
    if (model < 0)
        return rltool_fail(RLTOOL_USAGE, "give the colour with --rgb, --hls, --cmyk or --pantone");

    vCOLOUR c((vCOLOURTYPE)model, value, tint, 0);
    printf("given     %s 0x%08lX, tint %u\n", kModelNames[model], c.Value(), (unsigned)c.GetTint());
    if (hueGiven > 255)
        printf("note      a hue of %ld degrees is kept as its low byte, %ld\n", hueGiven, hueGiven & 0xFF);
    if (model == vPANTONE) {
        vCOLOUR rgb = c.RGBFormat();
        if (rgb.GetNativeFormat() != vRGB)
            printf("note      the Pantone colour library (POCE.DLL) could not resolve the reference\n");
        printf("pantone   %u,%u,%u\n", (unsigned)c.Marker(), (unsigned)c.Simtype(), (unsigned)c.Index());
    }
    printf("rgb       %u,%u,%u\n", (unsigned)c.Red(), (unsigned)c.Green(), (unsigned)c.Blue());
    printf("hls       %u,%u,%u\n", (unsigned)c.Hue(), (unsigned)c.Light(), (unsigned)c.Saturation());
    printf("cmyk      %u,%u,%u,%u\n", (unsigned)c.Cyan(), (unsigned)c.Magenta(), (unsigned)c.Yellow(),
           (unsigned)c.Black());
    printf("packed    0x%06lX\n", c.PackedRGB());
    printf("greyscale %lu%% black\n", c.GreyScale());
    printf("black     %s\n", c.IsTintOfBlack() ? "a tint of black" : "not a tint of black");
    return RLTOOL_OK;
}

RLTOOL_COMMAND(colour, "colour", "(--rgb R,G,B | --hls H,L,S | --cmyk C,M,Y,K | --pantone M,S,I) [--tint T]",
               "a colour in every model (tint applied), with its greyscale and packed RGB value", RunColour);
