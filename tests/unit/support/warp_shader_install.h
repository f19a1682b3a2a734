// The warp shader of an installation, for tests that draw with it. They run in the sample installation's
// folder.
#pragma once

#include <d3d11.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "render/stereo_warp_shader.h"
#include "tests/unit/support/executable_folder_seam.h"

/// Loads the sample installation's shader.
inline void LoadSampleShader(ID3D11Device* device, StereoWarpShader& shader) {
    executable_folder = std::filesystem::current_path();
    ASSERT_TRUE(shader.Load(device)) << shader.LastError();
}

/// Loads a shader with `source`; `name` makes its folder this test's own.
inline void LoadOwnShader(ID3D11Device* device, const std::string& name, const std::string& source,
                          StereoWarpShader& shader) {
    executable_folder = std::filesystem::temp_directory_path() / name;
    const std::filesystem::path shaders = executable_folder / "vistrel" / "shaders";
    std::filesystem::create_directories(shaders);
    std::ofstream(shaders / "stereo_warp.hlsl", std::ios::binary) << source;
    const bool loaded = shader.Load(device);
    std::filesystem::remove_all(executable_folder);
    ASSERT_TRUE(loaded) << shader.LastError();
}
