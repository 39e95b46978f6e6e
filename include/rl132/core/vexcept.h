// Memory-shortage handling: the exception root and the one default exception.
#ifndef RL132_CORE_VEXCEPT_H
#define RL132_CORE_VEXCEPT_H
#include <cstddef>
#include "rl132/core/vobject.h"

#include "rl132/core/rlwin.h"

class RL132_API vEXCEPTION : public vOBJECT {
public:
    vEXCEPTION();
    vEXCEPTION(const vEXCEPTION&);
    virtual ~vEXCEPTION();
    // Tries to satisfy an allocation that just failed; non-zero means "try again".
    virtual int NewFailureException(unsigned int size) = 0;

    // Exception objects must be constructible while the heap is short, so they
    // come straight from the global heap and never reach the new-failure handler.
    // (The size is the unsigned int of the library's 32-bit target.)
    static void* operator new(std::size_t size);
    static void operator delete(void* p);
};

class vAPPFRAME;

class RL132_API DEFEXCEP : public vEXCEPTION {
public:
    DEFEXCEP();
    ~DEFEXCEP();
    int NewFailureException(unsigned int size) override;

    // The message buffers (255 bytes each, null once released or if never allocated).
    RL132_INLINE char* WarningText() const { return pWarning; }
    RL132_INLINE char* SevereText() const { return pSevere; }
    RL132_INLINE int HasReserve() const { return pReserve != nullptr; }

private:
    friend class vSYSTEM;
    friend class vAPPFRAME; // the application framework on top of the library
    int HandleException(HWND window);

    void* pReserve;
    char* pWarning;
    char* pSevere;
};

#endif
