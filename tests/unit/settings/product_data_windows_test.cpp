#include "settings/product_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shlobj.h>
#include <windows.h>

#include <cwchar>
#include <string>
#include <vector>

#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "settings/settings_file.h"

// The results of Windows for this program: these replace its functions.
namespace {

struct FakeShell {
    HRESULT result = S_OK;
    std::wstring local_data = L"C:\\Users\\me\\AppData\\Local";
    int lookups = 0;
    std::vector<std::string> created = {};
};

FakeShell shell;

HRESULT WINAPI FakeGetFolderPath(HWND window, int folder, HANDLE token, DWORD flags, LPWSTR path) {
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(folder, CSIDL_LOCAL_APPDATA);
    EXPECT_EQ(token, nullptr);
    EXPECT_EQ(flags, 0U);
    ++shell.lookups;
    if (SUCCEEDED(shell.result)) {
        std::wcscpy(path, shell.local_data.c_str());
    }
    return shell.result;
}

BOOL WINAPI FakeCreateDirectory(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    EXPECT_EQ(security, nullptr);
    shell.created.push_back(Utf8FromWide(path));
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

}  // namespace

extern "C" {
decltype(&SHGetFolderPathW) __imp_SHGetFolderPathW = FakeGetFolderPath;
decltype(&CreateDirectoryW) __imp_CreateDirectoryW = FakeCreateDirectory;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ProductData, IsTheProductsFolderInTheLocalApplicationData) {
    shell = {};
    EXPECT_EQ(ProductDataFolder(), "C:\\Users\\me\\AppData\\Local\\Vistrel");
    EXPECT_THAT(shell.created, ElementsAre("C:\\Users\\me\\AppData\\Local\\Vistrel"));
    EXPECT_EQ(ProductDataPath("vistrel_init_log.txt"),
              "C:\\Users\\me\\AppData\\Local\\Vistrel\\vistrel_init_log.txt");
}

TEST(ProductData, IsLookedUpOnEveryCall) {
    shell = {};
    ProductDataPath("a");
    shell.local_data = L"D:\\Elsewhere";
    EXPECT_EQ(ProductDataPath("b"), "D:\\Elsewhere\\Vistrel\\b");
    EXPECT_EQ(shell.lookups, 2);
}

TEST(ProductData, FallsBackToTheCurrentDirectoryWithoutCreatingAFolder) {
    shell = {.result = E_FAIL};
    EXPECT_EQ(ProductDataFolder(), ".");
    EXPECT_EQ(ProductDataPath("usersettings.json"), ".\\usersettings.json");
    EXPECT_THAT(shell.created, IsEmpty());
}

/// The program's code page need not have the letters: Windows before 10 1903 ignores the one of the manifest.
TEST(ProductData, CharactersOutsideTheCodePageBecomeUtf8) {
    ASSERT_NE(GetACP(), UINT{CP_UTF8});
    shell = {.local_data = L"C:\\J\u00FCrgen \u30B2"};
    const std::string folder = ProductDataFolder();
    EXPECT_EQ(folder, "C:\\J\xC3\xBCrgen \xE3\x82\xB2\\Vistrel");
    EXPECT_THAT(shell.created, ElementsAre(folder));
}

TEST(ProductData, WithoutAnySettingsFileNothingIsApplied) {
    shell = {.local_data = L"C:\\no such folder"};
    EXPECT_FALSE(LoadProductSettings("C:\\no such folder either"));
    EXPECT_EQ(SettingsFilePath(), "(not found)");
}

}  // namespace
