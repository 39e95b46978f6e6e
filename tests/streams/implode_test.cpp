// implode / explode: streams made elsewhere, hand-built bit streams, round trips
// in every mode, damaged input, and the work-area contract.
#include <gtest/gtest.h>
#include <cstdio>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"
#include "streams/dcl_codes.h"
#include "streams/dcl_encode.h"

namespace {

typedef std::vector<unsigned char> Bytes;

// Callback plumbing: serves input in pieces of at most `piece` bytes and
// records what the engine asked for.
struct Pipe {
    const Bytes* in = nullptr;
    size_t pos = 0;
    unsigned piece = 0xFFFFFFFFu;
    Bytes out;
    std::vector<unsigned> asked;
};

unsigned PipeRead(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    p.asked.push_back(*size);
    size_t n = p.in->size() - p.pos;
    if (n > *size)
        n = *size;
    if (n > p.piece)
        n = p.piece;
    if (n)
        memcpy(buf, p.in->data() + p.pos, n);
    p.pos += n;
    return unsigned(n);
}

void PipeWrite(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    p.out.insert(p.out.end(), buf, buf + *size);
}

// Work areas live inside a larger block whose margins are checked afterwards.
struct Guarded {
    explicit Guarded(size_t size, size_t misalign = 0) : size_(size), skew_(misalign), block_(size + 2 * kMargin + 8, 0xA5) {}
    char* Work() { return reinterpret_cast<char*>(block_.data()) + kMargin + skew_; }
    bool Intact() const
    {
        for (size_t i = 0; i < block_.size(); ++i) {
            bool inside = i >= kMargin + skew_ && i < kMargin + skew_ + size_;
            if (!inside && block_[i] != 0xA5)
                return false;
        }
        return true;
    }
    static const size_t kMargin = 64;
    size_t size_, skew_;
    Bytes block_;
};

unsigned Implode(const Bytes& in, unsigned type, unsigned dict, Bytes& out, unsigned level = CMP_LEVEL_DEFAULT,
                 unsigned piece = 0xFFFFFFFFu)
{
    Pipe p;
    p.in = &in;
    p.piece = piece;
    std::vector<char> work(implode_work_size(level));
    unsigned rc = implode_level(PipeRead, PipeWrite, work.data(), unsigned(work.size()), &p, &type, &dict, level);
    out = p.out;
    return rc;
}

unsigned Explode(const Bytes& in, Bytes& out, unsigned piece = 0xFFFFFFFFu)
{
    Pipe p;
    p.in = &in;
    p.piece = piece;
    std::vector<char> work(EXP_BUFFER_SIZE);
    unsigned rc = explode(PipeRead, PipeWrite, work.data(), &p);
    out = p.out;
    return rc;
}

bool ReadShared(const std::string& rel, Bytes& out)
{
    std::string name = rltest::SharedDir() + "/vectors/dcl/" + rel;
    FILE* f = fopen(name.c_str(), "rb");
    if (!f)
        return false;
    out.clear();
    int c;
    while ((c = fgetc(f)) != EOF)
        out.push_back((unsigned char)c);
    fclose(f);
    return true;
}

struct Rng {
    unsigned s;
    explicit Rng(unsigned seed) : s(seed) {}
    unsigned Next()
    {
        s = s * 1103515245u + 12345u;
        return s >> 8;
    }
};

Bytes RandomBytes(size_t n, unsigned seed)
{
    Rng r(seed);
    Bytes b(n);
    for (auto& c : b)
        c = (unsigned char)r.Next();
    return b;
}

// Prose-like bytes: words from a small list, so copies of every length abound.
Bytes Words(size_t n, unsigned seed)
{
    static const char* const kList[] = {"the ", "quick ", "brown ", "fox ", "jumps ", "over ", "a ",
                                        "lazy ", "dog; ", "and ", "then ", "sleeps.\r\n", "It ",
                                        "was ", "not ", "amused ", "by ", "this, "};
    Rng r(seed);
    Bytes b;
    while (b.size() < n) {
        const char* w = kList[r.Next() % (sizeof kList / sizeof kList[0])];
        b.insert(b.end(), w, w + strlen(w));
    }
    b.resize(n);
    return b;
}

// Bytes whose every distance 1..dict is used by some repeat: a random prefix,
// then for each distance d a few bytes copied from d back.
Bytes EveryDistance(unsigned dict, unsigned seed)
{
    Bytes b = RandomBytes(dict, seed);
    Rng r(seed + 1);
    for (unsigned d = 1; d <= dict; ++d) {
        unsigned len = 3 + r.Next() % 6;
        for (unsigned i = 0; i < len; ++i)
            b.push_back(b[b.size() - d]);
        b.push_back((unsigned char)r.Next());   // break the run
    }
    return b;
}

// LSB-first bit packer for hand-built streams.
struct Bits {
    Bytes bytes;
    unsigned used = 0;
    void Put(unsigned value, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            if (used % 8 == 0)
                bytes.push_back(0);
            bytes.back() |= (unsigned char)(((value >> i) & 1u) << (used % 8));
            ++used;
        }
    }
};

} // namespace

// ---------------------------------------------------------------- known data

TEST(Explode, KnownVectorAndFirstRequest)
{
    const Bytes in = {0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f};
    Pipe p;
    p.in = &in;
    std::vector<char> work(EXP_BUFFER_SIZE);
    EXPECT_EQ(explode(PipeRead, PipeWrite, work.data(), &p), CMP_NO_ERROR);
    EXPECT_EQ(std::string(p.out.begin(), p.out.end()), "AIAIAIAIAIAIA");
    ASSERT_FALSE(p.asked.empty());
    EXPECT_EQ(p.asked[0], 2048u);
    EXPECT_EQ(explode_used(work.data()), in.size());
}

TEST(Explode, StreamsFromOtherImplementations)
{
    struct Case { const char* packed; const char* plain; };
    const Case cases[] = {
        {"zlib-blast/test.pk", "zlib-blast/test.txt"},
        {"implode_test_files/implode-decoder/small.imploded", "implode_test_files/implode-decoder/small.decomp"},
        {"implode_test_files/implode-decoder/medium.imploded", "implode_test_files/implode-decoder/medium.decomp"},
        {"implode_test_files/implode-decoder/large.imploded", "implode_test_files/implode-decoder/large.decomp"},
        {"implode_test_files/implode-decoder/large.imploded.ascii", "implode_test_files/implode-decoder/large.decomp"},
        {"implode_test_files/implode-decoder/binary.imploded", "implode_test_files/implode-decoder/binary.decomp"},
        {"implode_test_files/pwexplode/hello.imploded", "implode_test_files/pwexplode/hello.txt"},
        {"implode_test_files/pwexplode/consistent_ui.imploded", "implode_test_files/pwexplode/consistent_ui.txt"},
        {"implode_test_files/pwexplode/Ben_Rudiak-Gould_errored.imploded",
         "implode_test_files/pwexplode/Ben_Rudiak-Gould_errored.txt"},
        {"implode_test_files/unshield.rs/undhr.md.imploded", "implode_test_files/unshield.rs/undhr.md"},
    };
    for (const Case& c : cases) {
        Bytes packed, plain, out;
        ASSERT_TRUE(ReadShared(c.packed, packed)) << c.packed;
        ASSERT_TRUE(ReadShared(c.plain, plain)) << c.plain;
        EXPECT_EQ(Explode(packed, out), CMP_NO_ERROR) << c.packed;
        EXPECT_TRUE(out == plain) << c.packed;
        // The same through one-byte reads.
        EXPECT_EQ(Explode(packed, out, 1), CMP_NO_ERROR) << c.packed;
        EXPECT_TRUE(out == plain) << c.packed;
    }

    // Generated with another compressor for every input, mode and dictionary.
    const char* inputs[] = {"text_short.txt", "text_medium.txt", "binary_small.bin", "edge_one_byte.bin",
                            "edge_run_2000.bin", "edge_all_bytes.bin", "edge_random_5000.bin",
                            "edge_len2_pairs.bin"};
    for (const char* name : inputs) {
        Bytes plain;
        ASSERT_TRUE(ReadShared(std::string("generated/") + name, plain)) << name;
        for (const char* mode : {"bin", "ascii"}) {
            for (int dict : {1024, 2048, 4096}) {
                std::string packedName = std::string("generated/") + name + "." + mode + "." + std::to_string(dict) + ".imp";
                Bytes packed, out;
                ASSERT_TRUE(ReadShared(packedName, packed)) << packedName;
                EXPECT_EQ(Explode(packed, out), CMP_NO_ERROR) << packedName;
                EXPECT_TRUE(out == plain) << packedName;
                // Our own output for the same input is no larger than a few
                // percent over the other compressor's.
                Bytes ours;
                ASSERT_EQ(Implode(plain, mode[0] == 'a' ? CMP_ASCII : CMP_BINARY, unsigned(dict), ours), CMP_NO_ERROR);
                EXPECT_LE(ours.size(), packed.size() + packed.size() / 50 + 1) << packedName;
            }
        }
    }

    // The empty input's stream is four bytes: too short for the expander.
    Bytes packed, out;
    ASSERT_TRUE(ReadShared("generated/edge_empty.bin.bin.4096.imp", packed));
    EXPECT_EQ(Explode(packed, out), CMP_BAD_DATA);
    EXPECT_TRUE(out.empty());

    // This one has no end code and copies from before the start of the output.
    Bytes plain;
    ASSERT_TRUE(ReadShared("implode_test_files/implode-decoder/no-explicit-end.imploded", packed));
    ASSERT_TRUE(ReadShared("implode_test_files/implode-decoder/no-explicit-end.decomp", plain));
    EXPECT_EQ(Explode(packed, out), CMP_ABORT);
    ASSERT_LE(out.size(), plain.size());
    EXPECT_TRUE(std::equal(out.begin(), out.end(), plain.begin()));
}

// Streams built bit by bit from the format description: the longest copies,
// which common compressors never produce, and a copy reaching before the start.
TEST(Explode, HandBuiltStreams)
{
    // Length symbol 15 has the all-zero 7-bit code; its 8 extra bits give 264+x.
    // Distance symbol 0 is the 2-bit code 11; a 1024-byte dictionary adds 4 low bits.
    auto longCopy = [](Bits& b, unsigned len, unsigned dist) {
        b.Put(1, 1);
        b.Put(0, 7);
        b.Put(len - 264, 8);
        b.Put(3, 2);
        b.Put(dist - 1, 4);
    };
    auto literal = [](Bits& b, unsigned char c) {
        b.Put(0, 1);
        b.Put(c, 8);
    };
    Bits b;
    b.Put(0, 8);
    b.Put(4, 8);
    literal(b, 'x');
    literal(b, 'y');
    longCopy(b, 518, 2);
    longCopy(b, 517, 1);
    longCopy(b, 519, 1);   // the end code
    Bytes out;
    EXPECT_EQ(Explode(b.bytes, out), CMP_NO_ERROR);
    ASSERT_EQ(out.size(), 2u + 518u + 517u);
    for (size_t i = 0; i < 520; ++i)
        ASSERT_EQ(out[i], i % 2 ? 'y' : 'x') << i;
    for (size_t i = 520; i < out.size(); ++i)
        ASSERT_EQ(out[i], 'y') << i;

    // Two literals, then a copy from three bytes back: corrupt. The literals
    // are still delivered.
    Bits bad;
    bad.Put(0, 8);
    bad.Put(4, 8);
    literal(bad, 'A');
    literal(bad, 'B');
    longCopy(bad, 300, 3);
    longCopy(bad, 519, 1);
    EXPECT_EQ(Explode(bad.bytes, out), CMP_ABORT);
    EXPECT_EQ(std::string(out.begin(), out.end()), "AB");

    // No end code at all: what was decoded arrives, then the abort.
    Bits open;
    open.Put(0, 8);
    open.Put(4, 8);
    for (char c : std::string("hello"))
        literal(open, (unsigned char)c);
    EXPECT_EQ(Explode(open.bytes, out), CMP_ABORT);
    EXPECT_EQ(std::string(out.begin(), out.end()), "hello");
}

// ---------------------------------------------------------------- round trips

TEST(Implode, RoundTripsInEveryMode)
{
    std::vector<std::pair<std::string, Bytes>> inputs;
    inputs.push_back({"empty", Bytes()});
    inputs.push_back({"one byte", Bytes(1, 0x41)});
    inputs.push_back({"two bytes", Bytes{0x00, 0xFF}});
    for (size_t n : {515, 516, 517, 518, 519, 520, 521, 1036, 1037, 5000})
        inputs.push_back({"run " + std::to_string(n), Bytes(n, 'Z')});
    inputs.push_back({"random", RandomBytes(20000, 7)});
    inputs.push_back({"words", Words(60000, 3)});
    inputs.push_back({"all bytes", [] { Bytes b; for (int k = 0; k < 3; ++k) for (int i = 0; i < 256; ++i) b.push_back((unsigned char)i); return b; }()});
    // Sizes around the engines' internal buffer and window sizes.
    for (size_t n : {2047, 2048, 2049, 4095, 4096, 4097, 6152, 6153, 7689, 8192, 10367, 10368, 11780, 11781, 15877, 16384, 32768, 45000})
        inputs.push_back({"words " + std::to_string(n), Words(n, unsigned(n))});

    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)}) {
        for (unsigned dict : {1024u, 2048u, 4096u}) {
            std::vector<std::pair<std::string, Bytes>> all = inputs;
            all.push_back({"every distance", EveryDistance(dict, dict)});
            for (const auto& in : all) {
                for (unsigned level : {1u, 5u, 9u}) {
                    SCOPED_TRACE(in.first + " type " + std::to_string(type) + " dict " + std::to_string(dict) +
                                 " level " + std::to_string(level));
                    Bytes packed, back;
                    ASSERT_EQ(Implode(in.second, type, dict, packed, level), CMP_NO_ERROR);
                    ASSERT_GE(packed.size(), 5u);
                    EXPECT_EQ(packed[0], type);
                    EXPECT_EQ(packed[1], dict == 1024 ? 4 : dict == 2048 ? 5 : 6);
                    // Growth bound: 9 bits a byte in binary mode, at most 14 in ASCII.
                    size_t bound = 2 + (in.second.size() * (type == CMP_ASCII ? 14 : 9) + 16 + 7) / 8 + 1;
                    EXPECT_LE(packed.size(), bound);
                    ASSERT_EQ(Explode(packed, back), CMP_NO_ERROR);
                    ASSERT_TRUE(back == in.second);
                }
            }
        }
    }
}

TEST(Implode, PieceSizesDoNotChangeTheOutput)
{
    Bytes in = Words(30000, 11);
    for (unsigned level : {1u, 5u, 9u}) {
        Bytes whole, bytewise, odd;
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, whole, level), CMP_NO_ERROR);
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, bytewise, level, 1), CMP_NO_ERROR);
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, odd, level, 777), CMP_NO_ERROR);
        EXPECT_TRUE(whole == bytewise) << level;
        EXPECT_TRUE(whole == odd) << level;
        Bytes back;
        ASSERT_EQ(Explode(whole, back, 3), CMP_NO_ERROR);
        EXPECT_TRUE(back == in);
    }
}

TEST(Implode, LibraryDefaultsAndArguments)
{
    Bytes in = Words(5000, 1), out;
    Pipe p;
    p.in = &in;
    Guarded work(CMP_BUFFER_SIZE, 3);
    unsigned type = CMP_BINARY, dict = 4096;
    ASSERT_EQ(implode(PipeRead, PipeWrite, work.Work(), &p, &type, &dict), CMP_NO_ERROR);
    EXPECT_TRUE(work.Intact());
    ASSERT_GE(p.out.size(), 2u);
    EXPECT_EQ(p.out[0], 0x00);
    EXPECT_EQ(p.out[1], 0x06);
    EXPECT_LT(p.out.size(), in.size() / 2);

    // The default level is what implode uses.
    Bytes viaLevel;
    ASSERT_EQ(Implode(in, CMP_BINARY, 4096, viaLevel, CMP_LEVEL_DEFAULT), CMP_NO_ERROR);
    EXPECT_TRUE(viaLevel == p.out);

    for (unsigned bad : {0u, 512u, 1023u, 3000u, 8192u}) {
        Pipe q;
        q.in = &in;
        unsigned t = CMP_BINARY, d = bad;
        EXPECT_EQ(implode(PipeRead, PipeWrite, work.Work(), &q, &t, &d), CMP_INVALID_DICTSIZE) << bad;
        EXPECT_TRUE(q.out.empty());
    }
    for (unsigned bad : {2u, 3u, 255u}) {
        Pipe q;
        q.in = &in;
        unsigned t = bad, d = 2048;
        EXPECT_EQ(implode(PipeRead, PipeWrite, work.Work(), &q, &t, &d), CMP_INVALID_MODE) << bad;
        EXPECT_TRUE(q.out.empty());
    }

    // The best level works in the ordinary work area too, just less thoroughly.
    EXPECT_GT(implode_work_size(CMP_LEVEL_BEST), CMP_BUFFER_SIZE);
    EXPECT_EQ(implode_work_size(CMP_LEVEL_DEFAULT), CMP_BUFFER_SIZE);
    Pipe q;
    q.in = &in;
    Guarded small(CMP_BUFFER_SIZE, 1);
    ASSERT_EQ(implode_level(PipeRead, PipeWrite, small.Work(), CMP_BUFFER_SIZE, &q, &type, &dict, CMP_LEVEL_BEST),
              CMP_NO_ERROR);
    EXPECT_TRUE(small.Intact());
    Bytes back;
    ASSERT_EQ(Explode(q.out, back), CMP_NO_ERROR);
    EXPECT_TRUE(back == in);
}

TEST(Implode, CopiesReachTheWindowEdgeAndSurviveStaleTables)
{
    // A random block and its repeat exactly one window later: the only copies
    // there are at the largest distance, and every level must use them.
    for (unsigned dict : {1024u, 2048u, 4096u}) {
        Bytes in = RandomBytes(dict, dict);
        Bytes again = in;
        in.insert(in.end(), again.begin(), again.end());
        for (unsigned level : {1u, 5u, 9u}) {
            Bytes packed, back;
            ASSERT_EQ(Implode(in, CMP_BINARY, dict, packed, level), CMP_NO_ERROR);
            // The first block as literals, the second as a handful of copies.
            EXPECT_LT(packed.size(), dict * 9 / 8 + dict / 32) << dict << " level " << level;
            ASSERT_EQ(Explode(packed, back), CMP_NO_ERROR);
            EXPECT_TRUE(back == in);
        }
    }
    // Table entries hold positions modulo 65,536. After a long run of one byte
    // the strings of the start come back 66,536 bytes later, so their old
    // entries look 1,000 bytes away, inside the window, where the run is.
    Bytes start = RandomBytes(2000, 5);
    Bytes in = start;
    in.insert(in.end(), 64536, 'A');
    in.insert(in.end(), start.begin(), start.end());
    Bytes tail = Words(3000, 6);
    in.insert(in.end(), tail.begin(), tail.end());
    for (unsigned level : {1u, 5u, 9u}) {
        Bytes packed, back;
        ASSERT_EQ(Implode(in, CMP_BINARY, 4096, packed, level), CMP_NO_ERROR);
        ASSERT_EQ(Explode(packed, back), CMP_NO_ERROR);
        EXPECT_TRUE(back == in) << level;
    }
}

TEST(Implode, BetterParsingAtHigherLevels)
{
    Bytes text = Words(200000, 5);
    // 24-bit rows: bands and a gradient, with noise in some pixels.
    Bytes image;
    Rng r(9);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 400; ++x) {
            unsigned noise = r.Next() % 4 == 0 ? r.Next() % 3 : 0;
            image.push_back((unsigned char)((x / 24) * 16 + noise));
            image.push_back((unsigned char)(y + noise));
            image.push_back((unsigned char)((x / 50) * (y / 40) * 8));
        }
    for (const Bytes* in : {&text, &image}) {
        Bytes fast, normal, best;
        ASSERT_EQ(Implode(*in, CMP_BINARY, 4096, fast, CMP_LEVEL_FASTEST), CMP_NO_ERROR);
        ASSERT_EQ(Implode(*in, CMP_BINARY, 4096, normal, CMP_LEVEL_DEFAULT), CMP_NO_ERROR);
        ASSERT_EQ(Implode(*in, CMP_BINARY, 4096, best, CMP_LEVEL_BEST), CMP_NO_ERROR);
        EXPECT_LT(normal.size(), fast.size());
        EXPECT_LT(best.size(), normal.size());
    }
    // On prose the shortest-path parse beats the lazy one by a clear margin.
    Bytes normal, best;
    ASSERT_EQ(Implode(text, CMP_BINARY, 4096, normal, CMP_LEVEL_DEFAULT), CMP_NO_ERROR);
    ASSERT_EQ(Implode(text, CMP_BINARY, 4096, best, CMP_LEVEL_BEST), CMP_NO_ERROR);
    EXPECT_LT(best.size() * 100, normal.size() * 98);
    // Nothing to find in random data: every level stays within the literal bound.
    Bytes noise = RandomBytes(50000, 13), packed;
    ASSERT_EQ(Implode(noise, CMP_BINARY, 4096, packed, CMP_LEVEL_BEST), CMP_NO_ERROR);
    EXPECT_LE(packed.size(), 2 + (noise.size() * 9 + 16 + 7) / 8);
}

// ---------------------------------------------------------------- damage

TEST(Explode, BadHeadersAndShortInput)
{
    Bytes good;
    ASSERT_EQ(Implode(Words(3000, 2), CMP_BINARY, 4096, good), CMP_NO_ERROR);
    Bytes out;
    for (unsigned code : {0u, 3u, 7u, 255u}) {
        Bytes b = good;
        b[1] = (unsigned char)code;
        EXPECT_EQ(Explode(b, out), CMP_INVALID_DICTSIZE) << code;
        EXPECT_TRUE(out.empty());
    }
    for (unsigned mode : {2u, 0x80u, 255u}) {
        Bytes b = good;
        b[0] = (unsigned char)mode;
        EXPECT_EQ(Explode(b, out), CMP_INVALID_MODE) << mode;
        EXPECT_TRUE(out.empty());
    }
    for (size_t n = 0; n < 5; ++n) {
        Bytes b(good.begin(), good.begin() + n);
        EXPECT_EQ(Explode(b, out), CMP_BAD_DATA) << n;
        EXPECT_TRUE(out.empty());
    }
    // Five bytes delivered one at a time are enough to start.
    Bytes one = {0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f};
    EXPECT_EQ(Explode(one, out, 1), CMP_NO_ERROR);
    EXPECT_EQ(out.size(), 13u);
}

TEST(Explode, EveryTruncationEndsCleanly)
{
    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)}) {
        Bytes plain = Words(6000, 21), packed;
        ASSERT_EQ(Implode(plain, type, 2048, packed), CMP_NO_ERROR);
        for (size_t n = 5; n < packed.size(); ++n) {
            Bytes cut(packed.begin(), packed.begin() + n), out;
            unsigned rc = Explode(cut, out);
            // The last byte may hold only padding after the end code.
            if (n + 1 == packed.size() && rc == CMP_NO_ERROR) {
                EXPECT_TRUE(out == plain);
                continue;
            }
            ASSERT_EQ(rc, CMP_ABORT) << n;
            ASSERT_LE(out.size(), plain.size()) << n;
            ASSERT_TRUE(std::equal(out.begin(), out.end(), plain.begin())) << n;
        }
    }
}

TEST(Explode, RandomDamageNeverEscapes)
{
    Bytes plain = Words(20000, 8);
    plain.insert(plain.end(), 3000, 0);
    Bytes binary, ascii;
    ASSERT_EQ(Implode(plain, CMP_BINARY, 4096, binary), CMP_NO_ERROR);
    ASSERT_EQ(Implode(plain, CMP_ASCII, 1024, ascii), CMP_NO_ERROR);
    Rng r(4242);
    int aborted = 0;
    for (int trial = 0; trial < 600; ++trial) {
        Bytes b = trial % 2 ? binary : ascii;
        unsigned flips = 1 + r.Next() % 8;
        for (unsigned k = 0; k < flips; ++k)
            b[2 + r.Next() % (b.size() - 2)] ^= (unsigned char)(1u << (r.Next() % 8));
        Pipe p;
        p.in = &b;
        p.piece = 1 + r.Next() % 3000;
        Guarded work(EXP_BUFFER_SIZE, r.Next() % 8);
        unsigned rc = explode(PipeRead, PipeWrite, work.Work(), &p);
        ASSERT_TRUE(rc == CMP_NO_ERROR || rc == CMP_ABORT) << trial;
        ASSERT_TRUE(work.Intact()) << trial;
        // Every item uses at least one bit and yields at most 518 bytes.
        ASSERT_LE(p.out.size(), b.size() * 8 * 518) << trial;
        aborted += rc == CMP_ABORT;
    }
    EXPECT_GT(aborted, 0);

    // Pure noise after a valid header.
    for (int trial = 0; trial < 200; ++trial) {
        Bytes b = RandomBytes(1 + r.Next() % 4000, unsigned(trial));
        b.insert(b.begin(), {(unsigned char)(trial % 2), (unsigned char)(4 + trial % 3)});
        Bytes out;
        unsigned rc = Explode(b, out);
        ASSERT_TRUE(rc == CMP_NO_ERROR || rc == CMP_ABORT || rc == CMP_BAD_DATA) << trial;
    }
}

TEST(Explode, ReportsWhatFollowsTheStream)
{
    Bytes plain = Words(9000, 4), packed;
    ASSERT_EQ(Implode(plain, CMP_BINARY, 4096, packed), CMP_NO_ERROR);
    Bytes joined = packed;
    Bytes second;
    ASSERT_EQ(Implode(Words(100, 5), CMP_ASCII, 1024, second), CMP_NO_ERROR);
    joined.insert(joined.end(), second.begin(), second.end());
    for (unsigned piece : {1u, 100u, 0xFFFFFFFFu}) {
        Pipe p;
        p.in = &joined;
        p.piece = piece;
        Guarded work(EXP_BUFFER_SIZE);
        ASSERT_EQ(explode(PipeRead, PipeWrite, work.Work(), &p), CMP_NO_ERROR);
        EXPECT_TRUE(p.out == plain);
        EXPECT_EQ(explode_used(work.Work()), packed.size()) << piece;
        EXPECT_TRUE(work.Intact());
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
    Bytes mixed = Words(1500, 77);
    Bytes noise = RandomBytes(600, 78);
    mixed.insert(mixed.end(), noise.begin(), noise.end());
    mixed.insert(mixed.end(), 700, 'q');
    mixed.insert(mixed.end(), image.begin(), image.begin() + 500);
    for (unsigned type : {unsigned(CMP_BINARY), unsigned(CMP_ASCII)}) {
        for (unsigned dictBits : {4u, 6u}) {
            for (const Bytes* in : {&image, &mixed}) {
                const Bytes& d = *in;
                const size_t n = d.size(), dict = size_t(64) << dictBits;
                std::vector<unsigned> cost(n + 1, ~0u);
                cost[0] = 0;
                for (size_t i = 0; i < n; ++i) {
                    unsigned lit = dcl::LiteralCost(d[i], type == CMP_ASCII);
                    cost[i + 1] = std::min(cost[i + 1], cost[i] + lit);
                    for (size_t dist = 1; dist <= std::min(i, dict); ++dist) {
                        size_t len = 0;
                        while (i + len < n && len < 518 && d[i + len] == d[i + len - dist])
                            ++len;
                        for (size_t l = 2; l <= len; ++l) {
                            if (l == 2 && dist > 256)
                                continue;
                            unsigned c = cost[i] + dcl::CopyCost(unsigned(l), unsigned(dist), dictBits);
                            cost[i + l] = std::min(cost[i + l], c);
                        }
                    }
                }
                // Header, items, the 16-bit end code, rounded up to whole bytes.
                size_t expected = 2 + (cost[n] + 16 + 7) / 8;
                Bytes packed;
                ASSERT_EQ(Implode(d, type, unsigned(dict), packed, CMP_LEVEL_BEST), CMP_NO_ERROR);
                EXPECT_EQ(packed.size(), expected) << "type " << type << " dict " << dict;
            }
        }
    }
}
