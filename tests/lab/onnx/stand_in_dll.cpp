// The counting runtime as an onnxruntime.dll, for whole runs of the tool. The environment variable
// VISTREL_ONNX_STAND_IN controls it, as words separated by blanks:
//
//     no-base            the first entry point returns null
//     old                supports the table only up to version 17, like the copy in Windows; a request for a
//                        newer one also prints a line to the error stream, as the genuine one does
//     fail=ENTRY         the table's ENTRY (or AppendDirectMl) returns an error status
//     throw=ENTRY        it throws a C++ exception instead
//     crash=ENTRY        it crashes the program; any other kind in tests/lab/fatal_failure.h works too. ENTRY
//                        may also be a release (ReleaseSession), AllocatorFree, or, at the first call only,
//                        OrtGetApiBase, GetApi or DllMain, which runs while the DLL is loaded
//     call=N             at its Nth call, not the first
//     in-error=ENTRY     the entry of crash=ENTRY only fails; this one (GetErrorMessage or ReleaseStatus)
//     crashes
//                        when it is given the error status
//     message=WORD       with this message
//     message-bytes=HEX  or with these bytes, which need not be UTF-8
//     pixel-takes=NS     a Run takes this many nanoseconds of the machine's clock per input pixel
//     ledger=FILE        at the end of the process writes a line "KIND made N alive N" for each kind of
//     object
//                        to FILE
//     calls=FILE         and "ENTRY called N" for each entry that was called, and "ENTRY failed N", with the
//                        number of the call, for one that was made to fail
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/lab/fatal_failure.h"
#include "tests/lab/onnx/counting_runtime.h"

namespace {

bool no_base = false;
bool old_version = false;
std::string ledger_file;
std::string failure;
std::string calls_file;
int table_requests = 0;
double nanoseconds_per_pixel = 0;

/// Lets the duration of a Run pass: on a simulated machine by its clock, which may be scripted.
void TakeTime() {
    double nanoseconds = nanoseconds_per_pixel;
    const std::vector<std::int64_t>& shape = TheCountingRuntime().tensor_shape;
    for (std::size_t i = 2; i < shape.size(); ++i) {
        nanoseconds *= static_cast<double>(shape[i]);
    }
    const double microseconds = nanoseconds / 1000;
    using PassTime = void (*)(std::int64_t microseconds);
    HMODULE const machine = GetModuleHandleW(L"vistrel_lab_machine.dll");
    if (machine != nullptr) {
        reinterpret_cast<PassTime>(GetProcAddress(machine, "LabPassTime"))(
            static_cast<std::int64_t>(microseconds));
    } else {
        Sleep(static_cast<DWORD>(microseconds / 1000));
    }
}

/// The bytes of a text with two hexadecimal digits each.
std::string BytesOf(const std::string& digits) {
    constexpr int kHexadecimal = 16;
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, kHexadecimal));
    }
    return bytes;
}

void Obey(const std::string& word) {
    CountingRuntime& runtime = TheCountingRuntime();
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (name == "no-base") {
        no_base = true;
    } else if (name == "old") {
        old_version = true;
    } else if (name == "fail" || name == "throw") {
        runtime.failing_entry = value;
        runtime.throws = name == "throw";
    } else if (lab::IsFatalFailure(name)) {
        failure = name;
        runtime.failing_entry = value;
        runtime.instead_of_failing = [] { lab::FailFatally(failure); };
    } else if (name == "call") {
        runtime.failing_call = std::atoi(value.c_str());
    } else if (name == "in-error") {
        runtime.error_entry = value;
    } else if (name == "message") {
        runtime.message = value;
    } else if (name == "message-bytes") {
        runtime.message = BytesOf(value);
    } else if (name == "pixel-takes") {
        nanoseconds_per_pixel = std::atof(value.c_str());
        runtime.while_running = TakeTime;
    } else if (name == "ledger") {
        ledger_file = value;
    } else if (name == "calls") {
        calls_file = value;
    }
}

void ReadOrders() {
    const char* const orders = std::getenv("VISTREL_ONNX_STAND_IN");
    std::istringstream words(orders == nullptr ? "" : orders);
    for (std::string word; words >> word;) {
        Obey(word);
    }
    TheCountingRuntime().input_dimensions = {-1, 3, -1, -1};
}

void WriteLedger() {
    if (ledger_file.empty()) {
        return;
    }
    std::ofstream ledger(ledger_file);
    for (const auto& [kind, count] : TheCountingRuntime().made) {
        ledger << kind << " made " << count << " alive " << TheCountingRuntime().alive[kind] << "\n";
    }
}

void WriteCalls() {
    if (calls_file.empty()) {
        return;
    }
    std::ofstream calls(calls_file);
    for (const auto& [entry, count] : TheCountingRuntime().calls) {
        calls << entry << " called " << count << "\n";
    }
    for (const auto& [entry, call] : TheCountingRuntime().failed) {
        calls << entry << " failed " << call << "\n";
    }
}

/// Ends or stops the program if `entry` is to do so.
void FailIfOrdered(const char* entry) {
    if (!failure.empty() && TheCountingRuntime().failing_entry == entry) {
        lab::FailFatally(failure);
    }
}

const OrtApi* ORT_API_CALL GetApi(std::uint32_t version) noexcept {
    ++table_requests;
    FailIfOrdered("GetApi");
    if (version <= (old_version ? 17U : 24U)) {
        return CountingRuntimeEntries().api;
    }
    std::fprintf(stderr, "stand-in: API version %u is refused\n", static_cast<unsigned>(version));
    return nullptr;
}

const char* ORT_API_CALL GetVersionString() noexcept {
    return old_version ? "1.17.1" : "1.24.3";
}

constexpr OrtApiBase kBase = {GetApi, GetVersionString};

}  // namespace

extern "C" const OrtApiBase* StandInGetApiBase() {
    FailIfOrdered("OrtGetApiBase");
    return no_base ? nullptr : &kBase;
}

extern "C" OrtStatus* StandInAppendDirectMl(OrtSessionOptions* options, int device_id) {
    return CountingRuntimeEntries().append_directml(options, device_id);
}

// An unrelated function that another build of the runtime exports at the ordinal; it takes different
// arguments.
extern "C" OrtStatus* StandInAppendOther(OrtSessionOptions*, int) {
    __builtin_trap();
    return nullptr;
}

// For a test that has loaded the DLL.
extern "C" CountingRuntime* StandInAccount() {
    return &TheCountingRuntime();
}

extern "C" int StandInTableRequests() {
    return table_requests;
}

// For a process that ends without notifying its DLLs.
extern "C" void LabProcessEnds() {
    WriteLedger();
    WriteCalls();
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        ReadOrders();
        FailIfOrdered("DllMain");
    } else if (reason == DLL_PROCESS_DETACH) {
        LabProcessEnds();
    }
    return TRUE;
}
