// rltool run as a separate process, as a user meets it: numbers,
// messages and exit codes, and the files each command leaves on disk.
#include <windows.h>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <gtest/gtest.h>
#include "rl132.h"
#include "rltest.h"

namespace {

std::string Slurp(const std::string& name)
{
    std::ifstream f(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}
void Spill(const std::string& name, const std::string& data) { std::ofstream(name, std::ios::binary) << data; }
void Remove(std::initializer_list<std::string> files)
{
    for (const std::string& f : files)
        DeleteFileA(f.c_str());
}

std::string Quoted(const std::string& s) { return "\"" + s + "\""; }
bool Exists(const std::string& name) { return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES; }
std::string Corpus(const std::string& name) { return Quoted(rltest::DataDir() + "/corpus/" + name); }

unsigned long Get(const std::string& f, size_t at, int n)
{
    unsigned long v = 0;
    for (int i = 0; i < n; ++i)
        v |= (unsigned long)(unsigned char)f[at + i] << (8 * i);
    return v;
}

// The tool's report holds `part`.
::testing::AssertionResult Has(const std::string& text, const std::string& part)
{
    if (text.find(part) != std::string::npos)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

// The exit code (-1 when it could not be started or did not finish). Standard
// output goes to *text, with standard error unless *err takes that apart.
int RunTool(const std::string& args, std::string* text = nullptr, std::string* err = nullptr)
{
    std::string log = rltest::TempPath("toollog"), errLog = rltest::TempPath("toolerr");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE out = CreateFileA(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    HANDLE errOut = err ? CreateFileA(errLog.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr) : out;
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = INVALID_HANDLE_VALUE;
    si.hStdOutput = out;
    si.hStdError = errOut;
    PROCESS_INFORMATION pi = {};
    std::string cmd = "rltool.exe " + args;
    int code = -1;
    if (CreateProcessA(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        DWORD c = 0;
        if (WaitForSingleObject(pi.hProcess, 60000) == WAIT_OBJECT_0 && GetExitCodeProcess(pi.hProcess, &c))
            code = (int)c;
        else
            TerminateProcess(pi.hProcess, 99);
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
    CloseHandle(out);
    if (err)
        CloseHandle(errOut), *err = Slurp(errLog);
    if (text)
        *text = Slurp(log);
    Remove({log, errLog});
    return code;
}

// A bitmap file of pseudo-random 24-bit rows.
std::string Picture(long w, long h, unsigned seed)
{
    const unsigned long stride = ((w * 24 + 31) / 32) * 4, rows = stride * h;
    std::string v(54 + rows, '\0');
    BITMAPFILEHEADER fh = {0x4D42, (DWORD)v.size(), 0, 0, 54};
    BITMAPINFOHEADER ih = {40, w, h, 1, 24, 0, rows, 0, 0, 0, 0};
    memcpy(&v[0], &fh, 14);
    memcpy(&v[14], &ih, 40);
    for (unsigned long k = 0; k < rows; ++k)
        v[54 + k] = (char)((k * 2654435761u + seed) >> 13);
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
        {imp + "level -4294967291", 2}, {imp + "level \" +5\"", 2}, {imp + "level 05", 0}, {imp + "dict 3072", 2},
        {rs + "height 65536", 2}, {col + "rgb 1,2,4294967299", 2}, {col + "hls 359,100,100 --tint 0", 0},
        {str + "0x10000", 2}, {str + "0x407", 0}};
    for (const Case& c : cases)
        EXPECT_EQ(RunTool(c.args), c.code) << c.args;
    Remove({in, out});
}

// Failure reasons go to standard error; standard output keeps the report.
TEST(Rltool, InfoAndDumpSendReasonsToStandardError)
{
    std::string text, err, path = rltest::TempPath("dmp");
    std::string bad = rltest::DataDir() + "/corpus/bmp/good/pal8v5.bmp";
    EXPECT_EQ(RunTool("info " + Quoted(bad), &text, &err), 1);
    EXPECT_TRUE(Has(text, "library        not readable") && Has(err, "cannot read this bitmap: the info header is not the 40-byte kind"));
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        vSTRING("hello") >> f;
        f.WriteULong(0xDEADBEEF);
        f.Compress(1);
        const std::string words(9000, 'w');
        f.WriteBlock((const unsigned char*)words.data(), 9000);
    }
    std::string disk = Slurp(path);
    unsigned long length = Get(disk, 15, 2);
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text), 0) << text;
    char frame[96];
    snprintf(frame, sizeof frame, "0000000b  frame   %-9lu 8+%lu -> 9000 bytes", length + 8, length);
    for (const char* want : {"00000000  string  5         \"hello\"", "00000007  raw     4         ef be ad de",
                             (const char*)frame, "1 frame, 1 string, 1 raw run"})
        EXPECT_TRUE(Has(text, want));
    Spill(path, disk.substr(0, disk.size() - 10));
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text, &err), 1) << text;
    EXPECT_TRUE(Has(text, "TRUNCATED") && Has(err, "rltool: '" + path + "': 1 damaged frame"));
    DeleteFileA(path.c_str());
}

// `implode X X` once truncated its own input and reported success; `explode X
// X` emptied it. Any spelling of the input as the output is refused.
TEST(Rltool, RefusesToWriteOverItsInput)
{
    std::string name = rltest::TempPath("ims"), link = name + ".link", slashed = name, dotted = name;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    size_t cut = dotted.find_last_of("\\/");
    std::transform(dotted.begin() + cut, dotted.end(), dotted.begin() + cut, ::toupper);
    dotted.insert(cut, "\\.");
    std::string spellings[] = {dotted, slashed, link};
    const std::string content = "some bytes that matter\r\n";
    Spill(name, content);
    ASSERT_TRUE(CreateHardLinkA(link.c_str(), name.c_str(), nullptr));
    for (const std::string& other : spellings)
        for (const char* cmd : {"implode ", "explode ", "resize "}) {
            std::string err;
            EXPECT_EQ(RunTool(cmd + Quoted(name) + " " + Quoted(other), nullptr, &err), 2) << cmd << other;
            EXPECT_TRUE(Has(err, "same file as the input") && Slurp(name) == content) << cmd << other;
        }
    Remove({name, link});
}

// resize, and bitmap pack / unpack with info on the record they make.
TEST(Rltool, ResizeAndBitmapRecords)
{
    std::string out = rltest::TempPath("resized"), text;
    ASSERT_EQ(RunTool("resize " + Corpus("bmp/good/rgb24.bmp") + " " + out + " --width 60 --keep-aspect --bits 8"), 0);
    const std::string f = Slurp(out);   // from 127 x 64
    EXPECT_TRUE(f.substr(0, 2) == "BM" && Get(f, 18, 4) == 60 && Get(f, 22, 4) == 30 && Get(f, 28, 2) == 8);
    DeleteFileA(out.c_str());
    EXPECT_EQ(RunTool("resize " + Corpus("bmp/good/rgb24.bmp") + " " + out + " --bits 3"), 2);
    EXPECT_FALSE(Exists(out));

    const std::string in = rltest::TempPath("bmin"), rec = rltest::TempPath("bmrec"),
                      back = rltest::TempPath("bmback"), pic = Picture(40, 30, 1);
    Spill(in, pic);
    ASSERT_EQ(0, RunTool("bitmap pack " + in + " " + rec + " --compress"));
    EXPECT_EQ(std::string("\xB1\xAA\x12\x00", 4), Slurp(rec).substr(0, 4));
    EXPECT_EQ(0, RunTool("info " + rec, &text));
    for (const char* line : {"compressed bitmap record", "40 x 30", "24 per pixel", "strips         1"})
        EXPECT_TRUE(Has(text, line));
    ASSERT_EQ(0, RunTool("bitmap unpack " + rec + " " + back));
    const std::string b = Slurp(back);
    EXPECT_TRUE(b.size() == pic.size() && b.substr(0, 2) == "BM" && b.substr(54) == pic.substr(54));
    Spill(back, std::string("\xB1\xAA\x12\x00\x04\x00\x00\x00\x01\x02\x03\x04", 12));
    DeleteFileA(rec.c_str());
    EXPECT_TRUE(RunTool("bitmap unpack " + back + " " + rec) == 1 && !Exists(rec));
    Remove({in, back});
}

// info on Windows metafile headers, and wmf, the conversion to a native metafile file.
TEST(Rltool, WindowsMetafileInfoAndConversion)
{
    struct Case { const char* file; int code; const char* says; } infos[] = {
        {"pillow/drawing.wmf", 0, "box (0, 0)-(1369, 1369), 1200 units per inch, checksum good"},
        {"poi/61338.wmf", 0, "ending with a record that does not fit"},
        {"libwmf/gd_Readme_NOT_A_WMF.wmf", 1, "library        refuses it"},
    };
    std::string text, out = rltest::TempPath("native") + ".wmf";
    for (const Case& c : infos) {
        EXPECT_EQ(c.code, RunTool("info " + Corpus(std::string("wmf/") + c.file), &text)) << c.file;
        EXPECT_TRUE(Has(text, c.says)) << c.file;
    }
    ASSERT_EQ(0, RunTool("wmf " + Corpus("wmf/pillow/drawing.wmf") + " " + Quoted(out), &text)) << text;
    HMETAFILE written = GetMetaFileA(out.c_str());
    EXPECT_TRUE(Has(text, "page 1369 x 1369") && written != nullptr);
    DeleteMetaFile(written);
    std::string before = Slurp(out);
    ASSERT_GE(before.size(), 18u);
    EXPECT_EQ(1, before[0]);   // a standard header: the placeable one is left out
    DeleteFileA(out.c_str());
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
    EXPECT_EQ(FilesIn(dir), 3);   // results replaced the old files: no temporaries beside them
    // A failure half-way leaves no partial output, over an earlier result
    // (which stays) or where there was none.
    Spill(packed, p.substr(0, p.size() / 2));
    EXPECT_EQ(RunTool("explode" + files, nullptr, &err), 1);
    EXPECT_TRUE(Has(err, "corrupt or truncated"));
    EXPECT_TRUE(Slurp(out) == plain);
    DeleteFileA(out.c_str());
    EXPECT_EQ(RunTool("explode" + files), 1);
    EXPECT_FALSE(Exists(out));
    Spill(packed, std::string("\x00\x07\x01\x02\x03\x04", 6));
    EXPECT_EQ(RunTool("explode" + files, nullptr, &err), 1);
    EXPECT_TRUE(Has(err, "dictionary"));
    EXPECT_EQ(RunTool("explode " + Quoted(in + ".missing") + " " + Quoted(out), nullptr, &err), 1);
    EXPECT_TRUE(Has(err, "cannot open"));
    EXPECT_EQ(RunTool("implode " + Quoted(in) + " " + Quoted(dir + "\\no such folder\\x")), 1);
    EXPECT_EQ(RunTool("explode " + Quoted(in)), 2);
    EXPECT_FALSE(Exists(out));
    EXPECT_EQ(FilesIn(dir, true), 2);
}
