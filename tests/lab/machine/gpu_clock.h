// A GPU whose speed the scenario sets: what it draws is not drawn, and its time stamps tell how long it would
// have taken.
#pragma once

#include <windows.h>
// windows.h first
#include <d3d11.h>

namespace lab {

/// Watches contexts of this one's class. On adapters with a scripted speed, a Draw takes the time that the
/// viewport's pixels need, and time stamp queries count nanoseconds of that time. On one whose clock ramps
/// the work takes the machine's time as well, and no query is done before it is.
void WatchGpuTime(ID3D11DeviceContext* context);

}  // namespace lab
