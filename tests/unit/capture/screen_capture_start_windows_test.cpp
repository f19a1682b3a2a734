// Starting the screen capture: which monitor, on which device, and the errors reported.
#include "tests/unit/capture/screen_capture_test_base.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ScreenCaptureStart : public ScreenCaptureTestBase {};

TEST_F(ScreenCaptureStart, SucceedsOnTheRenderGpu) {
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start()); }), "");
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->RenderGpuName(), "Fast GPU");
    EXPECT_EQ(capture_->DisplayGpuName(), "Fast GPU");
    EXPECT_EQ(capture_->LastError(), "");
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(capture_->LastFrameAgeMs(), 0.0F);
    EXPECT_THAT(Desktop().devices_made, IsEmpty());
}

TEST_F(ScreenCaptureStart, FailsWithoutADevice) {
    EXPECT_EQ(ErrorsOf([&] { EXPECT_FALSE(capture_->Initialize(nullptr, "")); }),
              "[ScreenCaptureDxgi] Failed to get DXGIDevice from D3D11Device.\n");
    EXPECT_EQ(capture_->LastError(), "Failed to get DXGIDevice from D3D11Device.");
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
}

TEST_F(ScreenCaptureStart, FailsWhenTheDeviceHasNoAdapter) {
    Desktop().get_adapter_result = E_FAIL;
    EXPECT_EQ(FailureOf(), "Failed to get DXGIAdapter.");
}

TEST_F(ScreenCaptureStart, FailsWhenTheAdapterHasNoDescription) {
    Adapter(0).description_fails = DXGI_ERROR_DEVICE_REMOVED;
    EXPECT_EQ(FailureOf(), "Failed to get DXGIAdapter.");
}

TEST_F(ScreenCaptureStart, FailsWithoutAFactory) {
    lab::TheMachine().scenario.factory_fails = E_OUTOFMEMORY;
    EXPECT_EQ(FailureOf(), "Failed to create a DXGI factory to enumerate displays.");
}

TEST_F(ScreenCaptureStart, FailsWithoutADisplay) {
    Output(0).unplugged = true;
    EXPECT_EQ(FailureOf(),
              "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
              "instead.");
    EXPECT_EQ(
        FailureOf("\\\\.\\DISPLAY1"),
        "Monitor \\\\.\\DISPLAY1 is not attached to any GPU any more. Pick another source; this machine "
        "currently has no displays at all.");
    EXPECT_EQ(DuplicatedOutputs().size(), 0U);
}

TEST_F(ScreenCaptureStart, FailsWhenTheNamedDisplayIsGone) {
    UseMachine(R"(
adapter Panel GPU
  luid 00000000:00000014
  output \\.\DISPLAY5
adapter Fast GPU
  luid 00000000:0000000A
  output \\.\DISPLAY1
  output \\.\DISPLAY2
)");
    EXPECT_EQ(
        FailureOf("\\\\.\\display2"),
        "Monitor \\\\.\\display2 is not attached to any GPU any more. Pick another source; this machine "
        "currently has \\\\.\\DISPLAY5, \\\\.\\DISPLAY1, \\\\.\\DISPLAY2.");
}

TEST_F(ScreenCaptureStart, ReportsEachFailureOfDuplicateOutput) {
    RefuseDuplication(0, DXGI_ERROR_NOT_CURRENTLY_AVAILABLE);
    EXPECT_EQ(FailureOf(),
              "This display is already being duplicated by another application. Close OBS display capture, "
              "Parsec, Steam Remote Play or a second copy of Vistrel and press Start again.");
    RefuseDuplication(0, E_ACCESSDENIED);
    EXPECT_EQ(
        FailureOf(),
        "Screen capture was denied. A UAC prompt or the lock screen owns the desktop right now; dismiss "
        "it and press Start again.");
    RefuseDuplication(0, DXGI_ERROR_UNSUPPORTED);
    EXPECT_EQ(FailureOf(),
              "This display cannot be duplicated on Fast GPU. Capture the game window instead, or switch the "
              "laptop to its discrete GPU (MUX switch).");
    RefuseDuplication(0, E_NOTIMPL);
    EXPECT_EQ(FailureOf(), "DuplicateOutput failed with HRESULT 0x80004001.");
    EXPECT_EQ(DuplicatedOutputs().size(), 4U);
}

TEST_F(ScreenCaptureStart, AFailedStartIsNotRetried) {
    RefuseDuplication(0, E_ACCESSDENIED);
    FailureOf();
    RefuseDuplication(0, S_OK);
    PassMilliseconds(10'000);
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(DuplicatedOutputs().size(), 1U);
    EXPECT_TRUE(Start()) << "but may be started again";
}

TEST_F(ScreenCaptureStart, FailsForAnOutputWithoutDuplication) {
    lab::TheMachine().scenario.outputs[0].without_output1 = true;
    EXPECT_EQ(FailureOf(), "Failed to get IDXGIOutput1.");
}

TEST_F(ScreenCaptureStart, TakesTheFirstOutputOfTheRenderGpu) {
    UseMachine(R"(
adapter Panel GPU
  luid 00000000:00000014
  output A
adapter Fast GPU
  luid 00000000:0000000A
  output B
  output C
)");
    UseRenderDevice(1);
    EXPECT_TRUE(Start());
    EXPECT_THAT(DuplicatedOutputs(), ElementsAre("B"));
    EXPECT_FALSE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, ComparesBothHalvesOfTheLuid) {
    UseMachine(R"(
adapter Low half alike
  luid 00000002:0000000A
  output A
adapter High half alike
  luid 00000001:0000000B
  output B
adapter Fast GPU
  luid 00000001:0000000A
  output C
)");
    UseRenderDevice(2);
    EXPECT_TRUE(Start());
    EXPECT_THAT(DuplicatedOutputs(), ElementsAre("C"));
}

TEST_F(ScreenCaptureStart, TakesANamedOutputOfAnotherGpu) {
    UseMachine(R"(
adapter Fast GPU
  luid 00000000:0000000A
  output A
adapter Panel GPU
  luid 00000000:00000014
  output Ü
)");
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start("Ü")); }),
              "[ScreenCaptureDxgi] Ü is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on "
              "the display's GPU and carrying each frame across.\n");
    EXPECT_TRUE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->DisplayGpuName(), "Panel GPU");
    EXPECT_EQ(capture_->RenderGpuName(), "Fast GPU");
    EXPECT_THAT(DuplicatedOutputs(), ElementsAre("Ü"));
    EXPECT_THAT(Desktop().devices_made, ElementsAre("Panel GPU"));
}

TEST_F(ScreenCaptureStart, TakesTheFirstOutputOfAnyGpuWhenTheRenderGpuHasNone) {
    UseHybridLaptop();
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start()); }),
              "[ScreenCaptureDxgi]  is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on "
              "the display's GPU and carrying each frame across.\n");
    EXPECT_TRUE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, SkipsAdaptersAndOutputsWithoutADescription) {
    UseMachine(R"(
adapter Broken
  luid 00000000:0000000A
  description fails 0x80004005
  output A
adapter Fast GPU
  luid 00000000:0000000A
  output B
    description fails 0x80004005
  output C
)");
    UseRenderDevice(1);
    EXPECT_TRUE(Start());
    EXPECT_THAT(DuplicatedOutputs(), ElementsAre("C"));
    EXPECT_EQ(
        FailureOf("D"),
        "Monitor D is not attached to any GPU any more. Pick another source; this machine currently has "
        "C.");
}

TEST_F(ScreenCaptureStart, AnErrorEndsAnEnumeration) {
    Output(0).unplugged = true;
    Adapter(0).outputs_end_with = DXGI_ERROR_NOT_CURRENTLY_AVAILABLE;
    lab::TheMachine().scenario.adapters_end_with = DXGI_ERROR_DEVICE_REMOVED;
    EXPECT_EQ(FailureOf(),
              "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
              "instead.");
    EXPECT_EQ(lab::Counts().enumerations, 3);
}

TEST_F(ScreenCaptureStart, ReplacesEmptyNames) {
    UseHybridLaptop();
    Adapter(0).name.clear();
    Adapter(1).name.clear();
    EXPECT_EQ(
        ErrorsOf([&] { EXPECT_TRUE(Start("\\\\.\\DISPLAY1")); }),
        "[ScreenCaptureDxgi] \\\\.\\DISPLAY1 is driven by the GPU that drives this display while Vistrel "
        "renders on the GPU Vistrel renders on; capturing on the display's GPU and carrying each frame "
        "across.\n");
    EXPECT_EQ(capture_->DisplayGpuName(), "the GPU that drives this display");
    EXPECT_EQ(capture_->RenderGpuName(), "the GPU Vistrel renders on");
}

TEST_F(ScreenCaptureStart, FailsWithoutASecondDevice) {
    UseHybridLaptop();
    Adapter(0).device_fails = DXGI_ERROR_DEVICE_REMOVED;
    EXPECT_EQ(
        FailureOf("\\\\.\\DISPLAY1"),
        "Monitor \\\\.\\DISPLAY1 is driven by Panel GPU while Vistrel renders on Fast GPU, and no D3D11 "
        "device could be created on the first to read it (HRESULT 0x887A0005). Capture the game window "
        "instead, or switch the laptop to its discrete GPU (MUX switch).");
    EXPECT_EQ(
        FailureOf(""),
        "Monitor  is driven by Panel GPU while Vistrel renders on Fast GPU, and no D3D11 device could be "
        "created on the first to read it (HRESULT 0x887A0005). Capture the game window instead, or "
        "switch the laptop to its discrete GPU (MUX switch).");
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(DuplicatedOutputs().size(), 0U);
}

TEST_F(ScreenCaptureStart, UnsupportedNamesTheDisplaysGpu) {
    UseHybridLaptop();
    RefuseDuplication(0, DXGI_ERROR_UNSUPPORTED);
    ErrorsOf([&] { EXPECT_FALSE(Start()); });
    EXPECT_EQ(
        capture_->LastError(),
        "This display cannot be duplicated on Panel GPU. Capture the game window instead, or switch the "
        "laptop to its discrete GPU (MUX switch).");
}

TEST_F(ScreenCaptureStart, ShutdownResetsEverything) {
    UseHybridLaptop();
    ErrorsOf([&] { EXPECT_TRUE(Start()); });
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    EXPECT_EQ(lab::Counts().releases_without_frame, 0);
    capture_->Shutdown();
    EXPECT_EQ(lab::Counts().releases_without_frame, 1);
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->DisplayGpuName(), "");
    EXPECT_EQ(capture_->RenderGpuName(), "");
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(LiveDxgiObjects(), 0);
    device_.Reset();
    EXPECT_FALSE(DevicesAreStillReferenced());
    UseRenderDevice(1);
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    capture_->Shutdown();
    EXPECT_EQ(lab::Counts().releases_without_frame, 1) << "there is no duplication any more";
    ErrorsOf([&] { EXPECT_TRUE(Start()); });
    EXPECT_TRUE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, RestartsWhileRunning) {
    EXPECT_TRUE(Start());
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    EXPECT_TRUE(Start()) << "the old duplication must be gone by then";
    EXPECT_EQ(DuplicatedOutputs().size(), 2U);
}

TEST_F(ScreenCaptureStart, RestartsOnAnotherDevice) {
    EXPECT_TRUE(Start());
    Push({});
    const View before = capture_->GetFrame();
    const Microsoft::WRL::ComPtr<ID3D11Device> other = AnotherRenderDevice(0);
    EXPECT_TRUE(capture_->Initialize(other.Get(), ""));
    Push({.seed = 2});
    const View after = capture_->GetFrame();
    ASSERT_NE(after.Get(), nullptr);
    Microsoft::WRL::ComPtr<ID3D11Device> owner;
    after->GetDevice(&owner);
    EXPECT_EQ(owner.Get(), other.Get());
    EXPECT_EQ(PixelsOf(after.Get()), ScriptedPixels({.seed = 2}));
    EXPECT_EQ(PixelsOf(before.Get()), ScriptedPixels({}));
}

TEST_F(ScreenCaptureStart, AFailedRestartStopsTheCapture) {
    EXPECT_TRUE(Start());
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    Output(0).unplugged = true;
    FailureOf();
    Output(0).unplugged = false;
    Push({.seed = 2});
    capture_->GetFrame();
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(DuplicatedOutputs().size(), 1U);
}

}  // namespace
