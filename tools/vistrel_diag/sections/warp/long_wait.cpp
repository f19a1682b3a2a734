#include "tools/vistrel_diag/sections/warp/long_wait.h"

#include <utility>

LongWait::LongWait(std::function<double()> now, std::function<void()> tell)
    : now_(std::move(now)), tell_(std::move(tell)) {}

void LongWait::Begin() {
    begun_ = now_();
}

void LongWait::Continue() {
    if (!told_ && now_() - begun_ >= kSeconds) {
        told_ = true;
        tell_();
    }
}
