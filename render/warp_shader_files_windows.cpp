#include "platform/module_folder.h"
#include "render/warp_shader_files.h"

std::vector<std::string> FindWarpShaderCandidates() {
    return WarpShaderCandidates(ExecutableFolder());
}
