// rltool run as a separate process, as a user meets it: numbers, progress,
// messages and exit codes, and the files each command leaves on disk.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Corpus(const char* name) { return Quoted(rltest::DataDir() + "/corpus/bmp/" + name); }

unsigned long Get(const std::string& f, size_t at, int n)
{
    unsigned long v = 0;
    for (int i = 0; i < n; ++i)
        v |= (unsigned long)(unsigned char)f[at + i] << (8 * i);
    return v;
}

// A fresh empty folder, so a test can tell that nothing was left behind in it.
std::string TempFolder(const char* stem)
{
    std::string dir = rltest::TempPath(stem);
    CreateDirectoryA(dir.c_str(), nullptr);
    return dir;
}

// Counts the folder's files; removes them and the folder when asked.
int FilesIn(const std::string& dir, bool remove = false)
{
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((dir + "\\*").c_str(), &fd);
    int n = 0;
    if (h != INVALID_HANDLE_VALUE) {
        do
            if (strcmp(fd.cFileName, ".") && strcmp(fd.cFileName, "..") && ++n && remove)
                DeleteFileA((dir + "\\" + fd.cFileName).c_str());
        while (FindNextFileA(h, &fd));
        FindClose(h);
    }
    if (remove)
        RemoveDirectoryA(dir.c_str());
    return n;
}

struct Zeros {  // zeros fed to the compressor without ever being held in memory
    unsigned long long left;
    std::string packed;
};
unsigned ZeroRead(char* buf, unsigned* size, void* param)
{
    Zeros& z = *static_cast<Zeros*>(param);
    unsigned n = z.left < *size ? unsigned(z.left) : *size;
    memset(buf, 0, n);
    z.left -= n;
    return n;
}
void PackedWrite(char* buf, unsigned* size, void* param) { static_cast<Zeros*>(param)->packed.append(buf, *size); }
} // namespace

// Numbers once went through strtoul: "-4294967291" wrapped to 5, " +5" was 5.
// Only plain digits within range are taken; anything else exits 2.
TEST(Rltool, NumbersAreParsedStrictly)
{
    std::string in = rltest::TempPath("agi"), out = rltest::TempPath("ago");
    Spill(in, "a few bytes");
    const std::string imp = "implode " + Quoted(in) + " " + Quoted(out) + " --", rs = "resize x.bmp y.bmp --",
                      col = "colour --", str = "strings --language ";
    struct Case { std::string args; int code; } cases[] = {
        {imp + "level -4294967291", 2}, {imp + "level \" +5\"", 2}, {imp + "level +5", 2}, {imp + "level \"5 \"", 2},
        {imp + "level \"\"", 2}, {imp + "level 0x5", 2}, {imp + "level 5x", 2}, {imp + "level 0", 2},
        {imp + "level 10", 2}, {imp + "level 4294967301", 2}, {imp + "level 18446744073709551621", 2},
        {imp + "level 9", 0}, {imp + "level 05", 0}, {imp + "dict -4294963200", 2}, {imp + "dict 4096.0", 2},
        {imp + "dict 3072", 2}, {imp + "dict 1024", 0}, {rs + "width -4294967291", 2}, {rs + "width 0", 2},
        {rs + "height 65536", 2}, {rs + "bits -24", 2}, {rs + "bits 2", 2}, {col + "rgb 1,2,-0", 2},
        {col + "rgb \"1,2, 3\"", 2}, {col + "rgb 1,2,+3", 2}, {col + "rgb 1,2,3,", 2}, {col + "rgb 1,,3", 2},
        {col + "rgb 1,2,4294967299", 2}, {col + "cmyk 1,2,3", 2}, {col + "rgb 1,2,3 --tint 101", 2},
        {col + "hls 359,100,100 --tint 0", 0}, {str + "-1", 2}, {str + "0x", 2}, {str + "65536", 2},
        {str + "0x10000", 2}, {str + "\" 1031\"", 2}, {str + "0x407", 0}, {str + "1031", 0}};
    for (const Case& c : cases)
        EXPECT_EQ(RunTool(c.args), c.code) << c.args;
    DeleteFileA(in.c_str());
    DeleteFileA(out.c_str());
}

// The progress line was painted on every percent, which made a one-second job
// take several on a Wine console: now at most four times a second, and its last
// state always. RLTOOL_PROGRESS=1 shows it on a file.
TEST(Rltool, ProgressIsPaintedAFewTimesASecond)
{
    std::string bmp = rltest::TempPath("pgb"), raw = rltest::TempPath("pgr"), out = rltest::TempPath("pgo");
    std::string pic(54 + 3000u * 1600, '\0');  // 1000 x 1600 at 24 bits, a gradient
    const unsigned long head[][2] = {{2, pic.size()}, {10, 54}, {14, 40}, {18, 1000}, {22, 1600}, {26, 1 | 24 << 16}};
    for (const auto& h : head)
        for (int i = 0; i < 4; ++i)
            pic[h[0] + i] = char(h[1] >> (8 * i));
    pic[0] = 'B', pic[1] = 'M';
    for (size_t i = 54; i < pic.size(); ++i)
        pic[i] = char((i - 54) / 3 % 1000 + (i - 54) / 3000);
    Spill(bmp, pic);
    Spill(raw, std::string(12u << 20, 'x'));
    ToolEnv force("RLTOOL_PROGRESS", "1");
    struct Case { std::string args, last; } cases[] = {
        {"resize " + Quoted(bmp) + " " + Quoted(out) + " --width 500 --bits 8", "resizing [" + std::string(40, '#') + "] 100%"},
        {"implode " + Quoted(raw) + " " + Quoted(out), "implode: 100% (12.0 of 12.0 MB)"}};
    for (const Case& c : cases) {
        std::string err;
        DWORD start = GetTickCount();
        ASSERT_EQ(RunTool(c.args, nullptr, &err), 0) << c.args << err;
        DWORD elapsed = GetTickCount() - start;
        // The last state stays, the line is ended ("\r\n" in a Windows text
        // stream), and each paint starts with "\r".
        ASSERT_GE(err.size(), 2u);
        EXPECT_EQ(err.substr(err.size() - 2), "\r\n");
        err.resize(err.size() - 2);
        size_t paints = std::count(err.begin(), err.end(), '\r');
        EXPECT_GE(paints, 1u) << err;
        EXPECT_LE(paints, elapsed / 250 + 2) << c.args << " in " << elapsed << " ms";
        EXPECT_EQ(err.substr(err.rfind('\r') + 1), c.last) << err;
    }
    ToolEnv off("RLTOOL_PROGRESS", "0");
    std::string err;
    EXPECT_EQ(RunTool("implode " + Quoted(raw) + " " + Quoted(out), nullptr, &err), 0);
    EXPECT_EQ(err, "");
    for (const std::string& f : {bmp, raw, out})
        DeleteFileA(f.c_str());
}

// Failure reasons go to standard error; standard output keeps the report.
TEST(Rltool, ReasonsGoToStandardError)
{
    std::string text, err, path = rltest::TempPath("dmp");
    std::string bad = rltest::DataDir() + "/corpus/bmp/good/pal8v5.bmp";
    EXPECT_EQ(RunTool("info " + Quoted(bad), &text, &err), 1);
    EXPECT_NE(text.find("library        not readable"), std::string::npos) << text;
    EXPECT_NE(err.find("the library cannot read this bitmap: the info header is not the 40-byte kind"), std::string::npos) << err;
    EXPECT_EQ(RunTool("info " + Quoted(bad + ".none"), &text, &err), 1);
    EXPECT_EQ(text, "");
    EXPECT_NE(err.find("cannot read a bitmap header"), std::string::npos) << err;

    // dump: a string, a raw run and a frame; then the frame cut short.
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        vSTRING("hello") >> f;
        f.WriteULong(0xDEADBEEF);
        f.Compress(1);
        std::string words;
        for (int i = 0; i < 1200; ++i)
            words += "frame " + std::to_string(i % 7) + " ";
        f.WriteBlock((const unsigned char*)words.data(), 9000);
    }
    std::string disk = Slurp(path);
    unsigned long length = Get(disk, 15, 2);
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text), 0) << text;
    char frame[96];
    snprintf(frame, sizeof frame, "0000000b  frame   %-9lu 8+%lu -> 9000 bytes", length + 8, length);
    for (const char* want : {"00000000  string  5         \"hello\"", "00000007  raw     4         ef be ad de",
                             (const char*)frame, "1 frame, 1 string, 1 raw run"})
        EXPECT_NE(text.find(want), std::string::npos) << want << "\n" << text;
    Spill(path, disk.substr(0, disk.size() - 10));
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text, &err), 1) << text;
    EXPECT_NE(text.find("TRUNCATED"), std::string::npos) << text;
    EXPECT_NE(text.find("1 damaged frame"), std::string::npos) << text;
    EXPECT_NE(err.find("rltool: '" + path + "': 1 damaged frame"), std::string::npos) << err;
    EXPECT_EQ(RunTool("dump " + Quoted(path + ".none"), &text, &err), 1);
    EXPECT_EQ(text, "");
    EXPECT_NE(err.find("cannot read"), std::string::npos) << err;
    DeleteFileA(path.c_str());
}

// A frame that expands past 100,000,000 bytes moved the expansion's memory
// stream to its spill file, and the dump copied from its empty buffer.
TEST(Rltool, DumpOfAFrameExpandingPastTheSpillSize)
{
    Zeros z = {101000000ull, std::string()};
    std::vector<char> work(CMP_BUFFER_SIZE);
    unsigned type = CMP_BINARY, dict = 4096;
    ASSERT_EQ(implode(ZeroRead, PackedWrite, work.data(), &z, &type, &dict), CMP_NO_ERROR);
    std::string file(8, '\0'), path = rltest::TempPath("dmb"), text;
    for (int i = 0; i < 4; ++i)
        file[i] = char(vSTREAM_BLOCKMAGIC >> (8 * i)), file[4 + i] = char(z.packed.size() >> (8 * i));
    Spill(path, file + z.packed + std::string("\x05\x00tail!", 7));
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text), 0) << text;
    char want[160];
    snprintf(want, sizeof want, "00000000  frame   %-9lu 8+%lu -> 101000000 bytes (binary literals, 4096-byte dictionary)  "
             "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ...", (unsigned long)z.packed.size() + 8, (unsigned long)z.packed.size());
    EXPECT_NE(text.find(want), std::string::npos) << text;
    EXPECT_NE(text.find("string  5         \"tail!\""), std::string::npos) << text;
    EXPECT_NE(text.find("1 frame, 1 string, 0 raw runs"), std::string::npos) << text;
    DeleteFileA(path.c_str());
}

TEST(Rltool, ImplodeExplodeRoundTripsAndLeavesNoPartialOutput)
{
    std::string plain, err, p;
    for (int i = 0; i < 4000; ++i)
        plain += "line " + std::to_string(i % 37) + " of the test text\r\n";
    std::string dir = TempFolder("imd"), in = dir + "\\in.txt", packed = dir + "\\packed.imp", out = dir + "\\out.txt";
    std::string files = " " + Quoted(packed) + " " + Quoted(out);
    Spill(in, plain);
    for (const char* opts : {"", " --ascii --dict 1024 --level 9"}) {
        ASSERT_EQ(RunTool("implode " + Quoted(in) + " " + Quoted(packed) + opts), 0) << opts;
        p = Slurp(packed);
        EXPECT_EQ(p.substr(0, 2), *opts ? std::string("\1\4") : std::string("\0\6", 2));
        EXPECT_LT(p.size(), plain.size() / 4);
        ASSERT_EQ(RunTool("explode" + files), 0);
        EXPECT_TRUE(Slurp(out) == plain);
    }
    EXPECT_EQ(FilesIn(dir), 3);  // results replaced the old files: no temporaries beside them
    // A failure half-way leaves no partial output, neither over an earlier
    // result (which stays) nor where there was none.
    Spill(packed, p.substr(0, p.size() / 2));
    EXPECT_EQ(RunTool("explode" + files, nullptr, &err), 1);
    EXPECT_NE(err.find("corrupt or truncated"), std::string::npos) << err;
    EXPECT_TRUE(Slurp(out) == plain);
    DeleteFileA(out.c_str());
    EXPECT_EQ(RunTool("explode" + files), 1);
    EXPECT_FALSE(Exists(out));
    Spill(packed, std::string("\x00\x07\x01\x02\x03\x04", 6));
    EXPECT_EQ(RunTool("explode" + files, nullptr, &err), 1);
    EXPECT_NE(err.find("dictionary"), std::string::npos) << err;
    EXPECT_EQ(RunTool("explode " + Quoted(in + ".missing") + " " + Quoted(out), nullptr, &err), 1);
    EXPECT_NE(err.find("cannot open"), std::string::npos) << err;
    EXPECT_EQ(RunTool("implode " + Quoted(in) + " " + Quoted(dir + "\\no such folder\\x")), 1);
    EXPECT_EQ(RunTool("explode " + Quoted(in)), 2);
    EXPECT_FALSE(Exists(out));
    EXPECT_EQ(FilesIn(dir, true), 2);
}

// `implode X X` once truncated its own input and reported success; `explode X
// X` emptied it. Any spelling of the input as the output is refused.
TEST(Rltool, RefusesToWriteOverItsInput)
{
    std::string dir = TempFolder("ims"), name = dir + "\\Input.dat", link = dir + "\\link.dat", slashed = name;
    for (char& c : slashed)
        c = c == '\\' ? '/' : c;
    std::string spellings[] = {name, dir + "\\INPUT.DAT", dir + "\\..\\" + dir.substr(dir.find_last_of('\\') + 1) + "\\Input.dat",
                               dir + "\\.\\Input.dat", slashed, link};
    for (const std::string& content : {std::string(), std::string("some bytes that matter\r\n")}) {
        Spill(name, content);
        DeleteFileA(link.c_str());
        ASSERT_TRUE(CreateHardLinkA(link.c_str(), name.c_str(), nullptr));
        for (const std::string& other : spellings)
            for (const char* cmd : {"implode ", "explode ", "resize "}) {
                std::string err;
                EXPECT_EQ(RunTool(cmd + Quoted(name) + " " + Quoted(other), nullptr, &err), 2) << cmd << other;
                EXPECT_NE(err.find("same file as the input"), std::string::npos) << err;
                EXPECT_EQ(Slurp(name), content) << cmd << other;
            }
        EXPECT_EQ(FilesIn(dir), 2);
    }
    FilesIn(dir, true);
}

// A file holding fewer bytes than its size said when opened must not be
// compressed as if that were all of it: a sysfs file reports 4096 bytes.
TEST(Rltool, ShortReadIsAnError)
{
    const std::string shrinking = "Z:\\sys\\devices\\system\\cpu\\online";
    if (!Exists(shrinking))
        GTEST_SKIP() << "no sysfs on this machine";
    std::string dir = TempFolder("imr"), err;
    EXPECT_EQ(RunTool("implode " + shrinking + " " + Quoted(dir + "\\out.imp"), nullptr, &err), 1);
    EXPECT_NE(err.find("of its 4096 bytes"), std::string::npos) << err;
    EXPECT_EQ(FilesIn(dir, true), 0);
}

TEST(Rltool, ResizeAndInfo)
{
    std::string out = rltest::TempPath("resized");
    struct Case { std::string args; unsigned width, height; int bits; } cases[] = {
        {Corpus("good/rgb24.bmp") + " " + out + " --width 60 --keep-aspect --bits 8", 60, 30, 8},  // 127 x 64
        {Corpus("good/pal4.bmp") + " " + out + " --width 10 --height 7 --bits 1", 10, 7, 1}};
    for (const Case& c : cases) {
        ASSERT_EQ(RunTool("resize " + c.args), 0) << c.args;
        EXPECT_EQ(Slurp(out).substr(0, 2), "BM");  // a file other programs open
        vFILE f(vSTRING("%s", out.c_str()), vFILE_READONLY, 0);
        oMEMDIB d(f, 0);
        EXPECT_EQ(d.Width(), c.width);
        EXPECT_EQ(d.Height(), c.height);
        EXPECT_EQ(d.BitCount(), c.bits);
    }
    EXPECT_EQ(RunTool("info " + out), 0);
    DeleteFileA(out.c_str());
    // Unreadable files fail with 1, bad arguments with 2, and nothing is left.
    EXPECT_EQ(RunTool("info " + Corpus("bad/reallybig.bmp")), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("bad/shortfile.bmp") + " " + out), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("good/rgb24.bmp") + " " + out + " --bits 3"), 2);
    EXPECT_EQ(RunTool("resize onlyone.bmp"), 2);
    EXPECT_FALSE(Exists(out));
}

// showcase: a bitmap of the sheet's size and depth, with ink in every panel.
TEST(Rltool, ShowcaseWritesTheSheetWithInkInEveryPanel)
{
    std::string out = rltest::TempPath("showcase"), log;
    for (int bits : {24, 8}) {
        ASSERT_EQ(RunTool("showcase " + out + " --bits " + std::to_string(bits), &log), 0) << log;
        std::string f = Slurp(out);
        ASSERT_GT(f.size(), 54u);
        EXPECT_EQ(f.substr(0, 2), "BM");
        EXPECT_EQ(Get(f, 2, 4), f.size());
        EXPECT_EQ(Get(f, 14, 4), 40u);
        EXPECT_EQ(Get(f, 18, 4), 960u);
        EXPECT_EQ(Get(f, 22, 4), 720u);
        EXPECT_EQ(Get(f, 28, 2), (unsigned long)bits);
        unsigned long offset = Get(f, 10, 4), stride = (960ul * bits + 31) / 32 * 4;
        ASSERT_EQ(offset + stride * 720, f.size());
        auto pixel = [&](long x, long y) {  // from the top, as 0xRRGGBB
            size_t row = offset + (size_t)(719 - y) * stride;
            return bits == 24 ? Get(f, row + 3 * x, 3) : Get(f, 54 + 4 * (unsigned char)f[row + x], 3);
        };
        const struct { long l, t, r, b; } panels[] = {
            {0, 20, 480, 240}, {480, 20, 960, 240}, {0, 260, 480, 480}, {480, 260, 960, 480}, {0, 500, 960, 720}};
        for (const auto& p : panels) {
            long ink = 0;
            for (long y = p.t; y < p.b; ++y)
                for (long x = p.l; x < p.r; ++x)
                    ink += pixel(x, y) != 0xFFFFFF;
            EXPECT_GT(ink, (p.r - p.l) * (p.b - p.t) / 10) << bits << " panel at " << p.l << ", " << p.t;
        }
        DeleteFileA(out.c_str());
    }
    for (const char* bad : {" --bits 16", " --bits 24x"})
        EXPECT_EQ(RunTool("showcase " + out + bad), 2) << bad;
    EXPECT_EQ(RunTool("showcase"), 2);
    EXPECT_FALSE(Exists(out));
}

namespace {
// text's output read back: size, depth, pixels other than white, pixels in colour.
struct Picture { unsigned long width, height, bits, ink, inColour; };
Picture Read(const std::string& name, unsigned char r, unsigned char g, unsigned char b)
{
    vFILE f(vSTRING("%s", name.c_str()), vFILE_READONLY, 0);
    oMEMDIB d(f, 0);
    Picture p = {d.Width(), d.Height(), d.BitCount(), 0, 0};
    for (unsigned long y = 0; p.bits == 24 && d.Bits() && y < p.height; ++y)
        for (unsigned long x = 0; x < p.width; ++x) {
            const unsigned char* px = d.Bits() + y * d.Stride() + 3 * x;
            p.ink += !(px[0] == 255 && px[1] == 255 && px[2] == 255);
            p.inColour += px[0] == b && px[1] == g && px[2] == r;
        }
    return p;
}
} // namespace

TEST(Rltool, TextRendersIntoABitmapFile)
{
    std::string out = rltest::TempPath("text"), log, cmd = "text \"Hello there\" " + out + " --size 20";
    ASSERT_EQ(RunTool(cmd + " --colour 200,30,40", &log), 0) << log;
    EXPECT_EQ(Slurp(out).substr(0, 2), "BM");
    Picture flat = Read(out, 200, 30, 40);
    EXPECT_EQ(flat.bits, 24u);
    EXPECT_GT(flat.width, 2 * flat.height);
    EXPECT_GT(flat.inColour, 50u);
    // Turned a quarter, the picture stands upright; two lines make it taller.
    ASSERT_EQ(RunTool(cmd + " --angle 90.00", &log), 0) << log;
    Picture up = Read(out, 0, 0, 0);
    EXPECT_EQ(up.width, flat.height);
    EXPECT_EQ(up.height, flat.width);
    EXPECT_GT(up.inColour, 50u);
    ASSERT_EQ(RunTool("text \"Hello there\\nHello there\" " + out + " --size 20", &log), 0) << log;
    Picture two = Read(out, 0, 0, 0);
    EXPECT_EQ(two.width, flat.width);
    EXPECT_GT(two.height, flat.height + flat.height / 2);
    EXPECT_GT(two.ink, flat.ink * 3 / 2);
    DeleteFileA(out.c_str());
    for (const char* bad : {"--colour 1,2", "--colour 1,2,300", "--size 0", "--size 2.5", "--angle 400", "--angle 1.234",
                            "--angle 360.5", "--angle +5", "--what", "--font \"\""})
        EXPECT_EQ(RunTool("text \"x\" " + out + " " + bad), 2) << bad;
    EXPECT_EQ(RunTool("text \"x\""), 2);
    EXPECT_EQ(RunTool("text \"\" " + out), 2);
    EXPECT_FALSE(Exists(out));
    EXPECT_EQ(RunTool("text \"x\" Z:\\no\\such\\folder\\out.bmp", &log), 1) << log;
}
