#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

#include "settings/diag_settings.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

/// Timers that return at once and record their arguments.
class ScriptedTimers {
  public:
    DepthModelTimers Timers() {
        return {[this](const DepthModelPreset& preset) {
                    presets_.emplace_back(preset.display_name);
                    ModelTiming timing = Answer(preset.display_name);
                    timing.width = preset.input_width;
                    timing.height = preset.input_height;
                    return timing;
                },
                [this](const std::string& path, std::int32_t size) {
                    customs_.emplace_back(path, size);
                    ModelTiming timing = Answer("custom model");
                    timing.width = size;
                    timing.height = size;
                    return timing;
                }};
    }

    void FailOn(const std::string& name, const std::string& error) {
        failing_ = name;
        error_ = error;
    }

    const std::vector<std::string>& Presets() const { return presets_; }
    const std::vector<std::pair<std::string, std::int32_t>>& Customs() const { return customs_; }

  private:
    ModelTiming Answer(const std::string& name) {
        ModelTiming timing;
        timing.name = name;
        timing.path_tried = "C:\\Vistrel\\" + name;
        if (name == failing_) {
            timing.error = error_;
            return timing;
        }
        // 1.25, 2.25, ...: ties that round to even.
        const double median = static_cast<double>(++answers_) + 0.125;
        timing.ok = true;
        timing.median_ms = median;
        timing.min_ms = median / 2;
        timing.max_ms = median * 1000;
        return timing;
    }

    int answers_ = 0;
    std::string failing_;
    std::string error_;
    std::vector<std::string> presets_;
    std::vector<std::pair<std::string, std::int32_t>> customs_;
};

DiagSettings SettingsWithQuality(std::int32_t quality) {
    DiagSettings settings;
    settings.depth_model_quality = quality;
    return settings;
}

TEST(PrintOnnxRuntimeMissing, ExplainsWhereToPutTheTool) {
    const ReportCapture report;
    PrintOnnxRuntimeMissing();
    EXPECT_EQ(report.Text(),
              "onnxruntime.dll is not next to this exe, so inference cannot be timed.\n"
              "Put vistrel_diag.exe in the Vistrel install folder (the one with Vistrel.exe and "
              "onnxruntime.dll) and run it again.\n");
}

class IntroductionTest : public ::testing::Test {
  protected:
    IntroductionTest() {
        GpuInfo first;
        first.name = "First GPU";
        GpuInfo second;
        second.name = "100% \xC3\x9C\x62\x65r GPU %s";
        second.index = 7;  // The position counts, not the enumeration index.
        SetGpuList({first, second});
    }
    ~IntroductionTest() override { SetGpuList({}); }
};

TEST_F(IntroductionTest, NamesTheGpuByItsPosition) {
    const ReportCapture report;
    PrintDepthModelIntroduction(0, 1);
    EXPECT_EQ(report.Text(), "Measured on     : GPU 1 (100% \xC3\x9C\x62\x65r GPU %s)\n\n");
}

TEST_F(IntroductionTest, KeepsTheEmptyLineWithoutAGpu) {
    for (const int index : {-1, 2, 1000}) {
        const ReportCapture report;
        PrintDepthModelIntroduction(0, index);
        EXPECT_EQ(report.Text(), "\n");
    }
}

TEST_F(IntroductionTest, NotesReShadeDepth) {
    const ReportCapture report;
    PrintDepthModelIntroduction(1, 0);
    EXPECT_EQ(report.Text(),
              "Depth comes from ReShade on this setup, so no model runs. Timing the configured model anyway, "
              "for reference if AI mode is ever used.\n"
              "Measured on     : GPU 0 (First GPU)\n\n");
}

TEST_F(IntroductionTest, TreatsEveryOtherDepthModeAsTheModel) {
    for (const std::int32_t mode : {-1, 0, 2}) {
        const ReportCapture report;
        PrintDepthModelIntroduction(mode, -1);
        EXPECT_EQ(report.Text(), "\n");
    }
}

TEST(PrintConfiguredModel, TimesOnlyThePreset) {
    ScriptedTimers scripted;
    const ReportCapture report;
    const ModelTiming timing = PrintConfiguredModel(SettingsWithQuality(3), scripted.Timers());
    EXPECT_EQ(
        report.Text(),
        "Model           : Distill Fast (518x294) (518x294)\n"
        "Inference       : 1.12 ms median (0.56 min, 1125.00 max) over 15 runs\n"
        "\n"
        "Re-run without --no-models to time every preset and see what the cheaper ones would cost here.\n");
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.median_ms, 1.125);
    EXPECT_THAT(scripted.Presets(), ElementsAre("Distill Fast (518x294)"));
}

TEST(PrintConfiguredModel, ReportsWhyItCouldNotBeTimed) {
    ScriptedTimers scripted;
    scripted.FailOn("Video Depth Fast (518x294)", "onnxruntime: 100% broken %s");
    const ReportCapture report;
    const ModelTiming timing = PrintConfiguredModel(SettingsWithQuality(11), scripted.Timers());
    EXPECT_EQ(report.Text(),
              "Model           : Video Depth Fast (518x294)\n"
              "Could not time it: onnxruntime: 100% broken %s\n"
              "Path tried      : C:\\Vistrel\\Video Depth Fast (518x294)\n");
    EXPECT_FALSE(timing.ok);
}

TEST(PrintConfiguredModel, TimesNothingForACustomModelWithoutAPath) {
    for (const std::int32_t quality : {-1, 12}) {
        ScriptedTimers scripted;
        const ReportCapture report;
        const ModelTiming timing = PrintConfiguredModel(SettingsWithQuality(quality), scripted.Timers());
        EXPECT_EQ(
            report.Text(),
            "Quality is set to Custom but no custom model path is stored - the app would have no model to "
            "load here either.\n");
        EXPECT_FALSE(timing.ok);
        EXPECT_TRUE(scripted.Presets().empty());
        EXPECT_TRUE(scripted.Customs().empty());
    }
}

TEST(PrintConfiguredModel, TimesACustomModelAtTheSettingsResolution) {
    ScriptedTimers scripted;
    DiagSettings settings = SettingsWithQuality(12);
    settings.custom_model_path = "D:\\Models\\m\xC3\xB6\x64\x65l.onnx";
    settings.ai_resolution = 700;
    const ReportCapture report;
    const ModelTiming timing = PrintConfiguredModel(settings, scripted.Timers());
    EXPECT_EQ(report.Text().substr(0, report.Text().find('\n')), "Model           : custom model (700x700)");
    EXPECT_TRUE(timing.ok);
    EXPECT_THAT(scripted.Customs(), ElementsAre(Pair("D:\\Models\\m\xC3\xB6\x64\x65l.onnx", 700)));
}

TEST(PrintConfiguredModel, PassesOnAnInvalidResolution) {
    ScriptedTimers scripted;
    DiagSettings settings = SettingsWithQuality(std::numeric_limits<std::int32_t>::min());
    settings.custom_model_path = "m.onnx";
    settings.ai_resolution = std::numeric_limits<std::int32_t>::min();
    const ReportCapture report;
    PrintConfiguredModel(settings, scripted.Timers());
    EXPECT_EQ(report.Text().substr(0, report.Text().find('\n')),
              "Model           : custom model (-2147483648x-2147483648)");
    EXPECT_THAT(scripted.Customs(), ElementsAre(Pair("m.onnx", std::numeric_limits<std::int32_t>::min())));
}

TEST(PrintAllModels, PrintsARowForEachPresetAndMarksTheUsers) {
    ScriptedTimers scripted;
    scripted.FailOn("Distill High (798x448)", "model file not found");
    const ReportCapture report;
    const ModelTiming timing = PrintAllModels(3, scripted.Timers());
    EXPECT_EQ(report.Text(),
              "MODEL                         median ms        min        max\n"
              "Square Fast (256)                  1.12       0.56    1125.00\n"
              "Square Normal (392)                2.12       1.06    2125.00\n"
              "Square High (518)                  3.12       1.56    3125.00\n"
              "Distill Fast (518x294)             4.12       2.06    4125.00   <- YOURS\n"
              "Distill Normal (686x392)           5.12       2.56    5125.00\n"
              "Distill High (798x448)                -  (model file not found)\n"
              "Distill Quality (924x518)          6.12       3.06    6125.00\n"
              "Distill Very Fast (280x280)        7.12       3.56    7125.00\n"
              "Distill Fastest (210x210)          8.12       4.06    8125.00\n"
              "Distill Balanced (322x322)         9.12       4.56    9125.00\n"
              "Distill Potato (182x182)          10.12       5.06   10125.00\n"
              "Video Depth Fast (518x294)        11.12       5.56   11125.00\n");
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.name, "Distill Fast (518x294)");
    EXPECT_EQ(timing.median_ms, 4.125);
}

TEST(PrintAllModels, ReturnsTheUsersRowWhenItFailed) {
    ScriptedTimers scripted;
    scripted.FailOn("Distill Fast (518x294)", "onnxruntime: no");
    const ReportCapture report;
    const ModelTiming timing = PrintAllModels(3, scripted.Timers());
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "onnxruntime: no");
    EXPECT_EQ(report.Text().find("YOURS"), std::string::npos);
    EXPECT_NE(report.Text().find("\nDistill Fast (518x294)                -  (onnxruntime: no)\n"),
              std::string::npos);
}

TEST(PrintAllModels, MarksNoRowForACustomModel) {
    for (const std::int32_t quality : {-1, 12}) {
        ScriptedTimers scripted;
        const ReportCapture report;
        const ModelTiming timing = PrintAllModels(quality, scripted.Timers());
        EXPECT_FALSE(timing.ok);
        EXPECT_EQ(scripted.Presets().size(), 12U);
        EXPECT_TRUE(scripted.Customs().empty());
        EXPECT_EQ(report.Text().find("YOURS"), std::string::npos);
    }
}

}  // namespace
