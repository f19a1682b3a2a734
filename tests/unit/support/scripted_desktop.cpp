// The functions of Windows that the scripted desktop replaces.
#include "platform/utf8.h"
#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/desktop_functions.h"
#include "tests/lab/machine/duplication.h"
#include "tests/unit/support/scripted_desktop_parts.h"

ScriptedDesktop& Desktop() {
    static ScriptedDesktop desktop;
    return desktop;
}

void SetUpDesktop(const std::string& scenario) {
    Desktop() = {};
    lab::TakeImagesFrom(MakeScriptedImages);
    UseMachine(scenario);
    lab::RestartCounts();
}

void UseMachine(const std::string& scenario) {
    lab::SetUpMachine(scenario);
    lab::StartClock(true, 0);
}

void RefuseDuplication(std::size_t output, HRESULT result) {
    lab::OutputState& state = lab::TheMachine().outputs.at(output);
    if (SUCCEEDED(result)) {
        state.refusal.reset();
    } else {
        lab::Refusal refusal;
        refusal.result = static_cast<lab::ResultCode>(result);
        lab::BeginRefusal(state, refusal);
    }
}

std::vector<std::string> DuplicatedOutputs() {
    std::vector<std::string> names;
    for (const std::size_t output : lab::TheMachine().duplicated) {
        names.push_back(Utf8FromUtf16(lab::TheMachine().DisplayOf(output).name));
    }
    return names;
}

long LiveDxgiObjects() {
    return lab::Counts().LiveObjects() - lab::Counts().live_devices;
}

HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE type, HMODULE software, UINT flags,
                                 const D3D_FEATURE_LEVEL* levels, UINT level_count, UINT version,
                                 ID3D11Device** device, D3D_FEATURE_LEVEL*, ID3D11DeviceContext** context) {
    *device = nullptr;
    *context = nullptr;
    const std::optional<std::size_t> position = lab::AdapterPosition(adapter);
    if (!position || type != D3D_DRIVER_TYPE_UNKNOWN || software != nullptr || flags != 0 ||
        levels != nullptr || level_count != 0 || version != 7) {
        Misuse("a device was not made as it ought to be");
        return E_INVALIDARG;
    }
    const lab::Adapter& script = lab::TheMachine().scenario.adapters.at(*position);
    Desktop().devices_made.push_back(Utf8FromUtf16(script.name));
    if (script.device_fails) {
        return static_cast<HRESULT>(*script.device_fails);
    }
    const KeptDevice* kept = DeviceFor(*position, "display");
    if (kept == nullptr) {
        return E_FAIL;
    }
    if (!Desktop().second_devices_lack_context) {
        kept->context.CopyTo(context);
    }
    return kept->device.CopyTo(device);
}

namespace {

/// The system's own function, which the test program has replaced.
template <typename Function>
Function RealFunction(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(module), name));
}

ULONGLONG WINAPI TickCount() {
    static const auto real = RealFunction<decltype(&GetTickCount64)>(L"kernel32.dll", "GetTickCount64");
    return lab::ClockIsScripted() ? lab::ScriptedGetTickCount64() : real();
}

BOOL WINAPI PerformanceCounter(LARGE_INTEGER* ticks) {
    static const auto real =
        RealFunction<decltype(&QueryPerformanceCounter)>(L"kernel32.dll", "QueryPerformanceCounter");
    return lab::ClockIsScripted() ? lab::ScriptedQueryPerformanceCounter(ticks) : real(ticks);
}

BOOL WINAPI DrawIconAndNote(HDC device_context, int x, int y, HICON icon, int width, int height, UINT step,
                            HBRUSH brush, UINT flags) {
    static const auto real = RealFunction<decltype(&DrawIconEx)>(L"user32.dll", "DrawIconEx");
    Desktop().drawn_icons.push_back({x, y, width, height, icon, step, flags, brush});
    return real(device_context, x, y, icon, width, height, step, brush, flags);
}

}  // namespace

extern "C" {
decltype(&GetTickCount64) __imp_GetTickCount64 = TickCount;
decltype(&QueryPerformanceCounter) __imp_QueryPerformanceCounter = PerformanceCounter;
decltype(&GetCursorInfo) __imp_GetCursorInfo = lab::SimulatedGetCursorInfo;
decltype(&DrawIconEx) __imp_DrawIconEx = DrawIconAndNote;
}
