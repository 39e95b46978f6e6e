// vSTRING's helpers: comparisons against the locale's order over generated text,
// and the intended quirks: formatting cut short, formatted extracts.
#include <windows.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include "rl132.h"

namespace {
std::string S(const vSTRING& s) { return std::string(s()); }
// A string holding text as it stands: the constructor from text formats it.
vSTRING Plain(const std::string& text) { vSTRING s; s = text.c_str(); return s; }
// Random text over a small alphabet, so separators and runs of them are common.
std::string RandomText(std::mt19937& rng, const char* alphabet, size_t maxLength)
{
    std::string chars(alphabet), s;
    for (size_t n = rng() % (maxLength + 1); n > 0; --n)
        s += chars[rng() % chars.size()];
    return s;
}
} // namespace

TEST(String, ComparisonsKeepTheirReversedSense)
{
    std::mt19937 rng(7);
    for (int i = 0; i < 1500; ++i) {
        std::string x = RandomText(rng, "aAbB0 -z", 6), y = RandomText(rng, "aAbB0 -z", 6);
        vSTRING vx(x.c_str()), vy(y.c_str());
        // The locale's order ("apple" before "Banana"), turned round.
        int sense = CompareStringA(GetThreadLocale(), 0, y.c_str(), -1, x.c_str(), -1) - CSTR_EQUAL;
        ASSERT_TRUE((vx > vy) == (sense > 0) && (vx < vy) == (sense < 0) && (vx == vy) == (sense == 0)) << x << " / " << y;
        ASSERT_TRUE((vx >= vy) == (vx != vy) && (vx <= vy) == (vx != vy)) << x << " / " << y;
    }
}

TEST(String, FormattingIsCutAtTheScratchBufferAndPercentInExtractsIsAFormat)
{
    std::string big(3000, 'q');
    EXPECT_EQ(S(vSTRING("%s", big.c_str())), big.substr(0, 1023));
    EXPECT_EQ(S(Plain(big)), big);   // plain assignment is not limited
    vSTRING h("hello world");
    h = h() + 6;                     // text from inside the string itself
    EXPECT_TRUE(S(h) == "world" && h[200] == 0);
    vSTRING s = Plain("rate 50%% of %d items ");
    EXPECT_TRUE(S(s.Word(1)) == "50%" && S(s.Word(3)) == "0");   // "%d" reads a zero
    EXPECT_EQ(S(s.GetSubString(vSTRING("of"))), "of 0 items ");
    vSTRING fields = Plain("a%%b,%x");
    EXPECT_TRUE(S(fields.GetDelimitedSubString(',', 1)) == "0" && S(fields.GetPreDelimitedSubString(',', 1)) == "a%b");
    EXPECT_EQ(S(Plain("%%d").Word(0)), "%%d");   // no word found: the whole string, a plain copy
    // Directives that expand past the scratch buffer are cut there.
    std::string wide, expect;
    for (int i = 0; i < 146; ++i) {
        wide += "%s%I64d";
        expect += "(null)0";
    }
    EXPECT_EQ(S(Plain(wide + " ").Word(0)), expect.substr(0, 1023));
}

