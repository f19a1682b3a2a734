#include "tools/vistrel_diag/worker/worker_task.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

#include "platform/end_process.h"
#include "platform/own_thread.h"
#include "tools/vistrel_diag/worker/worker.h"
#include "tools/vistrel_diag/worker/worker_crash_record.h"

namespace {

constexpr UINT kNotStarted = 2;           // The exit code when the task could not start.
constexpr UINT kCannotTell = 4;           // The exit code when the pipe is broken.
constexpr ULONGLONG kSignEveryMs = 1000;  // Too seldom to disturb a measurement.

/// Handles that this process inherits from its parent, in the order of the command line.
struct Inherited {
    HANDLE memory;
    HANDLE pipe;
    HANDLE message_sent;
};

bool IsNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

HANDLE HandleOf(const std::string& number) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::strtoull(number.c_str(), nullptr, 10)));
}

class PipeChannel : public WorkerChannel {
  public:
    PipeChannel(HANDLE pipe, HANDLE message_sent) : pipe_(pipe), message_sent_(message_sent) {}

    void Tell(const WorkerMessage& message) override {
        const std::string line = message.ToLine();
        DWORD written = 0;
        if (WriteFile(pipe_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr) == FALSE ||
            written != line.size()) {
            // Later results would be lost without anyone noticing.
            TerminateProcess(GetCurrentProcess(), kCannotTell);
        }
        SetEvent(message_sent_);
    }

    void GiveSign() override {
        if (const ULONGLONG now = GetTickCount64(); now - last_sign_ >= kSignEveryMs) {
            last_sign_ = now;
            Tell(WorkerMessage().SetTruth("sign", true));
        }
    }

  private:
    HANDLE pipe_;
    HANDLE message_sent_;
    ULONGLONG last_sign_ = GetTickCount64();
};

/// Programs that a runtime starts inherit the inheritable handles and would keep them open after this process
/// ends.
void StopInheritance(const Inherited& inherited) {
    for (HANDLE handle : {inherited.memory, inherited.pipe, inherited.message_sent,
                          GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)}) {
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    }
}

/// The memory shared with the parent; null if the handle is not a file mapping.
MappedBlock MapBlock(HANDLE memory) {
    MappedBlock block(
        static_cast<WorkerBlock*>(MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, sizeof(WorkerBlock))));
    return block && block->magic == WorkerBlock::kMagic ? std::move(block) : nullptr;
}

/// Runs the task on its own thread and reports its start and its end.
void CarryOut(const WorkerTask& task, const WorkerMessage& request, WorkerBlock& block,
              WorkerChannel& channel) {
    RunOnOwnThread([&] {
        RecordCrashesIn(block);
        channel.Tell(WorkerMessage().SetTruth("begun", true));
        task.carry_out(request, channel);
        channel.Tell(WorkerMessage().SetTruth("done", true));
    });
}

}  // namespace

void RunIfWorker(std::span<const std::string> arguments, std::span<const WorkerTask> tasks) {
    if (arguments.size() != 4 || arguments.front() != kWorkerOption ||
        !std::all_of(arguments.begin() + 1, arguments.end(), IsNumber)) {
        return;
    }
    const Inherited inherited = {HandleOf(arguments[1]), HandleOf(arguments[2]), HandleOf(arguments[3])};
    MappedBlock block = MapBlock(inherited.memory);
    if (!block) {
        EndProcess(kNotStarted);
    }
    StopInheritance(inherited);
    const std::optional<WorkerMessage> request = WorkerMessage::FromLine(block->request.data());
    const auto task = std::find_if(tasks.begin(), tasks.end(), [&block](const WorkerTask& candidate) {
        return candidate.name == block->task.data();
    });
    if (!request || task == tasks.end()) {
        EndProcess(kNotStarted);
    }
    PipeChannel channel(inherited.pipe, inherited.message_sent);
    CarryOut(*task, *request, *block, channel);
    StopRecordingCrashes();
    block.reset();
    EndProcess(0);
}
