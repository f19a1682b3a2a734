// Real files and folders, in a folder of the test's own. The program lacks the tool's manifest, as if on a
// Windows before 10 1903, which ignores the code page that the manifest asks for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>
#include <vector>

#include "platform/utf8.h"
#include "tests/unit/support/report_capture.h"
#include "tests/unit/tools/vistrel_diag/sections/injection/injection_advice.h"
#include "tools/vistrel_diag/sections/injection/injection_section.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StrEq;

std::string TemporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> path = {};
    GetTempPathW(static_cast<DWORD>(path.size()), path.data());
    return Utf8FromWide(path.data()) + "vistrel_diag_test_" + std::to_string(GetCurrentProcessId());
}

/// A folder that is removed with everything that was made in it.
class TestFolder {
  public:
    explicit TestFolder(const std::string& ending) : path_(TemporaryFolder() + ending) { MakeFolder(path_); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder() {
        for (auto made = made_.rbegin(); made != made_.rend(); ++made) {
            const std::wstring wide = WideFromUtf8(*made);
            if (DeleteFileW(wide.c_str()) == FALSE) {
                RemoveDirectoryW(wide.c_str());
            }
        }
    }

    const std::string& Path() const { return path_; }

    void AddFile(const std::string& name) {
        const std::string path = path_ + "\\" + name;
        const HANDLE file =
            CreateFileW(WideFromUtf8(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE) << path;
        CloseHandle(file);
        made_.push_back(path);
    }

    void AddFolder(const std::string& name) { MakeFolder(path_ + "\\" + name); }

  private:
    void MakeFolder(const std::string& path) {
        ASSERT_NE(CreateDirectoryW(WideFromUtf8(path).c_str(), nullptr), FALSE) << path;
        made_.push_back(path);
    }

    std::string path_;
    std::vector<std::string> made_;
};

std::string Reported(std::string_view folder) {
    const ReportCapture report;
    ReportInjectionSection(folder);
    return report.Text();
}

const std::string kHeader = "\n== INJECTED INTO VISTREL'S OWN FOLDER " + std::string(28, '=') + "\n";
const std::string kNothing = "Nothing found. No proxy DLL and no ReShade files beside Vistrel.exe.\n";

TEST(InjectionProbe, ReportsAnUnknownFolder) {
    EXPECT_EQ(Reported(""), kHeader + "Cannot tell - the folder this is running from is not known.\n");
}

TEST(InjectionProbe, FindsNothingInACleanFolder) {
    TestFolder folder("");
    folder.AddFile("Vistrel.exe");
    folder.AddFile("openxr_loader.dll");
    folder.AddFile("dxgi.dll.bak");
    EXPECT_EQ(Reported(folder.Path()), kHeader + kNothing);
}

TEST(InjectionProbe, FindsNothingInAMissingFolder) {
    EXPECT_EQ(Reported("C:\\no such folder at all"), kHeader + kNothing);
}

TEST(InjectionProbe, FindsOneProxyDll) {
    TestFolder folder("");
    folder.AddFile("dxgi.dll");
    EXPECT_EQ(Reported(folder.Path()), kHeader + "PROXY DLL      : dxgi.dll   <- not ours\n" + kAdvice);
}

TEST(InjectionProbe, FindsAReShadeFolder) {
    TestFolder folder("");
    folder.AddFolder("reshade-shaders");
    EXPECT_EQ(Reported(folder.Path()), kHeader + "ReShade file   : reshade-shaders\n" + kAdvice);
}

TEST(InjectionProbe, DoesNotDistinguishFilesFromFolders) {
    TestFolder folder("");
    folder.AddFile("reshade-shaders");
    folder.AddFolder("d3d9.dll");
    EXPECT_EQ(
        Reported(folder.Path()),
        kHeader + "PROXY DLL      : d3d9.dll   <- not ours\nReShade file   : reshade-shaders\n" + kAdvice);
}

TEST(InjectionProbe, FindsAllSeventeen) {
    TestFolder folder("");
    const InjectedFiles everything = FindInjectedFiles([](const char*) { return true; });
    for (const char* name : everything.proxy_dlls) {
        folder.AddFile(name);
    }
    for (const char* name : everything.reshade_files) {
        folder.AddFile(name);
    }
    const std::optional<InjectedFiles> found = ProbeInjectedFiles(folder.Path());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->proxy_dlls, everything.proxy_dlls);
    EXPECT_EQ(found->reshade_files, everything.reshade_files);
    EXPECT_EQ(found->proxy_dlls.size() + found->reshade_files.size(), 17U);
}

TEST(InjectionProbe, LeavesCaseToTheFileSystemAndPrintsTheListedNames) {
    TestFolder folder("");
    folder.AddFile("DXGI.DLL");
    folder.AddFile("RESHADE.INI");
    EXPECT_EQ(Reported(folder.Path()),
              kHeader + "PROXY DLL      : dxgi.dll   <- not ours\nReShade file   : ReShade.ini\n" + kAdvice);
}

TEST(InjectionProbe, SearchesAFolderWithANonAsciiName) {
    ASSERT_NE(GetACP(), UINT{CP_UTF8});
    TestFolder folder("_Ünïcødé ゲーム 🎮");
    EXPECT_EQ(Reported(folder.Path()), kHeader + kNothing);
    folder.AddFile("version.dll");
    EXPECT_EQ(Reported(folder.Path()), kHeader + "PROXY DLL      : version.dll   <- not ours\n" + kAdvice);
}

TEST(InjectionProbe, TreatsAPathThatWindowsRejectsAsAbsent) {
    EXPECT_EQ(Reported("C:\\" + std::string(40000, 'a')), kHeader + kNothing);
    EXPECT_EQ(Reported("C:\\ill-formed \xC3\x28"), kHeader + kNothing);
}

TEST(FileExistsBeside, JoinsFolderAndNameWithOneBackslash) {
    TestFolder folder("");
    folder.AddFile("a.txt");
    EXPECT_TRUE(FileExistsBeside(folder.Path(), "a.txt"));
    EXPECT_FALSE(FileExistsBeside(folder.Path(), "b.txt"));
    EXPECT_TRUE(FileExistsBeside("C:", "windows"));
}

}  // namespace
