// Desktop duplication.
#pragma once

#include <windows.h>
// windows.h first
#include <dxgi1_2.h>

#include <cstddef>

#include "tests/lab/machine/image_source.h"

namespace lab {

/// IDXGIOutput1::DuplicateOutput for the output at this position of the scenario. As on Windows, the device
/// must be on the adapter that drives the output and a process may duplicate an output once at a time
/// (E_INVALIDARG otherwise).
HRESULT DuplicateDesktop(std::size_t output, IUnknown* device, IDXGIOutputDuplication** duplication);

/// From now on duplications take their images from this source. The default is MakeScheduledImages.
void TakeImagesFrom(ImageSourceMaker maker);

}  // namespace lab
