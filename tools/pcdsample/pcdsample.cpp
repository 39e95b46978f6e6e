// pcdsample DIR: writes a small Photo CD volume of three generated pictures
// into DIR (IMAGES\IMG0001.PCD ..., PHOTO_CD\OVERVIEW.PCD and INFO.PCD), for
// the demo and the tool tests. The second picture is stored turned.
#include <windows.h>
#include <cstdio>
#include <string>
#include "../../tests/photocd/pcdwriter.h"

static bool Save(const std::string& path, const pcdwriter::Bytes& data)
{
    FILE* f = fopen(path.c_str(), "wb");
    if (!f)
        return false;
    bool ok = fwrite(data.data(), 1, data.size(), f) == data.size();
    return fclose(f) == 0 && ok;
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: pcdsample DIR\n");
        return 2;
    }
    const std::string root = argv[1];
    for (const char* sub : {"", "\\IMAGES", "\\PHOTO_CD"})
        CreateDirectoryA((root + sub).c_str(), nullptr);
    const int turns[3] = {0, 1, 0};
    std::vector<pcdwriter::Ycc> small;
    std::vector<int> rotations;
    bool ok = true;
    for (int i = 0; i < 3; ++i) {
        pcdwriter::Ycc p = pcdwriter::Pattern(768, 512, i + 1);
        small.push_back(pcdwriter::Halve(pcdwriter::Halve(p)));
        rotations.push_back(turns[i]);
        char name[32];
        snprintf(name, sizeof name, "\\IMAGES\\IMG%04d.PCD", i + 1);
        ok = ok && Save(root + name, pcdwriter::ImagePack(p, turns[i]));
    }
    const uint8_t id[12] = {'R', 'L', '1', '3', '2', 'D', 'E', 'M', 'O', '0', '0', '1'};
    ok = ok && Save(root + "\\PHOTO_CD\\OVERVIEW.PCD", pcdwriter::OverviewPack(small, rotations));
    ok = ok && Save(root + "\\PHOTO_CD\\INFO.PCD", pcdwriter::InfoFile(id, 3));
    if (!ok) {
        fprintf(stderr, "pcdsample: could not write the volume in %s\n", root.c_str());
        return 1;
    }
    printf("pcdsample: 3 image packs in %s\n", root.c_str());
    return 0;
}
