#include "tools/vistrel_report/distributions.h"

#include <algorithm>
#include <cmath>

#include "platform/format.h"

namespace {

constexpr std::size_t kColumns = 42;

/// One row: its figures in ascending order, one a machine.
struct Spread {
    std::string gpu;
    std::string of;
    std::vector<double> values;
};

double Quantile(const std::vector<double>& sorted, double share) {
    return sorted[static_cast<std::size_t>(std::lround(share * static_cast<double>(sorted.size() - 1)))];
}

std::string Number(double number) {
    return FormatText("%.2f", number);
}

/// Where the scale ends: at the greatest figure, unless a few outliers would press all others together.
double LongestOf(const std::vector<Spread>& spreads) {
    constexpr double kBeyondMost = 3.0;
    double greatest = 0.0;
    double usual = 0.0;
    for (const Spread& spread : spreads) {
        greatest = std::max(greatest, spread.values.back());
        usual = std::max(usual, Quantile(spread.values, 0.75));
    }
    return (usual > 0.0 ? std::min(greatest, usual * kBeyondMost) : greatest) * 1.05;
}

std::vector<std::size_t> ColumnsOf(const std::vector<double>& values, double longest) {
    std::vector<std::size_t> columns(kColumns);
    for (const double value : values) {
        const double place = longest > 0.0 ? value / longest * static_cast<double>(kColumns) : 0.0;
        ++columns[std::min(static_cast<std::size_t>(std::min(place, static_cast<double>(kColumns))),
                           kColumns - 1)];
    }
    return columns;
}

/// Four or so round figures up to `longest`.
std::vector<ChartMark> RoundMarks(double longest, std::string_view unit) {
    constexpr double kWanted = 4.0;
    if (!(longest > 0.0)) {
        return {};
    }
    const double power = std::pow(10.0, std::floor(std::log10(longest / kWanted)));
    double step = power;
    for (const double factor : {2.0, 5.0, 10.0}) {
        step = longest / step > kWanted + 1.0 ? power * factor : step;
    }
    std::vector<ChartMark> marks;
    for (int i = 1; step * i < longest && marks.size() < 10; ++i) {
        marks.push_back({step * i, ShortNumber(step * i) + " " + std::string(unit)});
    }
    return marks;
}

std::vector<ChartMark> FrameMarks(const std::vector<double>& refresh_rates, double longest) {
    std::vector<ChartMark> marks;
    for (const double rate : refresh_rates) {
        if (1000.0 / rate < longest) {
            marks.push_back({1000.0 / rate, FormatText("%.0f Hz", rate)});
        }
    }
    return marks;
}

bool BeginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::size_t CharactersOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

/// `text` cut to so many characters.
std::string Cut(std::string_view text, std::size_t longest) {
    if (CharactersOf(text) <= longest) {
        return std::string(text);
    }
    std::size_t characters = 0;
    std::size_t end = 0;
    for (; end < text.size() && (characters < longest || !BeginsCharacter(text[end])); ++end) {
        characters += BeginsCharacter(text[end]) ? 1 : 0;
    }
    return std::string(text.substr(0, end)) + "...";
}

/// A row's name, so short that it does not reach the figure beside it; the table has all of it. What tells
/// two graphics cards apart is at the end of their names, and what tells two models apart is at the
/// beginning.
std::string LabelOf(const Spread& spread) {
    constexpr std::size_t kLongest = 44;
    constexpr std::size_t kLongestGpu = 22;
    constexpr std::size_t kLongestOf = 17;
    if (CharactersOf(spread.gpu) + CharactersOf(spread.of) + 2 <= kLongest) {
        return spread.gpu + (spread.of.empty() ? "" : ", " + spread.of);
    }
    std::string_view gpu = spread.gpu;
    for (std::size_t blank = gpu.find(' ');
         CharactersOf(gpu) > kLongestGpu && blank != std::string_view::npos && blank + 1 < gpu.size();
         blank = gpu.find(' ')) {
        gpu.remove_prefix(blank + 1);
    }
    std::string_view of = spread.of;
    for (std::size_t blank = of.rfind(' '); CharactersOf(of) > kLongestOf && blank != std::string_view::npos;
         blank = of.rfind(' ')) {
        of = of.substr(0, blank);
    }
    return Cut(gpu, kLongestGpu) + (of.empty() ? "" : ", " + Cut(of, kLongestOf));
}

ChartRow RowOf(const Spread& spread, const DistributionTexts& texts, double longest) {
    ChartRow row;
    row.label = LabelOf(spread);
    const double median = Quantile(spread.values, 0.5);
    row.figure = Number(median) + " " + std::string(texts.unit) + FormatText(" (%zu)", spread.values.size());
    row.columns = ChartColumns{ColumnsOf(spread.values, longest), median};
    return row;
}

std::vector<std::string> TableRowOf(const Spread& spread, bool with_of) {
    std::vector<std::string> cells = {spread.gpu};
    if (with_of) {
        cells.push_back(spread.of);
    }
    cells.push_back(FormatText("%zu", spread.values.size()));
    for (const double share : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        cells.push_back(Number(Quantile(spread.values, share)));
    }
    return cells;
}

}  // namespace

void Distribution::Add(const std::string& gpu, const std::string& of, const std::string& machine,
                       double value) {
    if (!machine.empty() && std::isfinite(value) && value >= 0.0) {
        machines_[{gpu, of}][machine].push_back(value);
    }
}

Chart Distribution::ToChart(const DistributionTexts& texts) const {
    std::vector<Spread> spreads;
    for (const auto& [key, machines] : machines_) {
        Spread& spread = spreads.emplace_back();
        spread.gpu = key.first.empty() ? "unknown GPU" : key.first;
        spread.of = key.second;
        for (const auto& [machine, values] : machines) {
            std::vector<double> sorted = values;
            std::sort(sorted.begin(), sorted.end());
            spread.values.push_back(Quantile(sorted, 0.5));
        }
        std::sort(spread.values.begin(), spread.values.end());
    }
    std::stable_sort(spreads.begin(), spreads.end(), [](const Spread& left, const Spread& right) {
        return left.values.size() > right.values.size();
    });
    const std::size_t all = spreads.size();
    spreads.resize(std::min(all, kMostTableRows));

    Chart chart;
    chart.title = texts.title;
    chart.says = texts.says;
    chart.says += " The figure on the right is the median, with the number of machines.";
    if (all > kMostChartRows) {
        chart.says +=
            FormatText(" Drawn are the %zu of %zu rows with the most machines.", kMostChartRows, all);
    }
    chart.legend = {{"machines", ChartColour::First}, {"median", ChartColour::Model}};
    chart.table_head = {"GPU"};
    if (!texts.of.empty()) {
        chart.table_head.emplace_back(texts.of);
    }
    for (const char* head : {"Machines", "Least", "Quarter", "Median", "Three quarters", "Most"}) {
        chart.table_head.emplace_back(head);
    }
    const std::vector<Spread> drawn(
        spreads.begin(), spreads.begin() + static_cast<std::ptrdiff_t>(std::min(all, kMostChartRows)));
    chart.longest = drawn.empty() ? 0.0 : LongestOf(drawn);
    chart.marks = FrameMarks(texts.refresh_rates, chart.longest);
    if (chart.marks.empty()) {
        chart.marks = RoundMarks(chart.longest, texts.unit);
    }
    for (const Spread& spread : drawn) {
        chart.rows.push_back(RowOf(spread, texts, chart.longest));
    }
    for (const Spread& spread : spreads) {
        chart.table_rows.push_back(TableRowOf(spread, !texts.of.empty()));
    }
    return chart;
}
