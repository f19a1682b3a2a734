// Tells the user when a wait without a limit takes long.
#pragma once

#include <functional>

/// Calls `tell`, once at most, when a wait has lasted for kSeconds.
class LongWait {
  public:
    static constexpr double kSeconds = 20.0;

    /// `now` is a clock in seconds.
    LongWait(std::function<double()> now, std::function<void()> tell);

    /// A wait begins.
    void Begin();

    /// The wait goes on; to be called repeatedly.
    void Continue();

  private:
    std::function<double()> now_;
    std::function<void()> tell_;
    double begun_ = 0.0;
    bool told_ = false;
};
