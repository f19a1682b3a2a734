// Reading from a user at a real console.
#pragma once

#include "tools/vistrel_diag/report/console.h"

/// A reader of the console behind standard input. Ctrl-C while a line is read ends the process
/// (EndByControlC).
const ConsoleReader& RealConsoleReader();
