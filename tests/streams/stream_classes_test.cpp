// The same random sequence of typed reads, writes and moves through a file
// (cached or not), a memory stream and an OLE stream gives the same results,
// positions, statuses and bytes as a plain byte-vector model.
#include <gtest/gtest.h>
#include <memory>
#include "stream_util.h"

using namespace streamtest;

namespace {

// The model: the bytes, the position and the status a sequence leaves.
struct Model {
    Bytes data;
    unsigned long pos = 0;
    vSTREAMSTATUS status = vSTREAM_OK;
    void Write(const unsigned char* b, unsigned long n)
    {
        if (pos + n > data.size())
            data.resize(pos + n);
        std::copy(b, b + n, data.begin() + pos);
        pos += n;
    }
    // Reads n bytes, missing ones as 0, and tells whether all were there.
    Bytes Read(unsigned long n)
    {
        Bytes out(n, 0);
        unsigned long have = (unsigned long)data.size() - pos;
        unsigned long take = n < have ? n : have;
        std::copy(data.begin() + pos, data.begin() + pos + take, out.begin());
        pos += take;
        if (take < n)
            status = vSTREAM_SHORTREAD;
        return out;
    }
};

unsigned long Value(const Bytes& b, bool swap)
{
    unsigned long v = 0;
    for (size_t i = 0; i < b.size(); ++i)
        v |= (unsigned long)b[swap ? b.size() - 1 - i : i] << (8 * i);
    return v;
}

} // namespace

TEST(StreamClasses, OneSequenceThroughEveryStreamGivesTheSameBytesAndStatuses)
{
    for (unsigned seed = 1; seed <= 12; ++seed) {
        TempFile plain("cp"), cached("cc");
        IStream* ole = NewOleStream();
        ASSERT_NE(ole, nullptr);
        std::unique_ptr<vSTREAM> streams[] = {
            std::unique_ptr<vSTREAM>(new vFILE(plain.Name(), vFILE_WRITENEW, 0)),
            std::unique_ptr<vSTREAM>(new vFILE(cached.Name(), vFILE_WRITENEW, 1)),
            std::unique_ptr<vSTREAM>(new vMEMSTREAM()),
            std::unique_ptr<vSTREAM>(new vOLESTREAM(&ole, vSTRING(), 0)),
        };
        Model m;
        Rng rng(seed);
        for (int op = 0; op < 400; ++op) {
            unsigned kind = rng.Next() % 12;
            bool swap = rng.Next() % 2;
            unsigned long v = rng.Next();
            // Never the frame's first byte: these runs are all raw.
            Bytes run = Incompressible(rng.Next() % (rng.Next() % 8 ? 40 : 3000), rng.Next());
            for (unsigned char& c : run)
                c = c == 0xB1 || c == 0 ? 0x42 : c;
            unsigned long to = (unsigned long)(m.data.empty() ? 0 : rng.Next() % (m.data.size() + 1));
            unsigned long results[4];
            Bytes expected;
            unsigned long want = 0;
            switch (kind) {
            case 0: case 1: case 2: { // typed writes of 4, 2 and 1 bytes, signed or not
                unsigned n = kind == 0 ? 4 : kind == 1 ? 2 : 1;
                unsigned char b[4] = {(unsigned char)v, (unsigned char)(v >> 8), (unsigned char)(v >> 16),
                                      (unsigned char)(v >> 24)};
                m.Write(b, n);
                want = 1;
                break;
            }
            case 3: // byte strings and plain blocks
                run.push_back(0);
                m.Write(run.data(), (unsigned long)run.size() - 1);
                want = (unsigned long)run.size() - 1;
                break;
            case 4: case 5: case 6: { // typed reads, swapped or not
                unsigned n = kind == 4 ? 4 : kind == 5 ? 2 : 1;
                want = Value(m.Read(n), swap && n > 1);
                break;
            }
            case 7: case 8: { // byte-string reads, sometimes past the end
                unsigned long n = rng.Next() % (kind == 7 ? 64 : 5000);
                unsigned long have = (unsigned long)m.data.size() - m.pos;
                want = n < have ? n : have;
                expected = m.Read(n);
                break;
            }
            default: // moves inside the data
                m.pos = to;
                m.status = vSTREAM_OK;
                want = to;
                break;
            }
            for (int s = 0; s < 4; ++s) {
                vSTREAM& st = *streams[s];
                st.SwapByteOrder(swap);
                unsigned long got = 0;
                switch (kind) {
                case 0: got = v & 1 ? st.WriteSLong((long)v) : st.WriteULong(v); break;
                case 1: got = v & 1 ? st.WriteSWord((short)v) : st.WriteUWord((unsigned short)v); break;
                case 2: got = v & 1 ? st.WriteSByte((signed char)v) : st.WriteUByte((unsigned char)v); break;
                case 3:
                    got = v & 1 ? st.WriteByteString(run.data())
                                : st.WriteBlock(run.data(), (unsigned long)run.size() - 1);
                    break;
                case 4: got = v & 1 ? (unsigned long)st.ReadSLong() : st.ReadULong(); break;
                case 5: got = v & 1 ? (unsigned short)st.ReadSWord() : st.ReadUWord(); break;
                case 6: got = v & 1 ? (unsigned char)st.ReadSByte() : st.ReadUByte(); break;
                case 7: case 8: {
                    Bytes back(expected.size() + 4, 0xEE);
                    long n = st.ReadByteString(back.data(), (unsigned long)expected.size());
                    got = (unsigned long)n;
                    EXPECT_TRUE(std::equal(back.begin(), back.begin() + n, expected.begin())) << s;
                    EXPECT_EQ(Bytes(back.end() - 4, back.end()), Bytes(4, 0xEE)) << s;
                    EXPECT_EQ(st.UnCompressed(), 0) << s;
                    break;
                }
                default: got = st.MoveFromStart(to); break;
                }
                results[s] = got;
                ASSERT_EQ(st.Status(), m.status) << "stream " << s << " op " << op << " kind " << kind;
                ASSERT_EQ(st.CurrentPos(), m.pos) << "stream " << s << " op " << op << " kind " << kind;
            }
            for (int s = 0; s < 4; ++s)
                ASSERT_EQ(results[s], want) << "stream " << s << " op " << op << " kind " << kind;
        }
        // A last read past the end; writing nothing, with no data at all, is no
        // failure, compressing or not; then the bytes each stream holds.
        for (auto& st : streams) {
            st->MoveFromStart((unsigned long)m.data.size());
            EXPECT_EQ(st->ReadULong(), 0UL);
            EXPECT_EQ(st->Status(), vSTREAM_SHORTREAD);
            st->MoveFromStart((unsigned long)m.data.size());
            for (int compress = 0; compress < 2; ++compress) {
                st->Compress(compress);
                EXPECT_EQ(st->WriteBlock(nullptr, 0), 0UL);
                EXPECT_EQ(st->ReadByteString(nullptr, 0), 0);
                EXPECT_EQ(st->Status(), vSTREAM_OK);
            }
        }
        const vMEMSTREAM& mem = static_cast<vMEMSTREAM&>(*streams[2]);
        EXPECT_EQ(Bytes(mem.Buffer(), mem.Buffer() + mem.Size()), m.data);
        for (auto& st : streams)
            st.reset();
        EXPECT_EQ(FileBytes(plain.path), m.data);
        EXPECT_EQ(FileBytes(cached.path), m.data);
        EXPECT_EQ(OleBytes(ole), m.data);
        ole->Release();
    }
}
