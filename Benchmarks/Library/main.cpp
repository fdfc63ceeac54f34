// The library against other ways of doing the same work, side by side in one run. Started by
// Benchmarks/compare-library.

#include <exception>
#include <iostream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "Benchmarks/Library/Comparisons.hpp"
#include "Benchmarks/Shared/Report.hpp"

namespace {

using namespace tq::compare;

/// In a process of its own, so that none finds memory that another has made ready.
void runApart(const Comparison& comparison, const Bench& bench) {
  bench.out.flush();
  const pid_t child = ::fork();
  if (child == 0) {
    try {
      comparison.run(bench);
      bench.out.flush();
      ::_exit(0);
    } catch (const std::exception& error) {
      std::cerr << error.what() << "\n";
      ::_exit(1);
    }
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error(comparison.name + ": not compared");
}

}  // namespace

int main(int count, char** arguments) try {
  const Bench bench{.out = std::cout,
                    .options = Options::parse("compare-library", {arguments + 1, arguments + count}),
                    .processorCount = std::max(1u, std::thread::hardware_concurrency()),
                    .dictionary = "/usr/share/dict/american-english"};  // of Debian's wamerican
  writeMachine(std::cout);
  writeHead(std::cout);
  for (const Comparison& comparison : allComparisons())
    if (comparison.name.find(bench.options.only) != std::string::npos) runApart(comparison, bench);
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
