// Puts the machine's functions in place of the ones that the program imports.
#pragma once

namespace lab {

/// Patches the import table of the process's program. The functions of time only when the machine's clock is
/// scripted.
void PatchProgramImports();

}  // namespace lab
