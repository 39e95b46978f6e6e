// A Photo CD volume in a fresh temporary folder: IMAGES\IMG0001.PCD ... stored
// with the given turns, PHOTO_CD\INFO.PCD, optionally PHOTO_CD\OVERVIEW.PCD and
// a rights file; removed again with everything added to it.
#ifndef RL132_TESTS_PHOTOCD_PCDVOLUME_H
#define RL132_TESTS_PHOTOCD_PCDVOLUME_H
#include <windows.h>
#include <cstdio>
#include <string>
#include <vector>
#include "pcdwriter.h"
#include "rltest.h"

struct PCDVOLUME {
    std::string root;
    std::vector<std::string> files, dirs;
    PCDVOLUME(const std::vector<int>& rotations, bool overview, bool rights = false)
        : root(rltest::TempPath("pcdvol"))
    {
        for (const char* d : {"", "\\IMAGES", "\\PHOTO_CD", rights ? "\\RIGHTS" : nullptr})
            if (d)
                CreateDirectoryA((root + d).c_str(), nullptr), dirs.push_back(root + d);
        std::vector<pcdwriter::Ycc> small;
        for (size_t i = 0; i < rotations.size(); ++i) {
            pcdwriter::Ycc picture = pcdwriter::Pattern(768, 512, (int)i + 1);
            small.push_back(pcdwriter::Halve(pcdwriter::Halve(picture)));
            Add(Pack(i + 1), pcdwriter::ImagePack(picture, rotations[i]));
        }
        const uint8_t id[12] = {'D', 'I', 'S', 'C', 7, 0, 0, 0, 0, 0, 0, 1};
        Add(root + "\\PHOTO_CD\\INFO.PCD", pcdwriter::InfoFile(id, (int)rotations.size()));
        if (overview)
            Add(root + "\\PHOTO_CD\\OVERVIEW.PCD", pcdwriter::OverviewPack(small, rotations));
        if (rights)
            Add(root + "\\RIGHTS\\COPYRGHT.TXT", {'(', 'c', ')'});
    }
    ~PCDVOLUME()
    {
        for (auto& f : files)
            DeleteFileA(f.c_str());
        for (auto d = dirs.rbegin(); d != dirs.rend(); ++d)
            RemoveDirectoryA(d->c_str());
    }
    std::string Pack(size_t n) const
    {
        char name[32];
        snprintf(name, sizeof name, "\\IMAGES\\IMG%04u.PCD", (unsigned)n);
        return root + name;
    }
    void Add(const std::string& path, const pcdwriter::Bytes& data)
    {
        if (FILE* f = fopen(path.c_str(), "wb"))
            fwrite(data.data(), 1, data.size(), f), fclose(f);
        files.push_back(path);
    }
};
#endif
