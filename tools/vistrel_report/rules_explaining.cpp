#include <iterator>
#include <utility>

#include "tools/vistrel_report/rule_conditions.h"
#include "tools/vistrel_report/rule_levels.h"

using namespace RuleConditions;  // NOLINT(google-build-using-namespace): the table is read by its names.
using namespace RuleRequests;    // NOLINT(google-build-using-namespace): as above.

namespace {

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
         "Please choose the next smaller desktop resolution or, where Vistrel takes depth from an AI model, "
         "a smaller model, and tell us whether it helps.",
         "verdict",
         Topic::kTimings},
        {"warp-too-dear",
         Level::Explains,
         "The warp alone takes more than half of a headset frame",
         {Part::Warp},
         WarpTooDear,
         "The warp at the first size that was timed, the desktop's if it is known, takes more than half of "
         "the 11.1 ms that a frame lasts at 90 Hz.",
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
        {"ai-runtime-missing",
         Level::Explains,
         "The AI runtime could not be loaded",
         {Part::DepthModel},
         AiRuntimeMissing,
         "onnxruntime.dll is not beside the tool or cannot be loaded, the folder is the right one, and depth "
         "is not from ReShade.",
         "Please install the current Visual C++ runtime of Microsoft (2015-2022, x64) and run vistrel_diag "
         "again. "
         "If the report still says the same, reinstall Vistrel.",
         "depth-model",
         Topic::kBehaviour},
        {"model-not-timed",
         Level::Explains,
         "The configured depth model does not run",
         {Part::DepthModel},
         ModelNotTimed,
         "The model that the settings name could not be timed, though the AI runtime and the model's file "
         "are there, and depth is not from ReShade.",
         "Please update the graphics driver. If the report still says the same, reinstall Vistrel, which "
         "puts "
         "its model files and DirectML.dll back.",
         "depth-model",
         Topic::kBehaviour},
    };
}

void Append(std::vector<Rule>& table, std::vector<Rule> rules) {
    std::move(rules.begin(), rules.end(), std::back_inserter(table));
}

}  // namespace

std::vector<Rule> ExplainingRules() {
    std::vector<Rule> table = FailureRules();
    Append(table, CaptureRules());
    Append(table, CostAndSettingRules());
    return table;
}
