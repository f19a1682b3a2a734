#include "render/shader_compiler.h"

#include <d3dcompiler.h>

#include "platform/library.h"
#include "platform/utf8.h"

namespace {

/// Windows has included the compiler since 8.1, but it is loaded only here, so that a system without it can
/// still run every measurement that needs no shader.
pD3DCompile FindCompiler() {
    const HMODULE module = LoadLibraryQuietly(L"d3dcompiler_47.dll", LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    return module == nullptr ? nullptr : reinterpret_cast<pD3DCompile>(GetProcAddress(module, "D3DCompile"));
}

/// The compiler accepts the source name in UTF-8 but quotes it in the process's code page, which is UTF-8
/// only on versions of Windows that support that manifest setting.
std::string Utf8FromCompilerText(std::string_view text) {
    if (text.empty() || !Utf16FromUtf8(text).empty()) {
        return std::string(text);
    }
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // No code page produces more UTF-16 units than there are bytes.
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), bytes);
    return Utf8FromWide({wide.data(), static_cast<std::size_t>(length)});
}

/// The text in `blob`, up to its first zero or its end.
std::string TextOf(ID3DBlob& blob) {
    const std::string_view whole(static_cast<const char*>(blob.GetBufferPointer()), blob.GetBufferSize());
    return Utf8FromCompilerText(whole.substr(0, whole.find('\0')));
}

}  // namespace

CompiledShader CompileShader(std::string_view source, const char* source_name, const char* entry_point,
                             const char* target, UINT flags) {
    static const pD3DCompile compile = FindCompiler();
    CompiledShader shader;
    if (compile == nullptr) {
        return shader;
    }
    Microsoft::WRL::ComPtr<ID3DBlob> messages;
    const HRESULT result = compile(source.data(), source.size(), source_name, nullptr, nullptr, entry_point,
                                   target, flags, 0, &shader.bytecode, &messages);
    if (FAILED(result)) {
        shader.bytecode.Reset();
    }
    if (messages) {
        shader.message = TextOf(*messages.Get());
    }
    return shader;
}
