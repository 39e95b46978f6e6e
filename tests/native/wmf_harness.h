// Shared by the guard's native test and its fuzz program: walks a metafile the
// way playback does (header, then every record through the check and the
// filter) and holds the guard to its contract on every step.
#ifndef RL132_TESTS_NATIVE_WMF_HARNESS_H
#define RL132_TESTS_NATIVE_WMF_HARNESS_H
#include <initializer_list>
#include "metafiles/wmfguard.h"
#include "native_support.h"

namespace wmffuzz {

// `data` must be a block of exactly `size` bytes. Returns false (with the
// reason in rlnative::LastFailure) when the guard broke its contract; the
// records played go to *played when it is given.
inline bool Run(const unsigned char* data, std::size_t size, unsigned* played = nullptr)
{
    using namespace rlwmf;
    HeaderInfo info;
    if (size > 0x7FFFFFFF || ParseHeader(data, (std::uint32_t)size, &info) != kHeaderOk)
        return true;
    if (info.firstRecord > size)
        return rlnative::Fail("first record past the data");
    std::uint32_t rest = (std::uint32_t)size - info.firstRecord;
    std::uint32_t handles = ClampObjects(info.meta.objects, rest);
    if (handles > info.meta.objects || handles > rest / 10)
        return rlnative::Fail("handle table larger than the clamp allows");
    unsigned n = 0;
    for (std::uint32_t at = info.firstRecord; at < size;) {
        std::uint32_t bytes = 0, again = 0;
        RecordVerdict v = CheckRecord(data + at, (std::uint32_t)size - at, handles, &bytes);
        if (EndsPlayback(v))
            break;
        if (bytes < 6 || bytes > size - at)
            return rlnative::Fail("framed size outside the data");
        // The verdict depends on the record alone: a copy of exactly its
        // bytes gets the same one, and the check reads nothing past it.
        rlnative::Exact copy(bytes);
        std::memcpy(copy.p, data + at, bytes);
        if (CheckRecord(copy.p, bytes, handles, &again) != v || again != bytes)
            return rlnative::Fail("verdict depends on bytes after the record");
        if (v == kRecordOk) {
            std::uint16_t function = Word(copy.p + 4);
            Action a = FilterAction(function);
            if (a == kEnd)
                break;
            std::uint16_t params[8];
            if ((a == kPlayRect || a == kPlayArc) && bytes >= 6 + 16) {
                std::memcpy(params, copy.p + 6, 16);
                for (int o : {0, 1, 4, 5}) {
                    std::uint16_t p[8];
                    std::memcpy(p, params, 16);
                    a == kPlayRect ? (ReorientRect(p, o), ReorientRect(p, o)) : (ReorientArc(p, o), ReorientArc(p, o));
                    if (std::memcmp(p, params, 16) != 0)
                        return rlnative::Fail("a correction applied twice is not the identity");
                }
            }
            ++n;
        }
        at += bytes;
    }
    if (played)
        *played = n;
    return true;
}

} // namespace wmffuzz

#endif
