#include "Tools/Shared/Table.hpp"

#include <algorithm>

#include "TQPlatform/Text/Unicode.hpp"
#include "Tools/Shared/PlainText.hpp"

namespace tq::tools {

namespace {

constexpr std::size_t gap = 2;

std::string padded(const std::string& text, std::size_t width, Alignment alignment) {
  const std::size_t used = columnWidth(text);
  const std::string blanks(width > used ? width - used : 0, ' ');
  return alignment == Alignment::left ? text + blanks : blanks + text;
}

/// `fitted` takes everything beyond ASCII for wide; what is known to fit stays whole.
std::string cut(const std::string& text, std::size_t columns) {
  return columnWidth(text) > columns ? fitted(text, columns) : text;
}

}  // namespace

void Table::add(std::vector<std::string> row) {
  for (std::string& cell : row)
    cell = printable(cell);
  rows_.push_back(std::move(row));
}

void Table::print(std::ostream& out, std::optional<int> terminalColumns) const {
  if (terminalColumns) return printAligned(out, static_cast<std::size_t>(std::max(*terminalColumns, 1)));
  for (const auto& row : rows_)
    for (std::size_t column = 0; column < row.size(); ++column)
      out << row[column] << (column + 1 < row.size() ? '\t' : '\n');
}

/// What each column needs, but none more than half of the line.
std::vector<std::size_t> Table::widths(std::size_t columns) const {
  std::vector<std::size_t> widths(alignments_.size(), 0);
  for (const auto& row : rows_)
    for (std::size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], std::min(columnWidth(row[column]), columns / 2));
  return widths;
}

void Table::printAligned(std::ostream& out, std::size_t columns) const {
  const std::vector<std::size_t> widths = this->widths(columns);
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
      if (widths[column] == 0) continue;
      if (column > 0 && !line.empty()) line.append(gap, ' ');
      const bool isLast = column + 1 == row.size();
      line += isLast ? row[column] : padded(cut(row[column], widths[column]), widths[column], alignments_[column]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << cut(line, columns) << "\n";
  }
}

}  // namespace tq::tools
