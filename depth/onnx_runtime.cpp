#include "depth/onnx_runtime.h"

void ThrowOnFailure(const OrtApi& api, OrtStatus* status) {
    if (status == nullptr) {
        return;
    }
    const OrtOwner<OrtStatus> owner(status, api.ReleaseStatus);
    throw Ort::Exception(api.GetErrorMessage(status));
}
