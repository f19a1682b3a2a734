#include "tools/vistrel_diag/worker/worker_end.h"

#include "platform/exception_name.h"
#include "platform/format.h"

namespace {

/// Windows' own error codes have this first byte. Other large numbers usually come from a program's exit(-1).
bool IsErrorOfWindows(std::uint32_t code) {
    return (code >> 24) == 0xC0;
}

std::string CrashText(const WorkerEnd& end) {
    const char* const name = ExceptionName(end.code);
    return FormatText("crashed%s%s (%s%s0x%08X)", end.module.empty() ? "" : " in ", end.module.c_str(),
                      name == nullptr ? "exception" : name, name == nullptr ? " " : ", ", end.code);
}

}  // namespace

WorkerEnd UnderstandWorkerEnd(std::uint32_t exit_code, const WorkerNote& note) {
    WorkerEnd end;
    end.code = exit_code;
    const bool noted = note.exception_code == exit_code && exit_code != 0;
    if (note.aborted) {
        end.kind = WorkerEnd::Kind::Aborted;
    } else if (noted || IsErrorOfWindows(exit_code) || ExceptionName(exit_code) != nullptr) {
        end.kind = WorkerEnd::Kind::Crashed;
        end.module = noted ? note.module : "";
    }
    return end;
}

std::string WorkerEndText(const WorkerEnd& end) {
    switch (end.kind) {
        case WorkerEnd::Kind::Crashed:
            return CrashText(end);
        case WorkerEnd::Kind::Aborted:
            return "aborted";
        case WorkerEnd::Kind::Lost:
            return "could not be waited for and was ended";
        case WorkerEnd::Kind::Silent:
            return FormatText("gave no sign of life for %d seconds and was ended", end.silent_seconds);
        case WorkerEnd::Kind::Exited:
            break;
    }
    return end.code <= 0xFF ? FormatText("ended its process (exit code %u)", end.code)
                            : FormatText("ended its process (exit code 0x%08X)", end.code);
}
