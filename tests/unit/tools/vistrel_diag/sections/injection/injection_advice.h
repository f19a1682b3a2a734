// The section's text after the files that it found.
#pragma once

inline constexpr const char* kAdvice =
    "\n"
    ">>> Something is injecting itself into Vistrel. This is what to undo first, before anything else in "
    "this "
    "report is worth reading.\n"
    ">>> ReShade belongs on the GAME, never on Vistrel.exe. Run the ReShade uninstaller against this folder, "
    "or "
    "delete the files listed above.\n"
    ">>> The symptom it produces is AI depth that runs and reports timings while no 3D ever reaches the "
    "headset.\n";
