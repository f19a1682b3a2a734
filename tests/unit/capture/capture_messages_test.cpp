#include "capture/capture_messages.h"

#include <gtest/gtest.h>

namespace {

const char* const kDisplay = "\\\\.\\DISPLAY2";

TEST(CaptureMessages, AreTheFixedTexts) {
    EXPECT_STREQ(CaptureMessage::kNoDxgiDevice, "Failed to get DXGIDevice from D3D11Device.");
    EXPECT_STREQ(CaptureMessage::kNoDxgiAdapter, "Failed to get DXGIAdapter.");
    EXPECT_STREQ(CaptureMessage::kNoFactory, "Failed to create a DXGI factory to enumerate displays.");
    EXPECT_STREQ(CaptureMessage::kNoOutput1, "Failed to get IDXGIOutput1.");
    EXPECT_STREQ(CaptureMessage::kNoDisplay,
                 "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
                 "instead.");
    EXPECT_STREQ(kUnnamedRenderGpu, "the GPU Vistrel renders on");
    EXPECT_STREQ(kUnnamedDisplayGpu, "the GPU that drives this display");
}

TEST(DuplicationFailureMessage, HasATextForEachResult) {
    EXPECT_EQ(DuplicationFailureMessage(0x887A0022, "Panel GPU"),
              "This display is already being duplicated by another application. Close OBS display capture, "
              "Parsec, Steam Remote Play or a second copy of Vistrel and press Start again.");
    EXPECT_EQ(
        DuplicationFailureMessage(0x80070005, "Panel GPU"),
        "Screen capture was denied. A UAC prompt or the lock screen owns the desktop right now; dismiss "
        "it and press Start again.");
    EXPECT_EQ(
        DuplicationFailureMessage(0x887A0004, "Panel GPU"),
        "This display cannot be duplicated on Panel GPU. Capture the game window instead, or switch the "
        "laptop to its discrete GPU (MUX switch).");
    EXPECT_EQ(DuplicationFailureMessage(0x80004001, "Panel GPU"),
              "DuplicateOutput failed with HRESULT 0x80004001.");
    EXPECT_EQ(DuplicationFailureMessage(0xABC, "Panel GPU"),
              "DuplicateOutput failed with HRESULT 0x00000ABC.");
}

TEST(NotAttachedMessage, ListsTheAttachedDisplays) {
    EXPECT_EQ(
        NotAttachedMessage(kDisplay, "\\\\.\\DISPLAY1, \\\\.\\DISPLAY3"),
        "Monitor \\\\.\\DISPLAY2 is not attached to any GPU any more. Pick another source; this machine "
        "currently has \\\\.\\DISPLAY1, \\\\.\\DISPLAY3.");
    EXPECT_EQ(
        NotAttachedMessage(kDisplay, ""),
        "Monitor \\\\.\\DISPLAY2 is not attached to any GPU any more. Pick another source; this machine "
        "currently has no displays at all.");
}

TEST(SecondDeviceFailureMessage, NamesBothGpusAndTheResult) {
    EXPECT_EQ(
        SecondDeviceFailureMessage(kDisplay, "Panel GPU", "Fast GPU", 0x887A0005),
        "Monitor \\\\.\\DISPLAY2 is driven by Panel GPU while Vistrel renders on Fast GPU, and no D3D11 "
        "device could be created on the first to read it (HRESULT 0x887A0005). Capture the game window "
        "instead, or switch the laptop to its discrete GPU (MUX switch).");
}

TEST(SecondDeviceFailureMessage, LeavesAnUnnamedSourceEmpty) {
    EXPECT_EQ(
        SecondDeviceFailureMessage("", "Panel GPU", "Fast GPU", 0x887A0005),
        "Monitor  is driven by Panel GPU while Vistrel renders on Fast GPU, and no D3D11 device could be "
        "created on the first to read it (HRESULT 0x887A0005). Capture the game window instead, or "
        "switch the laptop to its discrete GPU (MUX switch).");
}

TEST(CrossAdapterMessage, NamesBothGpus) {
    EXPECT_EQ(CrossAdapterMessage(kDisplay, "Panel GPU", "Fast GPU"),
              "\\\\.\\DISPLAY2 is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on the "
              "display's GPU and carrying each frame across.");
    EXPECT_EQ(CrossAdapterMessage("", "Panel GPU", "Fast GPU"),
              " is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on the display's GPU and "
              "carrying each frame across.");
}

TEST(CarryFailureMessage, NamesBothGpus) {
    EXPECT_EQ(CarryFailureMessage("Panel GPU", "Fast GPU"),
              "Could not carry the frame from Panel GPU to Fast GPU; the picture will stop updating.");
}

TEST(CaptureMessages, DoNotUseOutsideTextAsAFormat) {
    EXPECT_EQ(CarryFailureMessage("%s%n", "100 %"),
              "Could not carry the frame from %s%n to 100 %; the picture will stop updating.");
    testing::internal::CaptureStderr();
    WriteCaptureMessage("50 % of %s %n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[ScreenCaptureDxgi] 50 % of %s %n\n");
}

TEST(WriteCaptureMessage, WritesOneLineToTheErrorStreamOnly) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    WriteCaptureMessage(CaptureMessage::kAccessLost);
    WriteCaptureMessage(CaptureMessage::kRestored);
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "[ScreenCaptureDxgi] Access lost. Reinitializing...\n[ScreenCaptureDxgi] Duplication restored.\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
