// The counting runtime as an onnxruntime.dll, for whole runs of the tool. What it is to do stands in the
// environment variable VISTREL_ONNX_STAND_IN, words apart by blanks:
//
//     no-base            the first entry point answers nothing
//     old                the table goes to version 17 only, as in the copy that Windows carries
//     fail=ENTRY         the table's ENTRY (or AppendDirectMl) answers a status
//     throw=ENTRY        it throws a C++ exception instead
//     call=N             at its Nth call, not the first
//     message=WORD       with this message
//     ledger=FILE        writes to FILE, when the process ends, a line "KIND made N alive N" for each kind of
//     object
#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/lab/onnx/counting_runtime.h"

namespace {

bool no_base = false;
bool old_version = false;
std::string ledger_file;
int table_requests = 0;

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
    } else if (name == "call") {
        runtime.failing_call = std::atoi(value.c_str());
    } else if (name == "message") {
        runtime.message = value;
    } else if (name == "ledger") {
        ledger_file = value;
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

const OrtApi* ORT_API_CALL GetApi(std::uint32_t version) noexcept {
    ++table_requests;
    return version > (old_version ? 17U : 24U) ? nullptr : CountingRuntimeEntries().api;
}

const char* ORT_API_CALL GetVersionString() noexcept {
    return old_version ? "1.17.1" : "1.24.3";
}

constexpr OrtApiBase kBase = {GetApi, GetVersionString};

}  // namespace

extern "C" const OrtApiBase* StandInGetApiBase() {
    return no_base ? nullptr : &kBase;
}

extern "C" OrtStatus* StandInAppendDirectMl(OrtSessionOptions* options, int device_id) {
    return CountingRuntimeEntries().append_directml(options, device_id);
}

// For a test in whose process the DLL is.
extern "C" CountingRuntime* StandInAccount() {
    return &TheCountingRuntime();
}

extern "C" int StandInTableRequests() {
    return table_requests;
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        ReadOrders();
    } else if (reason == DLL_PROCESS_DETACH) {
        WriteLedger();
    }
    return TRUE;
}
