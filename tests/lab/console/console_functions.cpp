#include "tests/lab/console/console_functions.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/utf8.h"
#include "tests/lab/console/console_host.h"
#include "tests/lab/machine/as_proc.h"
#include "tests/lab/machine/clock.h"

namespace lab {
namespace {

constexpr UINT kLeftAlone = 98;  // The exit code when the program waits for a person whose script has ended.
constexpr DWORD kControlCExit = 0xC000013A;

/// Windows ends a program this long after an event that it cannot cancel.
constexpr DWORD kLongestThreadEndMs = 5000;

struct Handlers {
    std::mutex mutex;
    std::vector<PHANDLER_ROUTINE> in_order;
    DWORD delay_ms = 0;
    std::atomic<bool> called = false;
};

/// Never destroyed: the program may write until the very end.
Handlers& TheHandlers() {
    static auto* const handlers = new Handlers;
    return *handlers;
}

ConsoleHost*& TheHost() {
    static ConsoleHost* host = nullptr;
    return host;
}

HANDLE record_file = INVALID_HANDLE_VALUE;

void Record(const std::string& line) {
    const std::string text = line + "\n";
    DWORD written = 0;
    WriteFile(record_file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

/// As on Windows: the handlers in reverse order of their registration, until one returns TRUE; then the
/// process ends.
DWORD WINAPI RunHandlers(void* parameter) {
    const auto event = static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(parameter));
    Sleep(TheHandlers().delay_ms);
    std::vector<PHANDLER_ROUTINE> handlers;
    {
        const std::scoped_lock lock(TheHandlers().mutex);
        handlers = TheHandlers().in_order;
    }
    for (auto handler = handlers.rbegin(); handler != handlers.rend(); ++handler) {
        if ((*handler)(event) != FALSE) {
            return 0;
        }
    }
    ExitProcess(kControlCExit);
}

void Raise(ControlEvent event) {
    TheHandlers().called = true;
    const DWORD code = event == ControlEvent::kCtrlC ? CTRL_C_EVENT : CTRL_CLOSE_EVENT;
    HANDLE const thread = CreateThread(nullptr, 0, RunHandlers,
                                       reinterpret_cast<void*>(static_cast<ULONG_PTR>(code)), 0, nullptr);
    if (thread != nullptr) {
        CloseHandle(thread);
    }
}

bool IsInput(HANDLE handle) {
    return handle != nullptr && handle == GetStdHandle(STD_INPUT_HANDLE);
}

bool IsOutput(HANDLE handle) {
    return handle != nullptr &&
           (handle == GetStdHandle(STD_OUTPUT_HANDLE) || handle == GetStdHandle(STD_ERROR_HANDLE));
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

BOOL WINAPI ConsoleGetMode(HANDLE handle, LPDWORD mode) {
    if (!IsInput(handle) && !IsOutput(handle)) {
        return GetConsoleMode(handle, mode);
    }
    *mode = IsInput(handle) ? TheHost()->InputMode() : TheHost()->OutputMode();
    return TRUE;
}

BOOL WINAPI ConsoleSetMode(HANDLE handle, DWORD mode) {
    if (!IsInput(handle) && !IsOutput(handle)) {
        return SetConsoleMode(handle, mode);
    }
    const bool taken = IsInput(handle) ? TheHost()->SetInputMode(mode) : TheHost()->SetOutputMode(mode);
    return taken ? TRUE : Fail(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI ConsoleWriteW(HANDLE handle, const VOID* text, DWORD units, LPDWORD written, LPVOID reserved) {
    if (!IsOutput(handle)) {
        return WriteConsoleW(handle, text, units, written, reserved);
    }
    TheHost()->Write(Utf8FromWide(std::wstring(static_cast<const wchar_t*>(text), units)));
    if (written != nullptr) {
        *written = units;
    }
    return TRUE;
}

/// Bytes are converted by the console's code page; the only difference that matters here is whether it is
/// UTF-8.
std::string Shown(std::string_view bytes) {
    constexpr UINT kUtf8 = 65001;
    std::string text(bytes);
    if (TheHost()->CodePage() != kUtf8) {
        std::replace_if(
            text.begin(), text.end(),
            [](char byte) { return (static_cast<unsigned char>(byte) & 0x80U) != 0; }, '?');
    }
    return text;
}

BOOL WINAPI ConsoleWriteFile(HANDLE handle, LPCVOID bytes, DWORD size, LPDWORD written,
                             LPOVERLAPPED overlapped) {
    if (!IsOutput(handle)) {
        return WriteFile(handle, bytes, size, written, overlapped);
    }
    TheHost()->Write(Shown({static_cast<const char*>(bytes), size}));
    if (written != nullptr) {
        *written = size;
    }
    return TRUE;
}

/// No more input will come, so the program would wait forever. Handlers that are running may end it.
void EndLeftAlone() {
    if (TheHandlers().called) {
        Sleep(kLongestThreadEndMs);
    }
    TerminateProcess(GetCurrentProcess(), kLeftAlone);
}

std::string ReadText(std::size_t size) {
    const ConsoleRead read = TheHost()->Read(size);
    if (read.end == ConsoleRead::End::kScriptEnded) {
        EndLeftAlone();
    }
    if (read.end == ConsoleRead::End::kInterrupted) {
        SetLastError(ERROR_OPERATION_ABORTED);
    }
    return read.text;
}

BOOL WINAPI ConsoleReadW(HANDLE handle, LPVOID buffer, DWORD units, LPDWORD read,
                         PCONSOLE_READCONSOLE_CONTROL control) {
    if (!IsInput(handle)) {
        return ReadConsoleW(handle, buffer, units, read, control);
    }
    // A byte of UTF-8 never becomes more than one unit.
    const std::wstring text = WideFromUtf8(ReadText(units));
    text.copy(static_cast<wchar_t*>(buffer), units);
    *read = static_cast<DWORD>(text.size());
    return TRUE;
}

BOOL WINAPI ConsoleReadFile(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    if (!IsInput(handle)) {
        return ReadFile(handle, buffer, size, read, overlapped);
    }
    constexpr char kControlZ = '\x1A';
    std::string text = ReadText(size);
    if (!text.empty() && text.front() == kControlZ) {
        text.clear();  // The end of the input for programs that read bytes.
    }
    text.copy(static_cast<char*>(buffer), size);
    *read = static_cast<DWORD>(text.size());
    return TRUE;
}

BOOL WINAPI ConsoleFlush(HANDLE handle) {
    if (!IsInput(handle)) {
        return FlushConsoleInputBuffer(handle);
    }
    TheHost()->FlushKeys();
    return TRUE;
}

/// A key-up is an event of its own.
INPUT_RECORD KeyEvent(char key, bool down) {
    INPUT_RECORD record = {};
    record.EventType = KEY_EVENT;
    record.Event.KeyEvent.bKeyDown = down ? TRUE : FALSE;
    record.Event.KeyEvent.wRepeatCount = 1;
    record.Event.KeyEvent.wVirtualKeyCode =
        key == '\r' ? VK_RETURN : static_cast<WORD>(static_cast<unsigned char>(key));
    record.Event.KeyEvent.uChar.UnicodeChar = static_cast<wchar_t>(static_cast<unsigned char>(key));
    return record;
}

BOOL WINAPI ConsoleNumberOfEvents(HANDLE handle, LPDWORD count) {
    if (!IsInput(handle)) {
        return GetNumberOfConsoleInputEvents(handle, count);
    }
    *count = static_cast<DWORD>(TheHost()->Keys().size());
    return TRUE;
}

/// Only key-down events are delivered.
DWORD CopyEvents(PINPUT_RECORD records, DWORD size) {
    const std::string keys = TheHost()->Keys();
    const auto count = std::min<DWORD>(size, static_cast<DWORD>(keys.size()));
    std::transform(keys.begin(), keys.begin() + count, records, [](char key) { return KeyEvent(key, true); });
    return count;
}

BOOL WINAPI ConsolePeekInput(HANDLE handle, PINPUT_RECORD records, DWORD size, LPDWORD count) {
    if (!IsInput(handle)) {
        return PeekConsoleInputW(handle, records, size, count);
    }
    *count = CopyEvents(records, size);
    return TRUE;
}

BOOL WINAPI ConsoleReadInput(HANDLE handle, PINPUT_RECORD records, DWORD size, LPDWORD count) {
    if (!IsInput(handle)) {
        return ReadConsoleInputW(handle, records, size, count);
    }
    *count = CopyEvents(records, size);
    if (*count == 0) {  // It waits for a key.
        Record("read after the script");
        EndLeftAlone();
    }
    TheHost()->TakeKeys(*count);
    return TRUE;
}

BOOL WINAPI ConsoleSetHandler(PHANDLER_ROUTINE handler, BOOL add) {
    const std::scoped_lock lock(TheHandlers().mutex);
    std::vector<PHANDLER_ROUTINE>& handlers = TheHandlers().in_order;
    if (add != FALSE) {
        handlers.push_back(handler);
        return TRUE;
    }
    const auto found = std::find(handlers.rbegin(), handlers.rend(), handler);
    if (found == handlers.rend()) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    handlers.erase(std::next(found).base());
    return TRUE;
}

DWORD WINAPI ConsoleProcessList(LPDWORD processes, DWORD size) {
    const auto count = static_cast<DWORD>(TheHost()->Processes());
    if (size >= count) {
        std::fill_n(processes, count, GetCurrentProcessId());
    }
    return count;
}

BOOL WINAPI ConsoleSetTitle(LPCWSTR title) {
    TheHost()->SetTitle(Utf8FromWide(title));
    return TRUE;
}

DWORD WINAPI ConsoleGetTitle(LPWSTR title, DWORD size) {
    const std::wstring text = WideFromUtf8(TheHost()->Title());
    if (size == 0) {
        return 0;
    }
    title[text.copy(title, size - 1)] = L'\0';
    return static_cast<DWORD>(text.size());
}

UINT WINAPI ConsoleGetOutputCodePage() {
    return TheHost()->CodePage();
}

BOOL WINAPI ConsoleSetOutputCodePage(UINT code_page) {
    TheHost()->SetCodePage(code_page);
    return TRUE;
}

BOOL WINAPI ConsoleScreenInfo(HANDLE handle, PCONSOLE_SCREEN_BUFFER_INFO info) {
    if (!IsOutput(handle)) {
        return GetConsoleScreenBufferInfo(handle, info);
    }
    const auto columns = static_cast<SHORT>(TheHost()->Columns());
    *info = {};
    info->dwSize = {columns, 9001};
    info->srWindow = {0, 0, static_cast<SHORT>(columns - 1), 29};
    info->dwMaximumWindowSize = {columns, 30};
    return TRUE;
}

struct Replacement {
    std::string_view name;
    FARPROC function;
};

}  // namespace

void SetUpConsole(const ConsoleScript& script, const std::wstring& record_path) {
    record_file = CreateFileW(record_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    TheHandlers().delay_ms =
        std::min<DWORD>(static_cast<DWORD>(script.handlers_after_milliseconds), kLongestThreadEndMs);
    TheHost() = new ConsoleHost(script, {Record, Raise, MachineTime});
}

FARPROC ConsoleFunction(std::string_view name) {
    static const Replacement replacements[] = {
        {"GetConsoleMode", AsProc(&ConsoleGetMode)},
        {"SetConsoleMode", AsProc(&ConsoleSetMode)},
        {"WriteConsoleW", AsProc(&ConsoleWriteW)},
        {"WriteFile", AsProc(&ConsoleWriteFile)},
        {"ReadConsoleW", AsProc(&ConsoleReadW)},
        {"ReadFile", AsProc(&ConsoleReadFile)},
        {"FlushConsoleInputBuffer", AsProc(&ConsoleFlush)},
        {"GetNumberOfConsoleInputEvents", AsProc(&ConsoleNumberOfEvents)},
        {"PeekConsoleInputW", AsProc(&ConsolePeekInput)},
        {"ReadConsoleInputW", AsProc(&ConsoleReadInput)},
        {"SetConsoleCtrlHandler", AsProc(&ConsoleSetHandler)},
        {"GetConsoleProcessList", AsProc(&ConsoleProcessList)},
        {"SetConsoleTitleW", AsProc(&ConsoleSetTitle)},
        {"GetConsoleTitleW", AsProc(&ConsoleGetTitle)},
        {"GetConsoleOutputCP", AsProc(&ConsoleGetOutputCodePage)},
        {"SetConsoleOutputCP", AsProc(&ConsoleSetOutputCodePage)},
        {"GetConsoleScreenBufferInfo", AsProc(&ConsoleScreenInfo)},
    };
    if (TheHost() == nullptr) {
        return nullptr;
    }
    const auto* const found =
        std::find_if(std::begin(replacements), std::end(replacements),
                     [name](const Replacement& replacement) { return replacement.name == name; });
    return found == std::end(replacements) ? nullptr : found->function;
}

void TellConsoleOfEnd() {
    if (TheHost() != nullptr) {
        Record("end");
    }
}

}  // namespace lab
