// Watching the hands: a minimal frame loop on an OpenXR session.
#pragma once

#include <array>

#include "platform/stopwatch.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_functions.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

/// The objects that the watch uses; the caller owns all of them.
struct HandWatchObjects {
    XrInstance instance;
    XrSession session;
    XrSpace space;                             ///< null when there is none; no joints are located then
    std::array<XrHandTrackerEXT, 2> trackers;  ///< left, right; null when there is none
};

class HandWatch {
  public:
    HandWatch(const HandTrackingFunctions& functions, const HandWatchObjects& objects,
              bool data_source_extension);

    /// Watches for `seconds` from now, or until the runtime ends the session or the user presses Enter at the
    /// console, and reports every change of a hand's source as it happens.
    void Run(double seconds);

    const HandPair& Hands() const { return hands_; }

  private:
    bool TimeIsUp() const;
    void DrainEvents();
    void HandleSessionState(XrSessionState state);
    void WatchOneFrame();
    HandReading ReadHand(XrHandTrackerEXT tracker, XrTime time) const;

    const HandTrackingFunctions& xr_;
    HandWatchObjects objects_;
    bool data_source_extension_;
    HandPair hands_ = NewHands();
    Stopwatch watch_;
    double seconds_ = 0.0;
    bool running_ = false;
    bool quit_ = false;
};
