// implode / explode: streams made elsewhere, hand-built bit streams, round trips
// in every mode, damaged input, and the work-area contract.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include "stream_util.h"
#include "streams/dcl_codes.h"
#include "streams/dcl_encode.h"

using namespace streamtest;

namespace {
// Serves input in pieces of at most `piece` bytes and collects the output.
struct Pipe {
    Pipe(const Bytes* i, unsigned p) : in(i), piece(p) {}
    const Bytes* in;
    unsigned piece;
    size_t pos = 0;
    Bytes out;
    std::vector<unsigned> asked;
};

unsigned PipeRead(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    p.asked.push_back(*size);
    size_t n = std::min({p.in->size() - p.pos, (size_t)*size, (size_t)p.piece});
    memcpy(buf, p.in->data() + p.pos, n);
    p.pos += n;
    return unsigned(n);
}

void PipeWrite(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    p.out.insert(p.out.end(), buf, buf + *size);
}

// A work area inside a larger block whose margins are checked afterwards.
struct Guarded {
    size_t size, skew;
    Bytes block;
    Guarded(size_t n, size_t misalign) : size(n), skew(misalign), block(n + 136, 0xA5) {}
    char* Work() { return reinterpret_cast<char*>(block.data()) + 64 + skew; }
    bool Intact() const
    {
        for (size_t i = 0; i < block.size(); ++i)
            if ((i < 64 + skew || i >= 64 + skew + size) && block[i] != 0xA5)
                return false;
        return true;
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
    Guarded work(EXP_BUFFER_SIZE, in.size() % 8);
    unsigned rc = explode(PipeRead, PipeWrite, work.Work(), &p);
    EXPECT_TRUE(work.Intact());
    if (used)
        *used = explode_used(work.Work());
    out = p.out;
    return rc;
}

Bytes Shared(const std::string& rel)
{
    Bytes b = FileBytes(rltest::SharedDir() + "/vectors/dcl/" + rel);
    EXPECT_FALSE(b.empty()) << rel;
    return b;
}

// Prose-like bytes: words from a small list, so copies of every length abound.
Bytes Words(size_t n, unsigned seed)
{
    static const char* const kList[] = {"the ", "quick ", "brown ", "fox ", "jumps ", "over ", "a ", "lazy ",
                                        "dog; ", "and ", "then ", "sleeps.\r\n", "It ", "was ", "not ", "amused "};
    Rng r(seed);
    Bytes b;
    while (b.size() < n)
        for (const char* w = kList[r.Next() % 16]; *w; ++w)
            b.push_back((unsigned char)*w);
    b.resize(n);
    return b;
}

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
    const char* pairs[][2] = {
        {"zlib-blast/test.pk", "zlib-blast/test.txt"},
        {"implode-decoder/small.imploded", "implode-decoder/small.decomp"},
        {"implode-decoder/medium.imploded", "implode-decoder/medium.decomp"},
        {"implode-decoder/large.imploded", "implode-decoder/large.decomp"},
        {"implode-decoder/large.imploded.ascii", "implode-decoder/large.decomp"},
        {"implode-decoder/binary.imploded", "implode-decoder/binary.decomp"},
        {"pwexplode/hello.imploded", "pwexplode/hello.txt"},
        {"pwexplode/consistent_ui.imploded", "pwexplode/consistent_ui.txt"},
        {"pwexplode/Ben_Rudiak-Gould_errored.imploded", "pwexplode/Ben_Rudiak-Gould_errored.txt"},
        {"unshield.rs/undhr.md.imploded", "unshield.rs/undhr.md"},
    };
    for (auto& c : pairs) {
        std::string dir = c[0][0] == 'z' ? "" : "implode_test_files/";
        Bytes packed = Shared(dir + c[0]), plain = Shared(dir + c[1]), out;
        EXPECT_EQ(Explode(packed, out), CMP_NO_ERROR) << c[0];
        EXPECT_TRUE(out == plain) << c[0];
        EXPECT_EQ(Explode(packed, out, 1), CMP_NO_ERROR) << c[0];  // one-byte reads
        EXPECT_TRUE(out == plain) << c[0];
    }
    // Another compressor's output for every input, mode and dictionary; ours
    // is at most 2% larger.
    for (const char* name : {"text_short.txt", "text_medium.txt", "binary_small.bin", "edge_one_byte.bin",
                             "edge_run_2000.bin", "edge_all_bytes.bin", "edge_random_5000.bin", "edge_len2_pairs.bin"}) {
        Bytes plain = Shared(std::string("generated/") + name);
        for (const char* mode : {"bin", "ascii"})
            for (int dict : {1024, 2048, 4096}) {
                std::string packedName = std::string("generated/") + name + "." + mode + "." + std::to_string(dict) + ".imp";
                Bytes packed = Shared(packedName), out, ours;
                EXPECT_EQ(Explode(packed, out), CMP_NO_ERROR) << packedName;
                EXPECT_TRUE(out == plain) << packedName;
                ASSERT_EQ(Implode(plain, mode[0] == 'a' ? CMP_ASCII : CMP_BINARY, unsigned(dict), ours), CMP_NO_ERROR);
                EXPECT_LE(ours.size(), packed.size() + packed.size() / 50 + 1) << packedName;
            }
    }
    // The empty input's stream is four bytes: too short for the expander.
    Bytes out;
    EXPECT_EQ(Explode(Shared("generated/edge_empty.bin.bin.4096.imp"), out), CMP_BAD_DATA);
    EXPECT_TRUE(out.empty());
    // No end code, and a copy from before the start of the output.
    Bytes plain = Shared("implode_test_files/implode-decoder/no-explicit-end.decomp");
    EXPECT_EQ(Explode(Shared("implode_test_files/implode-decoder/no-explicit-end.imploded"), out), CMP_ABORT);
    ASSERT_LE(out.size(), plain.size());
    EXPECT_TRUE(std::equal(out.begin(), out.end(), plain.begin()));
}

TEST(Explode, HandBuiltLongestCopiesAndCopiesBeforeTheStart)
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
    // A copy from three bytes back after two literals: the literals arrive.
    Bits bad;
    bad.Literal('A');
    bad.Literal('B');
    bad.LongCopy(300, 3);
    bad.LongCopy(519, 1);
    EXPECT_EQ(Explode(bad.bytes, out), CMP_ABORT);
    EXPECT_EQ(out, Bytes({'A', 'B'}));
}

TEST(Explode, HeadersFirstRequestAndWhatFollows)
{
    const Bytes known = {0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f};
    Pipe p{&known, ~0u};
    std::vector<char> work(EXP_BUFFER_SIZE);
    EXPECT_EQ(explode(PipeRead, PipeWrite, work.data(), &p), CMP_NO_ERROR);
    EXPECT_EQ(std::string(p.out.begin(), p.out.end()), "AIAIAIAIAIAIA");
    EXPECT_EQ(p.asked.at(0), 2048u);
    Bytes out;
    EXPECT_EQ(Explode(known, out, 1), CMP_NO_ERROR);  // five bytes one at a time are enough to start
    EXPECT_EQ(out, p.out);

    Bytes good, second;
    ASSERT_EQ(Implode(Words(9000, 2), CMP_BINARY, 4096, good), CMP_NO_ERROR);
    struct Case { size_t at; unsigned char value; unsigned rc; } cases[] = {
        {1, 0, CMP_INVALID_DICTSIZE}, {1, 3, CMP_INVALID_DICTSIZE}, {1, 7, CMP_INVALID_DICTSIZE},
        {1, 255, CMP_INVALID_DICTSIZE}, {0, 2, CMP_INVALID_MODE}, {0, 0x80, CMP_INVALID_MODE}};
    for (const Case& c : cases) {
        Bytes b = good;
        b[c.at] = c.value;
        EXPECT_EQ(Explode(b, out), c.rc) << c.at << " " << int(c.value);
        EXPECT_TRUE(out.empty());
    }
    for (size_t n = 0; n < 5; ++n) {
        EXPECT_EQ(Explode(Bytes(good.begin(), good.begin() + n), out), CMP_BAD_DATA) << n;
        EXPECT_TRUE(out.empty());
    }
    // Another stream behind the first: explode_used says where the first ends.
    ASSERT_EQ(Implode(Words(100, 5), CMP_ASCII, 1024, second), CMP_NO_ERROR);
    for (unsigned piece : {1u, 100u, ~0u}) {
        size_t used = 0;
        ASSERT_EQ(Explode(Cat(good, second), out, piece, &used), CMP_NO_ERROR);
        EXPECT_TRUE(out == Words(9000, 2));
        EXPECT_EQ(used, good.size()) << piece;
    }
}

TEST(Implode, RoundTripsInEveryModeDictionaryAndLevel)
{
    std::vector<Bytes> inputs = {Bytes(), Bytes(1, 0x41), Bytes{0x00, 0xFF}, Incompressible(20000, 7), Words(60000, 3)};
    for (size_t n : {516, 517, 518, 519, 1036, 1037, 5000})
        inputs.push_back(Bytes(n, 'Z'));
    // Sizes around the engines' internal buffer and window sizes.
    for (size_t n : {2047, 2048, 2049, 4096, 4097, 6153, 8192, 10368, 11781, 16384, 45000})
        inputs.push_back(Words(n, unsigned(n)));
    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)})
        for (unsigned dict : {1024u, 2048u, 4096u}) {
            // Every distance 1..dict used by some repeat after a random prefix,
            // and a random block repeated exactly one window later.
            Bytes every = Incompressible(dict, dict), twice = Cat(every, every);
            Rng r(dict);
            for (unsigned d = 1; d <= dict; ++d) {
                for (unsigned i = 0, len = 3 + r.Next() % 6; i < len; ++i)
                    every.push_back(every[every.size() - d]);
                every.push_back((unsigned char)r.Next());
            }
            std::vector<Bytes> all = inputs;
            all.push_back(every);
            all.push_back(twice);
            for (size_t k = 0; k < all.size(); ++k)
                for (unsigned level : {1u, 5u, 9u}) {
                    const Bytes& in = all[k];
                    SCOPED_TRACE(testing::Message() << "input " << k << " type " << type << " dict " << dict
                                                    << " level " << level);
                    Bytes packed, back;
                    ASSERT_EQ(Implode(in, type, dict, packed, level, k % 2 ? 777u : ~0u), CMP_NO_ERROR);
                    EXPECT_EQ(packed.at(0), type);
                    EXPECT_EQ(packed.at(1), dict == 1024 ? 4 : dict == 2048 ? 5 : 6);
                    // Growth bound: 9 bits a byte in binary mode, at most 14 in ASCII.
                    EXPECT_LE(packed.size(), 3 + (in.size() * (type == CMP_ASCII ? 14 : 9) + 23) / 8);
                    if (&in == &all.back() && type == CMP_BINARY) {  // the repeat: a few copies at the window edge
                        EXPECT_LT(packed.size(), dict * 9 / 8 + dict / 32);
                    }
                    ASSERT_EQ(Explode(packed, back, k % 3 ? ~0u : 3u), CMP_NO_ERROR);
                    ASSERT_TRUE(back == in);
                }
        }
}

TEST(Implode, ArgumentsWorkAreaAndStaleTables)
{
    Bytes in = Words(5000, 1);
    Guarded work(CMP_BUFFER_SIZE, 3);
    unsigned type = CMP_BINARY, dict = 4096;
    Pipe p{&in, ~0u};
    ASSERT_EQ(implode(PipeRead, PipeWrite, work.Work(), &p, &type, &dict), CMP_NO_ERROR);
    EXPECT_TRUE(work.Intact());
    Bytes viaLevel;
    ASSERT_EQ(Implode(in, CMP_BINARY, 4096, viaLevel, CMP_LEVEL_DEFAULT), CMP_NO_ERROR);
    EXPECT_TRUE(viaLevel == p.out);
    struct Bad { unsigned type, dict, rc; } bad[] = {
        {CMP_BINARY, 0, CMP_INVALID_DICTSIZE}, {CMP_BINARY, 512, CMP_INVALID_DICTSIZE},
        {CMP_BINARY, 1023, CMP_INVALID_DICTSIZE}, {CMP_BINARY, 3000, CMP_INVALID_DICTSIZE},
        {CMP_BINARY, 8192, CMP_INVALID_DICTSIZE}, {2, 2048, CMP_INVALID_MODE}, {255, 2048, CMP_INVALID_MODE}};
    for (Bad b : bad) {
        Pipe q{&in, ~0u};
        EXPECT_EQ(implode(PipeRead, PipeWrite, work.Work(), &q, &b.type, &b.dict), b.rc) << b.type << " " << b.dict;
        EXPECT_TRUE(q.out.empty());
    }
    // How the input is served does not change the output.
    for (unsigned level : {1u, 5u, 9u}) {
        Bytes whole, bytewise;
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, whole, level), CMP_NO_ERROR);
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, bytewise, level, 1), CMP_NO_ERROR);
        EXPECT_TRUE(whole == bytewise) << level;
    }
    // The best level works in the ordinary work area too, just less thoroughly.
    EXPECT_EQ(implode_work_size(CMP_LEVEL_DEFAULT), CMP_BUFFER_SIZE);
    Pipe q{&in, ~0u};
    Guarded small(CMP_BUFFER_SIZE, 1);
    ASSERT_EQ(implode_level(PipeRead, PipeWrite, small.Work(), CMP_BUFFER_SIZE, &q, &type, &dict, CMP_LEVEL_BEST),
              CMP_NO_ERROR);
    EXPECT_TRUE(small.Intact());
    Bytes back;
    ASSERT_EQ(Explode(q.out, back), CMP_NO_ERROR);
    EXPECT_TRUE(back == in);

    // Table entries hold positions modulo 65,536: after a long run the strings
    // of the start come back 66,536 bytes later, so their old entries look
    // 1,000 bytes away, inside the window, where the run is.
    Bytes start = Incompressible(2000, 5);
    Bytes stale = Cat(Cat(Cat(start, Bytes(64536, 'A')), start), Words(3000, 6));
    for (unsigned level : {1u, 5u, 9u}) {
        Bytes packed;
        ASSERT_EQ(Implode(stale, CMP_BINARY, 4096, packed, level), CMP_NO_ERROR);
        ASSERT_EQ(Explode(packed, back), CMP_NO_ERROR);
        EXPECT_TRUE(back == stale) << level;
    }
}

TEST(Explode, TruncationAndDamageEndCleanly)
{
    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)}) {
        Bytes plain = Words(6000, 21), packed;
        ASSERT_EQ(Implode(plain, type, 2048, packed), CMP_NO_ERROR);
        for (size_t n = 5; n < packed.size(); ++n) {
            Bytes out;
            unsigned rc = Explode(Bytes(packed.begin(), packed.begin() + n), out);
            if (n + 1 == packed.size() && rc == CMP_NO_ERROR && out == plain)
                continue;  // the last byte may hold only padding after the end code
            ASSERT_EQ(rc, CMP_ABORT) << n;
            ASSERT_LE(out.size(), plain.size()) << n;
            ASSERT_TRUE(std::equal(out.begin(), out.end(), plain.begin())) << n;
        }
    }
    Bytes plain = Cat(Words(20000, 8), Bytes(3000, 0)), binary, ascii;
    ASSERT_EQ(Implode(plain, CMP_BINARY, 4096, binary), CMP_NO_ERROR);
    ASSERT_EQ(Implode(plain, CMP_ASCII, 1024, ascii), CMP_NO_ERROR);
    Rng r(4242);
    int aborted = 0;
    for (int trial = 0; trial < 600; ++trial) {
        Bytes b = trial % 2 ? binary : ascii, out;
        for (unsigned k = 0, flips = 1 + r.Next() % 8; k < flips; ++k)
            b[2 + r.Next() % (b.size() - 2)] ^= (unsigned char)(1u << (r.Next() % 8));
        unsigned rc = Explode(b, out, 1 + r.Next() % 3000);  // the work area's margins are checked
        ASSERT_TRUE(rc == CMP_NO_ERROR || rc == CMP_ABORT) << trial;
        // Every item uses at least one bit and yields at most 518 bytes.
        ASSERT_LE(out.size(), b.size() * 8 * 518) << trial;
        aborted += rc == CMP_ABORT;
    }
    EXPECT_GT(aborted, 0);
    for (int trial = 0; trial < 200; ++trial) {  // pure noise after a valid header
        Bytes b = Cat({(unsigned char)(trial % 2), (unsigned char)(4 + trial % 3)}, Incompressible(1 + r.Next() % 4000, trial + 1)), out;
        unsigned rc = Explode(b, out);
        ASSERT_TRUE(rc == CMP_NO_ERROR || rc == CMP_ABORT || rc == CMP_BAD_DATA) << trial;
    }
}

// The best level's output is the shortest the format allows: its size equals
// the cheapest parse found by trying every distance at every position.
TEST(Implode, BestLevelIsTheExactOptimum)
{
    Bytes image;
    Rng r(31);
    for (int i = 0; i < 1500; ++i) {
        unsigned v = (i / 7) * 3 + (r.Next() % 4 == 0 ? r.Next() % 3 : 0);
        image.push_back((unsigned char)v);
        image.push_back((unsigned char)(v >> 1));
    }
    Bytes mixed = Cat(Cat(Words(1500, 77), Incompressible(600, 78)), Cat(Bytes(700, 'q'), Bytes(image.begin(), image.begin() + 500)));
    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)})
        for (unsigned dictBits : {4u, 6u})
            for (const Bytes* in : {&image, &mixed}) {
                const Bytes& d = *in;
                const size_t n = d.size(), dict = size_t(64) << dictBits;
                std::vector<unsigned> cost(n + 1, ~0u);
                cost[0] = 0;
                for (size_t i = 0; i < n; ++i) {
                    cost[i + 1] = std::min(cost[i + 1], cost[i] + dcl::LiteralCost(d[i], type == CMP_ASCII));
                    for (size_t dist = 1; dist <= std::min(i, dict); ++dist) {
                        size_t len = 0;
                        while (i + len < n && len < 518 && d[i + len] == d[i + len - dist])
                            ++len;
                        for (size_t l = 2; l <= len; ++l)
                            if (l > 2 || dist <= 256)
                                cost[i + l] = std::min(cost[i + l], cost[i] + dcl::CopyCost(unsigned(l), unsigned(dist), dictBits));
                    }
                }
                // Header, items, the 16-bit end code, rounded up to whole bytes.
                Bytes packed;
                ASSERT_EQ(Implode(d, type, unsigned(dict), packed, CMP_LEVEL_BEST), CMP_NO_ERROR);
                EXPECT_EQ(packed.size(), 2 + (cost[n] + 16 + 7) / 8) << "type " << type << " dict " << dict;
            }
}
