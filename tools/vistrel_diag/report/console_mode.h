// The console mode that keeps a click into the window from freezing the program's output.
#pragma once

/// Switches quick-edit off in the console of the standard input. Does nothing when it is off already, or when
/// the standard input is no console.
void SwitchQuickEditOff();
