#include "settings/product_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shlobj.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

#include "settings/diag_settings.h"
#include "settings/settings_file.h"

// What Windows answers this program: these take the places of its functions.
namespace {

struct FakeShell {
    HRESULT result = S_OK;
    std::string local_data = "C:\\Users\\me\\AppData\\Local";
    int lookups = 0;
    std::vector<std::string> created = {};
};

FakeShell shell;

HRESULT WINAPI FakeGetFolderPath(HWND window, int folder, HANDLE token, DWORD flags, LPSTR path) {
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(folder, CSIDL_LOCAL_APPDATA);
    EXPECT_EQ(token, nullptr);
    EXPECT_EQ(flags, 0U);
    ++shell.lookups;
    if (SUCCEEDED(shell.result)) {
        std::strcpy(path, shell.local_data.c_str());
    }
    return shell.result;
}

BOOL WINAPI FakeCreateDirectory(LPCSTR path, LPSECURITY_ATTRIBUTES security) {
    EXPECT_EQ(security, nullptr);
    shell.created.emplace_back(path);
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

}  // namespace

extern "C" {
decltype(&SHGetFolderPathA) __imp_SHGetFolderPathA = FakeGetFolderPath;
decltype(&CreateDirectoryA) __imp_CreateDirectoryA = FakeCreateDirectory;
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
    shell.local_data = "D:\\Elsewhere";
    EXPECT_EQ(ProductDataPath("b"), "D:\\Elsewhere\\Vistrel\\b");
    EXPECT_EQ(shell.lookups, 2);
}

TEST(ProductData, WithoutAnAnswerIsTheCurrentDirectoryAndNoFolderIsMade) {
    shell = {.result = E_FAIL};
    EXPECT_EQ(ProductDataFolder(), ".");
    EXPECT_EQ(ProductDataPath("usersettings.json"), ".\\usersettings.json");
    EXPECT_THAT(shell.created, IsEmpty());
}

TEST(ProductData, ALetterOfTheCodePageComesOutAsUtf8) {
    ASSERT_TRUE(GetACP() == 1252 || GetACP() == CP_UTF8) << GetACP();
    shell = {.local_data = GetACP() == CP_UTF8 ? "C:\\J\xC3\xBCrgen" : "C:\\J\xFCrgen"};
    EXPECT_EQ(ProductDataFolder(), "C:\\J\xC3\xBCrgen\\Vistrel");
}

TEST(ProductData, WithoutAnySettingsFileNothingIsApplied) {
    shell = {.local_data = "C:\\no such folder"};
    EXPECT_FALSE(LoadProductSettings("C:\\no such folder either"));
    EXPECT_EQ(SettingsFilePath(), "(not found)");
}

}  // namespace
