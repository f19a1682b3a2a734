// Compiling HLSL at run time with the shader compiler that Windows carries.
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
/// what the compiler's messages call the source; null for none. `flags` are D3DCOMPILE_*. A system without
/// d3dcompiler_47.dll compiles nothing and has nothing to say.
CompiledShader CompileShader(std::string_view source, const char* source_name, const char* entry_point,
                             const char* target, UINT flags);
