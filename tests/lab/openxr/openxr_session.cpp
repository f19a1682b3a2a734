// The scripted OpenXR runtime: its session, frames and hands.
#include "tests/lab/openxr/openxr_runtime.h"

#include <cstdlib>
#include <cstring>

namespace {

const XrSession kSession = MakeHandle<XrSession>(0x2000);
const XrSpace kSpace = MakeHandle<XrSpace>(0x3000);
const std::array<XrHandTrackerEXT, 2> kTrackers = {MakeHandle<XrHandTrackerEXT>(0x4000),
                                                   MakeHandle<XrHandTrackerEXT>(0x4001)};
constexpr XrTime kFirstFrameTime = 1'000'000;

struct SessionState {
    bool requirements_known = false;
    bool exists = false;
    bool running = false;
    bool frame_begun = false;
    int pass = 0;  ///< completed drains of the event queue
    std::size_t next_event = 0;
    int frames_waited = 0;  ///< successful waits
    int waits = 0;
    XrTime frame_time = 0;
    std::set<std::string> logged;  ///< frame loop calls that have been logged
};

SessionState state;

/// On a simulated machine with a scripted clock this takes no time.
void PassTime(int milliseconds) {
    using MachinePassTime = void (*)(std::int64_t microseconds);
    HMODULE const machine = GetModuleHandleW(L"vistrel_lab_machine.dll");
    if (machine != nullptr) {
        reinterpret_cast<MachinePassTime>(GetProcAddress(machine, "LabPassTime"))(milliseconds *
                                                                                  std::int64_t{1000});
    } else {
        Sleep(static_cast<DWORD>(milliseconds));
    }
}

/// The calls of the frame loop are logged once for every time the session begins.
void LogFirst(const std::string& call) {
    if (state.logged.insert(call).second) {
        LogCall(call);
    }
}

std::optional<XrResult> ScriptedResult(const std::string& function) {
    const auto result = CurrentScript().Result(function);
    return result ? std::optional(static_cast<XrResult>(*result)) : std::nullopt;
}

XrResult XRAPI_CALL CreateSession(XrInstance instance, const XrSessionCreateInfo* info, XrSession* session) {
    LogCall("xrCreateSession");
    Expect(instance == kInstance && info->systemId == CurrentScript().system, "instance or system");
    const auto* binding = static_cast<const XrGraphicsBindingD3D11KHR*>(info->next);
    Expect(info->type == XR_TYPE_SESSION_CREATE_INFO && binding != nullptr &&
               binding->type == XR_TYPE_GRAPHICS_BINDING_D3D11_KHR && binding->device != nullptr,
           "session info");
    if (const auto result = ScriptedResult("xrCreateSession")) {
        return *result;
    }
    if (!state.requirements_known && !CurrentScript().Lacks("xrGetD3D11GraphicsRequirementsKHR")) {
        LogCall("WRONG session before graphics requirements");
        return XR_ERROR_GRAPHICS_REQUIREMENTS_CALL_MISSING;
    }
    if (CurrentScript().nulls.count("xrCreateSession") != 0) {
        *session = XR_NULL_HANDLE;
        return XR_SUCCESS;
    }
    state.exists = true;
    *session = kSession;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroySession(XrSession session) {
    LogCall("frames waited for: " + std::to_string(state.waits));
    LogCall("xrDestroySession");
    Expect(session == kSession && state.exists, "session");
    state.exists = false;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL CreateReferenceSpace(XrSession session, const XrReferenceSpaceCreateInfo* info,
                                         XrSpace* space) {
    LogCall("xrCreateReferenceSpace");
    const XrPosef& pose = info->poseInReferenceSpace;
    Expect(session == kSession && info->type == XR_TYPE_REFERENCE_SPACE_CREATE_INFO &&
               info->referenceSpaceType == XR_REFERENCE_SPACE_TYPE_LOCAL,
           "space info");
    Expect(pose.orientation.w == 1.0F && pose.orientation.x == 0.0F && pose.orientation.y == 0.0F &&
               pose.orientation.z == 0.0F && pose.position.x == 0.0F && pose.position.y == 0.0F &&
               pose.position.z == 0.0F,
           "pose");
    if (const auto result = ScriptedResult("xrCreateReferenceSpace")) {
        return *result;
    }
    *space = kSpace;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroySpace(XrSpace space) {
    LogCall("xrDestroySpace");
    Expect(space == kSpace, "space");
    return XR_SUCCESS;
}

XrResult XRAPI_CALL CreateHandTracker(XrSession session, const XrHandTrackerCreateInfoEXT* info,
                                      XrHandTrackerEXT* tracker) {
    const bool left = info->hand == XR_HAND_LEFT_EXT;
    const std::string side = left ? "left" : "right";
    std::string line = "xrCreateHandTrackerEXT " + side;
    const auto* sources = static_cast<const XrHandTrackingDataSourceInfoEXT*>(info->next);
    for (std::uint32_t i = 0; sources != nullptr && i < sources->requestedDataSourceCount; ++i) {
        line += " " + std::to_string(sources->requestedDataSources[i]);
    }
    LogCall(line);
    Expect(session == kSession && info->type == XR_TYPE_HAND_TRACKER_CREATE_INFO_EXT &&
               (left || info->hand == XR_HAND_RIGHT_EXT) &&
               info->handJointSet == XR_HAND_JOINT_SET_DEFAULT_EXT,
           "tracker info");
    Expect((sources != nullptr) == ExtensionEnabled(XR_EXT_HAND_TRACKING_DATA_SOURCE_EXTENSION_NAME) &&
               (sources == nullptr || sources->type == XR_TYPE_HAND_TRACKING_DATA_SOURCE_INFO_EXT),
           "data sources");
    if (const auto result = ScriptedResult("xrCreateHandTrackerEXT:" + side)) {
        *tracker = MakeHandle<XrHandTrackerEXT>(0xBAD);  // A failed call may leave anything behind.
        return *result;
    }
    *tracker = kTrackers[left ? 0 : 1];
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroyHandTracker(XrHandTrackerEXT tracker) {
    LogCall(std::string("xrDestroyHandTrackerEXT ") + (tracker == kTrackers[0] ? "left" : "right"));
    Expect(tracker == kTrackers[0] || tracker == kTrackers[1], "tracker");
    return XR_SUCCESS;
}

XrResult XRAPI_CALL PollEvent(XrInstance instance, XrEventDataBuffer* buffer) {
    Expect(instance == kInstance && buffer->type == XR_TYPE_EVENT_DATA_BUFFER && buffer->next == nullptr,
           "event buffer");
    const OpenXrScript& script = CurrentScript();
    if (const auto result = ScriptedResult("xrPollEvent")) {
        LogFirst("xrPollEvent");
        return *result;
    }
    if (state.next_event < script.events.size() && script.events[state.next_event].pass <= state.pass) {
        XrEventDataSessionStateChanged event = {};
        event.type = XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED;
        event.session = kSession;
        event.state = static_cast<XrSessionState>(script.events[state.next_event].state);
        std::memcpy(static_cast<void*>(buffer), &event, sizeof(event));
        ++state.next_event;
        return XR_SUCCESS;
    }
    if (script.endless_events) {
        buffer->type = XR_TYPE_EVENT_DATA_EVENTS_LOST;
        return XR_SUCCESS;
    }
    ++state.pass;
    return XR_EVENT_UNAVAILABLE;
}

XrResult XRAPI_CALL BeginSession(XrSession session, const XrSessionBeginInfo* info) {
    LogCall("xrBeginSession");
    Expect(session == kSession && info->type == XR_TYPE_SESSION_BEGIN_INFO &&
               info->primaryViewConfigurationType == XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO,
           "begin info");
    Expect(!state.running, "session runs already");
    if (const auto result = ScriptedResult("xrBeginSession")) {
        return *result;
    }
    state.running = true;
    state.logged.clear();
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EndSession(XrSession session) {
    LogCall("xrEndSession");
    Expect(session == kSession && !state.frame_begun, "session or frame");
    state.running = false;
    return static_cast<XrResult>(ScriptedResult("xrEndSession").value_or(XR_SUCCESS));
}

XrResult XRAPI_CALL WaitFrame(XrSession session, const XrFrameWaitInfo* info, XrFrameState* frame) {
    LogFirst("xrWaitFrame");
    ++state.waits;
    Expect(session == kSession && info->type == XR_TYPE_FRAME_WAIT_INFO && frame->type == XR_TYPE_FRAME_STATE,
           "wait info");
    Expect(state.running, "session does not run");
    Expect(!state.frame_begun, "frame not ended");
    if (const auto result = ScriptedResult("xrWaitFrame")) {
        return *result;
    }
    PassTime(CurrentScript().frame_milliseconds);
    state.frame_time = kFirstFrameTime + state.frames_waited;
    ++state.frames_waited;
    frame->predictedDisplayTime = state.frame_time;
    frame->predictedDisplayPeriod = 1;
    frame->shouldRender = XR_TRUE;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL BeginFrame(XrSession session, const XrFrameBeginInfo* info) {
    LogFirst("xrBeginFrame");
    Expect(session == kSession && info->type == XR_TYPE_FRAME_BEGIN_INFO && !state.frame_begun,
           "begin frame");
    state.frame_begun = true;
    return static_cast<XrResult>(ScriptedResult("xrBeginFrame").value_or(XR_SUCCESS));
}

XrResult XRAPI_CALL EndFrame(XrSession session, const XrFrameEndInfo* info) {
    LogFirst("xrEndFrame");
    Expect(session == kSession && info->type == XR_TYPE_FRAME_END_INFO && state.frame_begun &&
               info->displayTime == state.frame_time &&
               info->environmentBlendMode == XR_ENVIRONMENT_BLEND_MODE_OPAQUE && info->layerCount == 0,
           "end frame");
    state.frame_begun = false;
    return static_cast<XrResult>(ScriptedResult("xrEndFrame").value_or(XR_SUCCESS));
}

/// Returns the tracking result of a hand in the scripted `condition`.
void FillHand(const std::string& condition, XrHandJointLocationsEXT* locations) {
    auto* source = static_cast<XrHandTrackingDataSourceStateEXT*>(locations->next);
    locations->isActive = condition != "away" ? XR_TRUE : XR_FALSE;
    std::memset(locations->jointLocations, 0xFF, locations->jointCount * sizeof(XrHandJointLocationEXT));
    if (source == nullptr) {
        return;
    }
    source->isActive = condition != "away" && condition != "silent" ? XR_TRUE : XR_FALSE;
    const int number = condition == "bare" ? 1 : condition == "controller" ? 2 : std::atoi(condition.c_str());
    source->dataSource = static_cast<XrHandTrackingDataSourceEXT>(number);
}

XrResult XRAPI_CALL LocateHandJoints(XrHandTrackerEXT tracker, const XrHandJointsLocateInfoEXT* info,
                                     XrHandJointLocationsEXT* locations) {
    const std::size_t hand = tracker == kTrackers[0] ? 0 : 1;
    LogFirst(std::string("xrLocateHandJointsEXT ") + (hand == 0 ? "left" : "right"));
    const auto* source = static_cast<const XrHandTrackingDataSourceStateEXT*>(locations->next);
    Expect(tracker == kTrackers[hand], "tracker");
    Expect(info->type == XR_TYPE_HAND_JOINTS_LOCATE_INFO_EXT && info->time == state.frame_time &&
               state.frame_begun,
           "locate info");
    Expect(locations->type == XR_TYPE_HAND_JOINT_LOCATIONS_EXT &&
               locations->jointCount == XR_HAND_JOINT_COUNT_EXT && locations->jointLocations != nullptr,
           "joint locations");
    Expect((source != nullptr) == ExtensionEnabled(XR_EXT_HAND_TRACKING_DATA_SOURCE_EXTENSION_NAME) &&
               (source == nullptr || source->type == XR_TYPE_HAND_TRACKING_DATA_SOURCE_STATE_EXT),
           "data source state");
    const std::string condition = CurrentScript().HandCondition(hand, state.frames_waited - 1);
    FillHand(condition, locations);  // A failed call may leave anything behind.
    if (info->baseSpace != kSpace) {
        return XR_ERROR_HANDLE_INVALID;
    }
    return condition == "failing" ? XR_ERROR_RUNTIME_FAILURE : XR_SUCCESS;
}

}  // namespace

void ResetSession() {
    state = SessionState();
}

void NoteRequirementsCall() {
    state.requirements_known = true;
}

PFN_xrVoidFunction FindSessionFunction(const std::string& name) {
    static const std::map<std::string, PFN_xrVoidFunction> functions = {
        {"xrCreateSession", reinterpret_cast<PFN_xrVoidFunction>(CreateSession)},
        {"xrDestroySession", reinterpret_cast<PFN_xrVoidFunction>(DestroySession)},
        {"xrCreateReferenceSpace", reinterpret_cast<PFN_xrVoidFunction>(CreateReferenceSpace)},
        {"xrDestroySpace", reinterpret_cast<PFN_xrVoidFunction>(DestroySpace)},
        {"xrPollEvent", reinterpret_cast<PFN_xrVoidFunction>(PollEvent)},
        {"xrBeginSession", reinterpret_cast<PFN_xrVoidFunction>(BeginSession)},
        {"xrEndSession", reinterpret_cast<PFN_xrVoidFunction>(EndSession)},
        {"xrWaitFrame", reinterpret_cast<PFN_xrVoidFunction>(WaitFrame)},
        {"xrBeginFrame", reinterpret_cast<PFN_xrVoidFunction>(BeginFrame)},
        {"xrEndFrame", reinterpret_cast<PFN_xrVoidFunction>(EndFrame)},
        {"xrCreateHandTrackerEXT", reinterpret_cast<PFN_xrVoidFunction>(CreateHandTracker)},
        {"xrDestroyHandTrackerEXT", reinterpret_cast<PFN_xrVoidFunction>(DestroyHandTracker)},
        {"xrLocateHandJointsEXT", reinterpret_cast<PFN_xrVoidFunction>(LocateHandJoints)},
    };
    const auto found = functions.find(name);
    return found != functions.end() ? found->second : nullptr;
}
