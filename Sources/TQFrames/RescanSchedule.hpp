#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <stop_token>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// Decides when watched folders are listed again: every period, and sooner when something happened in one of them.
///
/// There is one waiting thread, so listings never overlap, and however many events come while it lists or waits, they
/// lead to one listing. That one comes a moment after the event, since events come in bursts and a file that has just
/// been created is not finished. Where a listing takes long, as in a folder of very many files or on a network, events
/// have it repeated only after a rest of several times that duration, so that a folder in which something happens all
/// the time does not keep a processor or a server busy. Neither pause ever makes a listing later than the period does.
class RescanSchedule {
 public:
  using Duration = std::chrono::nanoseconds;

  /// From an event to its listing.
  static constexpr Duration settling = std::chrono::milliseconds(100);

  /// Rests between listings that follow events, in durations of the last listing.
  static constexpr int eventRest = 4;

  /// The first listing is due `period` (above 0) from now.
  RescanSchedule(Duration period, std::shared_ptr<const Clock> clock);

  /// Something happened in a folder. From any thread.
  void noteEvent();

  /// Blocks until the folders are to be listed, which begins when this returns. Events that are noted from then on
  /// count for the next listing. A stop request ends the wait with `Cancelled`.
  void waitUntilDue(const std::stop_token& stop);

  /// The listing has ended.
  void noteEnd();

 private:
  using Moment = std::chrono::steady_clock::time_point;

  Moment dueAnyway() const;
  Moment dueAfterEvent() const;
  void sleepUntil(Moment due, std::stop_token stop) const;
  std::stop_source event() const;

  const Duration period_;
  const std::shared_ptr<const Clock> clock_;
  Moment begun_;  // the latest listing
  Moment ended_;

  mutable std::mutex mutex_;
  std::stop_source event_;  // guarded by mutex_; stopped by the first event since the latest listing began
};

}  // namespace tq
