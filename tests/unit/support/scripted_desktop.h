// The simulated machine in a test program of the screen capture: the test provides the images of its desktop
// one by one, single calls of Direct3D can be made to fail, and devices are kept from test to test.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"

/// One result of AcquireNextFrame.
struct ScriptedFrame {
    HRESULT result = S_OK;
    UINT width = 64;
    UINT height = 48;
    DXGI_FORMAT format = DXGI_FORMAT_B8G8R8A8_UNORM;
    std::uint32_t seed = 1;  ///< distinguishes pictures
    std::int64_t present_ticks = 0;
    bool has_texture = true;  ///< false: a resource that is not a texture
};

/// The script and the record of calls. Only the calling thread accesses it, during its calls.
struct ScriptedDesktop {
    // The script.
    std::deque<ScriptedFrame> frames;
    std::function<ScriptedFrame()> next_frame;  ///< called when `frames` is empty; without it: timeouts
    HRESULT get_adapter_result = S_OK;          ///< of IDXGIDevice::GetAdapter
    HRESULT map_result = S_OK;                  ///< of ID3D11DeviceContext::Map
    UINT extra_row_pitch = 0;                   ///< added to the pitch that Map returns, by means of a copy
    bool staging_textures_fail = false;         ///< ID3D11Device::CreateTexture2D
    bool gdi_flag_ignored = false;              ///< textures with it can be made in any format
    bool shader_views_fail = false;             ///< ID3D11Device::CreateShaderResourceView
    bool second_devices_lack_context = false;   ///< D3D11CreateDevice

    // The record.
    std::vector<UINT> timeouts;             ///< of AcquireNextFrame
    std::vector<std::string> devices_made;  ///< adapters that second devices were made on
    int frames_acquired = 0;
    int frames_released = 0;
    std::vector<std::string> misuses;  ///< calls that Windows would not allow
    struct DrawnIcon {
        int x, y, width, height;
        HICON icon;
        UINT step, flags;
        HBRUSH brush;
    };
    std::vector<DrawnIcon> drawn_icons;
};

/// The desktop of the running test.
ScriptedDesktop& Desktop();

/// A new, empty desktop on a machine from this scenario.
void SetUpDesktop(const std::string& scenario);

/// Moves the desktop to another machine. The clock is scripted, and reading it takes no time.
void UseMachine(const std::string& scenario);

/// Makes duplicating the output at this position of the scenario fail; with S_OK it succeeds again.
void RefuseDuplication(std::size_t output, HRESULT result);

/// The names of the outputs for which duplication was requested, in order, including failures.
std::vector<std::string> DuplicatedOutputs();

/// Simulated factories, adapters, outputs and duplications that are still referenced.
long LiveDxgiObjects();

/// Two devices on the adapter at this position of the scenario; the same ones in every test.
Microsoft::WRL::ComPtr<ID3D11Device> RenderDevice(std::size_t adapter);
Microsoft::WRL::ComPtr<ID3D11Device> AnotherRenderDevice(std::size_t adapter);

/// Whether any device or immediate context has more references than when it was made.
bool DevicesAreStillReferenced();

/// The bytes of a frame's picture, rows packed.
std::vector<std::uint8_t> ScriptedPixels(const ScriptedFrame& frame);

/// The bytes of the texture behind `view`, rows packed; empty when it cannot be read.
std::vector<std::uint8_t> PixelsOf(ID3D11ShaderResourceView* view);

D3D11_TEXTURE2D_DESC DescriptionOf(ID3D11ShaderResourceView* view);
