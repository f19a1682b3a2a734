// The monitors that are connected to the machine's GPUs now, as DXGI reports them.
#pragma once

#include <dxgi.h>
#include <wrl/client.h>

#include <vector>

#include "capture/output_choice.h"

/// Entries at the same position of both lists belong to the same output.
struct AttachedOutputs {
    struct Interfaces {
        Microsoft::WRL::ComPtr<IDXGIAdapter1> adapter;
        Microsoft::WRL::ComPtr<IDXGIOutput> output;
    };

    std::vector<OutputRecord> records;
    std::vector<Interfaces> interfaces;
};

/// All outputs of all adapters in DXGI's order. Those whose description cannot be read are left out.
AttachedOutputs EnumerateOutputs(IDXGIFactory1* factory);
