#include "render/warp_shader_files.h"
#include "platform/module_folder.h"

std::vector<std::string> FindWarpShaderCandidates() {
    return WarpShaderCandidates(ExecutableFolder());
}
