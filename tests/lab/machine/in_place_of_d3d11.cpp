// Linked into a program, gives it the simulated machine's D3D11CreateDevice without patching its imports.
#include <d3d11.h>

#include "tests/lab/machine/devices.h"

HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver_type, HMODULE software,
                                 UINT flags, const D3D_FEATURE_LEVEL* levels, UINT level_count,
                                 UINT sdk_version, ID3D11Device** device, D3D_FEATURE_LEVEL* level,
                                 ID3D11DeviceContext** context) {
    return lab::SimulatedD3D11CreateDevice(adapter, driver_type, software, flags, levels, level_count,
                                           sdk_version, device, level, context);
}
