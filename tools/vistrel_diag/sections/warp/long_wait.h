// A wait that has no limit, and the person who is told that it lasts.
#pragma once

#include <functional>

/// Tells, once in all, that a wait has lasted for kSeconds.
class LongWait {
  public:
    static constexpr double kSeconds = 20.0;

    /// `now` is a clock in seconds.
    LongWait(std::function<double()> now, std::function<void()> tell);

    /// A wait begins.
    void Begin();

    /// It still lasts.
    void Continue();

  private:
    std::function<double()> now_;
    std::function<void()> tell_;
    double begun_ = 0.0;
    bool told_ = false;
};
