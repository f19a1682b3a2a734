// Making the program's calls fail, one at a time.
//
// VISTREL_LAB_CALLS names a file that receives, when the program ends, a line "FUNCTION NUMBER SITE WHAT" for
// each call that the program made to a function that can fail: NUMBER counts the calls of that function from
// 1, SITE is where the call returns to, relative to the program's image, WHAT is "done" or "failed", which
// was made to fail by order.
//
// VISTREL_LAB_FAULT is "FUNCTION NUMBER", and this call fails without being carried out; with "on" behind it,
// all that follow it too. It is meant for the program itself, or for the child of it whose number
// VISTREL_LAB_FAULT_PROCESS gives (process_functions.h).
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace lab {

/// Reads the orders. Without any, nothing is watched.
void SetUpFaults();

bool FaultsAreWatched();

/// What the program is to call in place of `function`, which it knows as `name`: the function itself when it
/// cannot fail or nothing is watched.
void* WatchedFunction(std::string_view name, void* function);

struct WatchedMethod {
    std::size_t slot;
    const char* name;  ///< with its interface; lives as long as the process
};

/// Watches methods that return an HRESULT, for all objects of this one's class.
void WatchMethods(void* object, std::initializer_list<WatchedMethod> methods);

/// Writes the calls to their file, if one is named.
void WriteCalls();

}  // namespace lab
