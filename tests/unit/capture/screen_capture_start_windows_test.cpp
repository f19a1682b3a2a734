// Starting the screen capture: which monitor, on which device, and what is said when it cannot be.
#include "tests/unit/capture/screen_capture_test_base.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ScreenCaptureStart : public ScreenCaptureTestBase {};

TEST_F(ScreenCaptureStart, OnTheRenderGpu) {
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start()); }), "");
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->RenderGpuName(), "Fast GPU");
    EXPECT_EQ(capture_->DisplayGpuName(), "Fast GPU");
    EXPECT_EQ(capture_->LastError(), "");
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(capture_->LastFrameAgeMs(), 0.0F);
    EXPECT_THAT(Machine().devices_made, IsEmpty());
}

TEST_F(ScreenCaptureStart, NoDevice) {
    EXPECT_EQ(ErrorsOf([&] { EXPECT_FALSE(capture_->Initialize(nullptr, "")); }),
              "[ScreenCaptureDxgi] Failed to get DXGIDevice from D3D11Device.\n");
    EXPECT_EQ(capture_->LastError(), "Failed to get DXGIDevice from D3D11Device.");
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
}

TEST_F(ScreenCaptureStart, DeviceWithoutAdapter) {
    Machine().get_adapter_result = E_FAIL;
    EXPECT_EQ(FailureOf(), "Failed to get DXGIAdapter.");
}

TEST_F(ScreenCaptureStart, AdapterWithoutDescription) {
    Machine().render_describe_result = DXGI_ERROR_DEVICE_REMOVED;
    EXPECT_EQ(FailureOf(), "Failed to get DXGIAdapter.");
}

TEST_F(ScreenCaptureStart, NoFactory) {
    Machine().factory_result = E_OUTOFMEMORY;
    EXPECT_EQ(FailureOf(), "Failed to create a DXGI factory to enumerate displays.");
}

TEST_F(ScreenCaptureStart, NoDisplayAtAll) {
    Machine().adapters[0].outputs.clear();
    EXPECT_EQ(FailureOf(),
              "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
              "instead.");
    EXPECT_EQ(
        FailureOf("\\\\.\\DISPLAY1"),
        "Monitor \\\\.\\DISPLAY1 is not attached to any GPU any more. Pick another source; this machine "
        "currently has no displays at all.");
    EXPECT_EQ(Machine().duplications, 0);
}

TEST_F(ScreenCaptureStart, NamedDisplayIsGone) {
    Machine().adapters = {{.name = L"Panel GPU",
                           .luid = {.LowPart = 20, .HighPart = 0},
                           .outputs = {{.name = L"\\\\.\\DISPLAY5"}}},
                          {.name = L"Fast GPU",
                           .luid = {.LowPart = 10, .HighPart = 0},
                           .outputs = {{.name = L"\\\\.\\DISPLAY1"}, {.name = L"\\\\.\\DISPLAY2"}}}};
    EXPECT_EQ(
        FailureOf("\\\\.\\display2"),
        "Monitor \\\\.\\display2 is not attached to any GPU any more. Pick another source; this machine "
        "currently has \\\\.\\DISPLAY5, \\\\.\\DISPLAY1, \\\\.\\DISPLAY2.");
}

TEST_F(ScreenCaptureStart, AnswersOfDuplicateOutput) {
    HRESULT& answer = Machine().adapters[0].outputs[0].duplicate_result;
    answer = DXGI_ERROR_NOT_CURRENTLY_AVAILABLE;
    EXPECT_EQ(FailureOf(),
              "This display is already being duplicated by another application. Close OBS display capture, "
              "Parsec, Steam Remote Play or a second copy of Vistrel and press Start again.");
    answer = E_ACCESSDENIED;
    EXPECT_EQ(
        FailureOf(),
        "Screen capture was denied. A UAC prompt or the lock screen owns the desktop right now; dismiss "
        "it and press Start again.");
    answer = DXGI_ERROR_UNSUPPORTED;
    EXPECT_EQ(FailureOf(),
              "This display cannot be duplicated on Fast GPU. Capture the game window instead, or switch the "
              "laptop to its discrete GPU (MUX switch).");
    answer = E_NOTIMPL;
    EXPECT_EQ(FailureOf(), "DuplicateOutput failed with HRESULT 0x80004001.");
    EXPECT_EQ(Machine().duplications, 4);
}

TEST_F(ScreenCaptureStart, AFailedStartIsNotRetried) {
    Machine().adapters[0].outputs[0].duplicate_result = E_ACCESSDENIED;
    FailureOf();
    Machine().adapters[0].outputs[0].duplicate_result = S_OK;
    Machine().tick_ms += 10'000;
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(Machine().duplications, 1);
    EXPECT_TRUE(Start()) << "but may be started again";
}

TEST_F(ScreenCaptureStart, OutputWithoutDuplication) {
    Machine().adapters[0].outputs[0].has_output1 = false;
    EXPECT_EQ(FailureOf(), "Failed to get IDXGIOutput1.");
}

TEST_F(ScreenCaptureStart, FirstOutputOfTheRenderGpu) {
    Machine().adapters = {
        {.name = L"Panel GPU", .luid = {.LowPart = 20, .HighPart = 0}, .outputs = {{.name = L"A"}}},
        {.name = L"Fast GPU",
         .luid = {.LowPart = 10, .HighPart = 0},
         .outputs = {{.name = L"B"}, {.name = L"C"}}}};
    Machine().render_adapter = 1;
    UseRenderDevice();
    EXPECT_TRUE(Start());
    EXPECT_THAT(Machine().duplicated, ElementsAre(L"B"));
    EXPECT_FALSE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, BothHalvesOfTheLuidTellGpusApart) {
    Machine().adapters = {
        {.name = L"Low half alike", .luid = {.LowPart = 10, .HighPart = 2}, .outputs = {{.name = L"A"}}},
        {.name = L"High half alike", .luid = {.LowPart = 11, .HighPart = 1}, .outputs = {{.name = L"B"}}},
        {.name = L"Fast GPU", .luid = {.LowPart = 10, .HighPart = 1}, .outputs = {{.name = L"C"}}}};
    Machine().render_adapter = 2;
    UseRenderDevice();
    EXPECT_TRUE(Start());
    EXPECT_THAT(Machine().duplicated, ElementsAre(L"C"));
}

TEST_F(ScreenCaptureStart, NamedOutputOfAnotherGpu) {
    Machine().adapters = {
        {.name = L"Fast GPU", .luid = {.LowPart = 10, .HighPart = 0}, .outputs = {{.name = L"A"}}},
        {.name = L"Panel GPU", .luid = {.LowPart = 20, .HighPart = 0}, .outputs = {{.name = L"Ü"}}}};
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start("Ü")); }),
              "[ScreenCaptureDxgi] Ü is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on "
              "the display's GPU and carrying each frame across.\n");
    EXPECT_TRUE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->DisplayGpuName(), "Panel GPU");
    EXPECT_EQ(capture_->RenderGpuName(), "Fast GPU");
    EXPECT_THAT(Machine().duplicated, ElementsAre(L"Ü"));
    EXPECT_THAT(Machine().devices_made, ElementsAre(L"Panel GPU"));
}

TEST_F(ScreenCaptureStart, FirstOutputElsewhereWhenTheRenderGpuHasNone) {
    UseHybridLaptop();
    EXPECT_EQ(ErrorsOf([&] { EXPECT_TRUE(Start()); }),
              "[ScreenCaptureDxgi]  is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on "
              "the display's GPU and carrying each frame across.\n");
    EXPECT_TRUE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, WhatCannotBeDescribedIsSkipped) {
    Machine().adapters = {{.name = L"Broken",
                           .luid = {.LowPart = 10, .HighPart = 0},
                           .outputs = {{.name = L"A"}},
                           .describe_result = E_FAIL},
                          {.name = L"Fast GPU",
                           .luid = {.LowPart = 10, .HighPart = 0},
                           .outputs = {{.name = L"B", .describe_result = E_FAIL}, {.name = L"C"}}}};
    Machine().render_adapter = 1;
    UseRenderDevice();
    EXPECT_TRUE(Start());
    EXPECT_THAT(Machine().duplicated, ElementsAre(L"C"));
    EXPECT_EQ(
        FailureOf("D"),
        "Monitor D is not attached to any GPU any more. Pick another source; this machine currently has "
        "C.");
}

TEST_F(ScreenCaptureStart, EnumerationsThatEndInAnErrorEnd) {
    Machine().adapters[0].outputs.clear();
    Machine().adapters[0].end_of_outputs = DXGI_ERROR_NOT_CURRENTLY_AVAILABLE;
    Machine().end_of_adapters = DXGI_ERROR_DEVICE_REMOVED;
    EXPECT_EQ(FailureOf(),
              "No display is attached to any GPU, so there is nothing to capture. Capture the game window "
              "instead.");
    EXPECT_EQ(Machine().enumerations, 3);
}

TEST_F(ScreenCaptureStart, StandInsForEmptyNames) {
    UseHybridLaptop();
    Machine().adapters[0].name = L"";
    Machine().adapters[1].name = L"";
    EXPECT_EQ(
        ErrorsOf([&] { EXPECT_TRUE(Start("\\\\.\\DISPLAY1")); }),
        "[ScreenCaptureDxgi] \\\\.\\DISPLAY1 is driven by the GPU that drives this display while Vistrel "
        "renders on the GPU Vistrel renders on; capturing on the display's GPU and carrying each frame "
        "across.\n");
    EXPECT_EQ(capture_->DisplayGpuName(), "the GPU that drives this display");
    EXPECT_EQ(capture_->RenderGpuName(), "the GPU Vistrel renders on");
}

TEST_F(ScreenCaptureStart, NoSecondDevice) {
    UseHybridLaptop();
    Machine().adapters[0].create_device_result = DXGI_ERROR_DEVICE_REMOVED;
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
    EXPECT_EQ(Machine().duplications, 0);
}

TEST_F(ScreenCaptureStart, UnsupportedNamesTheDisplaysGpu) {
    UseHybridLaptop();
    Machine().adapters[0].outputs[0].duplicate_result = DXGI_ERROR_UNSUPPORTED;
    ErrorsOf([&] { EXPECT_FALSE(Start()); });
    EXPECT_EQ(
        capture_->LastError(),
        "This display cannot be duplicated on Panel GPU. Capture the game window instead, or switch the "
        "laptop to its discrete GPU (MUX switch).");
}

TEST_F(ScreenCaptureStart, ShutdownReturnsToTheBeginning) {
    UseHybridLaptop();
    ErrorsOf([&] { EXPECT_TRUE(Start()); });
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    EXPECT_EQ(Machine().idle_releases, 0);
    capture_->Shutdown();
    EXPECT_EQ(Machine().idle_releases, 1);
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->DisplayGpuName(), "");
    EXPECT_EQ(capture_->RenderGpuName(), "");
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(LiveFakeObjects(), 0);
    device_.Reset();
    EXPECT_FALSE(DevicesAreStillReferenced());
    UseRenderDevice();
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    capture_->Shutdown();
    EXPECT_EQ(Machine().idle_releases, 1) << "there is no duplication any more";
    ErrorsOf([&] { EXPECT_TRUE(Start()); });
    EXPECT_TRUE(capture_->IsCrossAdapter());
}

TEST_F(ScreenCaptureStart, StartedAgainWhileRunning) {
    EXPECT_TRUE(Start());
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    EXPECT_TRUE(Start()) << "the old duplication must be gone by then";
    EXPECT_EQ(Machine().duplications, 2);
}

TEST_F(ScreenCaptureStart, StartedAgainOnAnotherDevice) {
    EXPECT_TRUE(Start());
    Push({});
    const View before = capture_->GetFrame();
    const Microsoft::WRL::ComPtr<ID3D11Device> other = AnotherRenderDevice();
    EXPECT_TRUE(capture_->Initialize(other.Get(), ""));
    Push({.seed = 2});
    const View after = capture_->GetFrame();
    ASSERT_NE(after.Get(), nullptr);
    Microsoft::WRL::ComPtr<ID3D11Device> owner;
    after->GetDevice(&owner);
    EXPECT_EQ(owner.Get(), other.Get());
    EXPECT_EQ(PixelsOf(after.Get()), FakePixels({.seed = 2}));
    EXPECT_EQ(PixelsOf(before.Get()), FakePixels({}));
}

TEST_F(ScreenCaptureStart, StartedAgainInVainStandsStill) {
    EXPECT_TRUE(Start());
    Push({});
    EXPECT_NE(capture_->GetFrame().Get(), nullptr);
    Machine().adapters[0].outputs.clear();
    FailureOf();
    Machine().adapters[0].outputs = {{.name = L"\\\\.\\DISPLAY1"}};
    Push({.seed = 2});
    capture_->GetFrame();
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(Machine().duplications, 1);
}

}  // namespace
