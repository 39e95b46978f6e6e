// The compressed block frame: telling a frame from raw bytes, expanding it,
// stepping over it and writing it, over a byte range in memory or a stream.
//
//     long 0x0012AAB1 | long n | n bytes in the implode format
//
// Raw runs are stored without any mark, so a run whose first bytes happen to
// read like a frame's header is still raw. The verdict therefore rests on the
// whole frame, never on the magic alone:
//
//   a frame   the 8-byte header is all there, its n bytes lie inside what the
//             source holds, and they expand cleanly (the implode stream ends
//             with its end code before the n bytes run out), to exactly the
//             size the caller expects when it names one;
//   raw       anything else: a header cut short, a length past the end, data
//             that is no implode stream, or one that breaks off or expands to
//             another size. The caller then takes the bytes as they stand.
//
// A verdict costs one expansion. Peeking only counts the output; Expand delivers
// it in the same pass, so a reader decodes a frame once.
//
// Plain C++ (no platform headers): the engine runs on this module's own
// callbacks, which keep their state behind the engine's opaque parameter, so
// none of this touches the streams' shared transfer state.
#ifndef RL132_SRC_STREAMS_FRAME_H
#define RL132_SRC_STREAMS_FRAME_H

class vSTREAM;

namespace rlframe {

const unsigned long kMagic = 0x0012AAB1UL;
// The magic and the length in front of the compressed data.
const unsigned long kHeaderBytes = 8;
// "Any size will do": the expected size of a reader that takes what a frame holds.
const unsigned long kAnySize = 0xFFFFFFFFUL;

struct Verdict {
    int frame;               // 1 a frame, 0 raw bytes
    unsigned long stored;    // a frame's bytes on the source (header included); 0 for raw
    unsigned long expanded;  // what a frame expands to; 0 for raw
    unsigned long delivered; // bytes Expand placed in its output (at most its capacity)
};

// True when the four bytes at b are the magic (nothing more is known then).
inline bool StartsWithMagic(const unsigned char* b)
{
    return b[0] == 0xB1 && b[1] == 0xAA && b[2] == 0x12 && b[3] == 0x00;
}

// ---------------------------------------------------------------- in memory
// `data` holds the `size` bytes the source has from the would-be frame on.

Verdict Peek(const unsigned char* data, unsigned long size, unsigned long expected = kAnySize);
// Peek that also places the first `capacity` bytes of the expansion in `out`.
// On a raw verdict `out` may hold a partial expansion: the caller copies the
// raw bytes over it.
Verdict Expand(const unsigned char* data, unsigned long size, unsigned char* out,
               unsigned long capacity, unsigned long expected = kAnySize);

// Implodes count bytes (binary literals, 4,096-byte dictionary) and, when the
// compressed data is shorter than count (or whatever its size, with `always`),
// writes the whole frame to `out`; returns the frame's size, or 0 when the
// bytes are to be stored raw (the frame would not be smaller, it does not fit
// in capacity, or no work area).
unsigned long Pack(const unsigned char* data, unsigned long count, unsigned char* out,
                   unsigned long capacity, int always = 0);

// ---------------------------------------------------------------- on a stream
// The would-be frame starts at the stream's position. Raw reads here never
// expand anything and leave the stream's last-read-was-compressed flag alone.

// Looks without moving: position and status are as they were.
Verdict Peek(vSTREAM& s, unsigned long expected = kAnySize);
// A frame: the expansion's first `capacity` bytes go to `out` and the stream
// is left just behind the frame. Raw: the stream is back where it was (`out`
// as with the memory form). The status is as it was in both cases.
Verdict Expand(vSTREAM& s, unsigned char* out, unsigned long capacity,
               unsigned long expected = kAnySize);
// A frame: expands it into `target` through its WriteBlock with compression
// off for each piece and on after it (the target ends up compressing), and
// leaves s behind the frame. Raw: nothing is written and s stays put.
Verdict ExpandTo(vSTREAM& s, vSTREAM& target);
// Steps over a frame, or over `rawCount` bytes when there is none.
Verdict Skip(vSTREAM& s, unsigned long rawCount, unsigned long expected = kAnySize);

// Writes count bytes at the position as a frame when the compressed data is
// shorter than count, raw otherwise; returns the bytes the run occupies, 0 when
// the stream refuses the first write (nothing then moves). Bytes that would
// themselves read back as a frame are never stored raw: they are written as
// their own frame, however large, so a reader always gets back what was written.
//   appending: the frame is compressed straight onto the stream, and when it
//     loses the raw bytes go where its magic began. *attemptEnd receives the
//     position the attempt reached, so the caller can cut what lies beyond.
//   over existing bytes (appending 0): the frame is built in memory first and
//     only the winner is written, so no byte behind the run is touched (save
//     by the frame of bytes that cannot be stored raw, which may be longer).
// A status from before the call stays unless the write itself fails. The stream
// is left compressing.
unsigned long Write(vSTREAM& s, const unsigned char* data, unsigned long count, int appending,
                    unsigned long* attemptEnd);

// Writes the frame of count bytes at the position through the stream's raw
// writes, whatever its size; returns the bytes written (0 without a work area).
unsigned long WriteFrame(vSTREAM& s, const unsigned char* data, unsigned long count);

// What the last Write or WriteFrame left on s: kNotWritten when it went to
// another stream (a stream that never frames, or writes raw with compression
// off, does not call them: a caller clears the record with ForgetWrite first).
enum WriteResult { kNotWritten, kWroteRaw, kWroteFrame };
WriteResult LastWrite(const vSTREAM& s);
void ForgetWrite();

} // namespace rlframe

#endif
