#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/text_lines.h"
#include "tools/vistrel_diag/report/report.h"

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

/// Marks the start of a run of the product. Counts only in a line that also contains a marker.
constexpr std::string_view kRunAnchor = "Initializing D3D11";

/// Finds any of several words. Searching for them one by one would take many passes over a log that may be
/// huge. Instead: if every word has at least n characters, one of the n - 2 triples in its first n characters
/// starts at a multiple of n - 2. Checking only those positions finds every word, and a hash table of the
/// triples rejects nearly all positions at once.
template <std::size_t Count>
class WordSearch {
  public:
    explicit constexpr WordSearch(const std::array<std::string_view, Count>& words) : words_(words) {
        std::size_t shortest = words[0].size();
        for (const std::string_view word : words) {
            shortest = std::min(shortest, word.size());
        }
        stride_ = shortest - kTriple + 1;
        for (const std::string_view word : words) {
            for (std::size_t i = 0; i < stride_; ++i) {
                may_be_word_[Slot(word.data() + i)] = true;
            }
        }
    }

    bool FindsOneIn(std::string_view text) const {
        std::size_t i = 0;
        // Reads four bytes at once if there are four.
        for (std::uint32_t bytes = 0; i + sizeof(bytes) <= text.size(); i += stride_) {
            std::memcpy(&bytes, text.data() + i, sizeof(bytes));
            if (may_be_word_[SlotOf(bytes & 0xFFFFFFU)] && WordBeginsNear(text, i)) {
                return true;
            }
        }
        return i + kTriple <= text.size() && may_be_word_[Slot(text.data() + i)] && WordBeginsNear(text, i);
    }

  private:
    static constexpr std::size_t kTriple = 3;
    static constexpr std::uint32_t kTableBits = 14;

    static constexpr std::size_t Slot(const char* text) {
        const auto byte = [text](std::size_t i) {
            return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
        };
        return SlotOf(byte(0) | byte(1) << 8U | byte(2) << 16U);
    }

    static_assert(std::endian::native == std::endian::little, "the triple is in the low bytes of four");

    static constexpr std::size_t SlotOf(std::uint32_t triple) {
        return (triple * 0x9E3779B1U) >> (32U - kTableBits);
    }

    /// Whether a word begins at `position` or less than a stride before it. Separate from the loop that calls
    /// it, which makes the loop faster. The check of the first character is for triples that occur in every
    /// line of a log and share a word's slot.
    [[gnu::noinline]] bool WordBeginsNear(std::string_view text, std::size_t position) const {
        for (std::size_t back = 0; back < stride_ && back <= position; ++back) {
            const std::string_view rest = text.substr(position - back);
            for (const std::string_view word : words_) {
                if (word.front() == rest.front() && rest.starts_with(word)) {
                    return true;
                }
            }
        }
        return false;
    }

    std::array<std::string_view, Count> words_;
    std::size_t stride_ = 0;
    std::array<bool, std::size_t{1} << kTableBits> may_be_word_ = {};
};

constexpr WordSearch kMarkerSearch(kMarkers);
constexpr WordSearch kAnchorSearch(std::array{kRunAnchor});

static_assert(kRunAnchor.size() <= TextLines::kOverlap);
static_assert(std::all_of(kMarkers.begin(), kMarkers.end(),
                          [](std::string_view marker) { return marker.size() <= TextLines::kOverlap; }));

/// The last lines added, in a ring that reuses its strings.
class LastLines {
  public:
    void Clear() { count_ = 0; }

    /// Moves the text out of `line` and leaves it another string to reuse.
    void Add(std::string& line) {
        lines_[count_ % lines_.size()].swap(line);
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
        relevant = relevant || kMarkerSearch.FindsOneIn(piece->text);
        if (piece->ends && !relevant) {
            continue;
        }
        starts_run = starts_run || kAnchorSearch.FindsOneIn(piece->text);
        start += piece->Fresh().substr(0, Report::kLongestLine - start.size());
        if (piece->ends) {
            // Lines before the last start of a run are never quoted.
            if (starts_run) {
                last_run.Clear();
            }
            last_run.Add(start);
        }
    }
    return last_run.InOrder();
}
