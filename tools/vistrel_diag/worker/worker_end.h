// How a worker process ended before it was done, and the words for it.
#pragma once

#include <cstdint>
#include <string>

struct WorkerEnd {
    enum class Kind {
        Crashed,  ///< `code` is the exception's
        Aborted,  ///< the C runtime's abort
        Exited,   ///< it ended with the exit code `code`, by itself or terminated by another process
        Lost,     ///< waiting for it failed, so it was ended
        Silent,   ///< it gave no sign of life for `silent_seconds`, so it was ended
    };

    Kind kind = Kind::Exited;
    std::uint32_t code = 0;
    std::string module;  ///< file name of the module that crashed, in UTF-8; empty when unknown
    int silent_seconds = 0;
};

/// What the worker recorded about itself in the memory that it shares with its parent.
struct WorkerNote {
    std::uint32_t exception_code = 0;  ///< of the last exception raised, handled or not; 0 means none
    std::string module;                ///< the module that raised it
    bool aborted = false;
};

/// How the worker ended, from its exit code and its note.
WorkerEnd UnderstandWorkerEnd(std::uint32_t exit_code, const WorkerNote& note);

/// The predicate of a sentence about the work that was asked for: "crashed in name.dll (access violation,
/// 0xC0000005)".
std::string WorkerEndText(const WorkerEnd& end);
