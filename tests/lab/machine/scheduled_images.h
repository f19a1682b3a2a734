// The images of a desktop that changes, fails and is lost when the scenario says so.
#pragma once

#include "tests/lab/machine/image_source.h"

namespace lab {

/// An ImageSourceMaker.
HRESULT MakeScheduledImages(std::size_t output, ID3D11Device* device, std::unique_ptr<ImageSource>& source);

}  // namespace lab
