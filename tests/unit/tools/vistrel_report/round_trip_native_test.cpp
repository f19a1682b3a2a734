// The way there and back of every section: what is read from a printed record
// prints the same again, to the byte, and is the same record as far as printing
// keeps it. What printing loses is listed at each reading.
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <sstream>

#include "platform/format.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/run_texts.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_section.h"
#include "tools/vistrel_diag/sections/capture/capture_section.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"
#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/sections/product_log/product_log_section.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"
#include "tools/vistrel_report/reading.h"
#include "tools/vistrel_report/source_text.h"

namespace {

// ---- Helpers

std::string Printed(const std::function<void()>& print) {
    const ReportCapture capture;
    print();
    return capture.Text();
}

/// What `read` makes of `text`, all of which it must understand.
template <typename Record>
Record ReadBack(const std::string& text, std::optional<Record> (*read)(SourceLines, UnreadLines&)) {
    const std::vector<SourceLine> lines = SplitLines(text);
    UnreadLines unread;
    std::optional<Record> record = read(lines, unread);
    if (!unread.empty()) {
        RC_FAIL("not understood: " + std::string(unread.front().text) + "\nin:\n" + text);
    }
    RC_ASSERT(record.has_value());
    return std::move(*record);
}

/// A text of one line that ends in no blank, with all that makes reading one
/// hard.
rc::Gen<std::string> Word() {
    const auto character =
        rc::gen::element<char>(' ', ' ', '(', ')', '[', ']', ':', '"', '=', '-', '>', '.', ',', '%', '\\',
                               '/', 'x', 'A', 'b', 'M', 'B', '0', '1', '9', '\xC3', '\t');
    return rc::gen::map(rc::gen::container<std::string>(character),
                        [](std::string text) { return "N" + text + "e"; });
}

rc::Gen<std::string> WordWithout(std::string separator) {
    return rc::gen::suchThat(
        Word(), [separator](const std::string& text) { return text.find(separator) == std::string::npos; });
}

rc::Gen<double> Between(double low, double high) {
    return rc::gen::map(rc::gen::inRange<std::int64_t>(0, 1'000'000'001), [low, high](std::int64_t part) {
        return low + (high - low) * static_cast<double>(part) / 1e9;
    });
}

/// A value of `gen`, or none.
template <typename Value>
std::optional<Value> Maybe(const rc::Gen<Value>& gen) {
    return *rc::gen::arbitrary<bool>() ? std::optional<Value>(*gen) : std::nullopt;
}

/// Milliseconds over the whole range that a report can hold, zero among them.
rc::Gen<double> Milliseconds() {
    return rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 1.0), Between(0.0, 60.0), Between(0.0, 1e6));
}

rc::Gen<std::uint64_t> Bytes() {
    constexpr std::uint64_t kMegabyte = 1048576;
    return rc::gen::oneOf(rc::gen::just<std::uint64_t>(0), rc::gen::inRange<std::uint64_t>(0, 4 * kMegabyte),
                          rc::gen::inRange<std::uint64_t>(0, 65536 * kMegabyte));
}

}  // namespace

// ---- Opening and end

RC_GTEST_PROP(RoundTrip, Opening, ()) {
    const std::string folder = *rc::gen::oneOf(rc::gen::just(std::string()), Word());
    const auto print = [&folder](const std::string& tool_folder) {
        return Printed([&] { PrintOpeningLines(tool_folder); });
    };
    const OpeningReading reading = ReadBack(print(folder), ReadOpeningLines);
    RC_ASSERT(reading.tool_folder == folder);
    RC_ASSERT(reading.version == "1.0");
}

/// As the section prints them while it asks.
void PrintGpus(const GpuInventory& inventory) {
    for (const ProbedGpu& probed : inventory.gpus) {
        PrintGpu(probed.gpu);
        if (probed.memory) {
            PrintGpuMemory(*probed.memory);
        }
    }
    PrintGpuSectionEnd(inventory);
}

RC_GTEST_PROP(RoundTrip, TheLineOfARunCutShort, ()) {
    const std::string section = *rc::gen::oneOf(rc::gen::just(std::string()), Word());
    const auto end = *rc::gen::element(RunEnd::Crash, RunEnd::Abort, RunEnd::ControlC, RunEnd::ConsoleClosed,
                                       RunEnd::SessionEnded, RunEnd::ClosedByInstaller);
    const auto code = end == RunEnd::Crash ? *rc::gen::arbitrary<std::uint32_t>() : 0;
    const auto print = [](RunEnd how, std::uint32_t exception, const std::string& title) {
        std::array<char, 4096> buffer = {};
        return std::string(buffer.data(), FormatCutShortLine(buffer.data(), buffer.size(), how,
                                                             {exception, "name.dll"}, title.c_str()));
    };
    const std::string line = print(end, code, section);
    const auto reading = ReadCutShortLine({line, 7});
    RC_ASSERT(reading.has_value());
    RC_ASSERT(reading->end == end);
    RC_ASSERT(reading->section == section);
    RC_ASSERT(print(reading->end, reading->exception_code, reading->section) == line);
}

// ---- Part 1

RC_GTEST_PROP(RoundTrip, RunningSoftware, ()) {
    RunningSoftwareInfo software;
    software.notable = *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
        "obs64.exe", "VISTREL.exe", "Ambulo.exe", "vrserver.exe", "PARSEC.EXE"));
    if (*rc::gen::arbitrary<bool>()) {
        const std::string name = *rc::gen::element<std::string>("", "game.exe", "a b (c).exe");
        software.foreground =
            ForegroundApplication{name, *Word() + *rc::gen::element<std::string>("", "\n", "\"\nx")};
    }
    const auto print = [](const RunningSoftwareInfo& info) {
        return Printed([&info] { PrintRunningSoftwareSection(info); });
    };
    const std::string text = print(software);
    const RunningSoftwareReading reading = ReadBack(text, ReadRunningSoftwareSection);
    RC_ASSERT(print(reading.software) == text);
    RC_ASSERT(reading.software.notable == software.notable);
    RC_ASSERT(reading.software.foreground.has_value() == software.foreground.has_value());
    RC_ASSERT(!software.foreground || reading.software.foreground->title == software.foreground->title);
    RC_ASSERT(reading.VistrelWasRunning() ==
              std::any_of(software.notable.begin(), software.notable.end(), IsVistrelExecutable));
}

RC_GTEST_PROP(RoundTrip, Machine, ()) {
    MachineInfo machine;
    machine.windows_name = Maybe(Word());
    machine.build_number = Maybe(rc::gen::element<std::string>("19045", "26100", "10.0"));
    machine.update_revision = Maybe(rc::gen::arbitrary<std::uint32_t>());
    machine.processor_name = Maybe(Word());
    machine.logical_processors = *rc::gen::arbitrary<std::uint32_t>();
    machine.memory = Maybe(rc::gen::map(rc::gen::pair(Bytes(), Bytes()), [](const auto& memory) {
        return PhysicalMemory{memory.first, memory.second};
    }));
    machine.gpu_scheduling_mode = Maybe(rc::gen::inRange<std::uint32_t>(0, 5));
    const auto print = [](const MachineInfo& info) {
        return Printed([&info] { PrintMachineSection(info); });
    };
    const std::string text = print(machine);
    const MachineReading reading = ReadBack(text, ReadMachineSection);
    RC_ASSERT(print(reading.machine) == text);
    RC_ASSERT(reading.machine.windows_name == machine.windows_name);
    RC_ASSERT(reading.machine.update_revision == machine.update_revision);
    RC_ASSERT(reading.machine.processor_name == machine.processor_name);
    RC_ASSERT(reading.machine.logical_processors == machine.logical_processors);
}

namespace {

rc::Gen<ProbedGpu> Gpu() {
    return rc::gen::exec([] {
        ProbedGpu probed;
        GpuInfo& gpu = probed.gpu;
        gpu.index = *rc::gen::inRange<std::uint32_t>(0, 12);
        gpu.name = *Word();
        gpu.luid = {*rc::gen::arbitrary<std::uint32_t>(), *rc::gen::arbitrary<std::int32_t>()};
        gpu.dedicated_video_memory = *Bytes();
        gpu.shared_system_memory = *Bytes();
        gpu.vendor_id = *rc::gen::element<std::uint32_t>(0, 0x1002, 0x10DE, 0x1414, 0x8086);
        gpu.software = *rc::gen::arbitrary<bool>();
        gpu.displays = *rc::gen::container<std::vector<std::string>>(WordWithout(", "));
        probed.memory = Maybe(rc::gen::exec([] {
            VideoMemoryUse memory;
            memory.budget = *Bytes();
            memory.usage = *rc::gen::oneOf(
                Bytes(), rc::gen::map(Between(0.85, 0.95), [&memory](double part) {
                    return static_cast<std::uint64_t>(part * static_cast<double>(memory.budget));
                }));
            memory.reservation = *Bytes();
            // A budget that prints as none gives percentages without a meaning.
            RC_PRE(memory.budget == 0 || memory.budget > 4'194'304);
            return memory;
        }));
        return probed;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, Gpus, ()) {
    GpuInventory inventory;
    inventory.factory_created = *rc::gen::weightedElement<bool>({{9, true}, {1, false}});
    if (inventory.factory_created) {
        inventory.gpus = *rc::gen::container<std::vector<ProbedGpu>>(Gpu());
    }
    const auto print = [](const GpuInventory& gpus) { return Printed([&gpus] { PrintGpus(gpus); }); };
    const std::string text = print(inventory);
    const GpuReading reading = ReadBack(text, ReadGpuSection);
    RC_ASSERT(print(reading.inventory) == text);
    RC_ASSERT(reading.inventory.gpus.size() == inventory.gpus.size());
    for (std::size_t i = 0; i < inventory.gpus.size(); ++i) {
        const GpuInfo& read = reading.inventory.gpus[i].gpu;
        const GpuInfo& gpu = inventory.gpus[i].gpu;
        RC_ASSERT(read.name == gpu.name);
        RC_ASSERT(read.luid == gpu.luid);
        RC_ASSERT(read.software == gpu.software);
        RC_ASSERT(read.vendor_id == gpu.vendor_id);
        RC_ASSERT(read.displays == gpu.displays);
    }
}

RC_GTEST_PROP(RoundTrip, VideoMemoryOfPartTwo, ()) {
    const auto gpus = *rc::gen::container<std::vector<ProbedGpu>>(Gpu());
    const auto print = [](const std::vector<ProbedGpu>& probed) {
        return Printed([&probed] { PrintVramLines("while the game is running", probed); });
    };
    const std::string text = print(gpus);
    const GameVideoMemoryReading reading = ReadBack(text, ReadVramLines);
    RC_ASSERT(print(reading.gpus) == text);
    RC_ASSERT(reading.moment == "while the game is running");
}

RC_GTEST_PROP(RoundTrip, Displays, ()) {
    std::vector<GpuInfo> gpus(*rc::gen::inRange<std::size_t>(0, 4));
    for (GpuInfo& gpu : gpus) {
        gpu.name = *Word();
    }
    const auto displays = *rc::gen::container<std::vector<DisplayInfo>>(rc::gen::exec([&gpus] {
        DisplayInfo display;
        display.name = *WordWithout(" : ");
        display.width = *rc::gen::arbitrary<std::int32_t>();
        display.height = *rc::gen::arbitrary<std::int32_t>();
        display.refresh_hz = *rc::gen::arbitrary<std::int32_t>();
        display.primary = *rc::gen::arbitrary<bool>();
        display.gpu = *rc::gen::inRange<std::int32_t>(-1, static_cast<std::int32_t>(gpus.size()));
        return display;
    }));
    const auto print = [&gpus](const std::vector<DisplayInfo>& list) {
        return Printed([&] { PrintDisplaySection(list, gpus); });
    };
    const std::string text = print(displays);
    const DisplayReading reading = ReadBack(text, ReadDisplaySection);
    std::vector<DisplayInfo> read;
    for (const ReadDisplay& display : reading.displays) {
        read.push_back(display.display);
        RC_ASSERT(
            display.gpu_name ==
            (display.display.gpu < 0 ? "UNKNOWN" : gpus[static_cast<std::size_t>(display.display.gpu)].name));
    }
    RC_ASSERT(print(read) == text);
}

RC_GTEST_PROP(RoundTrip, GpuOverrides, ()) {
    std::optional<std::vector<GpuPreference>> preferences;
    if (*rc::gen::arbitrary<bool>()) {
        preferences = *rc::gen::container<std::vector<GpuPreference>>(rc::gen::exec([] {
            return GpuPreference{
                *Word() + *rc::gen::element<std::string>("Vistrel.exe", "SteamVR", "other.exe"),
                *WordWithout(" = ")};
        }));
    }
    const auto print = [](const std::optional<std::vector<GpuPreference>>& pins) {
        return Printed([&pins] { PrintGpuOverrideSection(pins); });
    };
    const std::string text = print(preferences);
    const GpuOverrideReading reading = ReadBack(text, ReadGpuOverrideSection);
    RC_ASSERT(print(reading.preferences) == text);
    RC_ASSERT(reading.preferences.has_value() == preferences.has_value());
}

RC_GTEST_PROP(RoundTrip, Injection, ()) {
    std::optional<InjectedFiles> found;
    if (*rc::gen::weightedElement<bool>({{9, true}, {1, false}})) {
        found = FindInjectedFiles([](const char*) { return *rc::gen::arbitrary<bool>(); });
    }
    const auto print = [](const std::optional<InjectedFiles>& files) {
        return Printed([&files] { PrintInjectionSection(files); });
    };
    const std::string text = print(found);
    const InjectionReading reading = ReadBack(text, ReadInjectionSection);
    RC_ASSERT(print(reading.found) == text);
    RC_ASSERT(reading.found.has_value() == found.has_value());
    RC_ASSERT(!found || reading.found->proxy_dlls == found->proxy_dlls);
    RC_ASSERT(!found || reading.found->reshade_files == found->reshade_files);
}

namespace {

rc::Gen<float> Float(double low, double high) {
    return rc::gen::map(Between(low, high), [](double number) { return static_cast<float>(number); });
}

rc::Gen<DiagSettings> Settings() {
    return rc::gen::exec([] {
        DiagSettings settings;
        settings.image_algo = *rc::gen::inRange(-1, 5);
        settings.f3d_search_steps = *rc::gen::arbitrary<std::int32_t>();
        settings.depth_mode = *rc::gen::inRange(0, 3);
        settings.depth_model_quality = *rc::gen::inRange(-1, 14);
        settings.ai_resolution = *rc::gen::arbitrary<std::int32_t>();
        settings.ai_fps_limit = *rc::gen::oneOf(
            Float(0.0, 200.0), rc::gen::element(std::numeric_limits<float>::infinity(), 1e30F,
                                                std::numeric_limits<float>::quiet_NaN(), -5.0F));
        settings.ai_fps_auto = *rc::gen::arbitrary<bool>();
        settings.pseudo_3d = *rc::gen::arbitrary<bool>();
        settings.reshade_enabled = *rc::gen::arbitrary<bool>();
        settings.f3d_separation_pct = *rc::gen::oneOf(Float(1.3, 1.8), Float(-50.0, 200.0));
        settings.f3d_depth_strength = *rc::gen::oneOf(Float(0.04, 0.06), Float(-1.0, 4.0));
        settings.f3d_screen_depth = *Float(-1.0, 2.0);
        settings.scale = *rc::gen::oneOf(Float(0.0, 3.0), Float(0.0, 1000.0));
        settings.cinema_mode = *rc::gen::arbitrary<bool>();
        settings.optical_flow = *rc::gen::arbitrary<bool>();
        settings.fsr3 = *rc::gen::arbitrary<bool>();
        settings.gpu_frame_wait = *rc::gen::arbitrary<bool>();
        return settings;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, SettingsInEffect, ()) {
    const DiagSettings settings = *Settings();
    const std::string path = *rc::gen::oneOf(rc::gen::just(std::string("(not found)")), Word());
    const auto print = [](const DiagSettings& record, const std::string& file) {
        return Printed([&] { PrintSettingsInEffect(record, file); });
    };
    const std::string text = print(settings, path);
    const SettingsInEffectReading reading = ReadBack(text, ReadSettingsInEffect);
    RC_ASSERT(print(reading.settings, reading.file_path) == text);
    RC_ASSERT(reading.file_path == path);
    RC_ASSERT(reading.settings.image_algo == settings.image_algo);
    RC_ASSERT(reading.settings.pseudo_3d == settings.pseudo_3d);
    RC_ASSERT((reading.settings.depth_mode == 1) == (settings.depth_mode == 1));
    RC_ASSERT(std::fabs(reading.settings.SeparationMm() - settings.SeparationMm()) <= 0.0502F);
}

RC_GTEST_PROP(RoundTrip, SettingsVerbatim, ()) {
    const std::string path = *Word() + ".json";
    const auto lines = *rc::gen::container<std::vector<std::string>>(
        rc::gen::map(Word(), [](const std::string& text) { return "\"vistrel_" + text; }));
    const auto print = [&path](const std::vector<std::string>& product_lines) {
        std::string file = "{\n";
        for (const std::string& line : product_lines) {
            file += "    " + line + "\n";
        }
        std::istringstream stream(file + "}\n");
        return Printed([&] { PrintSettingsVerbatim(path, &stream); });
    };
    const std::string text = print(lines);
    const SettingsVerbatimReading reading = ReadBack(text, ReadSettingsVerbatim);
    std::vector<std::string> read;
    for (const ReadText& quoted : reading.quoted) {
        read.push_back(quoted.text);
    }
    RC_ASSERT(read == lines);
    RC_ASSERT(reading.path == path);
    RC_ASSERT(print(read) == text);
    const std::string vanished = Printed([&path] { PrintSettingsVerbatim(path, nullptr); });
    const SettingsVerbatimReading reading_of_none = ReadBack(vanished, ReadSettingsVerbatim);
    RC_ASSERT(reading_of_none.path == path);
    RC_ASSERT(reading_of_none.not_opened_line == 1U);
}

RC_GTEST_PROP(RoundTrip, ProductLog, ()) {
    const std::string path = *Word() + "vistrel_init_log.txt";
    // No more than the section quotes: of a longer log it leaves out the first ones.
    constexpr int kMostLines = 40;
    const auto lines = *rc::gen::resize(
        kMostLines, rc::gen::container<std::vector<std::string>>(rc::gen::map(
                        Word(), [](const std::string& text) { return text + " ERROR " + text; })));
    const auto print = [&path](const std::vector<std::string>& log_lines) {
        std::string log;
        for (const std::string& line : log_lines) {
            log += line + "\n";
        }
        std::istringstream stream(log);
        return Printed([&] { PrintProductLog(path, &stream); });
    };
    const std::string text = print(lines);
    const ProductLogReading reading = ReadBack(text, ReadProductLogSection);
    std::vector<std::string> read;
    for (const ReadText& quoted : reading.quoted) {
        read.push_back(quoted.text);
    }
    RC_ASSERT(read == lines);
    RC_ASSERT(print(read) == text);
    RC_ASSERT(lines.empty() || reading.path == path);
    const ProductLogReading none =
        ReadBack(Printed([&path] { PrintProductLog(path, nullptr); }), ReadProductLogSection);
    RC_ASSERT(none.path == path);
    RC_ASSERT(none.no_log_line == 1U);
}

namespace {

rc::Gen<WorkerEnd> End() {
    return rc::gen::exec([] {
        WorkerEnd end;
        end.kind = *rc::gen::element(WorkerEnd::Kind::Crashed, WorkerEnd::Kind::Aborted,
                                     WorkerEnd::Kind::Exited, WorkerEnd::Kind::Lost, WorkerEnd::Kind::Silent);
        end.code = *rc::gen::oneOf(rc::gen::arbitrary<std::uint32_t>(),
                                   rc::gen::element<std::uint32_t>(0, 1, 255, 256, 0xC0000005, 0xC00000FD));
        end.module = *rc::gen::oneOf(rc::gen::just(std::string()), WordWithout("0x"));
        end.silent_seconds = *rc::gen::inRange(0, 1000);
        return end;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, LoadingTheRuntimeThatEnded, ()) {
    const WorkerEnd end = *End();
    const auto print = [](const WorkerEnd& ended) {
        return Printed([&] { PrintOnnxRuntimeLoadingEnded(ended); });
    };
    const std::string text = print(end);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    RC_ASSERT(reading.loading_ended.has_value());
    RC_ASSERT(print(*reading.loading_ended) == text);
    RC_ASSERT(reading.loading_ended->kind == end.kind);
}

RC_GTEST_PROP(RoundTrip, Headset, ()) {
    std::vector<GpuInfo> gpus(*rc::gen::inRange<std::size_t>(0, 3));
    for (std::size_t i = 0; i < gpus.size(); ++i) {
        gpus[i].index = static_cast<std::uint32_t>(i);
        gpus[i].name = *Word();
        gpus[i].luid.low = static_cast<std::uint32_t>(i);
    }
    std::vector<DisplayInfo> displays(*rc::gen::inRange<std::size_t>(0, 3));
    for (DisplayInfo& display : displays) {
        display.primary = *rc::gen::arbitrary<bool>();
        display.gpu = *rc::gen::inRange<std::int32_t>(-1, static_cast<std::int32_t>(gpus.size()));
    }
    HeadsetQuery query;
    query.runtime = *Word();
    query.eye_width = *rc::gen::element<std::uint32_t>(0, 1, 2016, 0xFFFFFFFF);
    query.eye_height = *rc::gen::element<std::uint32_t>(0, 2240, 0x80000000);
    query.luid_known = *rc::gen::arbitrary<bool>();
    query.adapter_luid = {*rc::gen::inRange<std::uint32_t>(0, 4), 0};
    query.stop = Maybe(rc::gen::element(HeadsetStop::NoLoader, HeadsetStop::NoEntryPoints,
                                        HeadsetStop::NoInstance, HeadsetStop::NoHeadset));
    query.worker_end = Maybe(End());
    const auto print = [&](const HeadsetQuery& answer) {
        return Printed([&] { PrintHeadsetSection(answer, gpus, displays); });
    };
    const std::string text = print(query);
    const HeadsetReading reading = ReadBack(text, ReadHeadsetSection);
    HeadsetQuery read;
    read.stop = reading.stop;
    read.worker_end = reading.worker_end;
    read.runtime = reading.runtime ? reading.runtime->text : "";
    read.eye_width = reading.eye_width.value_or(0);
    read.eye_height = reading.eye_height.value_or(0);
    read.luid_known = reading.required_gpu.has_value();
    read.adapter_luid = reading.required_gpu.value_or(RequiredGpuReading()).luid;
    RC_ASSERT(print(read) == text);
    RC_ASSERT(read.runtime == query.runtime);
    RC_ASSERT(read.luid_known == query.luid_known);
}

RC_GTEST_PROP(RoundTrip, BenchmarkSetup, ()) {
    std::vector<GpuInfo> gpus(*rc::gen::inRange<std::size_t>(0, 3));
    for (GpuInfo& gpu : gpus) {
        gpu.name = *Word();
    }
    const auto index = *rc::gen::inRange<std::int32_t>(-1, 4);
    const bool named = *rc::gen::arbitrary<bool>();
    const auto print = [&gpus](std::int32_t gpu, bool by_runtime) {
        return Printed([&] { PrintBenchmarkGpu(gpus, gpu, by_runtime); });
    };
    const std::string text = print(index, named);
    const BenchmarkSetupReading reading = ReadBack(text, ReadBenchmarkSetupSection);
    RC_ASSERT(print(reading.gpu, reading.named_by_runtime_line != 0) == text);
    RC_ASSERT(reading.gpu == index);
}

// ---- Measurements

namespace {

rc::Gen<CaptureMeasurement> Capture() {
    return rc::gen::exec([] {
        CaptureMeasurement measurement;
        measurement.ok = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
        if (!measurement.ok) {
            measurement.error = *Word();
            return measurement;
        }
        measurement.width = *rc::gen::arbitrary<std::uint32_t>();
        measurement.height = *rc::gen::arbitrary<std::uint32_t>();
        measurement.new_frames = *rc::gen::inRange<std::uint32_t>(0, 100'000);
        measurement.seconds = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 0.02), Between(0.0, 60.0));
        measurement.cross_adapter = *rc::gen::arbitrary<bool>();
        measurement.capture_gpu_name = *Word();
        measurement.pixels.resize(*rc::gen::inRange<std::size_t>(0, 2));
        return measurement;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, Capture, ()) {
    const CaptureMeasurement measurement = *Capture();
    const auto print = [](const CaptureMeasurement& record) {
        return Printed([&] { PrintCaptureSection(record); });
    };
    const std::string text = print(measurement);
    const CaptureReading reading = ReadBack(text, ReadCaptureSection);
    RC_ASSERT(print(reading.measurement) == text);
    RC_ASSERT(reading.measurement.ok == measurement.ok);
    RC_ASSERT(reading.measurement.error == measurement.error);
    RC_ASSERT(reading.measurement.new_frames == measurement.new_frames);
}

RC_GTEST_PROP(RoundTrip, GameFrameRate, ()) {
    const CaptureMeasurement measurement = *Capture();
    const auto print = [](const CaptureMeasurement& record) {
        return Printed([&] { PrintGameFrameRate(record); });
    };
    const std::string text = print(measurement);
    const CaptureReading reading = ReadBack(text, ReadGameFrameRate);
    RC_ASSERT(print(reading.measurement) == text);
    RC_ASSERT(reading.measurement.width == measurement.width);
}

RC_GTEST_PROP(RoundTrip, Warp, ()) {
    const auto rows = *rc::gen::container<std::vector<WarpRowReading>>(rc::gen::exec([] {
        WarpRowReading row;
        row.width = *rc::gen::inRange(1, 100'000);
        row.height = *rc::gen::inRange(1, 100'000);
        row.label = *rc::gen::element<std::string>("your desktop (what runs today)", "1440p", "1080p");
        row.gpu_ms = *Milliseconds();
        row.vram_mb = *rc::gen::oneOf(Between(0.0, 4000.0), rc::gen::just(17592186044414.0));
        return row;
    }));
    const auto print = [](const std::vector<WarpRowReading>& table) {
        return Printed([&table] {
            PrintWarpTableHeader();
            for (const WarpRowReading& row : table) {
                WarpTiming timing;
                timing.gpu_ms = row.gpu_ms;
                timing.vram_mb = row.vram_mb;
                PrintWarpRow({row.width, row.height, row.label}, timing);
            }
        });
    };
    const std::string text = print(rows);
    const WarpReading reading = ReadBack(text, ReadWarpSection);
    RC_ASSERT(print(reading.rows) == text);
}

RC_GTEST_PROP(RoundTrip, AWarpThatDoesNotCompile, ()) {
    const std::string error = *rc::gen::map(Word(), [](std::string text) { return text + "\n" + text; });
    const std::string text = Printed([&error] { PrintWarpShaderFailure(error); });
    const WarpReading reading = ReadBack(text, ReadWarpSection);
    RC_ASSERT(reading.shader_error.has_value());
    RC_ASSERT(reading.shader_error->text == error);
}

namespace {

ModelTiming Timing(const std::string& name, std::int32_t width, std::int32_t height) {
    ModelTiming timing;
    timing.name = name;
    timing.ok = *rc::gen::weightedElement<bool>({{3, true}, {1, false}});
    if (timing.ok) {
        timing.width = width;
        timing.height = height;
        timing.median_ms = *Milliseconds();
        timing.min_ms = *Milliseconds();
        timing.max_ms = *Milliseconds();
    } else {
        timing.error = *Word() + *rc::gen::element<std::string>("", "\nand more");
        timing.path_tried = *Word();
    }
    return timing;
}

}  // namespace

RC_GTEST_PROP(RoundTrip, OneDepthModel, ()) {
    DiagSettings settings;
    settings.depth_model_quality = *rc::gen::inRange(-1, 12);
    settings.custom_model_path = *rc::gen::element<std::string>("", "C:\\m.onnx");
    ModelTiming timing;
    const auto print = [](const DiagSettings& record, const ModelTiming& result) {
        DepthModelTimers timers;
        timers.preset = [&result](const DepthModelPreset&) { return result; };
        timers.custom = [&result](const std::string&, std::int32_t) { return result; };
        return Printed([&] { PrintConfiguredModel(record, timers); });
    };
    const DepthModelPreset* const preset = FindDepthModelPreset(settings.depth_model_quality);
    timing =
        Timing(preset != nullptr ? preset->display_name : "custom model", *rc::gen::inRange(-5, 2000), 518);
    const std::string text = print(settings, timing);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    if (reading.no_custom_path_line != 0) {
        RC_ASSERT(reading.models.empty());
        return;
    }
    RC_ASSERT(reading.models.size() == 1U);
    settings.custom_model_path = "known";
    RC_ASSERT(print(settings, reading.models.front().timing) == text);
    RC_ASSERT(reading.models.front().timing.error == timing.error);
    RC_ASSERT(reading.models.front().timing.width == timing.width);
}

RC_GTEST_PROP(RoundTrip, AllDepthModels, ()) {
    const auto quality = *rc::gen::inRange(-1, 12);
    std::vector<ModelTiming> timings;
    for (const DepthModelPreset& preset : DepthModelPresets()) {
        timings.push_back(Timing(preset.display_name, preset.input_width, preset.input_height));
    }
    const auto print = [](std::int32_t configured, const std::vector<ModelTiming>& results) {
        DepthModelTimers timers;
        std::size_t next = 0;
        timers.preset = [&](const DepthModelPreset&) { return results.at(next++); };
        return Printed([&] { PrintAllModels(configured, timers); });
    };
    const std::string text = print(quality, timings);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    std::vector<ModelTiming> read;
    std::int32_t configured = -1;
    for (const ModelReading& model : reading.models) {
        configured = model.configured ? static_cast<std::int32_t>(read.size()) : configured;
        read.push_back(model.timing);
    }
    RC_ASSERT(read.size() == timings.size());
    RC_ASSERT(print(configured, read) == text);
    for (std::size_t i = 0; i < read.size(); ++i) {
        RC_ASSERT(read[i].error == timings[i].error);
        RC_ASSERT(read[i].name == timings[i].name);
    }
}

// ---- Part 2 and the verdict

RC_GTEST_PROP(RoundTrip, HandTracking, ()) {
    const HandTrackingExtensions extensions = {true, *rc::gen::arbitrary<bool>()};
    const double seconds = *Between(0.0, 30.0);
    const auto looks = *rc::gen::container<std::vector<std::pair<bool, HandSource>>>(
        rc::gen::pair(rc::gen::arbitrary<bool>(),
                      rc::gen::element(HandSource::None, HandSource::Unobstructed, HandSource::Controller)));
    const std::string text = Printed([&] {
        PrintHandTrackingExtensions(extensions);
        PrintWatchInstructions(seconds);
        HandPair hands = NewHands();
        for (const auto& [right, source] : looks) {
            NoteHandReading(hands.at(right ? 1 : 0), {true, source});
        }
        PrintHandSummary(hands, extensions.data_source);
    });
    const HandTrackingReading reading = ReadBack(text, ReadHandTrackingSection);
    const std::string again = Printed([&reading] {
        PrintHandTrackingExtensions(reading.extensions.value());
        PrintWatchInstructions(reading.watch_seconds.value());
        HandPair hands = NewHands();
        for (const HandStateReading& state : reading.states) {
            NoteHandReading(hands.at(state.hand == 'L' ? 0 : 1), {true, state.source});
        }
        PrintHandSummary(reading.hands, reading.extensions->data_source);
    });
    RC_ASSERT(again == text);
}

RC_GTEST_PROP(RoundTrip, AHandProbeThatStops, ()) {
    const auto stop = static_cast<HandProbeStop>(*rc::gen::inRange(0, 8));
    const HandTrackingReading reading =
        ReadBack(Printed([stop] { PrintHandProbeStop(stop); }), ReadHandTrackingSection);
    RC_ASSERT(reading.stop == stop);
}

namespace {

/// The verdict's lines made from what was read of them, less those without a
/// value.
std::string Rebuilt(const VerdictReading& verdict) {
    std::string text;
    if (verdict.desktop) {
        text += FormatText("At %dx%d the warp costs %.2f ms per headset frame, for both eyes.\n",
                           verdict.desktop->width, verdict.desktop->height, verdict.desktop->milliseconds);
    }
    for (const CheaperSizeReading& size : verdict.cheaper_sizes) {
        text += FormatText(
            "  Dropping the desktop to %dx%d would make it %.1fx "
            "cheaper (%.2f ms).\n",
            size.cost.width, size.cost.height, size.times_cheaper, size.cost.milliseconds);
    }
    if (verdict.model && verdict.model->rate) {
        const std::array reasons = {"the model cannot go faster than that on this GPU",
                                    "capped by your frame rate", "capped by the FPS limit"};
        text += FormatText(
            "The AI model costs %.2f ms per inference, and would run about %.0f "
            "times a second (%s).\n",
            verdict.model->milliseconds, *verdict.model->rate,
            reasons.at(static_cast<std::size_t>(verdict.model->limit.value())));
    } else if (verdict.model) {
        text += FormatText(
            "The AI model costs %.2f ms per inference - one map every %.1f "
            "seconds. It cannot run even once a second on "
            "this GPU.\n",
            verdict.model->milliseconds, verdict.model->seconds_a_map.value());
    }
    for (const RefreshRowReading& row : verdict.rows) {
        const std::string ai = row.ai_percent ? FormatText("%.0f%%", *row.ai_percent) : "?";
        text += FormatText("  %-9s %-13s %-14s %-14s\n", FormatText("%d Hz", row.refresh_hz).c_str(),
                           FormatText("%.0f ms/s", row.warp_ms_a_second).c_str(), ai.c_str(),
                           FormatText("%.0f%%", row.reshade_percent).c_str());
    }
    if (verdict.reshade_mode) {
        text += FormatText("Taking 90 Hz and the mode this machine is set to (%s):\n",
                           *verdict.reshade_mode ? "ReShade depth" : "AI depth");
    }
    if (verdict.grade) {
        text += FormatText("%d: %.0f%%\n", static_cast<int>(*verdict.grade), verdict.percent);
    }
    if (verdict.reshade_note_percent) {
        text += FormatText("note: %.0f%%\n", *verdict.reshade_note_percent);
    }
    return text;
}

/// The same lines of the verdict itself, the graded ones shortened.
std::string LinesWithValues(const std::string& text) {
    std::string kept;
    const std::array<std::pair<std::string_view, int>, 3> grades = {
        std::pair(">>> FOUND IT. Vistrel takes more than half the GPU on its own (", 0),
        std::pair(">>> Vistrel takes a significant slice (", 1),
        std::pair(">>> Vistrel's own rendering is NOT the bottleneck here - it uses ", 2)};
    constexpr std::string_view kNote = ">>> Note: on the ReShade path Vistrel costs only ";
    for (const SourceLine& line : SplitLines(text)) {
        const std::string_view whole = line.text;
        if (whole.starts_with("At ") || whole.starts_with("  Dropping") ||
            whole.starts_with("The AI model costs") || whole.starts_with("Taking ") ||
            (whole.starts_with("  ") && whole.find(" ms/s") != std::string_view::npos)) {
            kept += std::string(whole) + "\n";
        }
        for (const auto& [begin, number] : grades) {
            if (whole.starts_with(begin)) {
                const std::string_view rest = whole.substr(begin.size());
                kept += FormatText("%d: ", number) + std::string(rest.substr(0, rest.find('%') + 1)) + "\n";
            }
        }
        if (whole.starts_with(kNote)) {
            const std::string_view rest = whole.substr(kNote.size());
            kept += "note: " + std::string(rest.substr(0, rest.find('%') + 1)) + "\n";
        }
    }
    return kept;
}

}  // namespace

RC_GTEST_PROP(RoundTrip, Verdict, ()) {
    VerdictInput input;
    input.warp_costs = *rc::gen::container<std::vector<WarpCost>>(rc::gen::exec([] {
        return WarpCost{*rc::gen::inRange(1, 9000), *rc::gen::inRange(1, 9000), *Milliseconds()};
    }));
    input.model_milliseconds = Maybe(Milliseconds());
    input.game_fps = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 300.0));
    input.desktop_fps = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 300.0));
    input.refresh_hz = *rc::gen::inRange(-1, 300);
    input.part_two_run = *rc::gen::arbitrary<bool>();
    input.ai_fps_limit =
        *rc::gen::oneOf(Float(0.0, 200.0), rc::gen::just(std::numeric_limits<float>::infinity()));
    input.depth_mode = *rc::gen::inRange(0, 2);
    std::string text = Printed([&input] { ReportVerdict(input); });
    text.erase(0, text.find("=\n") + 2);  // The heading.
    const VerdictReading reading = ReadBack(text, ReadVerdictSection);
    RC_ASSERT(Rebuilt(reading) == LinesWithValues(text));
    RC_ASSERT(reading.desktop.has_value() == !input.warp_costs.empty());
    RC_ASSERT(reading.model.has_value() == (input.model_milliseconds && !input.warp_costs.empty()));
    RC_ASSERT((reading.part_two_skipped_line == 0) == (input.part_two_run || input.warp_costs.empty()));
    RC_ASSERT((reading.no_verdict_line != 0) == input.warp_costs.empty());
    RC_ASSERT(reading.not_measured_line != 0U);
}
