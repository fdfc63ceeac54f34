#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "Benchmarks/Shared/Measure.hpp"

namespace tq::compare {

/// A time that is held against nothing but its goal.
struct Figure {
  std::string subject;
  double seconds = 0;
  std::optional<double> goal{};       ///< at most so many seconds
  std::optional<double> processor{};  ///< seconds of all threads together

  bool met() const { return !goal || seconds <= *goal; }
};

/// The head of the table, and one row for an outcome or a figure, in Markdown.
void writeHead(std::ostream& out);
void writeRow(std::ostream& out, const Outcome& outcome);
void writeRow(std::ostream& out, const Figure& figure);

std::string number(double value, int decimals);

/// The processor's model and how many there are; nothing else about the machine.
void writeMachine(std::ostream& out);

}  // namespace tq::compare
