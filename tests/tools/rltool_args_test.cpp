// rltool's shared pieces as a user meets them: numeric arguments, the progress
// line, and where failure reasons go.
#include <gtest/gtest.h>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Quoted(const std::string& s) { return "\"" + s + "\""; }

// A 24-bit bitmap file of w x h pixels in a diagonal gradient.
std::string Bitmap(unsigned w, unsigned h)
{
    unsigned stride = (w * 3 + 3) & ~3u;
    std::string f(54 + size_t(stride) * h, '\0');
    auto put = [&](size_t at, unsigned long v, int n) {
        for (int i = 0; i < n; ++i)
            f[at + i] = char(v >> (8 * i));
    };
    f[0] = 'B';
    f[1] = 'M';
    put(2, (unsigned long)f.size(), 4);
    put(10, 54, 4);
    put(14, 40, 4);
    put(18, w, 4);
    put(22, h, 4);
    put(26, 1, 2);
    put(28, 24, 2);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x)
            for (unsigned c = 0; c < 3; ++c)
                f[54 + size_t(y) * stride + x * 3 + c] = char((x + y) * (c + 1));
    return f;
}
} // namespace

// Numbers once went through strtoul and friends: "-4294967291" wrapped to 5,
// " +5" was 5. Every numeric argument now takes plain digits within its range
// and refuses anything else with exit code 2, before any file is touched.
TEST(RltoolArguments, NumbersAreParsedStrictly)
{
    std::string in = rltest::TempPath("agi"), out = rltest::TempPath("ago");
    Spill(in, "a few bytes");
    std::string files = Quoted(in) + " " + Quoted(out) + " ";
    struct Case { std::string args; int code; } cases[] = {
        {"implode " + files + "--level -4294967291", 2}, {"implode " + files + "--level \" +5\"", 2},
        {"implode " + files + "--level +5", 2},          {"implode " + files + "--level \"5 \"", 2},
        {"implode " + files + "--level \"\"", 2},        {"implode " + files + "--level 0x5", 2},
        {"implode " + files + "--level 5x", 2},          {"implode " + files + "--level 0", 2},
        {"implode " + files + "--level 10", 2},          {"implode " + files + "--level 4294967301", 2},
        {"implode " + files + "--level 18446744073709551621", 2},
        {"implode " + files + "--level 9", 0},           {"implode " + files + "--level 05", 0},
        {"implode " + files + "--dict -4294963200", 2},  {"implode " + files + "--dict 4096.0", 2},
        {"implode " + files + "--dict 3072", 2},         {"implode " + files + "--dict 1024", 0},
        {"resize x.bmp y.bmp --width -4294967291", 2},   {"resize x.bmp y.bmp --width 0", 2},
        {"resize x.bmp y.bmp --height 65536", 2},        {"resize x.bmp y.bmp --bits -24", 2},
        {"resize x.bmp y.bmp --bits 2", 2},
        {"colour --rgb 1,2,-0", 2},                      {"colour --rgb \"1,2, 3\"", 2},
        {"colour --rgb 1,2,+3", 2},                      {"colour --rgb 1,2,3,", 2},
        {"colour --rgb 1,,3", 2},                        {"colour --rgb 1,2,4294967299", 2},
        {"colour --cmyk 1,2,3", 2},                      {"colour --rgb 1,2,3 --tint 101", 2},
        {"colour --hls 359,100,100 --tint 0", 0},
        {"strings --language -1", 2},                    {"strings --language 0x", 2},
        {"strings --language 65536", 2},                 {"strings --language 0x10000", 2},
        {"strings --language \" 1031\"", 2},             {"strings --language 0x407", 0},
        {"strings --language 1031", 0}};
    for (const Case& c : cases)
        EXPECT_EQ(RunTool(c.args), c.code) << c.args;
    DeleteFileA(in.c_str());
    DeleteFileA(out.c_str());
}

// The progress line was painted on every percent, which made a one-second job
// take several on a Wine console. It is now painted at most four times a
// second, and its last state always. RLTOOL_PROGRESS=1 shows it on a file.
TEST(RltoolArguments, ProgressIsPaintedAFewTimesASecond)
{
    std::string bmp = rltest::TempPath("pgb"), raw = rltest::TempPath("pgr"), out = rltest::TempPath("pgo");
    Spill(bmp, Bitmap(1000, 1600));
    Spill(raw, std::string(12u << 20, 'x'));
    ToolEnv force("RLTOOL_PROGRESS", "1");
    struct Case { std::string args, last; } cases[] = {
        {"resize " + Quoted(bmp) + " " + Quoted(out) + " --width 500 --bits 8", "resizing [" + std::string(40, '#') + "] 100%"},
        {"implode " + Quoted(raw) + " " + Quoted(out), "implode: 100% (12.0 of 12.0 MB)"}};
    for (const Case& c : cases) {
        std::string text, err;
        DWORD start = GetTickCount();
        ASSERT_EQ(RunTool(c.args, &text, &err), 0) << c.args << err;
        DWORD elapsed = GetTickCount() - start;
        // The final state stays on the screen, and the line is ended (a
        // Windows text stream ends it with "\r\n"); each paint starts with "\r".
        ASSERT_GE(err.size(), 2u);
        EXPECT_EQ(err.substr(err.size() - 2), "\r\n");
        err.resize(err.size() - 2);
        size_t paints = 0;
        for (char ch : err)
            paints += ch == '\r';
        EXPECT_GE(paints, 1u) << err;
        EXPECT_LE(paints, elapsed / 250 + 2) << c.args << " in " << elapsed << " ms";
        EXPECT_EQ(err.substr(err.rfind('\r') + 1), c.last) << err;
    }
    {
        ToolEnv off("RLTOOL_PROGRESS", "0");
        std::string err;
        EXPECT_EQ(RunTool("implode " + Quoted(raw) + " " + Quoted(out), nullptr, &err), 0);
        EXPECT_EQ(err, "");
    }
    for (const std::string& f : {bmp, raw, out})
        DeleteFileA(f.c_str());
}

// Failure reasons go to standard error; standard output keeps the report.
TEST(RltoolArguments, InfoReasonsGoToStandardError)
{
    std::string text, err;
    std::string bad = rltest::DataDir() + "/corpus/bmp/good/pal8v5.bmp";
    EXPECT_EQ(RunTool("info " + Quoted(bad), &text, &err), 1);
    EXPECT_NE(text.find("library        not readable"), std::string::npos) << text;
    EXPECT_NE(err.find("the library cannot read this bitmap: the info header is not the 40-byte kind"),
              std::string::npos) << err;
    EXPECT_EQ(RunTool("info " + Quoted(bad + ".none"), &text, &err), 1);
    EXPECT_EQ(text, "");
    EXPECT_NE(err.find("cannot read a bitmap header"), std::string::npos) << err;
}
