#include "render/warp_shader_files.h"

#include <fstream>
#include <sstream>

#include "platform/open_file.h"

std::vector<std::string> WarpShaderCandidates(std::string_view executable_folder) {
    const std::string shader = "vistrel\\shaders\\stereo_warp.hlsl";
    const std::string folder(executable_folder);
    std::vector<std::string> candidates;
    if (!folder.empty()) {
        candidates.push_back(folder + "\\" + shader);
        candidates.push_back(folder + "\\..\\..\\..\\" + shader);  // From an output folder of the build tree.
    }
    candidates.push_back(shader);
    return candidates;
}

bool ReadWholeFile(const std::string& path, std::string& text) {
    text.clear();
    const std::ifstream file = OpenFileForReading(path);
    if (!file.is_open()) {
        return false;
    }
    // On a read error the buffer throws, and operator<< treats that as the end of the file.
    std::ostringstream contents;
    contents << file.rdbuf();
    text = contents.str();
    return !text.empty();
}
