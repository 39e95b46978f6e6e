// One random sequence of typed reads, writes and moves through a file (cached or
// not), a memory stream and an OLE stream against a plain byte-vector model.
#include <gtest/gtest.h>
#include <memory>
#include "stream_util.h"

using namespace streamtest;

namespace {
Bytes OleBytes(IStream* s)
{
    STATSTG st;
    s->Stat(&st, STATFLAG_NONAME);
    Bytes out(st.cbSize.LowPart);
    LARGE_INTEGER zero;
    zero.QuadPart = 0;
    s->Seek(zero, STREAM_SEEK_SET, nullptr);
    s->Read(out.data(), (ULONG)out.size(), nullptr);
    return out;
}
} // namespace

TEST(StreamClasses, OneSequenceThroughEveryStreamGivesTheSameBytesAndStatuses)
{
    for (unsigned seed = 1; seed <= 8; ++seed) {
        TempFile plain("cp"), cached("cc");
        IStream* ole = NewOleStream();
        ASSERT_NE(ole, nullptr);
        std::unique_ptr<vSTREAM> streams[] = {
            std::unique_ptr<vSTREAM>(new vFILE(plain.Name(), vFILE_WRITENEW, 0)),
            std::unique_ptr<vSTREAM>(new vFILE(cached.Name(), vFILE_WRITENEW, 1)),
            std::unique_ptr<vSTREAM>(new vMEMSTREAM()), std::unique_ptr<vSTREAM>(new vOLESTREAM(&ole, vSTRING(), 0))};
        Bytes data;   // the model: bytes, position, status
        unsigned long pos = 0;
        vSTREAMSTATUS status = vSTREAM_OK;
        auto write = [&](const unsigned char* b, unsigned long n) {
            data.resize(std::max<size_t>(data.size(), pos + n));
            std::copy(b, b + n, data.begin() + pos);
            pos += n;
        };
        auto read = [&](unsigned long n) {   // missing bytes read as 0
            Bytes out(n, 0);
            unsigned long take = std::min(n, (unsigned long)data.size() - pos);
            std::copy(data.begin() + pos, data.begin() + pos + take, out.begin());
            pos += take;
            if (take < n)
                status = vSTREAM_SHORTREAD;
            return out;
        };
        Rng rng(seed);
        for (int op = 0; op < 400; ++op) {
            unsigned kind = rng.Next() % 12;
            bool swap = rng.Next() % 2;
            unsigned long v = rng.Next(), want = 0;
            // Never the frame's first byte: these runs are all raw.
            Bytes run = Incompressible(rng.Next() % (rng.Next() % 8 ? 40 : 3000), rng.Next()), expected;
            for (unsigned char& c : run)
                c = c == 0xB1 || c == 0 ? 0x42 : c;
            unsigned long to = (unsigned long)(data.empty() ? 0 : rng.Next() % (data.size() + 1));
            unsigned n = 4u >> (kind < 3 ? kind : (kind - 4) % 4);   // 4, 2, 1 bytes for writes and reads
            if (kind < 3) {   // typed writes of 4, 2 and 1 bytes
                unsigned char b[4] = {(unsigned char)v, (unsigned char)(v >> 8), (unsigned char)(v >> 16), (unsigned char)(v >> 24)};
                write(b, n);
                want = 1;
            } else if (kind == 3) {   // byte strings and plain blocks
                write(run.data(), (unsigned long)run.size());
                want = (unsigned long)run.size();
                run.push_back(0);
            } else if (kind < 7) {   // typed reads, swapped or not
                Bytes b = read(n);
                for (size_t i = 0; i < n; ++i)
                    want |= (unsigned long)b[swap ? n - 1 - i : i] << (8 * i);
            } else if (kind < 9) {   // byte-string reads, sometimes past the end
                unsigned long count = rng.Next() % (kind == 7 ? 64 : 5000);
                want = std::min(count, (unsigned long)data.size() - pos);
                expected = read(count);
            } else {
                pos = want = to;
                status = vSTREAM_OK;
            }
            for (int s = 0; s < 4; ++s) {
                vSTREAM& st = *streams[s];
                st.SwapByteOrder(swap);
                unsigned long got = 0;
                switch (kind) {
                case 0: got = v & 1 ? st.WriteSLong((long)v) : st.WriteULong(v); break;
                case 1: got = v & 1 ? st.WriteSWord((short)v) : st.WriteUWord((unsigned short)v); break;
                case 2: got = v & 1 ? st.WriteSByte((signed char)v) : st.WriteUByte((unsigned char)v); break;
                case 3: got = v & 1 ? st.WriteByteString(run.data()) : st.WriteBlock(run.data(), (unsigned long)run.size() - 1); break;
                case 4: got = v & 1 ? (unsigned long)st.ReadSLong() : st.ReadULong(); break;
                case 5: got = v & 1 ? (unsigned short)st.ReadSWord() : st.ReadUWord(); break;
                case 6: got = v & 1 ? (unsigned char)st.ReadSByte() : st.ReadUByte(); break;
                case 7: case 8: {
                    Bytes back(expected.size() + 4, 0xEE);
                    got = (unsigned long)st.ReadByteString(back.data(), (unsigned long)expected.size());
                    EXPECT_TRUE(std::equal(back.begin(), back.begin() + got, expected.begin())) << s;
                    EXPECT_EQ(Bytes(back.end() - 4, back.end()), Bytes(4, 0xEE)) << s;
                    EXPECT_EQ(st.UnCompressed(), 0) << s;
                    break;
                }
                default: got = st.MoveFromStart(to); break;
                }
                ASSERT_EQ(got, want) << "stream " << s << " op " << op << " kind " << kind;
                ASSERT_EQ(st.Status(), status) << "stream " << s << " op " << op << " kind " << kind;
                ASSERT_EQ(st.CurrentPos(), pos) << "stream " << s << " op " << op << " kind " << kind;
            }
        }
        // A last read past the end; writing nothing, with no data at all, is no failure.
        for (auto& st : streams) {
            st->MoveFromStart((unsigned long)data.size());
            EXPECT_EQ(st->ReadULong(), 0UL);
            EXPECT_EQ(st->Status(), vSTREAM_SHORTREAD);
            st->MoveFromStart((unsigned long)data.size());
            for (int compress = 0; compress < 2; ++compress) {
                st->Compress(compress);
                EXPECT_TRUE(st->WriteBlock(nullptr, 0) == 0UL && st->ReadByteString(nullptr, 0) == 0);
                EXPECT_EQ(st->Status(), vSTREAM_OK);
            }
        }
        const vMEMSTREAM& mem = static_cast<vMEMSTREAM&>(*streams[2]);
        EXPECT_EQ(Bytes(mem.Buffer(), mem.Buffer() + mem.Size()), data);
        for (auto& st : streams)
            st.reset();
        EXPECT_EQ(FileBytes(plain.path), data);
        EXPECT_EQ(FileBytes(cached.path), data);
        EXPECT_EQ(OleBytes(ole), data);
        ole->Release();
    }
}
