// DXGI and Direct3D 11 from Windows' own system folder.
//
// dxgi.dll and d3d11.dll are not "known DLLs". If they were in the program's import table, Windows would
// prefer files of these names in the program's folder, and a broken file or one for another processor would
// prevent the program from starting. So system_graphics_windows.cpp replaces the import libraries with its
// own CreateDXGIFactory1 and D3D11CreateDevice, which call those of the system folder's DLLs. When such a DLL
// is missing, or lacks the function, they return the reason, as HRESULT_FROM_WIN32 of the loader's error.
#pragma once

/// Loads both DLLs. Without this call, the first call of either function loads both. A program with threads
/// calls this before it starts the first one: under Wine, loading them while another thread creates its first
/// window never ends.
void LoadSystemGraphics();
