#include "TQFrames/RescanSchedule.hpp"

#include <algorithm>
#include <utility>

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {

RescanSchedule::RescanSchedule(Duration period, std::shared_ptr<const Clock> clock)
    : period_(period), clock_(std::move(clock)), begun_(clock_->steadyNow()), ended_(begun_) {}

void RescanSchedule::noteEvent() {
  event().request_stop();
}

void RescanSchedule::waitUntilDue(const std::stop_token& stop) {
  const std::stop_source happened = event();
  std::stop_source either;
  const auto wake = [&either] { either.request_stop(); };
  const std::stop_callback onEvent(happened.get_token(), wake);
  const std::stop_callback onStop(stop, wake);
  try {
    sleepUntil(dueAnyway(), either.get_token());
  } catch (const Cancelled&) {
    sleepUntil(dueAfterEvent(), stop);
  }
  throwIfStopped(stop);
  begun_ = clock_->steadyNow();
  std::lock_guard lock(mutex_);
  event_ = {};
}

void RescanSchedule::noteEnd() {
  ended_ = clock_->steadyNow();
}

/// A period after the latest listing began; where that one took most of it, after a rest as long as it took.
RescanSchedule::Moment RescanSchedule::dueAnyway() const {
  return std::max(begun_ + period_, ended_ + std::min(ended_ - begun_, period_));
}

RescanSchedule::Moment RescanSchedule::dueAfterEvent() const {
  return std::min(std::max(clock_->steadyNow() + settling, ended_ + eventRest * (ended_ - begun_)), dueAnyway());
}

void RescanSchedule::sleepUntil(Moment due, std::stop_token stop) const {
  clock_->sleep(std::max(due - clock_->steadyNow(), Moment::duration::zero()), std::move(stop));
}

std::stop_source RescanSchedule::event() const {
  std::lock_guard lock(mutex_);
  return event_;
}

}  // namespace tq
