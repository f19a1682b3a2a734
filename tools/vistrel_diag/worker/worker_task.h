// The worker's side: runs a task in the child process.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tools/vistrel_diag/worker/worker_message.h"

/// Where a task sends its results.
class WorkerChannel {
  public:
    virtual ~WorkerChannel() = default;

    virtual void Tell(const WorkerMessage& message) = 0;

    /// Sends a sign of life. Cheap enough to be called at any rate.
    virtual void GiveSign() = 0;
};

struct WorkerTask {
    std::string_view name;
    void (*carry_out)(const WorkerMessage& request, WorkerChannel& channel);
};

/// The option that makes this program a worker. For internal use: the arguments after it are handles that
/// only the parent process can prepare.
inline constexpr std::string_view kWorkerOption = "--worker";

/// Whether the arguments after the program's name ask for a worker.
bool IsWorkerCommandLine(std::span<const std::string> arguments);

/// Runs the one of `tasks` that the parent asks for. When the task is finished, ends the process itself;
/// returns an exit code only when that point is not reached.
int RunAsWorker(std::span<const std::string> arguments, std::span<const WorkerTask> tasks);
