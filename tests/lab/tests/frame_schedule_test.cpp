#include "tests/lab/machine/frame_schedule.h"

#include <gmock/gmock.h>

#include <limits>

namespace lab {
namespace {

using ::testing::Optional;

constexpr std::int64_t kSecond = 1'000'000;

TEST(FrameSchedule, BeginsWithOneImageAndAddsItsRate) {
    for (const double rate : {60.0, 144.0, 240.0, 1000.0}) {
        const Frames frames{rate, false};
        EXPECT_EQ(ImagesShown(frames, 0), 1);
        EXPECT_EQ(ImagesShown(frames, kSecond), 1 + static_cast<std::int64_t>(rate));
        EXPECT_EQ(ImagesShown(frames, 3 * kSecond), 1 + 3 * static_cast<std::int64_t>(rate));
    }
}

TEST(FrameSchedule, AnImageIsShownAtItsTimeAndNotBefore) {
    for (const double rate : {60.0, 144.0, 240.0, 1000.0}) {
        const Frames frames{rate, false};
        for (std::int64_t number = 2; number < 2000; ++number) {
            const std::int64_t time = ImageTime(frames, number).value();
            ASSERT_EQ(ImagesShown(frames, time), number) << rate;
            ASSERT_EQ(ImagesShown(frames, time - 2), number - 1) << rate;
        }
    }
}

TEST(FrameSchedule, AStillDesktopHasOneImageAndABlindOneNone) {
    const Frames still{0, false};
    EXPECT_EQ(ImagesShown(still, 3600 * kSecond), 1);
    EXPECT_THAT(ImageTime(still, 1), Optional(0));
    EXPECT_FALSE(ImageTime(still, 2));
    const Frames never{0, true};
    EXPECT_EQ(ImagesShown(never, 3600 * kSecond), 0);
    EXPECT_FALSE(ImageTime(never, 1));
}

TEST(FrameSchedule, ThePointerMovesAtItsRate) {
    Frames frames;
    EXPECT_EQ(PointerMoves(frames, kSecond), 0);
    EXPECT_FALSE(PointerMoveTime(frames, 1));
    frames.pointer_rate = 125;
    EXPECT_EQ(PointerMoves(frames, 0), 0);
    EXPECT_EQ(PointerMoves(frames, kSecond), 125);
    EXPECT_THAT(PointerMoveTime(frames, 1), Optional(8000));
    EXPECT_EQ(PointerMoves(frames, 8000), 1);
    EXPECT_EQ(PointerMoves(frames, 7999), 0);
}

TEST(FrameSchedule, ALossIsDueAfterItsFramesOrItsTime) {
    Loss by_frames;
    by_frames.after_frames = 30;
    EXPECT_FALSE(LossIsDue(by_frames, 29, 100 * kSecond));
    EXPECT_TRUE(LossIsDue(by_frames, 30, 0));
    Loss by_time;
    by_time.after_milliseconds = 500;
    EXPECT_FALSE(LossIsDue(by_time, 1000, 499'999));
    EXPECT_TRUE(LossIsDue(by_time, 0, 500'000));
}

TEST(FrameSchedule, AFailureEndsAfterACountOrATimeOrNever) {
    Refusal refusal;
    EXPECT_TRUE(StillRefuses(refusal, 1'000'000, std::numeric_limits<std::int64_t>::max()));
    refusal.times = 3;
    EXPECT_TRUE(StillRefuses(refusal, 2, 0));
    EXPECT_FALSE(StillRefuses(refusal, 3, 0));
    Refusal by_time;
    by_time.milliseconds = 1200;
    EXPECT_TRUE(StillRefuses(by_time, 100, 1'199'999));
    EXPECT_FALSE(StillRefuses(by_time, 0, 1'200'000));
}

}  // namespace
}  // namespace lab
