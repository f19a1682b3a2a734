// A fake ONNX Runtime behind its API table: it runs no inference, counts the objects that it returns, and
// fails where a test requests it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "depth/onnx_runtime.h"

/// The instructions for the fake runtime and what it has recorded. Reset before each test.
struct CountingRuntime {
    // Instructions.
    std::vector<std::int64_t> input_dimensions = {1, 3, 8, 16};
    bool input_is_tensor = true;
    std::string failing_entry;               ///< this entry returns an error status...
    int failing_call = 1;                    ///< ...at this call, counted from 1
    bool fails_late = false;                 ///< ...but still creates its object
    bool throws = false;                     ///< ...or rather, throws a std::runtime_error
    void (*instead_of_failing)() = nullptr;  ///< ...or calls this
    std::string error_entry;  ///< ...or fails, and this entry, given its error status, calls that instead
    std::string message = "the runtime's own words";
    void (*while_running)() = nullptr;  ///< called by each Run

    // Records.
    std::map<std::string, int> made;              ///< objects by kind, over the whole life
    std::map<std::string, int> alive;             ///< objects by kind, now
    std::map<std::string, int> calls;             ///< by entry
    std::map<std::string, int> unanswered_calls;  ///< of "ReleaseSession" and the like, and "AllocatorFree"
    std::map<std::string, int> failed;            ///< by entry, the number of the call that was made to fail
    std::vector<std::string> sequence;            ///< entries in the order of their calls, without releases
    std::vector<std::string> arguments;           ///< arguments of the entries that set something, as text
    std::vector<std::int64_t> tensor_shape;
    std::vector<const void*> tensor_data;  ///< the buffer of each wrapped tensor
    std::vector<float> tensor_values;      ///< of the last one
};

/// The fake runtime's state, one per process.
CountingRuntime& TheCountingRuntime();

/// The API table and the DirectML entry. Entries that the program should not use are null.
const OnnxRuntime& CountingRuntimeEntries();

/// The number of objects alive, of any kind.
int AliveInCountingRuntime();
