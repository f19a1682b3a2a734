// Replaces the program's imported functions by the machine's.
#pragma once

namespace lab {

/// Patches the import table of the process's program. Replaces the time functions only if the machine's clock
/// is scripted.
void PatchProgramImports();

}  // namespace lab
