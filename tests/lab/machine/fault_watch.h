// Watching the methods of DXGI's and Direct3D's objects, and the functions of OpenXR: what fault_points.h
// cannot find in an import table.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>

namespace lab {

/// Watches this factory's class and those of everything that can be enumerated from it.
void WatchFactory(IDXGIFactory1* factory);

/// Watches the classes of the device and of what it makes.
void WatchDevice(ID3D11Device* device);

/// What the program gets for the loader's xrGetInstanceProcAddr: the same, but what it finds is watched.
FARPROC WatchOpenXrLookup(FARPROC get_instance_function);

}  // namespace lab
