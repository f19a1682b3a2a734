// Measures how many new desktop images per second reach the product's screen capture.
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
    std::uint32_t calls = 0;       ///< calls of ScreenCaptureDxgi::GetFrame during the measured time
    double seconds = 0.0;          ///< measured time
    /// One image of the desktop (the first one that came from a present, if any), width x height x 4 bytes
    /// without padding between rows, in the texture's own channel order (normally B, G, R, A). Empty when
    /// none could be read back.
    std::vector<std::uint8_t> pixels;
    bool cross_adapter = false;    ///< the display is connected to another GPU than the device's
    std::string capture_gpu_name;  ///< UTF-8; the display's GPU
};

/// New images per second; 0 when nothing was measured.
double FramesPerSecond(const CaptureMeasurement& measurement);

/// Captures for `seconds` (not at all when that is 0, negative or NaN) on `device`, whose immediate context
/// is `context`. Never sleeps. Every failure is reported in the result.
CaptureMeasurement MeasureCaptureRate(ID3D11Device* device, ID3D11DeviceContext* context, double seconds);

/// Copies the first `height` rows of `row_bytes` bytes each from `rows`, where rows start `row_pitch` bytes
/// apart, without the padding.
std::vector<std::uint8_t> PackRows(const void* rows, std::size_t row_pitch, std::size_t row_bytes,
                                   std::size_t height);
