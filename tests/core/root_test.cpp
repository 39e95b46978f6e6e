// Every class derives from vOBJECT, so containers can hold any of them. The list of
// exported classes is read from the headers at each build: new classes are checked too.
#include <gtest/gtest.h>
#include <type_traits>
#include "rl132.h"
#include "exported_classes.inc"

// Shapes keep the point table's layout: a vOBJECT base before their first field, a vRECT,
// would move every field by four bytes. They alone stay rootless, on purpose.
template <class T> struct RootExempt : std::false_type {};
template <> struct RootExempt<vSHAPE> : std::true_type {};
template <> struct RootExempt<vRECTSHAPE> : std::true_type {};
template <> struct RootExempt<vELPSSHAPE> : std::true_type {};

#define RL132_CHECK_ROOT(T) \
    static_assert(std::is_base_of<vOBJECT, T>::value != RootExempt<T>::value, \
                  #T " does not derive from vOBJECT (or an exempt shape does)");
RL132_EXPORTED_CLASSES(RL132_CHECK_ROOT)

namespace {
#define RL132_COUNT_CLASS(T) +1
const int kExportedClasses = 0 RL132_EXPORTED_CLASSES(RL132_COUNT_CLASS);
}
TEST(Root, TheHeadersListEveryExportedClass)
{
    EXPECT_GE(kExportedClasses, 38);   // a broken reading of the headers would check nothing
}
