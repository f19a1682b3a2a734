#include "tools/vistrel_diag/sections/capture/capture_section.h"
#include "tools/vistrel_diag/report/report.h"

CaptureMeasurement ReportCaptureSection(ID3D11Device* device, ID3D11DeviceContext* context, double seconds) {
    Report::Section("SCREEN CAPTURE");
    CaptureMeasurement measurement = MeasureCaptureRate(device, context, seconds);
    PrintCaptureSection(measurement);
    return measurement;
}

CaptureMeasurement ReportGameFrameRate(ID3D11Device* device, ID3D11DeviceContext* context, double seconds) {
    Report::Line("");
    CaptureMeasurement measurement = MeasureCaptureRate(device, context, seconds);
    PrintGameFrameRate(measurement);
    return measurement;
}
