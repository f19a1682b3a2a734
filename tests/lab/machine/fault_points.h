// Makes calls of the program fail, one at a time.
//
// VISTREL_LAB_CALLS names a file. At the end of the program it contains a line "FUNCTION NUMBER SITE WHAT"
// for each call of a function that can fail: NUMBER counts the calls of that function from 1, SITE is the
// return address relative to the program's image, WHAT is "done", or "failed" for a call that was made to
// fail.
//
// VISTREL_LAB_FAULT is "FUNCTION NUMBER": this call fails without being executed. With "on" appended, all
// later calls of the function fail too. It applies to the program itself, or to the child whose number is in
// VISTREL_LAB_FAULT_PROCESS (process_functions.h).
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace lab {

/// Reads the environment variables. Without them nothing is watched.
void SetUpFaults();

bool FaultsAreWatched();

/// Returns the replacement for `function`, which the program calls `name`: the function itself if it cannot
/// fail or nothing is watched.
void* WatchedFunction(std::string_view name, void* function);

struct WatchedMethod {
    std::size_t slot;
    const char* name;  ///< with its interface; lives as long as the process
};

/// Watches methods that return an HRESULT, for all objects of this object's class.
void WatchMethods(void* object, std::initializer_list<WatchedMethod> methods);

/// Writes the calls to their file, if one is named.
void WriteCalls();

}  // namespace lab
