// Progress indicators (see oprogress.h).
#include "rl132/platform/oprogress.h"

oPROGRESS::oPROGRESS()
    : callback(nullptr), callbackData(nullptr), done(0), total(0), updates(0), stopRequested(0) {}

oPROGRESS::oPROGRESS(CALLBACK_FN fn, void* data)
    : callback(fn), callbackData(data), done(0), total(0), updates(0), stopRequested(0) {}

oPROGRESS::~oPROGRESS() {}

void oPROGRESS::Begin(unsigned long t)
{
    total = t;
    done = 0;
    updates = 0;
}

void oPROGRESS::Update(unsigned long d)
{
    done = d;
    ++updates;
    if (callback && callback(done, total, callbackData))
        stopRequested = 1;
}

int oPROGRESS::Stop() { return stopRequested; }

void oPROGRESS::End() {}

void oPROGRESS::Reset()
{
    done = total = updates = 0;
    stopRequested = 0;
}

unsigned int oPROGRESS::Percent() const
{
    if (total == 0)
        return 0;
    unsigned long long p = (unsigned long long)done * 100u / total;
    return p > 100 ? 100u : (unsigned int)p;
}
