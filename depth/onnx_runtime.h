// The C interface of ONNX Runtime: owners for its objects, exceptions for its errors.
#pragma once

#ifdef _WIN32
#include <sal.h>  // Annotations that the runtime's header uses and does not bring.
#endif

#include <onnxruntime/onnxruntime_c_api.h>

#include <memory>
#include <stdexcept>

namespace Ort {

/// A failure that ONNX Runtime reported, with the runtime's own message.
class Exception : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace Ort

/// The parts of the loaded onnxruntime.dll that the program uses. Both stay valid until the process ends.
struct OnnxRuntime {
    const OrtApi* api = nullptr;
    /// OrtSessionOptionsAppendExecutionProvider_DML, which is not in the table.
    OrtStatus*(ORT_API_CALL* append_directml)(OrtSessionOptions* options, int device_id) = nullptr;
};

/// Owns an object of the runtime and releases it with the API table's entry for its type.
template <typename Object>
using OrtOwner = std::unique_ptr<Object, void(ORT_API_CALL*)(Object*)>;

/// Releases `status` and throws its message as an Ort::Exception; does nothing when it is null, which means
/// success.
void ThrowOnFailure(const OrtApi& api, OrtStatus* status);

/// Calls `entry` of the API table and turns a status into an Ort::Exception.
///
/// Taking the entry as a parameter drops the `noexcept` its declaration carries: an exception that a runtime
/// throws nevertheless can then be caught instead of ending the program.
template <typename... Parameters, typename... Arguments>
void CallOrt(const OrtApi& api, OrtStatus*(ORT_API_CALL* entry)(Parameters...), Arguments... arguments) {
    ThrowOnFailure(api, entry(arguments...));
}

/// Calls `entry`, whose last parameter receives the created object, and returns its owner.
template <typename Object, typename... Parameters, typename... Arguments>
OrtOwner<Object> MakeOrt(const OrtApi& api, void(ORT_API_CALL* release)(Object*),
                         OrtStatus*(ORT_API_CALL* entry)(Parameters...), Arguments... arguments) {
    Object* made = nullptr;
    OrtStatus* const status = entry(arguments..., &made);
    OrtOwner<Object> owner(made, release);
    ThrowOnFailure(api, status);
    return owner;
}
