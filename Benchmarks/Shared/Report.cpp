#include "Benchmarks/Shared/Report.hpp"

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>

namespace tq::compare {

namespace {

/// Three digits, "12.3 ms" or "1.23 s".
std::string timeText(double seconds) {
  const bool isLong = seconds >= 1;
  const double value = isLong ? seconds : seconds * 1e3;
  return number(value, value < 10 ? 2 : value < 100 ? 1 : 0) + (isLong ? " s" : " ms");
}

std::string verdict(bool met) {
  return met ? ", met" : ", missed";
}

std::string goalText(const Outcome& outcome) {
  if (!outcome.goal) return "";
  const std::string bound = number(*outcome.goal, *outcome.goal < 2 ? 2 : 1);
  return (outcome.reading == Reading::timesFaster ? "at least " : "at most ") + bound + verdict(outcome.met());
}

}  // namespace

std::string number(double value, int decimals) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

void writeHead(std::ostream& out) {
  out << "| work | against | ours | theirs | ratio | lowest to highest | in processor time | goal |\n"
         "|---|---|---|---|---|---|---|---|\n";
}

void writeRow(std::ostream& out, const Outcome& outcome) {
  const bool faster = outcome.reading == Reading::timesFaster;
  const int decimals = faster ? 1 : 2;
  out << "| " << outcome.subject << " | " << outcome.opponent << " | " << timeText(outcome.ours.wall) << " | "
      << timeText(outcome.theirs.wall) << " | " << number(outcome.ratio, decimals)
      << (faster ? " times faster" : " of their time") << " | " << number(outcome.lowest, decimals) << " to "
      << number(outcome.highest, decimals) << " | " << number(outcome.processor, decimals) << " | " << goalText(outcome)
      << " |" << std::endl;
}

void writeRow(std::ostream& out, const Figure& figure) {
  const std::string goal = figure.goal ? "at most " + timeText(*figure.goal) + verdict(figure.met()) : "";
  out << "| " << figure.subject << " | | " << timeText(figure.seconds) << " | | | | "
      << (figure.processor ? timeText(*figure.processor) : "") << " | " << goal << " |" << std::endl;
}

void writeMachine(std::ostream& out) {
  std::ifstream file("/proc/cpuinfo");
  std::string model = "unknown processor";
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("model name")) model = line.substr(line.find(':') + 2);
  out << "Machine: " << std::thread::hardware_concurrency() << " processors, " << model << "\n";
}

}  // namespace tq::compare
