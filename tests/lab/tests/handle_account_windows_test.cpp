#include "tests/lab/machine/handle_account.h"

#include <gtest/gtest.h>
#include <windows.h>
// windows.h first
#include <tlhelp32.h>

#include <cstdio>

namespace lab {
namespace {

/// The account's function of this name, as the program would call it.
template <typename Function>
Function Accounting(const char* name, Function /*real*/) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(AccountingFunction(name)));
}

#define ACCOUNTING(name) Accounting(#name, &name)

class HandleAccount : public ::testing::Test {
  protected:
    /// The number of handles opened since the test began.
    long Opened() const { return OpenHandles() - before_; }

    void ExpectOneOpen(HANDLE handle) {
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(Opened(), 1);
        EXPECT_NE(ACCOUNTING(CloseHandle)(handle), FALSE);
        EXPECT_EQ(Opened(), 0);
    }

    long before_ = OpenHandles();
};

TEST_F(HandleAccount, CountsWaitableObjects) {
    ExpectOneOpen(ACCOUNTING(CreateEventW)(nullptr, TRUE, FALSE, nullptr));
    ExpectOneOpen(ACCOUNTING(CreateEventExW)(nullptr, nullptr, 0, EVENT_ALL_ACCESS));
    ExpectOneOpen(ACCOUNTING(CreateMutexW)(nullptr, FALSE, nullptr));
    ExpectOneOpen(ACCOUNTING(CreateSemaphoreW)(nullptr, 0, 1, nullptr));
    ExpectOneOpen(ACCOUNTING(CreateWaitableTimerW)(nullptr, TRUE, nullptr));
    ExpectOneOpen(ACCOUNTING(CreateJobObjectW)(nullptr, nullptr));
}

TEST_F(HandleAccount, CountsThreadsAndProcesses) {
    const auto nothing = [](void*) -> DWORD { return 0; };
    ExpectOneOpen(ACCOUNTING(CreateThread)(nullptr, 0, nothing, nullptr, 0, nullptr));
    ExpectOneOpen(ACCOUNTING(OpenThread)(SYNCHRONIZE, FALSE, GetCurrentThreadId()));
    ExpectOneOpen(ACCOUNTING(OpenProcess)(SYNCHRONIZE, FALSE, GetCurrentProcessId()));
    ExpectOneOpen(ACCOUNTING(CreateToolhelp32Snapshot)(TH32CS_SNAPPROCESS, 0));
}

TEST_F(HandleAccount, CountsBothHandlesOfAPipe) {
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    ASSERT_NE(ACCOUNTING(CreatePipe)(&read_end, &write_end, nullptr, 0), FALSE);
    EXPECT_EQ(Opened(), 2);
    ACCOUNTING(CloseHandle)(read_end);
    EXPECT_EQ(Opened(), 1);
    ACCOUNTING(CloseHandle)(write_end);
    EXPECT_EQ(Opened(), 0);
}

TEST_F(HandleAccount, CountsBothHandlesOfANewProcess) {
    wchar_t command[] = L"cmd.exe /c exit";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    ASSERT_NE(ACCOUNTING(CreateProcessW)(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                         &startup, &process),
              FALSE);
    EXPECT_EQ(Opened(), 2);
    ACCOUNTING(CloseHandle)(process.hThread);
    ACCOUNTING(CloseHandle)(process.hProcess);
    EXPECT_EQ(Opened(), 0);
}

TEST_F(HandleAccount, CountsFilesAndViews) {
    ExpectOneOpen(
        ACCOUNTING(CreateFileW)(L"NUL", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    HANDLE const mapping =
        ACCOUNTING(CreateFileMappingW)(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, nullptr);
    EXPECT_EQ(Opened(), 1);
    void* const view = ACCOUNTING(MapViewOfFile)(mapping, FILE_MAP_READ, 0, 0, 0);
    EXPECT_EQ(Opened(), 2);
    ACCOUNTING(UnmapViewOfFile)(view);
    ExpectOneOpen(mapping);
    WIN32_FIND_DATAW found = {};
    HANDLE const search = ACCOUNTING(FindFirstFileW)(L"C:\\*", &found);
    EXPECT_EQ(Opened(), 1);
    ACCOUNTING(FindClose)(search);
    EXPECT_EQ(Opened(), 0);
}

TEST_F(HandleAccount, CountsStreams) {
    std::FILE* const wide = ACCOUNTING(_wfopen)(L"NUL", L"rb");
    std::FILE* const narrow =
        Accounting("fopen", static_cast<std::FILE* (*)(const char*, const char*)>(&std::fopen))("NUL", "rb");
    EXPECT_EQ(Opened(), 2);
    Accounting("fclose", &std::fclose)(wide);
    Accounting("fclose", &std::fclose)(narrow);
    EXPECT_EQ(Opened(), 0);
}

TEST_F(HandleAccount, CountsKeysAndWindows) {
    HKEY key = nullptr;
    ASSERT_EQ(ACCOUNTING(RegOpenKeyExW)(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &key), ERROR_SUCCESS);
    EXPECT_EQ(Opened(), 1);
    ACCOUNTING(RegCloseKey)(key);
    EXPECT_EQ(Opened(), 0);
    HWND const window = ACCOUNTING(CreateWindowExW)(0, L"Static", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                                    nullptr, nullptr);
    EXPECT_EQ(Opened(), 1);
    ACCOUNTING(DestroyWindow)(window);
    EXPECT_EQ(Opened(), 0);
}

TEST_F(HandleAccount, CountsNothingWhenOpeningFails) {
    EXPECT_EQ(ACCOUNTING(CreateFileW)(L"no such file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(ACCOUNTING(OpenEventW)(SYNCHRONIZE, FALSE, L"no such event"), nullptr);
    HKEY key = nullptr;
    EXPECT_NE(ACCOUNTING(RegOpenKeyExW)(HKEY_CURRENT_USER, L"No\\Such\\Key", 0, KEY_READ, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(Opened(), 0);
}

}  // namespace
}  // namespace lab
