// Runs one of the small test programs under a name of the test's choosing.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "platform/module_folder.h"
#include "platform/utf8.h"

/// A copy of a test program in its own folder, started at once and ended with the object. On Windows the name
/// of the file is the name of the process.
class RunningProgram {
  public:
    /// `program` is sleeper or titled_window, `arguments` its command line after the program's name.
    RunningProgram(const std::wstring& program, const std::wstring& name, const std::wstring& arguments) {
        static int count = 0;
        std::array<wchar_t, MAX_PATH + 1> temporary = {};
        GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
        folder_ = temporary.data() + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++count);
        path_ = folder_ + L"\\" + name;
        const std::wstring original =
            WideFromUtf8(ExecutableFolder()) + L"\\..\\lab\\programs\\" + program + L".exe";
        EXPECT_NE(CreateDirectoryW(folder_.c_str(), nullptr), FALSE);
        EXPECT_NE(CopyFileW(original.c_str(), path_.c_str(), TRUE), FALSE)
            << "no copy of " << Utf8FromWide(original);

        std::wstring command_line = L"\"" + path_ + L"\" " + arguments;
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        EXPECT_NE(CreateProcessW(path_.c_str(), command_line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                 nullptr, &startup, &process_),
                  FALSE);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    ~RunningProgram() {
        TerminateProcess(process_.hProcess, 0);
        WaitForSingleObject(process_.hProcess, 10000);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
        // The file may stay in use for a moment after its process has ended.
        for (int attempt = 0; DeleteFileW(path_.c_str()) == FALSE && attempt < 50; ++attempt) {
            Sleep(20);
        }
        RemoveDirectoryW(folder_.c_str());
    }

    DWORD Id() const { return process_.dwProcessId; }

    /// Waits until a window of the program is in the foreground; false when that takes longer than ten
    /// minutes.
    bool WaitForForeground() const {
        for (int attempt = 0; attempt < 12'000; ++attempt) {
            DWORD id = 0;
            GetWindowThreadProcessId(GetForegroundWindow(), &id);
            if (id == Id()) {
                return true;
            }
            Sleep(50);
        }
        return false;
    }

  private:
    std::wstring folder_;
    std::wstring path_;
    PROCESS_INFORMATION process_ = {};
};
