// What vistrel_diag wrote, found again in a file that people have sent: reports, their parts, their sections.
//
// A file may hold the report as it was written, a copy of the console, a mail that quotes or wraps it,
// several reports, or none. Nothing in it is trusted: what the report quotes (a window title, a log, a
// settings file) can look like a report itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vistrel_diag/report/line_reading.h"

/// The sections in the order in which a report has them. A part of the report that has no heading of its own,
/// but a fixed first line, counts as a section here.
enum class SectionId : std::uint8_t {
    RunningSoftware,
    Machine,
    Gpus,
    Displays,
    GpuOverrides,
    Injection,
    SettingsFile,  ///< no heading: the line about a settings file that could not be used
    SettingsInEffect,
    SettingsVerbatim,
    ProductLog,
    Headset,
    BenchmarkSetup,
    Capture,
    Warp,
    DepthModel,
    PartTwoSkipped,
    GameVideoMemory,  ///< no heading: video memory while the game is running; part 2
    HandTracking,
    GameFrameRate,  ///< no heading: the game's frame rate; part 2
    Verdict,
};

inline constexpr std::size_t kSectionCount = static_cast<std::size_t>(SectionId::Verdict) + 1;

/// The title that the report prints over the section; empty for one that has none.
std::string_view SectionTitle(SectionId id);

/// Which part of the run a section belongs to. The verdict belongs to the whole run.
enum class ReportPart : std::uint8_t { Whole, One, Two };

/// One section of a report.
struct SectionText {
    SectionId id = SectionId::RunningSoftware;
    ReportPart part = ReportPart::Whole;
    std::uint32_t heading_line = 0;  ///< of the heading; where there is none, of the first line
    std::vector<SourceLine> lines;   ///< without the heading; the empty ones as well
};

/// What was done to a report on its way, or is missing of it.
enum class DocumentNoteKind : std::uint8_t {
    Utf16,           ///< the file was UTF-16; line numbers are those of its text
    InvalidText,     ///< not all of it is UTF-8; it is left as it is
    ConsoleCopy,     ///< what the console shows around the report was left out
    Quoted,          ///< quoted as mail quotes, or indented
    Wrapped,         ///< long lines were broken and have been joined again
    LineEndsLost,    ///< the ends of lines are gone; lines were told apart by how they begin
    NoOpening,       ///< the first lines are missing
    OtherVersion,    ///< written by a version of vistrel_diag that this program does not know
    CutOff,          ///< it ends before its end, and says nothing of it
    ForeignHeading,  ///< a heading that is not the report's own: repeated, out of order, or unknown
};

struct DocumentNote {
    DocumentNoteKind kind = DocumentNoteKind::CutOff;
    std::uint32_t line = 0;  ///< where it shows; 0 when nowhere in particular
    std::string text;        ///< one sentence for a reader
};

/// One report.
struct ReportDocument {
    std::vector<SourceLine> opening;      ///< up to the first heading
    std::uint32_t part_one_line = 0;      ///< of the heading "PART 1 - ..."; 0 without one
    std::uint32_t part_two_line = 0;      ///< of the heading "PART 2 - HEADSET ON, ..."; 0 without one
    std::vector<SourceLine> loose;        ///< below the heading of a part, where nothing belongs
    std::vector<SectionText> sections;    ///< in the order of the report, each once per part
    std::optional<SourceLine> cut_short;  ///< the line by which a run that died closes its report
    std::vector<SourceLine> lines;        ///< all lines of the report as they were found, joined ones joined
    std::vector<DocumentNote> notes;

    /// The section of that part, or null.
    const SectionText* Find(SectionId id, ReportPart part) const;

    bool HasNote(DocumentNoteKind kind) const;
};

/// A file and the reports in it. What it hands out refers to its own memory, also after a move.
class ReportFile {
  public:
    /// Takes the bytes of a file as they are. Any bytes do; what is no report gives none.
    static ReportFile FromBytes(std::string bytes);

    ReportFile(ReportFile&&) noexcept;
    ReportFile& operator=(ReportFile&&) noexcept;
    ~ReportFile();

    const std::vector<ReportDocument>& Reports() const { return reports_; }

    /// How many lines with text stand outside of all reports, the console's own not counted.
    std::size_t LinesOutside() const { return lines_outside_; }

  private:
    struct Storage;  // The text that all views point into.

    explicit ReportFile(std::unique_ptr<Storage> storage);

    std::unique_ptr<Storage> storage_;
    std::vector<ReportDocument> reports_;
    std::size_t lines_outside_ = 0;
};
