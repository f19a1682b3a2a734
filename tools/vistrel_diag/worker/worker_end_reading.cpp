#include "tools/vistrel_diag/worker/worker_end_reading.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "tools/vistrel_diag/report/line_reading.h"

namespace {

std::optional<WorkerEnd> ReadCrash(std::string_view text) {
    WorkerEnd end;
    end.kind = WorkerEnd::Kind::Crashed;
    std::string where;
    std::string name;
    if (!LineScan(text)
             .Text("crashed")
             .UpToLast(where, " (")
             .UpToLast(name, "0x")
             .Hex(end.code)
             .Text(")")
             .IsWhole()) {
        return std::nullopt;
    }
    // The name is one of Windows' own exceptions, or "exception" for any other.
    if (name != "exception " && !name.ends_with(", ")) {
        return std::nullopt;
    }
    const bool known = where.empty() || LineScan(where).Text(" in ").Rest(end.module).Matches();
    return known ? std::optional(std::move(end)) : std::nullopt;
}

std::optional<WorkerEnd> ReadExit(std::string_view text) {
    WorkerEnd end;
    end.kind = WorkerEnd::Kind::Exited;
    if (LineScan(text).Text("ended its process (exit code 0x").Hex(end.code).Text(")").IsWhole() ||
        LineScan(text).Text("ended its process (exit code ").Whole(end.code).Text(")").IsWhole()) {
        return end;
    }
    return std::nullopt;
}

}  // namespace

std::optional<WorkerEnd> ReadWorkerEnd(std::string_view text) {
    WorkerEnd end;
    if (IsLine(text, "aborted")) {
        end.kind = WorkerEnd::Kind::Aborted;
        return end;
    }
    if (IsLine(text, "could not be waited for and was ended")) {
        end.kind = WorkerEnd::Kind::Lost;
        return end;
    }
    if (LineScan(text)
            .Text("gave no sign of life for ")
            .Whole(end.silent_seconds)
            .Text(" seconds and was ended")
            .IsWhole()) {
        end.kind = WorkerEnd::Kind::Silent;
        return end;
    }
    const std::optional<WorkerEnd> crash = ReadCrash(text);
    return crash ? crash : ReadExit(text);
}
