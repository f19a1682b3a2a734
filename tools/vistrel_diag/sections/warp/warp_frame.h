// Draws with the resources of one eye size.
#pragma once

#include <d3d11.h>

#include <optional>

#include "render/stereo_warp_shader.h"
#include "tools/vistrel_diag/sections/warp/warp_failure.h"
#include "tools/vistrel_diag/sections/warp/warp_resources.h"

/// Draws the luminance of the colour picture into the depth texture. Returns the reason when that is
/// impossible; the depth texture then keeps its initial contents.
std::optional<DepthMapFailure> DrawDepthMap(ID3D11Device& device, ID3D11DeviceContext& context,
                                            const WarpResources& resources);

/// Draws one headset frame, the left eye and then the right, on a flat screen of `screen_size` metres.
void DrawWarpFrame(ID3D11DeviceContext& context, const WarpResources& resources,
                   const StereoWarpShader& shader, float screen_size);
