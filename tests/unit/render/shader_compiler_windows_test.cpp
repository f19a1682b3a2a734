#include "render/shader_compiler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

// A replacement for the compiler's file, because the genuine one is always in the system's folder.
constexpr const wchar_t* kStandIn = L"vistrel_test_compiler.dll";

template <typename Function>
Function Genuine(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

/// Set in the environment of a process without a replacement.
constexpr const wchar_t* kGenuineIsMeant = L"VISTREL_TEST_GENUINE_COMPILER";

/// The same path or bare name, but of the replacement.
std::wstring OfStandIn(const wchar_t* name) {
    std::filesystem::path path(name);
    if (GetEnvironmentVariableW(kGenuineIsMeant, nullptr, 0) != 0) {
        return path.wstring();
    }
    return path.filename() == L"d3dcompiler_47.dll" ? path.replace_filename(kStandIn).wstring()
                                                    : path.wstring();
}

HMODULE WINAPI LoadStandInEx(const wchar_t* name, HANDLE file, DWORD flags) {
    return Genuine<decltype(&LoadLibraryExW)>("LoadLibraryExW")(OfStandIn(name).c_str(), file, flags);
}

HMODULE WINAPI LoadStandIn(const wchar_t* name) {
    return LoadStandInEx(name, nullptr, 0);
}

}  // namespace

// The system searches for the replacement in the way in which the program has it search for the compiler.
extern "C" {
decltype(&LoadLibraryExW) __imp_LoadLibraryExW = LoadStandInEx;
decltype(&LoadLibraryW) __imp_LoadLibraryW = LoadStandIn;
}

namespace {

std::filesystem::path OwnProgram() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path;
}

bool Compiles() {
    return static_cast<bool>(
        CompileShader("float4 PSMain() : SV_Target { return 1; }", "test", "PSMain", "ps_5_0", 0).bytecode);
}

TEST(ShaderCompilerAlone, DISABLED_Compiles) {
    EXPECT_TRUE(Compiles());
}

TEST(ShaderCompilerAlone, DISABLED_FindsNone) {
    EXPECT_FALSE(Compiles());
}

/// The program searches for the compiler once, so each case is another process: this program, with only the
/// test of this name.
int RunAlone(const std::string& test) {
    const std::string command = "\"\"" + OwnProgram().string() +
                                "\" --gtest_also_run_disabled_tests --gtest_brief=1 --gtest_filter=*" + test +
                                "\"";
    return std::system(command.c_str());
}

/// The genuine compiler under the replacement's name in one folder, and a different current folder.
class ShaderCompilerTest : public testing::Test {
  protected:
    void PutStandIn(const std::filesystem::path& folder) {
        std::filesystem::create_directories(folder);
        stand_in_ = folder / kStandIn;
        std::wstring system(MAX_PATH, L'\0');
        system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
        std::filesystem::copy_file(std::filesystem::path(system) / "d3dcompiler_47.dll", stand_in_,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    ~ShaderCompilerTest() override {
        std::filesystem::current_path(previous_);
        std::filesystem::remove(stand_in_);
        std::filesystem::remove_all(elsewhere_);
    }

    std::filesystem::path previous_ = std::filesystem::current_path();
    std::filesystem::path elsewhere_ = std::filesystem::temp_directory_path() / "vistrel compiler test";
    std::filesystem::path stand_in_;
};

TEST_F(ShaderCompilerTest, IsFoundInTheProgramsFolder) {
    PutStandIn(OwnProgram().parent_path());
    EXPECT_EQ(RunAlone("DISABLED_Compiles"), 0);
}

TEST_F(ShaderCompilerTest, IsFoundInTheSystemsFolder) {
    // Only an administrator can write there, and it contains the genuine one.
    SetEnvironmentVariableW(kGenuineIsMeant, L"1");
    EXPECT_EQ(RunAlone("DISABLED_Compiles"), 0);
    SetEnvironmentVariableW(kGenuineIsMeant, nullptr);
}

/// Any user may have put it there, for example into a folder of downloads.
TEST_F(ShaderCompilerTest, IsNotTakenFromTheCurrentFolder) {
    PutStandIn(elsewhere_);
    std::filesystem::current_path(elsewhere_);
    EXPECT_EQ(RunAlone("DISABLED_FindsNone"), 0);
}

TEST_F(ShaderCompilerTest, IsNotTakenFromAFolderOfThePath) {
    PutStandIn(elsewhere_);
    const std::wstring path = _wgetenv(L"PATH");
    _wputenv_s(L"PATH", (path + L";" + elsewhere_.wstring()).c_str());
    EXPECT_EQ(RunAlone("DISABLED_FindsNone"), 0);
    _wputenv_s(L"PATH", path.c_str());
}

}  // namespace
