// Finds the output of vistrel_diag in a file that people have sent: reports, their parts, their sections.
//
// A file may contain the report as it was written, a copy of the console, a mail that quotes or wraps it,
// several reports, or none. Its contents are not trusted: text that the report quotes (a window title, a log,
// a settings file) can look like a report itself.
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

/// The sections in the order in which a report has them. A part of the report with a fixed first line instead
/// of a heading counts as a section here.
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

/// The title that the report prints above the section; empty for a section without one.
std::string_view SectionTitle(SectionId id);

/// Which part of the run a section belongs to. The verdict belongs to the whole run.
enum class ReportPart : std::uint8_t { Whole, One, Two };

/// One section of a report.
struct SectionText {
    SectionId id = SectionId::RunningSoftware;
    ReportPart part = ReportPart::Whole;
    std::uint32_t heading_line = 0;  ///< of the heading, or of the first line when there is no heading
    std::vector<SourceLine> lines;   ///< without the heading; empty lines included
};

/// What was changed in a report on its way to us, or what is missing.
enum class DocumentNoteKind : std::uint8_t {
    Utf16,           ///< the file was UTF-16; line numbers are those of its text
    InvalidText,     ///< not all of it is UTF-8; the text is left unchanged
    ConsoleCopy,     ///< a copy of the console; what the console shows around the report was left out
    Quoted,          ///< quoted in the way of mail, or indented
    Wrapped,         ///< long lines were broken and have been joined again
    LineEndsLost,    ///< the line ends are lost; lines were separated by how they begin
    NoOpening,       ///< the first lines are missing
    OtherVersion,    ///< written by a version of vistrel_diag that this program does not know
    CutOff,          ///< it ends early without saying so
    ForeignHeading,  ///< a heading that is not the report's own: repeated, out of order, or unknown
};

struct DocumentNote {
    DocumentNoteKind kind = DocumentNoteKind::CutOff;
    std::uint32_t line = 0;  ///< the line it is about; 0 when it is about no particular line
    std::string text;        ///< one sentence for a reader
};

/// One report.
struct ReportDocument {
    std::vector<SourceLine> opening;      ///< up to the first heading
    std::uint32_t part_one_line = 0;      ///< of the heading "PART 1 - ..."; 0 when missing
    std::uint32_t part_two_line = 0;      ///< of the heading "PART 2 - HEADSET ON, ..."; 0 when missing
    std::vector<SourceLine> loose;        ///< lines below the heading of a part, where none belong
    std::vector<SectionText> sections;    ///< in the order of the report, each at most once per part
    std::optional<SourceLine> cut_short;  ///< the closing line of the report of a run that died
    std::vector<SourceLine> lines;  ///< all lines of the report as found, with broken lines joined again
    std::vector<DocumentNote> notes;

    /// The section of that part, or null.
    const SectionText* Find(SectionId id, ReportPart part) const;

    bool HasNote(DocumentNoteKind kind) const;
};

/// A file and the reports in it. Everything it returns refers to its own memory, which a move keeps valid.
class ReportFile {
  public:
    /// Takes the unchanged bytes of a file. Any bytes are accepted; without a report in them, Reports() is
    /// empty.
    static ReportFile FromBytes(std::string bytes);

    ReportFile(ReportFile&&) noexcept;
    ReportFile& operator=(ReportFile&&) noexcept;
    ~ReportFile();

    const std::vector<ReportDocument>& Reports() const { return reports_; }

    /// How many nonblank lines are outside all reports, not counting the console's own.
    std::size_t LinesOutside() const { return lines_outside_; }

  private:
    struct Storage;  // The text that all views refer to.

    explicit ReportFile(std::unique_ptr<Storage> storage);

    std::unique_ptr<Storage> storage_;
    std::vector<ReportDocument> reports_;
    std::size_t lines_outside_ = 0;
};
