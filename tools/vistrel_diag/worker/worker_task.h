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

/// If the arguments after the program's name have the form of those that a parent gives its worker, runs the
/// one of `tasks` that it asks for and ends the process. Otherwise returns: a person may have typed the
/// option, and an unknown argument is ignored.
void RunIfWorker(std::span<const std::string> arguments, std::span<const WorkerTask> tasks);
