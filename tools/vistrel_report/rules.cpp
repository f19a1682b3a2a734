#include "tools/vistrel_report/rules.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/vistrel_report/rule_conditions.h"

namespace {

using namespace RuleConditions;  // NOLINT(google-build-using-namespace): the table is read by its names.

constexpr std::string_view kRunAgainClosed =
    "Please close Vistrel and the program that hosts it, then run vistrel_diag again and send the new "
    "report.";
constexpr std::string_view kInstallFolder =
    "Please copy vistrel_diag.exe into the folder where Vistrel is installed (the one with Vistrel.exe), run "
    "it "
    "there and send the new report.";
constexpr std::string_view kPartTwo =
    "Please run vistrel_diag again with both parts: when it asks, have the headset on and a game running "
    "that "
    "shows the trouble.";
constexpr std::string_view kSendLog =
    "Please make a log: in Vistrel, Debug tab, turn on \"Show Vistrel debug log\", press Start, let it reach "
    "the "
    "state you see, press Stop, then run vistrel_diag once more.";

std::vector<Rule> UntrustedRules() {
    return {
        {"product-running",
         Level::Untrusted,
         "Vistrel was running during the test",
         {},
         ProductRunning,
         "The product or its host application is in the list of running programs, in either part.",
         kRunAgainClosed,
         "running-software",
         Topic::kNone,
         Topic::kTimings | Topic::kCapture},
        {"wrong-folder",
         Level::Untrusted,
         "The tool did not run in the product's folder",
         {Part::DepthModel},
         WrongFolder,
         "No model file was found, or the AI runtime is not beside the tool, and the settings file or the "
         "shader was not found either.",
         kInstallFolder,
         "opening-lines",
         Topic::kNone,
         Topic::kSettings | Topic::kTimings},
        {"injected-files",
         Level::Untrusted,
         "Foreign code in the product's folder",
         {Part::Injection},
         InjectedFiles,
         "A proxy DLL or a ReShade file lies beside the tool.",
         "Please run the ReShade uninstaller against the Vistrel folder, or delete the files that the report "
         "lists under \"INJECTED INTO VISTREL'S OWN FOLDER\", and send a new report.",
         "injected-files",
         Topic::kNone,
         Topic::kBehaviour},
        {"warp-sizes-inverted",
         Level::Untrusted,
         "A smaller size costs more than a larger one",
         {Part::Warp},
         WarpSizesInverted,
         "A row of the warp's table is dearer by more than a tenth than one with more pixels: something else "
         "used the GPU, or it saved power.",
         "Please connect the power supply, close other programs and run vistrel_diag once more.",
         "warp-cost",
         Topic::kNone,
         Topic::kTimings},
        {"settings-unreadable",
         Level::Untrusted,
         "The settings file could not be read",
         {Part::Settings},
         SettingsUnreadable,
         "The settings file was found and is no valid JSON; keys before the error count, all others are at "
         "their defaults.",
         "Please send us the file settings.json as it is.",
         "settings",
         Topic::kNone,
         Topic::kSettings},
    };
}

std::vector<Rule> FailureRules() {
    return {
        {"run-crashed",
         Level::Explains,
         "The run crashed",
         {},
         RunCrashed,
         "The closing line says that the program crashed or aborted, and in which section.",
         "Please update the graphics driver and the headset's software, restart the computer and run "
         "vistrel_diag again.",
         "verdict"},
        {"section-crashed",
         Level::Explains,
         "A section crashed or hung",
         {},
         SectionCrashed,
         "A line says that what a section asked crashed or hung, and the run went on without it.",
         "Please update the software that the section belongs to (the headset's or the graphics driver), "
         "restart the computer and run vistrel_diag again.",
         "verdict"},
        {"gpu-list-failed",
         Level::Explains,
         "Windows could not list the graphics cards",
         {Part::Gpus},
         GpuListFailed,
         "The section GPUs says that the DXGI factory could not be made.",
         "Please reinstall the graphics driver, restart the computer and run vistrel_diag again.",
         "gpus"},
        {"no-hardware-gpu",
         Level::Explains,
         "No graphics card was found",
         {Part::Gpus},
         NoHardwareGpu,
         "The GPUs are listed and none of them is hardware.",
         "Please install the driver of your graphics card, restart the computer and run vistrel_diag again.",
         "gpus"},
        {"device-failed",
         Level::Explains,
         "Direct3D 11 could not be started",
         {Part::BenchmarkSetup},
         DeviceFailed,
         "D3D11CreateDevice failed on the GPU to measure on.",
         "Please reinstall the graphics driver, restart the computer and run vistrel_diag again.",
         "benchmark-setup"},
        {"gpu-choice-integrated",
         Level::Explains,
         "Windows puts Vistrel or SteamVR on the integrated GPU",
         {Part::GpuOverrides, Part::Gpus},
         GpuChoiceIntegrated,
         "A choice of GPU for Vistrel or SteamVR says GpuPreference=1, on a machine with more than one "
         "hardware "
         "GPU, and the headset does not require the integrated one.",
         "Please open Windows Settings, System, Display, Graphics, remove the entries for Vistrel and "
         "SteamVR, "
         "restart the computer and run vistrel_diag again.",
         "gpu-overrides"},
        {"memory-low",
         Level::Explains,
         "Less than 2 GB of memory was free",
         {Part::Machine},
         LowMemory,
         "The free memory is less than 2 GB, which explains stutter by itself.",
         "Please close what else is open (browsers above all), and see whether the trouble is still there.",
         "machine"},
    };
}

std::vector<Rule> CaptureRules() {
    constexpr Topics kCapture = Topic::kCapture;
    return {
        {"capture-taken",
         Level::Explains,
         "Another program holds the screen capture",
         {},
         CaptureTaken,
         "The capture failed because the display is already being duplicated.",
         "Please close programs that capture the screen (OBS, Parsec, Steam Remote Play, a second Vistrel) "
         "and "
         "run vistrel_diag again.",
         "screen-capture",
         kCapture},
        {"capture-denied",
         Level::Explains,
         "Windows denied the screen capture",
         {},
         CaptureDenied,
         "The capture was denied: a question of Windows or the lock screen was in front.",
         "Please answer any question that Windows shows, keep the computer unlocked and run vistrel_diag "
         "again.",
         "screen-capture",
         kCapture},
        {"capture-unsupported",
         Level::Explains,
         "The display cannot be captured on its GPU",
         {},
         CaptureUnsupported,
         "Windows cannot duplicate the display on the GPU in question.",
         "Please have Vistrel capture the game's window instead of the monitor, or switch the laptop to its "
         "discrete GPU (MUX switch).",
         "screen-capture",
         kCapture},
        {"capture-no-frame",
         Level::Explains,
         "The capture never delivered an image",
         {},
         CaptureWithoutFrame,
         "The duplication began and no frame came.",
         "Please make sure that the monitor is awake, and run vistrel_diag again.",
         "screen-capture",
         kCapture},
        {"capture-no-display",
         Level::Explains,
         "No display is attached to a GPU",
         {},
         CaptureWithoutDisplay,
         "There is no display to capture, or the one asked for is gone.",
         "Please tell us which monitor the game runs on and how it is connected.",
         "screen-capture",
         kCapture},
        {"capture-failed",
         Level::Explains,
         "The screen capture failed",
         {},
         CaptureFailedOtherwise,
         "The capture failed for another reason than those with a rule of their own.",
         "Please restart the computer and run vistrel_diag again.",
         "screen-capture",
         kCapture},
    };
}

std::vector<Rule> CostAndSettingRules() {
    return {
        {"video-memory-full",
         Level::Explains,
         "The video memory is full while the game runs",
         {Part::VramTwo},
         VideoMemoryFull,
         "In part 2 more than 90 % of what Windows grants is used.",
         "Please lower the game's texture quality by one step and see whether the trouble is still there.",
         "part-2"},
        {"share-fatal",
         Level::Explains,
         "Vistrel takes more than half of the GPU",
         {Part::Verdict},
         ShareFatal,
         "The verdict's share at 90 Hz in the configured mode is above 50 %.",
         "Please choose a smaller depth model in Vistrel, or the next smaller desktop resolution, and tell "
         "us "
         "whether it helps.",
         "verdict",
         Topic::kTimings},
        {"warp-too-dear",
         Level::Explains,
         "The warp alone takes more than half of a headset frame",
         {Part::Warp},
         WarpTooDear,
         "The warp at the desktop's size takes more than half of the 11.1 ms that a frame lasts at 90 Hz.",
         "Please set the desktop to a smaller resolution while you play, and tell us whether it helps.",
         "warp-cost",
         Topic::kTimings},
        {"stereo-off",
         Level::Explains,
         "3D is switched off",
         {Part::Settings},
         StereoOff,
         "The settings say that 3D is off.",
         "Please switch 3D on in Vistrel and look again.",
         "settings",
         Topic::kSettings},
        {"separation-zero",
         Level::Explains,
         "Both eyes get almost the same picture",
         {Part::Settings},
         SeparationNearZero,
         "The separation is near zero.",
         "Please raise the separation in Vistrel and look again.",
         "settings",
         Topic::kSettings},
        {"depth-strength-zero",
         Level::Explains,
         "The depth is applied with almost no effect",
         {Part::Settings},
         DepthStrengthNearZero,
         "The depth strength is near zero.",
         "Please raise the depth strength in Vistrel and look again.",
         "settings",
         Topic::kSettings},
        {"custom-model-missing",
         Level::Explains,
         "No model is chosen",
         {Part::DepthModel},
         CustomModelMissing,
         "The quality is set to a custom model, and no path of one is stored.",
         "Please choose one of the depth models in Vistrel's settings.",
         "depth-model",
         Topic::kSettings},
        {"model-not-timed",
         Level::Explains,
         "The configured depth model does not run",
         {Part::DepthModel},
         ModelNotTimed,
         "The model that the settings name could not be timed, though the AI runtime is there.",
         "Please update the graphics driver. If the report still says the same, reinstall Vistrel, which "
         "puts "
         "its model files and DirectML.dll back.",
         "depth-model",
         Topic::kBehaviour},
    };
}

std::vector<Rule> ContributingRules() {
    return {
        {"share-significant",
         Level::Contributes,
         "Vistrel takes more than a quarter of the GPU",
         {Part::Verdict},
         ShareSignificant,
         "The verdict's share at 90 Hz in the configured mode is above 25 %, and not above 50 %.",
         "Please try the next smaller depth model in Vistrel and tell us whether it helps.",
         "verdict",
         Topic::kTimings},
        {"cross-gpu",
         Level::Contributes,
         "Every captured frame crosses between two GPUs",
         {},
         CrossGpu,
         "The headset requires another GPU than the one that drives the display, or the capture says so.",
         "Please have Vistrel capture the game's window instead of the monitor, or switch the laptop to its "
         "discrete GPU (MUX switch).",
         "headset"},
        {"model-too-slow",
         Level::Contributes,
         "The depth model is slower than the picture",
         {Part::Verdict},
         ModelTooSlow,
         "The verdict says that the depth map cannot keep up.",
         "Please choose a smaller depth model in Vistrel and tell us whether it helps.",
         "verdict",
         Topic::kTimings},
        {"game-slow",
         Level::Contributes,
         "The game itself is slow",
         {Part::GameFrameRate, Part::Displays},
         GameSlow,
         "In part 2 less than half as many images arrive as the primary display shows.",
         "Please tell us the game's frame rate without Vistrel, with the same settings.",
         "part-2",
         Topic::kCapture},
        {"defaults-measured",
         Level::Contributes,
         "Built-in defaults were measured",
         {Part::Settings},
         DefaultsMeasured,
         "No settings file was found.",
         kInstallFolder,
         "settings",
         Topic::kNone,
         Topic::kSettings},
        {"model-uneven",
         Level::Contributes,
         "The depth model's times are uneven",
         {Part::DepthModel},
         ModelUneven,
         "A model's longest run took more than three times its median.",
         "Please close what else uses the graphics card and run vistrel_diag once more.",
         "depth-model",
         Topic::kTimings},
        {"warp-not-measured",
         Level::Contributes,
         "The warp could not be measured",
         {Part::Verdict},
         WarpNotMeasured,
         "The verdict says so; a section above says why.",
         kInstallFolder,
         "warp-cost"},
        {"gpu-choice-other",
         Level::Contributes,
         "Windows has a choice of GPU for Vistrel or SteamVR",
         {Part::GpuOverrides},
         GpuChoiceOther,
         "There is an entry for Vistrel or SteamVR other than for the integrated GPU.",
         "",
         "gpu-overrides"},
        {"benchmark-gpu-guessed",
         Level::Contributes,
         "The GPU to measure on was guessed",
         {Part::BenchmarkSetup, Part::Gpus},
         BenchmarkGpuGuessed,
         "The runtime named no adapter, on a machine with more than one hardware GPU.",
         "Please turn the headset on, wait until its software has started, and run vistrel_diag again.",
         "benchmark-setup"},
        {"vr-software-running",
         Level::Contributes,
         "SteamVR or a streamer ran during the baseline",
         {Part::RunningSoftware},
         VrSoftwareRunning,
         "SteamVR, Virtual Desktop or the Oculus client ran in part 1, which is measured without them.",
         "Please close SteamVR and the streaming software before part 1 and run vistrel_diag again.",
         "running-software"},
        {"headset-gpu-unknown",
         Level::Contributes,
         "The GPU of the headset is not among those listed",
         {},
         HeadsetGpuUnknown,
         "The required GPU reads -1 (NOT FOUND).",
         "Please restart the computer with the headset connected and run vistrel_diag again.",
         "headset"},
        {"no-openxr-runtime",
         Level::Contributes,
         "No OpenXR runtime answered",
         {},
         NoOpenXrRuntime,
         "No runtime accepted an instance, in the last part that asked.",
         "Please start SteamVR (or your headset's own software) and run vistrel_diag again with both parts.",
         "headset"},
        {"headset-asleep",
         Level::Contributes,
         "The headset was asleep in part 2",
         {Part::HeadsetTwo},
         HeadsetAsleep,
         "In part 2 the runtime reports no headset.",
         "Please keep the headset on your head during part 2 and run vistrel_diag again.",
         "headset"},
        {"gpu-not-described",
         Level::Contributes,
         "A GPU could not be described by its driver",
         {Part::Gpus},
         GpuNotDescribed,
         "A number is skipped between two GPUs.",
         "Please reinstall the graphics driver, restart the computer and run vistrel_diag again.",
         "gpus"},
    };
}

std::vector<Rule> WorthKnowingRules() {
    return {
        {"run-stopped",
         Level::WorthKnowing,
         "The run was stopped before its end",
         {},
         RunStopped,
         "The closing line says that the user or Windows ended the run.",
         "Please run vistrel_diag once more and wait until it says \"Done\".",
         "verdict"},
        {"part-two-missing",
         Level::WorthKnowing,
         "Part 2 was not run",
         {Part::Verdict},
         PartTwoMissing,
         "The report has no part 2, so video memory pressure and the headset's GPU are unknown.",
         kPartTwo,
         "part-2"},
        {"log-missing",
         Level::WorthKnowing,
         "There is no log of the product",
         {Part::ProductLog},
         LogMissing,
         "The product left no log.",
         kSendLog,
         "product-log"},
        {"log-without-start",
         Level::WorthKnowing,
         "The log is of a run that never started",
         {Part::ProductLog},
         LogWithoutStart,
         "The log has none of the lines that decide about depth.",
         kSendLog,
         "product-log"},
        {"display-of-nobody",
         Level::WorthKnowing,
         "A display that no GPU claims",
         {Part::Displays},
         DisplayOfNobody,
         "A display is driven by GPU -1: a USB or virtual display, or one of an adapter that "
         "failed.",
         "Please tell us which monitor the game runs on and how it is connected.",
         "displays"},
        {"capture-software-running",
         Level::WorthKnowing,
         "Capture software was running",
         {},
         CaptureSoftwareRunning,
         "OBS or Parsec is in the list of running programs.",
         "Please close OBS and Parsec and run vistrel_diag again.",
         "running-software"},
        {"openxr-loader-missing",
         Level::WorthKnowing,
         "The OpenXR loader is not beside the tool",
         {},
         OpenXrLoaderMissing,
         "openxr_loader.dll was not found.",
         kInstallFolder,
         "headset"},
        {"gpu-scheduling-on",
         Level::WorthKnowing,
         "Hardware-accelerated GPU scheduling is on",
         {Part::Machine},
         GpuSchedulingOn,
         "The GPU scheduling reads ENABLED.",
         "If frame times are uneven: please switch \"Hardware-accelerated GPU scheduling\" off in Windows' "
         "graphics settings, restart, and run vistrel_diag again.",
         "machine"},
        {"windows-old",
         Level::WorthKnowing,
         "Windows is older than per-application GPU choices",
         {Part::Machine},
         OldWindows,
         "The build of Windows is below 17134.",
         "",
         "machine"},
        {"frame-not-read-back",
         Level::WorthKnowing,
         "The warp was timed on a synthetic picture",
         {Part::Capture},
         FrameNotReadBack,
         "No captured frame could be read back; it changes little.",
         "",
         "screen-capture"},
        {"hands-not-told-apart",
         Level::WorthKnowing,
         "Hands cannot be told from controllers",
         {Part::HandTracking},
         HandsNotToldApart,
         "The runtime does not say whether a hand holds a controller.",
         "",
         "part-2"},
        {"hands-not-watched",
         Level::WorthKnowing,
         "The hands could not be watched",
         {Part::HandTracking},
         HandsNotWatched,
         "The hand probe was skipped, and its line says why.",
         "",
         "part-2"},
        {"file-not-read-whole",
         Level::WorthKnowing,
         "A file could not be read to its end",
         {},
         FileNotReadWhole,
         "A line below the settings or the log says so.",
         "Please close programs that work on the settings file or the log, and run vistrel_diag again.",
         "settings"},
    };
}

void Append(std::vector<Rule>& table, std::vector<Rule> rules) {
    std::move(rules.begin(), rules.end(), std::back_inserter(table));
}

std::vector<Rule> MakeTable() {
    std::vector<Rule> table;
    Append(table, UntrustedRules());
    Append(table, FailureRules());
    Append(table, CaptureRules());
    Append(table, CostAndSettingRules());
    Append(table, ContributingRules());
    Append(table, WorthKnowingRules());
    return table;
}

}  // namespace

const std::vector<Rule>& RuleTable() {
    static const std::vector<Rule> table = MakeTable();
    return table;
}

const Rule* FindRule(std::string_view id) {
    const std::vector<Rule>& table = RuleTable();
    const auto found =
        std::find_if(table.begin(), table.end(), [id](const Rule& rule) { return rule.id == id; });
    return found == table.end() ? nullptr : &*found;
}

std::string_view LevelName(Level level) {
    switch (level) {
        case Level::Untrusted:
            return "untrusted";
        case Level::Explains:
            return "explains";
        case Level::Contributes:
            return "contributes";
        case Level::WorthKnowing:
            break;
    }
    return "worth-knowing";
}

std::string_view LevelTitle(Level level) {
    switch (level) {
        case Level::Untrusted:
            return "The report cannot be trusted";
        case Level::Explains:
            return "Explains the trouble";
        case Level::Contributes:
            return "Contributes";
        case Level::WorthKnowing:
            break;
    }
    return "Worth knowing";
}

std::string_view AnswerName(Answer answer) {
    switch (answer) {
        case Answer::Found:
            return "found";
        case Answer::NotFound:
            return "not_found";
        case Answer::NotJudged:
            return "not_judged";
        case Answer::DoesNotApply:
            break;
    }
    return "does_not_apply";
}
