// How figures spread over many machines, as charts.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/vistrel_report/charts.h"

/// How many rows at most a distribution's chart and its table have: those with the most machines.
inline constexpr std::size_t kMostChartRows = 12;
inline constexpr std::size_t kMostTableRows = 200;

/// How a distribution is shown.
struct DistributionTexts {
    std::string_view title;
    std::string_view says;  ///< one sentence for readers who cannot see the chart
    std::string_view of;  ///< what a row is about beside the GPU, as the head of the table: "Size"; or empty
    std::string_view unit;  ///< behind each figure
    /// In Hz, descending: the time of one frame is marked. Round figures are where none is on the scale.
    std::vector<double> refresh_rates;
};

/// The figures of many machines, for each GPU and, for instance, each size. A machine counts once, with the
/// median of its reports.
class Distribution {
  public:
    /// `value` is left out unless it is finite and not negative, and where `machine` is empty: reports of
    /// unknown machines would count as one.
    void Add(const std::string& gpu, const std::string& of, const std::string& machine, double value);

    bool IsEmpty() const { return machines_.empty(); }

    /// A chart with a row of columns for each GPU: how many machines have about that figure.
    Chart ToChart(const DistributionTexts& texts) const;

  private:
    /// The GPU and what the figure is of; the machines; the figures of each.
    std::map<std::pair<std::string, std::string>, std::map<std::string, std::vector<double>>> machines_;
};
