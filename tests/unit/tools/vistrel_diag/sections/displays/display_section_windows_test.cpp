#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"

// The display devices that this program sees: these functions replace those of Windows, and call the real
// ones while no devices are scripted.
namespace {

struct ScriptedMode {
    DWORD width = 0;
    DWORD height = 0;
    DWORD frequency = 0;
};

struct ScriptedDevice {
    std::wstring name;
    DWORD state = 0;
    std::optional<ScriptedMode> mode;
};

std::optional<std::vector<ScriptedDevice>> scripted_devices;

template <typename Function>
Function RealFunction(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name));
}

BOOL WINAPI FakeEnumDisplayDevicesW(LPCWSTR parent, DWORD index, PDISPLAY_DEVICEW device, DWORD flags) {
    if (!scripted_devices) {
        return RealFunction<decltype(&EnumDisplayDevicesW)>("EnumDisplayDevicesW")(parent, index, device,
                                                                                   flags);
    }
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(device->cb, sizeof(DISPLAY_DEVICEW));
    if (index >= scripted_devices->size()) {
        return FALSE;
    }
    const ScriptedDevice& scripted = (*scripted_devices)[index];
    std::memcpy(device->DeviceName, scripted.name.data(), scripted.name.size() * sizeof(wchar_t));
    device->StateFlags = scripted.state;
    return TRUE;
}

BOOL WINAPI FakeEnumDisplaySettingsW(LPCWSTR name, DWORD which, DEVMODEW* mode) {
    if (!scripted_devices) {
        return RealFunction<decltype(&EnumDisplaySettingsW)>("EnumDisplaySettingsW")(name, which, mode);
    }
    EXPECT_EQ(which, ENUM_CURRENT_SETTINGS);
    EXPECT_EQ(mode->dmSize, 220U);
    EXPECT_EQ(mode->dmDriverExtra, 0U);
    for (const ScriptedDevice& device : *scripted_devices) {
        if (device.name == name && device.mode) {
            mode->dmPelsWidth = device.mode->width;
            mode->dmPelsHeight = device.mode->height;
            mode->dmDisplayFrequency = device.mode->frequency;
            return TRUE;
        }
    }
    return FALSE;
}

}  // namespace

extern "C" {
decltype(&EnumDisplayDevicesW) __imp_EnumDisplayDevicesW = FakeEnumDisplayDevicesW;
decltype(&EnumDisplaySettingsW) __imp_EnumDisplaySettingsW = FakeEnumDisplaySettingsW;
}

namespace {

constexpr DWORD kOnDesktop = 1;
constexpr DWORD kPrimary = 4;
constexpr DWORD kMirror = 8;

const std::string kHeader =
    "\n== DISPLAYS  (this is what the warp resolution comes from) " + std::string(7, '=') + "\n";
const std::string kClosingNote =
    "\n(* = primary. Vistrel captures the primary display unless told otherwise, and warps at exactly that "
    "pixel count.)\n";

class DisplayProbe : public ::testing::Test {
  protected:
    void TearDown() override {
        scripted_devices.reset();
        SetGpuList({});
        SetDisplayList({});
    }

    static std::string Reported() {
        const ReportCapture report;
        ReportDisplaySection();
        return report.Text();
    }

    static GpuInfo Gpu(std::uint32_t index, const char* name, std::vector<std::string> displays) {
        GpuInfo gpu;
        gpu.index = index;
        gpu.name = name;
        gpu.displays = std::move(displays);
        return gpu;
    }
};

TEST_F(DisplayProbe, ReportsAndKeepsTheMonitorsInOrder) {
    scripted_devices = {{L"\\\\.\\DISPLAY1", kOnDesktop, {{1920, 1080, 60}}},
                        {L"\\\\.\\DISPLAY2", kOnDesktop | kPrimary, {{3840, 2160, 144}}}};
    SetGpuList({Gpu(0, "Radeon", {R"(\\.\DISPLAY2)"}), Gpu(1, "GeForce", {R"(\\.\DISPLAY1)"})});
    EXPECT_EQ(Reported(), kHeader +
                              "  \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU 1 (GeForce)\n"
                              "* \\\\.\\DISPLAY2   : 3840x2160 @ 144 Hz  -> driven by GPU 0 (Radeon)\n" +
                              kClosingNote);
    ASSERT_EQ(DisplayList().size(), 2U);
    EXPECT_EQ(DisplayList()[0].name, R"(\\.\DISPLAY1)");
    EXPECT_EQ(DisplayList()[0].width, 1920);
    EXPECT_EQ(DisplayList()[0].height, 1080);
    EXPECT_EQ(DisplayList()[0].refresh_hz, 60);
    EXPECT_FALSE(DisplayList()[0].primary);
    EXPECT_EQ(DisplayList()[0].gpu, 1);
    EXPECT_TRUE(DisplayList()[1].primary);
    EXPECT_EQ(DisplayList()[1].gpu, 0);
}

TEST_F(DisplayProbe, SkipsDevicesThatAreNotPartOfTheDesktop) {
    scripted_devices = {{L"\\\\.\\DISPLAY1", 0, {{1920, 1080, 60}}},
                        {L"\\\\.\\DISPLAYV1", kMirror, {{1024, 768, 1}}},
                        {L"\\\\.\\DISPLAY2", kPrimary, {{1920, 1080, 60}}},
                        {L"\\\\.\\DISPLAY3", kOnDesktop | kPrimary, {{1280, 1024, 75}}}};
    EXPECT_EQ(
        Reported(),
        kHeader + "* \\\\.\\DISPLAY3   : 1280x1024 @ 75 Hz  -> driven by GPU -1 (UNKNOWN)\n" + kClosingNote);
    EXPECT_EQ(DisplayList().size(), 1U);
}

TEST_F(DisplayProbe, ListsAMirrorDeviceThatIsPartOfTheDesktop) {
    scripted_devices = {{L"\\\\.\\DISPLAYV1", kOnDesktop | kMirror, {{1024, 768, 1}}}};
    EXPECT_EQ(Reported(), kHeader + "  \\\\.\\DISPLAYV1  : 1024x768 @ 1 Hz  -> driven by GPU -1 (UNKNOWN)\n" +
                              kClosingNote);
}

TEST_F(DisplayProbe, SkipsADeviceWhoseModeCannotBeRead) {
    scripted_devices = {{L"\\\\.\\DISPLAY1", kOnDesktop | kPrimary, std::nullopt},
                        {L"\\\\.\\DISPLAY2", kOnDesktop, {{1080, 1920, 60}}}};
    EXPECT_EQ(
        Reported(),
        kHeader + "  \\\\.\\DISPLAY2   : 1080x1920 @ 60 Hz  -> driven by GPU -1 (UNKNOWN)\n" + kClosingNote);
}

TEST_F(DisplayProbe, NamesNoGpuForADisplayOfAnAdapterThatIsNotListed) {
    scripted_devices = {{L"\\\\.\\DISPLAY1", kOnDesktop | kPrimary, {{1920, 1080, 60}}},
                        {L"\\\\.\\DISPLAY2", kOnDesktop, {{1920, 1080, 60}}}};
    SetGpuList({Gpu(1, "second adapter", {R"(\\.\DISPLAY2)"})});
    EXPECT_EQ(Reported(),
              kHeader +
                  "* \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU -1 (UNKNOWN)\n"
                  "  \\\\.\\DISPLAY2   : 1920x1080 @ 60 Hz  -> driven by GPU 0 (second adapter)\n" +
                  kClosingNote);
}

TEST_F(DisplayProbe, KeepsTheTextAroundAnUnpairedSurrogateInAName) {
    scripted_devices = {{L"\xDE00 DISPLAY", kOnDesktop, {{1920, 1080, 60}}}};
    SetGpuList({Gpu(0, "Radeon", {"\xEF\xBF\xBD DISPLAY"})});
    EXPECT_EQ(Reported(), kHeader +
                              "  \xEF\xBF\xBD DISPLAY    : 1920x1080 @ 60 Hz  -> driven by GPU 0 (Radeon)\n" +
                              kClosingNote);
}

TEST_F(DisplayProbe, PrintsOnlyTheNoteWithoutDevices) {
    scripted_devices.emplace();
    EXPECT_EQ(Reported(), kHeader + kClosingNote);
    EXPECT_TRUE(DisplayList().empty());
}

TEST_F(DisplayProbe, ReadsANameThatFillsItsField) {
    scripted_devices = {{std::wstring(32, L'N'), kOnDesktop, std::nullopt}};
    EXPECT_TRUE(ProbeDisplays().empty());  // Its mode cannot be queried; nothing is read past the field.
}

TEST_F(DisplayProbe, FindsTheRealPrimaryDisplay) {
    int primaries = 0;
    for (const DisplayInfo& display : ProbeDisplays()) {
        if (display.primary) {
            ++primaries;
            EXPECT_EQ(display.width, GetSystemMetrics(SM_CXSCREEN));
            EXPECT_EQ(display.height, GetSystemMetrics(SM_CYSCREEN));
            EXPECT_EQ(display.name.substr(0, 11), R"(\\.\DISPLAY)");
            EXPECT_EQ(display.gpu, -1);
        }
    }
    EXPECT_EQ(primaries, 1);
}

}  // namespace
