#include "tools/vistrel_diag/sections/capture/capture_section.h"

#include "tools/vistrel_diag/report/report.h"

double FramesPerSecond(const CaptureMeasurement& measurement) {
    return measurement.seconds > 0.0 ? measurement.new_frames / measurement.seconds : 0.0;
}

void PrintCaptureSection(const CaptureMeasurement& measurement) {
    if (!measurement.ok) {
        Report::Line("Screen capture FAILED: %s", measurement.error.c_str());
        Report::Line("(This is Vistrel's own capture path, so it would fail here too.)");
        return;
    }
    Report::Line("Duplicated      : %ux%u", measurement.width, measurement.height);
    if (measurement.cross_adapter) {
        Report::Line(
            "Captured on     : %s - not the GPU Vistrel renders on, so every frame crosses between the two "
            "through system memory. It works; it costs time.",
            measurement.capture_gpu_name.c_str());
    }
    Report::Line("New frames      : %u in %.2f s  ->  %.1f fps from the desktop", measurement.new_frames,
                 measurement.seconds, FramesPerSecond(measurement));
    Report::Line("(An idle desktop, so this is not a game's rate - part 2 measures that.)");
    if (measurement.pixels.empty()) {
        Report::Line(
            "NOTE: could not read a frame back, so the benchmark uses a synthetic pattern instead of your "
            "real screen content.");
    }
}

void PrintGameFrameRate(const CaptureMeasurement& measurement) {
    if (!measurement.ok) {
        Report::Line("Screen capture FAILED during part 2: %s", measurement.error.c_str());
        Report::Line("(Vistrel's monitor capture would fail here for the same reason.)");
        return;
    }
    Report::Line("Frame rate reaching the capture: %.1f fps (%u frames in %.2f s at %ux%u)",
                 FramesPerSecond(measurement), measurement.new_frames, measurement.seconds, measurement.width,
                 measurement.height);
    Report::Line("This is the rate Vistrel would be fed at - the game's own rate, not the headset's.");
}
