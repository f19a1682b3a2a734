#include "tools/vistrel_report/rule_conditions.h"
#include "tools/vistrel_report/rule_levels.h"

using namespace RuleConditions;  // NOLINT(google-build-using-namespace): the table is read by its names.
using namespace RuleRequests;    // NOLINT(google-build-using-namespace): as above.

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
         "shader was not found either. A warp that was timed shows that the folder is the right one.",
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
         "A row of the warp's table is dearer by more than a tenth, and by more than 0.02 ms, than one with "
         "more pixels: something else used the GPU, or it saved power.",
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
         "Please send us the settings file that the report names under \"could not be parsed\", as it is.",
         "settings",
         Topic::kNone,
         Topic::kSettings},
    };
}
