// The console mode in which a click into the window does not freeze the program's output.
#pragma once

/// Switches quick-edit off in the console of the standard input. Does nothing when it is off already, or when
/// the standard input is not a console.
void SwitchQuickEditOff();
