#include "tools/vistrel_diag/sections/hand_tracking/hand_watch.h"

#include <cstddef>
#include <cstring>

#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/progress.h"

namespace {

constexpr DWORD kIdleMilliseconds = 10;  // Between two polls of a session that shows no frames.

}  // namespace

HandWatch::HandWatch(const HandTrackingFunctions& functions, const HandWatchObjects& objects,
                     bool data_source_extension)
    : xr_(functions), objects_(objects), data_source_extension_(data_source_extension) {}

void HandWatch::Run(double seconds) {
    seconds_ = WatchSeconds(seconds);
    watch_ = Stopwatch();
    while (!TimeIsUp() && !EnterWasPressed()) {
        Progress::ShowSecondsLeft("Watching the hands", seconds_ - watch_.Seconds(), seconds_);
        DrainEvents();
        if (quit_) {
            break;
        }
        if (running_) {
            WatchOneFrame();
        } else {
            Sleep(kIdleMilliseconds);
        }
    }
    Progress::Clear();
}

bool HandWatch::TimeIsUp() const {
    return watch_.Seconds() >= seconds_;
}

void HandWatch::DrainEvents() {
    auto event = OpenXrStructure<XrEventDataBuffer>(XR_TYPE_EVENT_DATA_BUFFER);
    // An empty queue returns a different success code. The time is checked because a faulty runtime may never
    // run out of events.
    while (xr_.poll_event(objects_.instance, &event) == XR_SUCCESS) {
        if (event.type == XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED) {
            XrEventDataSessionStateChanged change;
            std::memcpy(&change, &event, sizeof(change));
            HandleSessionState(change.state);
        }
        if (TimeIsUp()) {
            break;
        }
        event = OpenXrStructure<XrEventDataBuffer>(XR_TYPE_EVENT_DATA_BUFFER);
    }
}

void HandWatch::HandleSessionState(XrSessionState state) {
    switch (state) {
        case XR_SESSION_STATE_READY:
            if (!running_) {
                auto info = OpenXrStructure<XrSessionBeginInfo>(XR_TYPE_SESSION_BEGIN_INFO);
                info.primaryViewConfigurationType = XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO;
                running_ = XR_SUCCEEDED(xr_.begin_session(objects_.session, &info));
            }
            break;
        case XR_SESSION_STATE_STOPPING:
            if (xr_.end_session != nullptr) {
                xr_.end_session(objects_.session);
            }
            running_ = false;
            break;
        case XR_SESSION_STATE_LOSS_PENDING:
        case XR_SESSION_STATE_EXITING:
            quit_ = true;
            break;
        default:
            break;
    }
}

void HandWatch::WatchOneFrame() {
    const auto wait_info = OpenXrStructure<XrFrameWaitInfo>(XR_TYPE_FRAME_WAIT_INFO);
    auto frame = OpenXrStructure<XrFrameState>(XR_TYPE_FRAME_STATE);
    if (XR_FAILED(xr_.wait_frame(objects_.session, &wait_info, &frame))) {
        Sleep(kIdleMilliseconds);  // A failed wait returns at once; without this the loop would spin.
        return;
    }
    const auto begin_info = OpenXrStructure<XrFrameBeginInfo>(XR_TYPE_FRAME_BEGIN_INFO);
    xr_.begin_frame(objects_.session, &begin_info);
    for (std::size_t i = 0; i < hands_.size(); ++i) {
        NoteHandReading(hands_[i], ReadHand(objects_.trackers[i], frame.predictedDisplayTime));
    }
    auto end_info = OpenXrStructure<XrFrameEndInfo>(XR_TYPE_FRAME_END_INFO);
    end_info.displayTime = frame.predictedDisplayTime;
    end_info.environmentBlendMode = XR_ENVIRONMENT_BLEND_MODE_OPAQUE;
    xr_.end_frame(objects_.session, &end_info);
}

HandReading HandWatch::ReadHand(XrHandTrackerEXT tracker, XrTime time) const {
    if (tracker == XR_NULL_HANDLE) {
        return {};
    }
    auto info = OpenXrStructure<XrHandJointsLocateInfoEXT>(XR_TYPE_HAND_JOINTS_LOCATE_INFO_EXT);
    info.baseSpace = objects_.space;
    info.time = time;

    std::array<XrHandJointLocationEXT, XR_HAND_JOINT_COUNT_EXT> joints = {};
    auto source =
        OpenXrStructure<XrHandTrackingDataSourceStateEXT>(XR_TYPE_HAND_TRACKING_DATA_SOURCE_STATE_EXT);
    auto locations = OpenXrStructure<XrHandJointLocationsEXT>(XR_TYPE_HAND_JOINT_LOCATIONS_EXT);
    locations.next = data_source_extension_ ? &source : nullptr;
    locations.jointCount = static_cast<std::uint32_t>(joints.size());
    locations.jointLocations = joints.data();
    if (XR_FAILED(xr_.locate_joints(tracker, &info, &locations)) || locations.isActive == XR_FALSE) {
        return {};
    }
    return {true, ReportedHandSource(data_source_extension_, source.isActive != XR_FALSE, source.dataSource)};
}
