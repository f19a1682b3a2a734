#include "tests/lab/machine/duplication.h"

#include <gmock/gmock.h>
#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>
#include <wrl/client.h>

#include <cstring>
#include <vector>

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/desktop_picture.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

/// A device on the adapter at this position, the outputs it drives, and their duplication.
class Program {
  public:
    explicit Program(UINT adapter_position) {
        SimulatedCreateDXGIFactory1(IID_PPV_ARGS(&factory_));
        factory_->EnumAdapters1(adapter_position, &adapter_);
        SimulatedD3D11CreateDevice(adapter_.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                   D3D11_SDK_VERSION, &device_, nullptr, &context_);
    }

    ComPtr<IDXGIOutput1> OutputOf(UINT adapter_position, UINT output_position = 0) const {
        ComPtr<IDXGIAdapter1> adapter;
        ComPtr<IDXGIOutput> output;
        ComPtr<IDXGIOutput1> output1;
        factory_->EnumAdapters1(adapter_position, &adapter);
        if (SUCCEEDED(adapter->EnumOutputs(output_position, &output))) {
            output.As(&output1);
        }
        return output1;
    }

    HRESULT Duplicate(UINT adapter_position = 0) {
        duplication_.Reset();
        return OutputOf(adapter_position)->DuplicateOutput(device_.Get(), &duplication_);
    }

    HRESULT Acquire(UINT timeout = 0) {
        info_ = {};
        resource_.Reset();
        return duplication_->AcquireNextFrame(timeout, &info_, &resource_);
    }

    HRESULT Release() {
        resource_.Reset();
        return duplication_->ReleaseFrame();
    }

    D3D11_TEXTURE2D_DESC FrameDescription() const {
        ComPtr<ID3D11Texture2D> texture;
        resource_.As(&texture);
        D3D11_TEXTURE2D_DESC description = {};
        texture->GetDesc(&description);
        return description;
    }

    /// A texture to copy frames to, on this program's device.
    ComPtr<ID3D11Texture2D> Staging(const D3D11_TEXTURE2D_DESC& like) const {
        D3D11_TEXTURE2D_DESC description = like;
        description.Usage = D3D11_USAGE_STAGING;
        description.BindFlags = 0;
        description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
        ComPtr<ID3D11Texture2D> staging;
        device_->CreateTexture2D(&description, nullptr, &staging);
        return staging;
    }

    std::vector<std::uint8_t> ReadFrame(PixelFormat format) const {
        ComPtr<ID3D11Texture2D> texture;
        resource_.As(&texture);
        const D3D11_TEXTURE2D_DESC description = FrameDescription();
        const ComPtr<ID3D11Texture2D> staging = Staging(description);
        context_->CopyResource(staging.Get(), texture.Get());
        D3D11_MAPPED_SUBRESOURCE mapped = {};
        context_->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped);
        const std::size_t row = description.Width * BytesPerTexel(format);
        std::vector<std::uint8_t> bytes(row * description.Height);
        for (UINT y = 0; y < description.Height; ++y) {
            std::memcpy(&bytes[y * row], static_cast<std::uint8_t*>(mapped.pData) + y * mapped.RowPitch, row);
        }
        context_->Unmap(staging.Get(), 0);
        return bytes;
    }

    ComPtr<IDXGIFactory1> factory_;
    ComPtr<IDXGIAdapter1> adapter_;
    ComPtr<ID3D11Device> device_;
    ComPtr<ID3D11DeviceContext> context_;
    ComPtr<IDXGIOutputDuplication> duplication_;
    DXGI_OUTDUPL_FRAME_INFO info_ = {};
    ComPtr<IDXGIResource> resource_;
};

/// Every test starts with a new machine and ends with no object of it alive.
class Duplication : public ::testing::Test {
  protected:
    static void SetUpWith(const std::string& scenario) {
        SetUpMachine(scenario);
        RestartCounts();
    }
    void TearDown() override { EXPECT_EQ(Counts().LiveObjects(), 0) << StatisticsText(); }
};

constexpr const char* kSmall = "clock scripted\nadapter A\n output D\n  size 64x48\n";

TEST_F(Duplication, WorksOnlyOnTheAdapterThatDrivesTheOutput) {
    SetUpWith("adapter A\n output D\n  size 64x48\nadapter B\n output E\n  size 64x48\n");
    Program on_a(0);
    EXPECT_EQ(on_a.Duplicate(0), S_OK);
    EXPECT_EQ(on_a.Duplicate(1), E_INVALIDARG);
    Program on_b(1);
    EXPECT_EQ(on_b.Duplicate(1), S_OK);
    EXPECT_EQ(Counts().duplications_refused, 1);
}

TEST_F(Duplication, OnlyOneOfAnOutputExistsAtATime) {
    SetUpWith(kSmall);
    Program first(0);
    Program second(0);
    EXPECT_EQ(first.Duplicate(), S_OK);
    EXPECT_EQ(second.Duplicate(), E_INVALIDARG);
    first.duplication_.Reset();
    EXPECT_EQ(second.Duplicate(), S_OK);
}

TEST_F(Duplication, FailsAsOftenAsTheScenarioSays) {
    SetUpWith(std::string(kSmall) + "refuses 0x887A0022 2 times\n");
    Program program(0);
    EXPECT_EQ(program.Duplicate(), DXGI_ERROR_NOT_CURRENTLY_AVAILABLE);
    EXPECT_EQ(program.Duplicate(), DXGI_ERROR_NOT_CURRENTLY_AVAILABLE);
    EXPECT_EQ(program.Duplicate(), S_OK);
}

TEST_F(Duplication, FailsAsLongAsTheScenarioSays) {
    SetUpWith(std::string(kSmall) + "refuses 0x80070005 for 1200 ms\n");
    Program program(0);
    ScriptedSleep(1199);
    EXPECT_EQ(program.Duplicate(), E_ACCESSDENIED);
    ScriptedSleep(1);
    EXPECT_EQ(program.Duplicate(), S_OK);
}

TEST_F(Duplication, DeliversTheTestPictureInEveryFormat) {
    const std::pair<const char*, std::pair<PixelFormat, DXGI_FORMAT>> formats[] = {
        {"bgra", {PixelFormat::kBgra, DXGI_FORMAT_B8G8R8A8_UNORM}},
        {"bgra-typeless", {PixelFormat::kBgraTypeless, DXGI_FORMAT_B8G8R8A8_TYPELESS}},
        {"rgba", {PixelFormat::kRgba, DXGI_FORMAT_R8G8B8A8_UNORM}},
        {"rgba-typeless", {PixelFormat::kRgbaTypeless, DXGI_FORMAT_R8G8B8A8_TYPELESS}},
        {"fp16", {PixelFormat::kHalfFloat, DXGI_FORMAT_R16G16B16A16_FLOAT}},
    };
    for (const auto& [name, format] : formats) {
        SetUpWith(std::string(kSmall) + "format " + name + "\n");
        Program program(0);
        ASSERT_EQ(program.Duplicate(), S_OK) << name;
        ASSERT_EQ(program.Acquire(), S_OK) << name;
        EXPECT_EQ(program.FrameDescription().Format, format.second) << name;
        EXPECT_EQ(program.ReadFrame(format.first), TestPicture({64, 48}, format.first, false)) << name;
        EXPECT_EQ(program.Release(), S_OK);
        ASSERT_EQ(program.Acquire(1000), S_OK) << name;
        EXPECT_EQ(program.ReadFrame(format.first), TestPicture({64, 48}, format.first, true)) << name;
        EXPECT_EQ(program.Release(), S_OK);
        EXPECT_EQ(Counts().Violations(), 0);
    }
}

TEST_F(Duplication, DeliversImagesAtTheirRate) {
    SetUpWith(std::string(kSmall) + "frames 144 per second\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    const std::int64_t end = MachineTime() + 1'000'000;
    int delivered = 0;
    while (MachineTime() < end) {
        if (program.Acquire() == S_OK) {
            ++delivered;
            program.Release();
        }
    }
    EXPECT_EQ(delivered, 145);
    EXPECT_EQ(Counts().frames_shown, 145);
    EXPECT_EQ(Counts().frames_merged, 0);
}

TEST_F(Duplication, MergesImagesThatWereNotAcquired) {
    SetUpWith(std::string(kSmall) + "frames 100 per second\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ScriptedSleep(45);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_EQ(program.info_.AccumulatedFrames, 5U);
    EXPECT_EQ(Counts().frames_merged, 4);
    program.Release();
}

TEST_F(Duplication, WaitsForAnImageUntilTheTimeout) {
    SetUpWith(std::string(kSmall) + "frames 10 per second\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    program.Release();
    const std::int64_t before = MachineTime();
    EXPECT_EQ(program.Acquire(50), DXGI_ERROR_WAIT_TIMEOUT);
    EXPECT_GE(MachineTime() - before, 50'000);
    EXPECT_EQ(program.Acquire(250), S_OK);
    EXPECT_LE(MachineTime() - before, 101'000);
    program.Release();
}

TEST_F(Duplication, AStillDesktopHasOneImageAndABlindOneNone) {
    SetUpWith(std::string(kSmall) + "frames still\n");
    {
        Program program(0);
        ASSERT_EQ(program.Duplicate(), S_OK);
        EXPECT_EQ(program.Acquire(), S_OK);
        program.Release();
        EXPECT_EQ(program.Acquire(10'000), DXGI_ERROR_WAIT_TIMEOUT);
    }
    SetUpWith(std::string(kSmall) + "frames never\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    EXPECT_EQ(program.Acquire(10'000), DXGI_ERROR_WAIT_TIMEOUT);
}

TEST_F(Duplication, IsLostAndRestoredAsTheScenarioSays) {
    SetUpWith(std::string(kSmall) +
              "lost after 2 frames\nsize 32x16\nformat rgba\nrefuses 0x80070005 2 times\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(program.Acquire(1000), S_OK);
        program.Release();
    }
    EXPECT_EQ(program.Acquire(1000), DXGI_ERROR_ACCESS_LOST);
    EXPECT_EQ(program.Acquire(1000), DXGI_ERROR_ACCESS_LOST);
    EXPECT_EQ(Counts().access_losses, 1);
    EXPECT_EQ(program.Duplicate(), E_ACCESSDENIED);
    EXPECT_EQ(program.Duplicate(), E_ACCESSDENIED);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_EQ(program.FrameDescription().Width, 32U);
    EXPECT_EQ(program.FrameDescription().Height, 16U);
    EXPECT_EQ(program.FrameDescription().Format, DXGI_FORMAT_R8G8B8A8_UNORM);
    program.Release();
    EXPECT_EQ(program.Acquire(1000), S_OK);  // No second loss is scripted.
    program.Release();
}

TEST_F(Duplication, AnOutputMovesToAnotherAdapter) {
    SetUpWith(
        "clock scripted\nadapter A\n output D\n  size 64x48\n  lost after 100 ms\n   moves to 1\nadapter "
        "B\n");
    Program on_a(0);
    ASSERT_EQ(on_a.Duplicate(0), S_OK);
    EXPECT_EQ(on_a.Acquire(), S_OK);
    on_a.Release();
    ScriptedSleep(100);
    EXPECT_EQ(on_a.Acquire(), DXGI_ERROR_ACCESS_LOST);
    EXPECT_FALSE(on_a.OutputOf(0));
    EXPECT_EQ(on_a.Duplicate(1), E_INVALIDARG);
    Program on_b(1);
    EXPECT_EQ(on_b.Duplicate(1), S_OK);
}

TEST_F(Duplication, AnUnpluggedOutputIsGone) {
    SetUpWith(std::string(kSmall) + "lost after 1 frames\nunplugged\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    program.Release();
    EXPECT_EQ(program.Acquire(), DXGI_ERROR_ACCESS_LOST);
    EXPECT_FALSE(program.OutputOf(0));
}

TEST_F(Duplication, CanFailToAcquireWithoutBeingLost) {
    SetUpWith(std::string(kSmall) + "acquiring fails 0x887A0001 2 times\n");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    EXPECT_EQ(program.Acquire(), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(program.Acquire(), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(program.Acquire(), S_OK);
    program.Release();
    EXPECT_EQ(Counts().access_losses, 0);
}

TEST_F(Duplication, ABlankFirstImageIsBlackAndNoPresentBroughtIt) {
    SetUpWith(std::string(kSmall) + "first image blank");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_EQ(program.info_.LastPresentTime.QuadPart, 0);
    EXPECT_EQ(program.info_.AccumulatedFrames, 0U);
    EXPECT_THAT(program.ReadFrame(PixelFormat::kBgra), ::testing::Each(0));
    program.Release();
    ASSERT_EQ(program.Acquire(1000), S_OK);
    EXPECT_NE(program.info_.LastPresentTime.QuadPart, 0);
    EXPECT_EQ(program.ReadFrame(PixelFormat::kBgra), TestPicture({64, 48}, PixelFormat::kBgra, false));
    program.Release();
}

TEST_F(Duplication, AMovingPointerShowsTheLastImageAgain) {
    SetUpWith(std::string(kSmall) + "frames still\n pointer moves 125 per second");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_NE(program.info_.LastPresentTime.QuadPart, 0);
    const std::vector<std::uint8_t> image = program.ReadFrame(PixelFormat::kBgra);
    program.Release();
    ASSERT_EQ(program.Acquire(1000), S_OK);
    EXPECT_EQ(program.info_.LastPresentTime.QuadPart, 0);
    EXPECT_NE(program.info_.LastMouseUpdateTime.QuadPart, 0);
    EXPECT_EQ(program.ReadFrame(PixelFormat::kBgra), image);
    program.Release();
    EXPECT_EQ(Counts().pointer_updates, 1);
    EXPECT_EQ(Counts().frames_delivered, 1);
}

TEST_F(Duplication, ARotatedDesktopComesUnrotatedAndAnHdrOneInBytes) {
    SetUpWith(std::string(kSmall) + "rotated 90\n hdr\n format fp16");
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_EQ(program.FrameDescription().Width, 48U);
    EXPECT_EQ(program.FrameDescription().Height, 64U);
    EXPECT_EQ(program.FrameDescription().Format, DXGI_FORMAT_B8G8R8A8_UNORM);
    program.Release();
}

TEST_F(Duplication, CopiesNothingBetweenDifferentSizes) {
    SetUpWith(kSmall);
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    D3D11_TEXTURE2D_DESC other = program.FrameDescription();
    other.Height -= 1;
    ComPtr<ID3D11Texture2D> frame;
    program.resource_.As(&frame);
    program.context_->CopyResource(program.Staging(other).Get(), frame.Get());
    EXPECT_EQ(Counts().copies_of_other_size, 1);
    EXPECT_EQ(Counts().Violations(), 1);
    program.Release();
    Counts().copies_of_other_size = 0;
}

TEST_F(Duplication, DetectsAnAcquireWithoutARelease) {
    SetUpWith(kSmall);
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    EXPECT_EQ(program.Acquire(1000), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(Counts().acquires_without_release, 1);
    program.Release();
    EXPECT_EQ(program.Release(), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(Counts().releases_without_frame, 1);
    EXPECT_EQ(Counts().Violations(), 1);
}

TEST_F(Duplication, DetectsAFrameThatIsNeverReleased) {
    SetUpWith(kSmall);
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    program.duplication_.Reset();
    EXPECT_EQ(Counts().frames_never_released, 1);
}

TEST_F(Duplication, DetectsTheUseOfAFrameAfterItsRelease) {
    SetUpWith(kSmall);
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    ComPtr<ID3D11Texture2D> frame;
    program.resource_.As(&frame);
    const ComPtr<ID3D11Texture2D> copy = program.Staging(program.FrameDescription());
    program.context_->CopyResource(copy.Get(), frame.Get());
    EXPECT_EQ(Counts().Violations(), 0);
    program.Release();
    program.context_->CopyResource(copy.Get(), frame.Get());
    EXPECT_EQ(Counts().uses_after_release, 1);
    program.context_->CopySubresourceRegion(copy.Get(), 0, 0, 0, 0, frame.Get(), 0, nullptr);
    EXPECT_EQ(Counts().uses_after_release, 2);
}

TEST_F(Duplication, DetectsACopyBetweenDevices) {
    SetUpWith("adapter A\n output D\n  size 64x48\nadapter B\n");
    Program on_a(0);
    Program on_b(1);
    ASSERT_EQ(on_a.Duplicate(), S_OK);
    ASSERT_EQ(on_a.Acquire(), S_OK);
    ComPtr<ID3D11Texture2D> frame;
    on_a.resource_.As(&frame);
    const ComPtr<ID3D11Texture2D> elsewhere = on_b.Staging(on_a.FrameDescription());
    on_a.context_->CopyResource(elsewhere.Get(), frame.Get());
    EXPECT_EQ(Counts().copies_across_devices, 1);
    on_a.Release();
}

TEST_F(Duplication, CanShowTheRealDesktop) {
    SetUpWith("adapter A\n output D\n  size 64x48\n  picture desktop\n");
    HDC screen = GetDC(nullptr);
    const COLORREF colour = RGB(10, 200, 60);
    SetPixel(screen, 5, 7, colour);
    GdiFlush();
    const COLORREF shown = GetPixel(screen, 5, 7);
    ReleaseDC(nullptr, screen);
    Program program(0);
    ASSERT_EQ(program.Duplicate(), S_OK);
    ASSERT_EQ(program.Acquire(), S_OK);
    const std::vector<std::uint8_t> picture = program.ReadFrame(PixelFormat::kBgra);
    const std::uint8_t* const texel = &picture[(7 * 64 + 5) * 4];
    EXPECT_EQ(RGB(texel[2], texel[1], texel[0]), shown);
    EXPECT_EQ(shown, colour);
    program.Release();
}

}  // namespace
}  // namespace lab
