// Walking DXGI's adapters and outputs by index:
//     for (UINT i = 0; ComPtr<IDXGIAdapter1> adapter = AdapterAt(factory.Get(), i); ++i) ...
//
// A walk ends with the first index that yields nothing. That is DXGI_ERROR_NOT_FOUND in the normal case; any
// other failure (a remote session that is going away, a factory that is no longer current) would be returned
// for every later index as well, so the loop would never end.
#pragma once

#include <dxgi.h>
#include <wrl/client.h>

/// Null after the last adapter, and for an adapter that cannot be obtained.
Microsoft::WRL::ComPtr<IDXGIAdapter1> AdapterAt(IDXGIFactory1* factory, UINT index);

/// Null after the last output, and for an output that cannot be obtained.
Microsoft::WRL::ComPtr<IDXGIOutput> OutputAt(IDXGIAdapter1* adapter, UINT index);
