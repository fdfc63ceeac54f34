#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tq::test {

/// A terminal of the plainest kind: it wraps what is too long, scrolls, and knows two control sequences, cursor up and
/// clear to the end of the screen (ECMA-48). Anything else that begins with an escape, and every other control
/// character but line feed and carriage return, is an error: it has no place in what a program shows.
class Screen {
 public:
  explicit Screen(std::size_t columns, std::size_t rows = 24) : columns_(columns), rows_(rows) {}

  void print(std::string_view text);

  /// Everything that stands on the screen and that has scrolled off its top, without blanks at the ends of lines and
  /// without empty lines at the end.
  std::vector<std::string> lines() const;

 private:
  using Line = std::vector<std::string>;  // one text a column; the second column of a wide character is empty

  void put(std::string_view codePoint);
  std::string_view controlSequence(std::string_view text);
  void moveUp(std::size_t count);
  Line& line();

  const std::size_t columns_;
  const std::size_t rows_;
  std::vector<Line> lines_;
  std::size_t row_ = 0;
  std::size_t column_ = 0;
};

}  // namespace tq::test
