#include <gtest/gtest.h>
#include "rl132.h"
TEST(Frame, Loads) { EXPECT_NE(vSYSTEM::GetInstance(), nullptr); }
