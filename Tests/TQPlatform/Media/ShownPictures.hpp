#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "Support/ClipMaker.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"

namespace tq::test {

inline constexpr double tolerance = 0.2;
inline constexpr double rounding = 1e-6;

inline Image imageAt(const std::filesystem::path& clip, double seconds) {
  MediaAsset asset(clip);
  return ImageGenerator(asset, tolerance).image(seconds);
}

inline int numberAt(const std::filesystem::path& clip, double seconds) {
  return numberShown(imageAt(clip, seconds));
}

/// Why there is no picture at that time.
inline std::string refusalAt(const std::filesystem::path& clip, double seconds) try {
  imageAt(clip, seconds);
  return "none";
} catch (const MediaError& error) {
  return error.what();
}

inline void expectShown(ImageGenerator& generator, int framesPerSecond, const std::vector<double>& times,
                        const std::string& how) {
  for (const double time : times) {
    const double shown = numberShown(generator.image(time)) / static_cast<double>(framesPerSecond);
    EXPECT_NEAR(shown, time, tolerance + rounding) << "asked for " << time << ", " << how;
  }
}

/// Every time asked, in the given order, gives a frame within the tolerance, whatever the generator knows of the
/// others.
inline void expectAccurate(const std::filesystem::path& clip, int framesPerSecond, const std::vector<double>& times) {
  MediaAsset asset(clip);
  for (const int threads : {1, 3}) {
    ImageGenerator surprised(asset, tolerance, threads);
    expectShown(surprised, framesPerSecond, times, "out of the blue");
    ImageGenerator prepared(asset, tolerance, threads, Fidelity::approximate);
    prepared.expect(times);
    expectShown(prepared, framesPerSecond, times, "as expected");
    expectShown(prepared, framesPerSecond, times, "once more");
    ImageGenerator misled(asset, tolerance, threads);
    misled.expect({0.7, 3.1, 1e9});
    expectShown(misled, framesPerSecond, times, "though others were expected");
  }
}

inline std::vector<double> rising(double from, double to, double step) {
  std::vector<double> times;
  for (double time = from; time < to; time += step)
    times.push_back(time);
  return times;
}

}  // namespace tq::test
