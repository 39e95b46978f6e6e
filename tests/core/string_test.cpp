#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {

std::string S(const vSTRING& s) { return std::string(s()); }

// A string holding text as it stands: the constructor from text formats it.
vSTRING Plain(const std::string& text)
{
    vSTRING s;
    s = text.c_str();
    return s;
}

// Random text over a small alphabet, so blanks, delimiters and runs of them
// turn up often.
std::string RandomText(std::mt19937& rng, const char* alphabet, size_t maxLength)
{
    std::string chars(alphabet);
    std::uniform_int_distribution<size_t> len(0, maxLength), pick(0, chars.size() - 1);
    std::string s;
    for (size_t n = len(rng); n > 0; --n)
        s += chars[pick(rng)];
    return s;
}

// Sets the trace level for one scope and puts the old one back.
struct TraceLevel {
    unsigned short old;
    explicit TraceLevel(unsigned short level) : old(vSYSTEM::GetTraceLevel()) { vSYSTEM::SetTraceLevel(level); }
    ~TraceLevel() { vSYSTEM::SetTraceLevel(old); }
};

} // namespace

TEST(String, BuffersAndFormatting)
{
    vSTRING empty;
    EXPECT_EQ(empty.Length(), 0);
    EXPECT_EQ(empty.Null(), 1);
    ASSERT_NE(empty(), nullptr);
    EXPECT_EQ(empty()[0], 0);

    vSTRING f("%d-%s-%c-%x-%%", -42, "abc", 'Z', 255u);
    EXPECT_EQ(S(f), "-42-abc-Z-ff-%");
    EXPECT_EQ(f.Null(), 0);
    EXPECT_EQ(f.Length(), 14);
    vSTRING none((const char*)nullptr);
    EXPECT_EQ(S(none), "");

    // The formatted text is copied out of the shared scratch buffer.
    vSTRING a("first"), b("second");
    EXPECT_EQ(S(a), "first");
    EXPECT_NE(a(), (char*)vSYSTEM::GetLocalBuffer());

    // Longer results are cut at what the 1,024-byte buffer holds.
    std::string big(3000, 'q');
    vSTRING cut("%s", big.c_str());
    EXPECT_EQ(cut.Length(), 1023);
    EXPECT_EQ(S(cut), big.substr(0, 1023));

    // Copies own their characters.
    vSTRING copy(f);
    EXPECT_NE(copy(), f());
    copy.Char(0, 'X');
    EXPECT_EQ(S(f), "-42-abc-Z-ff-%");
    EXPECT_EQ(S(copy), "X42-abc-Z-ff-%");

    // Assignment from every source, including text inside the string itself.
    vSTRING s;
    s = "hello world";
    EXPECT_EQ(S(s), "hello world");
    s = s() + 6;
    EXPECT_EQ(S(s), "world");
    s = s;
    EXPECT_EQ(S(s), "world");
    s = (const char*)nullptr;
    EXPECT_EQ(S(s), "");
    s = vCHAR('k');
    EXPECT_EQ(S(s), "k");
    s = vCHAR(0);
    EXPECT_EQ(S(s), "");
    s = big.c_str();
    EXPECT_EQ(S(s), big);   // plain assignment is not limited by the scratch buffer
    s = f;
    EXPECT_EQ(S(s), S(f));
}

TEST(String, TraceLevels)
{
    rltest::DebugOutput out;
    {
        TraceLevel level(3);
        vSTRING a;
        vSTRING b("x");
        b = a;
    }
    EXPECT_EQ(out.Text(), "Trace: vSTRING::vSTRING()\n");
    ASSERT_EQ(out.Writes().size(), 3u);
    out.Clear();
    {
        TraceLevel level(9);
        vSTRING a("%d", 1);
        vSTRING b(a);
        b = a;
        vSTRING r(vRESID(31013));
    }
    std::string t = out.Text();
    for (const char* line : {"vSTRING::vSTRING(format)", "vSTRING::vSTRING(vSTRING)", "vSTRING::=",
                             "vSTRING::vSTRING(vRESID)", "vSTRING::~vSTRING()"})
        EXPECT_NE(t.find(std::string("Trace: ") + line + "\n"), std::string::npos) << line;
    EXPECT_EQ(t.find("vSTRING::vSTRING()"), std::string::npos);

    // One level below, the chattiest sites stay silent.
    out.Clear();
    {
        TraceLevel level(8);
        vSTRING a("%d", 1);
        vSTRING b(a);
        b = a;
        b = "x";
        vSTRING i(vINT(5L));
        vSTRING r(vREAL(2));
        vSTRING res(vRESID(31013));
    }
    EXPECT_EQ(out.Text(), "");
}

TEST(String, Resources)
{
    EXPECT_EQ(S(vSTRING(vRESID(31013))), "Fatal Error");
    EXPECT_EQ(S(vSTRING(vRESID(31100))),
              "Error: Free Memory is extremely low.\nTry closing some of your other applications.");
    EXPECT_EQ(S(vSTRING(vRESID((unsigned short)(31013 + vSTRING::LanguageOffset(1036))))), "Erreur bloquante");
    EXPECT_EQ(S(vSTRING(vRESID((unsigned short)(31413)))), "Schwerer Fehler");
    // United States English reads the French block.
    EXPECT_EQ(vSTRING::LanguageOffset(1033), 200);
    EXPECT_EQ(vSTRING::LanguageOffset(2057), 0);
    EXPECT_EQ(vSTRING::LanguageOffset(1053), 600);
    EXPECT_EQ(vSTRING::LanguageOffset(1036), 200);
    EXPECT_EQ(vSTRING::LanguageOffset(1031), 400);
    // Every language the table does not name shares the French block.
    for (unsigned short id : {0, 1, 1034, 1040, 1043, 3081, 4105, 65535})
        EXPECT_EQ(vSTRING::LanguageOffset(id), 200) << id;
    // A missing resource gives the empty string.
    EXPECT_EQ(S(vSTRING(vRESID(12345))), "");
    vSTRING s("before");
    s = vRESID(31128);
    EXPECT_EQ(S(s), "OK");
    s = vRESID(4);
    EXPECT_EQ(S(s), "");
}

TEST(String, ComparisonsKeepTheirReversedSense)
{
    vSTRING a("a"), b("b");
    EXPECT_EQ(b > a, 0);
    EXPECT_EQ(a > b, 1);
    EXPECT_EQ(a < b, 0);
    EXPECT_EQ(b < a, 1);
    EXPECT_EQ(a >= a, 0);
    EXPECT_EQ(a <= a, 0);
    EXPECT_EQ(a >= b, 1);
    EXPECT_EQ(b <= a, 1);
    EXPECT_EQ(a == vSTRING("a"), 1);
    EXPECT_EQ(a != b, 1);

    // The order is the locale's, not the byte values': "apple" sorts before
    // "Banana" although 'B' < 'a'.
    vSTRING apple("apple"), banana("Banana");
    EXPECT_EQ(apple > banana, 1);
    EXPECT_EQ(banana < apple, 1);

    std::mt19937 rng(7);
    for (int i = 0; i < 2000; ++i) {
        std::string x = RandomText(rng, "aAbB0 -z", 6), y = RandomText(rng, "aAbB0 -z", 6);
        vSTRING vx(x.c_str()), vy(y.c_str());
        int sense = CompareStringA(GetThreadLocale(), 0, y.c_str(), -1, x.c_str(), -1) - CSTR_EQUAL;
        ASSERT_EQ(vx > vy, sense > 0 ? 1 : 0) << x << " / " << y;
        ASSERT_EQ(vx < vy, sense < 0 ? 1 : 0) << x << " / " << y;
        ASSERT_EQ(vx == vy, sense == 0 ? 1 : 0) << x << " / " << y;
        ASSERT_EQ(vx != vy, sense != 0 ? 1 : 0);
        ASSERT_EQ(vx >= vy, vx != vy);
        ASSERT_EQ(vx <= vy, vx != vy);
        ASSERT_EQ(vx > vy, vy < vx);
    }
}

TEST(String, CaseChangesTouchOnlyAsciiLetters)
{
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> byte(1, 255);
    for (int i = 0; i < 500; ++i) {
        std::string text;
        for (int n = i % 40; n > 0; --n)
            text += (char)byte(rng);
        vSTRING up = Plain(text), low = Plain(text), cap = Plain(text);
        up.ConvertUpper();
        low.ConvertLower();
        cap.Capitalise();
        ASSERT_EQ(up.Length(), text.size());
        for (size_t k = 0; k < text.size(); ++k) {
            unsigned char c = (unsigned char)text[k];
            bool lower = c >= 'a' && c <= 'z', upper = c >= 'A' && c <= 'Z';
            ASSERT_EQ((unsigned char)up()[k], lower ? c - 32 : c);
            ASSERT_EQ((unsigned char)low()[k], upper ? c + 32 : c);
            unsigned char expectCap = k == 0 ? (lower ? c - 32 : c) : (upper ? c + 32 : c);
            ASSERT_EQ((unsigned char)cap()[k], expectCap);
        }
    }
    vSTRING s("\xe9t\xc9 PARIS");
    s.ConvertUpper();
    EXPECT_EQ(S(s), "\xe9T\xc9 PARIS");
    s.Capitalise();
    EXPECT_EQ(S(s), "\xe9t\xc9 paris");
    vSTRING e;
    e.Capitalise().ConvertUpper().ConvertLower();
    EXPECT_EQ(S(e), "");
}

TEST(String, WordNeedsATrailingBlank)
{
    vSTRING text("one two  three ");
    EXPECT_EQ(S(text.Word(0)), "one");
    EXPECT_EQ(S(text.Word(2)), "three");
    EXPECT_EQ(S(text.Word(5)), "one two  three ");
    vSTRING noTrail("one two  three");
    EXPECT_EQ(S(noTrail.Word(2)), "one two  three");
    EXPECT_EQ(S(noTrail.Word(1)), "two");
    EXPECT_EQ(S(vSTRING().Word(0)), "");
    EXPECT_EQ(S(vSTRING("   ").Word(0)), "   ");
    EXPECT_EQ(S(text), "one two  three ");

    // Against a split by a string stream of everything before the last blank.
    std::mt19937 rng(3);
    for (int i = 0; i < 3000; ++i) {
        std::string t = RandomText(rng, "ab  c", 14);
        size_t last = t.rfind(' ');
        std::vector<std::string> words;
        std::istringstream in(last == std::string::npos ? "" : t.substr(0, last));
        for (std::string w; in >> w;)
            words.push_back(w);
        vSTRING v(t.c_str());
        for (unsigned short n = 0; n < 6; ++n)
            ASSERT_EQ(S(v.Word(n)), n < words.size() ? words[n] : t) << "'" << t << "' " << n;
    }
}

TEST(String, DelimitedFields)
{
    vSTRING csv("a,,b,c");
    EXPECT_EQ(S(csv.GetDelimitedSubString(',', 1)), "");
    EXPECT_EQ(S(csv.GetDelimitedSubString(',', 2)), "b");
    EXPECT_EQ(S(csv.GetPreDelimitedSubString(',', 2)), "a,");
    EXPECT_EQ(S(vSTRING().GetDelimitedSubString(',', 0)), "");
    EXPECT_EQ(S(vSTRING().GetPreDelimitedSubString(',', 1)), "");

    std::mt19937 rng(5);
    for (int i = 0; i < 3000; ++i) {
        std::string t = RandomText(rng, "ab,,c", 12);
        std::vector<std::string> fields;
        std::vector<size_t> commas;
        size_t start = 0;
        for (size_t at; (at = t.find(',', start)) != std::string::npos; start = at + 1) {
            fields.push_back(t.substr(start, at - start));
            commas.push_back(at);
        }
        fields.push_back(t.substr(start));
        vSTRING v(t.c_str());
        for (unsigned short n = 0; n < 8; ++n) {
            ASSERT_EQ(S(v.GetDelimitedSubString(',', n)), n < fields.size() ? fields[n] : "") << t << " " << n;
            std::string pre = n >= 1 && n <= commas.size() ? t.substr(0, commas[n - 1]) : "";
            ASSERT_EQ(S(v.GetPreDelimitedSubString(',', n)), pre) << t << " " << n;
        }
        ASSERT_EQ(v.NoOfOccurance(vCHAR(',')), commas.size());
        ASSERT_EQ(S(v), t);
    }
}

TEST(String, RemovingAndStripping)
{
    vSTRING s("a,b,c");
    EXPECT_EQ(S(s.RemoveFromEnd(',')), "c");
    EXPECT_EQ(S(s), "a,b");
    vSTRING empty;
    EXPECT_EQ(S(empty.RemoveFromEnd(',')), "");
    EXPECT_EQ(S(empty.RemoveLeadAndTrailing(' ')), "");
    EXPECT_EQ(S(empty.StripLTChar(' ')), "");

    vSTRING padded("  a b  ");
    EXPECT_EQ(&padded.RemoveLeadAndTrailing(' '), &padded);
    EXPECT_EQ(S(padded), "a b");

    std::mt19937 rng(9);
    for (int i = 0; i < 3000; ++i) {
        std::string t = RandomText(rng, "xy..z", 14);
        vSTRING cut(t.c_str()), trim(t.c_str()), stripped(t.c_str());
        size_t last = t.rfind('.');
        vSTRING tail = cut.RemoveFromEnd('.');
        ASSERT_EQ(S(tail), last == std::string::npos ? t : t.substr(last + 1));
        ASSERT_EQ(S(cut), last == std::string::npos ? t : t.substr(0, last));

        size_t first = t.find_first_not_of('.'), end = t.find_last_not_of('.');
        trim.RemoveLeadAndTrailing('.');
        ASSERT_EQ(S(trim), first == std::string::npos ? "" : t.substr(first, end - first + 1));

        std::string expect = t;
        expect.erase(std::remove(expect.begin(), expect.end(), '.'), expect.end());
        stripped.StripLTChar('.');
        ASSERT_EQ(S(stripped), expect);
        ASSERT_EQ(stripped.Length(), expect.size());
    }
}

TEST(String, SubStringsAndOccurrences)
{
    vSTRING t("hello world");
    EXPECT_EQ(S(t.GetSubString(vSTRING("o w"))), "o world");
    EXPECT_EQ(S(t.GetSubString(vSTRING("o"))), "o world");   // the first "o", not the last
    EXPECT_EQ(S(t.GetSubString(vSTRING("d"))), "d");
    EXPECT_EQ(S(t.GetSubString(vSTRING("xyz"))), "");
    EXPECT_EQ(S(t.GetSubString(vSTRING(""))), "hello world");
    EXPECT_EQ(S(t.GetSubString(0, 4)), "hello");
    EXPECT_EQ(S(t.GetSubString(6, 6)), "w");
    EXPECT_EQ(S(t.GetSubString(6, 500)), "world");   // cut at the end
    EXPECT_EQ(S(t.GetSubString(20, 30)), "");
    EXPECT_EQ(S(t.GetSubString(5, 2)), "");
    EXPECT_EQ(S(vSTRING().GetSubString(0, 0)), "");

    // Pattern occurrences count the string's own start at every position.
    EXPECT_EQ(vSTRING("abcabc").NoOfOccurance(vSTRING("abc")), 6);
    EXPECT_EQ(vSTRING("xabc").NoOfOccurance(vSTRING("abc")), 0);
    EXPECT_EQ(vSTRING("ab").NoOfOccurance(vSTRING("abc")), 0);
    EXPECT_EQ(vSTRING("").NoOfOccurance(vSTRING("")), 0);
    EXPECT_EQ(vSTRING("abc").NoOfOccurance(vCHAR('b')), 1);
    EXPECT_EQ(vSTRING("").NoOfOccurance(vCHAR('b')), 0);
    EXPECT_EQ(vSTRING("bbb").NoOfOccurance(vCHAR(0)), 0);
}

TEST(String, PercentInExtractedTextIsAFormat)
{
    // Extracted text goes through formatting with no arguments behind it.
    vSTRING s = Plain("rate 50%% of %d items ");
    EXPECT_EQ(S(s.Word(1)), "50%");   // "50%%" -> "50%"
    EXPECT_EQ(S(s.Word(3)), "0");      // "%d" reads a zero
    EXPECT_EQ(S(s.GetSubString(vSTRING("of"))), "of 0 items ");
    vSTRING fields = Plain("a%%b,%x,%s");
    EXPECT_EQ(S(fields.GetDelimitedSubString(',', 0)), "a%b");
    EXPECT_EQ(S(fields.GetDelimitedSubString(',', 1)), "0");
    EXPECT_EQ(S(fields.GetPreDelimitedSubString(',', 1)), "a%b");
    vSTRING path = Plain("dir,100%%");
    EXPECT_EQ(S(path.RemoveFromEnd(',')), "100%");
    EXPECT_EQ(S(path), "dir");
    // The whole string, returned when no word is found, is a plain copy.
    EXPECT_EQ(S(Plain("%%d").Word(0)), "%%d");

    // Texts made only of directives, as dense as the scratch buffer allows,
    // read nothing but zeros.
    std::string dense;
    for (int i = 0; i < 511; ++i)
        dense += "%d";
    vSTRING d;
    d = (dense + " ").c_str();
    EXPECT_EQ(S(d.Word(0)), std::string(511, '0'));
    std::string wide, expect;
    for (int i = 0; i < 146; ++i) {
        wide += "%s%I64d";
        expect += "(null)0";
    }
    vSTRING w;
    w = (wide + " ").c_str();
    EXPECT_EQ(S(w.Word(0)), expect.substr(0, 1023));
}

TEST(String, CharactersAndConcatenation)
{
    vSTRING s("abc");
    EXPECT_EQ(s[0], 'a');
    EXPECT_EQ(s.Char(2), 'c');
    EXPECT_EQ(s.Char(3), 0);
    EXPECT_EQ(s[200], 0);   // past the end reads as 0, not outside the buffer
    s.Char(1, 'X');
    EXPECT_EQ(S(s), "aXc");
    s.Char(5, 'Q');         // beyond the length: ignored
    EXPECT_EQ(S(s), "aXc");
    s.Char(3, 'd');         // over the terminator: the character joins the string
    EXPECT_EQ(S(s), "aXcd");
    EXPECT_EQ(s.Length(), 4);
    s.Char(1, vCHAR(0));
    EXPECT_EQ(S(s), "a");

    vSTRING a("foo"), b("bar");
    EXPECT_EQ(S(a + b), "foobar");
    EXPECT_EQ(S(a + vCHAR('!')), "foo!");
    EXPECT_EQ(S(vSTRING() + vSTRING()), "");
    EXPECT_EQ(S(Plain("%%") + Plain("%d")), "%%%d");   // joined, not formatted
    EXPECT_EQ(S(a), "foo");

    vCHAR c('a');
    EXPECT_EQ(c(), 'a');
    EXPECT_EQ(vCHAR(0x141)(), 'A');   // the low byte only
    EXPECT_EQ(vCHAR()(), 0);
    EXPECT_EQ(c.Next()(), 'b');
    EXPECT_EQ(vCHAR(255).Next()(), 0);
    EXPECT_TRUE(vCHAR('a') < vCHAR(0xE9) && vCHAR(0xE9) > vCHAR('a'));   // unsigned order
    EXPECT_TRUE(vCHAR('b') >= vCHAR('b') && vCHAR('b') <= vCHAR('b') && vCHAR('b') != vCHAR('c'));
    EXPECT_EQ(vCHAR('q').IsCharAlphaA() + vCHAR('7').IsCharAlphaA(), 1);
    EXPECT_EQ(vCHAR('7').IsCharNumeric() + vCHAR('q').IsCharNumeric(), 1);
    EXPECT_EQ(vCHAR('Q').IsCharUpperA() + vCHAR('q').IsCharUpperA() + vCHAR('q').IsCharLowerA(), 2);
    char out = 0;
    EXPECT_EQ(vCHAR(',').Symbol(out), 1);
    EXPECT_EQ(out, ',');
    EXPECT_EQ(vCHAR('x').Symbol(out), 0);
    EXPECT_EQ(vCHAR(' ').Symbol(out), 0);
    EXPECT_EQ(out, ' ');
}

TEST(String, Scan)
{
    vSTRING s("12 abc 7");
    int a = 0, b = 0;
    char word[8] = {0};
    EXPECT_EQ(s.Scan("%d %7s %d", &a, word, &b), 3);
    EXPECT_EQ(a, 12);
    EXPECT_EQ(std::string(word), "abc");
    EXPECT_EQ(b, 7);
    EXPECT_EQ(vSTRING("x").Scan("%d", &a), 0);
    EXPECT_EQ(vSTRING().Scan("%d", &a), EOF);
}

TEST(String, Numbers)
{
    EXPECT_EQ(S(vSTRING(vREAL(1.5))), "1.5");
    EXPECT_EQ(S(vSTRING(vREAL(1) / vREAL(3))), "0.3333");
    EXPECT_EQ(S(vSTRING(vREAL(-2.25))), "-2.25");
    EXPECT_EQ(S(vSTRING(vREAL())), "0");
    EXPECT_EQ(S(vSTRING(vREAL::FromRaw(0x7FFFFFFF))), "3.277e+04");
    EXPECT_EQ(S(vSTRING(vREAL::FromRaw(1))), "1.526e-05");
    EXPECT_EQ(S(vSTRING(vINT(0))), "0");
    EXPECT_EQ(S(vSTRING(vINT(-2147483647L - 1))), "-2147483648");
    EXPECT_EQ(S(vSTRING(vINT(2147483647L))), "2147483647");

    std::mt19937 rng(13);
    std::uniform_int_distribution<int> any(-2147483647 - 1, 2147483647), small(-9999, 9999);
    vSTRING assigned("x");
    for (int i = 0; i < 3000; ++i) {
        int v = any(rng);
        ASSERT_EQ(S(vSTRING(vINT((long)v))), std::to_string(v));
        assigned = vINT((long)v);
        ASSERT_EQ(S(assigned), std::to_string(v));
        // Back from text: the leading digits only.
        ASSERT_EQ(Plain(std::to_string(v) + "x7").Int()(), v);

        // Four significant digits: the text reads back within half a unit of
        // the fourth digit.
        vREAL r = vREAL::FromRaw(v);
        double exact = v / 65536.0;
        std::string text = S(vSTRING(r));
        double back = strtod(text.c_str(), nullptr);
        ASSERT_LE(fabs(back - exact), fabs(exact) * 5e-4 + 1e-12) << v << " " << text;
        assigned = r;
        ASSERT_EQ(S(assigned), text);
        // Whole numbers below 10,000 print as plain integers.
        int w = small(rng);
        ASSERT_EQ(S(vSTRING(vREAL(w))), std::to_string(w));

        // Real() of a text that names the raw value exactly gives it back.
        char exactText[64];
        snprintf(exactText, sizeof exactText, "%.17g", exact);
        ASSERT_EQ(Plain(exactText).Real()(), v) << exactText;
    }

    EXPECT_EQ(vSTRING("  -17 apples").Int()(), -17);
    EXPECT_EQ(vSTRING("apples").Int()(), 0);
    EXPECT_EQ(vSTRING().Int()(), 0);
    EXPECT_EQ(vSTRING("1.5").Real()(), 98304);
    // Truncated toward zero, not rounded.
    EXPECT_EQ(vSTRING("0.00001").Real()(), 0);
    EXPECT_EQ(vSTRING("-0.00002").Real()(), -1);
    EXPECT_EQ(vSTRING("2.99999").Real()(), 196607);
    EXPECT_EQ(vSTRING("").Real()(), 0);
    EXPECT_EQ(vSTRING("1e10").Real()(), -2147483647L - 1);

    vSTRING c("a,b,,c");
    EXPECT_EQ(c.Count(',')(), 3);
    EXPECT_EQ(vSTRING().Count(',')(), 0);

    rltest::DebugOutput out;
    {
        TraceLevel level(9);
        vSTRING i(vINT(1));
        vSTRING r(vREAL(2));
    }
    EXPECT_NE(out.Text().find("Trace: vSTRING::vSTRING(vINT)\n"), std::string::npos);
    EXPECT_NE(out.Text().find("Trace: vSTRING::vSTRING(vREAL)\n"), std::string::npos);
}
