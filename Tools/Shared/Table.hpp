#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tq::tools {

enum class Alignment { left, right };

/// Rows of cells. On a terminal columns are aligned, and cells and lines cut to fit it; elsewhere cells are separated
/// by a tab and nothing is cut, for other programs to read. Cells are shown as `printable` does, so none holds a tab or
/// a line break.
class Table {
 public:
  /// One alignment for each column.
  explicit Table(std::vector<Alignment> alignments) : alignments_(std::move(alignments)) {}

  /// As many cells as there are columns.
  void add(std::vector<std::string> row);

  /// `terminalColumns` is absent where `out` is no terminal. A column in which every cell is empty is left out on a
  /// terminal.
  void print(std::ostream& out, std::optional<int> terminalColumns) const;

 private:
  void printAligned(std::ostream& out, std::size_t columns) const;
  std::vector<std::size_t> widths(std::size_t columns) const;

  std::vector<Alignment> alignments_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tq::tools
