#include "tools/vistrel_report/charts.h"

#include <algorithm>

#include "platform/format.h"

namespace {

// Of the drawing, in units that are pixels on a phone; wider screens show it larger.
constexpr double kWidth = 420.0;
constexpr double kRowHeight = 41.0;
constexpr double kBarTop = 20.0;  // Below the row's label.
constexpr double kBarHeight = 12.0;
constexpr double kColumnHeight = 17.0;  // Of the highest column of a row.
constexpr double kMarkHeight = 15.0;    // Of one line of labels of marks.
constexpr double kLetterWidth = 6.6;    // Of the marks' labels.
constexpr double kLabelGap = 6.0;       // Left of a mark's label.
constexpr double kCutWidth = 7.0;

constexpr double kLongestShare = 200.0;  // Percent; a bar beyond is cut.
constexpr double kLongestWarpMs = 28.0;  // Two frames of a slow headset.

double MillisecondsOfFrame(double refresh_hz) {
    return 1000.0 / refresh_hz;
}

std::string Number(double number) {
    return FormatText("%.2f", number);
}

std::string SizeText(std::int64_t width, std::int64_t height) {
    return FormatText("%lldx%lld", static_cast<long long>(width), static_cast<long long>(height));
}

Markup::Attribute ColourOf(ChartColour colour) {
    switch (colour) {
        case ChartColour::Warp:
            return {"class", "bar warp"};
        case ChartColour::Model:
            return {"class", "bar model"};
        case ChartColour::First:
            return {"class", "bar first"};
        case ChartColour::Second:
            return {"class", "bar second"};
        case ChartColour::Marked:
            break;
    }
    return {"class", "bar marked"};
}

/// Lengths to places on the drawing, cut where the scale ends.
class Scale {
  public:
    explicit Scale(double longest) : longest_(longest > 0.0 ? longest : 1.0) {}
    double Place(double length) const { return std::clamp(length / longest_, 0.0, 1.0) * kWidth; }
    bool IsCut(double length) const { return length > longest_; }

  private:
    double longest_;
};

/// The line of labels that each mark goes to, so that none covers another. Marks are in ascending order.
std::vector<std::size_t> LabelLines(const std::vector<ChartMark>& marks, const Scale& scale) {
    std::vector<double> taken_up_to;
    std::vector<std::size_t> lines;
    for (const ChartMark& mark : marks) {
        const double half = static_cast<double>(mark.label.size()) * kLetterWidth / 2.0;
        std::size_t line = 0;
        while (line < taken_up_to.size() && taken_up_to[line] > scale.Place(mark.at) - half - kLabelGap) {
            ++line;
        }
        if (line == taken_up_to.size()) {
            taken_up_to.push_back(0.0);
        }
        taken_up_to[line] = scale.Place(mark.at) + half;
        lines.push_back(line);
    }
    return lines;
}

/// Where a label must be anchored not to leave the drawing.
Markup::Attribute AnchorAt(double place) {
    constexpr double kMargin = 30.0;
    if (place > kWidth - kMargin) {
        return {"text-anchor", "end"};
    }
    return place < kMargin ? Markup::Attribute("text-anchor", "start")
                           : Markup::Attribute("text-anchor", "middle");
}

double MarksHeight(const std::vector<std::size_t>& lines) {
    return lines.empty()
               ? 0.0
               : static_cast<double>(*std::max_element(lines.begin(), lines.end()) + 1) * kMarkHeight;
}

void DrawMarks(Markup& page, const Chart& chart, const Scale& scale, const std::vector<std::size_t>& lines,
               double bottom) {
    for (std::size_t i = 0; i < chart.marks.size(); ++i) {
        const double place = scale.Place(chart.marks[i].at);
        const double text_bottom = static_cast<double>(lines[i] + 1) * kMarkHeight - 4.0;
        page.Shape(
            "line",
            {{"class", "mark"}, {"x1", place}, {"x2", place}, {"y1", text_bottom + 3.0}, {"y2", bottom}});
        page.TextElement("text", chart.marks[i].label,
                         {{"class", "mark-label"}, {"x", place}, {"y", text_bottom}, AnchorAt(place)});
    }
}

void DrawSegments(Markup& page, const ChartRow& row, const Scale& scale, double top) {
    double begin = 0.0;
    for (const ChartSegment& segment : row.segments) {
        const double from = scale.Place(begin);
        const double to = scale.Place(begin + segment.length);
        page.Shape("rect", {ColourOf(segment.colour),
                            {"x", from},
                            {"y", top},
                            {"width", to - from},
                            {"height", kBarHeight}});
        begin += segment.length;
    }
    if (scale.IsCut(begin)) {  // An arrow's head: it goes on.
        const Markup::Element arrow = page.Open("g", {{"class", "cut"}});
        page.Shape("rect", {{"x", kWidth - 2.0 * kCutWidth},
                            {"y", top},
                            {"width", kCutWidth / 2.0},
                            {"height", kBarHeight}});
        page.Shape(
            "rect",
            {{"x", kWidth - kCutWidth}, {"y", top}, {"width", kCutWidth / 2.0}, {"height", kBarHeight}});
    }
}

void DrawSpan(Markup& page, const ChartSpan& span, bool marked, const Scale& scale, double top) {
    const double from = scale.Place(span.least);
    const double to = std::max(scale.Place(span.most), from + 1.0);
    page.Shape("rect", {{"class", "bar track"},
                        {"x", 0.0},
                        {"y", top + kBarHeight / 2.0 - 1.0},
                        {"width", from},
                        {"height", 2.0}});
    page.Shape("rect", {ColourOf(marked ? ChartColour::Model : ChartColour::First),
                        {"x", from},
                        {"y", top + kBarHeight / 2.0 - 2.5},
                        {"width", to - from},
                        {"height", 5.0}});
    page.Shape("circle", {ColourOf(marked ? ChartColour::Model : ChartColour::First),
                          {"cx", std::clamp(scale.Place(span.middle), 5.0, kWidth - 5.0)},
                          {"cy", top + kBarHeight / 2.0},
                          {"r", 5.0}});
}

void DrawColumns(Markup& page, const ChartColumns& columns, const Scale& scale, double top) {
    constexpr double kGap = 1.0;
    constexpr double kLeast = 2.0;  // So that a single machine can be seen.
    constexpr double kMedianWidth = 2.0;
    const double bottom = top + kColumnHeight;
    const std::size_t most = *std::max_element(columns.counts.begin(), columns.counts.end());
    const double width = kWidth / static_cast<double>(columns.counts.size());
    page.Shape("rect",
               {{"class", "bar track"}, {"x", 0.0}, {"y", bottom}, {"width", kWidth}, {"height", 1.0}});
    for (std::size_t i = 0; i < columns.counts.size(); ++i) {
        if (columns.counts[i] == 0) {
            continue;
        }
        const double share = static_cast<double>(columns.counts[i]) / static_cast<double>(most);
        const double height = std::max(share * kColumnHeight, kLeast);
        page.Shape("rect", {ColourOf(ChartColour::First),
                            {"x", static_cast<double>(i) * width},
                            {"y", bottom - height},
                            {"width", width - kGap},
                            {"height", height}});
    }
    page.Shape("rect", {ColourOf(ChartColour::Model),
                        {"x", std::min(scale.Place(columns.median), kWidth - kMedianWidth)},
                        {"y", top},
                        {"width", kMedianWidth},
                        {"height", kColumnHeight}});
}

void DrawBar(Markup& page, const ChartRow& row, const Scale& scale, double top) {
    const double bar = top + kBarTop;
    DrawSegments(page, row, scale, bar);
    if (row.limit) {
        page.Shape("rect", {{"class", "limit"},
                            {"x", 0.5},
                            {"y", bar - 0.5},
                            {"width", std::max(scale.Place(*row.limit) - 1.0, 0.0)},
                            {"height", kBarHeight + 1.0}});
    }
    if (row.columns && !row.columns->counts.empty()) {
        DrawColumns(page, *row.columns, scale, bar);
    }
    if (row.span) {
        DrawSpan(page, *row.span, row.marked, scale, bar);
    }
}

void DrawTexts(Markup& page, const ChartRow& row, double top) {
    page.TextElement(
        "text", row.label,
        {row.marked ? Markup::Attribute("class", "label marked") : Markup::Attribute("class", "label"),
         {"x", 0.0},
         {"y", top + kBarTop - 6.0}});
    page.TextElement(
        "text", row.figure,
        {{"class", "figure"}, {"x", kWidth}, {"y", top + kBarTop - 6.0}, {"text-anchor", "end"}});
}

void WriteLegend(Markup& page, const std::vector<ChartLegend>& legend) {
    if (legend.empty()) {
        return;
    }
    const Markup::Element list = page.Open("p", {{"class", "legend"}});
    for (const ChartLegend& entry : legend) {
        const Markup::Element item = page.Open("span");
        {
            const Markup::Element drawing = page.Open(
                "svg",
                {{"viewBox", "0 0 12 12"}, {"width", "12"}, {"height", "12"}, {"aria-hidden", "true"}});
            page.Shape("rect",
                       {ColourOf(entry.colour), {"x", 0.0}, {"y", 0.0}, {"width", 12.0}, {"height", 12.0}});
        }
        page.TextOf(" " + entry.label + " ");
    }
}

Chart ShareChart(const VerdictFacts& verdict) {
    Chart chart;
    chart.title = "Share of the GPU at each refresh rate";
    chart.says =
        "How much of each second of GPU time Vistrel takes: the warp, and the depth model on top of it.";
    chart.legend = {{"warp", ChartColour::Warp}, {"depth model", ChartColour::Model}};
    chart.marks = {{25.0, "25%"}, {50.0, "50%"}, {100.0, "100%"}};
    chart.table_head = {"Refresh", "Warp", "Depth model", "Together"};
    chart.longest = 110.0;
    for (const ShareRow& row : verdict.shares) {
        const double warp = row.warp_ms_per_second / 10.0;
        const double model = row.ai_percent ? std::max(*row.ai_percent - warp, 0.0) : 0.0;
        const std::string rate = FormatText("%lld Hz", static_cast<long long>(row.refresh_hz));
        ChartRow bar;
        bar.label = rate;
        bar.figure =
            row.ai_percent ? FormatText("%.0f%%", *row.ai_percent) : FormatText("%.0f%% without model", warp);
        bar.segments = {{warp, ChartColour::Warp}, {model, ChartColour::Model}};
        chart.rows.push_back(bar);
        chart.longest = std::min(std::max(chart.longest, (warp + model) * 1.05), kLongestShare);
        chart.table_rows.push_back(
            {rate, FormatText("%.0f%%", warp),
             row.ai_percent ? FormatText("%.0f%%", model) : std::string("not timed"),
             row.ai_percent ? FormatText("%.0f%%", *row.ai_percent) : std::string("unknown")});
    }
    return chart;
}

Chart WarpChart(const WarpFacts& warp) {
    Chart chart;
    chart.title = "What the warp costs, against the time of one frame";
    chart.says = "Milliseconds for both eyes of one headset frame, at each size that was measured.";
    chart.table_head = {"Size", "", "GPU ms", "Share of a frame at 90 Hz"};
    chart.longest = MillisecondsOfFrame(72.0) * 1.05;
    for (const double rate : {144.0, 120.0, 90.0, 72.0}) {
        chart.marks.push_back({MillisecondsOfFrame(rate), FormatText("%.0f Hz", rate)});
    }
    for (const WarpRow& row : warp.rows) {
        ChartRow bar;
        const std::string size = SizeText(row.width, row.height);
        bar.label = size + (row.label.empty() ? "" : "  " + row.label);
        bar.figure = Number(row.milliseconds) + " ms";
        bar.segments = {{row.milliseconds, ChartColour::Warp}};
        chart.rows.push_back(bar);
        chart.longest = std::min(std::max(chart.longest, row.milliseconds * 1.05), kLongestWarpMs);
        chart.table_rows.push_back(
            {size, row.label, Number(row.milliseconds),
             FormatText("%.0f%%", row.milliseconds / MillisecondsOfFrame(90.0) * 100.0)});
    }
    return chart;
}

Chart ModelChart(const ModelFacts& models) {
    Chart chart;
    chart.title = "What the depth models cost";
    chart.says = "Milliseconds of one inference: the bar from the least to the most, the dot at the median.";
    chart.table_head = {"Model", "Median ms", "Least", "Most", ""};
    for (const ModelRow& row : models.rows) {
        ChartRow bar;
        bar.label = row.name + (row.configured ? "  (configured)" : "");
        bar.marked = row.configured;
        if (row.median_ms) {
            bar.figure = Number(*row.median_ms) + " ms";
            bar.span = ChartSpan{row.min_ms, *row.median_ms, row.max_ms};
            chart.longest = std::max(chart.longest, row.max_ms * 1.05);
            chart.table_rows.push_back({row.name, Number(*row.median_ms), Number(row.min_ms),
                                        Number(row.max_ms), row.configured ? "configured" : ""});
        } else {
            bar.figure = "not timed";
            chart.table_rows.push_back({row.name, "not timed", "", "", row.configured ? "configured" : ""});
        }
        chart.rows.push_back(bar);
    }
    return chart;
}

void AddMemoryRow(Chart& chart, const GpuFacts& gpu, const MemoryUse& memory, bool game) {
    const double percent = memory.budget_mb > 0.0 ? memory.used_mb / memory.budget_mb * 100.0 : 0.0;
    ChartRow bar;
    bar.label =
        FormatText("GPU %lld, ", static_cast<long long>(gpu.number)) + (game ? "game running" : "part 1");
    bar.figure = FormatText("%.0f of %.0f MB (%.0f%%)", memory.used_mb, memory.budget_mb, percent);
    bar.segments = {{memory.used_mb, memory.out_of_headroom ? ChartColour::Marked
                                     : game                 ? ChartColour::Second
                                                            : ChartColour::First}};
    bar.limit = memory.budget_mb;
    bar.marked = memory.out_of_headroom;
    chart.rows.push_back(bar);
    chart.longest = std::max({chart.longest, memory.budget_mb, memory.used_mb});
    chart.table_rows.push_back({FormatText("GPU %lld ", static_cast<long long>(gpu.number)) + gpu.name,
                                game ? "game running" : "part 1", FormatText("%.0f", memory.used_mb),
                                FormatText("%.0f", memory.budget_mb), FormatText("%.0f%%", percent)});
}

Chart MemoryChart(const std::vector<GpuFacts>& gpus) {
    Chart chart;
    chart.title = "Video memory in use, within what Windows grants";
    chart.says = "Megabytes that this process uses; the frame around each bar is the budget.";
    chart.table_head = {"GPU", "When", "Used MB", "Budget MB", "Share"};
    for (const GpuFacts& gpu : gpus) {
        if (gpu.memory && !gpu.software) {
            AddMemoryRow(chart, gpu, *gpu.memory, false);
        }
        if (gpu.memory_in_two) {
            AddMemoryRow(chart, gpu, *gpu.memory_in_two, true);
        }
    }
    return chart;
}

Chart RateChart(const Facts& facts) {
    Chart chart;
    chart.title = "New images a second that reached the capture";
    chart.says = "Of the idle desktop in part 1, and of the game in part 2.";
    chart.table_head = {"What", "Images a second"};
    const auto add = [&chart](const char* label, const std::optional<double>& fps, ChartColour colour) {
        if (fps) {
            ChartRow bar;
            bar.label = label;
            bar.figure = FormatText("%.1f fps", *fps);
            bar.segments = {{*fps, colour}};
            chart.rows.push_back(bar);
            chart.longest = std::max(chart.longest, *fps * 1.05);
            chart.table_rows.push_back({label, FormatText("%.1f", *fps)});
        }
    };
    add("idle desktop", facts.capture.fps, ChartColour::First);
    add("game", facts.game.fps, ChartColour::Second);
    const DisplayFacts* const display = PrimaryDisplay(facts);
    if (display != nullptr && display->refresh_hz > 1) {
        const auto rate = static_cast<double>(display->refresh_hz);
        chart.marks = {{rate, FormatText("display %.0f Hz", rate)}};
        chart.longest = std::max(chart.longest, rate * 1.05);
        chart.table_rows.push_back({"refresh rate of the primary display", FormatText("%.0f", rate)});
    }
    return chart;
}

}  // namespace

std::vector<Chart> ChartsOf(const Facts& facts) {
    std::vector<Chart> charts = {ShareChart(facts.verdict), WarpChart(facts.warp), MemoryChart(facts.gpus),
                                 RateChart(facts), ModelChart(facts.models)};
    charts.erase(
        std::remove_if(charts.begin(), charts.end(), [](const Chart& chart) { return chart.rows.empty(); }),
        charts.end());
    return charts;
}

void WriteTable(Markup& page, const std::vector<std::string>& head,
                const std::vector<std::vector<std::string>>& rows) {
    const Markup::Element scroll = page.Open("div", {{"class", "scroll"}});
    const Markup::Element table = page.Open("table");
    {
        const Markup::Element thead = page.Open("thead");
        const Markup::Element row = page.Open("tr");
        for (const std::string& cell : head) {
            page.TextElement(cell.empty() ? Literal("td") : Literal("th"), cell);
        }
    }
    const Markup::Element body = page.Open("tbody");
    for (const std::vector<std::string>& cells : rows) {
        const Markup::Element row = page.Open("tr");
        for (const std::string& cell : cells) {
            page.TextElement("td", cell);
        }
    }
}

void WriteChart(Markup& page, const Chart& chart, std::size_t report, std::size_t number) {
    const Scale scale(chart.longest);
    const std::vector<std::size_t> lines = LabelLines(chart.marks, scale);
    const double top = MarksHeight(lines);
    const double height = top + static_cast<double>(chart.rows.size()) * kRowHeight;

    const Markup::Element figure = page.Open("figure");
    page.TextElement("figcaption", chart.title,
                     {Markup::Attribute::Numbered("id", "r", report, "-chart", number)});
    WriteLegend(page, chart.legend);
    {
        const Markup::Element drawing = page.Open(
            "svg",
            {Markup::Attribute::Text("viewBox", "0 0 " + ShortNumber(kWidth) + " " + ShortNumber(height)),
             {"role", "img"},
             Markup::Attribute::Numbered("aria-labelledby", "r", report, "-chart", number)});
        page.TextElement("desc", chart.says);
        for (std::size_t i = 0; i < chart.rows.size(); ++i) {
            DrawBar(page, chart.rows[i], scale, top + static_cast<double>(i) * kRowHeight);
        }
        DrawMarks(page, chart, scale, lines, height);
        for (std::size_t i = 0; i < chart.rows.size(); ++i) {
            DrawTexts(page, chart.rows[i], top + static_cast<double>(i) * kRowHeight);
        }
    }
    const Markup::Element details = page.Open("details");
    page.TextElement("summary", "Figures as a table");
    page.TextElement("p", chart.says);
    WriteTable(page, chart.table_head, chart.table_rows);
}
