#include "Benchmarks/Library/Latency.hpp"

#include "Benchmarks/Shared/Measure.hpp"

namespace tq::compare {

Latency latencyOf(const std::vector<std::string>& queries, int rounds,
                  const std::function<void(const std::string&)>& ask) {
  std::vector<double> medians, p95s, longest;
  for (int round = 0; round < rounds; ++round) {
    std::vector<double> times;
    for (const std::string& query : queries)
      times.push_back(costOf([&] { ask(query); }).wall);
    medians.push_back(quantile(times, 0.5));
    p95s.push_back(quantile(times, 0.95));
    longest.push_back(quantile(times, 1));
  }
  return {quantile(medians, 0.5), quantile(p95s, 0.5), quantile(longest, 0.5)};
}

std::function<void()> nextQueries(const std::vector<std::string>& queries, int count,
                                  std::function<void(const std::string&)> ask) {
  return [&queries, count, ask = std::move(ask), next = std::size_t{0}]() mutable {
    for (int asked = 0; asked < count; ++asked)
      ask(queries[next++ % queries.size()]);
  };
}

}  // namespace tq::compare
