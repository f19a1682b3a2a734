// Calls foreign code in a child process of the same program. A crash or hang there costs one section, not the
// run.
#pragma once

#include <windows.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/unique_handle.h"
#include "tools/vistrel_diag/worker/worker_block.h"
#include "tools/vistrel_diag/worker/worker_end.h"
#include "tools/vistrel_diag/worker/worker_message.h"

/// Unmaps a view of MapViewOfFile.
struct BlockUnmapper {
    void operator()(WorkerBlock* block) const { UnmapViewOfFile(block); }
};
using MappedBlock = std::unique_ptr<WorkerBlock, BlockUnmapper>;

/// One child process with one task. The process is ended with this object, and when the tool's own process
/// ends for any reason.
class Worker {
  public:
    /// Starts the task of that name. Null when no child can be started or the child fails before it begins
    /// the task: the caller then does the work in its own process. A child that sends nothing for
    /// `longest_silence` is ended.
    static std::unique_ptr<Worker> Start(std::string_view task, const WorkerMessage& request,
                                         std::chrono::seconds longest_silence);

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    /// Waits for the child's next message. Nothing when there are no more: the child is done, or End() says
    /// how it ended.
    std::optional<WorkerMessage> Next();

    /// How the child ended before it was done; nothing while it runs, and nothing when it finished its task.
    const std::optional<WorkerEnd>& End() const { return end_; }

  private:
    explicit Worker(std::chrono::seconds longest_silence) : longest_silence_(longest_silence) {}

    bool Prepare(std::string_view task, const WorkerMessage& request);
    bool StartProcess();
    std::optional<std::string> NextLine();
    void ReadPipe();
    void RecordEnd();
    void NoteEnd(WorkerEnd::Kind kind);

    std::chrono::seconds longest_silence_;
    KernelHandle memory_;
    MappedBlock block_;
    KernelHandle pipe_;          ///< messages from the child
    KernelHandle child_pipe_;    ///< the child's end of that pipe
    KernelHandle message_sent_;  ///< an event: the child has written
    KernelHandle job_;
    KernelHandle process_;
    std::string unread_;  ///< taken from the pipe, not yet returned by Next
    bool over_ = false;
    std::optional<WorkerEnd> end_;
};
