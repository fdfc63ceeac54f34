#include "Tools/Describe/ProgressDisplay.hpp"

#include <algorithm>
#include <cmath>

#include "Tools/Shared/PlainText.hpp"

namespace tq::describe {

using tools::fitted;
using tools::printable;
using tools::roughDuration;

namespace {

constexpr int barWidth = 20;
constexpr double shownFrom = 0.02;     // of the whole run, before a guess at the time left means anything
constexpr std::size_t mostLines = 16;  // of running clips: lines that scrolled away could not be drawn again

std::string bar(double progress) {
  const int filled = static_cast<int>(std::lround(std::clamp(progress, 0.0, 1.0) * barWidth));
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(barWidth - filled), '.') + "]";
}

std::string percent(double progress) {
  const std::string digits = std::to_string(std::lround(std::clamp(progress, 0.0, 1.0) * 100));
  return std::string(3 - std::min<std::size_t>(digits.size(), 3), ' ') + digits + " %";
}

const char* activity(JobStatus status) {
  switch (status) {
    case JobStatus::extracting: return "sampling frames ";
    case JobStatus::calling: return "asking the model";
    case JobStatus::writing: return "writing         ";
    default: return "waiting         ";
  }
}

std::string nameOf(const Job& job) {
  return printable(job.sourceURL.filename().string());
}

}  // namespace

ProgressDisplay::ProgressDisplay(std::ostream& out, std::optional<int> columns, const Clock& clock)
    : out_(out), columns_(columns), clock_(clock), start_(clock.steadyNow()) {}

void ProgressDisplay::show(const Job& job, const std::vector<std::filesystem::path>& outputs) {
  const auto known = std::ranges::find(running_, job.id, &Job::id);
  const bool started = known != running_.end();
  erase();
  if (isTerminal(job.status)) {
    ++ended_[job.status];
    if (started) {
      running_.erase(known);
      showEnd(job, outputs);
    }
  } else if (started) {
    *known = job;
  } else {
    running_.push_back(job);
    if (!columns_) out_ << "started    " << nameOf(job) << "\n";
  }
  draw();
}

void ProgressDisplay::showEnd(const Job& job, const std::vector<std::filesystem::path>& outputs) {
  switch (job.status) {
    case JobStatus::done:
      out_ << "done       " << nameOf(job) << (outputs.empty() ? ": its outputs exist and were left alone" : "")
           << "\n";
      for (const auto& output : outputs)
        out_ << "  wrote    " << printable(output.string()) << "\n";
      break;
    case JobStatus::failed:
      out_ << "failed     " << nameOf(job) << ": " << printable(job.error.value_or("")) << "\n";
      break;
    default: out_ << "cancelled  " << nameOf(job) << "\n"; break;
  }
}

void ProgressDisplay::say(const std::string& line) {
  erase();
  out_ << line << "\n";
  draw();
}

void ProgressDisplay::tick() {
  if (!columns_) return;
  erase();
  draw();
}

void ProgressDisplay::finish() {
  erase();
  running_.clear();
  out_ << counts() << "\n" << std::flush;
}

void ProgressDisplay::erase() {
  // CSI A moves up, CSI J clears from there to the end of the screen (ECMA-48).
  if (drawnLines_ > 0) out_ << "\x1b[" << drawnLines_ << "A\x1b[J";
  drawnLines_ = 0;
}

void ProgressDisplay::draw() {
  if (columns_) {
    const auto width = static_cast<std::size_t>(std::max(*columns_, 2)) - 1;
    std::vector<std::string> lines;
    for (std::size_t index = 0; index < std::min(running_.size(), mostLines); ++index)
      lines.push_back(runningLine(running_[index]));
    if (running_.size() > mostLines) lines.push_back("and " + std::to_string(running_.size() - mostLines) + " more");
    lines.push_back(totalLine());
    for (const std::string& line : lines)
      out_ << fitted(line, width) << "\n";
    drawnLines_ = lines.size();
  }
  out_ << std::flush;
}

std::string ProgressDisplay::runningLine(const Job& job) const {
  return bar(job.progress) + " " + percent(job.progress) + "  " + activity(job.status) + "  " + nameOf(job);
}

std::string ProgressDisplay::totalLine() const {
  double worked = 0;
  for (const auto& [status, count] : ended_)
    worked += static_cast<double>(count);
  for (const Job& job : running_)
    worked += std::clamp(job.progress, 0.0, 1.0);
  const double fraction = worked / static_cast<double>(std::max<std::size_t>(clipCount_, 1));
  std::string line = counts();
  if (fraction >= shownFrom && fraction < 1) {
    const double elapsed = Seconds(clock_.steadyNow() - start_).count();
    line += ", " + roughDuration(elapsed * (1 - fraction) / fraction) + " left";
  }
  return line;
}

std::string ProgressDisplay::counts() const {
  const auto countOf = [this](JobStatus status) {
    const auto found = ended_.find(status);
    return found == ended_.end() ? std::size_t{0} : found->second;
  };
  std::string text = std::to_string(countOf(JobStatus::done)) + " of " + std::to_string(clipCount_) +
                     (clipCount_ == 1 ? " clip" : " clips") + " described";
  if (const auto failed = countOf(JobStatus::failed)) text += ", " + std::to_string(failed) + " failed";
  if (const auto cancelled = countOf(JobStatus::cancelled)) text += ", " + std::to_string(cancelled) + " cancelled";
  return text;
}

}  // namespace tq::describe
