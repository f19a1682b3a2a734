// Stands before a function of any signature and may answer in its place.
#pragma once

#include <cstdint>

namespace lab {

/// Asked at each call: true when the call is to fail, and then `*result` is what the caller gets in RAX.
/// `caller` is the address that the call returns to.
using FaultDecision = bool (*)(void* point, const void* caller, std::uint64_t* result);

/// The address of a new piece of code that asks `decide(point, ...)` and either goes on into `function`, with
/// registers and stack as they came, or returns the decision's result. It lives until the process ends. Null
/// when there is no memory left for it.
void* MakeFaultThunk(FaultDecision decide, void* point, void* function);

}  // namespace lab
