#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "TQCore/Models/Job.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq::describe {

/// Shows how a run of clips goes. On a terminal: a line for each running clip and a total with the time left, kept at
/// the bottom; elsewhere plain lines as clips start and end. What a clip came to is a lasting line in both.
class ProgressDisplay {
 public:
  /// `columns` is absent where `out` is no terminal. `out` and `clock` outlive the display.
  ProgressDisplay(std::ostream& out, std::optional<int> columns, const Clock& clock);

  /// So many clips, at least, are to be described in all.
  void expect(std::size_t clips) { clipCount_ = std::max(clipCount_, clips); }

  /// A job has changed; `outputs` are the files that were written for it, known when it is done. A job that ends
  /// without having started shows in the counts alone: a cancelled run of thousands of clips stays readable.
  void show(const Job& job, const std::vector<std::filesystem::path>& outputs);

  /// A lasting line.
  void say(const std::string& line);

  /// Time has passed.
  void tick();

  /// Clears the moving lines and says what the whole run came to.
  void finish();

 private:
  void showEnd(const Job& job, const std::vector<std::filesystem::path>& outputs);
  void erase();
  void draw();
  std::string runningLine(const Job& job) const;
  std::string totalLine() const;
  std::string counts() const;

  std::ostream& out_;
  const std::optional<int> columns_;
  const Clock& clock_;
  std::size_t clipCount_ = 0;
  const std::chrono::steady_clock::time_point start_;
  std::vector<Job> running_;  // in order of start
  std::unordered_map<JobStatus, std::size_t> ended_;
  std::size_t drawnLines_ = 0;
};

}  // namespace tq::describe
