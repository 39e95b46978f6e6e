// rltool implode and explode, run as a separate process: exit codes, messages
// and files on disk.
#include <gtest/gtest.h>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Quoted(const std::string& s) { return "\"" + s + "\""; }

// A fresh empty folder, so a test can tell that nothing was left behind in it.
std::string TempFolder(const char* stem)
{
    std::string dir = rltest::TempPath(stem);
    CreateDirectoryA(dir.c_str(), nullptr);
    return dir;
}

int FilesIn(const std::string& dir)
{
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((dir + "\\*").c_str(), &fd);
    int n = 0;
    if (h == INVALID_HANDLE_VALUE)
        return 0;
    do {
        if (strcmp(fd.cFileName, ".") != 0 && strcmp(fd.cFileName, "..") != 0)
            ++n;
    } while (FindNextFileA(h, &fd));
    FindClose(h);
    return n;
}

void RemoveFolder(const std::string& dir)
{
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((dir + "\\*").c_str(), &fd);
    if (h != INVALID_HANDLE_VALUE) {
        do
            DeleteFileA((dir + "\\" + fd.cFileName).c_str());
        while (FindNextFileA(h, &fd));
        FindClose(h);
    }
    RemoveDirectoryA(dir.c_str());
}
} // namespace

TEST(RltoolImplode, RoundTripsAndFailures)
{
    std::string plain, err, p;
    for (int i = 0; i < 4000; ++i)
        plain += "line " + std::to_string(i % 37) + " of the test text\r\n";
    std::string dir = TempFolder("imd");
    std::string in = dir + "\\in.txt", packed = dir + "\\packed.imp", out = dir + "\\out.txt";
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
    EXPECT_EQ(FilesIn(dir), 3);  // the results replaced the old files: no temporaries beside them

    // A failure half-way leaves no partial output: not in place of an earlier
    // result, which stays as it was, nor where there was none.
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
    EXPECT_EQ(RunTool("implode " + Quoted(in) + " " + Quoted(out) + " --dict 3000"), 2);
    EXPECT_EQ(RunTool("implode " + Quoted(in) + " " + Quoted(out) + " --level 10"), 2);
    EXPECT_EQ(RunTool("explode " + Quoted(in)), 2);
    EXPECT_FALSE(Exists(out));
    EXPECT_EQ(FilesIn(dir), 2);
    RemoveFolder(dir);
}

// `implode X X` once truncated its own input and reported success (0 bytes ->
// 5 bytes); `explode X X` emptied it. Any spelling of the input as the output
// is refused, and the input keeps its bytes.
TEST(RltoolImplode, RefusesToWriteOverItsInput)
{
    std::string dir = TempFolder("ims");
    std::string name = dir + "\\Input.dat", link = dir + "\\link.dat";
    std::string inner = dir.substr(dir.find_last_of('\\') + 1);
    std::string spellings[] = {
        name,
        dir + "\\INPUT.DAT",
        dir + "\\..\\" + inner + "\\Input.dat",
        dir + "\\.\\Input.dat",
        [&] { std::string s = name; for (char& c : s) if (c == '\\') c = '/'; return s; }(),
        link};
    for (const std::string& content : {std::string(), std::string("some bytes that matter\r\n")}) {
        Spill(name, content);
        DeleteFileA(link.c_str());
        ASSERT_TRUE(CreateHardLinkA(link.c_str(), name.c_str(), nullptr));
        for (const std::string& other : spellings) {
            for (const char* cmd : {"implode ", "explode ", "resize "}) {
                std::string err;
                EXPECT_EQ(RunTool(cmd + Quoted(name) + " " + Quoted(other), nullptr, &err), 2) << cmd << other;
                EXPECT_NE(err.find("same file as the input"), std::string::npos) << err;
                EXPECT_EQ(Slurp(name), content) << cmd << other;
            }
        }
        EXPECT_EQ(FilesIn(dir), 2);
    }
    RemoveFolder(dir);
}

// A file that holds fewer bytes than its size said when it was opened (as when
// it shrinks while it is read) must not be compressed as if the shorter data
// were all of it. A sysfs file shows this for certain: it reports 4096 bytes
// and holds a few.
TEST(RltoolImplode, ShortReadIsAnError)
{
    const std::string shrinking = "Z:\\sys\\devices\\system\\cpu\\online";
    if (!Exists(shrinking))
        GTEST_SKIP() << "no sysfs on this machine";
    std::string dir = TempFolder("imr"), out = dir + "\\out.imp", err;
    EXPECT_EQ(RunTool("implode " + shrinking + " " + Quoted(out), nullptr, &err), 1);
    EXPECT_NE(err.find("of its 4096 bytes"), std::string::npos) << err;
    EXPECT_EQ(FilesIn(dir), 0);
    RemoveFolder(dir);
}
