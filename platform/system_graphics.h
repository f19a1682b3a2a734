// DXGI and Direct3D 11 from Windows' own system folder.
//
// dxgi.dll and d3d11.dll are no known DLLs. Were they in the program's import table, Windows would load files
// of these names from the program's folder instead, and one that is broken or made for another processor
// would keep the program from starting. So system_graphics_windows.cpp defines CreateDXGIFactory1 and
// D3D11CreateDevice itself, in place of the import libraries: they are those of the system folder's DLLs.
// When there is no such DLL, or it lacks the function, they return why, as HRESULT_FROM_WIN32 of the loader's
// error.
#pragma once

/// Loads both DLLs. By itself that happens at the first call of either function; a program that has threads
/// calls this before it starts the first one, for under Wine loading them while another thread makes its
/// first window never comes to an end.
void LoadSystemGraphics();
