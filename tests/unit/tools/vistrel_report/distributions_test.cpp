#include "tools/vistrel_report/distributions.h"

#include <limits>
#include <numeric>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

DistributionTexts Texts() {
    return {"Cost", "Milliseconds.", "Size", "ms", {144.0, 90.0}};
}

std::size_t MachinesOf(const ChartRow& row) {
    return std::accumulate(row.columns->counts.begin(), row.columns->counts.end(), std::size_t{0});
}

}  // namespace

TEST(Distributions, AMachineCountsOnceWithTheMedianOfItsReports) {
    Distribution distribution;
    for (const double value : {1.0, 9.0, 2.0}) {
        distribution.Add("A", "1x1", "first", value);
    }
    distribution.Add("A", "1x1", "second", 4.0);
    const Chart chart = distribution.ToChart(Texts());
    ASSERT_THAT(chart.rows, SizeIs(1));
    EXPECT_EQ(MachinesOf(chart.rows[0]), 2U);
    EXPECT_THAT(chart.table_rows,
                ElementsAre(ElementsAre("A", "1x1", "2", "2.00", "2.00", "4.00", "4.00", "4.00")));
    EXPECT_EQ(chart.table_head.size(), chart.table_rows[0].size());
}

TEST(Distributions, ReportsOfUnknownMachinesAreLeftOut) {
    Distribution distribution;
    distribution.Add("A", "1x1", "", 1.0);
    EXPECT_TRUE(distribution.IsEmpty());
}

TEST(Distributions, TheRowWithTheMostMachinesIsFirst) {
    Distribution distribution;
    distribution.Add("A", "1x1", "first", 1.0);
    distribution.Add("B", "1x1", "first", 1.0);
    distribution.Add("B", "1x1", "second", 1.0);
    EXPECT_THAT(distribution.ToChart(Texts()).rows[0].label, "B, 1x1");
}

TEST(Distributions, OneOutlierDoesNotCompressTheScale) {
    Distribution distribution;
    for (int i = 0; i < 20; ++i) {
        distribution.Add("A", "", std::to_string(i), 10.0 + i);
    }
    distribution.Add("A", "", "slow", 1e9);
    const Chart chart = distribution.ToChart(Texts());
    EXPECT_LT(chart.longest, 100.0);
    EXPECT_EQ(MachinesOf(chart.rows[0]), 21U);
    EXPECT_EQ(chart.rows[0].columns->counts.back(), 1U);
}

TEST(Distributions, LeavesOutValuesThatAreNotNumbers) {
    Distribution distribution;
    distribution.Add("A", "", "first", std::numeric_limits<double>::quiet_NaN());
    distribution.Add("A", "", "first", std::numeric_limits<double>::infinity());
    distribution.Add("A", "", "first", -1.0);
    EXPECT_TRUE(distribution.IsEmpty());
    EXPECT_THAT(distribution.ToChart(Texts()).rows, SizeIs(0));
}

TEST(Distributions, DrawsTheLargestAndSmallestNumbers) {
    for (const double value : {0.0, 1e-300, 1e300, std::numeric_limits<double>::max()}) {
        Distribution distribution;
        distribution.Add("A", "", "first", value);
        const Chart chart = distribution.ToChart(Texts());
        EXPECT_EQ(MachinesOf(chart.rows.at(0)), 1U);
        EXPECT_LE(chart.marks.size(), 10U);
    }
}

TEST(Distributions, RowsAreLimited) {
    Distribution distribution;
    for (int i = 0; i < 1000; ++i) {
        distribution.Add(std::to_string(i), "", "first", 1.0);
    }
    const Chart chart = distribution.ToChart(Texts());
    EXPECT_THAT(chart.rows, SizeIs(kMostChartRows));
    EXPECT_THAT(chart.table_rows, SizeIs(kMostTableRows));
    EXPECT_THAT(chart.says, testing::HasSubstr("12 of 1000"));
}

TEST(Distributions, MarksAreFrameTimesOrRoundNumbers) {
    Distribution distribution;
    distribution.Add("A", "", "first", 20.0);
    EXPECT_THAT(distribution.ToChart(Texts()).marks, SizeIs(2));
    DistributionTexts texts = Texts();
    texts.refresh_rates.clear();
    const Chart chart = distribution.ToChart(texts);
    ASSERT_THAT(chart.marks, SizeIs(4));
    EXPECT_EQ(chart.marks[0].label, "5 ms");
}

TEST(Distributions, ALongNameIsShortenedInTheChartOnly) {
    const auto label_of = [](const std::string& gpu, const std::string& of) {
        Distribution distribution;
        distribution.Add(gpu, of, "first", 1.0);
        const Chart chart = distribution.ToChart(Texts());
        EXPECT_THAT(chart.table_rows, ElementsAre(testing::Contains(gpu)));
        EXPECT_THAT(chart.table_rows, ElementsAre(testing::Contains(of)));
        return chart.rows.at(0).label;
    };
    EXPECT_EQ(label_of("NVIDIA GeForce RTX 3070", "1920x1080"), "NVIDIA GeForce RTX 3070, 1920x1080");
    EXPECT_EQ(label_of("NVIDIA GeForce RTX 4060 Laptop GPU", "Distill Balanced (322x322)"),
              "RTX 4060 Laptop GPU, Distill Balanced");
    std::string umlauts;
    for (int i = 0; i < 50; ++i) {
        umlauts += "\xC3\xA4";
    }
    EXPECT_EQ(label_of(umlauts, "x"), umlauts.substr(0, 44) + "..., x");
    EXPECT_EQ(label_of(umlauts + " ", " "), umlauts.substr(0, 44) + "...,  ");
}
