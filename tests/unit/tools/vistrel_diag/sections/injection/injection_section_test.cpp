#include "tools/vistrel_diag/sections/injection/injection_section.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/support/report_capture.h"
#include "tests/unit/tools/vistrel_diag/sections/injection/injection_advice.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StrEq;

std::string Printed(const std::optional<InjectedFiles>& found) {
    const ReportCapture report;
    PrintInjectionSection(found);
    return report.Text();
}

TEST(FindInjectedFiles, ChecksEveryNameOnceAndInOrder) {
    std::vector<std::string> asked;
    const InjectedFiles found = FindInjectedFiles([&asked](const char* name) {
        asked.emplace_back(name);
        return false;
    });
    EXPECT_THAT(asked, ElementsAre("dxgi.dll", "d3d9.dll", "d3d10.dll", "d3d11.dll", "d3d12.dll", "d3d8.dll",
                                   "opengl32.dll", "dinput8.dll", "winmm.dll", "version.dll", "dbghelp.dll",
                                   "ReShade.ini", "ReShade64.dll", "ReShade32.dll", "ReShadePreset.ini",
                                   "ReShade.log", "reshade-shaders"));
    EXPECT_THAT(found.proxy_dlls, IsEmpty());
    EXPECT_THAT(found.reshade_files, IsEmpty());
}

TEST(FindInjectedFiles, SortsExistingFilesByKind) {
    const InjectedFiles found = FindInjectedFiles([](const char* name) {
        const std::string_view text = name;
        return text == "winmm.dll" || text == "d3d9.dll" || text == "ReShade64.dll" ||
               text == "reshade-shaders";
    });
    EXPECT_THAT(found.proxy_dlls, ElementsAre(StrEq("d3d9.dll"), StrEq("winmm.dll")));
    EXPECT_THAT(found.reshade_files, ElementsAre(StrEq("ReShade64.dll"), StrEq("reshade-shaders")));
}

TEST(PrintInjectionSection, ReportsAnUnknownFolder) {
    EXPECT_EQ(Printed(std::nullopt), "Cannot tell - the folder this is running from is not known.\n");
}

TEST(PrintInjectionSection, ReportsThatNothingWasFound) {
    EXPECT_EQ(Printed(InjectedFiles()),
              "Nothing found. No proxy DLL and no ReShade files beside Vistrel.exe.\n");
}

TEST(PrintInjectionSection, PrintsAllAdviceForOneProxyDll) {
    EXPECT_EQ(Printed(InjectedFiles{{"dxgi.dll"}, {}}),
              "PROXY DLL      : dxgi.dll   <- not ours\n" + std::string(kAdvice));
}

TEST(PrintInjectionSection, PrintsAllAdviceForOneReShadeFolder) {
    EXPECT_EQ(Printed(InjectedFiles{{}, {"reshade-shaders"}}),
              "ReShade file   : reshade-shaders\n" + std::string(kAdvice));
}

TEST(PrintInjectionSection, ListsEveryKnownFile) {
    const InjectedFiles everything = FindInjectedFiles([](const char*) { return true; });
    EXPECT_EQ(Printed(everything),
              "PROXY DLL      : dxgi.dll   <- not ours\n"
              "PROXY DLL      : d3d9.dll   <- not ours\n"
              "PROXY DLL      : d3d10.dll   <- not ours\n"
              "PROXY DLL      : d3d11.dll   <- not ours\n"
              "PROXY DLL      : d3d12.dll   <- not ours\n"
              "PROXY DLL      : d3d8.dll   <- not ours\n"
              "PROXY DLL      : opengl32.dll   <- not ours\n"
              "PROXY DLL      : dinput8.dll   <- not ours\n"
              "PROXY DLL      : winmm.dll   <- not ours\n"
              "PROXY DLL      : version.dll   <- not ours\n"
              "PROXY DLL      : dbghelp.dll   <- not ours\n"
              "ReShade file   : ReShade.ini\n"
              "ReShade file   : ReShade64.dll\n"
              "ReShade file   : ReShade32.dll\n"
              "ReShade file   : ReShadePreset.ini\n"
              "ReShade file   : ReShade.log\n"
              "ReShade file   : reshade-shaders\n" +
                  std::string(kAdvice));
}

}  // namespace
