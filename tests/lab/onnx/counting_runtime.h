// A stand-in for ONNX Runtime at its table of functions: it makes no inference, keeps account of what it
// hands out, and fails where a test tells it to.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "depth/onnx_runtime.h"

/// What the stand-in is told and what it has seen. Reset before each test.
struct CountingRuntime {
    // Told.
    std::vector<std::int64_t> input_dimensions = {1, 3, 8, 16};
    bool input_is_tensor = true;
    std::string failing_entry;               ///< this entry answers a status...
    int failing_call = 1;                    ///< ...when called for this time, counted from 1
    bool fails_late = false;                 ///< ...and has made its object all the same
    bool throws = false;                     ///< ...or rather, throws a std::runtime_error
    void (*instead_of_failing)() = nullptr;  ///< ...or calls this
    std::string message = "the runtime's own words";
    void (*while_running)() = nullptr;  ///< called by each Run

    // Seen.
    std::map<std::string, int> made;     ///< objects by kind, over the whole life
    std::map<std::string, int> alive;    ///< objects by kind, now
    std::map<std::string, int> calls;    ///< by entry
    std::map<std::string, int> failed;   ///< by entry, the number of the call that failed by order
    std::vector<std::string> sequence;   ///< entries in the order of their calls, without releases
    std::vector<std::string> arguments;  ///< of the entries that set something, as text
    std::vector<std::int64_t> tensor_shape;
    std::vector<const void*> tensor_data;  ///< the buffer of each wrapped tensor
    std::vector<float> tensor_values;      ///< of the last one
};

/// The stand-in's account, one in a process.
CountingRuntime& TheCountingRuntime();

/// The table and the DirectML entry of the stand-in. Entries that the program has no business with are null.
const OnnxRuntime& CountingRuntimeEntries();

/// Objects alive of any kind.
int AliveInCountingRuntime();
