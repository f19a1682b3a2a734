#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"

#include <gtest/gtest.h>

#include "tests/unit/support/report_capture.h"

namespace {

constexpr const char* kExplanation = "(GpuPreference=1 means integrated, =2 means high performance.)\n";
constexpr const char* kNormalCase = "Nothing set for Vistrel or SteamVR (this is the normal case).\n";

std::string Printed(const std::optional<std::vector<GpuPreference>>& preferences) {
    const ReportCapture report;
    PrintGpuOverrideSection(preferences);
    return report.Text();
}

TEST(ConcernsVistrelOrSteamVr, FindsEachWordAnywhereInTheName) {
    EXPECT_TRUE(ConcernsVistrelOrSteamVr("vistrel"));
    EXPECT_TRUE(ConcernsVistrelOrSteamVr(R"(C:\Games\Vistrel\other.exe)"));
    EXPECT_TRUE(ConcernsVistrelOrSteamVr(R"(C:\Steam\bin\win64\VRServer.exe)"));
    EXPECT_TRUE(ConcernsVistrelOrSteamVr("VRCOMPOSITOR"));
    EXPECT_TRUE(ConcernsVistrelOrSteamVr(R"(D:\SteamVR\tool.exe)"));
}

TEST(ConcernsVistrelOrSteamVr, IsFalseForOtherNames) {
    EXPECT_FALSE(ConcernsVistrelOrSteamVr(""));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr("vistre"));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr("steam vr"));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr(R"(C:\Steam\steam.exe)"));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr("Ambulo.exe"));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr("vrmonitor.exe"));
}

TEST(ConcernsVistrelOrSteamVr, AcceptsNonAsciiNames) {
    EXPECT_TRUE(ConcernsVistrelOrSteamVr(R"(C:\Spiele für Éva\ゲーム\VISTREL.exe)"));
    EXPECT_FALSE(ConcernsVistrelOrSteamVr(R"(C:\VÏSTREL.exe)"));
}

TEST(PrintGpuOverrideSection, PrintsNoneWithoutExplanationWhenNothingWasEverPinned) {
    EXPECT_EQ(Printed(std::nullopt), "None set.\n");
}

TEST(PrintGpuOverrideSection, CallsNothingRelevantTheNormalCase) {
    EXPECT_EQ(Printed(std::vector<GpuPreference>()), std::string(kNormalCase) + kExplanation);
    EXPECT_EQ(Printed({{{R"(C:\Game.exe)", "GpuPreference=2;"}, {"DirectXUserGlobalSettings", "x"}}}),
              std::string(kNormalCase) + kExplanation);
}

TEST(PrintGpuOverrideSection, PrintsTheRelevantPinsAsTheyAreSpelled) {
    EXPECT_EQ(Printed({{{R"(C:\Steam\VRServer.exe)", "GpuPreference=1;"},
                        {R"(C:\Game.exe)", "GpuPreference=2;"},
                        {R"(C:\Ünï\VISTREL.EXE)", ""}}}),
              "C:\\Steam\\VRServer.exe = GpuPreference=1;\n"
              "C:\\Ünï\\VISTREL.EXE = \n" +
                  std::string(kExplanation));
}

TEST(PrintGpuOverrideSection, PrintsPercentSignsAsTheyAre) {
    EXPECT_EQ(Printed({{{R"(%s%n\vistrel.exe)", "%d"}}}),
              "%s%n\\vistrel.exe = %d\n" + std::string(kExplanation));
}

}  // namespace
