// What reading the product's log may cost in memory, whatever the log is like. A program of its own: the peak
// is the process's.
#include <gtest/gtest.h>
#include <windows.h>
// Behind windows.h, which it needs.
#include <psapi.h>

#include <cstddef>
#include <istream>
#include <string>

#include "tests/unit/support/repeated_text.h"
#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

namespace {

constexpr std::size_t kMegabyte = std::size_t{1024} * 1024;
constexpr std::size_t kMostMegabytes = 16;

std::size_t PeakMegabytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)));
    return counters.PeakWorkingSetSize / kMegabyte;
}

/// Selects from two hundred megabytes of `text` again and again; returns how far the peak has risen.
std::size_t GrowthOverLog(const std::string& text) {
    const std::size_t before = PeakMegabytes();
    RepeatedText repeated(text, 200 * kMegabyte / text.size());
    std::istream log(&repeated);
    EXPECT_FALSE(SelectProductLogLines(log).empty());
    return PeakMegabytes() - before;
}

TEST(ProductLogMemory, MillionsOfRelevantLinesTakeFewMegabytes) {
    EXPECT_LT(GrowthOverLog("21:22:47.655 [INFO ] DirectML: something failed\r\n"), kMostMegabytes);
}

TEST(ProductLogMemory, ALineWithoutEndTakesFewMegabytes) {
    EXPECT_LT(GrowthOverLog(std::string(kMegabyte, 'x') + "failed"), kMostMegabytes);
}

/// What the tests above would see if the log were held in memory.
TEST(ProductLogMemory, ThePeakIsMeasured) {
    const std::size_t before = PeakMegabytes();
    const std::string held(100 * kMegabyte, 'x');
    EXPECT_GT(PeakMegabytes() - before, 90U) << held.size();
}

}  // namespace
