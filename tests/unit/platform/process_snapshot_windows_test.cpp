#include "platform/process_snapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
// windows.h first
#include <tlhelp32.h>

#include <cstring>

// The processes that this program sees: these functions replace those of Windows, and call the real ones
// while nothing is scripted.
namespace {

struct ScriptedSnapshots {
    bool fail = false;
    std::vector<std::pair<DWORD, std::wstring>> processes;
    std::size_t next = 0;
    int closed = 0;
};

std::optional<ScriptedSnapshots> script;
const HANDLE kSnapshot = reinterpret_cast<HANDLE>(0x1234);

template <typename Function>
Function RealFunction(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name));
}

BOOL WINAPI FakeCloseHandle(HANDLE handle) {
    if (script && handle == kSnapshot) {
        ++script->closed;
        return TRUE;
    }
    return RealFunction<decltype(&CloseHandle)>("CloseHandle")(handle);
}

}  // namespace

// Only the last of these is declared as an import, so only that one is called through a pointer.
extern "C" {
HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD process) {
    if (!script) {
        return RealFunction<decltype(&CreateToolhelp32Snapshot)>("CreateToolhelp32Snapshot")(flags, process);
    }
    EXPECT_EQ(flags, static_cast<DWORD>(TH32CS_SNAPPROCESS));
    return script->fail ? INVALID_HANDLE_VALUE : kSnapshot;
}

BOOL WINAPI Process32NextW(HANDLE snapshot, LPPROCESSENTRY32W entry) {
    if (!script) {
        return RealFunction<decltype(&Process32NextW)>("Process32NextW")(snapshot, entry);
    }
    EXPECT_EQ(snapshot, kSnapshot);
    EXPECT_EQ(entry->dwSize, sizeof(PROCESSENTRY32W));
    if (script->next == script->processes.size()) {
        return FALSE;
    }
    const auto& [id, name] = script->processes[script->next++];
    entry->th32ProcessID = id;
    std::memset(entry->szExeFile, 0, sizeof(entry->szExeFile));
    std::memcpy(entry->szExeFile, name.data(), name.size() * sizeof(wchar_t));
    return TRUE;
}

BOOL WINAPI Process32FirstW(HANDLE snapshot, LPPROCESSENTRY32W entry) {
    if (!script) {
        return RealFunction<decltype(&Process32FirstW)>("Process32FirstW")(snapshot, entry);
    }
    return Process32NextW(snapshot, entry);
}

decltype(&CloseHandle) __imp_CloseHandle = FakeCloseHandle;
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScriptedProcesses : public ::testing::Test {
  protected:
    void SetUp() override { script.emplace(); }
    void TearDown() override { script.reset(); }

    static std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const RunningProcess& process : TakeProcessSnapshot().value_or(ProcessSnapshot())) {
            names.push_back(process.executable_name);
        }
        return names;
    }
};

TEST_F(ScriptedProcesses, AreListedInOrderAndTheSnapshotIsClosed) {
    script->processes = {{0, L"[System Process]"}, {4, L"System"}, {8, L"ゲーム.exe"}, {12, L"obs64.exe"}};
    const std::optional<ProcessSnapshot> processes = TakeProcessSnapshot();
    ASSERT_TRUE(processes);
    ASSERT_EQ(processes->size(), 4U);
    EXPECT_EQ((*processes)[2].id, 8U);
    EXPECT_EQ((*processes)[2].executable_name, "ゲーム.exe");
    EXPECT_EQ(processes->back().executable_name, "obs64.exe");
    EXPECT_EQ(script->closed, 1);
}

TEST_F(ScriptedProcesses, AreUnknownWhenTheSnapshotFails) {
    script->fail = true;
    EXPECT_FALSE(TakeProcessSnapshot());
    EXPECT_EQ(script->closed, 0);
}

TEST_F(ScriptedProcesses, MayBeNone) {
    const std::optional<ProcessSnapshot> processes = TakeProcessSnapshot();
    ASSERT_TRUE(processes);
    EXPECT_THAT(*processes, IsEmpty());
    EXPECT_EQ(script->closed, 1);
}

TEST_F(ScriptedProcesses, KeepTheTextAroundAnUnpairedSurrogate) {
    script->processes = {{4, L"a\xD800.exe"}, {8, L"\xDC00"}, {12, L"\xD83D\xDE00.exe"}, {16, L"b.exe"}};
    EXPECT_THAT(Names(), ElementsAre("a\xEF\xBF\xBD.exe", "\xEF\xBF\xBD", "😀.exe", "b.exe"));
}

TEST_F(ScriptedProcesses, MayHaveANameThatFillsItsField) {
    script->processes = {{4, std::wstring(MAX_PATH, L'n')}, {8, L"short.exe"}};
    EXPECT_THAT(Names(), ElementsAre(std::string(MAX_PATH, 'n'), "short.exe"));
}

TEST(ProcessSnapshot, HasThisVeryProcess) {
    const std::optional<ProcessSnapshot> processes = TakeProcessSnapshot();
    ASSERT_TRUE(processes);
    int found = 0;
    for (const RunningProcess& process : *processes) {
        if (process.id == GetCurrentProcessId()) {
            ++found;
            EXPECT_EQ(process.executable_name, "process_snapshot_windows_test.exe");
        }
    }
    EXPECT_EQ(found, 1);
}

}  // namespace
