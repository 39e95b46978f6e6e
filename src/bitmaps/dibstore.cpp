// The stored DIB form on a stream or in a byte range (see dibstore.h).
#include "bitmaps/dibstore.h"
#include <cstring>
#include "rl132/core/vmem.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/streams/vstream.h"
#include "streams/frame.h"

namespace rldib {

namespace {
const unsigned long kFrameHeader = rlframe::kHeaderBytes;
// Raw rows are read in pieces of about this many bytes.
const unsigned long kRawPiece = 262144;

unsigned long Get32(const unsigned char* p)
{
    return (unsigned long)p[0] | ((unsigned long)p[1] << 8) | ((unsigned long)p[2] << 16) |
           ((unsigned long)p[3] << 24);
}

// A row for converted pixels: its padding stays 0.
unsigned char* NewRow(std::uint32_t stride)
{
    unsigned char* row = (unsigned char*)vMemAlloc(stride);
    if (row)
        std::memset(row, 0, stride);
    return row;
}

// Turns rows stored top row first into bottom row first, in place.
void TurnOver(unsigned char* rows, std::uint32_t height, std::uint32_t stride)
{
    if (height < 2)
        return;
    for (std::uint32_t a = 0, b = height - 1; a < b; ++a, --b) {
        unsigned char* p = rows + (std::size_t)a * stride;
        unsigned char* q = rows + (std::size_t)b * stride;
        for (std::uint32_t i = 0; i < stride; ++i) {
            unsigned char t = p[i];
            p[i] = q[i];
            q[i] = t;
        }
    }
}
} // namespace

// ---------------------------------------------------------------- sources

StoredSource::StoredSource(vSTREAM& stream)
    : s_(&stream), bytes_(nullptr), size_(0), pos_(0), frames_(stream.DetectingCompressed() != 0)
{
}

StoredSource::StoredSource(const unsigned char* bytes, unsigned long size)
    : s_(nullptr), bytes_(bytes), size_(bytes ? size : 0), pos_(0), frames_(false)
{
}

unsigned long StoredSource::Position() const { return s_ ? s_->CurrentPos() : pos_; }

unsigned long StoredSource::Remaining() const
{
    if (!s_)
        return size_ - pos_;
    unsigned long size = s_->Size(), pos = s_->CurrentPos();
    return size > pos ? size - pos : 0;
}

void StoredSource::Seek(unsigned long position)
{
    if (s_)
        s_->MoveFromStart(position);
    else
        pos_ = position < size_ ? position : size_;
}

bool StoredSource::ReadRaw(unsigned char* out, unsigned long n)
{
    if (!s_) {
        if (n > size_ - pos_)
            return false;
        std::memcpy(out, bytes_ + pos_, n);
        pos_ += n;
        return true;
    }
    int detect = s_->DetectingCompressed();
    s_->DetectCompressed(0);
    long got = s_->ReadByteString(out, n);
    s_->DetectCompressed(detect);
    return got >= 0 && (unsigned long)got == n;
}

bool StoredSource::FrameAhead(unsigned long* length)
{
    // Only the header is looked at: whether a frame really stands here is
    // the verdict of a read (ReadBlock), which costs an expansion.
    if (!frames_)
        return false;
    const unsigned long at = Position(), left = Remaining();
    if (left < kFrameHeader)
        return false;
    unsigned char h[kFrameHeader];
    const bool read = ReadRaw(h, kFrameHeader);
    Seek(at);
    if (!read || !rlframe::StartsWithMagic(h))
        return false;
    const unsigned long n = Get32(h + 4);
    if (n > left - kFrameHeader)
        return false;
    *length = n;
    return true;
}

bool StoredSource::ReadBlock(unsigned char* out, unsigned long n, bool* framed)
{
    if (framed)
        *framed = false;
    if (n && frames_) {
        // The stream's own read decides whether a frame stands here (a memory
        // stream never holds one; the others ask rlframe, whose verdict rests
        // on the whole frame). It is a frame of this block only when it
        // expands to the whole block; anything else is raw bytes that began
        // like one.
        const unsigned long at = Position();
        const long got = s_->ReadByteString(out, n);
        if (got >= 0 && (unsigned long)got == n) {
            if (framed)
                *framed = s_->UnCompressed() != 0;
            return true;
        }
        Seek(at);
    }
    return ReadRaw(out, n);
}

// ---------------------------------------------------------------- header and palette

bool ReadInfo(StoredSource& src, StoredHead* head)
{
    // The 14-byte file header is optional: without "BM" the bytes belong to
    // the info header. It is never part of a frame.
    unsigned long pos = src.Position();
    unsigned char fileHeader[kFileHeaderBytes];
    head->fileHeader = src.ReadRaw(fileHeader, sizeof fileHeader) && fileHeader[0] == 'B' &&
                       fileHeader[1] == 'M';
    if (head->fileHeader)
        src.Plain();
    else
        src.Seek(pos);
    unsigned char raw[kInfoHeaderBytes];
    if (!src.ReadBlock(raw, sizeof raw))
        return false;
    DecodeInfo(raw, &head->info);
    return PlanInfo(head->info, &head->plan) == kInfoOk;
}

bool ReadPalette(StoredSource& src, std::uint32_t count, Quad* out)
{
    static_assert(sizeof(Quad) == 4, "palette entries are read as stored");
    if (count > kMaxPalette)
        return false;
    return count == 0 || src.ReadBlock(reinterpret_cast<unsigned char*>(out), count * 4UL);
}

bool ReadHead(StoredSource& src, StoredHead* head)
{
    return ReadInfo(src, head) && ReadPalette(src, head->plan.paletteCount, head->palette);
}

// ---------------------------------------------------------------- rows

bool RowsAvailable(StoredSource& src, const InfoPlan& plan)
{
    const unsigned long remaining = src.Remaining();
    if (plan.storedSize <= remaining)
        return true;
    if (!src.MayHoldFrames())
        return false;
    // Compressed frames make the source shorter than the rows it holds. Walk
    // the blocks the writer made (one block for most depths, 12,000-byte
    // blocks for 24 bits) by their sizes: a would-be frame is stepped over by
    // its length when it could stand for its block, anything else needs its
    // bytes raw.
    const std::uint64_t block = plan.storedBits == 24 ? (std::uint64_t)kDiffBlock : plan.storedSize;
    const unsigned long start = src.Position();
    const unsigned long end = start + remaining;
    unsigned long at = start;
    bool ok = true;
    for (std::uint64_t done = 0; ok && done < plan.storedSize; done += block) {
        const unsigned long n = (unsigned long)(plan.storedSize - done < block ? plan.storedSize - done : block);
        unsigned long length = 0;
        src.Seek(at);
        if (src.FrameAhead(&length) && length <= n && n / kFrameExpansion <= length + kFrameHeader) {
            at += kFrameHeader + length;
            continue;
        }
        ok = n <= end - at;
        at += ok ? n : 0;
    }
    src.Seek(start);
    return ok;
}

RowReader::RowReader(StoredSource& source, const InfoPlan& plan)
    : src_(source), plan_(plan), mode_(kForward), start_(source.Position()), chunk_(nullptr), cap_(0),
      fill_(0), at_(0), consumed_(0), whole_(false), stored_(nullptr), row_(nullptr), held_(nullptr),
      done_(0), lo_(plan.height)
{
}

RowReader::~RowReader()
{
    vMemFree(chunk_);
    vMemFree(stored_);
    vMemFree(row_);
    vMemFree(held_);
}

// Top-down rows are taken from the end backwards, which needs them raw at
// known places: a byte range, a plain file, or a stream with no would-be
// frame where a block would start.
bool RowReader::Backward() const
{
    if (!src_.MayHoldFrames())
        return true;
    if (src_.Remaining() < plan_.storedSize)
        return false;
    const std::uint64_t block = plan_.storedBits == 24 ? (std::uint64_t)kDiffBlock : plan_.storedSize;
    bool raw = true;
    for (std::uint64_t at = 0; raw && at < plan_.storedSize; at += block) {
        unsigned long length;
        src_.Seek(start_ + (unsigned long)at);
        raw = !src_.FrameAhead(&length);
    }
    src_.Seek(start_);
    return raw;
}

bool RowReader::Init()
{
    if (plan_.height == 0 || plan_.storedStride == 0)
        return false;
    if (!plan_.topDown)
        return InitForward();
    if (!Backward()) {
        // Frames cannot be walked backwards: the image is turned over whole.
        held_ = (unsigned char*)vMemAlloc(plan_.keptSize);
        if (!held_ || !ReadAll(held_))
            return false;
        mode_ = kHeld;
        return true;
    }
    // Whole rows per chunk, so that each chunk is one seek and one read.
    row_ = NewRow(plan_.keptStride);
    std::uint64_t rows = kRawPiece / plan_.storedStride;
    rows = rows ? rows : 1;
    cap_ = (unsigned long)(rows * plan_.storedStride < plan_.storedSize ? rows * plan_.storedStride
                                                                       : plan_.storedSize);
    chunk_ = (unsigned char*)vMemAlloc(cap_);
    mode_ = kBackward;
    return row_ && chunk_;
}

bool RowReader::InitForward()
{
    if (plan_.height == 0 || plan_.storedStride == 0)
        return false;
    row_ = NewRow(plan_.keptStride);
    stored_ = (unsigned char*)vMemAlloc(plan_.storedStride);
    unsigned long length = 0;
    if (src_.MayHoldFrames() && plan_.storedBits == 24) {
        cap_ = kDiffBlock;
    } else if (src_.MayHoldFrames() && src_.FrameAhead(&length)) {
        cap_ = plan_.storedSize;   // one frame: it must come whole
        whole_ = true;
    } else {
        cap_ = plan_.storedSize < kRawPiece ? plan_.storedSize : kRawPiece;
    }
    chunk_ = (unsigned char*)vMemAlloc(cap_);
    mode_ = kForward;
    return row_ && stored_ && chunk_;
}

bool RowReader::Refill()
{
    if (mode_ == kBackward) {
        // The chunk before the one just used, in stored order.
        const std::uint32_t rows = (std::uint32_t)(cap_ / plan_.storedStride);
        const std::uint32_t hi = lo_;
        lo_ = hi > rows ? hi - rows : 0;
        const unsigned long n = (hi - lo_) * plan_.storedStride;
        src_.Seek(start_ + lo_ * plan_.storedStride);
        bool ok = n && src_.ReadRaw(chunk_, n);
        consumed_ += n;
        fill_ = n;
        at_ = 0;
        // Leave the source after the rows, as a forward reader would.
        if (lo_ == 0 || !ok)
            src_.Seek(start_ + plan_.storedSize);
        return ok;
    }
    const std::uint64_t left = plan_.storedSize - consumed_;
    const unsigned long n = (unsigned long)(left < cap_ ? left : cap_);
    if (n == 0)
        return false;
    bool framed = false;
    bool ok = (plan_.storedBits == 24 || whole_) ? src_.ReadBlock(chunk_, n, &framed) : src_.ReadRaw(chunk_, n);
    if (!ok)
        return false;
    if (framed && plan_.storedBits == 24)
        DiffDecodeBlock(chunk_, n);
    consumed_ += n;
    fill_ = n;
    at_ = 0;
    return true;
}

const unsigned char* RowReader::Kept(const unsigned char* stored)
{
    if (plan_.storedBits == 16) {
        Row16To24(stored, row_, plan_.width);
        return row_;
    }
    if (plan_.storedBits == 32) {
        Row32To24(stored, row_, plan_.width);
        return row_;
    }
    return stored;
}

const unsigned char* RowReader::Next(bool skip)
{
    if (done_ >= plan_.height || (!chunk_ && mode_ != kHeld))
        return nullptr;
    if (mode_ == kHeld)
        return held_ + (std::size_t)done_++ * plan_.keptStride;
    const unsigned long need = plan_.storedStride;
    if (mode_ == kBackward) {
        // The chunk holds whole rows; they are taken from its end.
        if (fill_ == 0 && !Refill())
            return nullptr;
        fill_ -= need;
        ++done_;
        return skip ? chunk_ + fill_ : Kept(chunk_ + fill_);
    }
    if (fill_ - at_ >= need) {
        const unsigned char* p = chunk_ + at_;
        at_ += need;
        ++done_;
        return skip ? p : Kept(p);
    }
    // The row straddles chunks: assemble it.
    for (unsigned long got = 0; got < need;) {
        if (at_ == fill_ && !Refill())
            return nullptr;
        unsigned long n = fill_ - at_;
        if (n > need - got)
            n = need - got;
        if (!skip)
            std::memcpy(stored_ + got, chunk_ + at_, n);
        at_ += n;
        got += n;
    }
    ++done_;
    return skip ? stored_ : Kept(stored_);
}

bool RowReader::Read(unsigned char* rows, std::uint32_t count)
{
    for (std::uint32_t y = 0; y < count; ++y) {
        const unsigned char* r = Next();
        if (!r)
            return false;
        std::memcpy(rows + (std::size_t)y * plan_.keptStride, r, plan_.keptStride);
    }
    return true;
}

unsigned long RowReader::Progress() const
{
    if (mode_ == kForward)
        return src_.Position();
    return start_ + (unsigned long)((std::uint64_t)done_ * plan_.storedStride);
}

// All stored bytes, in stored order, straight into `rows` (same format).
bool RowReader::ReadStored(unsigned char* rows)
{
    if (!src_.MayHoldFrames())
        return src_.ReadRaw(rows, plan_.storedSize);
    if (plan_.storedBits != 24)
        return src_.ReadBlock(rows, plan_.storedSize);
    // In the writer's block size, so that each compressed frame comes back
    // whole; a block that came as a frame is difference-coded.
    const std::uint64_t block = kDiffBlock;
    for (std::uint64_t at = 0; at < plan_.storedSize; at += block) {
        const unsigned long n = (unsigned long)(plan_.storedSize - at < block ? plan_.storedSize - at : block);
        bool framed = false;
        if (!src_.ReadBlock(rows + at, n, &framed))
            return false;
        if (framed)
            DiffDecodeBlock(rows + at, n);
    }
    return true;
}

bool RowReader::ReadAll(unsigned char* rows)
{
    if (plan_.storedSize == 0)
        return true;
    if (plan_.storedBits == plan_.keptBits) {
        if (!ReadStored(rows))
            return false;
    } else {
        // 16 and 32 bits: stored order row by row, then turned over below.
        RowReader forward(src_, plan_);
        if (!forward.InitForward() || !forward.Read(rows, plan_.height))
            return false;
    }
    if (plan_.topDown)
        TurnOver(rows, plan_.height, plan_.keptStride);
    return true;
}

// ---------------------------------------------------------------- writing

void WriteCodedBlock(vSTREAM& s, const unsigned char* raw, const unsigned char* coded, unsigned long n)
{
    // Only a compressed frame tells a reader that a block is coded. When the
    // stream keeps the coded block as it is (it would not shrink, or the
    // stream never compresses), the block is written again uncoded in its place,
    // unless those bytes would read as a frame: then only a frame of the coded
    // block, however large, gives the rows back.
    rlframe::ForgetWrite();
    unsigned long occupied = s.WriteBlock(coded, n);
    const rlframe::WriteResult wrote = rlframe::LastWrite(s);
    if (wrote == rlframe::kWroteFrame || occupied != n)
        return;
    s.MoveFromCur(-(long)occupied);
    if (wrote == rlframe::kWroteRaw && s.DetectingCompressed() && n >= kFrameHeader &&
        rlframe::StartsWithMagic(raw) && rlframe::Peek(raw, n).frame && rlframe::WriteFrame(s, coded, n))
        return;
    s.Compress(0);
    s.WriteBlock(raw, n);
    s.Compress(1);
}

RowWriter::RowWriter(vSTREAM& s)
    : s_(s), block_(nullptr), coded_(nullptr), cap_(0), fill_(0), diff_(false), whole_(nullptr)
{
}

RowWriter::~RowWriter()
{
    vMemFree(block_);
    vMemFree(coded_);
    delete whole_;
}

bool RowWriter::Init(std::uint32_t bits)
{
    // 24-bit rows on a compressing stream go out difference-coded in the
    // readers' block size; other rows on such a stream must form one block,
    // so they are gathered first.
    diff_ = s_.Compressed() && bits == 24;
    if (s_.Compressed() && !diff_) {
        whole_ = new vMEMSTREAM;
        if (!whole_)
            return false;
    }
    cap_ = diff_ ? (unsigned long)kDiffBlock : 65536UL;
    block_ = (unsigned char*)vMemAlloc(cap_);
    if (diff_)
        coded_ = (unsigned char*)vMemAlloc(cap_);
    return block_ != nullptr && (!diff_ || coded_ != nullptr);
}

void RowWriter::Put(const unsigned char* data, unsigned long n)
{
    if (fill_ == 0 && n >= cap_ && !diff_) {
        Emit(data, n);
        return;
    }
    while (n) {
        unsigned long k = cap_ - fill_ < n ? cap_ - fill_ : n;
        std::memcpy(block_ + fill_, data, k);
        fill_ += k;
        data += k;
        n -= k;
        if (fill_ == cap_)
            Flush();
    }
}

void RowWriter::Finish()
{
    Flush();
    if (whole_ && whole_->Size() && whole_->Buffer())
        s_.WriteBlock(whole_->Buffer(), whole_->Size());
}

void RowWriter::Flush()
{
    if (!fill_)
        return;
    if (diff_) {
        DiffEncodeCopy(block_, coded_, fill_);
        WriteCodedBlock(s_, block_, coded_, fill_);
    } else {
        Emit(block_, fill_);
    }
    fill_ = 0;
}

void RowWriter::Emit(const unsigned char* data, unsigned long n)
{
    if (whole_)
        whole_->WriteBlock(data, n);
    else
        s_.WriteBlock(data, n);
}

void RowWriter::Write(vSTREAM& s, std::uint32_t bits, const unsigned char* rows, unsigned long size)
{
    if (!rows || size == 0)
        return;
    if (!s.Compressed() || bits != 24) {
        s.WriteBlock(rows, size);
        return;
    }
    unsigned char coded[kDiffBlock];
    for (unsigned long at = 0; at < size;) {
        unsigned long n = size - at < (unsigned long)kDiffBlock ? size - at : (unsigned long)kDiffBlock;
        DiffEncodeCopy(rows + at, coded, n);
        WriteCodedBlock(s, rows + at, coded, n);
        at += n;
    }
}

} // namespace rldib
