// The memory device: drawing into an off-screen bitmap of the screen's depth.
#ifndef RL132_DEVICES_VMEMDEVICE_H
#define RL132_DEVICES_VMEMDEVICE_H
#include "rl132/devices/vdevice.h"

#pragma pack(push, 1)

// The bitmap is a device-independent section, bottom-up, of the screen's bits
// per pixel (with the screen palette as its colour table at 8 bits and fewer),
// and starts white. The device owns the bitmap and its memory context.
class RL132_API vMEMDEVICE : public vDEVICE {
public:
    // No bitmap until Prepare.
    vMEMDEVICE();
    vMEMDEVICE(const vINT& width, const vINT& height);
    // A copy has the device state and a bitmap of its own with the same pixels.
    vMEMDEVICE(const vMEMDEVICE& other);
    vMEMDEVICE& operator=(const vMEMDEVICE& other);
    ~vMEMDEVICE() override;

    // Makes a fresh white bitmap of the given size, replacing any there was.
    // 0 when the size is not 1 to 32767 on both axes or the system cannot
    // make the bitmap; the device then has none.
    int Prepare(const vINT& width, const vINT& height);
    // The bitmap's pixels (rows bottom-up, each padded to 4 bytes), with all
    // drawing finished; null when there is no bitmap.
    unsigned char* GetDIB();

    vINT Width() const { return vINT((long)width); }
    vINT Height() const { return vINT((long)height); }
    unsigned short BitsPerPixel() const { return bitsPerPixel; }
    // The size of the pixel buffer in bytes.
    unsigned long BufferSize() const { return bufferSize; }
    // The bitmap handle (a DIB section), for saving or blitting; still the device's.
    HBITMAP Bitmap() const { return bitmap; }

    HDC GetWinDC() override;
    int ReleaseWinDC() override;

private:
    void CopyPixels(const vMEMDEVICE& other);

    void Init();
    // Paints a fresh pixel buffer white: palette index 235 (the cube's white
    // corner) when the bitmap has 256 colours, all bits set otherwise.
    void InitBitmap(unsigned char* bits, unsigned long colours, unsigned long size);
    void FreeBitmap();

    HDC GetMSDC() override;
    int ReleaseMSDC() override;

    HDC memDC;
    unsigned short width;
    unsigned short height;
    unsigned long bufferSize;
    HBITMAP bitmap;
    HBITMAP oldBitmap;
    unsigned char* bits;
    unsigned short bitsPerPixel;
};

#pragma pack(pop)

#endif
