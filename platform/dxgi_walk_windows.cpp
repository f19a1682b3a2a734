#include "platform/dxgi_walk.h"

using Microsoft::WRL::ComPtr;

ComPtr<IDXGIAdapter1> AdapterAt(IDXGIFactory1* factory, UINT index) {
    ComPtr<IDXGIAdapter1> adapter;
    if (FAILED(factory->EnumAdapters1(index, &adapter))) {
        return nullptr;
    }
    return adapter;
}

ComPtr<IDXGIOutput> OutputAt(IDXGIAdapter1* adapter, UINT index) {
    ComPtr<IDXGIOutput> output;
    if (FAILED(adapter->EnumOutputs(index, &output))) {
        return nullptr;
    }
    return output;
}
