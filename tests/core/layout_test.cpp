// Sizes and field offsets of the exported classes are binary interface. The empty
// root vOBJECT cannot share its address with a member that is itself a vOBJECT, so
// such a first member starts 4 bytes in. Each field is found by a known value's bytes.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdint>
#include <cstring>
#include <vector>
#include "rl132.h"

namespace {

struct Field { size_t offset, width; uint32_t value; };

template <class T>
void ExpectLayout(const char* name, const T& object, size_t size, std::vector<Field> fields)
{
    EXPECT_EQ(sizeof(T), size) << name;
    unsigned char bytes[sizeof(T)];
    memcpy(bytes, (const void*)&object, sizeof bytes);
    for (const Field& f : fields) {
        ASSERT_LE(f.offset + f.width, sizeof(T)) << name << " at " << f.offset;
        uint32_t v = 0;
        memcpy(&v, bytes + f.offset, f.width);
        EXPECT_EQ(v, f.value) << name << " at " << f.offset;
    }
}

uint32_t U(long v) { return (uint32_t)v; }
uint32_t P(const void* p) { return (uint32_t)(uintptr_t)p; }

} // namespace

TEST(Layout, ValueClassesKeepTheirSizesAndOffsets)
{
    ExpectLayout("vINT", vINT(0x11223344L), 4, {{0, 4, 0x11223344u}});
    ExpectLayout("vREAL", vREAL::FromRaw(0x12345678L), 4, {{0, 4, 0x12345678u}});
    ExpectLayout("vANGLE", vANGLE::FromRaw(0x005A8000L), 4, {{0, 4, 0x005A8000u}});
    ExpectLayout("vPOINT", vPOINT(vINT(-7L), vINT(0x01020304L)), 12, {{4, 4, U(-7)}, {8, 4, 0x01020304u}});
    ExpectLayout("vSIZE", vSIZE(vINT(640L), vINT(480L)), 12, {{4, 4, 640}, {8, 4, 480}});
    ExpectLayout("vRANGE", vRANGE(vREAL::FromRaw(-65536L), vREAL::FromRaw(0x7FFF0000L)), 12,
                 {{4, 4, U(-65536)}, {8, 4, 0x7FFF0000u}});
    ExpectLayout("vRECT", vRECT(vINT(1L), vINT(2L), vINT(30L), vINT(40L)), 20,
                 {{4, 4, 1}, {8, 4, 2}, {12, 4, 30}, {16, 4, 40}});
    ExpectLayout("vBEZPOINT", vBEZPOINT(vPOINT(vINT(5L), vINT(6L)), vBEZPOINT::CURVETO | vBEZPOINT::LAST), 20,
                 {{8, 4, 5}, {12, 4, 6}, {16, 1, 0x12}});
    const vCOLOUR spot(vCMYK, 0x64000A0BUL, 40, 1);
    ExpectLayout("vCOLOUR", spot, 8,
                 {{0, 4, 0x64000A0Bu}, {4, 1, (uint32_t)vCMYK}, {5, 1, 40}, {6, 2, spot.Flags()}});
    EXPECT_EQ(spot.Flags(), (unsigned)vCOLOUR::SPOT_FLAG);
    const unsigned char dashes[vLINESPEC::PATTERN_SIZE] = {9, 8, 7, 6, 5, 4};
    const vLINESPEC line(vLT_USER, spot, vINT(12L), (vCORNERTYPE)3, (vDASHTYPE)2, dashes);
    ExpectLayout("vLINESPEC", line, 36,
                 {{4, 4, 0x64000A0Bu}, {9, 1, 40}, {12, 4, 12}, {16, 4, (uint32_t)vLT_USER}, {20, 4, 3},
                  {24, 4, 2}, {28, 4, 0x06070809u}, {32, 2, 0x0405u}});
    const vFILLSPEC fill((vFILLTYPE)3, spot, vCOLOUR(vRGB, 0x00FF8040UL, 100, 0), vANGLE::FromRaw(0x002D0000L),
                         (vFILLMODE)2);
    ExpectLayout("vFILLSPEC", fill, 36,
                 {{4, 4, 0x64000A0Bu}, {12, 4, 0x00FF8040u}, {20, 4, 0x002D0000u}, {24, 4, 3}, {28, 4, 2},
                  {32, 4, 0}});
    const vSTRING text("layout");
    ExpectLayout("vSTRING", text, 4, {{0, 4, P(text())}});
    ExpectLayout("vCHAR", vCHAR('Q'), 1, {{0, 1, 'Q'}});
    HINSTANCE module = (HINSTANCE)(uintptr_t)0x00400000u;
    ExpectLayout("vRESID", vRESID(31100, module), 8, {{0, 2, 31100}, {4, 4, 0x00400000u}});
    ExpectLayout("vMODULE", vMODULE(module), 4, {{0, 4, 0x00400000u}});
    unsigned char buffer[16];
    const vCOLLECTION points(buffer, vARRAY_POINT, 16, 6);
    ExpectLayout("vCOLLECTION", points, 24,
                 {{0, 4, P(buffer)}, {4, 4, P(buffer)}, {8, 4, P(buffer)}, {12, 4, 1}, {16, 2, 16}, {18, 2, 6},
                  {20, 4, 0}});
    fLINK link(nullptr);
    ITERATOR it;
    it.SetLink(&link);
    it.Next();
    it.SetLink(&link);
    ExpectLayout("ITERATOR", it, 8, {{0, 2, 1}, {4, 4, P(&link)}});
    // The header's own fields start at once: none of them is a vOBJECT.
    const oDIBHEADER header(33, 17, 96, 72, oCM_PAL256);
    ExpectLayout("oDIBHEADER", header, 48,
                 {{0, 4, 40}, {4, 4, 33}, {8, 4, 17}, {12, 2, 1}, {14, 2, 8}, {16, 4, 0}, {20, 4, 36 * 17},
                  {24, 4, 96 * oDIB_DPI_FACTOR}, {28, 4, 72 * oDIB_DPI_FACTOR}, {40, 4, oCM_PAL256},
                  {44, 4, 0}});
    // Polymorphic classes: the table pointer comes first; the empty root shares its address.
    EXPECT_EQ((std::vector<size_t>{sizeof(fLINK), sizeof(fLIST), sizeof(fQUEUE), sizeof(fSTACK), sizeof(vEXCEPTION),
                                   sizeof(DEFEXCEP), sizeof(oPROGRESS), sizeof(vSYSTEM), sizeof(vPAGEOUT)}),
              (std::vector<size_t>{16, 16, 16, 16, 4, 16, 28, 4, 1}));
}
