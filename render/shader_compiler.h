// Compiles HLSL at run time with d3dcompiler_47.dll: the copy beside the executable, otherwise Windows' own.
#pragma once

#include <d3dcommon.h>
#include <windows.h>
#include <wrl/client.h>

#include <string>
#include <string_view>

struct CompiledShader {
    Microsoft::WRL::ComPtr<ID3DBlob> bytecode;  ///< null when the source could not be compiled
    std::string message;                        ///< the compiler's own words; empty when it gave none
};

/// Compiles `entry_point` of `source` for `target` ("ps_5_0") without macros or includes. `source_name` is
/// what the compiler's messages call the source; may be null. `flags` are D3DCOMPILE_*. Without
/// d3dcompiler_47.dll on the system, the result has neither bytecode nor a message.
CompiledShader CompileShader(std::string_view source, const char* source_name, const char* entry_point,
                             const char* target, UINT flags);
