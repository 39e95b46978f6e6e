// Every class of the library derives from vOBJECT, so that containers can hold
// any of them by a vOBJECT reference. The list of exported classes is read
// from the headers at each build, so a class added anywhere is checked too.
#include <gtest/gtest.h>
#include <type_traits>
#include "rl132.h"
#include "exported_classes.inc"

#define RL132_CHECK_ROOT(T) \
    static_assert(std::is_base_of<vOBJECT, T>::value, #T " does not derive from vOBJECT");
RL132_EXPORTED_CLASSES(RL132_CHECK_ROOT)

namespace {
#define RL132_COUNT_CLASS(T) +1
const int kExportedClasses = 0 RL132_EXPORTED_CLASSES(RL132_COUNT_CLASS);
}

TEST(Root, TheHeadersListEveryExportedClass)
{
    // A broken reading of the headers would check nothing at all.
    EXPECT_GE(kExportedClasses, 38);
}
