// A small application on the installed SDK (the README shows it): saves a few
// values to a compressing file stream, reads them back, and converts a colour.
#include <cstdio>
#include <rl132.h>

// The header checks in the other files of this program.
int OwnNames();
int SystemFirst();
int SystemAfter();

int main()
{
    if (OwnNames() != 4 || !SystemFirst() || !SystemAfter())
        return 2;
    vSTRING name("%s\\rl132-host.dat", ".");
    {
        vFILE file(name, vFILE_WRITENEW, 1);      // 1: through the write cache
        file.Compress(1);                         // long blocks are imploded
        vSTRING title("A title that the stream writes as a length and its characters");
        vINT count(42);
        vREAL scale(1.5);
        title >> file;                            // values write with >> ...
        count >> file;
        scale >> file;
        if (file.Status() != vSTREAM_OK)
            return 1;
    }
    vFILE file(name, vFILE_READONLY, 0);
    vSTRING title;
    vINT count;
    vREAL scale(0.0);
    title << file;                                // ... and read with <<
    count << file;
    scale << file;
    file.Close();
    remove(name());

    vCOLOUR cyan(vCMYK, 0, 100, 0);               // packed CMYK: cyan 100 %
    cyan.Cyan(100);
    vCOLOUR rgb = cyan.RGBFormat();
    printf("%s | %ld | %s | cyan is %u,%u,%u\n", title(), count(), vSTRING(scale)(),
           rgb.Red(), rgb.Green(), rgb.Blue());
    return 0;
}
