#include "tools/vistrel_diag/product_log_selection.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "platform/text_lines.h"
#include "tools/vistrel_diag/report.h"

namespace {

constexpr std::array<std::string_view, 15> kMarkers = {
    "DepthEstimator",
    "DirectML",
    "D3D12 device",
    "D3D11CreateDevice",
    "Required Graphics Adapter",
    "Found DXGI Adapter",
    "Match found",
    "ERROR",
    "WARNING",
    "failed",
    "Failed",
    "monitor is driven by",
    "Initialized DXGI",
    "Initialized WGC",
    "ReShade mode",
};

/// Starts a run of the product. Counts only in a line that a marker has made relevant.
constexpr std::string_view kRunAnchor = "Initializing D3D11";

constexpr std::size_t kShortestMarker =
    std::min_element(kMarkers.begin(), kMarkers.end(), [](std::string_view a, std::string_view b) {
        return a.size() < b.size();
    })->size();

static_assert(std::all_of(kMarkers.begin(), kMarkers.end(),
                          [](std::string_view marker) { return marker.size() <= TextLines::kOverlap; }));

// Searching for fifteen markers one by one would cost fifteen passes over a log that may be huge. Every
// marker has at least five characters, so of the three triples of neighbours in its first five, one begins at
// a position that is a multiple of three. Looking at those positions alone finds all of them, and a table
// over a hash of the triple turns nearly every position away at once.
constexpr std::size_t kTriple = 3;
constexpr std::size_t kTriplesOfMarker = kShortestMarker - kTriple + 1;
constexpr std::uint32_t kTableBits = 14;

constexpr std::size_t TripleSlot(const char* text) {
    const auto byte = [text](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t triple = byte(0) | byte(1) << 8U | byte(2) << 16U;
    return (triple * 0x9E3779B1U) >> (32U - kTableBits);
}

constexpr std::array<bool, std::size_t{1} << kTableBits> kMayBeMarker = [] {
    std::array<bool, std::size_t{1} << kTableBits> table = {};
    for (const std::string_view marker : kMarkers) {
        for (std::size_t i = 0; i < kTriplesOfMarker; ++i) {
            table[TripleSlot(marker.data() + i)] = true;
        }
    }
    return table;
}();

bool BeginsWithMarker(std::string_view text) {
    return std::any_of(kMarkers.begin(), kMarkers.end(),
                       [text](std::string_view marker) { return text.starts_with(marker); });
}

bool ContainsMarker(std::string_view text) {
    for (std::size_t i = 0; i + kTriple <= text.size(); i += kTriplesOfMarker) {
        if (!kMayBeMarker[TripleSlot(text.data() + i)]) {
            continue;
        }
        for (std::size_t back = 0; back < kTriplesOfMarker && back <= i; ++back) {
            if (BeginsWithMarker(text.substr(i - back))) {
                return true;
            }
        }
    }
    return false;
}

/// The last lines added, in a ring whose strings are used again.
class LastLines {
  public:
    void Clear() { count_ = 0; }

    void Add(std::string_view line) {
        lines_[count_ % lines_.size()] = line;
        ++count_;
    }

    std::vector<std::string> InOrder() const {
        std::vector<std::string> ordered;
        for (std::size_t i = count_ - std::min(count_, lines_.size()); i < count_; ++i) {
            ordered.push_back(lines_[i % lines_.size()]);
        }
        return ordered;
    }

  private:
    std::array<std::string, kMostQuotedLogLines> lines_;
    std::size_t count_ = 0;
};

}  // namespace

std::vector<std::string> SelectProductLogLines(std::istream& log) {
    LastLines last_run;
    std::string start;
    bool relevant = false;
    bool starts_run = false;
    TextLines lines(log);
    while (const auto piece = lines.Next()) {
        if (piece->begins) {
            start.clear();
            relevant = false;
            starts_run = false;
        }
        relevant = relevant || ContainsMarker(piece->text);
        if (piece->ends && !relevant) {
            continue;
        }
        starts_run = starts_run || piece->text.find(kRunAnchor) != std::string_view::npos;
        start += piece->Fresh().substr(0, Report::kLongestLine - start.size());
        if (piece->ends) {
            // What came before the last line that starts a run is never quoted.
            if (starts_run) {
                last_run.Clear();
            }
            last_run.Add(start);
        }
    }
    return last_run.InOrder();
}
