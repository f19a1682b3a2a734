// A run that dies still leaves its report: drivers crash and runtimes hang while the tool calls them, and the
// lines found so far are what support needs then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// What ended a run before its end. Not covered, for Windows ends the process without telling it:
/// TerminateProcess, a fail-fast, a damaged heap, and abort in a module with a C runtime inside itself.
enum class RunEnd { Crash, Abort, ControlC, ConsoleClosed, SessionEnded, ClosedByInstaller };

/// For a prompt that learns of Ctrl-C before the handlers do: rescues what there is to rescue, puts the
/// console back and ends the process as Ctrl-C does.
[[noreturn]] void EndByControlC();

/// A crash: the exception's code, and the file name of the module that it happened in; empty when unknown.
struct CrashSite {
    std::uint32_t exception_code = 0;
    const char* module = "";
    std::size_t offset = 0;  ///< of the instruction, from the start of the module; 0 when unknown
};

/// The line that closes the report of a run cut short: in which section, and by what; `site` is that of a
/// crash. Allocates nothing, so that it can be made while the process dies; returns the bytes written to
/// `buffer` without its terminating zero.
std::size_t FormatCutShortLine(char* buffer, std::size_t size, RunEnd end, const CrashSite& site,
                               const char* section);

/// From its construction, a process that dies of an unhandled exception (a stack overflow and abort
/// included), of Ctrl-C, a closed console or the end of the session first writes the kept lines to the report
/// file and closes it with that line. An ordinary run is not changed by a byte. A library that puts a filter
/// or a handler of its own in place of the rescue's loses that place when the next section begins. At most
/// one at a time; the thread that makes it is the one that calls foreign code.
class Rescue {
  public:
    /// `report_path`: UTF-8, where the ordinary report will be written.
    explicit Rescue(const std::string& report_path);

    ~Rescue();

    Rescue(const Rescue&) = delete;
    Rescue& operator=(const Rescue&) = delete;

    /// Carries out `write`, which writes the ordinary report; a console event waits for its end, a crash
    /// still rescues. Afterwards there is nothing left to rescue, and a crash ends the process quietly.
    void WriteOrdinaryReport(const std::function<void()>& write);
};
