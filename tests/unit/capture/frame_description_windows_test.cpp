#include "capture/frame_description.h"

#include <gtest/gtest.h>

namespace {

/// A texture with every field set to something that none of the functions would choose.
D3D11_TEXTURE2D_DESC Acquired(DXGI_FORMAT format) {
    D3D11_TEXTURE2D_DESC acquired = {};
    acquired.Width = 2560;
    acquired.Height = 1440;
    acquired.MipLevels = 3;
    acquired.ArraySize = 2;
    acquired.Format = format;
    acquired.SampleDesc = {.Count = 4, .Quality = 1};
    acquired.Usage = D3D11_USAGE_DYNAMIC;
    acquired.BindFlags = D3D11_BIND_UNORDERED_ACCESS;
    acquired.CPUAccessFlags = D3D11_CPU_ACCESS_WRITE;
    acquired.MiscFlags = D3D11_RESOURCE_MISC_SHARED;
    return acquired;
}

TEST(FrameTextureDescription, IsReadableByShadersAndDrawableByGdi) {
    const D3D11_TEXTURE2D_DESC frame = FrameTextureDescription(Acquired(DXGI_FORMAT_B8G8R8A8_UNORM));
    EXPECT_EQ(frame.Width, 2560U);
    EXPECT_EQ(frame.Height, 1440U);
    EXPECT_EQ(frame.MipLevels, 3U);
    EXPECT_EQ(frame.ArraySize, 2U);
    EXPECT_EQ(frame.SampleDesc.Count, 4U);
    EXPECT_EQ(frame.SampleDesc.Quality, 1U);
    EXPECT_EQ(frame.Usage, D3D11_USAGE_DEFAULT);
    EXPECT_EQ(frame.BindFlags, UINT{D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET});
    EXPECT_EQ(frame.CPUAccessFlags, 0U);
    EXPECT_EQ(frame.MiscFlags, UINT{D3D11_RESOURCE_MISC_GDI_COMPATIBLE});
}

TEST(FrameTextureDescription, TypelessFormatsGetAType) {
    struct Case {
        DXGI_FORMAT acquired;
        DXGI_FORMAT frame;
        UINT flags;
    };
    for (const Case& example :
         {Case{DXGI_FORMAT_B8G8R8A8_TYPELESS, DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_RESOURCE_MISC_GDI_COMPATIBLE},
          Case{DXGI_FORMAT_B8G8R8A8_UNORM, DXGI_FORMAT_B8G8R8A8_UNORM, D3D11_RESOURCE_MISC_GDI_COMPATIBLE},
          Case{DXGI_FORMAT_B8G8R8A8_UNORM_SRGB, DXGI_FORMAT_B8G8R8A8_UNORM_SRGB,
               D3D11_RESOURCE_MISC_GDI_COMPATIBLE},
          Case{DXGI_FORMAT_R8G8B8A8_TYPELESS, DXGI_FORMAT_R8G8B8A8_UNORM, 0},
          Case{DXGI_FORMAT_R8G8B8A8_UNORM, DXGI_FORMAT_R8G8B8A8_UNORM, D3D11_RESOURCE_MISC_GDI_COMPATIBLE},
          Case{DXGI_FORMAT_R16G16B16A16_FLOAT, DXGI_FORMAT_R16G16B16A16_FLOAT,
               D3D11_RESOURCE_MISC_GDI_COMPATIBLE}}) {
        const D3D11_TEXTURE2D_DESC frame = FrameTextureDescription(Acquired(example.acquired));
        EXPECT_EQ(frame.Format, example.frame) << example.acquired;
        EXPECT_EQ(frame.MiscFlags, example.flags) << example.acquired;
    }
}

TEST(CarryTextureDescription, IsAPlainStagingTexture) {
    const D3D11_TEXTURE2D_DESC carry = CarryTextureDescription(Acquired(DXGI_FORMAT_B8G8R8A8_TYPELESS));
    EXPECT_EQ(carry.Width, 2560U);
    EXPECT_EQ(carry.Height, 1440U);
    EXPECT_EQ(carry.MipLevels, 1U);
    EXPECT_EQ(carry.ArraySize, 1U);
    EXPECT_EQ(carry.Format, DXGI_FORMAT_B8G8R8A8_TYPELESS);
    EXPECT_EQ(carry.SampleDesc.Count, 1U);
    EXPECT_EQ(carry.SampleDesc.Quality, 0U);
    EXPECT_EQ(carry.Usage, D3D11_USAGE_STAGING);
    EXPECT_EQ(carry.BindFlags, 0U);
    EXPECT_EQ(carry.CPUAccessFlags, UINT{D3D11_CPU_ACCESS_READ});
    EXPECT_EQ(carry.MiscFlags, 0U);
}

TEST(ReadBackDescription, IsTheSameTextureForTheCpuToRead) {
    const D3D11_TEXTURE2D_DESC copy = ReadBackDescription(Acquired(DXGI_FORMAT_B8G8R8A8_UNORM));
    EXPECT_EQ(copy.Width, 2560U);
    EXPECT_EQ(copy.Height, 1440U);
    EXPECT_EQ(copy.MipLevels, 3U);
    EXPECT_EQ(copy.ArraySize, 2U);
    EXPECT_EQ(copy.Format, DXGI_FORMAT_B8G8R8A8_UNORM);
    EXPECT_EQ(copy.SampleDesc.Count, 4U);
    EXPECT_EQ(copy.Usage, D3D11_USAGE_STAGING);
    EXPECT_EQ(copy.BindFlags, 0U);
    EXPECT_EQ(copy.CPUAccessFlags, UINT{D3D11_CPU_ACCESS_READ});
    EXPECT_EQ(copy.MiscFlags, 0U);
}

TEST(HasFourByteChannels, IsTrueOnlyForPictureFormats) {
    for (const DXGI_FORMAT format :
         {DXGI_FORMAT_B8G8R8A8_TYPELESS, DXGI_FORMAT_B8G8R8A8_UNORM, DXGI_FORMAT_B8G8R8A8_UNORM_SRGB,
          DXGI_FORMAT_B8G8R8X8_TYPELESS, DXGI_FORMAT_B8G8R8X8_UNORM, DXGI_FORMAT_B8G8R8X8_UNORM_SRGB,
          DXGI_FORMAT_R8G8B8A8_TYPELESS, DXGI_FORMAT_R8G8B8A8_UNORM, DXGI_FORMAT_R8G8B8A8_UNORM_SRGB}) {
        EXPECT_TRUE(HasFourByteChannels(format)) << format;
    }
    for (const DXGI_FORMAT format :
         {DXGI_FORMAT_UNKNOWN, DXGI_FORMAT_R16G16B16A16_FLOAT, DXGI_FORMAT_R10G10B10A2_UNORM,
          DXGI_FORMAT_R8G8_UNORM, DXGI_FORMAT_R8_UNORM, DXGI_FORMAT_R32_FLOAT,
          DXGI_FORMAT_R32G32B32A32_FLOAT}) {
        EXPECT_FALSE(HasFourByteChannels(format)) << format;
    }
}

}  // namespace
