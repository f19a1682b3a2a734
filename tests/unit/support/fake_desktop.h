// A machine whose adapters, monitors and desktop duplication are scripted, in one test program: the functions
// that reach DXGI, Direct3D device creation, the clocks and the mouse pointer are replaced at link time.
// Textures and devices are real ones of the system's Direct3D.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// One answer of AcquireNextFrame.
struct FakeFrame {
    HRESULT result = S_OK;
    UINT width = 64;
    UINT height = 48;
    DXGI_FORMAT format = DXGI_FORMAT_B8G8R8A8_UNORM;
    std::uint32_t seed = 1;  ///< tells pictures apart
    std::int64_t present_ticks = 0;
    bool has_texture = true;  ///< false: a resource that is none
};

struct FakeOutputScript {
    std::wstring name;
    LONG left = 0;
    LONG top = 0;
    HRESULT describe_result = S_OK;
    bool has_output1 = true;
    HRESULT duplicate_result = S_OK;
};

struct FakeAdapterScript {
    std::wstring name;
    LUID luid = {};
    std::vector<FakeOutputScript> outputs = {};
    HRESULT describe_result = S_OK;
    HRESULT end_of_outputs = DXGI_ERROR_NOT_FOUND;
    HRESULT create_device_result = S_OK;
    bool gives_context = true;
};

/// What the scripted machine holds and what was done to it. All of it is read and written by the thread that
/// calls, as the calls come in.
struct FakeDesktop {
    // The script.
    std::vector<FakeAdapterScript> adapters;
    std::size_t render_adapter = 0;  ///< the adapter of devices of RenderDevice
    HRESULT factory_result = S_OK;
    HRESULT end_of_adapters = DXGI_ERROR_NOT_FOUND;
    HRESULT get_adapter_result = S_OK;  ///< of IDXGIDevice::GetAdapter
    HRESULT render_describe_result = S_OK;
    std::deque<FakeFrame> frames;
    std::function<FakeFrame()> next_frame;  ///< asked when `frames` is empty; none: time-outs
    std::uint64_t tick_ms = 100'000;
    std::optional<std::int64_t>
        counter;                    ///< the performance counter at kCounterFrequency; none: the real one
    std::int64_t counter_step = 0;  ///< added to the scripted counter at every reading
    BOOL cursor_info_result = TRUE;
    CURSORINFO cursor = {};
    HRESULT map_result = S_OK;           ///< of ID3D11DeviceContext::Map
    UINT extra_row_pitch = 0;            ///< added to what Map tells, by way of a copy
    bool staging_textures_fail = false;  ///< ID3D11Device::CreateTexture2D
    bool gdi_flag_ignored = false;       ///< textures with it can be made in any format
    bool shader_views_fail = false;      ///< ID3D11Device::CreateShaderResourceView

    // What happened.
    std::vector<UINT> timeouts;              ///< of AcquireNextFrame
    int enumerations = 0;                    ///< calls of EnumAdapters1 and EnumOutputs
    int duplications = 0;                    ///< calls of DuplicateOutput
    std::vector<std::wstring> duplicated;    ///< outputs, in order, successful or not
    std::vector<std::wstring> devices_made;  ///< adapters that second devices were made on
    int frames_acquired = 0;
    int frames_released = 0;
    int idle_releases = 0;             ///< ReleaseFrame with nothing to release
    std::vector<std::string> misuses;  ///< what Windows would have forbidden
    struct DrawnIcon {
        int x, y, width, height;
        HICON icon;
        UINT step, flags;
        HBRUSH brush;
    };
    std::vector<DrawnIcon> drawn_icons;

    static constexpr std::int64_t kCounterFrequency = 10'000'000;
};

/// The machine of the running test.
FakeDesktop& Machine();

/// A new, empty machine, whose render adapter "Fast GPU" drives \\.\DISPLAY1.
void ResetMachine();

/// Scripted objects (factories, adapters, outputs, duplications) that are still referenced.
int LiveFakeObjects();

/// Two devices that tell the machine's render adapter as their own; the same ones in every test.
Microsoft::WRL::ComPtr<ID3D11Device> RenderDevice();
Microsoft::WRL::ComPtr<ID3D11Device> AnotherRenderDevice();

/// Whether any device or immediate context has more references than when it was made.
bool DevicesAreStillReferenced();

/// The bytes of a picture as FakeFrame makes it, rows packed.
std::vector<std::uint8_t> FakePixels(const FakeFrame& frame);

/// The bytes of the texture behind `view`, rows packed; empty when it cannot be read.
std::vector<std::uint8_t> PixelsOf(ID3D11ShaderResourceView* view);

D3D11_TEXTURE2D_DESC DescriptionOf(ID3D11ShaderResourceView* view);
