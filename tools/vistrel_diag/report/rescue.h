// Saves the report of a run that crashes. Drivers crash and runtimes hang while the tool calls them, and
// support then needs the lines found so far.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// What ended a run early. Not covered, because Windows ends the process without notice: TerminateProcess, a
/// fail-fast, a damaged heap, and abort in a module with a statically linked C runtime.
enum class RunEnd { Crash, Abort, ControlC, ConsoleClosed, SessionEnded, ClosedByInstaller };

/// For a prompt that learns of Ctrl-C before the handlers do: writes the report so far, restores the console
/// and ends the process as Ctrl-C does.
[[noreturn]] void EndByControlC();

/// A crash: the exception's code, and the file name of the module that it happened in; empty when unknown.
struct CrashSite {
    std::uint32_t exception_code = 0;
    const char* module = "";
    std::size_t offset = 0;  ///< of the instruction, from the start of the module; 0 when unknown
};

/// Formats the closing line of a report that was cut short: in which section, and by what. `site` is used for
/// a crash. Allocates nothing, so it can be called during a crash. Returns the number of bytes
/// written to `buffer`, without the terminating zero.
std::size_t FormatCutShortLine(char* buffer, std::size_t size, RunEnd end, const CrashSite& site,
                               const char* section);

/// While this object exists, a process that ends through an unhandled exception (including a stack overflow
/// and abort), Ctrl-C, a closed console or the end of the session first writes the lines so far to the report
/// file and adds that closing line. The report of an ordinary run does not change. If a library replaces the
/// exception filter or abort handler with its own, the rescue's are installed again when the next section
/// begins. At most one object at a time; the thread that creates it is the one that calls foreign code.
class Rescue {
  public:
    /// `report_path`: UTF-8, where the ordinary report will be written.
    explicit Rescue(const std::string& report_path);

    ~Rescue();

    Rescue(const Rescue&) = delete;
    Rescue& operator=(const Rescue&) = delete;

    /// Calls `write`, which writes the ordinary report. A console event waits until it returns; a crash
    /// during it still saves the report. Afterwards nothing is left to save, and a crash ends the process
    /// quietly.
    void WriteOrdinaryReport(const std::function<void()>& write);
};
