#include "tools/vistrel_diag/sections/warp/settled_reading.h"

std::uint64_t ReadSettled(const ReadingSteps& steps) {
    std::uint64_t reading = steps.read();
    while (steps.elapsed_ms() + kReadingIntervalMs <= kLongestSettlingMs) {
        steps.sleep(kReadingIntervalMs);
        const std::uint64_t next = steps.read();
        if (next == reading) {
            break;
        }
        reading = next;
    }
    return reading;
}
