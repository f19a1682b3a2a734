#include "tools/vistrel_report/findings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "tools/vistrel_report/charts.h"
#include "tools/vistrel_report/text_output.h"

namespace {

/// A whole report of one GPU on which nothing is found that matters.
Facts QuietReport() {
    Facts facts;
    facts.present.fill(true);
    GpuFacts gpu;
    gpu.name = "Card";
    gpu.line = 10;
    facts.gpus = {gpu};
    facts.warp.rows = {{1920, 1080, "", 1.0, 0.0, 20}, {2560, 1440, "", 1.8, 0.0, 21}};
    facts.verdict.share = 10.0;
    facts.verdict.share_line = 30;
    return facts;
}

const Finding& Of(const Findings& findings, std::string_view id) {
    return *std::find_if(findings.all.begin(), findings.all.end(),
                         [id](const Finding& finding) { return finding.rule->id == id; });
}

TEST(Findings, NothingFound) {
    const Findings findings = JudgeReport(QuietReport());
    EXPECT_EQ(findings.summary, "Nothing in this report explains the trouble.");
    EXPECT_TRUE(findings.verdict_judged);
    EXPECT_EQ(CountOf(findings, Answer::Found), 0U);
    EXPECT_EQ(CountOf(findings, Answer::NotJudged), 0U);
}

TEST(Findings, WithoutSectionsNothingIsJudged) {
    const Findings findings = JudgeReport(Facts());
    EXPECT_EQ(CountOf(findings, Answer::NotJudged), RuleTable().size());
    EXPECT_FALSE(findings.verdict_judged);
    EXPECT_EQ(findings.summary, "The end of the report is missing, so there is no verdict to judge.");
}

TEST(Findings, NotJudgedNamesWhatIsMissing) {
    Facts facts = QuietReport();
    facts.present[static_cast<std::size_t>(Part::Warp)] = false;
    const Judgement judgement = Of(JudgeReport(facts), "warp-too-dear").judgement;
    EXPECT_EQ(judgement.answer, Answer::NotJudged);
    EXPECT_EQ(judgement.missing, std::vector<Part>{Part::Warp});
}

TEST(Findings, ASpoilingFindingMakesOthersDoubtful) {
    Facts facts = QuietReport();
    facts.verdict.share = 51.0;
    Findings findings = JudgeReport(facts);
    EXPECT_EQ(findings.summary, "What explains the trouble: Vistrel takes more than half of the GPU.");
    EXPECT_TRUE(Of(findings, "share-fatal").doubtful_because.empty());

    facts.software.product_running_line = 7;
    findings = JudgeReport(facts);
    EXPECT_EQ(findings.summary,
              "The verdict of this report cannot be judged: Vistrel was running during the test.");
    EXPECT_FALSE(findings.verdict_judged);
    EXPECT_EQ(DoubtText(Of(findings, "share-fatal")), "doubtful because of product-running");
}

TEST(Findings, SharesAtTheirLimits) {
    Facts facts = QuietReport();
    const auto answers = [&facts](double share) {
        facts.verdict.share = share;
        const Findings findings = JudgeReport(facts);
        return std::pair(Of(findings, "share-fatal").judgement.answer,
                         Of(findings, "share-significant").judgement.answer);
    };
    EXPECT_EQ(answers(25.0), std::pair(Answer::NotFound, Answer::NotFound));
    EXPECT_EQ(answers(26.0), std::pair(Answer::NotFound, Answer::Found));
    EXPECT_EQ(answers(50.0), std::pair(Answer::NotFound, Answer::Found));
    EXPECT_EQ(answers(51.0), std::pair(Answer::Found, Answer::NotFound));
}

TEST(Findings, NamesTheLargestSizeThatFits) {
    Facts facts = QuietReport();
    facts.warp.rows = {
        {3840, 2160, "", 9.0, 0.0, 20}, {2560, 1440, "", 4.0, 0.0, 21}, {1920, 1080, "", 2.0, 0.0, 22}};
    const Judgement judgement = Of(JudgeReport(facts), "warp-too-dear").judgement;
    EXPECT_EQ(judgement.says,
              "At 3840x2160 the warp takes 9.00 of the 11.1 ms that a frame lasts at 90 Hz (81%). 2560x1440 "
              "would fit, "
              "with 4.00 ms.");
    EXPECT_EQ(judgement.lines, (std::vector<LineNumber>{20, 21}));
}

TEST(Findings, ASmallerSizeMayCostTenPercentMore) {
    Facts facts = QuietReport();
    facts.warp.rows = {{1920, 1080, "", 1.10, 0.0, 20}, {2560, 1440, "", 1.0, 0.0, 21}};
    EXPECT_EQ(Of(JudgeReport(facts), "warp-sizes-inverted").judgement.answer, Answer::NotFound);
    facts.warp.rows.front().milliseconds = 1.11;
    EXPECT_EQ(Of(JudgeReport(facts), "warp-sizes-inverted").judgement.answer, Answer::Found);
}

TEST(Findings, ASmallerSizeMayCostTwoHundredthsMore) {
    Facts facts = QuietReport();
    const auto answer = [&facts](double small, double large) {
        facts.warp.rows = {{1920, 1080, "", small, 0.0, 20}, {2560, 1440, "", large, 0.0, 21}};
        return Of(JudgeReport(facts), "warp-sizes-inverted").judgement.answer;
    };
    EXPECT_EQ(answer(0.02, 0.01), Answer::NotFound);
    EXPECT_EQ(answer(0.05, 0.03), Answer::NotFound);
    EXPECT_EQ(answer(0.04, 0.01), Answer::Found);
}

TEST(Findings, AWarpThatWasTimedShowsThatTheFolderIsTheRightOne) {
    Facts facts = QuietReport();
    facts.models.runtime_missing_line = 80;
    facts.settings.defaults_line = 50;
    EXPECT_EQ(Of(JudgeReport(facts), "wrong-folder").judgement.answer, Answer::NotFound);
    EXPECT_EQ(Of(JudgeReport(facts), "ai-runtime-missing").judgement.answer, Answer::Found);
    facts.warp.rows.clear();
    facts.warp.failures = {{"GPU timing produced nothing usable at 1920x1080", 60}};
    EXPECT_EQ(Of(JudgeReport(facts), "wrong-folder").judgement.answer, Answer::NotFound);
    facts.warp.failures.clear();
    facts.warp.shader_failure_line = 60;
    EXPECT_EQ(Of(JudgeReport(facts), "ai-runtime-missing").judgement.answer, Answer::DoesNotApply);
    EXPECT_EQ(Of(JudgeReport(facts), "wrong-folder").judgement.says,
              "The AI runtime is not beside the tool, and neither is a settings file. What follows is about "
              "built-in defaults, not about this user's set-up.");
    facts.settings.defaults_line = 0;  // The product may keep its settings in the user's folder.
    EXPECT_EQ(Of(JudgeReport(facts), "wrong-folder").judgement.says,
              "The AI runtime is not beside the tool, and the shader could not be used either.");
}

TEST(Findings, OnlyAChoiceOfAGpuIsOne) {
    Facts facts = QuietReport();
    facts.gpus.push_back(facts.gpus.front());
    facts.gpus.back().number = 1;
    const auto answers = [&facts](const char* choice) {
        facts.overrides = {{"C:\\Vistrel.exe", choice, 40}};
        const Findings findings = JudgeReport(facts);
        return std::pair(Of(findings, "gpu-choice-integrated").judgement.answer,
                         Of(findings, "gpu-choice-other").judgement.answer);
    };
    const std::pair neither(Answer::NotFound, Answer::NotFound);
    EXPECT_EQ(answers("SwapEffectUpgradeEnable=1;"), neither);
    EXPECT_EQ(answers("GpuPreference=0;"), neither);
    EXPECT_EQ(answers("AutoHDREnable=1;GpuPreference=0;"), neither);
    EXPECT_EQ(answers("GpuPreference="), neither);
    EXPECT_EQ(answers("GpuPreference=1;"), std::pair(Answer::Found, Answer::NotFound));
    EXPECT_EQ(answers("GpuPreference=2;"), std::pair(Answer::NotFound, Answer::Found));
    EXPECT_EQ(answers("SpecificAdapter=4318&9348;GpuPreference=1073741824;"),
              std::pair(Answer::NotFound, Answer::Found));
    facts.gpus.pop_back();
    EXPECT_EQ(answers("GpuPreference=2;"), std::pair(Answer::DoesNotApply, Answer::DoesNotApply));
}

TEST(Findings, AHeadsetAsleepInPartTwoKeepsTheGpuOfPartOne) {
    Facts facts = QuietReport();
    GpuFacts other;
    other.number = 1;
    other.dedicated_mb = 8000.0;
    facts.gpus.front().dedicated_mb = 128.0;
    facts.gpus.push_back(other);
    facts.overrides = {{"C:\\Vistrel.exe", "GpuPreference=1;", 40}};
    facts.log_lines = {{"Match found: adapter 0", 45}};
    facts.headset.required_gpu = 0;
    facts.headset.required_gpu_name = "Card";
    facts.headset.required_gpu_line = 50;
    facts.headset_in_two.message = TextFact{"A runtime is installed but reports no headset right now.", 90};
    const auto judgement = [&facts](const char* rule) { return Of(JudgeReport(facts), rule).judgement; };
    EXPECT_EQ(judgement("gpu-choice-integrated").answer, Answer::NotFound);
    EXPECT_EQ(judgement("log-names-adapter").lines, (std::vector<LineNumber>{45, 50}));
    EXPECT_EQ(judgement("headset-gpu-unknown").answer, Answer::NotFound);
    facts.headset.required_gpu = -1;
    EXPECT_EQ(judgement("headset-gpu-unknown").answer, Answer::Found);
    facts.headset_in_two.required_gpu = 0;
    EXPECT_EQ(judgement("headset-gpu-unknown").answer, Answer::NotFound);
    EXPECT_EQ(judgement("headset-asleep").answer, Answer::Found);
}

TEST(Findings, WithDepthFromReShadeNoModelMatters) {
    Facts facts = QuietReport();
    facts.models.rows = {{"Model", std::nullopt, 0.0, 0.0, "no DirectML", true, 25}};
    facts.models.no_custom_model_line = 26;
    facts.models.runtime_missing_line = 27;
    facts.verdict.model_too_slow_line = 31;
    const auto expect = [&facts](Answer answer) {
        const Findings findings = JudgeReport(facts);
        for (const char* rule :
             {"model-not-timed", "custom-model-missing", "ai-runtime-missing", "model-too-slow"}) {
            EXPECT_EQ(Of(findings, rule).judgement.answer, answer) << rule;
        }
    };
    expect(Answer::Found);
    facts.settings.depth_source = TextFact{"AI", 15};
    expect(Answer::Found);
    facts.settings.depth_source->text = "ReShade";
    expect(Answer::DoesNotApply);
    facts.settings.depth_source.reset();
    facts.verdict.reshade_mode = true;
    expect(Answer::DoesNotApply);
}

TEST(Findings, ChoosingTheHeadsetsOwnGpuIsNoFinding) {
    Facts facts = QuietReport();
    GpuFacts integrated;
    integrated.number = 1;
    integrated.dedicated_mb = 128.0;
    facts.gpus.front().dedicated_mb = 8000.0;
    facts.gpus.push_back(integrated);
    facts.overrides = {{"C:\\Vistrel.exe", "GpuPreference=1;", 40}};
    EXPECT_EQ(Of(JudgeReport(facts), "gpu-choice-integrated").judgement.answer, Answer::Found);
    facts.headset_in_two.required_gpu = 1;
    EXPECT_EQ(Of(JudgeReport(facts), "gpu-choice-integrated").judgement.answer, Answer::NotFound);
    facts.headset_in_two.required_gpu = 0;
    EXPECT_EQ(Of(JudgeReport(facts), "gpu-choice-integrated").judgement.answer, Answer::Found);
}

TEST(Findings, ComparesTheGameRateWithTheDisplay) {
    Facts facts = QuietReport();
    facts.displays = {{"D", 1920, 1080, 60, true, 0, "Card", 15}};
    facts.game.fps = 30.0;
    EXPECT_EQ(Of(JudgeReport(facts), "game-slow").judgement.answer, Answer::NotFound);
    facts.game.fps = 29.9;
    EXPECT_EQ(Of(JudgeReport(facts), "game-slow").judgement.answer, Answer::Found);
    facts.displays.front().refresh_hz = 1;  // How some drivers say "default".
    EXPECT_EQ(Of(JudgeReport(facts), "game-slow").judgement.answer, Answer::DoesNotApply);
}

TEST(Findings, AGameNeedNotBeAsFastAsAFastDisplay) {
    Facts facts = QuietReport();
    facts.displays = {{"D", 1920, 1080, 240, true, 0, "Card", 15}};
    facts.game.fps = 45.0;  // Half of what the headset is assumed to show.
    EXPECT_EQ(Of(JudgeReport(facts), "game-slow").judgement.answer, Answer::NotFound);
    facts.game.fps = 44.9;
    EXPECT_EQ(Of(JudgeReport(facts), "game-slow").judgement.answer, Answer::Found);
}

TEST(Findings, WithoutAMeasuredWarpThereIsNoVerdict) {
    Facts facts = QuietReport();
    facts.verdict.share.reset();
    facts.verdict.not_measured_line = 30;
    facts.warp.shader_failure_line = 19;
    facts.warp.failures = {{"a", 21}, {"b", 22}};
    const Findings findings = JudgeReport(facts);
    EXPECT_EQ(findings.summary, "The warp could not be measured, so there is no verdict to judge.");
    EXPECT_FALSE(findings.verdict_judged);
    const Finding& finding = Of(findings, "warp-not-measured");
    EXPECT_EQ(finding.judgement.lines, (std::vector<LineNumber>{19, 21, 22, 30}));
    EXPECT_EQ(finding.rule->request.find("copy"), std::string_view::npos);
    facts.settings.stereo_off_line = 12;  // What explains the trouble is told first.
    EXPECT_TRUE(JudgeReport(facts).summary.starts_with("What explains the trouble"));
}

TEST(Findings, TheHolderOfTheCaptureIsNamedWhenKnown) {
    constexpr const char* kTaken = "The display is already being duplicated by another application.";
    Facts facts = QuietReport();
    const auto says = [&facts] { return Of(JudgeReport(facts), "capture-taken").judgement.says; };
    const std::string begin = "Another program is already duplicating the display.";
    const std::string other = " None of the programs that the tool knows was running, so it is another one.";
    const std::string unknown = " The report does not tell which programs were running.";
    facts.capture.failure = TextFact{kTaken, 17};
    EXPECT_EQ(says(), begin + other);
    facts.present[static_cast<std::size_t>(Part::RunningSoftwareTwo)] = false;
    EXPECT_EQ(says(), begin + other);
    facts.present[static_cast<std::size_t>(Part::RunningSoftware)] = false;
    EXPECT_EQ(says(), begin + unknown);
    facts.software_in_two.programs = {{"obs64.exe", 27}};
    EXPECT_EQ(says(), begin + " obs64.exe was running.");
    facts.software_in_two.programs.clear();
    std::swap(facts.capture.failure, facts.game.failure);
    facts.present[static_cast<std::size_t>(Part::RunningSoftware)] = true;
    EXPECT_EQ(says(), begin + unknown);
}

TEST(Findings, WhereGpusCouldNotBeListedTheirKindIsNoQuestion) {
    Facts facts = QuietReport();
    facts.gpus.clear();
    EXPECT_EQ(Of(JudgeReport(facts), "no-hardware-gpu").judgement.answer, Answer::Found);
    facts.gpu_list_failure_line = 9;
    EXPECT_EQ(Of(JudgeReport(facts), "no-hardware-gpu").judgement.answer, Answer::DoesNotApply);
}

TEST(Findings, CaptureSoftwareDoesNotMeanThatTheCaptureFailed) {
    Facts facts = QuietReport();
    facts.capture.fps = 60.0;
    facts.software.programs = {{"obs64.exe", 7}, {"Parsec.exe", 8}};
    EXPECT_EQ(Of(JudgeReport(facts), "capture-software-running").judgement.says,
              "Running: obs64.exe, Parsec.exe. A program that captures the screen can make the capture of "
              "another one fail.");
}

TEST(FindingsText, CountsInSingularAndPlural) {
    Facts facts = QuietReport();
    facts.not_understood = {3};
    const auto text = [&facts] { return FindingsText(facts, JudgeReport(facts), {}); };
    EXPECT_NE(text().find("\n  1 line was not understood:\n"), std::string::npos) << text();
    facts.not_understood = {3, 4};
    EXPECT_NE(text().find("\n  2 lines were not understood:\n"), std::string::npos) << text();
}

TEST(FindingsText, ALongLineIsNotCutWithinACharacter) {
    Facts facts = QuietReport();
    facts.not_understood = {1};
    const auto shown = [&facts](const std::string& line) {
        facts.lines = {{line, 1}};
        const std::string text = FindingsText(facts, JudgeReport(facts), {});
        const std::size_t begin = text.find("         1  ") + 12;
        return text.substr(begin, text.find('\n', begin) - begin);
    };
    EXPECT_EQ(shown(std::string(101, 'a')), std::string(100, 'a'));
    EXPECT_EQ(shown(std::string(98, 'a') + "\xC3\xA4"
                                           "b"),
              std::string(98, 'a') + "\xC3\xA4");
    EXPECT_EQ(shown(std::string(99, 'a') + "\xC3\xA4"), std::string(99, 'a'));
    EXPECT_EQ(shown(std::string(97, 'a') + "\xF0\x9F\x98\x80"), std::string(97, 'a'));
    // What is no UTF-8 is cut all the same.
    EXPECT_LT(shown(std::string(200, '\x80')).size(), 400U);
    EXPECT_GE(shown(std::string(200, '\x80')).size(), 97U);
}

TEST(RuleTable, IdsAreUniqueAndTextsComplete) {
    std::set<std::string_view> ids;
    for (const Rule& rule : RuleTable()) {
        EXPECT_TRUE(ids.insert(rule.id).second) << rule.id;
        EXPECT_EQ(FindRule(rule.id), &rule);
        EXPECT_TRUE(rule.condition.ends_with(".")) << rule.id;
        EXPECT_FALSE(rule.title.ends_with(".")) << rule.id;
        EXPECT_TRUE(rule.request.empty() || rule.request.ends_with(".")) << rule.id;
    }
    EXPECT_EQ(FindRule("none"), nullptr);
}

TEST(MachineKey, IsTheSameForTheSameMachine) {
    Facts facts = QuietReport();
    facts.machine.memory_gb = 16.0;
    const std::string key = MachineKey(facts);
    EXPECT_EQ(key.size(), 16U);
    facts.machine.free_memory_gb = 3.0;
    EXPECT_EQ(MachineKey(facts), key);
    facts.gpus.front().name = "Other card";
    EXPECT_NE(MachineKey(facts), key);
    EXPECT_EQ(MachineKey(Facts()), "");
}

TEST(Charts, DrawsOnlyChartsWithData) {
    Facts facts = QuietReport();
    ASSERT_EQ(ChartsOf(facts).size(), 1U);
    EXPECT_EQ(ChartsOf(facts).front().title, "What the warp costs, against the time of one frame");
    facts.capture.fps = 60.0;
    facts.models.rows = {{"Model", 3.0, 2.0, 4.0, "", true, 25}};
    facts.verdict.shares = {{90, 100.0, 30.0, 10.0, 33}};
    facts.gpus.front().memory = MemoryUse{1.0, 2.0, 11, false};
    EXPECT_EQ(ChartsOf(facts).size(), 5U);
    const Chart share = ChartsOf(facts).front();
    EXPECT_EQ(share.table_rows, (std::vector<std::vector<std::string>>{{"90 Hz", "10%", "20%", "30%"}}));
}

TEST(Wrapped, BreaksAtBlanks) {
    EXPECT_EQ(Wrapped("one two three", 7, "  "), "one two\n  three");
    EXPECT_EQ(Wrapped("unbreakable", 4, "  "), "unbreakable");
    EXPECT_EQ(Wrapped("", 4, "  "), "");
}

}  // namespace
