// A GPU whose speed the scenario sets: it does not really draw, and its timestamps show how long drawing
// would have taken.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Watches all contexts of this one's class. On adapters with a scripted speed, a Draw takes the time that
/// the viewport's pixels need, and timestamp queries count nanoseconds of that time. If the clock has a ramp,
/// the work also takes time on the machine's clock, and no query is ready before the work is done.
void WatchGpuTime(ID3D11DeviceContext* context);

}  // namespace lab
