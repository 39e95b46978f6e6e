// rltool wmf: a metafile (the library's own format or a Windows metafile)
// converted to a native Windows metafile file.
#include <windows.h>
#include <cstdio>
#include <string>
#include "rl132.h"
#include "rltool.h"

static int RunWmf(int argc, char** argv)
{
    if (argc != 3 || argv[1][0] == '-' || argv[2][0] == '-')
        return rltool_usage("wmf");
    const char* inName = argv[1];
    const char* outName = argv[2];
    if (rltool_same_file(inName, outName))
        return rltool_fail(RLTOOL_USAGE, "'%s' is the same file as the input '%s'; give another name for the output", outName, inName);
    vFILE in(vSTRING("%s", inName), vFILE_READONLY, 0);
    if (in.Status() != vSTREAM_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot open the file", inName);
    vMETAFILE meta(in);
    if (!meta.Status())
        return rltool_fail(RLTOOL_FAILED, "%s: not a metafile the library reads", inName);
    vNATIVEMETA native(meta);
    // Written beside the target first, so that a failure leaves the target as it was.
    std::string temp = std::string(outName) + ".part";
    if (!native.Write(vSTRING("%s", temp.c_str()))) {
        DeleteFileA(temp.c_str());
        return rltool_fail(RLTOOL_FAILED, "%s: the conversion or the writing failed", outName);
    }
    if (!MoveFileExA(temp.c_str(), outName, MOVEFILE_REPLACE_EXISTING)) {
        DeleteFileA(temp.c_str());
        return rltool_fail(RLTOOL_FAILED, "%s: cannot write the file", outName);
    }
    printf("%s: %s metafile, page %d x %d hundredths of a millimetre\n", outName,
           meta.Native() ? "own-format" : "Windows", native.PageWidth(), native.PageHeight());
    return RLTOOL_OK;
}

RLTOOL_COMMAND(wmf, "wmf", "IN OUT.wmf", "a metafile converted to a Windows metafile file", RunWmf);
