// The cost of a quick run's sections beyond the system calls that they make. Another thread samples the run
// every other millisecond: its position, and the processor time that it has used outside the kernel. Time in
// this program's code or in the C runtime is the tool's own. Also counts the process snapshots.
//
// Run it instead of the tool, in a folder without depth models.
#include <windows.h>
// tlhelp32.h needs the types of windows.h.
#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <thread>

#include "bench/ratio.h"
#include "tools/vistrel_diag/guided_run.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/warp/colour_picture.h"

namespace {

std::atomic<int> snapshots = 0;

}  // namespace

// Both replace the functions of the import libraries.
HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD process) {
    static const auto real = reinterpret_cast<decltype(&CreateToolhelp32Snapshot)>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "CreateToolhelp32Snapshot"));
    ++snapshots;
    return real(flags, process);
}
// A window is in the foreground, as on a user's machine.
extern "C" {
decltype(&GetForegroundWindow) __imp_GetForegroundWindow = GetDesktopWindow;
}

namespace {

class CodeRange {
  public:
    explicit CodeRange(const wchar_t* module) {
        MODULEINFO information = {};
        GetModuleInformation(GetCurrentProcess(), GetModuleHandleW(module), &information,
                             sizeof(information));
        begin_ = reinterpret_cast<std::uint64_t>(information.lpBaseOfDll);
        end_ = begin_ + information.SizeOfImage;
    }
    bool Has(std::uint64_t address) const { return begin_ <= address && address < end_; }

  private:
    std::uint64_t begin_ = 0;
    std::uint64_t end_ = 0;
};

/// User time only: the kernel's includes allocating memory and writing to the console.
double ProcessorMs(HANDLE thread) {
    FILETIME created = {};
    FILETIME ended = {};
    FILETIME kernel = {};
    FILETIME user = {};
    GetThreadTimes(thread, &created, &ended, &kernel, &user);
    constexpr double kUnitsPerMs = 1e4;
    return user.dwLowDateTime / kUnitsPerMs;
}

/// Processor time.
struct SectionTime {
    double own_ms = 0.0;
    double all_ms = 0.0;
};

/// Samples a thread until it is stopped.
class Watcher {
  public:
    explicit Watcher(HANDLE watched) : watched_(watched), thread_([this] { Watch(); }) {}

    const std::map<std::string, SectionTime>& Stop() {
        stop_ = true;
        thread_.join();
        return sections_;
    }

  private:
    void Watch() {
        const CodeRange program(nullptr);
        const CodeRange c_runtime(L"msvcrt.dll");
        double before = ProcessorMs(watched_);
        while (!stop_) {
            Sleep(2);
            const std::uint64_t place = PlaceOfThread();
            const double now = ProcessorMs(watched_);
            SectionTime& section = sections_[Report::CurrentSection()];
            const double ms = now - before;
            section.all_ms += ms;
            section.own_ms += program.Has(place) || c_runtime.Has(place) ? ms : 0.0;
            before = now;
        }
    }

    /// The suspended thread may hold any lock of the process, so nothing may be allocated meanwhile.
    std::uint64_t PlaceOfThread() {
        alignas(16) CONTEXT context = {};
        context.ContextFlags = CONTEXT_CONTROL;
        SuspendThread(watched_);
        const bool known = GetThreadContext(watched_, &context) != FALSE;
        ResumeThread(watched_);
        return known ? context.Rip : 0;
    }

    HANDLE watched_;
    std::atomic<bool> stop_ = false;
    std::map<std::string, SectionTime> sections_;
    std::thread thread_;  // Last, because it uses all members above.
};

HANDLE ThisThread() {
    HANDLE thread = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    return thread;
}

/// Uses this much processor time, calculating as the tool does.
void Reckon(double milliseconds) {
    HANDLE const thread = ThisThread();
    const double end = ProcessorMs(thread) + milliseconds;
    while (ProcessorMs(thread) < end) {
        // So small that no memory comes from the system, and repeated so often that reading the time does not
        // matter.
        for (int i = 0; i < 1000; ++i) {
            BuildColourPicture({}, 64, 36);
        }
    }
}

/// Whether a watcher detects at least half of the expected time.
bool WatcherSees() {
    constexpr double kMs = 200.0;
    Watcher watcher(ThisThread());
    Reckon(kMs);
    double own_ms = 0.0;
    for (const auto& [title, time] : watcher.Stop()) {
        own_ms += time.own_ms;
    }
    return own_ms >= kMs / 2;
}

}  // namespace

int main() {
    if (!WatcherSees()) {
        std::fputs("section_cost_bench: the tool's own code cannot be watched here\n", stderr);
        return 1;
    }
    Watcher watcher(ThisThread());
    RunOptions options;
    options.quick = true;
    options.run_models = false;
    options.capture_seconds = 0.0;
    CarryOutRun(options);

    constexpr double kMostMs = 50.0;
    SectionTime whole;
    double most_ms = 0.0;
    for (const auto& [title, time] : watcher.Stop()) {
        std::printf("own %6.0f of %6.0f ms: %s\n", time.own_ms, time.all_ms, title.c_str());
        whole.own_ms += time.own_ms;
        whole.all_ms += time.all_ms;
        most_ms = std::max(most_ms, time.own_ms);
    }
    PrintRatio("own code of the costliest section", "50 ms", most_ms / kMostMs, {{}, 1.0});
    PrintRatio("own code of a quick run", "the run, processor time", whole.own_ms / whole.all_ms, {});
    PrintRatio("process snapshots of a quick run", "two: all, who is in front", snapshots / 2.0, {{}, 1.0});
    return 0;
}
