// Loads onnxruntime.dll when it is first needed.
#pragma once

#include "depth/onnx_runtime.h"

/// Loads onnxruntime.dll and keeps it for the life of the process. The DLL in the executable's folder is
/// used, even if the process has already loaded another module of that name. If there is none, Windows
/// searches for the name. False when no such DLL can be loaded.
bool LoadOnnxRuntimeModule();

/// The loaded runtime, found on first use and kept. Throws an Ort::Exception that says what is wrong with the
/// DLL that was found, or that none was. A DLL that was refused once is not tried again: each refusal makes
/// ONNX Runtime write to the console.
const OnnxRuntime& LoadedOnnxRuntime();

/// While an object of this class exists, a delay-loaded import of onnxruntime.dll (DirectML.dll, d3d12.dll,
/// dxgi.dll) that cannot be found fails with an HRESULT, which the runtime reports like any other. Without
/// it, the failure is a structured exception that no handler of the runtime catches and that ends the
/// process. The imports of other modules are not affected.
class DelayLoadGuard {
  public:
    DelayLoadGuard();
    ~DelayLoadGuard();
    DelayLoadGuard(const DelayLoadGuard&) = delete;
    DelayLoadGuard& operator=(const DelayLoadGuard&) = delete;

  private:
    void* handler_;
};
