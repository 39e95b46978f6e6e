// Compression benchmark for implode/explode.
//
// For every input: the compressed size as a fraction of the input and the speed
// of compression and expansion in MB/s of uncompressed data, at the fastest,
// default and best levels (the fastest of several runs each), binary mode, 4,096-byte dictionary (the library's own
// setting). Without arguments it builds its own corpus: English-like text,
// this program's DLL (an executable), rows of a 24-bit image and random bytes.
// Files named on the command line are measured instead.
//
//   bench_dcl [--ascii] [--dict 1024|2048|4096] [--level N]... [FILE...]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <string>
#include <vector>
#include "rl132/streams/vimplode.h"

namespace {

typedef std::vector<unsigned char> Bytes;

struct Io {
    const unsigned char* in;
    size_t size, pos;
    unsigned char* out;
    size_t outPos, outCap;
};

unsigned Read(char* buf, unsigned* size, void* param)
{
    Io& io = *static_cast<Io*>(param);
    size_t n = io.size - io.pos;
    if (n > *size)
        n = *size;
    memcpy(buf, io.in + io.pos, n);
    io.pos += n;
    return unsigned(n);
}

void Write(char* buf, unsigned* size, void* param)
{
    Io& io = *static_cast<Io*>(param);
    size_t n = *size;
    if (n > io.outCap - io.outPos)
        n = io.outCap - io.outPos;   // never past the buffer; the size check reports it
    memcpy(io.out + io.outPos, buf, n);
    io.outPos += n;
}

double Now()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// A small pseudo-random generator, so every run measures the same corpus.
struct Rng {
    uint32_t s;
    explicit Rng(uint32_t seed) : s(seed) {}
    uint32_t Next()
    {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        return s;
    }
};

const char* const kWords[] = {
    "the", "of", "and", "to", "a", "in", "that", "is", "was", "he", "for", "it", "with", "as",
    "his", "on", "be", "at", "by", "I", "this", "had", "not", "are", "but", "from", "or", "have",
    "an", "they", "which", "one", "you", "were", "her", "all", "she", "there", "would", "their",
    "we", "him", "been", "has", "when", "who", "will", "more", "no", "if", "out", "so", "said",
    "what", "up", "its", "about", "into", "than", "them", "can", "only", "other", "new", "some",
    "could", "time", "these", "two", "may", "then", "do", "first", "any", "my", "now", "such",
    "like", "our", "over", "man", "me", "even", "most", "made", "after", "also", "did", "many",
    "before", "must", "through", "back", "years", "where", "much", "your", "way", "well", "down",
    "should", "because", "each", "just", "those", "people", "how", "too", "little", "state",
    "good", "very", "make", "world", "still", "own", "see", "men", "work", "long", "get", "here",
    "between", "both", "life", "being", "under", "never", "day", "same", "another", "know",
    "while", "last", "might", "us", "great", "old", "year", "off", "come", "since", "against",
    "go", "came", "right", "used", "take", "three", "house", "himself", "few", "during",
    "without", "again", "place", "around", "however", "home", "small", "found", "thought",
    "went", "say", "part", "once", "general", "high", "upon", "school", "every", "does", "got",
    "united", "left", "number", "course", "war", "until", "always", "away", "something", "fact",
    "though", "water", "less", "public", "put", "think", "almost", "hand", "enough", "far",
    "took", "head", "yet", "government", "system", "better", "set", "told", "nothing", "night",
    "end", "why", "called", "didn't", "eyes", "find", "going", "look", "asked", "later", "knew",
    "point", "next", "program", "city", "business", "give", "group", "toward", "young", "days",
    "let", "room", "president", "side", "social", "given", "present", "several", "order",
    "national", "possible", "rather", "second", "face", "per", "among", "form", "important",
    "often", "things", "looked", "early", "white", "case", "John", "become", "large", "big",
    "need", "four", "within", "felt", "along", "children", "saw", "best", "church", "ever",
    "least", "power", "development", "light", "thing", "family", "interest", "want", "members",
    "mind", "country", "area", "others", "done", "turned", "although", "open", "God", "service",
    "certain", "kind", "problem", "began", "different", "door", "thus", "help", "sense", "means",
    "whole", "matter", "perhaps", "itself", "York", "it's", "times", "law", "human", "line",
    "above", "name", "example", "action", "company", "hands", "local", "show", "whether", "five",
    "history", "gave", "today", "either", "act", "feet", "across", "taken", "past", "quite",
    "anything", "seen", "having", "death", "week", "experience", "body", "word", "half",
    "really", "field", "am", "car", "words", "already", "themselves", "information", "tell",
    "together", "college", "shall", "money", "period", "held", "keep", "sure", "probably",
    "free", "seems", "political", "real", "behind", "cannot", "question", "air", "office",
    "making", "brought", "whose", "special", "heard", "major", "problems", "ago", "became",
    "federal", "moment", "study", "available", "known", "result", "street", "economic", "boy"};

// English-like prose: words drawn with a skewed distribution, sentences and
// paragraphs, lines wrapped at 72 columns.
Bytes MakeText(size_t size)
{
    Rng rng(12345);
    const unsigned nWords = sizeof kWords / sizeof kWords[0];
    Bytes out;
    out.reserve(size + 100);
    size_t column = 0;
    bool capital = true;
    unsigned sentence = 0;
    while (out.size() < size) {
        uint32_t r = rng.Next();
        // Squaring a uniform value favours the common words at the front.
        unsigned i = unsigned((uint64_t(r >> 16) * (r >> 16) * nWords) >> 32);
        std::string w = kWords[i % nWords];
        if (capital)
            w[0] = char(toupper(w[0]));
        capital = false;
        ++sentence;
        if (sentence > 6 && rng.Next() % 6 == 0) {
            unsigned p = rng.Next() % 10;
            w += p < 7 ? "." : p < 9 ? "?" : "!";
            capital = true;
            sentence = 0;
        } else if (rng.Next() % 11 == 0) {
            w += ",";
        }
        if (column + w.size() + 1 > 72) {
            out.push_back('\r');
            out.push_back('\n');
            column = 0;
            if (capital && rng.Next() % 5 == 0) {
                out.push_back('\r');
                out.push_back('\n');
            }
        } else if (column) {
            out.push_back(' ');
            ++column;
        }
        out.insert(out.end(), w.begin(), w.end());
        column += w.size();
    }
    out.resize(size);
    return out;
}

// Rows of a 24-bit photograph-like image: smooth shading, a few hard-edged
// shapes and sensor noise in the low bits.
Bytes MakeImage(size_t size)
{
    Rng rng(777);
    const unsigned width = 1024;
    const unsigned stride = width * 3;
    Bytes out(size);
    for (size_t y = 0; y * stride < size; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            size_t at = y * stride + x * 3;
            if (at + 3 > size)
                break;
            int r = int((x * 255) / width), g = int((y * 3) & 255), b = int((x + y) / 5 & 255);
            if (((x / 128) + (y / 96)) % 5 == 0) {
                r = 230;
                g = 40;
                b = 60;
            }
            if ((x - 500) * (x - 500) + (y - 300) * (y - 300) < 150 * 150) {
                r = 20;
                g = 200 - int(y & 63);
                b = 90;
            }
            int noise = int(rng.Next() % 5) - 2;
            out[at] = (unsigned char)std::min(255, std::max(0, b + noise));
            out[at + 1] = (unsigned char)std::min(255, std::max(0, g + noise));
            out[at + 2] = (unsigned char)std::min(255, std::max(0, r + noise));
        }
    }
    return out;
}

Bytes MakeRandom(size_t size)
{
    Rng rng(99);
    Bytes out(size);
    for (auto& b : out)
        b = (unsigned char)(rng.Next() >> 24);
    return out;
}

bool ReadFile(const char* name, Bytes& out)
{
    FILE* f = fopen(name, "rb");
    if (!f)
        return false;
    unsigned char chunk[65536];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, f)) > 0)
        out.insert(out.end(), chunk, chunk + n);
    fclose(f);
    return true;
}

std::vector<unsigned> gLevels;

void Measure(const char* name, const Bytes& in, unsigned type, unsigned dict)
{
    const std::vector<unsigned>& levels = gLevels;
    std::vector<char> work(implode_work_size(CMP_LEVEL_BEST));
    std::vector<char> ework(EXP_BUFFER_SIZE);
    // Worst-case growth is under 14/8 of the input; leave room for headers.
    Bytes packed(in.size() * 2 + 64), back(in.size() + 64);
    double mb = in.size() / 1e6;
    for (unsigned level : levels) {
        Io io = {in.data(), in.size(), 0, packed.data(), 0, packed.size()};
        unsigned t = type, d = dict;
        // The machine is shared: report the fastest of several runs.
        double best = 1e9, start = Now();
        int runs = 0;
        do {
            io.pos = io.outPos = 0;
            double t0 = Now();
            implode_level(Read, Write, work.data(), unsigned(work.size()), &io, &t, &d, level);
            best = std::min(best, Now() - t0);
            ++runs;
        } while ((Now() - start < 0.5 || runs < 3) && runs < 40);
        double cspeed = mb / best;
        size_t packedSize = io.outPos;

        Io eo = {packed.data(), packedSize, 0, back.data(), 0, back.size()};
        unsigned rc = 0;
        best = 1e9;
        start = Now();
        runs = 0;
        do {
            eo.pos = eo.outPos = 0;
            double t0 = Now();
            rc = explode(Read, Write, ework.data(), &eo);
            best = std::min(best, Now() - t0);
            ++runs;
        } while ((Now() - start < 0.5 || runs < 3) && runs < 200);
        double espeed = mb / best;
        bool same = rc == 0 && eo.outPos == in.size() && memcmp(back.data(), in.data(), in.size()) == 0;
        printf("%-14s %9u  level %u  ratio %.4f  compress %7.1f MB/s  expand %7.1f MB/s%s\n", name,
               unsigned(in.size()), level, in.empty() ? 0.0 : double(packedSize) / in.size(), cspeed,
               espeed, same ? "" : "  ROUND TRIP FAILED");
        fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    unsigned type = CMP_BINARY, dict = 4096;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--ascii") == 0)
            type = CMP_ASCII;
        else if (strcmp(argv[i], "--dict") == 0 && i + 1 < argc)
            dict = unsigned(atoi(argv[++i]));
        else if (strcmp(argv[i], "--level") == 0 && i + 1 < argc)
            gLevels.push_back(unsigned(atoi(argv[++i])));
        else
            files.push_back(argv[i]);
    }
    if (gLevels.empty())
        gLevels = {CMP_LEVEL_FASTEST, CMP_LEVEL_DEFAULT, CMP_LEVEL_BEST};
    printf("implode %s, dictionary %u bytes\n", type == CMP_ASCII ? "ASCII" : "binary", dict);
    if (!files.empty()) {
        for (const char* f : files) {
            Bytes data;
            if (!ReadFile(f, data)) {
                fprintf(stderr, "bench_dcl: cannot read %s\n", f);
                return 1;
            }
            const char* base = strrchr(f, '/');
            Measure(base ? base + 1 : f, data, type, dict);
        }
        return 0;
    }
    Measure("text", MakeText(3u << 20), type, dict);
    // The library itself stands for an executable; it sits beside this program.
    std::string self = argv[0];
    size_t slash = self.find_last_of("\\/");
    std::string dll = (slash == std::string::npos ? std::string() : self.substr(0, slash + 1)) + "RL132.dll";
    Bytes exe;
    if (ReadFile(dll.c_str(), exe) || ReadFile(argv[0], exe))
        Measure("executable", exe, type, dict);
    Measure("image rows", MakeImage(3u << 20), type, dict);
    Measure("random", MakeRandom(1u << 20), type, dict);
    return 0;
}
