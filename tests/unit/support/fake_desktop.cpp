// The functions of Windows that the scripted machine replaces.
#include <array>
#include <memory>

#include "tests/unit/support/fake_desktop_parts.h"

namespace {

std::unique_ptr<FakeDesktop> machine;

}  // namespace

FakeDesktop& Machine() {
    return *machine;
}

void ResetMachine() {
    machine = std::make_unique<FakeDesktop>();
    machine->adapters = {{.name = L"Fast GPU",
                          .luid = {.LowPart = 10, .HighPart = 1},
                          .outputs = {{.name = L"\\\\.\\DISPLAY1"}}}};
}

std::vector<std::uint8_t> FakePixels(const FakeFrame& frame) {
    const UINT texel = BytesPerTexel(frame.format);
    std::vector<std::uint8_t> pixels;
    pixels.reserve(std::size_t{frame.width} * frame.height * texel);
    for (UINT y = 0; y < frame.height; ++y) {
        for (UINT x = 0; x < frame.width; ++x) {
            for (UINT channel = 0; channel < texel; ++channel) {
                const std::array<std::uint32_t, 4> bytes = {x * 3 + frame.seed, y * 5 + frame.seed, x ^ y,
                                                            255};
                pixels.push_back(static_cast<std::uint8_t>(bytes[channel % 4]));
            }
        }
    }
    return pixels;
}

HRESULT WINAPI CreateDXGIFactory1(REFIID iid, void** factory) {
    *factory = nullptr;
    if (FAILED(Machine().factory_result)) {
        return Machine().factory_result;
    }
    IDXGIFactory1* made = MakeFakeFactory();
    const HRESULT result = made->QueryInterface(iid, factory);
    made->Release();
    return result;
}

HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE type, HMODULE software, UINT flags,
                                 const D3D_FEATURE_LEVEL* levels, UINT level_count, UINT version,
                                 ID3D11Device** device, D3D_FEATURE_LEVEL*, ID3D11DeviceContext** context) {
    *device = nullptr;
    *context = nullptr;
    if (adapter == nullptr || type != D3D_DRIVER_TYPE_UNKNOWN || software != nullptr || flags != 0 ||
        levels != nullptr || level_count != 0 || version != 7) {
        Misuse("a device was not made as it ought to be");
        return E_INVALIDARG;
    }
    const std::size_t number = NumberOf(adapter);
    const FakeAdapterScript& script = Machine().adapters.at(number);
    Machine().devices_made.push_back(script.name);
    if (FAILED(script.create_device_result)) {
        return script.create_device_result;
    }
    const KeptDevice* kept = DeviceFor(number, L"display");
    if (kept == nullptr) {
        return E_FAIL;
    }
    if (script.gives_context) {
        kept->context.CopyTo(context);
    }
    return kept->device.CopyTo(device);
}

namespace {

ULONGLONG WINAPI FakeGetTickCount64() {
    static const auto real = RealFunction<decltype(&GetTickCount64)>(L"kernel32.dll", "GetTickCount64");
    return machine ? machine->tick_ms : real();
}

BOOL WINAPI FakeQueryPerformanceCounter(LARGE_INTEGER* ticks) {
    static const auto real =
        RealFunction<decltype(&QueryPerformanceCounter)>(L"kernel32.dll", "QueryPerformanceCounter");
    if (!machine || !machine->counter) {
        return real(ticks);
    }
    ticks->QuadPart = *machine->counter += machine->counter_step;
    return TRUE;
}

BOOL WINAPI FakeQueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    static const auto real =
        RealFunction<decltype(&QueryPerformanceFrequency)>(L"kernel32.dll", "QueryPerformanceFrequency");
    if (!machine || !machine->counter) {
        return real(frequency);
    }
    frequency->QuadPart = FakeDesktop::kCounterFrequency;
    return TRUE;
}

BOOL WINAPI FakeGetCursorInfo(CURSORINFO* information) {
    if (information->cbSize != sizeof(CURSORINFO)) {
        Misuse("GetCursorInfo without the size of its structure");
        return FALSE;
    }
    *information = Machine().cursor;
    return Machine().cursor_info_result;
}

BOOL WINAPI FakeDrawIconEx(HDC device_context, int x, int y, HICON icon, int width, int height, UINT step,
                           HBRUSH brush, UINT flags) {
    static const auto real = RealFunction<decltype(&DrawIconEx)>(L"user32.dll", "DrawIconEx");
    Machine().drawn_icons.push_back({x, y, width, height, icon, step, flags, brush});
    return real(device_context, x, y, icon, width, height, step, brush, flags);
}

}  // namespace

extern "C" {
decltype(&GetTickCount64) __imp_GetTickCount64 = FakeGetTickCount64;
decltype(&QueryPerformanceCounter) __imp_QueryPerformanceCounter = FakeQueryPerformanceCounter;
decltype(&QueryPerformanceFrequency) __imp_QueryPerformanceFrequency = FakeQueryPerformanceFrequency;
decltype(&GetCursorInfo) __imp_GetCursorInfo = FakeGetCursorInfo;
decltype(&DrawIconEx) __imp_DrawIconEx = FakeDrawIconEx;
}
