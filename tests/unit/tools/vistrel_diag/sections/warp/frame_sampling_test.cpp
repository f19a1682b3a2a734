#include "tools/vistrel_diag/sections/warp/frame_sampling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tools/vistrel_diag/sections/warp/gpu_timer.h"

namespace {

using ::testing::ElementsAre;

/// Returns the times of a list in turn and records the requested numbers of frames.
struct ScriptedTimes {
    std::vector<double> times;
    std::vector<int> frames;

    std::optional<double> Sample() {
        return SampleFrameTime([this](int count) {
            frames.push_back(count);
            return times.at(frames.size() - 1);
        });
    }
};

TEST(FramesPerBatch, AimsAtTwoHundredMilliseconds) {
    EXPECT_EQ(FramesPerBatch(0.004), 40);
    EXPECT_EQ(FramesPerBatch(5.0), 40);
    EXPECT_EQ(FramesPerBatch(5.1), 39);
    EXPECT_EQ(FramesPerBatch(10.0), 20);
    EXPECT_EQ(FramesPerBatch(100.0), 2);
    EXPECT_EQ(FramesPerBatch(100.1), 1);
    EXPECT_EQ(FramesPerBatch(300.0), 1);
    EXPECT_EQ(FramesPerBatch(std::numeric_limits<double>::min()), 40);
    EXPECT_EQ(FramesPerBatch(std::numeric_limits<double>::infinity()), 1);
}

TEST(SampleFrameTime, TakesTheMedianOfThreeBatches) {
    ScriptedTimes scripted{{10.0, 9.0, 30.0, 8.0}, {}};
    EXPECT_EQ(scripted.Sample(), 9.0);
    EXPECT_THAT(scripted.frames, ElementsAre(1, 20, 20, 20));
}

TEST(SampleFrameTime, TakesTheUpperOfTwoBatches) {
    EXPECT_EQ((ScriptedTimes{{1.5, 2.0, -1.0, 1.0}, {}}.Sample()), 2.0);
    EXPECT_EQ((ScriptedTimes{{1.5, -1.0, 1.0, 2.0}, {}}.Sample()), 2.0);
}

TEST(SampleFrameTime, TakesTheOnlyBatch) {
    EXPECT_EQ((ScriptedTimes{{1.5, -1.0, 0.0, 7.0}, {}}.Sample()), 7.0);
}

TEST(SampleFrameTime, FallsBackToTheCalibration) {
    EXPECT_EQ((ScriptedTimes{{1.5, -1.0, -1.0, -1.0}, {}}.Sample()), 1.5);
}

TEST(SampleFrameTime, IsEmptyWithoutACalibration) {
    for (const double calibration : {-1.0, 0.0, std::nan("")}) {
        ScriptedTimes scripted{{calibration}, {}};
        EXPECT_EQ(scripted.Sample(), std::nullopt);
        EXPECT_THAT(scripted.frames, ElementsAre(1));
    }
}

/// A GPU whose batches each have their own clock and length.
struct ScriptedBatches {
    struct Batch {
        GpuClock clock;
        std::uint64_t ticks;
    };
    std::vector<Batch> batches;
    std::size_t created = 0;
    int draws = 0;

    bool Create() { return ++created <= batches.size(); }
    void BeginBatch() {}
    void StampStart() {}
    void StampEnd() {}
    void EndBatch() {}
    bool ReadClock(GpuClock& read) {
        read = batches[created - 1].clock;
        return true;
    }
    bool ReadStart(std::uint64_t& read) {
        read = 1;
        return true;
    }
    bool ReadEnd(std::uint64_t& read) {
        read = 1 + batches[created - 1].ticks;
        return true;
    }
    void Pause() {}

    std::optional<double> Sample() {
        return SampleFrameTime(
            [this](int frames) { return GpuTimeFrames(*this, frames, [this] { ++draws; }); });
    }
};

constexpr GpuClock kMicroseconds = {1'000'000, false};
constexpr GpuClock kDisjoint = {1'000'000, true};

TEST(SampleFrameTime, SizesBatchesByTheGpusOwnClock) {
    ScriptedBatches gpu;
    gpu.batches = {{kMicroseconds, 10'000},
                   {kMicroseconds, 200'000},
                   {kMicroseconds, 240'000},
                   {kMicroseconds, 220'000}};
    EXPECT_DOUBLE_EQ(gpu.Sample().value(), 11.0);
    EXPECT_EQ(gpu.draws, 1 + 3 * 20);
}

TEST(SampleFrameTime, SurvivesOneDisjointBatch) {
    ScriptedBatches gpu;
    gpu.batches = {
        {kMicroseconds, 300'000}, {kMicroseconds, 310'000}, {kDisjoint, 1}, {kMicroseconds, 330'000}};
    EXPECT_DOUBLE_EQ(gpu.Sample().value(), 330.0);
    EXPECT_EQ(gpu.draws, 4);
}

TEST(SampleFrameTime, KeepsTheCalibrationWhenAllBatchesAreDisjoint) {
    ScriptedBatches gpu;
    gpu.batches = {{kMicroseconds, 4}, {kDisjoint, 1}, {kDisjoint, 1}, {kDisjoint, 1}};
    EXPECT_DOUBLE_EQ(gpu.Sample().value(), 0.004);
    EXPECT_EQ(gpu.draws, 1 + 3 * 40);
}

}  // namespace
