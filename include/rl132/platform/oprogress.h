// Progress indicators.
#ifndef RL132_PLATFORM_OPROGRESS_H
#define RL132_PLATFORM_OPROGRESS_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

// Told how far a long operation has come, and asked after each step whether the
// operation should end early. A work loop calls Begin with the amount it will
// do (bytes, rows: the unit is the worker's), Update after each step and Stop
// to see whether to give up; End when it is done either way.
//
// Use it as it is with a callback, or derive and override Update and Stop
// (a progress bar, a dialog with a cancel button).
class RL132_API oPROGRESS : public vOBJECT {
public:
    // Receives done and total; a non-zero answer asks the worker to stop.
    typedef int (*CALLBACK_FN)(unsigned long done, unsigned long total, void* data);

    oPROGRESS();
    explicit oPROGRESS(CALLBACK_FN callback, void* data = nullptr);
    virtual ~oPROGRESS();

    virtual void Begin(unsigned long total);
    // Records the amount done and passes it to the callback, whose answer is kept
    // as a stop request.
    virtual void Update(unsigned long done);
    // True once a stop was requested (by RequestStop or the callback).
    virtual int Stop();
    virtual void End();

    void RequestStop() { stopRequested = 1; }
    // Forgets a stop request and the counts, ready for the next operation.
    void Reset();
    unsigned long Done() const { return done; }
    unsigned long Total() const { return total; }
    // Done as a percentage of the total (0 when the total is unknown), 0..100.
    unsigned int Percent() const;
    // Number of Update calls since Begin or Reset.
    unsigned long Updates() const { return updates; }

private:
    oPROGRESS(const oPROGRESS&);
    oPROGRESS& operator=(const oPROGRESS&);
    CALLBACK_FN callback;
    void* callbackData;
    unsigned long done;
    unsigned long total;
    unsigned long updates;
    int stopRequested;
};

#endif
