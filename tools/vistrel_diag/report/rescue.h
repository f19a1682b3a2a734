// A run that dies still leaves its report: drivers crash and runtimes hang while the tool calls them, and the
// lines found so far are what support needs then.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// What ended a run before its end. Not covered, for Windows ends the process without telling it:
/// TerminateProcess, and the fail-fast by which a C runtime of another module aborts.
enum class RunEnd { Crash, Abort, ControlC, ConsoleClosed, SessionEnded, ClosedByInstaller };

/// For a prompt that learns of Ctrl-C before the handlers do: rescues what there is to rescue, puts the
/// console back and ends the process as Ctrl-C does.
[[noreturn]] void EndByControlC();

/// The line that closes the report of a run cut short: in which section, and by what. `exception_code` is the
/// one of a crash. Allocates nothing, so that it can be made while the process dies; returns the bytes
/// written to `buffer` without its terminating zero.
std::size_t FormatCutShortLine(char* buffer, std::size_t size, RunEnd end, unsigned exception_code,
                               const char* section);

/// From its construction, a process that dies of an unhandled exception (a stack overflow and abort
/// included), of Ctrl-C, a closed console or the end of the session first writes the kept lines to the report
/// file and closes it with that line. An ordinary run is not changed by a byte. At most one at a time.
class Rescue {
  public:
    /// `report_path`: UTF-8, where the ordinary report will be written.
    explicit Rescue(const std::string& report_path);

    ~Rescue();

    Rescue(const Rescue&) = delete;
    Rescue& operator=(const Rescue&) = delete;

    /// Carries out `write`, which writes the ordinary report; a console event waits for its end, a crash
    /// still rescues. Afterwards there is nothing left to rescue.
    void WriteOrdinaryReport(const std::function<void()>& write);
};
