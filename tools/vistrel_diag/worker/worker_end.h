// How a worker process ended before it was done, and the words for it.
#pragma once

#include <cstdint>
#include <string>

struct WorkerEnd {
    enum class Kind {
        Crashed,  ///< `code` is the exception's
        Aborted,  ///< the C runtime's abort
        Exited,   ///< it was ended with the exit code `code`, by itself or from outside
        Lost,     ///< Windows refused to wait for it, and it was ended for that
        Silent,   ///< it gave no sign of life for `silent_seconds`, and was ended for that
    };

    Kind kind = Kind::Exited;
    std::uint32_t code = 0;
    std::string module;  ///< file name of the module that crashed, in UTF-8; empty when unknown
    int silent_seconds = 0;
};

/// What the worker noted of itself in the memory that it shares with its parent.
struct WorkerNote {
    std::uint32_t exception_code = 0;  ///< of the last exception that was raised, handled or not; 0: none
    std::string module;                ///< where that one was raised
    bool aborted = false;
};

/// What the exit code and the worker's note say together.
WorkerEnd UnderstandWorkerEnd(std::uint32_t exit_code, const WorkerNote& note);

/// The predicate of a sentence about what was asked: "crashed in name.dll (access violation, 0xC0000005)".
std::string WorkerEndText(const WorkerEnd& end);
