#include "tools/vistrel_report/comparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace {

WarpRow Row(double milliseconds) {
    WarpRow row;
    row.width = 1920;
    row.height = 1080;
    row.milliseconds = milliseconds;
    return row;
}

Comparison Of(const Facts& before, const Facts& now) {
    return Compare(before, JudgeReport(before), now, JudgeReport(now));
}

TEST(Compare, AReportEqualsItselfEvenWithARepeatedRow) {
    Facts facts;
    facts.warp.rows = {Row(1.0), Row(5.0)};
    const Comparison comparison = Of(facts, facts);
    ASSERT_EQ(comparison.rows.size(), 2U);
    EXPECT_EQ(comparison.rows[0].state, RowState::Same);
    EXPECT_EQ(comparison.rows[1].state, RowState::Same);
}

TEST(Compare, FindsTheCounterpartsOfManyRows) {
    constexpr std::size_t kRows = 20000;
    Facts before;
    Facts now;
    for (std::size_t i = 0; i < kRows; ++i) {
        WarpRow row = Row(1.0);
        row.width = i % 2 == 0 ? 1920 : static_cast<std::int64_t>(i);  // Half of one name, half of many.
        before.warp.rows.push_back(row);
        row.milliseconds = i == kRows - 2 ? 2.0 : 1.0;
        now.warp.rows.push_back(row);
    }
    now.warp.rows.push_back(Row(3.0));
    const Comparison comparison = Of(before, now);
    ASSERT_EQ(comparison.rows.size(), kRows + 1);
    for (std::size_t i = 0; i < kRows; ++i) {
        ASSERT_EQ(comparison.rows[i].state, i == kRows - 2 ? RowState::Changed : RowState::Same) << i;
    }
    EXPECT_EQ(comparison.rows.back().state, RowState::OnlyInNew);
    EXPECT_EQ(comparison.rows.back().new_value, "3.00 ms");
}

TEST(Compare, ShowsAnotherPrimaryDisplay) {
    Facts before;
    Facts now;
    before.displays = {{"D1", 1920, 1080, 60, true, 0, "Card", 15},
                       {"D2", 1920, 1080, 60, false, 0, "Card", 16}};
    now.displays = before.displays;
    std::swap(now.displays[0].primary, now.displays[1].primary);
    const Comparison comparison = Of(before, now);
    ASSERT_EQ(comparison.rows.size(), 2U);
    EXPECT_EQ(comparison.rows[0].state, RowState::Changed);
    EXPECT_EQ(comparison.rows[0].old_value, "1920x1080 @ 60 Hz, GPU 0, primary");
    EXPECT_EQ(comparison.rows[0].new_value, "1920x1080 @ 60 Hz, GPU 0");
    EXPECT_EQ(comparison.rows[1].state, RowState::Changed);
}

TEST(Compare, ShowsAnotherGpuOfTheHeadset) {
    Facts before;
    Facts now;
    before.headset.required_gpu = 1;
    before.headset.required_gpu_name = "Large card";
    now.headset.required_gpu = 1;
    now.headset.required_gpu_name = "Large card";
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::Same);
    now.headset_in_two.required_gpu = 0;  // What the last part says counts.
    now.headset_in_two.required_gpu_name = "Small card";
    ComparedRow row = Of(before, now).rows.front();
    EXPECT_EQ(row.state, RowState::Changed);
    EXPECT_EQ(row.old_value, "GPU 1: Large card");
    EXPECT_EQ(row.new_value, "GPU 0: Small card");
    now.headset_in_two.required_gpu = -1;
    EXPECT_EQ(Of(before, now).rows.front().new_value, "not among those listed");
}

TEST(Compare, RatesOfCapturesOfOneSizeOnlyCanBeCompared) {
    Facts before;
    before.capture.fps = 60.0;
    before.capture.width = 1920;
    before.capture.height = 1080;
    Facts now = before;
    now.capture.fps = 30.0;
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::Changed);
    now.capture.width = 3840;
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::NotComparable);
    EXPECT_EQ(Of(before, now).rows.front().why, "capture of 1920x1080 against capture of 3840x1080");
    std::swap(before.capture, before.game);
    std::swap(now.capture, now.game);
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::NotComparable);
    now.game.width.reset();
    EXPECT_EQ(Of(before, now).rows.front().why, "capture of 1920x1080 against capture of an unknown size");
}

TEST(Compare, IgnoresDifferencesOfTenPercent) {
    Facts before;
    Facts now;
    before.warp.rows = {Row(1.00)};
    now.warp.rows = {Row(1.11)};
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::WithinTolerance);
    now.warp.rows = {Row(1.12)};
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::Changed);
    EXPECT_EQ(Of(before, now).rows.front().why, "+12%");
    now.benchmark.gpu_name = "Other";
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::NotComparable);
    now.warp.rows.clear();
    EXPECT_EQ(Of(before, now).rows.front().state, RowState::OnlyInOld);
    EXPECT_EQ(Of(now, before).rows.front().state, RowState::OnlyInNew);
}

}  // namespace
