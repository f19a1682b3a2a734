#include "tools/vistrel_diag/hand_tracking_functions.h"

HandTrackingFunctions FindHandTrackingFunctions(PFN_xrGetInstanceProcAddr get_function, XrInstance instance) {
    const auto find = [&]<typename Function>(Function& function, const char* name) {
        function = FindOpenXrFunction<Function>(get_function, instance, name);
    };
    HandTrackingFunctions xr = {};
    find(xr.get_system, "xrGetSystem");
    find(xr.get_requirements, "xrGetD3D11GraphicsRequirementsKHR");
    find(xr.create_session, "xrCreateSession");
    find(xr.destroy_session, "xrDestroySession");
    find(xr.create_space, "xrCreateReferenceSpace");
    find(xr.destroy_space, "xrDestroySpace");
    find(xr.poll_event, "xrPollEvent");
    find(xr.begin_session, "xrBeginSession");
    find(xr.end_session, "xrEndSession");
    find(xr.wait_frame, "xrWaitFrame");
    find(xr.begin_frame, "xrBeginFrame");
    find(xr.end_frame, "xrEndFrame");
    find(xr.destroy_instance, "xrDestroyInstance");
    find(xr.create_tracker, "xrCreateHandTrackerEXT");
    find(xr.destroy_tracker, "xrDestroyHandTrackerEXT");
    find(xr.locate_joints, "xrLocateHandJointsEXT");
    return xr;
}

bool CanWatchHands(const HandTrackingFunctions& xr) {
    return xr.get_system != nullptr && xr.create_session != nullptr && xr.create_space != nullptr &&
           xr.poll_event != nullptr && xr.begin_session != nullptr && xr.wait_frame != nullptr &&
           xr.begin_frame != nullptr && xr.end_frame != nullptr && xr.create_tracker != nullptr &&
           xr.locate_joints != nullptr;
}
