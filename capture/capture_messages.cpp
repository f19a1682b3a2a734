#include "capture/capture_messages.h"

#include <cstdio>

#include "platform/format.h"

namespace {

constexpr const char* kMuxAdvice =
    "Capture the game window instead, or switch the laptop to its discrete GPU (MUX switch).";

/// "Monitor X is driven by Y while Vistrel renders on Z", without the first word.
std::string TwoGpus(std::string_view source_name, std::string_view display_gpu, std::string_view render_gpu) {
    std::string text(source_name);
    text.append(" is driven by ").append(display_gpu);
    text.append(" while Vistrel renders on ").append(render_gpu);
    return text;
}

}  // namespace

std::string DuplicationFailureMessage(std::uint32_t result, std::string_view display_gpu) {
    switch (result) {
        case DuplicationResult::kNotCurrentlyAvailable:
            return "This display is already being duplicated by another application. Close OBS display "
                   "capture, Parsec, Steam Remote Play or a second copy of Vistrel and press Start again.";
        case DuplicationResult::kAccessDenied:
            return "Screen capture was denied. A UAC prompt or the lock screen owns the desktop right now; "
                   "dismiss it and press Start again.";
        case DuplicationResult::kUnsupported: {
            std::string text = "This display cannot be duplicated on ";
            text.append(display_gpu).append(". ").append(kMuxAdvice);
            return text;
        }
        default:
            return FormatText("DuplicateOutput failed with HRESULT 0x%08X.", result);
    }
}

std::string NotAttachedMessage(std::string_view source_name, std::string_view displays) {
    std::string text = "Monitor ";
    text.append(source_name);
    text.append(" is not attached to any GPU any more. Pick another source; this machine currently has ");
    text.append(displays.empty() ? "no displays at all" : displays).append(".");
    return text;
}

std::string SecondDeviceFailureMessage(std::string_view source_name, std::string_view display_gpu,
                                       std::string_view render_gpu, std::uint32_t result) {
    return "Monitor " + TwoGpus(source_name, display_gpu, render_gpu) +
           FormatText(", and no D3D11 device could be created on the first to read it (HRESULT 0x%08X). ",
                      result) +
           kMuxAdvice;
}

std::string CrossAdapterMessage(std::string_view source_name, std::string_view display_gpu,
                                std::string_view render_gpu) {
    return TwoGpus(source_name, display_gpu, render_gpu) +
           "; capturing on the display's GPU and carrying each frame across.";
}

std::string CarryFailureMessage(std::string_view display_gpu, std::string_view render_gpu) {
    std::string text = "Could not carry the frame from ";
    text.append(display_gpu).append(" to ").append(render_gpu);
    text.append("; the picture will stop updating.");
    return text;
}

void WriteCaptureMessage(std::string_view text) {
    std::string line = "[ScreenCaptureDxgi] ";
    line.append(text).append("\n");
    // One write, so that lines from several threads do not mix.
    std::fwrite(line.data(), 1, line.size(), stderr);
}
