// The cost of reading a settings file of 50 MB, compared with the JSON library alone.
//
//     settings_bench FILE       FILE is written
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "bench/ratio.h"
#include "platform/open_file.h"
#include "settings/diag_settings.h"
#include "settings/settings_overlay.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"

namespace {

constexpr std::size_t kFileBytes = std::size_t{50} * 1024 * 1024;
constexpr Closeness kCloseness = {0.03, 7, 21};

/// The host's part of the file is nearly all of it.
void WriteSettings(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "{\n    \"recent_files\": [\n";
    const std::string entry =
        "        { \"path\": \"D:\\\\Scenes\\\\studio.json\", \"opened\": 1731744000, \"weight\": 0.35 },\n";
    for (std::size_t written = 0; written < kFileBytes; written += entry.size()) {
        file << entry;
    }
    file << "        null\n    ],\n    \"vistrel_f3d_search_steps\": 24,\n    \"vistrel_scale\": 1.25\n}\n";
}

void ParsePlainly(const std::string& path) {
    std::ifstream file = OpenFileForReading(path);
    nlohmann::json keys;
    file >> keys;
}

void Tell(const char* what, const Comparison& times) {
    std::printf("%s: %.2f s, the library alone %.2f s\n", what, times.subject, times.baseline);
    PrintRatio(what, "bare JSON library, same file", times.middle, {{}, 1.1});
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("settings_bench FILE\n", stderr);
        return 2;
    }
    const std::string path = arguments[1];
    WriteSettings(path);
    const auto parse = [&] { ParsePlainly(path); };
    Tell("settings of 50 MB, laid over the defaults", TurnAbout(
                                                          kCloseness,
                                                          [&] {
                                                              std::ifstream file = OpenFileForReading(path);
                                                              OverlaySettings(file, DiagSettings::Instance());
                                                          },
                                                          parse));
    Tell("settings of 50 MB, quoted", TurnAbout(
                                          kCloseness,
                                          [&] {
                                              std::ifstream file = OpenFileForReading(path);
                                              PrintSettingsVerbatim(path, &file);
                                          },
                                          parse));
    return DiagSettings::Instance().f3d_search_steps == 24 ? 0 : 1;
}
