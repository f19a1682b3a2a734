// Brings onnxruntime.dll into the process when it is first needed.
#pragma once

#include "depth/onnx_runtime.h"

/// Loads onnxruntime.dll, from the executable's folder before any other, and keeps it for the life of the
/// process. False when no such DLL can be loaded.
bool LoadOnnxRuntimeModule();

/// The loaded runtime, found on first use and kept. Throws an Ort::Exception that says what is wrong with the
/// DLL that was found, or that none was.
const OnnxRuntime& LoadedOnnxRuntime();

/// While one lives, an import that onnxruntime.dll puts off until its first call and that then cannot be
/// found (DirectML.dll, d3d12.dll, dxgi.dll) fails with an HRESULT, which the runtime reports like any other.
/// Otherwise it is a structured exception that no handler of the runtime takes and that ends the process.
class DelayLoadGuard {
  public:
    DelayLoadGuard();
    ~DelayLoadGuard();
    DelayLoadGuard(const DelayLoadGuard&) = delete;
    DelayLoadGuard& operator=(const DelayLoadGuard&) = delete;

  private:
    void* handler_;
};
