#include "tools/vistrel_report/reading.h"

#include <algorithm>

namespace {

bool HasNoText(const std::vector<SourceLine>& lines) {
    return std::all_of(lines.begin(), lines.end(),
                       [](const SourceLine& line) { return IsBlankLine(line.text); });
}

/// Reads the sections of one part.
class PartReader {
  public:
    PartReader(const ReportDocument& document, ReportPart part, UnreadLines& unread)
        : document_(document), part_(part), unread_(unread) {}

    /// What `read` makes of the section, if the report has it. A section that holds nothing because the file
    /// ends there is not there.
    template <typename Record>
    void Read(SectionId id, std::optional<Record>& record,
              std::optional<Record> (*read)(SourceLines, UnreadLines&)) {
        const SectionText* const section = document_.Find(id, part_);
        if (section == nullptr || (section == &document_.sections.back() && HasNoText(section->lines))) {
            return;
        }
        record = read(section->lines, unread_);
    }

  private:
    const ReportDocument& document_;
    ReportPart part_;
    UnreadLines& unread_;
};

void ReadPartOne(const ReportDocument& document, Reading& reading) {
    PartReader reader(document, ReportPart::One, reading.not_understood);
    PartOneReading& part = reading.part_one;
    reader.Read(SectionId::RunningSoftware, part.running_software, ReadRunningSoftwareSection);
    reader.Read(SectionId::Machine, part.machine, ReadMachineSection);
    reader.Read(SectionId::Gpus, part.gpus, ReadGpuSection);
    reader.Read(SectionId::Displays, part.displays, ReadDisplaySection);
    reader.Read(SectionId::GpuOverrides, part.gpu_overrides, ReadGpuOverrideSection);
    reader.Read(SectionId::Injection, part.injection, ReadInjectionSection);
    reader.Read(SectionId::SettingsFile, part.settings_file, ReadSettingsFile);
    reader.Read(SectionId::SettingsInEffect, part.settings, ReadSettingsInEffect);
    reader.Read(SectionId::SettingsVerbatim, part.settings_verbatim, ReadSettingsVerbatim);
    reader.Read(SectionId::ProductLog, part.product_log, ReadProductLogSection);
    reader.Read(SectionId::Headset, part.headset, ReadHeadsetSection);
    reader.Read(SectionId::BenchmarkSetup, part.benchmark_setup, ReadBenchmarkSetupSection);
    reader.Read(SectionId::Capture, part.capture, ReadCaptureSection);
    reader.Read(SectionId::Warp, part.warp, ReadWarpSection);
    reader.Read(SectionId::DepthModel, part.depth_model, ReadDepthModelSection);
}

void ReadPartTwo(const ReportDocument& document, Reading& reading) {
    PartReader reader(document, ReportPart::Two, reading.not_understood);
    PartTwoReading& part = reading.part_two;
    part.heading_line = document.part_two_line;
    if (const SectionText* const skipped = document.Find(SectionId::PartTwoSkipped, ReportPart::Two)) {
        part.skipped = true;
        part.heading_line = skipped->heading_line;
        ReadPartTwoSkipped(skipped->lines, reading.not_understood);
    }
    reader.Read(SectionId::RunningSoftware, part.running_software, ReadRunningSoftwareSection);
    reader.Read(SectionId::GameVideoMemory, part.video_memory, ReadVramLines);
    reader.Read(SectionId::Headset, part.headset, ReadHeadsetSection);
    reader.Read(SectionId::HandTracking, part.hand_tracking, ReadHandTrackingSection);
    reader.Read(SectionId::GameFrameRate, part.game_frame_rate, ReadGameFrameRate);
}

}  // namespace

Reading ReadReport(const ReportDocument& document) {
    Reading reading;
    UnreadLines& unread = reading.not_understood;
    reading.opening = ReadOpeningLines(document.opening, unread);
    ReadEachLine(document.loose, unread, [](const SourceLine&) { return false; });
    ReadPartOne(document, reading);
    ReadPartTwo(document, reading);
    PartReader(document, ReportPart::Whole, unread)
        .Read(SectionId::Verdict, reading.verdict, ReadVerdictSection);
    if (document.cut_short) {
        reading.cut_short = ReadCutShortLine(*document.cut_short);
        if (!reading.cut_short) {
            unread.push_back(*document.cut_short);
        }
    }
    std::stable_sort(unread.begin(), unread.end(), [](const SourceLine& left, const SourceLine& right) {
        return left.number < right.number;
    });
    reading.notes = document.notes;
    return reading;
}
