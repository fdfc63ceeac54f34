// The product against other ways of doing the same work, side by side in one run. Started by Benchmarks/compare-frames.

#include <exception>
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
void writePeak(double pictures) {
  constexpr double goal = 6;
  std::cout << "\nPeak memory of 12 frames from an 8K clip: " << number(pictures, 1) << " decoded pictures (at most "
            << number(goal, 0) << (pictures <= goal ? ", met" : ", missed") << ")\n";
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
  writePeak(peakInPictures(options.folder / "h264-8k.mp4"));
}

}  // namespace

int main(int count, char** arguments) try {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() == 2 && words[0] == "--report-peak") {
    extractAndReportPeak(words[1]);
  } else {
    compare(Options::parse("compare-frames", words));
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
