#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tq::compare {

/// What a piece of work took, in seconds.
struct Cost {
  double wall = 0;
  double processor = 0;  ///< of this process and the children it has awaited
};

Cost costOf(const std::function<void()>& work, int repeats = 1);

/// The smallest value that at least `share` (above 0, at most 1) of them do not exceed; `values` is not empty.
double quantile(std::vector<double> values, double share);

/// How a figure is to be read, and where the goal lies.
enum class Reading {
  timesFaster,   ///< theirs over ours: at least the goal
  timesTheTime,  ///< ours over theirs: at most the goal
};

struct Opponent {
  std::string name;
  std::function<void()> run;
  Reading reading = Reading::timesFaster;
  std::optional<double> goal;
};

/// The product's work and what it is held against.
struct Contest {
  std::string subject;
  std::function<void()> check{};  ///< throws when ours and theirs do not do the same work; may be empty
  std::function<void()> ours;
  std::vector<Opponent> opponents;
  bool slow = false;  ///< takes minutes a round
  int repeats = 1;    ///< how often each of them does its work in one call; the costs are those of one time
};

/// The outcome against one opponent: medians over the rounds.
struct Outcome {
  std::string subject;
  std::string opponent;
  Reading reading;
  std::optional<double> goal;
  Cost ours;
  Cost theirs;
  double ratio = 0;      ///< as `reading` says, the median of what each round gave
  double lowest = 0;     ///< of a round
  double highest = 0;    ///< of a round
  double processor = 0;  ///< the ratio in processor time

  bool met() const;
};

/// Lets all of a contest run one after the other, round after round, so that whatever else loads the machine loads all
/// of them alike.
std::vector<Outcome> measure(const Contest& contest, int rounds);

}  // namespace tq::compare
