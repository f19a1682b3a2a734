// The shader compiler as the program finds it, which a test can make fail. Include it in only one source file
// of a test program, which must link the genuine compiler.
#pragma once

#include <d3dcompiler.h>
#include <windows.h>

#include <cstring>
#include <functional>
#include <string_view>

/// Empty: the genuine compiler. Otherwise called with the target ("ps_5_0"), and its result is returned;
/// E_PENDING calls the genuine one.
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

/// The name in the form for ntdll.dll; kernel32's function for the same purpose is the one replaced here.
struct NtName {
    USHORT length;
    USHORT size;
    const char* text;
};
extern "C" LONG NTAPI LdrGetProcedureAddress(HMODULE module, const NtName* name, ULONG ordinal,
                                             void** address);

/// GetProcAddress, except for the compiler.
inline FARPROC WINAPI FindWithScriptedCompiler(HMODULE module, LPCSTR name) {
    void* address = nullptr;
    if (IS_INTRESOURCE(name)) {
        LdrGetProcedureAddress(module, nullptr, LOWORD(reinterpret_cast<ULONG_PTR>(name)), &address);
    } else if (std::strcmp(name, "D3DCompile") == 0) {
        return reinterpret_cast<FARPROC>(&CompileAsScripted);
    } else {
        const auto length = static_cast<USHORT>(std::strlen(name));
        const NtName wanted = {length, length, name};
        LdrGetProcedureAddress(module, &wanted, 0, &address);
    }
    return reinterpret_cast<FARPROC>(address);
}

extern "C" {
decltype(&GetProcAddress) __imp_GetProcAddress = FindWithScriptedCompiler;
}
