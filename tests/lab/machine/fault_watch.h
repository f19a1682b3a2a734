// Watching the methods of DXGI's and Direct3D's objects, and the functions of OpenXR: what fault_points.h
// cannot find in an import table.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>

namespace lab {

/// Watches the factory's class and the classes of everything that it can enumerate.
void WatchFactory(IDXGIFactory1* factory);

/// Watches the classes of the device and of the objects that it creates.
void WatchDevice(ID3D11Device* device);

/// Replaces the loader's xrGetInstanceProcAddr: the same, but the functions that it returns are watched.
FARPROC WatchOpenXrLookup(FARPROC get_instance_function);

}  // namespace lab
