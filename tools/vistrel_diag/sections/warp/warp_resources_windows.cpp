#include "tools/vistrel_diag/sections/warp/warp_resources.h"

#include <new>

#include "render/shader_compiler.h"

namespace {

/// Covers the target with a strip of four vertices, of which all but the first lie outside.
constexpr const char* kFullScreenShader = R"(
void VSMain(uint id : SV_VertexID, out float4 Pos : SV_Position, out float2 Tex : TEXCOORD0)
{
    Tex = float2(float((id << 1) & 2), float(id & 2));
    Pos = float4(Tex * float2(2, -2) + float2(-1, 1), 0, 1);
}
)";

D3D11_TEXTURE2D_DESC TextureDescription(std::int32_t width, std::int32_t height, DXGI_FORMAT format,
                                        UINT bind_flags) {
    D3D11_TEXTURE2D_DESC description = {};
    description.Width = static_cast<UINT>(width);
    description.Height = static_cast<UINT>(height);
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = format;
    description.SampleDesc.Count = 1;
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = bind_flags;
    return description;
}

WarpFailure Failure(WarpStop stop, HRESULT result) {
    return {stop, static_cast<std::uint32_t>(result)};
}

HRESULT CreateColourTexture(ID3D11Device& device, const FrameView& frame, std::int32_t width,
                            std::int32_t height, WarpResources& resources) {
    ColourPicture picture;
    try {
        picture = BuildColourPicture(frame, width, height);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    if (picture.pixels == nullptr) {
        return E_INVALIDARG;
    }
    const D3D11_TEXTURE2D_DESC description =
        TextureDescription(width, height, DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_BIND_SHADER_RESOURCE);
    D3D11_SUBRESOURCE_DATA data = {};
    data.pSysMem = picture.pixels.get();
    data.SysMemPitch = static_cast<UINT>(picture.RowBytes());
    return device.CreateTexture2D(&description, &data, &resources.colour);
}

HRESULT CreateDepthTexture(ID3D11Device& device, std::int32_t width, std::int32_t height,
                           WarpResources& resources) {
    const D3D11_TEXTURE2D_DESC description = TextureDescription(
        width, height, DXGI_FORMAT_R8_UNORM, D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE);
    HRESULT result = device.CreateTexture2D(&description, nullptr, &resources.depth);
    if (SUCCEEDED(result)) {
        result = device.CreateRenderTargetView(resources.depth.Get(), nullptr, &resources.depth_target);
    }
    if (SUCCEEDED(result)) {
        result = device.CreateShaderResourceView(resources.depth.Get(), nullptr, &resources.depth_view);
    }
    return result;
}

HRESULT CreateEyeTarget(ID3D11Device& device, std::int32_t width, std::int32_t height, EyeTarget& eye) {
    const D3D11_TEXTURE2D_DESC description =
        TextureDescription(width, height, DXGI_FORMAT_R8G8B8A8_UNORM_SRGB,
                           D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE);
    const HRESULT result = device.CreateTexture2D(&description, nullptr, &eye.texture);
    return FAILED(result) ? result : device.CreateRenderTargetView(eye.texture.Get(), nullptr, &eye.view);
}

HRESULT CreateSampler(ID3D11Device& device, WarpResources& resources) {
    D3D11_SAMPLER_DESC description = {};
    description.Filter = D3D11_FILTER_MIN_MAG_MIP_LINEAR;
    description.AddressU = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.AddressV = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.AddressW = D3D11_TEXTURE_ADDRESS_CLAMP;
    description.ComparisonFunc = D3D11_COMPARISON_NEVER;
    description.MaxLOD = D3D11_FLOAT32_MAX;
    return device.CreateSamplerState(&description, &resources.sampler);
}

}  // namespace

std::optional<WarpFailure> CreateWarpTextures(ID3D11Device& device, const FrameView& frame,
                                              std::int32_t width, std::int32_t height,
                                              WarpResources& resources) {
    HRESULT result = CreateColourTexture(device, frame, width, height, resources);
    if (FAILED(result)) {
        return Failure(WarpStop::ColourTexture, result);
    }
    // A failure between two textures is attributed to the second one.
    result = device.CreateShaderResourceView(resources.colour.Get(), nullptr, &resources.colour_view);
    if (SUCCEEDED(result)) {
        result = CreateDepthTexture(device, width, height, resources);
    }
    if (FAILED(result)) {
        return Failure(WarpStop::DepthTexture, result);
    }
    constexpr std::array<WarpStop, 2> kStops = {WarpStop::LeftEyeTarget, WarpStop::RightEyeTarget};
    for (std::size_t eye = 0; eye < resources.eyes.size(); ++eye) {
        result = CreateEyeTarget(device, width, height, resources.eyes[eye]);
        if (FAILED(result)) {
            return Failure(kStops[eye], result);
        }
    }
    return std::nullopt;
}

std::optional<WarpFailure> CreateWarpStates(ID3D11Device& device, std::int32_t width, std::int32_t height,
                                            WarpResources& resources) {
    const CompiledShader compiled = CompileShader(kFullScreenShader, nullptr, "VSMain", "vs_5_0", 0);
    if (!compiled.bytecode) {
        return WarpFailure{WarpStop::VertexShader, {}};
    }
    HRESULT result =
        device.CreateVertexShader(compiled.bytecode->GetBufferPointer(), compiled.bytecode->GetBufferSize(),
                                  nullptr, &resources.full_screen);
    if (SUCCEEDED(result)) {
        result = CreateSampler(device, resources);
    }
    if (FAILED(result)) {
        return Failure(WarpStop::VertexShader, result);
    }
    resources.viewport = {0.0F, 0.0F, static_cast<float>(width), static_cast<float>(height), 0.0F, 1.0F};
    return std::nullopt;
}
