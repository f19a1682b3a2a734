#include <gtest/gtest.h>

#include "tests/unit/support/registry_sandbox.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/machine/machine_section.h"

namespace {

constexpr const wchar_t* kWindows = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* kProcessor = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
constexpr const wchar_t* kGraphics = L"SYSTEM\\CurrentControlSet\\Control\\GraphicsDrivers";

class MachineProbe : public testing::Test {
  protected:
    RegistrySandbox sandbox_{HKEY_LOCAL_MACHINE};
};

TEST_F(MachineProbe, ReadsTheRegistry) {
    sandbox_.WriteText(kWindows, L"ProductName", L"Windows 11 \u00DCber");
    sandbox_.WriteText(kWindows, L"CurrentBuildNumber", L"26100");
    sandbox_.WriteNumber(kWindows, L"UBR", 1742);
    sandbox_.WriteText(kProcessor, L"ProcessorNameString", L"  Some CPU   ");
    sandbox_.WriteNumber(kGraphics, L"HwSchMode", 2);
    const MachineInfo machine = ProbeMachine();
    EXPECT_EQ(machine.windows_name,
              "Windows 11 \xC3\x9C"
              "ber");
    EXPECT_EQ(machine.build_number, "26100");
    EXPECT_EQ(machine.update_revision, 1742U);
    EXPECT_EQ(machine.processor_name, "  Some CPU   ");
    EXPECT_EQ(machine.gpu_scheduling_mode, 2U);
}

TEST_F(MachineProbe, LeavesMissingValuesEmpty) {
    const MachineInfo machine = ProbeMachine();
    EXPECT_FALSE(machine.windows_name);
    EXPECT_FALSE(machine.build_number);
    EXPECT_FALSE(machine.update_revision);
    EXPECT_FALSE(machine.processor_name);
    EXPECT_FALSE(machine.gpu_scheduling_mode);
}

TEST_F(MachineProbe, ReadsEachValueIndependently) {
    sandbox_.WriteText(kWindows, L"CurrentBuildNumber", L"7601");
    const MachineInfo machine = ProbeMachine();
    EXPECT_FALSE(machine.windows_name);
    EXPECT_EQ(machine.build_number, "7601");
    EXPECT_FALSE(machine.update_revision);
}

TEST_F(MachineProbe, RejectsTextAsASchedulingMode) {
    sandbox_.WriteText(kGraphics, L"HwSchMode", L"2");
    EXPECT_FALSE(ProbeMachine().gpu_scheduling_mode);
    sandbox_.WriteBytes(kGraphics, L"HwSchMode", REG_BINARY, {2, 0, 0, 0});
    EXPECT_FALSE(ProbeMachine().gpu_scheduling_mode);
    sandbox_.WriteNumber(kGraphics, L"HwSchMode", 0);
    EXPECT_EQ(ProbeMachine().gpu_scheduling_mode, 0U);
}

TEST_F(MachineProbe, CountsProcessorsAndMemory) {
    const MachineInfo machine = ProbeMachine();
    EXPECT_GE(machine.logical_processors, 1U);
    ASSERT_TRUE(machine.memory);
    EXPECT_GT(machine.memory->total, 64U << 20);
    EXPECT_GT(machine.memory->available, 0U);
    EXPECT_LE(machine.memory->available, machine.memory->total);
}

TEST_F(MachineProbe, SectionHasAHeaderAndFourLines) {
    const ReportCapture report;
    ReportMachineSection();
    const std::string text = report.Text();
    EXPECT_TRUE(
        text.starts_with("\n== MACHINE =======================================================\n"
                         "OS              :  (build .)\n"
                         "CPU             :  ("))
        << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);
}

}  // namespace
