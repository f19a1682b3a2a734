#include "tools/vistrel_diag/sections/warp/long_wait.h"

#include <gtest/gtest.h>

namespace {

TEST(LongWait, ReportsALongWaitOnce) {
    double now = 1000.0;
    int told = 0;
    LongWait wait([&] { return now; }, [&] { ++told; });
    wait.Begin();
    now += 19.9;
    wait.Continue();
    EXPECT_EQ(told, 0);
    now += 0.2;
    wait.Continue();
    EXPECT_EQ(told, 1);
    now += 100.0;
    wait.Continue();
    wait.Begin();
    now += 100.0;
    wait.Continue();
    EXPECT_EQ(told, 1);
}

TEST(LongWait, MeasuresEachWaitSeparately) {
    double now = 0.0;
    int told = 0;
    LongWait wait([&] { return now; }, [&] { ++told; });
    for (int i = 0; i < 10; ++i) {
        wait.Begin();
        now += 15.0;
        wait.Continue();
    }
    EXPECT_EQ(told, 0);
}

}  // namespace
