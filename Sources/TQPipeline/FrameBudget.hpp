#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <unordered_map>
#include <vector>

#include "TQCore/Models/Job.hpp"

namespace tq {

/// Which finished jobs keep their frames, when all of them together would take too much memory: those that finished
/// last.
class FrameBudget {
 public:
  /// `bytes`: how many the encoded frames of all finished jobs may have together.
  explicit FrameBudget(std::size_t bytes) : limit_(bytes) {}

  /// Takes note of the state a job has now.
  void note(const Job& job);

  /// Forgets a job that is not in the queue any more.
  void forget(const UUID& id);

  /// The jobs whose frames have to go, those that finished longest ago first. `selected` is looked at just now and
  /// keeps its own. The answer is taken at its word: none of these is counted any more.
  std::vector<UUID> takeExcess(const std::optional<UUID>& selected);

  std::size_t bytes() const { return bytes_; }

 private:
  struct Kept {
    UUID id;
    std::size_t bytes;
  };

  const std::size_t limit_;
  std::list<Kept> kept_;  ///< in order of finishing
  std::unordered_map<UUID, std::list<Kept>::iterator> index_;
  std::size_t bytes_ = 0;
};

}  // namespace tq
