#include "settings/settings_file.h"

#include <exception>
#include <fstream>
#include <utility>

#include "platform/open_file.h"
#include "settings/diag_settings.h"
#include "settings/settings_overlay.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

std::string& AppliedPath() {
    static std::string path(kNoSettingsFile);
    return path;
}

}  // namespace

const std::string& SettingsFilePath() {
    return AppliedPath();
}

void SetSettingsFilePath(std::string path) {
    AppliedPath() = std::move(path);
}

std::vector<std::string> SettingsFileCandidates(std::string user_file, std::string_view exe_dir) {
    const std::string folder = exe_dir.empty() ? std::string() : std::string(exe_dir) + "\\";
    return {std::move(user_file), folder + "settings.json", folder + "..\\settings.json"};
}

bool ApplyFirstSettingsFile(const std::vector<std::string>& candidates) {
    for (const std::string& path : candidates) {
        std::ifstream file = OpenFileForReading(path);
        if (!file.is_open()) {
            continue;
        }
        try {
            OverlaySettings(file, DiagSettings::Instance());
            SetSettingsFilePath(path);
            return true;
        } catch (const std::exception& error) {
            // Printed immediately: the file is read before its own section begins.
            Report::Line("!! settings.json found at %s but could not be parsed: %s", path.c_str(),
                         error.what());
            return false;
        }
    }
    return false;
}
