#include "tools/vistrel_report/headings.h"

#include <algorithm>
#include <array>

#include "tools/vistrel_diag/sections/running_software/running_software_reading.h"

namespace {

constexpr std::array kPlaces = {
    Place{"PART 1 - BASELINE, NOTHING ELSE RUNNING", HeadingKind::PartOne},
    Place{"WHAT ELSE WAS RUNNING DURING THIS TEST", HeadingKind::Section, SectionId::RunningSoftware,
          ReportPart::One},
    Place{"MACHINE", HeadingKind::Section, SectionId::Machine, ReportPart::One},
    Place{"GPUs", HeadingKind::Section, SectionId::Gpus, ReportPart::One},
    Place{"DISPLAYS  (this is what the warp resolution comes from)", HeadingKind::Section,
          SectionId::Displays, ReportPart::One},
    Place{"PER-APP GPU OVERRIDES", HeadingKind::Section, SectionId::GpuOverrides, ReportPart::One},
    Place{"INJECTED INTO VISTREL'S OWN FOLDER", HeadingKind::Section, SectionId::Injection, ReportPart::One},
    Place{"VISTREL SETTINGS IN EFFECT", HeadingKind::Section, SectionId::SettingsInEffect, ReportPart::One},
    Place{"VISTREL SETTINGS, VERBATIM", HeadingKind::Section, SectionId::SettingsVerbatim, ReportPart::One},
    Place{"WHAT VISTREL ITSELF LOGGED LAST RUN", HeadingKind::Section, SectionId::ProductLog,
          ReportPart::One},
    Place{"HEADSET / OPENXR", HeadingKind::Section, SectionId::Headset, ReportPart::One},
    Place{"BENCHMARK SETUP", HeadingKind::Section, SectionId::BenchmarkSetup, ReportPart::One},
    Place{"SCREEN CAPTURE", HeadingKind::Section, SectionId::Capture, ReportPart::One},
    Place{"STEREO WARP COST  (both eyes, one headset frame)", HeadingKind::Section, SectionId::Warp,
          ReportPart::One},
    Place{"DEPTH MODEL INFERENCE", HeadingKind::Section, SectionId::DepthModel, ReportPart::One},
    Place{"PART 2 - SKIPPED", HeadingKind::Section, SectionId::PartTwoSkipped, ReportPart::Two},
    Place{"PART 2 - HEADSET ON, GAME RUNNING", HeadingKind::PartTwo},
    Place{"WHAT ELSE WAS RUNNING DURING THIS TEST", HeadingKind::Section, SectionId::RunningSoftware,
          ReportPart::Two},
    Place{"HEADSET / OPENXR", HeadingKind::Section, SectionId::Headset, ReportPart::Two},
    Place{"HAND TRACKING (bare hand vs controller)", HeadingKind::Section, SectionId::HandTracking,
          ReportPart::Two},
    Place{"VERDICT", HeadingKind::Section, SectionId::Verdict, ReportPart::Whole},
};

bool IsTitleOf(std::string_view title, const Place& place) {
    return IsLine(title, place.title);
}

/// One way to read the headings up to one of them, as a chain back to the first.
struct Chain {
    PlacedHeading last;
    std::size_t before = 0;  ///< position of the chain that this one goes on; itself for the first
    std::size_t length = 1;
    std::size_t skipped = 0;  ///< places between the headings that have none
};

/// Takes the headings for those places that give the most of them in the report's order, with the fewest
/// missing between them. What the report quotes can hold headings; a report that has all its own has more of
/// them in order than any forgery that leaves some out. Of equal chains, later headings win: what is quoted
/// stands before the heading that follows.
class HeadingOrder {
  public:
    HeadingOrder() { best_.fill(kNone); }

    void Add(std::size_t line, std::string_view title) {
        // From behind, so that one heading is not its own predecessor.
        for (std::size_t place = kPlaces.size(); place-- > 0;) {
            if (!IsTitleOf(title, kPlaces[place])) {
                continue;
            }
            const Chain chain = ChainTo({line, place});
            if (best_[place] == kNone || Replaces(chain, chains_[best_[place]])) {
                best_[place] = chains_.size();
                chains_.push_back(chain);
            }
        }
    }

    std::vector<PlacedHeading> Longest() const {
        std::size_t longest = kNone;
        for (const std::size_t chain : best_) {
            if (chain != kNone && (longest == kNone || IsBetter(chains_[chain], chains_[longest]))) {
                longest = chain;
            }
        }
        std::vector<PlacedHeading> headings;
        while (longest != kNone) {
            headings.push_back(chains_[longest].last);
            longest = chains_[longest].before == longest ? kNone : chains_[longest].before;
        }
        std::reverse(headings.begin(), headings.end());
        return headings;
    }

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    static bool IsBetter(const Chain& chain, const Chain& other) {
        return chain.length != other.length ? chain.length > other.length : chain.skipped < other.skipped;
    }

    /// Nothing that can hold a heading stands before the running software of either part, but a window title
    /// in it: of two, the first is the report's own.
    static bool Replaces(const Chain& chain, const Chain& other) {
        const bool same_beginning = chain.before == other.before || (chain.length == 1 && other.length == 1);
        if (kPlaces[chain.last.place].title == kPlaces[1].title && same_beginning) {
            return IsBetter(chain, other);
        }
        return !IsBetter(other, chain);
    }

    /// The best chain that ends with `heading`, to be added to chains_.
    Chain ChainTo(const PlacedHeading& heading) const {
        Chain best{heading, chains_.size()};
        for (std::size_t place = 0; place < heading.place; ++place) {
            if (best_[place] == kNone) {
                continue;
            }
            const Chain& before = chains_[best_[place]];
            const Chain chain{heading, best_[place], before.length + 1,
                              before.skipped + heading.place - place - 1};
            if (IsBetter(chain, best)) {
                best = chain;
            }
        }
        return best;
    }

    std::vector<Chain> chains_;
    std::array<std::size_t, kPlaces.size()> best_ = {};
};

bool FollowsBlankLine(const std::vector<SourceLine>& lines, std::size_t i) {
    return i == 0 || IsBlankLine(lines[i - 1].text);
}

/// Whether blank lines have come through: most headings of a report's titles follow one, as all do in the
/// file.
bool BlankLinesStand(const std::vector<SourceLine>& lines) {
    std::size_t with = 0;
    std::size_t without = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (IsReportTitle(HeadingTitle(lines[i].text))) {
            ++(FollowsBlankLine(lines, i) ? with : without);
        }
    }
    return with > without;
}

/// Which quoted texts may go on over several lines, and where they end.
struct Quote {
    std::size_t longest;  ///< bytes
    bool (*begins)(std::string_view line);
    bool (*ends)(std::string_view line);
    bool end_is_part;  ///< of the quote; otherwise it is the line before
};

bool EndsWithBracket(std::string_view line) {
    return line.find("] ") != std::string_view::npos || line.ends_with(']');
}

bool EndsWithParenthesis(std::string_view line) {
    return line.find(")  ") != std::string_view::npos || line.ends_with(')');
}

constexpr std::array kQuotes = {
    // A graphics card's name, in front of its vendor.
    Quote{1024,
          [](std::string_view line) {
              constexpr std::string_view kBehindNumber = "           : ";
              return line.starts_with("GPU ") && line.find(kBehindNumber) != std::string_view::npos &&
                     !EndsWithBracket(line);
          },
          EndsWithBracket, true},
    // Why a model could not be timed, in the table.
    Quote{4096,
          [](std::string_view line) {
              const std::size_t error = line.find("  -  (");
              return error != std::string_view::npos && !EndsWithParenthesis(line.substr(error));
          },
          EndsWithParenthesis, true},
    // The same where there is one model.
    Quote{4096, [](std::string_view line) { return BeginsLine(line, "Could not time it: "); },
          [](std::string_view line) { return BeginsLine(line, "Path tried      : "); }, false},
};

/// How many lines the quoted text has that begins with the first of `lines`; 0 when none begins there.
/// Without its end, which the report may have lost, it is the first line alone.
std::size_t QuotedLines(SourceLines lines) {
    if (const std::size_t title = WindowTitleLines(lines)) {
        return title;
    }
    const std::string_view first = lines.front().text;
    const auto* const quote = std::find_if(
        kQuotes.begin(), kQuotes.end(), [first](const Quote& candidate) { return candidate.begins(first); });
    if (quote == kQuotes.end()) {
        return 0;
    }
    std::size_t bytes = first.size();
    for (std::size_t i = 1; i < lines.size() && bytes <= quote->longest; ++i) {
        if (quote->ends(lines[i].text)) {
            return quote->end_is_part ? i + 1 : i;
        }
        bytes += lines[i].text.size() + 1;
    }
    return 1;
}

}  // namespace

std::string_view HeadingTitle(std::string_view line) {
    constexpr std::string_view kBegin = "== ";
    constexpr std::string_view kEnd = " ==";
    if (!line.starts_with(kBegin)) {
        return {};
    }
    while (line.ends_with(' ') || line.ends_with('\t')) {
        line.remove_suffix(1);
    }
    const std::size_t end = line.find_last_not_of('=');
    if (end == std::string_view::npos || end < kBegin.size() || !line.substr(end).starts_with(kEnd)) {
        return {};
    }
    return line.substr(kBegin.size(), end - kBegin.size());
}

Headings FindHeadings(const std::vector<SourceLine>& lines) {
    const bool needs_blank = BlankLinesStand(lines);
    std::vector<std::size_t> all;
    HeadingOrder order;
    std::size_t quote_end = 0;  // Behind a text of several lines that the report quotes.
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i >= quote_end) {
            quote_end = i + QuotedLines(SourceLines(lines).subspan(i));
        }
        const std::string_view title = HeadingTitle(lines[i].text);
        if (!title.empty()) {
            all.push_back(i);
            if (i >= quote_end && (!needs_blank || FollowsBlankLine(lines, i))) {
                order.Add(i, title);
            }
        }
    }
    Headings headings;
    headings.own = order.Longest();
    auto own = headings.own.begin();
    for (const std::size_t line : all) {
        if (own != headings.own.end() && own->line == line) {
            ++own;
        } else {
            headings.foreign.push_back(line);
        }
    }
    return headings;
}

const Place& PlaceOf(const PlacedHeading& heading) {
    return kPlaces.at(heading.place);
}

bool IsReportTitle(std::string_view title) {
    return std::any_of(kPlaces.begin(), kPlaces.end(),
                       [title](const Place& place) { return IsTitleOf(title, place); });
}

std::string_view SectionTitle(SectionId id) {
    const auto* const place = std::find_if(kPlaces.begin(), kPlaces.end(), [id](const Place& candidate) {
        return candidate.kind == HeadingKind::Section && candidate.id == id;
    });
    return place == kPlaces.end() ? std::string_view() : place->title;
}
