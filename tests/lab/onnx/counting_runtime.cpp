#include "tests/lab/onnx/counting_runtime.h"

#include <cstring>
#include <stdexcept>

namespace {

/// The object behind every pointer that the fake runtime returns. Allocated, so that a leak checker detects a
/// missing release.
struct Handed {
    std::string kind;
    std::string text;
};

template <typename Object>
void Make(const char* kind, Object** where, const std::string& text = {}) {
    *where = reinterpret_cast<Object*>(new Handed{kind, text});
    ++TheCountingRuntime().made[kind];
    ++TheCountingRuntime().alive[kind];
}

/// Counts the call of a function without a result, which can only end or stop the program.
void NoteUnanswered(const std::string& entry) {
    CountingRuntime& runtime = TheCountingRuntime();
    const int call = ++runtime.unanswered_calls[entry];
    if (runtime.failing_entry == entry && runtime.failing_call == call &&
        runtime.instead_of_failing != nullptr) {
        runtime.instead_of_failing();
    }
}

template <typename Object>
void ORT_API_CALL Release(Object* object) {
    if (object == nullptr) {
        return;
    }
    auto* const handed = reinterpret_cast<Handed*>(object);
    NoteUnanswered("Release" + handed->kind);
    --TheCountingRuntime().alive[handed->kind];
    delete handed;
}

/// Records the call; true if it should fail.
bool IsToFail(const char* entry) {
    CountingRuntime& runtime = TheCountingRuntime();
    runtime.sequence.emplace_back(entry);
    const int call = ++runtime.calls[entry];
    const bool fails = runtime.failing_entry == entry && runtime.failing_call == call;
    if (fails) {
        runtime.failed[entry] = call;
    }
    if (fails && runtime.instead_of_failing != nullptr && runtime.error_entry.empty()) {
        runtime.instead_of_failing();
    }
    if (fails && runtime.throws) {
        throw std::runtime_error(runtime.message);
    }
    return fails;
}

OrtStatus* Status() {
    OrtStatus* status = nullptr;
    Make("Status", &status, TheCountingRuntime().message);
    return status;
}

OrtStatus* Answer(const char* entry) {
    return IsToFail(entry) ? Status() : nullptr;
}

template <typename Object>
OrtStatus* AnswerMade(const char* entry, const char* kind, Object** where) {
    const bool fails = IsToFail(entry);
    if (!fails || TheCountingRuntime().fails_late) {
        Make(kind, where);
    }
    return fails ? Status() : nullptr;
}

/// An entry that is given an error status.
void NoteErrorEntry(const char* entry) {
    CountingRuntime& runtime = TheCountingRuntime();
    if (runtime.instead_of_failing != nullptr && runtime.error_entry == entry) {
        runtime.instead_of_failing();
    }
}

void ORT_API_CALL ReleaseStatus(OrtStatus* status) {
    NoteErrorEntry("ReleaseStatus");
    Release(status);
}

const char* ORT_API_CALL GetErrorMessage(const OrtStatus* status) {
    NoteErrorEntry("GetErrorMessage");
    return reinterpret_cast<const Handed*>(status)->text.c_str();
}

OrtStatus* ORT_API_CALL CreateEnv(OrtLoggingLevel level, const char* log_id, OrtEnv** env) {
    TheCountingRuntime().arguments.push_back("level " + std::to_string(level) + " id " + log_id);
    return AnswerMade("CreateEnv", "Env", env);
}

OrtStatus* ORT_API_CALL SetLanguageProjection(const OrtEnv*, OrtLanguageProjection projection) {
    TheCountingRuntime().arguments.push_back("projection " + std::to_string(projection));
    return Answer("SetLanguageProjection");
}

OrtStatus* ORT_API_CALL CreateSessionOptions(OrtSessionOptions** options) {
    return AnswerMade("CreateSessionOptions", "SessionOptions", options);
}

OrtStatus* ORT_API_CALL SetSessionGraphOptimizationLevel(OrtSessionOptions*, GraphOptimizationLevel level) {
    TheCountingRuntime().arguments.push_back("optimization " + std::to_string(level));
    return Answer("SetSessionGraphOptimizationLevel");
}

OrtStatus* ORT_API_CALL AddSessionConfigEntry(OrtSessionOptions*, const char* key, const char* value) {
    TheCountingRuntime().arguments.push_back(std::string(key) + "=" + value);
    return Answer("AddSessionConfigEntry");
}

OrtStatus* ORT_API_CALL DisableMemPattern(OrtSessionOptions*) {
    return Answer("DisableMemPattern");
}

OrtStatus* ORT_API_CALL SetSessionExecutionMode(OrtSessionOptions*, ExecutionMode mode) {
    TheCountingRuntime().arguments.push_back("mode " + std::to_string(mode));
    return Answer("SetSessionExecutionMode");
}

OrtStatus* ORT_API_CALL AppendDirectMl(OrtSessionOptions*, int device_id) {
    TheCountingRuntime().arguments.push_back("device " + std::to_string(device_id));
    return Answer("AppendDirectMl");
}

OrtStatus* ORT_API_CALL CreateSession(const OrtEnv*, const ORTCHAR_T* path, const OrtSessionOptions*,
                                      OrtSession** session) {
    const std::basic_string<ORTCHAR_T> model(path);
    TheCountingRuntime().arguments.push_back("model " + std::string(model.begin(), model.end()));
    return AnswerMade("CreateSession", "Session", session);
}

void ORT_API_CALL FreeName(OrtAllocator*, void* name) {
    NoteUnanswered("AllocatorFree");
    --TheCountingRuntime().alive["Name"];
    delete[] static_cast<char*>(name);
}

OrtStatus* ORT_API_CALL GetAllocatorWithDefaultOptions(OrtAllocator** allocator) {
    static OrtAllocator the_allocator = [] {
        OrtAllocator made = {};
        made.version = ORT_API_VERSION;
        made.Free = FreeName;
        return made;
    }();
    *allocator = &the_allocator;
    return Answer("GetAllocatorWithDefaultOptions");
}

OrtStatus* AnswerName(const char* entry, const std::string& text, char** name) {
    const bool fails = IsToFail(entry);
    if (!fails || TheCountingRuntime().fails_late) {
        *name = new char[text.size() + 1];
        std::memcpy(*name, text.c_str(), text.size() + 1);
        ++TheCountingRuntime().made["Name"];
        ++TheCountingRuntime().alive["Name"];
    }
    return fails ? Status() : nullptr;
}

OrtStatus* ORT_API_CALL SessionGetInputName(const OrtSession*, std::size_t index, OrtAllocator*,
                                            char** name) {
    return AnswerName("SessionGetInputName", "input " + std::to_string(index), name);
}

OrtStatus* ORT_API_CALL SessionGetOutputName(const OrtSession*, std::size_t index, OrtAllocator*,
                                             char** name) {
    return AnswerName("SessionGetOutputName", "output " + std::to_string(index), name);
}

OrtStatus* ORT_API_CALL SessionGetInputTypeInfo(const OrtSession*, std::size_t, OrtTypeInfo** type) {
    return AnswerMade("SessionGetInputTypeInfo", "TypeInfo", type);
}

OrtStatus* ORT_API_CALL CastTypeInfoToTensorInfo(const OrtTypeInfo* type,
                                                 const OrtTensorTypeAndShapeInfo** shape) {
    *shape = TheCountingRuntime().input_is_tensor ? reinterpret_cast<const OrtTensorTypeAndShapeInfo*>(type)
                                                  : nullptr;
    return Answer("CastTypeInfoToTensorInfo");
}

OrtStatus* ORT_API_CALL GetDimensionsCount(const OrtTensorTypeAndShapeInfo*, std::size_t* count) {
    *count = TheCountingRuntime().input_dimensions.size();
    return Answer("GetDimensionsCount");
}

OrtStatus* ORT_API_CALL GetDimensions(const OrtTensorTypeAndShapeInfo*, std::int64_t* dimensions,
                                      std::size_t count) {
    const std::vector<std::int64_t>& declared = TheCountingRuntime().input_dimensions;
    for (std::size_t i = 0; i < count && i < declared.size(); ++i) {
        dimensions[i] = declared[i];
    }
    return Answer("GetDimensions");
}

OrtStatus* ORT_API_CALL CreateCpuMemoryInfo(OrtAllocatorType allocator, OrtMemType memory,
                                            OrtMemoryInfo** info) {
    TheCountingRuntime().arguments.push_back("memory " + std::to_string(allocator) + " " +
                                             std::to_string(memory));
    return AnswerMade("CreateCpuMemoryInfo", "MemoryInfo", info);
}

OrtStatus* ORT_API_CALL CreateTensorWithDataAsOrtValue(const OrtMemoryInfo*, void* data, std::size_t bytes,
                                                       const std::int64_t* shape, std::size_t rank,
                                                       ONNXTensorElementDataType type, OrtValue** value) {
    CountingRuntime& runtime = TheCountingRuntime();
    runtime.tensor_shape.assign(shape, shape + rank);
    runtime.tensor_data.push_back(data);
    if (type == ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT) {
        const auto* const values = static_cast<const float*>(data);
        runtime.tensor_values.assign(values, values + bytes / sizeof(float));
    }
    return AnswerMade("CreateTensorWithDataAsOrtValue", "Value", value);
}

OrtStatus* ORT_API_CALL Run(OrtSession*, const OrtRunOptions* run_options, const char* const* input_names,
                            const OrtValue* const*, std::size_t inputs, const char* const* output_names,
                            std::size_t outputs, OrtValue** output) {
    TheCountingRuntime().arguments.push_back(
        std::string("run ") + (run_options == nullptr ? "plain " : "with options ") + std::to_string(inputs) +
        " [" + input_names[0] + "] " + std::to_string(outputs) + " [" + output_names[0] + "]");
    if (TheCountingRuntime().while_running != nullptr) {
        TheCountingRuntime().while_running();
    }
    return AnswerMade("Run", "Value", output);
}

OrtApi MakeTable() {
    OrtApi table = {};
    table.ReleaseEnv = Release<OrtEnv>;
    table.ReleaseSessionOptions = Release<OrtSessionOptions>;
    table.ReleaseSession = Release<OrtSession>;
    table.ReleaseTypeInfo = Release<OrtTypeInfo>;
    table.ReleaseMemoryInfo = Release<OrtMemoryInfo>;
    table.ReleaseValue = Release<OrtValue>;
    // The table declares its entries `noexcept`. These may still throw, as another runtime could.
    const auto put = [](auto& slot, auto* entry) { std::memcpy(&slot, &entry, sizeof slot); };
    put(table.ReleaseStatus, ReleaseStatus);
    put(table.GetErrorMessage, GetErrorMessage);
    put(table.CreateEnv, CreateEnv);
    put(table.SetLanguageProjection, SetLanguageProjection);
    put(table.CreateSessionOptions, CreateSessionOptions);
    put(table.SetSessionGraphOptimizationLevel, SetSessionGraphOptimizationLevel);
    put(table.AddSessionConfigEntry, AddSessionConfigEntry);
    put(table.DisableMemPattern, DisableMemPattern);
    put(table.SetSessionExecutionMode, SetSessionExecutionMode);
    put(table.CreateSession, CreateSession);
    put(table.GetAllocatorWithDefaultOptions, GetAllocatorWithDefaultOptions);
    put(table.SessionGetInputName, SessionGetInputName);
    put(table.SessionGetOutputName, SessionGetOutputName);
    put(table.SessionGetInputTypeInfo, SessionGetInputTypeInfo);
    put(table.CastTypeInfoToTensorInfo, CastTypeInfoToTensorInfo);
    put(table.GetDimensionsCount, GetDimensionsCount);
    put(table.GetDimensions, GetDimensions);
    put(table.CreateCpuMemoryInfo, CreateCpuMemoryInfo);
    put(table.CreateTensorWithDataAsOrtValue, CreateTensorWithDataAsOrtValue);
    put(table.Run, Run);
    return table;
}

}  // namespace

CountingRuntime& TheCountingRuntime() {
    static CountingRuntime runtime;
    return runtime;
}

const OnnxRuntime& CountingRuntimeEntries() {
    static const OrtApi table = MakeTable();
    static const OnnxRuntime runtime = {&table, AppendDirectMl};
    return runtime;
}

int AliveInCountingRuntime() {
    int alive = 0;
    for (const auto& [kind, count] : TheCountingRuntime().alive) {
        alive += count;
    }
    return alive;
}
