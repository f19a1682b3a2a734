// Asking foreign code in a child process, the same program: what crashes or hangs there costs the section
// that asked, not the run.
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

/// Unmaps what MapViewOfFile mapped.
struct BlockUnmapper {
    void operator()(WorkerBlock* block) const { UnmapViewOfFile(block); }
};
using MappedBlock = std::unique_ptr<WorkerBlock, BlockUnmapper>;

/// One child process with one task. It ends with this object, and whenever the tool's own process ends.
class Worker {
  public:
    /// Starts the task of that name. Null when no child can be started or the child does not come to begin:
    /// what was to be asked is then asked in the calling process. A child that says nothing for
    /// `longest_silence` is ended.
    static std::unique_ptr<Worker> Start(std::string_view task, const WorkerMessage& request,
                                         std::chrono::seconds longest_silence);

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    /// The next thing that the child found, waited for. Nothing when it has no more to say: it is done, or
    /// End() tells how it ended.
    std::optional<WorkerMessage> Next();

    /// How the child ended before it was done; nothing while it runs and after it was done.
    const std::optional<WorkerEnd>& End() const { return end_; }

  private:
    explicit Worker(std::chrono::seconds longest_silence) : longest_silence_(longest_silence) {}

    bool Prepare(std::string_view task, const WorkerMessage& request);
    bool StartProcess();
    std::optional<std::string> NextLine();
    void ReadPipe();
    void NoteDeath();
    void NoteEnd(WorkerEnd::Kind kind);

    std::chrono::seconds longest_silence_;
    KernelHandle memory_;
    MappedBlock block_;
    KernelHandle pipe_;        ///< what the child says
    KernelHandle child_pipe_;  ///< the child's end of it
    KernelHandle spoke_;       ///< event: the child has written
    KernelHandle job_;
    KernelHandle process_;
    std::string unread_;  ///< taken from the pipe
    bool over_ = false;
    std::optional<WorkerEnd> end_;
};
