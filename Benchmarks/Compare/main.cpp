// The product against other ways of doing the same work, side by side in one run. Started by Benchmarks/compare-frames.

#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "Benchmarks/Compare/Contests.hpp"
#include "Benchmarks/Compare/Memory.hpp"
#include "Benchmarks/Shared/Options.hpp"
#include "Benchmarks/Shared/Report.hpp"

namespace {

using namespace tq::compare;

/// The most memory of an extraction from an 8K clip, in decoded pictures.
void writePeak(const std::filesystem::path& clip) {
  constexpr double goal = 6;
  const Peak ours = peakInPictures(clip, Extractor::product), floor = peakInPictures(clip, Extractor::floor);
  std::cout << "\nPeak memory of 12 frames from an 8K clip, in decoded pictures: " << number(ours.resident, 1)
            << " resident (at most " << number(goal, 0) << (ours.resident <= goal ? ", met" : ", missed")
            << "), of that " << number(ours.held, 1) << " pictures; the floor on libav " << number(floor.resident, 1)
            << " resident\n";
}

void compare(const Options& options) {
  writeMachine(std::cout);
  writeHead(std::cout);
  for (const Contest& contest : allContests(options.folder)) {
    if (contest.subject.find(options.only) == std::string::npos || (contest.slow && options.quick)) continue;
    if (contest.check) contest.check();
    for (const Outcome& outcome : measure(contest, options.rounds))
      writeRow(std::cout, outcome);
  }
  if (std::string("memory").find(options.only) != std::string::npos) writePeak(options.folder / "h264-8k.mp4");
}

}  // namespace

int main(int count, char** arguments) try {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() != 2 || !reportPeak(words[0], words[1])) compare(Options::parse("compare-frames", words));
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
