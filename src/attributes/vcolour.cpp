// vCOLOUR: construction, comparison, the model conversions and their readers.
// Plain C++ (no platform headers): the only outside call, resolving Pantone
// references, lives in vcolour_pantone.cpp.
#include "rl132/attributes/vcolour.h"
#include "rl132/core/vtrace.h"
#include "attributes/vcolourmath.h"

using rlcolour::Byte;
using rlcolour::Pack3;
using rlcolour::PlatformMulDiv;
using rlcolour::RoundMulDiv;
using rlcolour::TruncMulDiv;

namespace {
// The ink recipe's fixed parameters. Undercolour removal with 100 % black
// generation means full grey-component replacement: the common part of C, M
// and Y becomes black ink. The cross-corrections are off.
const int32_t kUndercolourOffset = 0;
const int32_t kCyanIntoMagenta = 0;      // percent
const int32_t kMagentaIntoYellow = 0;    // percent
const int32_t kBlackGeneration = 100;    // percent

const int kLastType = vPANTONE;
} // namespace

// ------------------------------------------------------------ construction

vCOLOUR vCOLOUR::Make(unsigned t, unsigned long v, unsigned ti, unsigned f)
{
    vCOLOUR c;
    c.value = v;
    c.type = (unsigned char)t;
    c.tint = (unsigned char)ti;
    c.flags = (unsigned short)f;
    return c;
}

void vCOLOUR::Init(long v)
{
    value = (unsigned long)v;
    type = vRGB;
    tint = 100;
    flags = 0;
}

vCOLOUR::vCOLOUR() { Init(0); }

vCOLOUR::vCOLOUR(unsigned char red, unsigned char green, unsigned char blue)
{
    Init((long)Pack3(red, green, blue));
}

vCOLOUR::vCOLOUR(long v, int system)
{
    Init(v);
    flags = system ? SYSTEM_FLAG : 0;
}

vCOLOUR::vCOLOUR(vCOLOURTYPE t, unsigned long v, long ti, int spot)
{
    value = v;
    type = (unsigned char)t;
    tint = (unsigned char)(ti > 100 ? 100 : ti < 0 ? 0 : ti);
    flags = spot ? SPOT_FLAG : 0;
}

vCOLOUR::vCOLOUR(const vCOLOUR& from, const vCOLOUR& to, short step, short steps)
{
    Init(0);
    if (steps == 0) {
        // No position on a ramp of no steps; stay at its start rather than fault.
        Init((long)Pack3(from.Red(), from.Green(), from.Blue()));
        return;
    }
    int32_t a[3] = {from.Red(), from.Green(), from.Blue()};
    int32_t b[3] = {to.Red(), to.Green(), to.Blue()};
    int32_t out[3];
    for (int i = 0; i < 3; ++i) {
        // The difference is a 16-bit quantity in the fill code; the product
        // with the step is not, and the division truncates toward zero.
        int32_t d = (short)(b[i] - a[i]);
        out[i] = (a[i] + d * step / steps) & 0xFF;
    }
    Init((long)Pack3(out[0], out[1], out[2]));
}

// ------------------------------------------------------------ comparison

int vCOLOUR::operator==(const vCOLOUR& o) const
{
    return value == o.value && type == o.type && tint == o.tint && flags == o.flags;
}

int vCOLOUR::operator!=(const vCOLOUR& o) const { return !(*this == o); }

int vCOLOUR::EqualsWithoutTint(const vCOLOUR& o) const
{
    return value == o.value && type == o.type && flags == o.flags;
}

// ------------------------------------------------------------ tint

unsigned long vCOLOUR::ApplyTint(unsigned long v) const
{
    if (tint == 100 || type > kLastType)
        return v;
    // A tint read from a stream is not validated; above 100 t goes negative
    // and the components simply wrap in their bytes.
    int32_t t = 100 - (int32_t)tint;
    switch (type) {
    case vRGB: {
        int32_t c[3];
        for (int i = 0; i < 3; ++i) {
            int32_t x = Byte(v, 8 * i);
            c[i] = x + (255 - x) * t / 100;   // toward white
        }
        return (v & 0xFF000000UL) | Pack3(c[0], c[1], c[2]);
    }
    case vHLS: {
        int32_t l = Byte(v, 8);
        l = l + (100 - l) * t / 100;          // lighter, hue and saturation kept
        return Pack3(Byte(v, 0), l, Byte(v, 16));
    }
    case vCMYK: {
        unsigned long out = 0;
        for (int i = 0; i < 4; ++i) {
            int32_t x = Byte(v, 8 * i);
            out |= (unsigned long)((x - t * x / 100) & 0xFF) << (8 * i);  // less ink
        }
        return out;
    }
    default:
        return v;   // a Pantone reference has no components to thin
    }
}

// ------------------------------------------------------------ conversions

vCOLOUR vCOLOUR::RgbToHls() const
{
    vTrace(1, "vCOLOUR::RgbToHls(VOID)");
    if (type != vRGB)
        return Make(vHLS, 0, 0, 0);
    int32_t r = Byte(value, 0), g = Byte(value, 8), b = Byte(value, 16);
    int32_t mx = r > g ? (r > b ? r : b) : (g > b ? g : b);
    int32_t mn = r < g ? (r < b ? r : b) : (g < b ? g : b);
    int32_t l = RoundMulDiv(mx + mn, 50, 255);
    int32_t h = 0, s = 0;
    if (mx == mn) {
        vTrace(1, "nHue = 0 ??");
    } else {
        int32_t d = mx - mn;
        s = l <= 50 ? RoundMulDiv(d, 100, mx + mn) : RoundMulDiv(d, 100, 510 - mx - mn);
        int32_t rc = RoundMulDiv(60, mx - r, d);
        int32_t gc = RoundMulDiv(60, mx - g, d);
        int32_t bc = RoundMulDiv(60, mx - b, d);
        if (r == mx)
            h = bc - gc;
        else if (g == mx)
            h = rc + 120 - bc;
        else
            h = gc + 240 - rc;
        if (h < 0)
            h += 360;
    }
    // Only the low byte of the hue fits the layout: hues from 256 degrees on
    // come back 256 degrees short. The format has always been so.
    return Make(vHLS, Pack3(h, l, s), tint, flags & SPOT_FLAG);
}

namespace {
// One channel of the HLS to RGB recipe: p and q are the low and high
// lightness bounds in percent, h the channel's hue position in degrees.
int32_t HueValue(int32_t p, int32_t q, int32_t h)
{
    if (h > 360)
        h -= 360;
    if (h < 0)
        h += 360;
    int32_t x;
    if (h < 60)
        x = p + RoundMulDiv(q - p, h, 60);
    else if (h < 180)
        x = q;
    else if (h < 240)
        x = p + RoundMulDiv(q - p, 240 - h, 60);
    else
        x = p;
    return RoundMulDiv(x, 255, 100);
}
} // namespace

vCOLOUR vCOLOUR::HlsToRgb() const
{
    int32_t h = Byte(value, 0), l = Byte(value, 8), s = Byte(value, 16);
    int32_t m2 = l <= 50 ? RoundMulDiv(l, s + 100, 100) : l + s - RoundMulDiv(l, s, 100);
    int32_t m1 = 2 * l - m2;
    uint32_t rgb;
    if (s == 0) {
        int32_t grey = RoundMulDiv(l, 255, 100);
        rgb = Pack3(grey, grey, grey);
    } else {
        rgb = Pack3(HueValue(m1, m2, h + 120), HueValue(m1, m2, h), HueValue(m1, m2, h - 120));
    }
    return Make(vRGB, rgb, tint, flags & SPOT_FLAG);
}

vCOLOUR vCOLOUR::RgbToCmyk() const
{
    // Inks in half-percent units first, so that halving at the end rounds the
    // same way for every ink.
    int32_t c = RoundMulDiv(200, 255 - Byte(value, 0), 255);
    int32_t m = RoundMulDiv(200, 255 - Byte(value, 8), 255);
    int32_t y = RoundMulDiv(200, 255 - Byte(value, 16), 255);
    int32_t k = c < m ? (c < y ? c : y) : (m < y ? m : y);
    k -= kUndercolourOffset;
    if (k < 0)
        k = 0;
    c -= k;
    m -= k;
    y -= k;
    if (m != 0 && y != 0 && kMagentaIntoYellow != 0) {
        y -= PlatformMulDiv(m, kMagentaIntoYellow, 100);
        if (y < 0)
            y = 0;
    }
    if (c != 0 && m != 0 && kCyanIntoMagenta != 0) {
        m -= PlatformMulDiv(c, kCyanIntoMagenta, 100);
        if (m < 0)
            m = 0;
    }
    if (k != 0 && kBlackGeneration != 100)
        k = PlatformMulDiv(k, kBlackGeneration, 100);
    unsigned long v = (unsigned long)((c & 0xFF) >> 1) | (unsigned long)((m & 0xFF) >> 1) << 8 |
                      (unsigned long)((y & 0xFF) >> 1) << 16 | (unsigned long)((k & 0xFF) >> 1) << 24;
    return Make(vCMYK, v, tint, flags & SPOT_FLAG);
}

vCOLOUR vCOLOUR::CmykToRgb() const
{
    // The tint thins the inks here, and the RGB result keeps the tint, so its
    // readers lighten it once more: tinted CMYK reaches the screen paler than
    // a single tint would make it. Output has always looked so; keep it.
    int32_t s = (int32_t)tint * 255;
    int32_t c = TruncMulDiv(2 * Byte(value, 0), s, 20000);
    int32_t m = TruncMulDiv(2 * Byte(value, 8), s, 20000);
    int32_t y = TruncMulDiv(2 * Byte(value, 16), s, 20000);
    int32_t k = TruncMulDiv(2 * Byte(value, 24), s, 20000);
    if (c + m + y > 600)
        k /= 2;   // heavy three-ink colours already come out dark
    m += PlatformMulDiv(c, 0, 100);
    y += PlatformMulDiv(m, 0, 100);
    int32_t ch[3] = {c + k, m + k, y + k};
    int32_t out[3];
    for (int i = 0; i < 3; ++i) {
        int32_t x = ch[i] > 255 ? 0 : 255 - ch[i];
        out[i] = x > 255 ? 255 : x;
    }
    return Make(vRGB, Pack3(out[0], out[1], out[2]), tint, flags & SPOT_FLAG);
}

vCOLOUR vCOLOUR::RgbToPant() const
{
    // No matching toward the Pantone range exists: every colour maps to the
    // empty reference.
    return Make(vPANTONE, 0, tint, flags & SPOT_FLAG);
}

unsigned long vCOLOUR::RgbToTint() const
{
    unsigned long v = PackedRGB();
    int32_t r = Byte(v, 0), g = Byte(v, 8), b = Byte(v, 16);
    return (unsigned long)(100 - (30 * r + 59 * g + 11 * b + 127) / 255);
}

int vCOLOUR::InModel(vCOLOURTYPE model, vCOLOUR& out) const
{
    if (type > kLastType)
        return 0;
    if (type == model) {
        out = *this;
        return 1;
    }
    if (model == vPANTONE) {
        out = RgbToPant();
        return 1;
    }
    vCOLOUR rgb;
    switch (type) {
    case vRGB: rgb = *this; break;
    case vHLS: rgb = HlsToRgb(); break;
    case vCMYK: rgb = CmykToRgb(); break;
    default:
        rgb = PantToRgb();
        // A failed lookup answers with a Pantone colour; converting that again
        // would only ask the library again.
        if (rgb.type != vRGB)
            return 0;
        break;
    }
    switch (model) {
    case vRGB: out = rgb; break;
    case vHLS: out = rgb.RgbToHls(); break;
    default: out = rgb.RgbToCmyk(); break;
    }
    return 1;
}

// ------------------------------------------------------------ readers

unsigned char vCOLOUR::Component(vCOLOURTYPE model, int shift) const
{
    vCOLOUR c;
    if (!InModel(model, c))
        return 0;
    return (unsigned char)Byte(c.ApplyTint(c.value), shift);
}

unsigned char vCOLOUR::Red() const { return Component(vRGB, 0); }
unsigned char vCOLOUR::Green() const { return Component(vRGB, 8); }
unsigned char vCOLOUR::Blue() const { return Component(vRGB, 16); }
unsigned char vCOLOUR::Cyan() const { return Component(vCMYK, 0); }
unsigned char vCOLOUR::Magenta() const { return Component(vCMYK, 8); }
unsigned char vCOLOUR::Yellow() const { return Component(vCMYK, 16); }
unsigned char vCOLOUR::Black() const { return Component(vCMYK, 24); }
unsigned char vCOLOUR::Hue() const { return Component(vHLS, 0); }
unsigned char vCOLOUR::Light() const { return Component(vHLS, 8); }
unsigned char vCOLOUR::Saturation() const { return Component(vHLS, 16); }

// A Pantone reference is never tinted, and other models map to the empty
// reference, so the fields come straight from the packed value.
unsigned short vCOLOUR::Marker() const { return type == vPANTONE ? (unsigned short)(value & 0x3FFF) : 0; }
unsigned short vCOLOUR::Simtype() const { return type == vPANTONE ? (unsigned short)((value >> 14) & 0x3F) : 0; }
unsigned short vCOLOUR::Index() const { return type == vPANTONE ? (unsigned short)(value >> 20) : 0; }

// ------------------------------------------------------------ writers

void vCOLOUR::SetComponent(vCOLOURTYPE model, int shift, unsigned char v)
{
    const unsigned long mask = 0xFFUL << shift;
    if (type == model) {
        value = (value & ~mask) | ((unsigned long)v << shift);
        return;
    }
    if (type != vRGB && type != vHLS && type != vCMYK)
        return;
    vCOLOUR there;
    InModel(model, there);
    there.value = (there.value & ~mask) | ((unsigned long)v << shift);
    vCOLOUR back = type == vRGB ? there.RGBFormat() : type == vHLS ? there.HLSFormat() : there.CMYKFormat();
    value = back.value;
}

void vCOLOUR::Red(unsigned char v) { SetComponent(vRGB, 0, v); }
void vCOLOUR::Green(unsigned char v) { SetComponent(vRGB, 8, v); }
void vCOLOUR::Blue(unsigned char v) { SetComponent(vRGB, 16, v); }
void vCOLOUR::Cyan(unsigned char v) { SetComponent(vCMYK, 0, v); }
void vCOLOUR::Magenta(unsigned char v) { SetComponent(vCMYK, 8, v); }
void vCOLOUR::Yellow(unsigned char v) { SetComponent(vCMYK, 16, v); }
void vCOLOUR::Black(unsigned char v) { SetComponent(vCMYK, 24, v); }
void vCOLOUR::Hue(unsigned char v) { SetComponent(vHLS, 0, v); }
void vCOLOUR::Light(unsigned char v) { SetComponent(vHLS, 8, v); }
void vCOLOUR::Saturation(unsigned char v) { SetComponent(vHLS, 16, v); }

// The argument is added unmasked: an over-wide one carries into the next
// field. Stored references depend on that arithmetic, so it stays.
void vCOLOUR::Marker(unsigned short v)
{
    if (type == vPANTONE)
        value = (value & ~0x3FFFUL) + v;
}

void vCOLOUR::Simtype(unsigned short v)
{
    if (type == vPANTONE)
        value = (value & ~(0x3FUL << 14)) + ((unsigned long)v << 14);
}

void vCOLOUR::Index(unsigned short v)
{
    if (type == vPANTONE)
        value = (value & ~(0xFFFUL << 20)) + ((unsigned long)v << 20);
}

// ------------------------------------------------------------ whole colours

vCOLOUR vCOLOUR::RGBFormat() const
{
    switch (type) {
    case vRGB: return *this;
    case vHLS: return HlsToRgb();
    case vCMYK: return CmykToRgb();
    case vPANTONE: return PantToRgb();
    default: return Make(vRGB, 0, 0, 0);
    }
}

// A Pantone reference goes through its RGB lookup whatever that gives: after a
// failed lookup the ink recipe reads the empty reference's zero value as RGB
// black (full black ink, own tint and spot flag), and the HLS recipe refuses a
// source that is not RGB (an HLS zero). Neither asks the library a second time.
vCOLOUR vCOLOUR::CMYKFormat() const
{
    if (type == vPANTONE)
        return PantToRgb().RgbToCmyk();
    vCOLOUR c;
    if (!InModel(vCMYK, c))
        return Make(vCMYK, 0, 0, 0);
    return c;
}

vCOLOUR vCOLOUR::HLSFormat() const
{
    if (type == vPANTONE)
        return PantToRgb().RgbToHls();
    vCOLOUR c;
    if (!InModel(vHLS, c))
        return Make(vHLS, 0, 0, 0);
    return c;
}

vCOLOUR vCOLOUR::PantoneFormat(unsigned char code) const
{
    if (type == vPANTONE)
        return (value & 0xFF) == code ? *this : Make(vPANTONE, 0, 0, 0);
    if (type > kLastType)
        return Make(vPANTONE, 0, 0, 0);
    return RgbToPant();
}

vCOLOUR vCOLOUR::TintFormat(unsigned long t) const
{
    if (t == 100)
        return *this;
    // A 32-bit product read as signed, then a truncating division; the
    // constructor clamps the result to 0..100. A factor large enough to wrap
    // the product therefore lands wherever the wrap puts it, as it always has.
    int32_t product = (int32_t)((uint32_t)tint * (uint32_t)t);
    return vCOLOUR((vCOLOURTYPE)type, value, (long)(product / 100), Spot());
}

unsigned long vCOLOUR::PackedRGB() const
{
    if (type == vRGB && tint == 100)
        return value;
    vCOLOUR rgb;
    if (!InModel(vRGB, rgb))
        return 0;
    int32_t t = 100 - (int32_t)tint;
    int32_t c[3];
    for (int i = 0; i < 3; ++i) {
        int32_t x = Byte(rgb.value, 8 * i);
        c[i] = x + t * (255 - x) / 100;
    }
    return Pack3(c[0], c[1], c[2]);
}

unsigned long vCOLOUR::operator()() const { return PackedRGB(); }

unsigned long vCOLOUR::GreyScale() const
{
    if (type > kLastType)
        return 100;
    return RgbToTint();
}

int vCOLOUR::IsTintOfBlack() const
{
    switch (type) {
    case vRGB: return value == 0;
    case vHLS: return (value & 0xFF00) == 0;
    case vCMYK:
        // Full black ink, full three-colour black, or the four inks at half
        // strength each, which prints as a rich black too.
        return (value & 0xFF000000UL) == 0x64000000UL || (value & 0xFFFFFFUL) == 0x646464UL ||
               value == 0x32323232UL;
    default: return 0;
    }
}
