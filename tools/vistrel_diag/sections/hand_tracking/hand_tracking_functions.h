// The OpenXR functions that are needed to watch the hands.
#pragma once

#include "tools/vistrel_diag/openxr/openxr_loader.h"

/// A function that the runtime lacks is null.
struct HandTrackingFunctions {
    PFN_xrGetSystem get_system;
    PFN_xrGetD3D11GraphicsRequirementsKHR get_requirements;
    PFN_xrCreateSession create_session;
    PFN_xrDestroySession destroy_session;
    PFN_xrCreateReferenceSpace create_space;
    PFN_xrDestroySpace destroy_space;
    PFN_xrPollEvent poll_event;
    PFN_xrBeginSession begin_session;
    PFN_xrEndSession end_session;
    PFN_xrWaitFrame wait_frame;
    PFN_xrBeginFrame begin_frame;
    PFN_xrEndFrame end_frame;
    PFN_xrDestroyInstance destroy_instance;
    PFN_xrCreateHandTrackerEXT create_tracker;
    PFN_xrDestroyHandTrackerEXT destroy_tracker;
    PFN_xrLocateHandJointsEXT locate_joints;
};

HandTrackingFunctions FindHandTrackingFunctions(PFN_xrGetInstanceProcAddr get_function, XrInstance instance);

/// Whether every function that a watch requires is present.
bool CanWatchHands(const HandTrackingFunctions& xr);
