#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "platform/module_folder.h"
#include "tools/vistrel_diag/worker/worker.h"
#include "tools/vistrel_diag/worker/worker_task.h"

namespace {

constexpr DWORD kPipeSize = 64 * 1024;  // Far more than a child writes while the parent prints a line.
constexpr DWORD kLongestEndMs = 2000;   // A process whose driver hangs in the kernel may never end.

/// After Ctrl-C the child has already ended, and this process will end soon: its own handler has not run yet.
constexpr DWORD kLongestWaitForOwnEndMs = 5000;

KernelHandle SharedMemory() {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return KernelHandle(CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0,
                                           sizeof(WorkerBlock), nullptr));
}

/// A job that ends the child when this process ends. Programs that the child starts are not part of it: a
/// runtime that starts its own services expects them to keep running.
KernelHandle KillingJob() {
    KernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
    if (!job || SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                        sizeof(limits)) == FALSE) {
        return {};
    }
    return job;
}

bool CopyTo(std::span<char> field, std::string_view text) {
    if (text.size() >= field.size()) {
        return false;
    }
    field[text.copy(field.data(), field.size() - 1)] = '\0';
    return true;
}

bool IsUsable(HANDLE handle) {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

/// Makes this process's standard output and error stream inheritable for its lifetime.
class InheritedStreams {
  public:
    InheritedStreams() {
        for (const DWORD which : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
            HANDLE stream = GetStdHandle(which);
            DWORD flags = 0;
            if (!IsUsable(stream) || GetHandleInformation(stream, &flags) == FALSE) {
                stream = nullptr;
            } else if ((flags & HANDLE_FLAG_INHERIT) == 0) {
                SetHandleInformation(stream, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
                changed_.push_back(stream);
            }
            streams_.push_back(stream);
        }
    }
    InheritedStreams(const InheritedStreams&) = delete;
    InheritedStreams& operator=(const InheritedStreams&) = delete;
    ~InheritedStreams() {
        for (HANDLE stream : changed_) {
            SetHandleInformation(stream, HANDLE_FLAG_INHERIT, 0);
        }
    }

    HANDLE Output() const { return streams_[0]; }
    HANDLE Error() const { return streams_[1]; }

  private:
    std::vector<HANDLE> streams_;
    std::vector<HANDLE> changed_;
};

/// The extended attributes of a new process: the job that it belongs to from the start, and the only handles
/// that it inherits.
class StartAttributes {
  public:
    StartAttributes(HANDLE job, std::vector<HANDLE> handles) : job_(job), handles_(std::move(handles)) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 2, 0, &size);
        memory_.resize(size);
        auto* const list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
        if (size == 0 || InitializeProcThreadAttributeList(list, 2, 0, &size) == FALSE) {
            return;
        }
        list_ = list;
        complete_ = UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_JOB_LIST, &job_, sizeof(job_),
                                              nullptr, nullptr) != FALSE &&
                    UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                              handles_.size() * sizeof(HANDLE), nullptr, nullptr) != FALSE;
    }
    StartAttributes(const StartAttributes&) = delete;
    StartAttributes& operator=(const StartAttributes&) = delete;
    ~StartAttributes() {
        if (list_ != nullptr) {
            DeleteProcThreadAttributeList(list_);
        }
    }

    /// Null when the list could not be created.
    LPPROC_THREAD_ATTRIBUTE_LIST Get() const { return complete_ ? list_ : nullptr; }

  private:
    HANDLE job_;
    std::vector<HANDLE> handles_;
    std::vector<std::byte> memory_;
    LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
    bool complete_ = false;
};

/// Each handle once: Windows rejects a list with duplicates, and output and error stream are often the same.
std::vector<HANDLE> WithoutRepetition(std::initializer_list<HANDLE> handles) {
    std::vector<HANDLE> once;
    for (HANDLE handle : handles) {
        if (handle != nullptr && std::find(once.begin(), once.end(), handle) == once.end()) {
            once.push_back(handle);
        }
    }
    return once;
}

std::wstring NumberOf(HANDLE handle) {
    return L" " + std::to_wstring(reinterpret_cast<std::uintptr_t>(handle));
}

WorkerNote NoteIn(const WorkerBlock& block) {
    WorkerNote note;
    note.exception_code = block.exception_code.load(std::memory_order_acquire);
    const std::string_view module(block.fault_module.data(), block.fault_module.size());
    note.module = module.substr(0, module.find('\0'));
    note.aborted = block.aborted != 0;
    return note;
}

}  // namespace

std::unique_ptr<Worker> Worker::Start(std::string_view task, const WorkerMessage& request,
                                      std::chrono::seconds longest_silence) {
    std::unique_ptr<Worker> worker(new Worker(longest_silence));
    if (!worker->Prepare(task, request) || !worker->StartProcess()) {
        return nullptr;
    }
    // Its first message is that it has started. If it ended before, it has not called any library yet.
    if (!worker->Next()) {
        return nullptr;
    }
    return worker;
}

bool Worker::Prepare(std::string_view task, const WorkerMessage& request) {
    memory_ = SharedMemory();
    if (!memory_) {
        return false;
    }
    block_.reset(
        static_cast<WorkerBlock*>(MapViewOfFile(memory_.get(), FILE_MAP_WRITE, 0, 0, sizeof(WorkerBlock))));
    if (!block_ || !CopyTo(block_->task, task) || !CopyTo(block_->request, request.ToLine())) {
        return false;
    }
    block_->magic = WorkerBlock::kMagic;
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    if (CreatePipe(&reading, &writing, &inherited, kPipeSize) == FALSE) {
        return false;
    }
    pipe_ = KernelHandle(reading);
    child_pipe_ = KernelHandle(writing);
    message_sent_ = KernelHandle(CreateEventW(&inherited, /*manual reset*/ FALSE, FALSE, nullptr));
    job_ = KillingJob();
    return message_sent_ && job_;
}

bool Worker::StartProcess() {
    const std::wstring program = ExecutablePath();
    if (program.empty()) {
        return false;
    }
    std::wstring command_line =
        L"\"" + program + L"\" " + std::wstring(kWorkerOption.begin(), kWorkerOption.end()) +
        NumberOf(memory_.get()) + NumberOf(child_pipe_.get()) + NumberOf(message_sent_.get());
    const InheritedStreams streams;
    const StartAttributes attributes(job_.get(),
                                     WithoutRepetition({memory_.get(), child_pipe_.get(), message_sent_.get(),
                                                        streams.Output(), streams.Error()}));
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof(startup);
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;  // No standard input: typed text is for this process.
    startup.StartupInfo.hStdOutput = streams.Output();
    startup.StartupInfo.hStdError = streams.Error();
    startup.lpAttributeList = attributes.Get();
    PROCESS_INFORMATION process = {};
    if (startup.lpAttributeList == nullptr ||
        CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &startup.StartupInfo,
                       &process) == FALSE) {
        return false;
    }
    CloseHandle(process.hThread);
    process_ = KernelHandle(process.hProcess);
    child_pipe_ = {};
    return true;
}

Worker::~Worker() {
    if (!process_) {
        return;
    }
    // A child that is done ends by itself at once.
    if (end_ || !over_ || WaitForSingleObject(process_.get(), kLongestEndMs) != WAIT_OBJECT_0) {
        TerminateProcess(process_.get(), 1);
        WaitForSingleObject(process_.get(), kLongestEndMs);
    }
}

std::optional<WorkerMessage> Worker::Next() {
    while (!over_) {
        const std::optional<std::string> line = NextLine();
        if (!line) {
            over_ = true;
            break;
        }
        std::optional<WorkerMessage> message = WorkerMessage::FromLine(*line);
        if (!message || message->Truth("sign")) {
            continue;
        }
        if (message->Truth("done")) {
            over_ = true;
            break;
        }
        return message;
    }
    return std::nullopt;
}

/// The next whole line, without its end. Empty when the child has ended or was terminated, which is then
/// recorded.
std::optional<std::string> Worker::NextLine() {
    for (bool ended = false;;) {
        ReadPipe();
        if (const std::size_t length = unread_.find('\n'); length != std::string::npos) {
            std::string line = unread_.substr(0, length);
            unread_.erase(0, length + 1);
            return line;
        }
        if (ended) {
            RecordEnd();
            return std::nullopt;
        }
        // Waits for the process, not for the end of the pipe: programs that the child started may keep the
        // pipe open for days.
        const std::array<HANDLE, 2> awaited = {message_sent_.get(), process_.get()};
        const auto longest = std::chrono::duration_cast<std::chrono::milliseconds>(longest_silence_);
        const DWORD what = WaitForMultipleObjects(static_cast<DWORD>(awaited.size()), awaited.data(), FALSE,
                                                  static_cast<DWORD>(longest.count()));
        if (what != WAIT_OBJECT_0 && what != WAIT_OBJECT_0 + 1) {
            NoteEnd(what == WAIT_TIMEOUT ? WorkerEnd::Kind::Silent : WorkerEnd::Kind::Lost);
            return std::nullopt;
        }
        ended = what == WAIT_OBJECT_0 + 1;
    }
}

/// Reads what is in the pipe without waiting.
void Worker::ReadPipe() {
    DWORD available = 0;
    while (PeekNamedPipe(pipe_.get(), nullptr, 0, nullptr, &available, nullptr) != FALSE && available > 0) {
        std::array<char, 4096> buffer = {};
        DWORD read = 0;
        if (ReadFile(pipe_.get(), buffer.data(), std::min<DWORD>(available, buffer.size()), &read, nullptr) ==
                FALSE ||
            read == 0) {
            return;
        }
        unread_.append(buffer.data(), read);
    }
}

void Worker::RecordEnd() {
    DWORD exit_code = 0;
    GetExitCodeProcess(process_.get(), &exit_code);
    if (exit_code == static_cast<DWORD>(STATUS_CONTROL_C_EXIT)) {
        WaitForSingleObject(GetCurrentProcess(), kLongestWaitForOwnEndMs);
    }
    end_ = UnderstandWorkerEnd(exit_code, NoteIn(*block_));
}

void Worker::NoteEnd(WorkerEnd::Kind kind) {
    end_ = WorkerEnd{};
    end_->kind = kind;
    end_->silent_seconds = static_cast<int>(longest_silence_.count());
}
