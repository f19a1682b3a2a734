// The monitors that hang on the machine's GPUs right now, as DXGI tells.
#pragma once

#include <dxgi.h>
#include <wrl/client.h>

#include <vector>

#include "capture/output_choice.h"

/// The same position in both lists is the same output.
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
