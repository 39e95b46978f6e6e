// rltool dump, run as a separate process: what it lists, and that it walks any
// file in bounded pieces.
#include <gtest/gtest.h>
#include <vector>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Quoted(const std::string& s) { return "\"" + s + "\""; }

size_t Count(const std::string& text, const std::string& what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

// Zeros fed to the compressor without ever being held in memory.
struct Zeros {
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

void PackedWrite(char* buf, unsigned* size, void* param)
{
    static_cast<Zeros*>(param)->packed.append(buf, *size);
}

void Put32(std::string& s, unsigned long v)
{
    for (int i = 0; i < 4; ++i)
        s.push_back(char(v >> (8 * i)));
}
} // namespace

TEST(RltoolDump, ListsStringsFramesAndRawRuns)
{
    std::string path = rltest::TempPath("dmp"), text, err;
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        vSTRING("hello") >> f;       // 0: string
        f.WriteULong(0xDEADBEEF);   // 7: raw
        f.Compress(1);
        std::string words;
        for (int i = 0; i < 1200; ++i)
            words += "frame " + std::to_string(i % 7) + " ";
        f.WriteBlock((const unsigned char*)words.data(), 9000);  // 11: frame
    }
    std::string disk = Slurp(path);
    unsigned long length = (unsigned char)disk[15] | ((unsigned char)disk[16] << 8);
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text), 0) << text;
    char frame[96];
    snprintf(frame, sizeof frame, "0000000b  frame   %-9lu 8+%lu -> 9000 bytes", length + 8, length);
    for (const char* want : {"00000000  string  5         \"hello\"", "00000007  raw     4         ef be ad de",
                             (const char*)frame, "1 frame, 1 string, 1 raw run"})
        EXPECT_NE(text.find(want), std::string::npos) << want << "\n" << text;
    // A frame cut short: the listing says so, the reason goes to standard error.
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

// A frame that expands past 100,000,000 bytes made the expansion's memory
// stream move to its spill file, and the dump then copied from its empty
// buffer: a page fault. Zeros pack to well under a megabyte.
TEST(RltoolDump, FrameExpandingPastTheSpillSize)
{
    Zeros z = {101000000ull, std::string()};
    std::vector<char> work(CMP_BUFFER_SIZE);
    unsigned type = CMP_BINARY, dict = 4096;
    ASSERT_EQ(implode(ZeroRead, PackedWrite, work.data(), &z, &type, &dict), CMP_NO_ERROR);
    std::string file;
    Put32(file, vSTREAM_BLOCKMAGIC);
    Put32(file, (unsigned long)z.packed.size());
    file += z.packed;
    file += std::string("\x05\x00tail!", 7);
    std::string path = rltest::TempPath("dmb"), text;
    Spill(path, file);
    ASSERT_EQ(RunTool("dump " + Quoted(path), &text), 0) << text;
    char want[160];
    snprintf(want, sizeof want,
             "00000000  frame   %-9lu 8+%lu -> 101000000 bytes (binary literals, 4096-byte dictionary)  "
             "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ...",
             (unsigned long)z.packed.size() + 8, (unsigned long)z.packed.size());
    EXPECT_NE(text.find(want), std::string::npos) << text;
    EXPECT_NE(text.find("string  5         \"tail!\""), std::string::npos) << text;
    EXPECT_NE(text.find("1 frame, 1 string, 0 raw runs"), std::string::npos) << text;
    DeleteFileA(path.c_str());
}

// The walk reads the file through a window (a few megabytes; the smallest
// RLTOOL_DUMP_WINDOW allows is one longest string) and never loads it whole.
// With the smallest window a file of a couple of megabytes crosses dozens of
// window edges, with strings and frames straddling them: the listing must be
// the same as with the default window.
TEST(RltoolDump, SmallWindowGivesTheSameListing)
{
    std::string path = rltest::TempPath("dmw");
    int strings = 0, frames = 0;
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        std::string words;
        for (int i = 0; i < 3000; ++i)
            words += "word" + std::to_string(i * 7919 % 1000) + " ";
        for (int i = 0; f.Size() < 2500000; ++i) {
            f.Compress(0);
            // Strings of every size up to the longest, so some cross an edge.
            size_t n = i % 5 == 4 ? 65535 : size_t(3 + i * 977 % 4000);
            std::string s(n, 'a' + i % 26);
            f.WriteUWord((unsigned short)n);
            f.WriteBlock((const unsigned char*)s.data(), (unsigned long)n);
            ++strings;
            f.WriteULong(0x01020304ul + i);  // raw: bytes below the printable range
            f.Compress(1);
            f.WriteBlock((const unsigned char*)words.data() + i % 100, 2000 + i * 131 % 9000);
            ++frames;
        }
    }
    std::string whole, windowed;
    ASSERT_EQ(RunTool("dump " + Quoted(path), &whole), 0) << whole.substr(0, 2000);
    {
        ToolEnv small("RLTOOL_DUMP_WINDOW", "1");
        ASSERT_EQ(RunTool("dump " + Quoted(path), &windowed), 0);
    }
    EXPECT_TRUE(whole == windowed);
    char summary[96];
    snprintf(summary, sizeof summary, "%d frames, %d strings, %d raw runs", frames, strings, strings);
    EXPECT_NE(whole.find(summary), std::string::npos) << summary << "\n" << whole.substr(whole.size() - 200);
    EXPECT_EQ(Count(whole, "  frame  "), size_t(frames));
    DeleteFileA(path.c_str());
}
