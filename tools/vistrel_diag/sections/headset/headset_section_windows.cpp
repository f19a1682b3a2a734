#include <chrono>
#include <vector>

#include "tools/vistrel_diag/openxr/openxr_loader.h"
#include "tools/vistrel_diag/openxr/openxr_reading.h"
#include "tools/vistrel_diag/report/progress.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/headset/headset_query.h"
#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/worker/worker.h"

namespace {

/// A runtime that first has to start its own service takes up to half of this; nothing else takes seconds.
constexpr std::chrono::seconds kLongestSilence{60};

using FoundMore = std::function<void(const HeadsetQuery&)>;

struct QueryFunctions {
    PFN_xrGetInstanceProperties get_properties;
    PFN_xrGetSystem get_system;
    PFN_xrEnumerateViewConfigurationViews enumerate_views;
    PFN_xrDestroyInstance destroy_instance;
    PFN_xrGetD3D11GraphicsRequirementsKHR get_requirements;
};

QueryFunctions FindQueryFunctions(PFN_xrGetInstanceProcAddr get_function, XrInstance instance) {
    QueryFunctions xr = {};
    FindOpenXrFunction(get_function, instance, "xrGetInstanceProperties", xr.get_properties);
    FindOpenXrFunction(get_function, instance, "xrGetSystem", xr.get_system);
    FindOpenXrFunction(get_function, instance, "xrEnumerateViewConfigurationViews", xr.enumerate_views);
    FindOpenXrFunction(get_function, instance, "xrDestroyInstance", xr.destroy_instance);
    FindOpenXrFunction(get_function, instance, "xrGetD3D11GraphicsRequirementsKHR", xr.get_requirements);
    return xr;
}

void ReadRuntime(const QueryFunctions& xr, XrInstance instance, HeadsetQuery& query) {
    auto properties = OpenXrStructure<XrInstanceProperties>(XR_TYPE_INSTANCE_PROPERTIES);
    if (xr.get_properties != nullptr && XR_SUCCEEDED(xr.get_properties(instance, &properties))) {
        query.runtime = OpenXrRuntimeText(OpenXrName(properties.runtimeName), properties.runtimeVersion);
    }
}

void ReadEyeSize(const QueryFunctions& xr, XrInstance instance, XrSystemId system, HeadsetQuery& query) {
    if (xr.enumerate_views == nullptr) {
        return;
    }
    const std::vector<XrViewConfigurationView> views = EnumerateOpenXr(
        OpenXrStructure<XrViewConfigurationView>(XR_TYPE_VIEW_CONFIGURATION_VIEW),
        [&](std::uint32_t capacity, std::uint32_t* count, XrViewConfigurationView* elements) {
            return xr.enumerate_views(instance, system, XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, capacity,
                                      count, elements);
        });
    if (!views.empty()) {
        query.eye_width = views.front().recommendedImageRectWidth;
        query.eye_height = views.front().recommendedImageRectHeight;
    }
}

void ReadRequiredAdapter(const QueryFunctions& xr, XrInstance instance, XrSystemId system,
                         HeadsetQuery& query) {
    auto requirements =
        OpenXrStructure<XrGraphicsRequirementsD3D11KHR>(XR_TYPE_GRAPHICS_REQUIREMENTS_D3D11_KHR);
    if (xr.get_requirements != nullptr &&
        XR_SUCCEEDED(xr.get_requirements(instance, system, &requirements))) {
        query.adapter_luid = LuidOf(requirements.adapterLuid);
        query.luid_known = true;
    }
}

void ReadHeadset(const QueryFunctions& xr, XrInstance instance, const FoundMore& found, HeadsetQuery& query) {
    XrResult result = XR_ERROR_FUNCTION_UNSUPPORTED;
    const XrSystemId system = xr.get_system != nullptr
                                  ? FindHeadMountedDisplay(xr.get_system, instance, &result)
                                  : XR_NULL_SYSTEM_ID;
    if (system == XR_NULL_SYSTEM_ID) {
        query.stop = HeadsetStop::NoHeadset;
        query.stop_result = result;
        return;
    }
    ReadEyeSize(xr, instance, system, query);
    found(query);
    ReadRequiredAdapter(xr, instance, system, query);
    query.headset_found = true;
}

/// Queries the loader's runtime. The record is passed to `found` once more at the end, because destroying the
/// instance may crash the process.
void QueryLoader(const OpenXrLoader& loader, const FoundMore& found, HeadsetQuery& query) {
    const auto create_instance = loader.EntryPoint<PFN_xrCreateInstance>("xrCreateInstance");
    const auto get_function = loader.EntryPoint<PFN_xrGetInstanceProcAddr>("xrGetInstanceProcAddr");
    if (create_instance == nullptr || get_function == nullptr) {
        query.stop = HeadsetStop::NoEntryPoints;
        return;
    }
    XrResult result = XR_SUCCESS;
    const XrInstance instance =
        CreateOpenXrInstance(create_instance, {XR_KHR_D3D11_ENABLE_EXTENSION_NAME}, &result);
    if (instance == XR_NULL_HANDLE) {
        query.stop = HeadsetStop::NoInstance;
        query.stop_result = result;
        return;
    }
    const QueryFunctions xr = FindQueryFunctions(get_function, instance);
    const OpenXrOwned<XrInstance> owner(instance, xr.destroy_instance);
    ReadRuntime(xr, instance, query);
    found(query);
    ReadHeadset(xr, instance, found, query);
    found(query);
}

}  // namespace

HeadsetQuery QueryOpenXrHeadset(const FoundMore& found) {
    const FoundMore tell = found ? found : [](const HeadsetQuery& /*query*/) {};
    HeadsetQuery query;
    OpenXrLoader loader;
    if (loader) {
        loader.StayLoaded();
        QueryLoader(loader, tell, query);
    } else {
        query.stop = HeadsetStop::NoLoader;
    }
    tell(query);
    return query;
}

void CarryOutHeadsetTask(const WorkerMessage& /*request*/, WorkerChannel& channel) {
    QueryOpenXrHeadset([&channel](const HeadsetQuery& query) { channel.Tell(MessageOf(query)); });
}

HeadsetQuery AskHeadset() {
    Report::EnterSection(kHeadsetTitle);
    Progress::Show("Asking the OpenXR runtime");
    const std::unique_ptr<Worker> worker = Worker::Start(kHeadsetTask, {}, kLongestSilence);
    if (!worker) {
        return QueryOpenXrHeadset();
    }
    HeadsetQuery query;
    while (const std::optional<WorkerMessage> message = worker->Next()) {
        query = HeadsetQueryOf(*message);
    }
    query.worker_end = worker->End();
    return query;
}
