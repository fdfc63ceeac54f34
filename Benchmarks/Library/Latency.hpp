#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tq::compare {

/// What each of many queries took, in seconds.
struct Latency {
  double median = 0;
  double p95 = 0;
  double longest = 0;
};

/// Asks all queries one by one, round after round; medians over the rounds.
Latency latencyOf(const std::vector<std::string>& queries, int rounds,
                  const std::function<void(const std::string&)>& ask);

/// Asks the next few of the queries with every call, in a circle.
std::function<void()> nextQueries(const std::vector<std::string>& queries, int count,
                                  std::function<void(const std::string&)> ask);

}  // namespace tq::compare
