#include "tools/vistrel_diag/sections/warp/warp_frame.h"

#include <array>

#include "render/shader_compiler.h"

namespace {

using Microsoft::WRL::ComPtr;

constexpr const char* kLuminanceShader = R"(
Texture2D Colour : register(t0);
SamplerState Linear : register(s0);

float main(float4 Pos : SV_Position, float2 Tex : TEXCOORD0) : SV_Target
{
    return saturate(dot(Colour.SampleLevel(Linear, Tex, 0).rgb, float3(0.299, 0.587, 0.114)));
}
)";

constexpr UINT kStripVertices = 4;
constexpr float kWarpThreshold = 0.063F;

/// Makes all of `target` the render target of the next draw.
void SetTarget(ID3D11DeviceContext& context, const WarpResources& resources,
               const ComPtr<ID3D11RenderTargetView>& target) {
    context.OMSetRenderTargets(1, target.GetAddressOf(), nullptr);
    context.RSSetViewports(1, &resources.viewport);
    context.IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY_TRIANGLESTRIP);
    context.VSSetShader(resources.full_screen.Get(), nullptr, 0);
}

std::optional<DepthMapFailure> CreateLuminanceShader(ID3D11Device& device,
                                                     ComPtr<ID3D11PixelShader>& shader) {
    const CompiledShader compiled = CompileShader(kLuminanceShader, nullptr, "main", "ps_5_0", 0);
    if (!compiled.bytecode) {
        return DepthMapFailure{compiled.message, {}};
    }
    const HRESULT result = device.CreatePixelShader(compiled.bytecode->GetBufferPointer(),
                                                    compiled.bytecode->GetBufferSize(), nullptr, &shader);
    if (FAILED(result)) {
        return DepthMapFailure{{}, static_cast<std::uint32_t>(result)};
    }
    return std::nullopt;
}

}  // namespace

std::optional<DepthMapFailure> DrawDepthMap(ID3D11Device& device, ID3D11DeviceContext& context,
                                            const WarpResources& resources) {
    ComPtr<ID3D11PixelShader> luminance;
    if (std::optional<DepthMapFailure> failure = CreateLuminanceShader(device, luminance)) {
        return failure;
    }
    SetTarget(context, resources, resources.depth_target);
    context.PSSetShader(luminance.Get(), nullptr, 0);
    context.PSSetShaderResources(0, 1, resources.colour_view.GetAddressOf());
    context.PSSetSamplers(0, 1, resources.sampler.GetAddressOf());
    context.Draw(kStripVertices, 0);
    return std::nullopt;
}

void DrawWarpFrame(ID3D11DeviceContext& context, const WarpResources& resources,
                   const StereoWarpShader& shader, float screen_size) {
    const std::array<ID3D11ShaderResourceView*, 4> views = {resources.colour_view.Get(),
                                                            resources.depth_view.Get(), nullptr, nullptr};
    StereoWarpArguments arguments;
    arguments.screen_size = screen_size;
    arguments.threshold = kWarpThreshold;
    for (std::size_t eye = 0; eye < resources.eyes.size(); ++eye) {
        // The target is set first: the depth map cannot be read while it is still bound as the target.
        SetTarget(context, resources, resources.eyes[eye].view);
        context.PSSetShaderResources(0, static_cast<UINT>(views.size()), views.data());
        context.PSSetSamplers(0, 1, resources.sampler.GetAddressOf());
        arguments.eye = static_cast<std::uint32_t>(eye);
        shader.Apply(&context, arguments);
        context.Draw(kStripVertices, 0);
    }
}
