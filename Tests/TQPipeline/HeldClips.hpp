#pragma once

#include <gtest/gtest.h>

#include "Support/PipelineHarness.hpp"

namespace tq::test {

/// A harness whose clips wait at a gate while their frames are sampled, with the order in which they got there.
class HeldClips : public testing::Test {
 protected:
  HeldClips() {
    harness.stages.writeDescription = [](const auto&...) { return std::vector<std::filesystem::path>{}; };
    harness.stages.writePoster = nullptr;
    harness.stages.extractFrames = [this](const std::filesystem::path& clip, const SamplingConfig&,
                                          const ExtractionProgress&, const std::stop_token& stop) {
      {
        std::lock_guard lock(mutex);
        startedClips.push_back(clip.filename().string());
      }
      gate.pass(stop);
      return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
    };
  }

  std::vector<std::string> started() {
    std::lock_guard lock(mutex);
    return startedClips;
  }

  std::vector<Job> makeJobs(int count) {
    std::vector<Job> jobs;
    for (int number = 1; number <= count; ++number)
      jobs.push_back(harness.makeJob(std::to_string(number) + ".mov"));
    return jobs;
  }

  std::mutex mutex;
  std::vector<std::string> startedClips;
  Gate gate;
  PipelineHarness harness;
};

}  // namespace tq::test
