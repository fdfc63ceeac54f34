#include "Benchmarks/Shared/Measure.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <sys/resource.h>

namespace tq::compare {

namespace {

double processorTime() {
  double seconds = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    for (const timeval& part : {usage.ru_utime, usage.ru_stime})
      seconds += static_cast<double>(part.tv_sec) + static_cast<double>(part.tv_usec) * 1e-6;
  }
  return seconds;
}

double median(std::vector<double> values) {
  return quantile(std::move(values), 0.5);
}

template <class Part>
std::vector<double> each(const std::vector<Cost>& left, const std::vector<Cost>& right, Part part) {
  std::vector<double> ratios;
  for (std::size_t round = 0; round < left.size(); ++round)
    ratios.push_back(left[round].*part / right[round].*part);
  return ratios;
}

Cost medianOf(const std::vector<Cost>& costs) {
  std::vector<double> wall, processor;
  for (const Cost& cost : costs) {
    wall.push_back(cost.wall);
    processor.push_back(cost.processor);
  }
  return {median(wall), median(processor)};
}

Outcome outcomeOf(const std::string& subject, const Opponent& opponent, const std::vector<Cost>& ours,
                  const std::vector<Cost>& theirs) {
  const bool faster = opponent.reading == Reading::timesFaster;
  const auto ratios = faster ? each(theirs, ours, &Cost::wall) : each(ours, theirs, &Cost::wall);
  const auto processor = faster ? each(theirs, ours, &Cost::processor) : each(ours, theirs, &Cost::processor);
  return {.subject = subject,
          .opponent = opponent.name,
          .reading = opponent.reading,
          .goal = opponent.goal,
          .ours = medianOf(ours),
          .theirs = medianOf(theirs),
          .ratio = median(ratios),
          .lowest = *std::ranges::min_element(ratios),
          .highest = *std::ranges::max_element(ratios),
          .processor = median(processor)};
}

}  // namespace

double quantile(std::vector<double> values, double share) {
  const auto rank = static_cast<std::ptrdiff_t>(std::ceil(share * static_cast<double>(values.size())));
  const auto place = values.begin() + std::max<std::ptrdiff_t>(rank, 1) - 1;
  std::ranges::nth_element(values, place);
  return *place;
}

Cost costOf(const std::function<void()>& work, int repeats) {
  const double processor = processorTime();
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  return {wall.count() / repeats, (processorTime() - processor) / repeats};
}

bool Outcome::met() const {
  if (!goal) return true;
  return reading == Reading::timesFaster ? ratio >= *goal : ratio <= *goal;
}

std::vector<Outcome> measure(const Contest& contest, int rounds) {
  std::vector<Cost> ours;
  std::vector<std::vector<Cost>> theirs(contest.opponents.size());
  for (int round = 0; round < rounds; ++round) {
    ours.push_back(costOf(contest.ours, contest.repeats));
    for (std::size_t index = 0; index < theirs.size(); ++index)
      theirs[index].push_back(costOf(contest.opponents[index].run, contest.repeats));
  }
  std::vector<Outcome> outcomes;
  for (std::size_t index = 0; index < theirs.size(); ++index)
    outcomes.push_back(outcomeOf(contest.subject, contest.opponents[index], ours, theirs[index]));
  return outcomes;
}

}  // namespace tq::compare
