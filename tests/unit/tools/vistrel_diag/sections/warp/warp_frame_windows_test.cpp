#include "tools/vistrel_diag/sections/warp/warp_frame.h"

#include <d3d11shader.h>
#include <d3dcompiler.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "render/warp_shader_files.h"
#include "tests/lab/tests/lab_device.h"
#include "tests/unit/support/warp_shader_install.h"

namespace {

using Microsoft::WRL::ComPtr;
using Bytes = std::array<std::uint8_t, 4>;

class WarpFrameTest : public testing::Test {
  protected:
    ~WarpFrameTest() override { DiagSettings::Instance() = DiagSettings(); }

    void Create(const FrameView& frame, std::int32_t width, std::int32_t height) {
        resources_ = {};
        ASSERT_FALSE(CreateWarpTextures(*lab_.device.Get(), frame, width, height, resources_));
        ASSERT_FALSE(CreateWarpStates(*lab_.device.Get(), width, height, resources_));
    }

    std::vector<std::uint8_t> DrawnDepth() {
        EXPECT_FALSE(DrawDepthMap(*lab_.device.Get(), *lab_.context.Get(), resources_));
        return lab_.Read<std::uint8_t>(resources_.depth.Get());
    }

    LabDevice lab_;
    WarpResources resources_;
};

/// The luminance of a pixel in the order blue, green, red, in steps of the depth map.
double Luminance(const Bytes& pixel) {
    return 0.299 * pixel[2] + 0.587 * pixel[1] + 0.114 * pixel[0];
}

double LargestDifference(const std::vector<std::uint8_t>& depth, const std::vector<Bytes>& picture) {
    double largest = 0.0;
    for (std::size_t i = 0; i < depth.size(); ++i) {
        largest = std::max(largest, std::abs(depth[i] - Luminance(picture[i])));
    }
    return largest;
}

TEST_F(WarpFrameTest, TheDepthMapIsTheLuminanceOfTheFrame) {
    std::vector<std::uint8_t> frame(131 * 77 * 4);
    std::mt19937 random(7);
    std::generate(frame.begin(), frame.end(), [&] { return static_cast<std::uint8_t>(random()); });
    Create({frame, 131, 77}, 131, 77);
    const std::vector<std::uint8_t> depth = DrawnDepth();
    const std::vector<Bytes> picture = lab_.Read<Bytes>(resources_.colour.Get());
    ASSERT_EQ(picture.size(), 131U * 77U);
    EXPECT_EQ(std::memcmp(picture.data(), frame.data(), frame.size()), 0);
    EXPECT_LE(LargestDifference(depth, picture), 1.0);
}

TEST_F(WarpFrameTest, TheDepthMapIsTheLuminanceOfThePattern) {
    Create({}, 640, 360);
    const std::vector<std::uint8_t> depth = DrawnDepth();
    EXPECT_LE(LargestDifference(depth, lab_.Read<Bytes>(resources_.colour.Get())), 1.0);
    EXPECT_NE(*std::min_element(depth.begin(), depth.end()), *std::max_element(depth.begin(), depth.end()));
}

TEST_F(WarpFrameTest, TexturesHaveTheirFormats) {
    Create({}, 48, 32);
    D3D11_TEXTURE2D_DESC description = {};
    resources_.colour->GetDesc(&description);
    EXPECT_EQ(description.Format, DXGI_FORMAT_B8G8R8A8_UNORM);
    EXPECT_EQ(description.BindFlags, UINT{D3D11_BIND_SHADER_RESOURCE});
    resources_.depth->GetDesc(&description);
    EXPECT_EQ(description.Format, DXGI_FORMAT_R8_UNORM);
    EXPECT_EQ(description.BindFlags, UINT{D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE});
    for (const EyeTarget& eye : resources_.eyes) {
        eye.texture->GetDesc(&description);
        EXPECT_EQ(description.Format, DXGI_FORMAT_R8G8B8A8_UNORM_SRGB);
        EXPECT_EQ(description.BindFlags, UINT{D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE});
    }
    for (ID3D11Texture2D* texture : {resources_.colour.Get(), resources_.depth.Get(),
                                     resources_.eyes[0].texture.Get(), resources_.eyes[1].texture.Get()}) {
        texture->GetDesc(&description);
        EXPECT_EQ(description.Width, 48U);
        EXPECT_EQ(description.Height, 32U);
        EXPECT_EQ(description.MipLevels, 1U);
        EXPECT_EQ(description.ArraySize, 1U);
        EXPECT_EQ(description.SampleDesc.Count, 1U);
        EXPECT_EQ(description.Usage, D3D11_USAGE_DEFAULT);
        EXPECT_EQ(description.CPUAccessFlags, 0U);
        EXPECT_EQ(description.MiscFlags, 0U);
    }
}

TEST_F(WarpFrameTest, TheSamplerIsLinearAndClamps) {
    Create({}, 48, 32);
    D3D11_SAMPLER_DESC description = {};
    resources_.sampler->GetDesc(&description);
    EXPECT_EQ(description.Filter, D3D11_FILTER_MIN_MAG_MIP_LINEAR);
    EXPECT_EQ(description.AddressU, D3D11_TEXTURE_ADDRESS_CLAMP);
    EXPECT_EQ(description.AddressV, D3D11_TEXTURE_ADDRESS_CLAMP);
    EXPECT_EQ(description.AddressW, D3D11_TEXTURE_ADDRESS_CLAMP);
    EXPECT_EQ(description.MipLODBias, 0.0F);
    EXPECT_EQ(description.ComparisonFunc, D3D11_COMPARISON_NEVER);
    EXPECT_EQ(description.MinLOD, 0.0F);
    EXPECT_EQ(description.MaxLOD, D3D11_FLOAT32_MAX);
    for (const float component : description.BorderColor) {
        EXPECT_EQ(component, 0.0F);
    }
}

/// White where a pixel's texture coordinate and its position agree, red in the right eye only.
constexpr const char* kCoverageShader = R"(
cbuffer WarpConstants : register(b0) { float4 Before; float Balance; uint Eye; };
Texture2D Colour : register(t0);
float4 PSMain(float4 Pos : SV_Position, float2 Tex : TEXCOORD0) : SV_Target
{
    float2 size;
    Colour.GetDimensions(size.x, size.y);
    bool in_place = all(abs(Tex * size - Pos.xy) < 0.01);
    return float4(Eye == 0, in_place, in_place, 1);
}
)";

TEST_F(WarpFrameTest, EveryPixelOfBothEyesIsDrawn) {
    Create({}, 333, 187);
    StereoWarpShader shader;
    LoadOwnShader(lab_.device.Get(), "warp_frame_test coverage", kCoverageShader, shader);
    for (const EyeTarget& eye : resources_.eyes) {
        const float grey[] = {0.5F, 0.5F, 0.5F, 0.5F};
        lab_.context->ClearRenderTargetView(eye.view.Get(), grey);
    }
    DrawWarpFrame(*lab_.context.Get(), resources_, shader, 3.0F);
    const std::vector<Bytes> left = lab_.Read<Bytes>(resources_.eyes[0].texture.Get());
    const std::vector<Bytes> right = lab_.Read<Bytes>(resources_.eyes[1].texture.Get());
    EXPECT_EQ(std::count(left.begin(), left.end(), Bytes{255, 255, 255, 255}), 333 * 187);
    EXPECT_EQ(std::count(right.begin(), right.end(), Bytes{0, 255, 255, 255}), 333 * 187);
}

TEST_F(WarpFrameTest, BindsPictureDepthAndConstants) {
    Create({}, 64, 36);
    StereoWarpShader shader;
    LoadSampleShader(lab_.device.Get(), shader);
    DiagSettings::Instance().f3d_search_steps = 33;
    DrawWarpFrame(*lab_.context.Get(), resources_, shader, 4.5F);

    std::array<ComPtr<ID3D11ShaderResourceView>, 5> views;
    for (UINT slot = 0; slot < views.size(); ++slot) {
        lab_.context->PSGetShaderResources(slot, 1, &views[slot]);
    }
    EXPECT_EQ(views[0], resources_.colour_view);
    EXPECT_EQ(views[1], resources_.depth_view);
    EXPECT_EQ(views[2], nullptr);
    EXPECT_EQ(views[3], nullptr);

    StereoWarpArguments arguments;  // The rest is 0 or false.
    arguments.eye = 1;
    arguments.screen_size = 4.5F;
    arguments.threshold = 0.063F;
    const StereoWarpConstants expected =
        ComputeStereoWarpConstants(DiagSettings::Instance(), arguments, 1.0F);
    ComPtr<ID3D11Buffer> buffer;
    lab_.context->PSGetConstantBuffers(0, 1, &buffer);
    D3D11_BUFFER_DESC description = {};
    buffer->GetDesc(&description);
    description.Usage = D3D11_USAGE_STAGING;
    description.BindFlags = 0;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    ComPtr<ID3D11Buffer> copy;
    ASSERT_EQ(lab_.device->CreateBuffer(&description, nullptr, &copy), S_OK);
    lab_.context->CopyResource(copy.Get(), buffer.Get());
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    ASSERT_EQ(lab_.context->Map(copy.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
    EXPECT_EQ(std::memcmp(mapped.pData, &expected, sizeof(expected)), 0);
    lab_.context->Unmap(copy.Get(), 0);
}

constexpr std::int32_t kBarWidth = 1000;
constexpr std::int32_t kBarHeight = 24;

/// A white bar, nearest to the viewer, in front of a grey in the screen's plane.
std::vector<std::uint8_t> BarFrame() {
    std::vector<std::uint8_t> frame;
    for (std::int32_t i = 0; i < kBarWidth * kBarHeight; ++i) {
        const std::int32_t x = i % kBarWidth;
        const std::uint8_t value = x >= 480 && x < 520 ? 255 : 97;
        frame.insert(frame.end(), {value, value, value, 255});
    }
    return frame;
}

/// Where the middle of the bar is in one eye, in pixels.
double BarPlace(const std::vector<Bytes>& eye) {
    double sum = 0.0;
    int count = 0;
    for (std::int32_t x = 0; x < kBarWidth; ++x) {
        if (eye[static_cast<std::size_t>(kBarHeight / 2 * kBarWidth + x)][1] > 180) {
            sum += x + 0.5;
            ++count;
        }
    }
    return count == 0 ? -1.0 : sum / count;
}

TEST_F(WarpFrameTest, TheEyesDifferAsTheSeparationSays) {
    const std::vector<std::uint8_t> frame = BarFrame();
    Create({frame, kBarWidth, kBarHeight}, kBarWidth, kBarHeight);
    ASSERT_FALSE(DrawDepthMap(*lab_.device.Get(), *lab_.context.Get(), resources_));
    StereoWarpShader shader;
    LoadSampleShader(lab_.device.Get(), shader);
    DiagSettings& settings = DiagSettings::Instance();
    settings.f3d_search_steps = 64;
    for (const float percent : {0.0F, 25.0F, 50.0F, 100.0F}) {
        SCOPED_TRACE(percent);
        settings.f3d_separation_pct = percent;
        DrawWarpFrame(*lab_.context.Get(), resources_, shader, 1.5F);
        const std::vector<Bytes> left = lab_.Read<Bytes>(resources_.eyes[0].texture.Get());
        const std::vector<Bytes> right = lab_.Read<Bytes>(resources_.eyes[1].texture.Get());
        const double separation = 0.063 * percent / 100.0 / 1.5;  // In shares of the screen's width.
        const double expected = (1.0 - 0.38) * 1.61 * separation * kBarWidth;
        EXPECT_NEAR(BarPlace(left) - 500.0, expected / 2, 1.5);
        EXPECT_NEAR(BarPlace(right) - 500.0, -expected / 2, 1.5);
        EXPECT_EQ(left == right, percent == 0.0F);
    }
}

// Of the compiler's version 47; the header names it without its value.
constexpr GUID kShaderReflection = {
    0x8d536ca1, 0x0cca, 0x4956, {0xa8, 0x37, 0x78, 0x69, 0x63, 0x75, 0x55, 0x84}};

/// The product's shader reads all of the buffer; so does the sample, in the same places.
TEST(SampleShader, ReadsTheWholeBuffer) {
    std::string source;
    ASSERT_TRUE(ReadWholeFile("vistrel\\shaders\\stereo_warp.hlsl", source));
    ComPtr<ID3DBlob> code;
    ComPtr<ID3DBlob> messages;
    ASSERT_EQ(D3DCompile(source.data(), source.size(), nullptr, nullptr, nullptr, "PSMain", "ps_5_0",
                         D3DCOMPILE_ENABLE_STRICTNESS, 0, &code, &messages),
              S_OK);
    EXPECT_FALSE(messages) << static_cast<const char*>(messages->GetBufferPointer());
    ComPtr<ID3D11ShaderReflection> reflection;
    ASSERT_EQ(D3DReflect(code->GetBufferPointer(), code->GetBufferSize(), kShaderReflection,
                         reinterpret_cast<void**>(reflection.GetAddressOf())),
              S_OK);
    ID3D11ShaderReflectionConstantBuffer* const buffer = reflection->GetConstantBufferByIndex(0);
    D3D11_SHADER_BUFFER_DESC description = {};
    ASSERT_EQ(buffer->GetDesc(&description), S_OK);
    EXPECT_EQ(description.Size, sizeof(StereoWarpConstants));
    UINT next = 0;
    for (UINT i = 0; i < description.Variables; ++i) {
        D3D11_SHADER_VARIABLE_DESC variable = {};
        ASSERT_EQ(buffer->GetVariableByIndex(i)->GetDesc(&variable), S_OK);
        EXPECT_EQ(variable.StartOffset, next) << variable.Name;
        EXPECT_TRUE(variable.uFlags & D3D_SVF_USED) << variable.Name;
        next = variable.StartOffset + variable.Size;
    }
    EXPECT_EQ(next, sizeof(StereoWarpConstants));
    D3D11_SHADER_INPUT_BIND_DESC bound = {};
    EXPECT_EQ(reflection->GetResourceBindingDescByName("WarpConstants", &bound), S_OK);
    EXPECT_EQ(bound.BindPoint, 0U);
    EXPECT_EQ(reflection->GetResourceBindingDescByName("Colour", &bound), S_OK);
    EXPECT_EQ(bound.BindPoint, 0U);
    EXPECT_EQ(reflection->GetResourceBindingDescByName("Depth", &bound), S_OK);
    EXPECT_EQ(bound.BindPoint, 1U);
    EXPECT_EQ(reflection->GetResourceBindingDescByName("Linear", &bound), S_OK);
    EXPECT_EQ(bound.BindPoint, 0U);
}

}  // namespace
