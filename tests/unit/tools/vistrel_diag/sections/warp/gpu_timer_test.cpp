#include "tools/vistrel_diag/sections/warp/gpu_timer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// Queries that return scripted results and record their calls.
struct ScriptedQueries {
    GpuClock clock = {1'000'000'000, false};
    std::uint64_t start = 5'000;
    std::uint64_t end = 5'000;
    bool can_create = true;
    int late_clock = 0;  // How often each answer is not there yet.
    int late_start = 0;
    int late_end = 0;
    std::string calls;

    bool Create() {
        calls += "create ";
        return can_create;
    }
    void BeginBatch() { calls += "begin "; }
    void StampStart() { calls += "start "; }
    void StampEnd() { calls += "end "; }
    void EndBatch() { calls += "close "; }
    bool ReadClock(GpuClock& read) { return Answer("clock", late_clock, clock, read); }
    bool ReadStart(std::uint64_t& read) { return Answer("first", late_start, start, read); }
    bool ReadEnd(std::uint64_t& read) { return Answer("last", late_end, end, read); }
    void Pause() { calls += "pause "; }

    template <typename Value>
    bool Answer(const char* name, int& late, const Value& value, Value& read) {
        calls += std::string(name) + " ";
        if (late-- > 0) {
            return false;
        }
        read = value;
        return true;
    }
};

double Time(ScriptedQueries& queries, int frames) {
    return GpuTimeFrames(queries, frames, [&] { queries.calls += "draw "; });
}

TEST(GpuTimeFrames, StampsAroundTheFramesAndReadsTheClockFirst) {
    ScriptedQueries queries;
    queries.end = queries.start + 12'000'000;
    EXPECT_DOUBLE_EQ(Time(queries, 3), 4.0);
    EXPECT_EQ(queries.calls, "create begin start draw draw draw end close clock first last ");
}

TEST(GpuTimeFrames, CountsInTheClocksOwnTicks) {
    ScriptedQueries queries;
    queries.clock.frequency = 25'000'000;
    queries.end = queries.start + 100'000;
    EXPECT_DOUBLE_EQ(Time(queries, 8), 0.5);
}

TEST(GpuTimeFrames, DrawsNothingWithoutItsQueries) {
    ScriptedQueries queries;
    queries.can_create = false;
    EXPECT_EQ(Time(queries, 3), -1.0);
    EXPECT_EQ(queries.calls, "create ");
}

TEST(GpuTimeFrames, DisjointTimestampsGiveNoResult) {
    ScriptedQueries queries;
    queries.end = queries.start + 1'000'000;
    queries.clock.disjoint = true;
    EXPECT_EQ(Time(queries, 1), -1.0);
}

TEST(GpuTimeFrames, AStoppedClockGivesNoResult) {
    ScriptedQueries queries;
    queries.end = queries.start + 1'000'000;
    queries.clock.frequency = 0;
    EXPECT_EQ(Time(queries, 1), -1.0);
}

TEST(GpuTimeFrames, AnEndAtOrBeforeTheStartGivesNoResult) {
    ScriptedQueries queries;
    queries.end = queries.start;
    EXPECT_EQ(Time(queries, 1), -1.0);
    queries.end = queries.start - 1;
    EXPECT_EQ(Time(queries, 1), -1.0);
    queries.end = queries.start + 1;
    EXPECT_GT(Time(queries, 1), 0.0);
}

TEST(GpuTimeFrames, WaitsForEachAnswerBeforeTheNext) {
    ScriptedQueries queries;
    queries.end = queries.start + 1'000'000;
    queries.late_clock = 2;
    queries.late_start = 1;
    queries.late_end = 1;
    EXPECT_DOUBLE_EQ(Time(queries, 1), 1.0);
    EXPECT_EQ(queries.calls,
              "create begin start draw end close "
              "clock pause clock pause clock first pause first last pause last ");
}

TEST(GpuTimeFrames, WaitsForLateDataWithoutLimit) {
    ScriptedQueries queries;
    queries.end = queries.start + 1'000'000;
    queries.late_clock = 100'000;
    EXPECT_DOUBLE_EQ(Time(queries, 1), 1.0);
}

}  // namespace
