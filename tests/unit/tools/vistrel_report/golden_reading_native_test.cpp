// The golden reports read: as they are, and with all that mail, consoles and editors do to them.
#include <algorithm>
#include <functional>

#include "tests/unit/tools/vistrel_report/golden_reports.h"
#include "tools/vistrel_report/reading.h"

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

/// What a reading found, as lines of text that can be compared: the sections, and their values.
using Facts = std::vector<std::string>;

template <typename Record>
void AddSection(Facts& facts, const char* name, const std::optional<Record>& record) {
    if (record) {
        facts.emplace_back(name);
    }
}

template <typename Value>
void AddValue(Facts& facts, const std::string& name, const Value& value) {
    std::ostringstream text;
    text << name << " = " << value;
    facts.push_back(text.str());
}

void AddSoftware(Facts& facts, const std::string& part,
                 const std::optional<RunningSoftwareReading>& software) {
    AddSection(facts, (part + "running software").c_str(), software);
    if (software) {
        for (const std::string& name : software->software.notable) {
            AddValue(facts, part + "program", name);
        }
        AddValue(facts, part + "product runs", software->VistrelWasRunning());
    }
}

void AddHeadset(Facts& facts, const std::string& part, const std::optional<HeadsetReading>& headset) {
    AddSection(facts, (part + "headset").c_str(), headset);
    if (headset) {
        AddValue(facts, part + "runtime", headset->runtime.value_or(ReadText()).text);
        AddValue(facts, part + "message", headset->message.value_or(ReadText()).text);
        AddValue(facts, part + "required", headset->required_gpu.value_or(RequiredGpuReading()).name);
        AddValue(facts, part + "crosses", headset->cross_gpu_lines.size());
    }
}

void AddPartOne(Facts& facts, const PartOneReading& part) {
    AddSoftware(facts, "1 ", part.running_software);
    AddSection(facts, "machine", part.machine);
    if (part.machine) {
        AddValue(facts, "windows", part.machine->machine.windows_name.value_or("?"));
        AddValue(facts, "memory", part.machine->machine.memory.value_or(PhysicalMemory()).total);
    }
    for (const ProbedGpu& probed : part.gpus.value_or(GpuReading()).inventory.gpus) {
        AddValue(facts, "gpu", probed.gpu.name);
        AddValue(facts, "gpu memory", probed.memory.value_or(VideoMemoryUse()).usage);
    }
    for (const ReadDisplay& display : part.displays.value_or(DisplayReading()).displays) {
        AddValue(facts, "display", display.display.name + " " + display.gpu_name);
        AddValue(facts, "display width", display.display.width);
    }
    AddSection(facts, "overrides", part.gpu_overrides);
    AddSection(facts, "injection", part.injection);
    AddSection(facts, "settings", part.settings);
    if (part.settings) {
        AddValue(facts, "settings file", part.settings->file_path);
        AddValue(facts, "model", part.settings->settings.depth_model_quality);
        AddValue(facts, "defaults", part.settings->defaults_line != 0);
        AddValue(facts, "gpu wait", part.settings->gpu_wait_line != 0);
    }
    AddSection(facts, "verbatim", part.settings_verbatim);
    AddSection(facts, "log", part.product_log);
    AddHeadset(facts, "1 ", part.headset);
    AddSection(facts, "setup", part.benchmark_setup);
    AddSection(facts, "capture", part.capture);
    if (part.capture) {
        AddValue(facts, "captured", part.capture->measurement.ok);
        AddValue(facts, "error", part.capture->measurement.error);
        AddValue(facts, "other gpu", part.capture->measurement.capture_gpu_name);
    }
    for (const WarpRowReading& row : part.warp.value_or(WarpReading()).rows) {
        AddValue(facts, "warp " + row.label, row.gpu_ms);
    }
    for (const ModelReading& model : part.depth_model.value_or(DepthModelReading()).models) {
        AddValue(facts, "model " + model.timing.name, model.timing.median_ms);
    }
}

void AddPartTwo(Facts& facts, const PartTwoReading& part) {
    AddValue(facts, "skipped", part.skipped);
    AddSoftware(facts, "2 ", part.running_software);
    for (const ProbedGpu& probed : part.video_memory.value_or(GameVideoMemoryReading()).gpus) {
        AddValue(facts, "2 gpu " + probed.gpu.name, probed.memory->usage);
    }
    AddHeadset(facts, "2 ", part.headset);
    AddSection(facts, "hands", part.hand_tracking);
    AddSection(facts, "game", part.game_frame_rate);
}

Facts FactsOf(const Reading& reading) {
    Facts facts;
    AddSection(facts, "opening", reading.opening);
    AddPartOne(facts, reading.part_one);
    AddPartTwo(facts, reading.part_two);
    AddSection(facts, "verdict", reading.verdict);
    if (reading.verdict && reading.verdict->grade) {
        AddValue(facts, "grade", reading.verdict->percent);
    }
    for (const RefreshRowReading& row : reading.verdict.value_or(VerdictReading()).rows) {
        AddValue(facts, "row", row.refresh_hz);
    }
    AddSection(facts, "cut short", reading.cut_short);
    return facts;
}

Reading ReadOnly(const std::string& bytes) {
    const ReportFile file = ReportFile::FromBytes(bytes);
    EXPECT_THAT(file.Reports(), SizeIs(1));
    Reading reading;
    if (!file.Reports().empty()) {
        reading = ReadReport(file.Reports().front());
        reading.not_understood.clear();  // They refer to the file.
    }
    return reading;
}

std::vector<std::string> NotUnderstood(const std::string& bytes) {
    std::vector<std::string> lines;
    const ReportFile file = ReportFile::FromBytes(bytes);
    for (const ReportDocument& document : file.Reports()) {
        for (const SourceLine& line : ReadReport(document).not_understood) {
            lines.emplace_back(line.text);
        }
    }
    return lines;
}

std::vector<DocumentNoteKind> Kinds(const Reading& reading) {
    std::vector<DocumentNoteKind> kinds;
    for (const DocumentNote& note : reading.notes) {
        kinds.push_back(note.kind);
    }
    return kinds;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string EachLine(const std::string& text, const std::function<std::string(const std::string&)>& change) {
    std::string changed;
    for (const std::string& line : LinesOf(text)) {
        changed += change(line) + "\n";
    }
    return changed;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// As mail programs wrap: at the last blank within `width` columns, which goes.
std::string Wrapped(const std::string& line, std::size_t width) {
    std::string wrapped;
    std::string rest = line;
    while (rest.size() > width) {
        const std::size_t blank = rest.rfind(' ', width);
        const std::size_t cut = blank == std::string::npos || blank < 4 ? rest.find(' ', width) : blank;
        if (cut == std::string::npos) {
            break;
        }
        std::string piece = rest.substr(0, cut);
        piece.erase(piece.find_last_not_of(' ') + 1);
        wrapped += piece + "\n";
        rest.erase(0, rest.find_first_not_of(' ', cut) == std::string::npos
                          ? rest.size()
                          : rest.find_first_not_of(' ', cut));
    }
    return wrapped + rest;
}

std::string Utf16(const std::string& text, bool big_endian, bool mark) {
    std::string bytes = mark ? (big_endian ? "\xFE\xFF" : "\xFF\xFE") : "";
    for (const char character : text) {
        bytes += big_endian ? std::string{'\0', character} : std::string{character, '\0'};
    }
    return bytes;
}

bool IsWholeReport(const GoldenReport& report) {
    return report.text.find("Vistrel diagnostic report v") == 0;
}

/// All whole reports that are no copies of the console.
std::vector<GoldenReport> WholeReports() {
    std::vector<GoldenReport> reports = GoldenReports();
    std::erase_if(reports, [](const GoldenReport& report) { return !IsWholeReport(report); });
    return reports;
}

/// The reading of `change`d reports is that of the reports themselves, with this note.
void ExpectSameWith(DocumentNoteKind note, const std::function<std::string(const std::string&)>& change) {
    for (const GoldenReport& report : WholeReports()) {
        SCOPED_TRACE(report.name);
        const std::string changed = change(report.text);
        const Reading reading = ReadOnly(changed);
        EXPECT_EQ(FactsOf(reading), FactsOf(ReadOnly(report.text)));
        EXPECT_THAT(Kinds(reading), Contains(note));
        EXPECT_THAT(NotUnderstood(changed), IsEmpty());
    }
}

}  // namespace

TEST(GoldenReading, UnderstandsEveryLine) {
    const std::vector<GoldenReport> reports = GoldenReports();
    EXPECT_GT(reports.size(), 20U);
    for (const GoldenReport& report : reports) {
        SCOPED_TRACE(report.name);
        const ReportFile file = ReportFile::FromBytes(report.text);
        ASSERT_THAT(file.Reports(), SizeIs(1));
        EXPECT_EQ(file.LinesOutside(), 0U);
        for (const SourceLine& line : ReadReport(file.Reports().front()).not_understood) {
            ADD_FAILURE() << line.number << ": " << line.text;
        }
    }
}

TEST(GoldenReading, ACompleteReportHasNoNote) {
    for (const GoldenReport& report : WholeReports()) {
        EXPECT_THAT(Kinds(ReadOnly(report.text)), IsEmpty()) << report.name;
    }
}

TEST(GoldenReading, ACopyOfTheConsoleHasTheSameFindings) {
    const std::vector<GoldenReport> reports = GoldenReports();
    for (const GoldenReport& copy : reports) {
        const std::size_t end = copy.name.find(".console.txt");
        if (end == std::string::npos) {
            continue;
        }
        SCOPED_TRACE(copy.name);
        const auto report = std::find_if(reports.begin(), reports.end(), [&](const GoldenReport& other) {
            return other.name == copy.name.substr(0, end) + ".report.txt";
        });
        ASSERT_NE(report, reports.end());
        const Facts expected = FactsOf(ReadOnly(report->text));
        for (const std::string& text :
             {copy.text, Replaced(copy.text, "\r", ""),
              Replaced(copy.text, "> Vistrel diagnostic", "> \nVistrel diagnostic"),
              Replaced(copy.text, "> \n", "> s\n"),
              EachLine(copy.text, [](const std::string& line) { return "> " + line; })}) {
            const Reading reading = ReadOnly(text);
            EXPECT_EQ(FactsOf(reading), expected);
            EXPECT_THAT(Kinds(reading), Contains(DocumentNoteKind::ConsoleCopy));
            EXPECT_THAT(NotUnderstood(text), IsEmpty());
        }
    }
}

TEST(GoldenReading, QuotedMail) {
    for (const std::string prefix : {"> ", ">", "> > ", ">> ", "| ", "    ", "\t"}) {
        SCOPED_TRACE(prefix);
        ExpectSameWith(DocumentNoteKind::Quoted, [&prefix](const std::string& text) {
            return EachLine(text, [&prefix](const std::string& line) { return prefix + line; });
        });
    }
    ExpectSameWith(DocumentNoteKind::Quoted, [](const std::string& text) {
        return EachLine(text, [](const std::string& line) { return line.empty() ? ">" : "> " + line; });
    });
}

TEST(GoldenReading, WrappedMail) {
    for (std::size_t width = 72; width <= 78; ++width) {
        SCOPED_TRACE(width);
        ExpectSameWith(DocumentNoteKind::Wrapped, [width](const std::string& text) {
            return EachLine(text, [width](const std::string& line) { return Wrapped(line, width); });
        });
    }
}

TEST(GoldenReading, WrappedAndQuotedMail) {
    ExpectSameWith(DocumentNoteKind::Wrapped, [](const std::string& text) {
        const std::string wrapped = EachLine(text, [](const std::string& line) { return Wrapped(line, 72); });
        return EachLine(wrapped, [](const std::string& line) { return "> " + line; });
    });
}

TEST(GoldenReading, LineEndsOfEveryKind) {
    for (const GoldenReport& report : WholeReports()) {
        const Facts expected = FactsOf(ReadOnly(report.text));
        for (const std::string end : {"\r\n", "\r", "\r\r\n"}) {
            EXPECT_EQ(FactsOf(ReadOnly(Replaced(report.text, "\n", end))), expected) << report.name;
        }
        EXPECT_EQ(FactsOf(ReadOnly(Replaced(report.text, "\n", "\n\n"))), expected) << report.name;
    }
}

TEST(GoldenReading, WithoutLineEndsReadsWhatItCan) {
    for (const GoldenReport& report : WholeReports()) {
        SCOPED_TRACE(report.name);
        const Facts whole = FactsOf(ReadOnly(report.text));
        for (const std::string end : {"", " "}) {
            const ReportFile file = ReportFile::FromBytes(Replaced(report.text, "\n", end));
            ASSERT_THAT(file.Reports(), SizeIs(1));
            EXPECT_TRUE(file.Reports().front().HasNote(DocumentNoteKind::LineEndsLost));
            const Facts found = FactsOf(ReadReport(file.Reports().front()));
            EXPECT_GT(found.size(), whole.size() / 2);
            for (const std::string& fact : found) {
                EXPECT_THAT(whole, Contains(fact));
            }
        }
    }
}

TEST(GoldenReading, Encodings) {
    for (const GoldenReport& report : WholeReports()) {
        SCOPED_TRACE(report.name);
        const Facts expected = FactsOf(ReadOnly(report.text));
        EXPECT_EQ(FactsOf(ReadOnly("\xEF\xBB\xBF" + report.text)), expected);
        for (const bool mark : {true, false}) {
            for (const bool big_endian : {true, false}) {
                const Reading reading = ReadOnly(Utf16(report.text, big_endian, mark));
                EXPECT_EQ(FactsOf(reading), expected);
                EXPECT_THAT(Kinds(reading), Contains(DocumentNoteKind::Utf16));
            }
        }
    }
}

TEST(GoldenReading, TextAround) {
    for (const GoldenReport& report : WholeReports()) {
        const std::string mail =
            "Hello,\n\nhere is the report:\n\n" + report.text + "\n\nBest wishes\nSomebody\n";
        EXPECT_EQ(FactsOf(ReadOnly(mail)), FactsOf(ReadOnly(report.text))) << report.name;
        EXPECT_EQ(ReportFile::FromBytes(mail).LinesOutside(), 4U) << report.name;
        EXPECT_THAT(NotUnderstood(mail), IsEmpty()) << report.name;
    }
}

TEST(GoldenReading, TwoReportsInOneMail) {
    const std::vector<GoldenReport> reports = WholeReports();
    for (std::size_t i = 1; i < reports.size(); ++i) {
        const std::string mail =
            "The old one:\n" + reports[i - 1].text + "And the new one:\n" +
            EachLine(reports[i].text, [](const std::string& line) { return "> " + line; });
        const ReportFile file = ReportFile::FromBytes(mail);
        ASSERT_THAT(file.Reports(), SizeIs(2)) << reports[i].name;
        EXPECT_EQ(FactsOf(ReadReport(file.Reports()[0])), FactsOf(ReadOnly(reports[i - 1].text)));
        EXPECT_EQ(FactsOf(ReadReport(file.Reports()[1])), FactsOf(ReadOnly(reports[i].text)));
        EXPECT_EQ(file.LinesOutside(), 2U);
    }
}

namespace {

/// Each head of the report, and each tail, is read without a line that is not understood, and says that
/// something is missing.
void ExpectReadableWhereverItIsCut(const GoldenReport& report) {
    const std::vector<std::string> lines = LinesOf(report.text);
    std::string head;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        head += lines[i] + "\n";
        SCOPED_TRACE(i + 1);
        if (i == 0) {
            continue;  // One line may be anything.
        }
        const Reading reading = ReadOnly(head);
        EXPECT_THAT(NotUnderstood(head), IsEmpty());
        EXPECT_THAT(Kinds(reading), Contains(DocumentNoteKind::CutOff));
        EXPECT_EQ(reading.cut_short.has_value(), false);
    }
    for (std::size_t i = 5; i + 1 < lines.size(); ++i) {
        std::string tail;
        for (std::size_t k = i; k < lines.size(); ++k) {
            tail += lines[k] + "\n";
        }
        const ReportFile file = ReportFile::FromBytes(tail);
        if (!file.Reports().empty()) {
            EXPECT_TRUE(file.Reports().front().HasNote(DocumentNoteKind::NoOpening)) << i;
            EXPECT_THAT(NotUnderstood(tail), IsEmpty()) << i;
        }
    }
}

}  // namespace

TEST(GoldenReading, CutAtAnyLine) {
    for (const GoldenReport& report : WholeReports()) {
        SCOPED_TRACE(report.name);
        ExpectReadableWhereverItIsCut(report);
    }
}
TEST(GoldenReading, AnotherVersionIsNoted) {
    for (const GoldenReport& report : WholeReports()) {
        const Reading reading = ReadOnly(Replaced(report.text, "report v1.0", "report v2.3"));
        EXPECT_THAT(Kinds(reading), Contains(DocumentNoteKind::OtherVersion));
        EXPECT_EQ(reading.opening->version, "2.3");
    }
}
