#include <utility>

#include "platform/registry.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"

std::optional<std::vector<GpuPreference>> ProbeGpuPreferences() {
    const RegistryKey key(HKEY_CURRENT_USER, L"Software\\Microsoft\\DirectX\\UserGpuPreferences");
    if (!key) {
        return std::nullopt;
    }
    std::vector<GpuPreference> preferences;
    for (RegistryValue& value : key.ReadValues()) {
        preferences.push_back({std::move(value.name), std::move(value.text)});
    }
    return preferences;
}

void ReportGpuOverrideSection() {
    Report::Section("PER-APP GPU OVERRIDES");
    PrintGpuOverrideSection(ProbeGpuPreferences());
}
