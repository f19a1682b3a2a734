// The worker's side: carrying out a task in the child process.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tools/vistrel_diag/worker/worker_message.h"

/// Where a task tells what it finds.
class WorkerChannel {
  public:
    virtual ~WorkerChannel() = default;

    virtual void Tell(const WorkerMessage& message) = 0;

    /// A sign of life. Costs next to nothing however often it is given.
    virtual void GiveSign() = 0;
};

struct WorkerTask {
    std::string_view name;
    void (*carry_out)(const WorkerMessage& request, WorkerChannel& channel);
};

/// The option that makes this program a worker. It is for the program itself: what stands behind it are
/// handles that only a parent can have prepared.
inline constexpr std::string_view kWorkerOption = "--worker";

/// Whether the arguments behind the program's name ask for a worker.
bool IsWorkerCommandLine(std::span<const std::string> arguments);

/// Carries out the one of `tasks` that the parent asks for, and returns the exit code. Where it comes to the
/// end of the task, it ends the process itself.
int RunAsWorker(std::span<const std::string> arguments, std::span<const WorkerTask> tasks);
