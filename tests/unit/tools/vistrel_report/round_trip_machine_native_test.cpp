// The way there and back of every section: what is read from a printed record
// prints the same again, to the byte, and is the same record as far as printing
// keeps it. What printing loses is listed at each reading.
#include <algorithm>
#include <array>

#include "tests/unit/tools/vistrel_report/round_trip.h"
#include "tools/vistrel_diag/run_texts.h"

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

RC_GTEST_PROP(RoundTrip, ARunThatIsCutShort, ()) {
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
    RC_ASSERT((!software.foreground || reading.software.foreground->title == software.foreground->title));
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
        // More names than these may make a line longer than the report prints.
        constexpr std::size_t kMostDisplays = 20;
        gpu.displays = *rc::gen::container<std::vector<std::string>>(
            *rc::gen::inRange<std::size_t>(0, kMostDisplays + 1), WordWithout(", "));
        probed.memory = Maybe(rc::gen::exec([] {
            // A budget that is not 0 but prints as 0 gives percentages without a meaning.
            constexpr std::uint64_t kLeastBudget = 4'194'304;
            VideoMemoryUse memory;
            memory.budget = *rc::gen::oneOf(
                rc::gen::just<std::uint64_t>(0),
                rc::gen::map(Bytes(), [](std::uint64_t bytes) { return bytes + kLeastBudget; }));
            memory.usage = *rc::gen::oneOf(
                Bytes(), rc::gen::map(Between(0.85, 0.95), [&memory](double part) {
                    return static_cast<std::uint64_t>(part * static_cast<double>(memory.budget));
                }));
            memory.reservation = *Bytes();
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
    RC_ASSERT(read.size() == displays.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        RC_ASSERT(read[i].name == displays[i].name);
    }
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
    RC_ASSERT((!found || reading.found->proxy_dlls == found->proxy_dlls));
    RC_ASSERT((!found || reading.found->reshade_files == found->reshade_files));
}
