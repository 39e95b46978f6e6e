// The file stream against a byte-vector model of a disk of the script's size
// (file_test.cpp, fuzz_file.cpp). With the cache a full disk shows only when the
// cache goes out: once a write reached past the disk's end the status may read
// a write error, the rest stays exact. On a failing medium only consistency counts.
#ifndef RL132_TESTS_NATIVE_FILE_HARNESS_H
#define RL132_TESTS_NATIVE_FILE_HARNESS_H
#include <cstdio>
#include <string>
#include <vector>
#include <unistd.h>
#include "native_support.h"
#include "rl132/core/vstring.h"
#include "rl132/streams/vfile.h"
#include "streams/frame.h"
#include "sys_file_faults.h"

namespace rlnative {

class Script {
public:
    Script(const unsigned char* d, size_t n) : data(d), size(n), at(0) {}
    bool More() const { return at < size; }
    // The next byte, 0 once the script has ended.
    unsigned Byte() { return at < size ? data[at++] : 0; }
    unsigned Below(unsigned bound) { return bound ? (Byte() | Byte() << 8) % bound : 0; }
private:
    const unsigned char* data;
    size_t size, at;
};

struct FileModel {
    std::vector<unsigned char> data;
    unsigned long pos = 0;
    unsigned long limit = ~0UL;
    vSTREAMSTATUS status = vSTREAM_OK;
    bool overflowed = false;  // some write reached the disk's end

    // What the disk takes of n bytes written at the position.
    unsigned long Fits(unsigned long n) const { return pos >= limit ? 0 : (n < limit - pos ? n : limit - pos); }
    void Put(const unsigned char* b, unsigned long n)
    {
        if (n && pos + n > data.size())
            data.resize(pos + n);
        if (n)
            std::memcpy(data.data() + pos, b, n);
    }
    // A write that goes to the disk at once: the position follows what it took.
    unsigned long WriteDirect(const unsigned char* b, unsigned long n)
    {
        unsigned long take = Fits(n);
        Put(b, take);
        pos += take;
        if (take < n) {
            status = vSTREAM_WRITEERROR;
            overflowed = true;
        }
        return take;
    }
    // A write into the cache: all of it, as far as the stream can tell.
    unsigned long WriteCached(const unsigned char* b, unsigned long n)
    {
        unsigned long take = Fits(n);
        Put(b, take);
        overflowed |= take < n;
        return pos += n, n;
    }
    unsigned long Have() const { return pos < data.size() ? (unsigned long)data.size() - pos : 0; }
    std::vector<unsigned char> Read(unsigned long n)
    {
        std::vector<unsigned char> out(n, 0);
        unsigned long take = n < Have() ? n : Have();
        if (take)
            std::memcpy(out.data(), data.data() + pos, take);
        pos += take;
        if (take < n)
            status = vSTREAM_SHORTREAD;
        return out;
    }
};

// A temporary path that is removed when the harness ends.
struct ScratchFile {
    std::string path;
    ScratchFile()
    {
        const char* dir = getenv("TMPDIR");
        char name[512];
        std::snprintf(name, sizeof name, "%s/rlnfXXXXXX", dir && *dir ? dir : "/tmp");
        int fd = mkstemp(name);
        if (fd >= 0)
            close(fd);
        path = name;
    }
    ~ScratchFile() { unlink(path.c_str()); }
};

inline std::vector<unsigned char> ReadWholeFile(const std::string& path)
{
    std::vector<unsigned char> out;
    FILE* f = std::fopen(path.c_str(), "rb");
    for (int c; f && (c = std::fgetc(f)) != EOF;)
        out.push_back((unsigned char)c);
    if (f)
        std::fclose(f);
    return out;
}

// Runs one script; false on the first disagreement with the model.
inline bool FileAgainstModel(const unsigned char* bytes, size_t size)
{
    Script sc(bytes, size);
    const unsigned flags = sc.Byte();
    int cached = flags & 1;
    const bool failingReads = (flags & 0x0E) == 0x0E;
    FileModel m;
    if (flags & 0x30)
        m.limit = sc.Below((flags & 0x20) ? 6000 : 300);
    ScratchFile tmp;
    rlsys::faults::Reset();
    rlsys::faults::SetDiskLimit(m.limit == ~0UL ? ~0ULL : m.limit);
    if (failingReads)
        rlsys::faults::FailReadsAfter((long)sc.Below(12));
    bool ok = true;
    {
        vFILE f(vSTRING("%s", tmp.path.c_str()), vFILE_WRITENEW, cached);
        if (f.Status() != vSTREAM_OK) {
            rlsys::faults::Reset();
            return Fail("the scratch file did not open");
        }
        auto statusOk = [&] {
            vSTREAMSTATUS st = f.Status();
            if (failingReads)
                return true;
            return st == m.status || (cached && m.overflowed && st == vSTREAM_WRITEERROR);
        };
        for (int op = 0; ok && op < 200 && sc.More(); ++op) {
            unsigned kind = sc.Below(16);
            std::vector<unsigned char> run;
            // Writes: typed values, byte strings, runs raw or as whole frames.
            if (kind <= 5) {
                unsigned long n = kind == 5 ? sc.Below(sc.Byte() & 1 ? 3000 : 40) : 0;
                run.resize(kind == 5 ? n : kind == 4 ? 1 + sc.Below(30) : (kind == 0 ? 4 : kind == 1 ? 2 : 1));
                Rng fill(sc.Byte());
                for (unsigned char& c : run)
                    c = (unsigned char)(1 + fill.Below(255));  // no zero: byte strings end at one
                if (kind == 5 && sc.Below(2) == 0 && run.size() > 16) {
                    // A frame written as raw bytes: reads must expand it.
                    for (size_t i = 0; i < run.size(); ++i)
                        run[i] = run[i % 7];
                    std::vector<unsigned char> framed(run.size() + 8);
                    unsigned long fn = rlframe::Pack(run.data(), (unsigned long)run.size(), framed.data(),
                                                     (unsigned long)framed.size());
                    if (fn)
                        run.assign(framed.begin(), framed.begin() + fn);
                }
                const unsigned long n2 = (unsigned long)run.size();
                unsigned long got, want;
                bool direct = !cached || n2 > vFILE_CACHESIZE;
                if (kind <= 3) {
                    unsigned long v = run[0] | (unsigned long)run[n2 > 1 ? 1 : 0] << 8 |
                                      (unsigned long)run[n2 > 3 ? 2 : 0] << 16 | (unsigned long)run[n2 > 3 ? 3 : 0] << 24;
                    got = kind == 0 ? f.WriteULong(v) : kind == 1 ? f.WriteSWord((short)v) : f.WriteUByte((unsigned char)v);
                    want = (direct ? m.WriteDirect(run.data(), n2) : m.WriteCached(run.data(), n2)) == n2 ? 1 : 0;
                } else if (kind == 4) {
                    run.push_back(0);
                    got = f.WriteByteString(run.data());
                    run.pop_back();
                    want = direct ? m.WriteDirect(run.data(), n2) : m.WriteCached(run.data(), n2);
                } else if (m.limit == ~0UL && sc.Below(3) == 0 && n2 > 0) {
                    // A compressing write: the frame when it is smaller, else raw,
                    // save for a run that would read as a frame: its own frame.
                    std::vector<unsigned char> framed(2 * n2 + 100);
                    const int always = rlframe::Peek(run.data(), n2).frame;
                    unsigned long fn = rlframe::Pack(run.data(), n2, framed.data(), (unsigned long)framed.size(), always);
                    f.Compress(1);
                    got = f.WriteBlock(run.data(), n2);
                    f.Compress(0);
                    if (fn)
                        m.Put(framed.data(), fn), m.pos += fn, want = fn;
                    else
                        m.Put(run.data(), n2), m.pos += n2, want = n2;
                } else {
                    got = f.WriteBlock(run.data(), n2);
                    want = direct ? m.WriteDirect(run.data(), n2) : m.WriteCached(run.data(), n2);
                    if (cached && direct)  // the cache's large path reports the count, whatever the disk took
                        want = n2;
                }
                ok = failingReads || got == want;
                // Often straight back, so that reads meet frames and values at their starts.
                if (ok && (sc.Byte() & 3) == 0) {
                    unsigned long back = m.pos < n2 ? m.pos : n2;
                    if (m.pos > m.data.size())
                        back = 0;
                    m.pos -= back;
                    m.status = vSTREAM_OK;
                    f.MoveFromCur(-(long)back);
                }
            } else if (kind <= 8) {
                // Typed reads, either byte order.
                bool swap = sc.Byte() & 1;
                f.SwapByteOrder(swap);
                unsigned n = kind == 6 ? 4 : kind == 7 ? 2 : 1;
                std::vector<unsigned char> b = m.Read(n);
                unsigned long want = 0;
                for (unsigned i = 0; i < n; ++i)
                    want |= (unsigned long)b[swap ? n - 1 - i : i] << (8 * i);
                unsigned long got = kind == 6 ? f.ReadULong() : kind == 7 ? f.ReadUWord() : f.ReadUByte();
                ok = failingReads || got == want;
            } else if (kind <= 11) {
                // Byte strings: a frame at the position is expanded.
                unsigned long count = sc.Below(kind == 9 ? 16 : 5000);
                bool detect = sc.Byte() % 4 != 0;
                f.DetectCompressed(detect);
                vSTREAMSTATUS before = m.status;
                rlframe::Verdict v = {0, 0, 0, 0};
                if (detect && count >= 4 && m.Have() >= 4)
                    v = rlframe::Peek(m.data.data() + m.pos, m.Have());
                std::vector<unsigned char> want;
                unsigned long deliver;
                if (v.frame) {
                    deliver = v.expanded < count ? v.expanded : count;
                    want.resize(deliver + 1);
                    rlframe::Expand(m.data.data() + m.pos, m.Have(), want.data(), deliver);
                    m.pos += v.stored;
                    m.status = deliver < count ? vSTREAM_SHORTREAD : before;
                } else {
                    deliver = count < m.Have() ? count : m.Have();
                    want = m.Read(count);
                }
                std::vector<unsigned char> back(count + 1, 0xEE);
                long got = f.ReadByteString(back.data(), count);
                ok = got >= 0 && (unsigned long)got <= count && back[count] == 0xEE;
                if (ok && !failingReads)
                    ok = (unsigned long)got == deliver && (deliver == 0 || std::memcmp(back.data(), want.data(), deliver) == 0) &&
                         (f.UnCompressed() != 0) == (v.frame != 0);
            } else if (kind <= 14) {
                // Moves inside the data.
                unsigned long sz = (unsigned long)m.data.size();
                unsigned long to = sc.Below(sz + 1), got;
                if (kind == 12 || m.pos > sz)
                    got = f.MoveFromStart(to);
                else if (kind == 13)
                    got = f.MoveFromCur((long)to - (long)m.pos);
                else
                    got = f.MoveFromEnd(-(long)(sz - to));
                m.pos = to;
                m.status = vSTREAM_OK;
                ok = failingReads || got == to;
            } else {
                // Close and open again: the remembered mode cuts the file, and no cache.
                f.Close();
                ok = f.ReOpen() == 1 && f.Status() == vSTREAM_OK;
                cached = 0;
                m.data.clear();
                m.pos = 0;
                m.status = vSTREAM_OK;
                m.overflowed = false;
            }
            static char why[96];
            if (!ok) {
                std::snprintf(why, sizeof why, "op %d (kind %u): result or bytes", op, kind);
                break;
            }
            if (!failingReads) {
                ok = f.CurrentPos() == m.pos && statusOk();
                if (ok && !cached)
                    ok = f.Size() == m.data.size();
                if (!ok)
                    std::snprintf(why, sizeof why, "op %d (kind %u): position, status or size", op, kind);
            }
            if (!ok)
                LastFailure() = why;
        }
    }
    rlsys::faults::Reset();
    if (ok && !failingReads && ReadWholeFile(tmp.path) != m.data)
        return Fail("the bytes on disk at the end");
    return ok;
}

} // namespace rlnative

#endif
