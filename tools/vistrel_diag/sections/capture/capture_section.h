// The SCREEN CAPTURE section, and part 2's frame rate of the game.
#pragma once

#include "tools/vistrel_diag/sections/capture/capture_measurement.h"

/// Reports the whole SCREEN CAPTURE section, measuring for `seconds`. Returns what was measured.
CaptureMeasurement ReportCaptureSection(ID3D11Device* device, ID3D11DeviceContext* context, double seconds);

/// Reports an empty line and the frame rate at which a running game reaches the capture, measured for
/// `seconds`.
CaptureMeasurement ReportGameFrameRate(ID3D11Device* device, ID3D11DeviceContext* context, double seconds);

/// Print the lines of each, without the header or the empty line.
void PrintCaptureSection(const CaptureMeasurement& measurement);
void PrintGameFrameRate(const CaptureMeasurement& measurement);
