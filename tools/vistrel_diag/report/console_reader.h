// Reading from a person at a real console.
#pragma once

#include "tools/vistrel_diag/report/console.h"

/// The console that standard input is. Ctrl-C while a line is read ends the process (EndByControlC).
const ConsoleReader& RealConsoleReader();
