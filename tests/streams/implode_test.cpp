// implode / explode: streams made elsewhere, hand-built streams, arguments and
// the work area (round trips and damaged input: tests/native).
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include "stream_util.h"

using namespace streamtest;

namespace {
// Serves input in pieces of at most `piece` bytes and collects the output.
struct Pipe {
    const Bytes* in;
    unsigned piece;
    size_t pos = 0;
    Bytes out;
    Pipe(const Bytes* i, unsigned p) : in(i), piece(p) {}
};
unsigned PipeRead(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    size_t n = std::min({p.in->size() - p.pos, (size_t)*size, (size_t)p.piece});
    memcpy(buf, p.in->data() + p.pos, n);
    p.pos += n;
    return unsigned(n);
}
void PipeWrite(char* buf, unsigned* size, void* param) { Bytes& o = static_cast<Pipe*>(param)->out; o.insert(o.end(), buf, buf + *size); }

// A work area at a small skew inside a larger block whose margins are checked.
struct Guarded {
    Bytes block;
    size_t skew;
    Guarded(size_t n, size_t s) : block(n + 136, 0xA5), skew(s % 8) {}
    char* Work() { return reinterpret_cast<char*>(block.data()) + 64 + skew; }
    bool Intact() const
    {
        auto mark = [](unsigned char c) { return c == 0xA5; };
        return std::all_of(block.begin(), block.begin() + 64 + skew, mark) && std::all_of(block.end() - 72 + skew, block.end(), mark);
    }
};

unsigned Implode(const Bytes& in, unsigned type, unsigned dict, Bytes& out, unsigned level = CMP_LEVEL_DEFAULT,
                 unsigned piece = ~0u)
{
    Pipe p{&in, piece};
    std::vector<char> work(implode_work_size(level));
    unsigned rc = implode_level(PipeRead, PipeWrite, work.data(), unsigned(work.size()), &p, &type, &dict, level);
    out = p.out;
    return rc;
}

unsigned Explode(const Bytes& in, Bytes& out, unsigned piece = ~0u, size_t* used = nullptr)
{
    Pipe p{&in, piece};
    Guarded work(EXP_BUFFER_SIZE, in.size());
    unsigned rc = explode(PipeRead, PipeWrite, work.Work(), &p);
    EXPECT_TRUE(work.Intact());
    if (used)
        *used = explode_used(work.Work());
    out = p.out;
    return rc;
}

Bytes Shared(const std::string& rel) { return FileBytes(rltest::DataDir() + "/vectors/dcl/" + rel); }

// LSB-first bit packer for hand-built streams.
struct Bits {
    Bytes bytes = {0, 4};  // binary literals, 1,024-byte dictionary
    unsigned used = 0;
    void Put(unsigned value, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i, ++used) {
            if (used % 8 == 0)
                bytes.push_back(0);
            bytes.back() |= (unsigned char)(((value >> i) & 1u) << (used % 8));
        }
    }
    void Literal(unsigned char c) { Put(0, 1), Put(c, 8); }
    // Length symbol 15 has the all-zero 7-bit code and 8 extra bits for
    // 264 + x; distance symbol 0 is the 2-bit code 11 plus 4 low bits.
    void LongCopy(unsigned len, unsigned dist) { Put(1, 1), Put(0, 7), Put(len - 264, 8), Put(3, 2), Put(dist - 1, 4); }
};
} // namespace

TEST(Explode, StreamsFromOtherImplementations)
{
    const char* pairs[][2] = {{"zlib-blast/test.pk", "zlib-blast/test.txt"}, {"pwexplode/hello.imploded", "pwexplode/hello.txt"},
        {"implode-decoder/small.imploded", "implode-decoder/small.decomp"}, {"implode-decoder/medium.imploded", "implode-decoder/medium.decomp"},
        {"implode-decoder/large.imploded", "implode-decoder/large.decomp"}, {"implode-decoder/large.imploded.ascii", "implode-decoder/large.decomp"},
        {"implode-decoder/binary.imploded", "implode-decoder/binary.decomp"}, {"pwexplode/consistent_ui.imploded", "pwexplode/consistent_ui.txt"},
        {"pwexplode/Ben_Rudiak-Gould_errored.imploded", "pwexplode/Ben_Rudiak-Gould_errored.txt"}, {"unshield.rs/undhr.md.imploded", "unshield.rs/undhr.md"}};
    for (auto& c : pairs) {
        std::string dir = c[0][0] == 'z' ? "" : "implode_test_files/";
        Bytes out;
        ASSERT_FALSE(Shared(dir + c[1]).empty()) << c[1];
        for (unsigned piece : {~0u, 1u})
            EXPECT_TRUE(Explode(Shared(dir + c[0]), out, piece) == CMP_NO_ERROR && out == Shared(dir + c[1])) << c[0];
    }
    // Another compressor's output for every input, mode and dictionary.
    for (const char* name : {"text_short.txt", "text_medium.txt", "binary_small.bin", "edge_one_byte.bin",
                             "edge_run_2000.bin", "edge_all_bytes.bin", "edge_random_5000.bin", "edge_len2_pairs.bin"}) {
        Bytes plain = Shared(std::string("generated/") + name), out;
        ASSERT_FALSE(plain.empty()) << name;
        for (const char* mode : {"bin", "ascii"})
            for (int dict : {1024, 2048, 4096}) {
                std::string packed = std::string("generated/") + name + "." + mode + "." + std::to_string(dict) + ".imp";
                EXPECT_TRUE(Explode(Shared(packed), out) == CMP_NO_ERROR && out == plain) << packed;
            }
    }
    // The empty input's four bytes are too short for the expander; then no end code.
    Bytes out;
    EXPECT_TRUE(Explode(Shared("generated/edge_empty.bin.bin.4096.imp"), out) == CMP_BAD_DATA && out.empty());
    Bytes plain = Shared("implode_test_files/implode-decoder/no-explicit-end.decomp");
    EXPECT_EQ(Explode(Shared("implode_test_files/implode-decoder/no-explicit-end.imploded"), out), CMP_ABORT);
    ASSERT_LE(out.size(), plain.size());
    EXPECT_TRUE(std::equal(out.begin(), out.end(), plain.begin()));
}

TEST(Explode, HandBuiltStreamsHeadersAndWhatFollows)
{
    // The longest copies (517 and 518 bytes), which common compressors never make.
    Bits b;
    b.Literal('x');
    b.Literal('y');
    b.LongCopy(518, 2);
    b.LongCopy(517, 1);
    b.LongCopy(519, 1);  // the end code
    Bytes out;
    EXPECT_EQ(Explode(b.bytes, out), CMP_NO_ERROR);
    ASSERT_EQ(out.size(), 2u + 518u + 517u);
    for (size_t i = 0; i < out.size(); ++i)
        ASSERT_EQ(out[i], i < 520 && i % 2 == 0 ? 'x' : 'y') << i;

    Bytes good, second;
    ASSERT_EQ(Implode(Compressible(9000, 2), CMP_BINARY, 4096, good), CMP_NO_ERROR);
    Bytes bad = good;
    bad[1] = 7;
    EXPECT_TRUE(Explode(bad, out) == CMP_INVALID_DICTSIZE && out.empty());
    // Another stream behind the first: explode_used says where the first ends.
    ASSERT_EQ(Implode(Compressible(100, 5), CMP_ASCII, 1024, second), CMP_NO_ERROR);
    size_t used = 0;
    ASSERT_EQ(Explode(Cat(good, second), out, 100, &used), CMP_NO_ERROR);
    EXPECT_TRUE(out == Compressible(9000, 2) && used == good.size());
}

TEST(Implode, ArgumentsAndWorkArea)
{
    Bytes in = Compressible(5000, 1), viaLevel;
    unsigned type = CMP_BINARY, dict = 4096;
    struct Bad { unsigned type, dict, rc; } bad[] = {{CMP_BINARY, 3000, CMP_INVALID_DICTSIZE}, {2, 2048, CMP_INVALID_MODE},
        {type, dict, CMP_NO_ERROR}};
    Guarded work(CMP_BUFFER_SIZE, 3);
    ASSERT_EQ(Implode(in, type, dict, viaLevel, CMP_LEVEL_DEFAULT), CMP_NO_ERROR);
    for (Bad b : bad) {
        Pipe q{&in, ~0u};
        EXPECT_EQ(implode(PipeRead, PipeWrite, work.Work(), &q, &b.type, &b.dict), b.rc) << b.type << " " << b.dict;
        // Refused arguments write nothing; accepted ones match the default level.
        EXPECT_TRUE(q.out == (b.rc == CMP_NO_ERROR ? viaLevel : Bytes())) << b.type << " " << b.dict;
    }
    EXPECT_TRUE(work.Intact());
}
