// vSTRING, vINT and vREAL on streams: the string's length word and characters,
// long strings becoming compressed blocks, and strings whose length word
// promises more than the stream holds.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include "stream_util.h"

using namespace streamtest;

namespace {
vSTRING Text(const std::string& s) { return vSTRING("%s", s.c_str()); }

// Text of n characters without '%' (the formatting constructor would read it).
std::string Words(size_t n, unsigned int seed)
{
    Bytes b = Compressible(n, seed);
    return std::string(b.begin(), b.end());
}
} // namespace

TEST(StreamValue, StringIsALengthWordAndItsCharacters)
{
    vMEMSTREAM m;
    vSTRING() >> m;
    Text("abc") >> m;
    const unsigned char expected[] = {0, 0, 3, 0, 'a', 'b', 'c'};
    ASSERT_EQ(m.Size(), sizeof expected);
    EXPECT_EQ(memcmp(m.Buffer(), expected, sizeof expected), 0);
    m.MoveFromStart(0);
    vSTRING a = Text("old"), b;
    a << m;
    b << m;
    EXPECT_STREQ(a(), "");
    EXPECT_STREQ(b(), "abc");
    EXPECT_EQ(m.Status(), vSTREAM_OK);
}

TEST(StreamValue, LengthWordBeyondTheDataReadsWhatExists)
{
    unsigned char data[] = {10, 0, 'a', 'b'};
    unsigned char* p = data;
    vMEMSTREAM m(&p, sizeof data, vSTRING(), 0, 0);
    vSTRING s;
    s << m;
    EXPECT_STREQ(s(), "ab");
    EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);

    // A lone byte where the length word should be.
    unsigned char one[] = {5};
    p = one;
    vMEMSTREAM n(&p, 1, vSTRING(), 0, 0);
    vSTRING t = Text("keep");
    t << n;
    EXPECT_EQ(n.Status(), vSTREAM_SHORTREAD);
    EXPECT_STREQ(t(), "");

    // On a file the same.
    TempFile tmp;
    PutFile(tmp.path, Bytes({0xFF, 0xFF, 'x', 'y', 'z'}));
    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    vSTRING u;
    u << f;
    EXPECT_STREQ(u(), "xyz");
    EXPECT_EQ(f.Status(), vSTREAM_SHORTREAD);
}

TEST(StreamValue, LongStringOnACompressingStreamBecomesABlock)
{
    std::string longText = Words(20000, 31);
    TempFile tmp;
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        f.Compress(1);
        vSTRING s(Text("x"));
        s = longText.c_str();
        ASSERT_EQ(s.Length(), 20000);
        s >> f;
        Text("short") >> f;
        vINT(77) >> f;
    }
    Bytes disk = FileBytes(tmp.path);
    ASSERT_GT(disk.size(), 10u);
    EXPECT_EQ(disk[0] | (disk[1] << 8), 20000);
    EXPECT_EQ(LE32(&disk[2]), 0x0012AAB1UL);
    EXPECT_LT(disk.size(), 20000u / 3);
    // The short string did not shrink, so it is raw behind the frame.
    size_t at = 2 + 8 + LE32(&disk[6]);
    ASSERT_LE(at + 7, disk.size());
    EXPECT_EQ(memcmp(&disk[at], "\x05\x00short", 7), 0);

    vFILE f(tmp.Name(), vFILE_READONLY, 0);
    vSTRING a, b;
    vINT i;
    a << f;
    b << f;
    i << f;
    EXPECT_EQ(std::string(a()), longText);
    EXPECT_STREQ(b(), "short");
    EXPECT_EQ(i(), 77);
    EXPECT_EQ(f.Status(), vSTREAM_OK);
    EXPECT_TRUE(f.AtEnd());
}

TEST(StreamValue, StringsRoundTripThroughEveryStream)
{
    std::vector<std::string> texts = {"", "a", "hello world", Words(1023, 1), Words(1024, 2),
                                      Words(1025, 3), Words(65535, 4)};
    Rng r(8);
    std::string noise;
    for (int i = 0; i < 3000; ++i)
        noise.push_back((char)('!' + r.Next() % 4 + (r.Next() % 90 == 0 ? 0 : 1 + r.Next() % 80)));
    for (char& c : noise)
        if (c == '%')
            c = '&';
    texts.push_back(noise);

    for (int compress = 0; compress < 2; ++compress) {
        vFILE file;
        vMEMSTREAM mem;
        IStream* ole = nullptr;
        typedef HRESULT(WINAPI * Create)(HGLOBAL, BOOL, IStream**);
        HMODULE lib = LoadLibraryA("ole32.dll");
        Create create = (Create)(void*)GetProcAddress(lib, "CreateStreamOnHGlobal");
        ASSERT_NE(create, nullptr);
        create(nullptr, TRUE, &ole);
        {
            vOLESTREAM os(&ole, vSTRING(), 0);
            vSTREAM* streams[] = {&file, &mem, &os};
            for (vSTREAM* s : streams) {
                s->Compress(compress);
                for (const std::string& t : texts) {
                    vSTRING v;
                    v = t.c_str();
                    v >> *s;
                    vREAL(vREAL::FromRaw((long)t.size() * 3)) >> *s;
                }
                s->MoveFromStart(0);
                for (const std::string& t : texts) {
                    vSTRING v;
                    vREAL n;
                    v << *s;
                    n << *s;
                    ASSERT_EQ(std::string(v()), t) << compress;
                    ASSERT_EQ(n(), (long)t.size() * 3);
                }
                EXPECT_EQ(s->Status(), vSTREAM_OK);
                EXPECT_TRUE(s->AtEnd());
            }
        }
        ole->Release();
    }
}
