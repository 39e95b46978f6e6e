// The progress line shared by the long-running commands.
#include <cstdarg>
#include <cstring>
#include "rltool.h"

namespace {
// A few paints a second read as smooth; more only slow a Wine console down.
const unsigned long kPaintInterval = 250;  // milliseconds
} // namespace

RlProgressLine::RlProgressLine(long long size, long long from)
{
    char force[8];
    DWORD n = GetEnvironmentVariableA("RLTOOL_PROGRESS", force, sizeof force);
    if (n == 1 && (force[0] == '0' || force[0] == '1'))
        shown_ = force[0] == '1';
    else
        shown_ = rltool_interactive() && size >= from;
}

void RlProgressLine::Update(const char* format, ...)
{
    if (!shown_)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(text_, sizeof text_, format, args);
    va_end(args);
    painted_ = false;
    // Unsigned difference: right across the tick counter's wrap.
    if (!started_ || GetTickCount() - last_ >= kPaintInterval)
        Paint();
}

void RlProgressLine::End()
{
    if (!shown_ || !text_[0])
        return;
    if (!painted_)
        Paint();
    fputc('\n', stderr);
    fflush(stderr);
    shown_ = false;
}

void RlProgressLine::Paint()
{
    // Blank out the tail of a longer line painted before.
    size_t n = strlen(text_);
    fprintf(stderr, "\r%s%*s", text_, width_ > n ? (int)(width_ - n) : 0, "");
    fflush(stderr);
    width_ = n;
    started_ = true;
    painted_ = true;
    last_ = GetTickCount();
}
