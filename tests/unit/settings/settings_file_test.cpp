#include "settings/settings_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "settings/diag_settings.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"

namespace {

using testing::ElementsAre;

/// Gives each test its own folder, and restores the process-wide settings afterwards.
class SettingsFile : public testing::Test {
  protected:
    SettingsFile() {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~SettingsFile() override {
        std::filesystem::remove_all(folder_);
        DiagSettings::Instance() = {};
        SetSettingsFilePath(std::string(kNoSettingsFile));
    }

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }

    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }

  private:
    std::string folder_ =
        std::string("settings_file_test.") + testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST(SettingsFileCandidates, AreTheUsersThenTheToolsThenOneLevelUp) {
    EXPECT_THAT(SettingsFileCandidates("C:\\Data\\Vistrel\\usersettings.json", "D:\\Vistrel"),
                ElementsAre("C:\\Data\\Vistrel\\usersettings.json", "D:\\Vistrel\\settings.json",
                            "D:\\Vistrel\\..\\settings.json"));
}

TEST(SettingsFileCandidates, WithoutAToolFolderAreRelative) {
    EXPECT_THAT(SettingsFileCandidates(".\\usersettings.json", ""),
                ElementsAre(".\\usersettings.json", "settings.json", "..\\settings.json"));
}

// First of all tests that apply a file: the path is the process's.
TEST_F(SettingsFile, IsEmptyBeforeAFileIsApplied) {
    const ReportCapture report;
    EXPECT_FALSE(ApplyFirstSettingsFile({Path("a.json"), Path("b.json"), Path("c.json")}));
    EXPECT_EQ(SettingsFilePath(), "(not found)");
    EXPECT_EQ(report.Text(), "");
}

TEST_F(SettingsFile, ABrokenFileIsReportedAndHidesLaterOnes) {
    const std::string broken = Write("a.json", "{\"vistrel_scale\": }");
    const std::string good = Write("b.json", "{\"vistrel_scale\": 2}");
    const ReportCapture report;
    EXPECT_FALSE(ApplyFirstSettingsFile({broken, good}));
    EXPECT_EQ(SettingsFilePath(), "(not found)");
    EXPECT_EQ(DiagSettings::Instance().scale, 1.0F);
    EXPECT_EQ(report.Text(), "!! settings.json found at " + broken +
                                 " but could not be parsed: [json.exception.parse_error.101] parse error at "
                                 "line 1, column 19: syntax error while parsing value - unexpected '}'; "
                                 "expected '[', '{', or a literal\n");
}

TEST_F(SettingsFile, KeysBeforeAWrongOneApplyThoughTheFileFails) {
    const std::string file = Write("a.json", R"({"vistrel_image_algo": 1, "vistrel_pseudo_3d": 0,
                                                 "vistrel_reshade_enabled": true, "vistrel_fsr3": true})");
    const ReportCapture report;
    EXPECT_FALSE(ApplyFirstSettingsFile({file}));
    EXPECT_EQ(SettingsFilePath(), "(not found)");
    EXPECT_EQ(DiagSettings::Instance().image_algo, 1);
    EXPECT_TRUE(DiagSettings::Instance().reshade_enabled);
    EXPECT_TRUE(DiagSettings::Instance().pseudo_3d);
    EXPECT_FALSE(DiagSettings::Instance().fsr3);
    EXPECT_EQ(report.Text(), "!! settings.json found at " + file +
                                 " but could not be parsed: [json.exception.type_error.302] type must be "
                                 "boolean, but is number\n");
}

TEST_F(SettingsFile, TheFirstThatOpensIsApplied) {
    const std::string second = Write("b.json", "{\"vistrel_scale\": 2}");
    const std::string third = Write("c.json", "{\"vistrel_scale\": 3}");
    const ReportCapture report;
    EXPECT_TRUE(ApplyFirstSettingsFile({Path("a.json"), second, third}));
    EXPECT_EQ(SettingsFilePath(), second);
    EXPECT_EQ(DiagSettings::Instance().scale, 2.0F);
    EXPECT_EQ(report.Text(), "");
}

TEST_F(SettingsFile, AFileThatVanishesBeforeItIsQuotedIsNamed) {
    const std::string file = Write("a.json", "{\"vistrel_scale\": 2}");
    EXPECT_TRUE(ApplyFirstSettingsFile({file}));
    std::filesystem::remove(file);
    const ReportCapture report;
    ReportSettingsVerbatim();
    EXPECT_EQ(report.Text(), "\n== VISTREL SETTINGS, VERBATIM ====================================\n" + file +
                                 " could not be opened.\n");
}

#ifdef _WIN32  // Elsewhere a folder can be opened as a file.
TEST_F(SettingsFile, AFolderOfThatNameIsSkipped) {
    std::filesystem::create_directories(Path("a.json"));
    const std::string second = Write("b.json", "{\"vistrel_scale\": 2}");
    EXPECT_TRUE(ApplyFirstSettingsFile({Path("a.json"), second}));
    EXPECT_EQ(SettingsFilePath(), second);
}
#endif

TEST_F(SettingsFile, OpensANameOutsideTheCodePage) {
    std::ofstream(std::filesystem::path(u8"settings_file_test.OpensANameOutsideTheCodePage/Ünï日本.json"))
        << "{\"vistrel_scale\": 4}";
    EXPECT_TRUE(ApplyFirstSettingsFile({Path("Ünï日本.json")}));
    EXPECT_EQ(SettingsFilePath(), Path("Ünï日本.json"));
    EXPECT_EQ(DiagSettings::Instance().scale, 4.0F);
}

}  // namespace
