// Real registry values, in a test's own key that replaces the current user's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const wchar_t* kPreferencesPath = L"Software\\Microsoft\\DirectX\\UserGpuPreferences";

class GpuOverrideProbe : public ::testing::Test {
  protected:
    void SetUp() override {
        root_path_ = L"Software\\vistrel_diag_test_" + std::to_wstring(GetCurrentProcessId());
        RegDeleteTreeW(HKEY_CURRENT_USER, root_path_.c_str());  // Left by a test that was killed.
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, root_path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                  nullptr, &root_, nullptr),
                  ERROR_SUCCESS);
        ASSERT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, root_), ERROR_SUCCESS);
    }

    void TearDown() override {
        if (preferences_ != nullptr) {
            RegCloseKey(preferences_);
        }
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(root_);
        RegDeleteTreeW(HKEY_CURRENT_USER, root_path_.c_str());
    }

    void MakeKey() {
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPreferencesPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &preferences_, nullptr),
                  ERROR_SUCCESS);
    }

    void SetBytes(const std::wstring& name, DWORD type, const std::vector<std::uint8_t>& data) {
        ASSERT_EQ(
            RegSetValueExW(preferences_, name.c_str(), 0, type, data.data(), static_cast<DWORD>(data.size())),
            ERROR_SUCCESS);
    }

    /// `text` with its terminating zero.
    void SetText(const std::wstring& name, const std::wstring& text) {
        ASSERT_EQ(RegSetValueExW(preferences_, name.c_str(), 0, REG_SZ,
                                 reinterpret_cast<const std::uint8_t*>(text.c_str()),
                                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    /// `text` as little-endian UTF-16 without a terminating zero.
    static std::vector<std::uint8_t> Unterminated(const std::u16string& text) {
        std::vector<std::uint8_t> bytes;
        for (const char16_t unit : text) {
            bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
            bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        return bytes;
    }

    /// The only choice.
    static std::string OnlyChoice() {
        const std::optional<std::vector<GpuPreference>> preferences = ProbeGpuPreferences();
        return preferences && preferences->size() == 1 ? preferences->front().choice : "(not one preference)";
    }

    static std::vector<std::string> Applications() {
        std::vector<std::string> applications;
        for (const GpuPreference& preference : ProbeGpuPreferences().value_or(std::vector<GpuPreference>())) {
            applications.push_back(preference.application);
        }
        return applications;
    }

    static std::string Reported() {
        const ReportCapture report;
        ReportGpuOverrideSection();
        return report.Text();
    }

  private:
    std::wstring root_path_;
    HKEY root_ = nullptr;
    HKEY preferences_ = nullptr;
};

const std::string kHeader = "\n== PER-APP GPU OVERRIDES " + std::string(41, '=') + "\n";
const std::string kExplanation = "(GpuPreference=1 means integrated, =2 means high performance.)\n";

TEST_F(GpuOverrideProbe, ReportsNoneWithoutTheKey) {
    EXPECT_EQ(Reported(), kHeader + "None set.\n");
}

TEST_F(GpuOverrideProbe, ReportsTheNormalCaseForAnEmptyKey) {
    MakeKey();
    EXPECT_EQ(Reported(),
              kHeader + "Nothing set for Vistrel or SteamVR (this is the normal case).\n" + kExplanation);
}

TEST_F(GpuOverrideProbe, ReportsTheNormalCaseForOtherApplications) {
    MakeKey();
    SetText(L"C:\\Games\\game.exe", L"GpuPreference=2;");
    SetText(L"", L"the key's default value");
    EXPECT_EQ(Reported(),
              kHeader + "Nothing set for Vistrel or SteamVR (this is the normal case).\n" + kExplanation);
}

TEST_F(GpuOverrideProbe, ReportsEveryPinOfTheProductAndSteamVr) {
    MakeKey();
    SetText(L"C:\\A\\VRServer.exe", L"GpuPreference=1;");
    SetText(L"C:\\B\\game.exe", L"GpuPreference=2;");
    SetText(L"C:\\C\\Spiele für Éva\\ゲーム🎮\\VISTREL.EXE", L"GpuPreference=2;Größe=ゲーム;");
    SetText(L"C:\\D\\vrcompositor.exe", L"");
    SetText(L"C:\\E\\SteamVR\\x.exe", L"GpuPreference=0;");
    EXPECT_EQ(Reported(), kHeader +
                              "C:\\A\\VRServer.exe = GpuPreference=1;\n"
                              "C:\\C\\Spiele für Éva\\ゲーム🎮\\VISTREL.EXE = GpuPreference=2;Größe=ゲーム;\n"
                              "C:\\D\\vrcompositor.exe = \n"
                              "C:\\E\\SteamVR\\x.exe = GpuPreference=0;\n" +
                              kExplanation);
}

TEST_F(GpuOverrideProbe, ReadsAnyTypeAsText) {
    MakeKey();
    SetBytes(L"vistrel 1", REG_DWORD, {'G', 0, 'P', 0});
    SetBytes(L"vistrel 2", REG_BINARY, Unterminated(u"binary"));
    SetBytes(L"vistrel 3", REG_MULTI_SZ, Unterminated({u'a', u'b', 0, u'c', 0, 0}));
    SetBytes(L"vistrel 4", REG_DWORD, {0, 0, 0, 0});
    SetBytes(L"vistrel 5", REG_EXPAND_SZ, Unterminated(u"%PATH%"));
    EXPECT_EQ(Reported(), kHeader +
                              "vistrel 1 = GP\nvistrel 2 = binary\nvistrel 3 = ab\nvistrel 4 = \n"
                              "vistrel 5 = %PATH%\n" +
                              kExplanation);
}

TEST_F(GpuOverrideProbe, ReadsNoFurtherThanTheDataOfAValueThatIsNotTerminated) {
    MakeKey();
    SetBytes(L"vistrel", REG_SZ, Unterminated(u"GpuPreference=2;"));
    EXPECT_EQ(OnlyChoice(), "GpuPreference=2;");
}

TEST_F(GpuOverrideProbe, IgnoresHalfAUnit) {
    MakeKey();
    SetBytes(L"vistrel", REG_BINARY, {'a', 0, 'b', 0, 'c'});
    EXPECT_EQ(OnlyChoice(), "ab");
    SetBytes(L"vistrel", REG_SZ, {'a', 0, 'b'});
    EXPECT_EQ(OnlyChoice(), "a");
    SetBytes(L"vistrel", REG_BINARY, {'x'});
    EXPECT_EQ(OnlyChoice(), "");
    SetBytes(L"vistrel", REG_BINARY, {});
    EXPECT_EQ(OnlyChoice(), "");
}

TEST_F(GpuOverrideProbe, ReadsNothingLeftOverFromALongerValueBefore) {
    MakeKey();
    SetBytes(L"vistrel a", REG_BINARY, Unterminated(std::u16string(400, u'L')));
    SetBytes(L"vistrel b", REG_BINARY, Unterminated(u"s"));
    const std::optional<std::vector<GpuPreference>> preferences = ProbeGpuPreferences();
    ASSERT_TRUE(preferences);
    ASSERT_THAT(*preferences, SizeIs(2));
    EXPECT_EQ((*preferences)[1].choice, "s");
}

TEST_F(GpuOverrideProbe, KeepsTheTextAroundAnUnpairedSurrogate) {
    MakeKey();
    SetBytes(L"vistrel", REG_SZ, {0x3C, 0xD8, 'a', 0, 0, 0});
    EXPECT_EQ(OnlyChoice(),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(Reported(), kHeader +
                              "vistrel = \xEF\xBF\xBD"
                              "a\n" +
                              kExplanation);
}

TEST_F(GpuOverrideProbe, ReadsDataThatFillsTheBufferToTheLastByte) {
    MakeKey();
    SetBytes(L"vistrel", REG_BINARY, Unterminated(std::u16string(512, u'x')));
    EXPECT_EQ(OnlyChoice(), std::string(512, 'x'));
}

// Windows lists values in no guaranteed order; Wine sorts them by name, so these tests use that order.
TEST_F(GpuOverrideProbe, EndsTheListAtDataBeyondTheBuffer) {
    MakeKey();
    SetText(L"a", L"1");
    SetBytes(L"b", REG_BINARY, Unterminated(std::u16string(513, u'x')));
    SetText(L"c vistrel", L"2");
    EXPECT_THAT(Applications(), ElementsAre("a"));
    EXPECT_EQ(Reported(),
              kHeader + "Nothing set for Vistrel or SteamVR (this is the normal case).\n" + kExplanation);
}

TEST_F(GpuOverrideProbe, EndsTheListAtDataOneByteBeyondTheBuffer) {
    MakeKey();
    SetBytes(L"vistrel", REG_BINARY, std::vector<std::uint8_t>(1025, 'x'));
    EXPECT_THAT(Applications(), IsEmpty());
}

TEST_F(GpuOverrideProbe, EndsTheListAtANameBeyondTheBuffer) {
    MakeKey();
    SetText(std::wstring(511, L'a'), L"fits");
    SetText(std::wstring(512, L'b'), L"does not");
    SetText(L"c vistrel", L"2");
    EXPECT_THAT(Applications(), ElementsAre(std::string(511, 'a')));
}

}  // namespace
