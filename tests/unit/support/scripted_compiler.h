// The shader compiler as the program finds it, which a test can make fail. For the one source file of a test
// program that links the genuine compiler itself.
#pragma once

#include <d3dcompiler.h>
#include <windows.h>

#include <cstring>
#include <functional>
#include <string_view>

/// Empty: the genuine compiler. Otherwise gets the target ("ps_5_0") and may answer; E_PENDING leaves it to
/// the genuine one.
inline std::function<HRESULT(std::string_view target, ID3DBlob** code, ID3DBlob** messages)> scripted_compile;

inline HRESULT WINAPI CompileAsScripted(LPCVOID source, SIZE_T size, LPCSTR name,
                                        const D3D_SHADER_MACRO* macros, ID3DInclude* includes,
                                        LPCSTR entry_point, LPCSTR target, UINT flags, UINT effect_flags,
                                        ID3DBlob** code, ID3DBlob** messages) {
    if (scripted_compile) {
        const HRESULT scripted = scripted_compile(target, code, messages);
        if (scripted != E_PENDING) {
            return scripted;
        }
    }
    return D3DCompile(source, size, name, macros, includes, entry_point, target, flags, effect_flags, code,
                      messages);
}

/// Knows the compiler alone; whoever else asks (the runtime library, for newer functions of Windows) does
/// without.
inline FARPROC WINAPI FindCompilerOnly(HMODULE, LPCSTR name) {
    const bool compiler =
        HIWORD(reinterpret_cast<ULONG_PTR>(name)) != 0 && std::strcmp(name, "D3DCompile") == 0;
    return compiler ? reinterpret_cast<FARPROC>(&CompileAsScripted) : nullptr;
}

extern "C" {
decltype(&GetProcAddress) __imp_GetProcAddress = FindCompilerOnly;
}
