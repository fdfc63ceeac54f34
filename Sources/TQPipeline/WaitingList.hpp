#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>

#include "TQCore/Models/Job.hpp"

namespace tq {

/// Jobs that wait for a slot, first come first served. A job is found by its id without a walk, so that cancelling
/// thousands that wait costs no more than adding them did.
class WaitingList {
 public:
  bool empty() const { return jobs_.empty(); }
  std::size_t size() const { return jobs_.size(); }

  void append(Job job);

  /// The job that waits longest. Not on an empty list.
  const Job& front() const { return jobs_.begin()->second; }
  void removeFront();

  /// Removes every job with that id.
  void remove(const UUID& id);

 private:
  using Ticket = std::uint64_t;

  std::map<Ticket, Job> jobs_;
  std::unordered_multimap<UUID, Ticket> tickets_;
  Ticket last_ = 0;
};

}  // namespace tq
