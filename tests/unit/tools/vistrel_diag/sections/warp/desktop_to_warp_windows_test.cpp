// The way of the desktop's pixels: from the simulated desktop through the capture into the picture that the
// warp is timed on. Leaves captured_desktop.png beside the test program for a person to look at.
#include <d3d11.h>
#include <dxgi1_2.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "platform/module_folder.h"
#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "tests/lab/machine/desktop_functions.h"
#include "tests/lab/machine/desktop_picture.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/vtable.h"
#include "tests/unit/support/executable_folder_seam.h"
#include "tests/unit/support/png_file.h"
#include "tools/vistrel_diag/sections/capture/capture_measurement.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"

using Microsoft::WRL::ComPtr;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

extern "C" {
decltype(&GetCursorInfo) __imp_GetCursorInfo = lab::SimulatedGetCursorInfo;
}

namespace {

using Pixels = std::vector<std::uint8_t>;

/// A texture made with its picture.
struct FilledTexture {
    UINT width = 0;
    UINT height = 0;
    DXGI_FORMAT format = DXGI_FORMAT_UNKNOWN;
    Pixels pixels;
};

std::vector<FilledTexture> filled_textures;

using CreateTextureFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, const D3D11_TEXTURE2D_DESC*,
                                                          const D3D11_SUBRESOURCE_DATA*, ID3D11Texture2D**);
std::atomic<CreateTextureFunction> real_create_texture = nullptr;
constexpr std::size_t kCreateTexture2dSlot = 5;

HRESULT STDMETHODCALLTYPE WatchedCreateTexture(ID3D11Device* device, const D3D11_TEXTURE2D_DESC* description,
                                               const D3D11_SUBRESOURCE_DATA* data,
                                               ID3D11Texture2D** texture) {
    const HRESULT result = real_create_texture.load()(device, description, data, texture);
    if (SUCCEEDED(result) && data != nullptr) {
        FilledTexture filled = {description->Width, description->Height, description->Format, {}};
        for (UINT row = 0; row < filled.height; ++row) {
            const auto* bytes =
                static_cast<const std::uint8_t*>(data->pSysMem) + std::size_t{row} * data->SysMemPitch;
            filled.pixels.insert(filled.pixels.end(), bytes, bytes + std::size_t{filled.width} * 4);
        }
        filled_textures.push_back(std::move(filled));
    }
    return result;
}

/// `picture` scaled to another size by nearest neighbour.
Pixels Scaled(const Pixels& picture, lab::Size from, lab::Size to) {
    Pixels scaled;
    scaled.reserve(std::size_t{to.width} * to.height * 4);
    for (std::uint32_t y = 0; y < to.height; ++y) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            const std::size_t source =
                std::size_t{from.height * y / to.height} * from.width + from.width * x / to.width;
            scaled.insert(scaled.end(), &picture[source * 4], &picture[source * 4] + 4);
        }
    }
    return scaled;
}

std::string DesktopPc(const char* output) {
    return std::string("adapter Fast GPU\n  luid 00000000:0000B3C7\n  dedicated 8000 MB\n") + output;
}

std::string HybridLaptop(const char* output) {
    return std::string("adapter Panel GPU\n  luid 00000000:00011A2B\n") + output +
           "adapter Fast GPU\n  luid 00000000:0000B3C7\n  dedicated 8000 MB\n";
}

constexpr const char* kTrivialShader =
    "float4 PSMain(float4 position : SV_Position, float2 place : TEXCOORD0) : SV_Target { return 0.5; }";

constexpr lab::Size kSmallDesktop = {321, 203};

class DesktopToWarp : public testing::Test {
  protected:
    /// Starts the machine and makes the device that Vistrel renders on.
    void UseMachine(const std::string& scenario) {
        lab::SetUpMachine("clock scripted\n" + scenario);
        ComPtr<IDXGIFactory1> factory;
        ASSERT_HRESULT_SUCCEEDED(CreateDXGIFactory1(IID_PPV_ARGS(&factory)));
        const UINT last = static_cast<UINT>(lab::TheMachine().scenario.adapters.size()) - 1;
        ASSERT_HRESULT_SUCCEEDED(factory->EnumAdapters1(last, &adapter_));
        ASSERT_HRESULT_SUCCEEDED(D3D11CreateDevice(adapter_.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0,
                                                   nullptr, 0, D3D11_SDK_VERSION, &device_, nullptr,
                                                   &context_));
    }

    CaptureMeasurement Measure() {
        testing::internal::CaptureStderr();
        CaptureMeasurement measurement = MeasureCaptureRate(device_.Get(), context_.Get(), 0.05);
        testing::internal::GetCapturedStderr();
        return measurement;
    }

    /// Installs a warp shader for the program to find.
    void UseShader(const char* source) {
        executable_folder = std::filesystem::temp_directory_path() / "desktop_to_warp_test";
        const std::filesystem::path shaders = executable_folder / "vistrel" / "shaders";
        std::filesystem::create_directories(shaders);
        std::ofstream(shaders / "stereo_warp.hlsl", std::ios::binary) << source;
    }

    void TearDown() override {
        if (!executable_folder.empty()) {
            std::filesystem::remove_all(executable_folder);
            executable_folder.clear();
        }
        context_.Reset();
        device_.Reset();
        adapter_.Reset();
        DiagSettings::Instance() = DiagSettings();
        filled_textures.clear();
        EXPECT_EQ(lab::Counts().Violations(), 0);
        EXPECT_EQ(lab::Counts().LiveObjects(), 0);
    }

    ComPtr<IDXGIAdapter1> adapter_;
    ComPtr<ID3D11Device> device_;
    ComPtr<ID3D11DeviceContext> context_;
};

struct Way {
    const char* name;
    std::string scenario;
    lab::PixelFormat format;
    bool cross_adapter;
};

void PrintTo(const Way& way, std::ostream* stream) {
    *stream << way.name;
}

class DesktopToWarpWays : public DesktopToWarp, public testing::WithParamInterface<Way> {};

TEST_P(DesktopToWarpWays, EveryPixelIsReadBack) {
    DiagSettings::Instance().capture_draw_cursor = false;
    ASSERT_NO_FATAL_FAILURE(UseMachine(GetParam().scenario));
    const CaptureMeasurement measurement = Measure();
    EXPECT_TRUE(measurement.ok) << measurement.error;
    EXPECT_EQ(measurement.cross_adapter, GetParam().cross_adapter);
    EXPECT_EQ(measurement.width, kSmallDesktop.width);
    EXPECT_EQ(measurement.height, kSmallDesktop.height);
    EXPECT_TRUE(measurement.pixels == lab::TestPicture(kSmallDesktop, GetParam().format, false));
}

INSTANTIATE_TEST_SUITE_P(
    Ways, DesktopToWarpWays,
    testing::Values(
        Way{"local", DesktopPc("  output A\n    size 321x203\n    primary\n    frames still\n"),
            lab::PixelFormat::kBgra, false},
        Way{"local typeless",
            DesktopPc(
                "  output A\n    size 321x203\n    primary\n    frames still\n    format bgra-typeless\n"),
            lab::PixelFormat::kBgraTypeless, false},
        Way{"local red first",
            DesktopPc(
                "  output A\n    size 321x203\n    primary\n    frames still\n    format rgba-typeless\n"),
            lab::PixelFormat::kRgbaTypeless, false},
        Way{"across", HybridLaptop("  output A\n    size 321x203\n    primary\n    frames still\n"),
            lab::PixelFormat::kBgra, true},
        Way{"across typeless",
            HybridLaptop(
                "  output A\n    size 321x203\n    primary\n    frames still\n    format bgra-typeless\n"),
            lab::PixelFormat::kBgraTypeless, true},
        Way{"across red first",
            HybridLaptop(
                "  output A\n    size 321x203\n    primary\n    frames still\n    format rgba-typeless\n"),
            lab::PixelFormat::kRgbaTypeless, true}));

TEST_F(DesktopToWarp, TheWarpIsTimedOnTheCapturedPicture) {
    DiagSettings::Instance().capture_draw_cursor = false;
    ASSERT_NO_FATAL_FAILURE(
        UseMachine(HybridLaptop("  output A\n    size 321x203\n    primary\n    frames still\n")));
    const CaptureMeasurement capture = Measure();
    ASSERT_TRUE(capture.ok) << capture.error;
    UseShader(kTrivialShader);
    lab::ReplaceVtableSlot(device_.Get(), kCreateTexture2dSlot, &WatchedCreateTexture, real_create_texture);
    filled_textures.clear();
    testing::internal::CaptureStdout();
    const std::vector<WarpTiming> timings =
        ReportWarpSection(device_.Get(), context_.Get(), adapter_.Get(), capture);
    const std::string report = testing::internal::GetCapturedStdout();
    EXPECT_THAT(timings, SizeIs(3)) << report;

    const Pixels desktop = lab::TestPicture(kSmallDesktop, lab::PixelFormat::kBgra, false);
    std::vector<lab::Size> sizes;
    for (const FilledTexture& texture : filled_textures) {
        sizes.push_back({texture.width, texture.height});
        EXPECT_EQ(texture.format, DXGI_FORMAT_B8G8R8A8_UNORM);
        EXPECT_TRUE(texture.pixels == Scaled(desktop, kSmallDesktop, sizes.back()))
            << texture.width << "x" << texture.height;
    }
    // The first size is filled once more, for the frames that warm the GPU up.
    EXPECT_THAT(sizes,
                ElementsAre(kSmallDesktop, kSmallDesktop, lab::Size{2560, 1440}, lab::Size{1920, 1080}));
}

/// Something to see on the real desktop: bars of colour below a line of text.
struct DesktopScene {
    static void Draw() {
        // Without a window, which would show what is drawn in it only some time later.
        const HDC desktop = GetDC(nullptr);
        Fill(desktop, {0, 0, kWidth, kHeight}, kBackground);
        for (int bar = 0; bar < kBars; ++bar) {
            Fill(desktop, {bar * kBarWidth, kBarTop, (bar + 1) * kBarWidth, kHeight}, BarColour(bar));
        }
        SetBkMode(desktop, TRANSPARENT);
        SetTextColor(desktop, RGB(255, 255, 255));
        const wchar_t title[] = L"What the screen capture of vistrel_diag delivered";
        TextOutW(desktop, 40, 40, title, static_cast<int>(std::size(title) - 1));
        GdiFlush();
        ReleaseDC(nullptr, desktop);
    }

    static COLORREF BarColour(int bar) {
        return RGB((bar & 1) * 255, (bar >> 1 & 1) * 255, (bar >> 2 & 1) * 255);
    }

    static constexpr COLORREF kBackground = RGB(32, 48, 64);
    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 720;
    static constexpr int kBars = 8;
    static constexpr int kBarWidth = kWidth / kBars;
    static constexpr int kBarTop = 200;

  private:
    static void Fill(HDC place, const RECT& area, COLORREF colour) {
        const HBRUSH brush = CreateSolidBrush(colour);
        FillRect(place, &area, brush);
        DeleteObject(brush);
    }
};

COLORREF ColourAt(const CaptureMeasurement& measurement, int x, int y) {
    const std::uint8_t* pixel = &measurement.pixels[(std::size_t{measurement.width} * y + x) * 4];
    return RGB(pixel[2], pixel[1], pixel[0]);
}

TEST_F(DesktopToWarp, TheRealDesktopIsCaptured) {
    DesktopScene::Draw();
    ASSERT_NO_FATAL_FAILURE(
        UseMachine("cursor at 1000,100\n" + HybridLaptop("  output A\n    size 1280x720\n    primary\n"
                                                         "    frames still\n    picture desktop\n")));
    const CaptureMeasurement capture = Measure();
    ASSERT_TRUE(capture.ok) << capture.error;
    ASSERT_THAT(capture.pixels, SizeIs(1280 * 720 * 4));
    EXPECT_EQ(ColourAt(capture, 5, 5), DesktopScene::kBackground);
    for (int bar = 0; bar < DesktopScene::kBars; ++bar) {
        EXPECT_EQ(ColourAt(capture, bar * DesktopScene::kBarWidth, DesktopScene::kBarTop),
                  DesktopScene::BarColour(bar));
        EXPECT_EQ(ColourAt(capture, (bar + 1) * DesktopScene::kBarWidth - 1, DesktopScene::kHeight - 1),
                  DesktopScene::BarColour(bar));
    }
    const auto differing = [&capture](const RECT& place) {
        int count = 0;
        for (int y = place.top; y < place.bottom; ++y) {
            for (int x = place.left; x < place.right; ++x) {
                count += ColourAt(capture, x, y) != DesktopScene::kBackground ? 1 : 0;
            }
        }
        return count;
    };
    EXPECT_GT(differing({40, 40, 400, 60}), 100) << "the text";
    EXPECT_GT(differing({1000, 100, 1032, 132}), 20) << "the pointer";
    EXPECT_EQ(differing({900, 0, 1000, 190}), 0);
    EXPECT_EQ(differing({1032, 0, 1280, 190}), 0);

    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::string png_path = FolderOfPath(Utf8FromWide(program)) + "\\captured_desktop.png";
    std::ofstream png(std::filesystem::path(WideFromUtf8(png_path)), std::ios::binary);
    png << PngOf(capture.pixels, capture.width, capture.height);
    EXPECT_TRUE(png.good()) << png_path;
}

}  // namespace
