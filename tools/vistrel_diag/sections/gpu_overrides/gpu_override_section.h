// The report's section about applications that the user has pinned to a GPU in Windows' settings.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One pinned application. Both texts are UTF-8, as Windows stores them.
struct GpuPreference {
    std::string application;  ///< path of its executable, or its package name
    std::string choice;       ///< such as "GpuPreference=2;"
};

/// The pins of all applications in the order in which Windows lists them. Empty when nothing was ever pinned.
std::optional<std::vector<GpuPreference>> ProbeGpuPreferences();

/// Whether `application` is the product or SteamVR.
bool ConcernsVistrelOrSteamVr(std::string_view application);

void PrintGpuOverrideSection(const std::optional<std::vector<GpuPreference>>& preferences);

/// Reports the pins of the current user that concern the product or SteamVR.
void ReportGpuOverrideSection();
