#include "platform/process_snapshot.h"

// tlhelp32.h needs the types of windows.h.
#include <windows.h>

#include <tlhelp32.h>

#include "platform/unique_handle.h"
#include "platform/utf8.h"

std::optional<ProcessSnapshot> TakeProcessSnapshot() {
    const UniqueFileHandle handle(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!handle) {
        return std::nullopt;
    }
    ProcessSnapshot processes;
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL found = Process32FirstW(handle.get(), &entry); found != FALSE;
         found = Process32NextW(handle.get(), &entry)) {
        processes.push_back({entry.th32ProcessID, Utf8FromWideArray(entry.szExeFile)});
    }
    return processes;
}
