#include "tools/vistrel_diag/sections/machine/machine_section.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/support/report_capture.h"

namespace {

std::string LinesOf(const MachineInfo& machine) {
    const ReportCapture report;
    PrintMachineSection(machine);
    return report.Text();
}

std::string SchedulingLineOf(std::optional<std::uint32_t> mode) {
    MachineInfo machine;
    machine.gpu_scheduling_mode = mode;
    const std::string lines = LinesOf(machine);
    return lines.substr(lines.find("GPU scheduling"));
}

TEST(MachineSection, DescribesAUsualMachine) {
    MachineInfo machine;
    machine.windows_name = "Windows 10 Pro";
    machine.build_number = "22631";
    machine.update_revision = 4317;
    machine.processor_name = "AMD Ryzen 7 5800X3D 8-Core Processor           ";
    machine.logical_processors = 16;
    machine.memory = PhysicalMemory{17179869184, 9663676416};
    machine.gpu_scheduling_mode = 2;
    EXPECT_EQ(LinesOf(machine), R"(OS              : Windows 10 Pro (build 22631.4317)
CPU             : AMD Ryzen 7 5800X3D 8-Core Processor            (16 logical)
RAM             : 16.0 GB total, 9.0 GB free
GPU scheduling  : ENABLED
)");
}

TEST(MachineSection, DescribesAMachineThatCannotBeRead) {
    EXPECT_EQ(LinesOf({}), R"(OS              :  (build .)
CPU             :  (0 logical)
RAM             : 0.0 GB total, 0.0 GB free
GPU scheduling  : not set (driver default)
)");
}

TEST(MachineSection, WithoutAnUpdateRevisionTheBuildEndsInAPoint) {
    MachineInfo machine;
    machine.windows_name = "Windows 7";
    machine.build_number = "7601";
    EXPECT_TRUE(LinesOf(machine).starts_with("OS              : Windows 7 (build 7601.)\n"));
}

TEST(MachineSection, UpdateRevisionIsUnsigned) {
    MachineInfo machine;
    machine.update_revision = 0xFFFFFFFF;
    EXPECT_TRUE(LinesOf(machine).starts_with("OS              :  (build .4294967295)\n"));
}

TEST(MachineSection, MemoryIsInUnitsOfTwoToTheThirty) {
    MachineInfo machine;
    machine.memory = PhysicalMemory{16000000000, 0xFFFFFFFFFFFFFFFF};
    EXPECT_NE(LinesOf(machine).find("RAM             : 14.9 GB total, 17179869184.0 GB free\n"),
              std::string::npos);
}

TEST(MachineSection, NamesTheGpuSchedulingMode) {
    EXPECT_EQ(SchedulingLineOf(std::nullopt), "GPU scheduling  : not set (driver default)\n");
    EXPECT_EQ(SchedulingLineOf(1), "GPU scheduling  : disabled\n");
    EXPECT_EQ(SchedulingLineOf(2), "GPU scheduling  : ENABLED\n");
    for (const std::uint32_t other : {0U, 3U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SchedulingLineOf(other), "GPU scheduling  : unknown value\n") << other;
    }
}

TEST(MachineSection, DoesNotUseNamesAsFormats) {
    MachineInfo machine;
    machine.windows_name = "%s%n";
    machine.processor_name = "100%d";
    const std::string lines = LinesOf(machine);
    EXPECT_NE(lines.find(": %s%n (build"), std::string::npos);
    EXPECT_NE(lines.find(": 100%d (0"), std::string::npos);
}

}  // namespace
