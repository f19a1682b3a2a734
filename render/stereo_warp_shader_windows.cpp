#include "render/stereo_warp_shader.h"

#include <d3dcompiler.h>

#include "log/logger.h"
#include "render/shader_compiler.h"
#include "render/warp_shader_files.h"

namespace {

constexpr const char* kLogTag = "[Vistrel 3D] ";

Microsoft::WRL::ComPtr<ID3D11Buffer> CreateConstantBuffer(ID3D11Device& device) {
    D3D11_BUFFER_DESC description = {};
    description.ByteWidth = sizeof(StereoWarpConstants);
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = D3D11_BIND_CONSTANT_BUFFER;
    Microsoft::WRL::ComPtr<ID3D11Buffer> buffer;
    if (FAILED(device.CreateBuffer(&description, nullptr, &buffer))) {
        return {};
    }
    return buffer;
}

}  // namespace

bool StereoWarpShader::Load(ID3D11Device* device) {
    if (pixel_shader_) {
        return true;
    }
    if (load_attempted_ || device == nullptr) {
        return false;
    }
    load_attempted_ = true;
    for (const std::string& path : FindWarpShaderCandidates()) {
        std::string source;
        if (ReadWholeFile(path, source)) {
            return CompileFrom(*device, path, source);
        }
    }
    return Fail("stereo_warp.hlsl not found next to the executable");
}

bool StereoWarpShader::CompileFrom(ID3D11Device& device, const std::string& path, const std::string& source) {
    const CompiledShader compiled =
        CompileShader(source, path.c_str(), "PSMain", "ps_5_0", D3DCOMPILE_ENABLE_STRICTNESS);
    if (!compiled.bytecode) {
        return Fail(compiled.message.empty() ? "D3DCompile failed" : compiled.message);
    }
    if (FAILED(device.CreatePixelShader(compiled.bytecode->GetBufferPointer(),
                                        compiled.bytecode->GetBufferSize(), nullptr,
                                        pixel_shader_.ReleaseAndGetAddressOf()))) {
        pixel_shader_.Reset();
        return Fail("CreatePixelShader failed");
    }
    constant_buffer_ = CreateConstantBuffer(device);
    if (!constant_buffer_) {
        pixel_shader_.Reset();
        return Fail("constant buffer creation failed");
    }
    Logger::instance().Log(LogLevel::Info, std::string(kLogTag) + "shader compiled from " + path);
    return true;
}

bool StereoWarpShader::Fail(const std::string& error) {
    last_error_ = error;
    Logger::instance().Error(kLogTag + error);
    return false;
}

void StereoWarpShader::Apply(ID3D11DeviceContext* context, const StereoWarpArguments& arguments) const {
    if (context == nullptr || !pixel_shader_ || !constant_buffer_) {
        return;
    }
    const StereoWarpConstants constants =
        ComputeStereoWarpConstants(DiagSettings::Instance(), arguments, separation_multiplier);
    context->UpdateSubresource(constant_buffer_.Get(), 0, nullptr, &constants, 0, 0);
    context->PSSetShader(pixel_shader_.Get(), nullptr, 0);
    context->PSSetConstantBuffers(0, 1, constant_buffer_.GetAddressOf());
}
