// Charts of bars in SVG, each with its title and with a table of the same figures behind it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/markup.h"

/// What a bar's part stands for; the style sheet has a colour for each, in either scheme.
enum class ChartColour { Warp, Model, First, Second, Marked };

struct ChartSegment {
    double length = 0.0;
    ChartColour colour = ChartColour::First;
};

/// From least to most, with the one in the middle marked.
struct ChartSpan {
    double least = 0.0;
    double middle = 0.0;
    double most = 0.0;
};

/// One row: its name, what is drawn, and its figure in words.
struct ChartRow {
    std::string label;
    std::string figure;
    std::vector<ChartSegment> segments;  ///< one after the other
    std::optional<ChartSpan> span;
    std::optional<double> limit;  ///< drawn as a frame of that length around the bar
    bool marked = false;          ///< such as the user's own model
};

/// A line across all rows that they are read against.
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
    std::string says;  ///< one sentence for who cannot see it
    std::vector<ChartLegend> legend;
    std::vector<ChartMark> marks;
    std::vector<ChartRow> rows;
    double longest = 0.0;  ///< where the scale ends; what is longer is cut there and shown to be
    std::vector<std::string> table_head;
    std::vector<std::vector<std::string>> table_rows;
};

/// The charts that the report has figures for.
std::vector<Chart> ChartsOf(const Facts& facts);

/// A <figure>. `report` and `number` make its name unique within the page.
void WriteChart(Markup& page, const Chart& chart, std::size_t report, std::size_t number);

/// A table with a head.
void WriteTable(Markup& page, const std::vector<std::string>& head,
                const std::vector<std::vector<std::string>>& rows);
