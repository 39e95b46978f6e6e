// rltool implode, explode and dump, run as a separate process: exit codes,
// messages and files on disk.
#include <gtest/gtest.h>
#include "rl132.h"
#include "tool_run.h"

TEST(RltoolImplode, RoundTripsAndFailures)
{
    std::string plain, err, p;
    for (int i = 0; i < 4000; ++i)
        plain += "line " + std::to_string(i % 37) + " of the test text\r\n";
    std::string in = rltest::TempPath("imi"), packed = rltest::TempPath("imp"), out = rltest::TempPath("imo");
    std::string files = " \"" + packed + "\" \"" + out + "\"";
    Spill(in, plain);
    for (const char* opts : {"", " --ascii --dict 1024 --level 9"}) {
        ASSERT_EQ(RunTool("implode \"" + in + "\" \"" + packed + "\"" + opts), 0) << opts;
        p = Slurp(packed);
        EXPECT_EQ(p.substr(0, 2), *opts ? std::string("\1\4") : std::string("\0\6", 2));
        EXPECT_LT(p.size(), plain.size() / 4);
        ASSERT_EQ(RunTool("explode" + files), 0);
        EXPECT_TRUE(Slurp(out) == plain);
    }
    // Truncated data: failure, a message, and the bytes decoded before it.
    Spill(packed, p.substr(0, p.size() / 2));
    EXPECT_EQ(RunTool("explode" + files, &err), 1);
    EXPECT_NE(err.find("corrupt or truncated"), std::string::npos) << err;
    std::string partial = Slurp(out);
    EXPECT_GT(partial.size(), 0u);
    EXPECT_EQ(plain.compare(0, partial.size(), partial), 0);
    Spill(packed, std::string("\x00\x07\x01\x02\x03\x04", 6));
    EXPECT_EQ(RunTool("explode" + files, &err), 1);
    EXPECT_NE(err.find("dictionary"), std::string::npos) << err;
    EXPECT_EQ(RunTool("explode \"" + in + ".missing\" \"" + out + "\"", &err), 1);
    EXPECT_NE(err.find("cannot open"), std::string::npos) << err;
    EXPECT_EQ(RunTool("implode \"" + in + "\" \"" + out + "\" --dict 3000"), 2);
    EXPECT_EQ(RunTool("implode \"" + in + "\" \"" + out + "\" --level 10"), 2);
    EXPECT_EQ(RunTool("explode \"" + in + "\""), 2);
    for (const std::string& f : {in, packed, out})
        DeleteFileA(f.c_str());
}

TEST(RltoolDump, ListsStringsFramesAndRawRuns)
{
    std::string path = rltest::TempPath("dmp"), text;
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
    ASSERT_EQ(RunTool("dump \"" + path + "\"", &text), 0) << text;
    char frame[96];
    snprintf(frame, sizeof frame, "0000000b  frame   %-9lu 8+%lu -> 9000 bytes", length + 8, length);
    for (const char* want : {"00000000  string  5         \"hello\"", "00000007  raw     4         ef be ad de",
                             (const char*)frame, "1 frame, 1 string, 1 raw run"})
        EXPECT_NE(text.find(want), std::string::npos) << want << "\n" << text;
    Spill(path, disk.substr(0, disk.size() - 10));  // a frame cut short
    ASSERT_EQ(RunTool("dump \"" + path + "\"", &text), 1) << text;
    EXPECT_NE(text.find("TRUNCATED"), std::string::npos) << text;
    EXPECT_NE(text.find("1 damaged frame"), std::string::npos) << text;
    EXPECT_EQ(RunTool("dump \"" + path + ".none\""), 1);
    DeleteFileA(path.c_str());
}
