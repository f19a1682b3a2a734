// Intercepts a function of any signature and may return in its place.
#pragma once

#include <cstdint>

namespace lab {

/// Called before each call: returns true if the call should fail with `*result` in RAX. `caller` is the
/// return address of the call.
using FaultDecision = bool (*)(void* point, const void* caller, std::uint64_t* result);

/// Returns the address of new code that calls `decide(point, ...)` and then either continues in `function`,
/// with registers and stack unchanged, or returns the decision's result. The code exists until the process
/// ends. Null if there is not enough memory.
void* MakeFaultThunk(FaultDecision decide, void* point, void* function);

}  // namespace lab
