// All texts of the screen capture for the user.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Texts without variable parts.
namespace CaptureMessage {
inline constexpr const char* kNoDxgiDevice = "Failed to get DXGIDevice from D3D11Device.";
inline constexpr const char* kNoDxgiAdapter = "Failed to get DXGIAdapter.";
inline constexpr const char* kNoFactory = "Failed to create a DXGI factory to enumerate displays.";
inline constexpr const char* kNoOutput1 = "Failed to get IDXGIOutput1.";
inline constexpr const char* kNoDisplay =
    "No display is attached to any GPU, so there is nothing to capture. Capture the game window instead.";
inline constexpr const char* kAccessLost = "Access lost. Reinitializing...";
inline constexpr const char* kRestored = "Duplication restored.";
}  // namespace CaptureMessage

/// Names for adapters whose description is empty.
inline constexpr const char* kUnnamedRenderGpu = "the GPU Vistrel renders on";
inline constexpr const char* kUnnamedDisplayGpu = "the GPU that drives this display";

/// The errors of IDXGIOutput1::DuplicateOutput with a text of their own (HRESULT bit patterns).
namespace DuplicationResult {
inline constexpr std::uint32_t kNotCurrentlyAvailable = 0x887A0022;
inline constexpr std::uint32_t kAccessDenied = 0x80070005;
inline constexpr std::uint32_t kUnsupported = 0x887A0004;
}  // namespace DuplicationResult

/// Why a display could not be duplicated; `result` is the HRESULT's bit pattern.
std::string DuplicationFailureMessage(std::uint32_t result, std::string_view display_gpu);

/// A monitor requested by name is not attached; `displays` lists those that are, and may be empty.
std::string NotAttachedMessage(std::string_view source_name, std::string_view displays);

/// No device could be created on the display's GPU; `result` is the HRESULT's bit pattern.
std::string SecondDeviceFailureMessage(std::string_view source_name, std::string_view display_gpu,
                                       std::string_view render_gpu, std::uint32_t result);

/// Frames will be copied from one GPU to another.
std::string CrossAdapterMessage(std::string_view source_name, std::string_view display_gpu,
                                std::string_view render_gpu);

/// A frame could not be copied from one GPU to another.
std::string CarryFailureMessage(std::string_view display_gpu, std::string_view render_gpu);

/// Writes one line, "[ScreenCaptureDxgi] " and `text`, to the standard error stream.
void WriteCaptureMessage(std::string_view text);
