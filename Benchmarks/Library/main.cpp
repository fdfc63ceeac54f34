// The library against other ways of doing the same work, side by side in one run. Started by
// Benchmarks/compare-library.

#include <exception>
#include <iostream>
#include <thread>

#include "Benchmarks/Library/Comparisons.hpp"
#include "Benchmarks/Shared/Report.hpp"

int main(int count, char** arguments) try {
  using namespace tq::compare;
  const Bench bench{.out = std::cout,
                    .options = Options::parse("compare-library", {arguments + 1, arguments + count}),
                    .processorCount = std::max(1u, std::thread::hardware_concurrency()),
                    .dictionary = "/usr/share/dict/american-english"};  // of Debian's wamerican
  writeMachine(std::cout);
  writeHead(std::cout);
  for (const Comparison& comparison : allComparisons())
    if (comparison.name.find(bench.options.only) != std::string::npos) comparison.run(bench);
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
