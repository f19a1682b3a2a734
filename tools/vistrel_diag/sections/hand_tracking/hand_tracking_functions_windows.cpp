#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_functions.h"

HandTrackingFunctions FindHandTrackingFunctions(PFN_xrGetInstanceProcAddr get_function, XrInstance instance) {
    HandTrackingFunctions xr = {};
    FindOpenXrFunction(get_function, instance, "xrGetSystem", xr.get_system);
    FindOpenXrFunction(get_function, instance, "xrGetD3D11GraphicsRequirementsKHR", xr.get_requirements);
    FindOpenXrFunction(get_function, instance, "xrCreateSession", xr.create_session);
    FindOpenXrFunction(get_function, instance, "xrDestroySession", xr.destroy_session);
    FindOpenXrFunction(get_function, instance, "xrCreateReferenceSpace", xr.create_space);
    FindOpenXrFunction(get_function, instance, "xrDestroySpace", xr.destroy_space);
    FindOpenXrFunction(get_function, instance, "xrPollEvent", xr.poll_event);
    FindOpenXrFunction(get_function, instance, "xrBeginSession", xr.begin_session);
    FindOpenXrFunction(get_function, instance, "xrEndSession", xr.end_session);
    FindOpenXrFunction(get_function, instance, "xrWaitFrame", xr.wait_frame);
    FindOpenXrFunction(get_function, instance, "xrBeginFrame", xr.begin_frame);
    FindOpenXrFunction(get_function, instance, "xrEndFrame", xr.end_frame);
    FindOpenXrFunction(get_function, instance, "xrDestroyInstance", xr.destroy_instance);
    FindOpenXrFunction(get_function, instance, "xrCreateHandTrackerEXT", xr.create_tracker);
    FindOpenXrFunction(get_function, instance, "xrDestroyHandTrackerEXT", xr.destroy_tracker);
    FindOpenXrFunction(get_function, instance, "xrLocateHandJointsEXT", xr.locate_joints);
    return xr;
}

bool CanWatchHands(const HandTrackingFunctions& xr) {
    return xr.get_system != nullptr && xr.create_session != nullptr && xr.create_space != nullptr &&
           xr.poll_event != nullptr && xr.begin_session != nullptr && xr.wait_frame != nullptr &&
           xr.begin_frame != nullptr && xr.end_frame != nullptr && xr.create_tracker != nullptr &&
           xr.locate_joints != nullptr;
}
