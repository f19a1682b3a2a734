#include "tools/vistrel_report/reading.h"

#include <algorithm>

namespace {

bool HasNoText(const std::vector<SourceLine>& lines) {
    return std::all_of(lines.begin(), lines.end(),
                       [](const SourceLine& line) { return IsBlankLine(line.text); });
}

/// What `read` makes of the section, if the report has it. A section that holds nothing because the file ends
/// there is not there.
template <typename Read>
auto ReadSection(const ReportDocument& document, SectionId id, ReportPart part, UnreadLines& unread,
                 Read read) {
    const SectionText* const section = document.Find(id, part);
    using Result = decltype(read(SourceLines(), unread));
    if (section == nullptr || (section == &document.sections.back() &&
                               document.HasNote(DocumentNoteKind::CutOff) && HasNoText(section->lines))) {
        return Result();
    }
    return read(SourceLines(section->lines), unread);
}

}  // namespace

Reading ReadReport(const ReportDocument& document) {
    Reading reading;
    UnreadLines& unread = reading.not_understood;
    const auto one = [&](SectionId id, auto read) {
        return ReadSection(document, id, ReportPart::One, unread, read);
    };
    const auto two = [&](SectionId id, auto read) {
        return ReadSection(document, id, ReportPart::Two, unread, read);
    };
    reading.part_one.running_software = one(SectionId::RunningSoftware, ReadRunningSoftwareSection);
    reading.part_one.machine = one(SectionId::Machine, ReadMachineSection);
    reading.part_one.gpus = one(SectionId::Gpus, ReadGpuSection);
    reading.part_two.running_software = two(SectionId::RunningSoftware, ReadRunningSoftwareSection);
    reading.part_two.video_memory = two(SectionId::GameVideoMemory, ReadVramLines);
    reading.notes = document.notes;
    return reading;
}
