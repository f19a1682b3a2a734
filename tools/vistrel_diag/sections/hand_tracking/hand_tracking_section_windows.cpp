#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

#include <optional>
#include <vector>

#include "tools/vistrel_diag/openxr/openxr_loader.h"
#include "tools/vistrel_diag/openxr/openxr_reading.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_watch.h"

namespace {

HandTrackingExtensions ProbeExtensions(PFN_xrEnumerateInstanceExtensionProperties enumerate) {
    const std::vector<XrExtensionProperties> properties =
        EnumerateOpenXr(OpenXrStructure<XrExtensionProperties>(XR_TYPE_EXTENSION_PROPERTIES),
                        [&](std::uint32_t capacity, std::uint32_t* count, XrExtensionProperties* elements) {
                            return enumerate(nullptr, capacity, count, elements);
                        });
    HandTrackingExtensions extensions;
    for (const XrExtensionProperties& property : properties) {
        const std::string_view name = OpenXrName(property.extensionName);
        extensions.hand_tracking |= name == XR_EXT_HAND_TRACKING_EXTENSION_NAME;
        extensions.data_source |= name == XR_EXT_HAND_TRACKING_DATA_SOURCE_EXTENSION_NAME;
    }
    return extensions;
}

XrInstance CreateHandTrackingInstance(PFN_xrCreateInstance create_instance, bool data_source_extension) {
    if (data_source_extension) {
        return CreateOpenXrInstance(create_instance,
                                    {XR_KHR_D3D11_ENABLE_EXTENSION_NAME, XR_EXT_HAND_TRACKING_EXTENSION_NAME,
                                     XR_EXT_HAND_TRACKING_DATA_SOURCE_EXTENSION_NAME});
    }
    return CreateOpenXrInstance(create_instance,
                                {XR_KHR_D3D11_ENABLE_EXTENSION_NAME, XR_EXT_HAND_TRACKING_EXTENSION_NAME});
}

XrSession CreateSession(const HandTrackingFunctions& xr, XrInstance instance, XrSystemId system,
                        ID3D11Device* device) {
    if (xr.get_requirements != nullptr) {
        // A runtime refuses a session until this has been called; the device is already chosen.
        auto unused =
            OpenXrStructure<XrGraphicsRequirementsD3D11KHR>(XR_TYPE_GRAPHICS_REQUIREMENTS_D3D11_KHR);
        xr.get_requirements(instance, system, &unused);
    }
    auto binding = OpenXrStructure<XrGraphicsBindingD3D11KHR>(XR_TYPE_GRAPHICS_BINDING_D3D11_KHR);
    binding.device = device;
    auto info = OpenXrStructure<XrSessionCreateInfo>(XR_TYPE_SESSION_CREATE_INFO);
    info.next = &binding;
    info.systemId = system;
    XrSession session = XR_NULL_HANDLE;
    if (XR_FAILED(xr.create_session(instance, &info, &session))) {
        return XR_NULL_HANDLE;
    }
    return session;
}

XrSpace CreateSpace(const HandTrackingFunctions& xr, XrSession session) {
    auto info = OpenXrStructure<XrReferenceSpaceCreateInfo>(XR_TYPE_REFERENCE_SPACE_CREATE_INFO);
    info.referenceSpaceType = XR_REFERENCE_SPACE_TYPE_LOCAL;
    info.poseInReferenceSpace.orientation.w = 1.0F;
    XrSpace space = XR_NULL_HANDLE;
    if (XR_FAILED(xr.create_space(session, &info, &space))) {
        return XR_NULL_HANDLE;
    }
    return space;
}

XrHandTrackerEXT CreateTracker(const HandTrackingFunctions& xr, XrSession session, XrHandEXT hand,
                               bool data_source_extension) {
    std::array<XrHandTrackingDataSourceEXT, 2> sources = {XR_HAND_TRACKING_DATA_SOURCE_UNOBSTRUCTED_EXT,
                                                          XR_HAND_TRACKING_DATA_SOURCE_CONTROLLER_EXT};
    auto source_info =
        OpenXrStructure<XrHandTrackingDataSourceInfoEXT>(XR_TYPE_HAND_TRACKING_DATA_SOURCE_INFO_EXT);
    source_info.requestedDataSourceCount = static_cast<std::uint32_t>(sources.size());
    source_info.requestedDataSources = sources.data();

    auto info = OpenXrStructure<XrHandTrackerCreateInfoEXT>(XR_TYPE_HAND_TRACKER_CREATE_INFO_EXT);
    info.next = data_source_extension ? &source_info : nullptr;
    info.hand = hand;
    info.handJointSet = XR_HAND_JOINT_SET_DEFAULT_EXT;
    XrHandTrackerEXT tracker = XR_NULL_HANDLE;
    if (XR_FAILED(xr.create_tracker(session, &info, &tracker))) {
        return XR_NULL_HANDLE;
    }
    return tracker;
}

/// Watches the hands on `session`, prints the result, and destroys the trackers and then the space.
void WatchHands(const HandTrackingFunctions& xr, XrInstance instance, XrSession session,
                bool data_source_extension, double seconds) {
    const OpenXrOwned<XrSpace> space(CreateSpace(xr, session), xr.destroy_space);
    const XrHandTrackerEXT left_tracker = CreateTracker(xr, session, XR_HAND_LEFT_EXT, data_source_extension);
    const XrHandTrackerEXT right_tracker =
        CreateTracker(xr, session, XR_HAND_RIGHT_EXT, data_source_extension);
    // The right tracker's owner comes first, so that the left one is destroyed first.
    const OpenXrOwned<XrHandTrackerEXT> right(right_tracker, xr.destroy_tracker);
    const OpenXrOwned<XrHandTrackerEXT> left(left_tracker, xr.destroy_tracker);

    PrintWatchInstructions(seconds);
    if (BeginToWatchForEnter()) {
        ConsolePrint("  (Press Enter to end the watch.)\n");
    }
    HandWatch watch(xr, {instance, session, space.get(), {left.get(), right.get()}}, data_source_extension);
    watch.Run(seconds);
    PrintHandSummary(watch.Hands(), data_source_extension);
}

/// Opens the instance and the session, watches, and closes them in reverse order.
std::optional<HandProbeStop> ProbeInstance(PFN_xrGetInstanceProcAddr get_function, XrInstance instance,
                                           ID3D11Device* device, bool data_source_extension, double seconds) {
    const HandTrackingFunctions xr = FindHandTrackingFunctions(get_function, instance);
    const OpenXrOwned<XrInstance> instance_owner(instance, xr.destroy_instance);
    if (!CanWatchHands(xr)) {
        return HandProbeStop::MissingFunctions;
    }
    const XrSystemId system = FindHeadMountedDisplay(xr.get_system, instance);
    if (system == XR_NULL_SYSTEM_ID) {
        return HandProbeStop::NoHeadset;
    }
    const OpenXrOwned<XrSession> session(CreateSession(xr, instance, system, device), xr.destroy_session);
    if (!session) {
        return HandProbeStop::NoSession;
    }
    WatchHands(xr, instance, session.get(), data_source_extension, seconds);
    return std::nullopt;
}

std::optional<HandProbeStop> ProbeWithLoader(ID3D11Device* device, double seconds) {
    if (device == nullptr) {
        return HandProbeStop::NoDevice;
    }
    const OpenXrLoader loader;
    if (!loader) {
        return HandProbeStop::NoLoader;
    }
    const auto create_instance = loader.EntryPoint<PFN_xrCreateInstance>("xrCreateInstance");
    const auto get_function = loader.EntryPoint<PFN_xrGetInstanceProcAddr>("xrGetInstanceProcAddr");
    const auto enumerate_extensions = loader.EntryPoint<PFN_xrEnumerateInstanceExtensionProperties>(
        "xrEnumerateInstanceExtensionProperties");
    if (create_instance == nullptr || get_function == nullptr || enumerate_extensions == nullptr) {
        return HandProbeStop::NoEntryPoints;
    }
    const HandTrackingExtensions extensions = ProbeExtensions(enumerate_extensions);
    PrintHandTrackingExtensions(extensions);
    if (!extensions.hand_tracking) {
        return HandProbeStop::NoHandTracking;
    }
    const XrInstance instance = CreateHandTrackingInstance(create_instance, extensions.data_source);
    if (instance == XR_NULL_HANDLE) {
        return HandProbeStop::NoInstance;
    }
    return ProbeInstance(get_function, instance, device, extensions.data_source, seconds);
}

}  // namespace

void ProbeHandTracking(ID3D11Device* device, double seconds) {
    Report::Section("HAND TRACKING (bare hand vs controller)");
    if (const std::optional<HandProbeStop> stop = ProbeWithLoader(device, seconds)) {
        PrintHandProbeStop(*stop);
    }
}
