// Whether the OpenXR runtime can tell a bare hand from a hand that holds a controller, found out by watching.
#pragma once

struct ID3D11Device;

/// Reports HAND TRACKING. Opens an OpenXR session on `device` (may be null) and watches both hands for
/// `seconds` while the user holds the controllers and then puts them down; blocks for that time, or less when
/// the runtime ends the session. Leaves no OpenXR object and no reference to the loader behind.
void ProbeHandTracking(ID3D11Device* device, double seconds);
