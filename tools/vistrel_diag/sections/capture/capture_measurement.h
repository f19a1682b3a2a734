// Measures how many new desktop images a second reach the product's screen capture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct ID3D11Device;
struct ID3D11DeviceContext;

struct CaptureMeasurement {
    bool ok = false;          ///< at least one image was obtained
    std::string error;        ///< UTF-8; why capture failed, empty when ok
    std::uint32_t width = 0;  ///< of the captured desktop, from the first image
    std::uint32_t height = 0;
    std::uint32_t new_frames = 0;  ///< calls that delivered a new image
    std::uint32_t calls = 0;       ///< calls of ScreenCaptureDxgi::GetFrame in the measured time
    double seconds = 0.0;          ///< measured time
    /// One image of the desktop (the first that a present brought, if any), width x height x 4 bytes without
    /// padding between rows, in the texture's own channel order (normally B, G, R, A). Empty when none could
    /// be read back.
    std::vector<std::uint8_t> pixels;
    bool cross_adapter = false;    ///< the display hangs on another GPU than the device
    std::string capture_gpu_name;  ///< UTF-8; the display's GPU
};

/// New images a second; 0 when nothing was measured.
double FramesPerSecond(const CaptureMeasurement& measurement);

/// Captures for `seconds` (none when that is 0, less or not a number) on `device`, with `context` its
/// immediate context, without ever sleeping. Never fails otherwise than by what the result says.
CaptureMeasurement MeasureCaptureRate(ID3D11Device* device, ID3D11DeviceContext* context, double seconds);

/// The first `height` rows of `row_bytes` bytes at `rows`, which lie `row_pitch` bytes apart, without the
/// padding.
std::vector<std::uint8_t> PackRows(const void* rows, std::size_t row_pitch, std::size_t row_bytes,
                                   std::size_t height);
