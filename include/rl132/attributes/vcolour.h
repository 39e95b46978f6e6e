// Colours in four models: RGB, HLS, CMYK and Pantone references.
//
// A vCOLOUR is an 8-byte value: a packed 32-bit value whose layout depends on
// the colour type, the type, a tint percentage (100 = full strength) and flags.
// Any component can be read in any model; the class converts on the fly with
// integer arithmetic whose rounding is part of the format (printed output
// depends on it), so results are exact, not approximate.
//
// Packed layouts (bit 0 least significant):
//   vRGB      red 0-7, green 8-15, blue 16-23 (a Windows COLORREF, 0x00BBGGRR)
//   vHLS      hue 0-7 (low 8 bits of degrees 0..359), lightness 8-15,
//             saturation 16-23 (percent)
//   vCMYK     cyan 0-7, magenta 8-15, yellow 16-23, black 24-31 (percent)
//   vPANTONE  marker 0-13, simulation type 14-19, index 20-31
#ifndef RL132_ATTRIBUTES_VCOLOUR_H
#define RL132_ATTRIBUTES_VCOLOUR_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

class vSTREAM;

enum vCOLOURTYPE : int {
    vRGB = 0,
    vHLS = 1,
    vCMYK = 2,
    vPANTONE = 3
};

class RL132_API vCOLOUR : public vOBJECT {
public:
    enum {
        SYSTEM_FLAG = 1,   // came from the system's colour settings
        SPOT_FLAG = 16     // a separately printed colour; conversions keep it
    };

    // RGB black, tint 100.
    vCOLOUR();
    vCOLOUR(unsigned char red, unsigned char green, unsigned char blue);
    // An RGB colour from a packed 0x00BBGGRR value; `system` marks a system colour.
    vCOLOUR(long value, int system);
    // Any model; the tint is clamped to 0..100. Never sets the system flag.
    vCOLOUR(vCOLOURTYPE type, unsigned long value, long tint, int spot);
    // Colour `step` of `steps` on the straight RGB line from `from` to `to`, as
    // used for graduated fills. Components are read with their tints applied.
    // A step count of 0 has no meaningful answer; it yields `from` in RGB.
    vCOLOUR(const vCOLOUR& from, const vCOLOUR& to, short step, short steps);

    int operator==(const vCOLOUR& other) const;
    int operator!=(const vCOLOUR& other) const;
    // Value, type and flags equal; the tint is ignored.
    int EqualsWithoutTint(const vCOLOUR& other) const;

    // Components in any model (converted and tinted on the way).
    unsigned char Red() const;
    unsigned char Green() const;
    unsigned char Blue() const;
    unsigned char Cyan() const;
    unsigned char Magenta() const;
    unsigned char Yellow() const;
    unsigned char Black() const;
    unsigned char Hue() const;
    unsigned char Light() const;
    unsigned char Saturation() const;
    unsigned short Marker() const;
    unsigned short Simtype() const;
    unsigned short Index() const;

    // Setting a component of another model converts there and back; type, tint
    // and flags stay. RGB, HLS and CMYK setters leave a Pantone colour alone;
    // Pantone setters act only on Pantone colours.
    void Red(unsigned char v);
    void Green(unsigned char v);
    void Blue(unsigned char v);
    void Cyan(unsigned char v);
    void Magenta(unsigned char v);
    void Yellow(unsigned char v);
    void Black(unsigned char v);
    void Hue(unsigned char v);
    void Light(unsigned char v);
    void Saturation(unsigned char v);
    void Marker(unsigned short v);
    void Simtype(unsigned short v);
    void Index(unsigned short v);

    // The colour in another model. A Pantone colour that cannot be resolved
    // (the colour library is missing or refuses it) gives a Pantone colour of
    // value 0 from RGBFormat, full black ink (its own tint and spot flag) from
    // CMYKFormat and an HLS colour of value, tint and flags 0 from HLSFormat;
    // its component readers and PackedRGB give 0.
    vCOLOUR RGBFormat() const;
    vCOLOUR CMYKFormat() const;
    vCOLOUR HLSFormat() const;
    vCOLOUR PantoneFormat(unsigned char code) const;
    // The same colour at `tint` percent of its present strength.
    vCOLOUR TintFormat(unsigned long tint) const;

    // 0x00BBGGRR with the tint applied.
    unsigned long PackedRGB() const;
    vCOLOURTYPE GetNativeFormat() const { return (vCOLOURTYPE)type; }
    unsigned char GetTint() const { return tint; }
    int Spot() const { return (flags & SPOT_FLAG) != 0; }
    int SystemColour() const { return (flags & SYSTEM_FLAG) != 0; }
    // Percent of black, 0 (white) to 100 (black).
    unsigned long GreyScale() const;
    // Some strength of pure black.
    int IsTintOfBlack() const;

    // The packed value as stored, without conversion or tint.
    unsigned long Value() const { return value; }
    unsigned short Flags() const { return flags; }

    // Stream form, 8 bytes: value (long), type (byte), tint (byte), flags (word).
    // `colour << stream` loads, `colour >> stream` stores; both return the stream.
    // Loading does not validate the type or the tint.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

private:
    void Init(long value);
    unsigned long operator()() const;
    unsigned long ApplyTint(unsigned long value) const;
    vCOLOUR RgbToHls() const;
    vCOLOUR HlsToRgb() const;
    vCOLOUR RgbToCmyk() const;
    vCOLOUR CmykToRgb() const;
    vCOLOUR RgbToPant() const;
    vCOLOUR PantToRgb() const;
    unsigned long RgbToTint() const;

    // The colour converted into `model` as the readers see it: same tint and
    // spot flag. Returns 0 when there is no such colour (an unknown type, or a
    // Pantone reference the colour library could not resolve).
    int InModel(vCOLOURTYPE model, vCOLOUR& out) const;
    // A component byte of the colour in `model`, tint applied; 0 when the
    // colour cannot be read in that model.
    unsigned char Component(vCOLOURTYPE model, int shift) const;
    // Sets a component byte of the colour in `model`, converting there and
    // back when the colour is in another of RGB, HLS and CMYK.
    void SetComponent(vCOLOURTYPE model, int shift, unsigned char v);
    static vCOLOUR Make(unsigned type, unsigned long value, unsigned tint, unsigned flags);

    unsigned long value;
    unsigned char type;
    unsigned char tint;
    unsigned short flags;
};

#endif
