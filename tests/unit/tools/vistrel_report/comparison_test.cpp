#include "tools/vistrel_report/comparison.h"

#include <gtest/gtest.h>

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
