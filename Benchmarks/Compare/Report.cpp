#include "Benchmarks/Compare/Report.hpp"

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>

namespace tq::compare {

namespace {

std::string number(double value, int decimals) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

std::string goalText(const Outcome& outcome) {
  if (!outcome.goal) return "";
  const std::string bound = number(*outcome.goal, *outcome.goal < 2 ? 2 : 1);
  return (outcome.reading == Reading::timesFaster ? "at least " : "at most ") + bound +
         (outcome.met() ? ", met" : ", missed");
}

}  // namespace

void writeHead(std::ostream& out) {
  out << "| work | against | ours, s | theirs, s | ratio | lowest to highest | in processor time | goal |\n"
         "|---|---|---|---|---|---|---|---|\n";
}

void writeRow(std::ostream& out, const Outcome& outcome) {
  const bool faster = outcome.reading == Reading::timesFaster;
  const int decimals = faster ? 1 : 2;
  out << "| " << outcome.subject << " | " << outcome.opponent << " | " << number(outcome.ours.wall, 2) << " | "
      << number(outcome.theirs.wall, 2) << " | " << number(outcome.ratio, decimals)
      << (faster ? " times faster" : " of their time") << " | " << number(outcome.lowest, decimals) << " to "
      << number(outcome.highest, decimals) << " | " << number(outcome.processor, decimals) << " | " << goalText(outcome)
      << " |" << std::endl;
}

void writePeak(std::ostream& out, double pictures) {
  constexpr double goal = 6;
  out << "\nPeak memory of 12 frames from an 8K clip: " << number(pictures, 1) << " decoded pictures (at most "
      << number(goal, 0) << (pictures <= goal ? ", met" : ", missed") << ")\n";
}

void writeMachine(std::ostream& out) {
  std::ifstream file("/proc/cpuinfo");
  std::string model = "unknown processor";
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("model name")) model = line.substr(line.find(':') + 2);
  out << "Machine: " << std::thread::hardware_concurrency() << " processors, " << model << "\n";
}

}  // namespace tq::compare
