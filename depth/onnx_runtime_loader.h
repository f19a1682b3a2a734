// Brings onnxruntime.dll into the process when it is first needed.
#pragma once

#include "depth/onnx_runtime.h"

/// Loads onnxruntime.dll and keeps it for the life of the process. One in the executable's folder is taken
/// whatever module of that name the process has loaded already; without one there, whatever Windows finds by
/// the name. False when no such DLL can be loaded.
bool LoadOnnxRuntimeModule();

/// The loaded runtime, found on first use and kept. Throws an Ort::Exception that says what is wrong with the
/// DLL that was found, or that none was. A DLL that was refused once is not asked again: each refusal makes
/// ONNX Runtime write to the console.
const OnnxRuntime& LoadedOnnxRuntime();

/// While one lives, an import that onnxruntime.dll itself puts off until its first call and that then cannot
/// be found (DirectML.dll, d3d12.dll, dxgi.dll) fails with an HRESULT, which the runtime reports like any
/// other. Otherwise it is a structured exception that no handler of the runtime takes and that ends the
/// process. The imports of any other module are left to it.
class DelayLoadGuard {
  public:
    DelayLoadGuard();
    ~DelayLoadGuard();
    DelayLoadGuard(const DelayLoadGuard&) = delete;
    DelayLoadGuard& operator=(const DelayLoadGuard&) = delete;

  private:
    void* handler_;
};
