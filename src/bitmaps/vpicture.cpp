// The picture base: every operation does nothing until a kind of picture
// gives it a meaning.
#include "rl132/bitmaps/vpicture.h"

vPICTURE::vPICTURE() {}
vPICTURE::vPICTURE(const vPICTURE& other) : vOBJECT(other) {}
vPICTURE& vPICTURE::operator=(const vPICTURE&) { return *this; }
vPICTURE::~vPICTURE() {}

vRECT vPICTURE::Size() const { return vRECT(vINT(0L), vINT(0L), vINT(0L), vINT(0L)); }
void vPICTURE::Angle(const vANGLE&) {}
void vPICTURE::Rotate(const vROTATEANGLE&) {}
void vPICTURE::Mirror(int) {}
vANGLE vPICTURE::Angle() const { return vANGLE(); }
vROTATEANGLE vPICTURE::Rotate() const { return vROTATE_NONE; }
int vPICTURE::IsMirrored() const { return 0; }
int vPICTURE::Draw(vDEVICE&, const vPOINT&) const { return 0; }
int vPICTURE::Draw(vDEVICE&, const vRECT&) const { return 0; }
int vPICTURE::Draw(vDEVICE&, const vRECT&, const vRECT&) const { return 0; }
int vPICTURE::DrawTransparent(vDEVICE&, const vPOINT&, const vCOLOUR&) const { return 0; }
vINT vPICTURE::Write(vSTREAM&, int) const { return vINT(0L); }
