#pragma once

#include <ostream>

#include "Benchmarks/Compare/Measure.hpp"

namespace tq::compare {

/// The head of the table, and one row for an outcome, in Markdown.
void writeHead(std::ostream& out);
void writeRow(std::ostream& out, const Outcome& outcome);

/// The most memory of an extraction from an 8K clip, in decoded pictures.
void writePeak(std::ostream& out, double pictures);

/// The processor's model and how many there are; nothing else about the machine.
void writeMachine(std::ostream& out);

}  // namespace tq::compare
