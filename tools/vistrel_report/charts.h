// Charts in SVG, each with a title and followed by a table of the same figures.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/markup.h"

/// What a part of a bar represents; the style sheet has a colour for each, in the light and the dark scheme.
enum class ChartColour { Warp, Model, First, Second, Marked };

struct ChartSegment {
    double length = 0.0;
    ChartColour colour = ChartColour::First;
};

/// A range from least to most, with the middle value marked.
struct ChartSpan {
    double least = 0.0;
    double middle = 0.0;
    double most = 0.0;
};

/// How many machines have a figure in each of the equal parts of the scale; what lies beyond its end is in
/// the last part.
struct ChartColumns {
    std::vector<std::size_t> counts;
    double median = 0.0;
};

/// One row: its name, what is drawn, and its figure in words.
struct ChartRow {
    std::string label;
    std::string figure;
    std::vector<ChartSegment> segments;  ///< drawn one after the other
    std::optional<ChartSpan> span;
    std::optional<ChartColumns> columns;
    std::optional<double> limit;  ///< drawn as a frame of that length around the bar
    bool marked = false;          ///< such as the user's own model
};

/// A reference line across all rows.
struct ChartMark {
    double at = 0.0;
    std::string label;
};

struct ChartLegend {
    std::string label;
    ChartColour colour = ChartColour::First;
};

struct Chart {
    std::string title;
    std::string says;  ///< one sentence for readers who cannot see the chart
    std::vector<ChartLegend> legend;
    std::vector<ChartMark> marks;
    std::vector<ChartRow> rows;
    double longest = 0.0;  ///< where the scale ends; a longer bar is cut there and marked as cut
    std::vector<std::string> table_head;
    std::vector<std::vector<std::string>> table_rows;
};

/// Makes the charts for which the report has figures.
std::vector<Chart> ChartsOf(const Facts& facts);

/// Writes a <figure>. `report` and `number` make its name unique within the page.
void WriteChart(Markup& page, const Chart& chart, std::size_t report, std::size_t number);

/// Writes a table with a head.
void WriteTable(Markup& page, const std::vector<std::string>& head,
                const std::vector<std::vector<std::string>>& rows);
