#include "platform/library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace {

/// The thread's error mode while a library is being loaded; empty when none was.
std::optional<DWORD> mode_while_loading;

/// A load that fails without setting an error.
bool fails_in_silence = false;

template <typename Function>
Function Genuine(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

HMODULE WINAPI LoadAndNoteMode(const wchar_t* name) {
    mode_while_loading = GetThreadErrorMode();
    return Genuine<decltype(&LoadLibraryW)>("LoadLibraryW")(name);
}

HMODULE WINAPI LoadExAndNoteMode(const wchar_t* name, HANDLE file, DWORD flags) {
    mode_while_loading = GetThreadErrorMode();
    if (fails_in_silence) {
        SetLastError(ERROR_SUCCESS);
        return nullptr;
    }
    return Genuine<decltype(&LoadLibraryExW)>("LoadLibraryExW")(name, file, flags);
}

/// A call that succeeds may leave any last error behind.
BOOL WINAPI SetModeAndSpoilLastError(DWORD mode, LPDWORD previous) {
    const BOOL done = Genuine<decltype(&SetThreadErrorMode)>("SetThreadErrorMode")(mode, previous);
    SetLastError(ERROR_ALREADY_EXISTS);
    return done;
}

}  // namespace

extern "C" {
decltype(&SetThreadErrorMode) __imp_SetThreadErrorMode = SetModeAndSpoilLastError;
decltype(&LoadLibraryW) __imp_LoadLibraryW = LoadAndNoteMode;
decltype(&LoadLibraryExW) __imp_LoadLibraryExW = LoadExAndNoteMode;
}

namespace {

class LoadLibraryQuietlyTest : public testing::Test {
  protected:
    LoadLibraryQuietlyTest() { mode_while_loading.reset(); }
    ~LoadLibraryQuietlyTest() override { SetThreadErrorMode(0, nullptr); }
};

TEST_F(LoadLibraryQuietlyTest, LoadsALibrary) {
    const UniqueLibrary library(LoadLibraryQuietly(L"version.dll"));
    EXPECT_TRUE(library);
}

/// A function that calls other Windows functions, which works only if its library has been initialised.
void ExpectToWork(FARPROC allocate) {
    ASSERT_NE(allocate, nullptr);
    void* memory = nullptr;
    using Allocate = DWORD(WINAPI*)(DWORD, void**);
    EXPECT_EQ(reinterpret_cast<Allocate>(allocate)(16, &memory), DWORD{ERROR_SUCCESS});
    EXPECT_NE(memory, nullptr);
}

TEST_F(LoadLibraryQuietlyTest, LoadsALibraryThatCanBeUsed) {
    const UniqueLibrary library(LoadLibraryQuietly(L"netapi32.dll"));
    ExpectToWork(GetProcAddress(library.get(), "NetApiBufferAllocate"));
}

TEST(FindSystemFunction, FindsAFunctionThatWorks) {
    ASSERT_EQ(GetModuleHandleW(L"netapi32.dll"), nullptr);
    ExpectToWork(FindSystemFunction(L"netapi32.dll", "NetApiBufferAllocate").function);
}

TEST_F(LoadLibraryQuietlyTest, ShowsNoMessageBox) {
    LoadLibraryQuietly(L"no such library.dll");
    ASSERT_TRUE(mode_while_loading);
    const DWORD quiet = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
    EXPECT_EQ(*mode_while_loading & quiet, quiet);
}

TEST_F(LoadLibraryQuietlyTest, RestoresTheThreadsErrorMode) {
    for (const DWORD mode : {DWORD{0}, DWORD{SEM_NOGPFAULTERRORBOX}}) {
        for (const wchar_t* name : {L"version.dll", L"no such library.dll"}) {
            ASSERT_NE(SetThreadErrorMode(mode, nullptr), FALSE);
            const UniqueLibrary library(LoadLibraryQuietly(name));
            EXPECT_EQ(GetThreadErrorMode(), mode);
        }
    }
}

TEST_F(LoadLibraryQuietlyTest, ReturnsWhyLoadingFailed) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(LoadLibraryQuietly(L"no such library.dll"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(NeverLoadFromCurrentDirectory, RemovesItFromTheSearchPath) {
    std::wstring system(MAX_PATH, L'\0');
    system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path here = std::filesystem::temp_directory_path() / "vistrel library test";
    std::filesystem::create_directories(here);
    std::filesystem::copy_file(std::filesystem::path(system) / "version.dll", here / "vistrel_lies_here.dll",
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::current_path(here);
    EXPECT_TRUE(UniqueLibrary(LoadLibraryQuietly(L"vistrel_lies_here.dll")));
    NeverLoadFromCurrentDirectory();
    EXPECT_FALSE(UniqueLibrary(LoadLibraryQuietly(L"vistrel_lies_here.dll")));
    SetDllDirectoryW(nullptr);
    std::filesystem::current_path(before);
    std::filesystem::remove_all(here);
}

TEST(FindSystemFunction, FindsAFunctionOfADllInTheSystemFolder) {
    const LibraryFunction found = FindSystemFunction(L"kernel32.dll", "GetTickCount64");
    EXPECT_EQ(found.function, GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetTickCount64"));
    EXPECT_EQ(found.missing, S_OK);
}

TEST(FindSystemFunction, ReportsAMissingDll) {
    const LibraryFunction found = FindSystemFunction(L"no_such_library.dll", "GetTickCount64");
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.missing, HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
}

TEST(FindSystemFunction, FailsEvenWithoutAnErrorFromWindows) {
    fails_in_silence = true;
    const LibraryFunction found = FindSystemFunction(L"kernel32.dll", "GetTickCount64");
    fails_in_silence = false;
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.missing, E_FAIL);
}

TEST(FindSystemFunction, ReportsAMissingFunction) {
    const LibraryFunction found = FindSystemFunction(L"kernel32.dll", "NoSuchFunction");
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.missing, HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
}

TEST(FindSystemFunction, RestoresTheErrorMode) {
    const DWORD before = GetThreadErrorMode();
    FindSystemFunction(L"no_such_library.dll", "GetTickCount64");
    EXPECT_EQ(GetThreadErrorMode(), before);
}

}  // namespace
