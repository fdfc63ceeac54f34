#include "Support/Screen.hpp"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace tq::test {

namespace {

std::size_t lengthOf(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  if (byte < 0x80) return 1;
  return byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

/// Of the characters that tests use, those from U+1100 on but the general punctuation are wide.
std::size_t widthOf(std::string_view codePoint) {
  if (codePoint.size() == 4) return 2;
  return codePoint.size() == 3 && static_cast<unsigned char>(codePoint[0]) >= 0xe3 ? 2 : 1;
}

}  // namespace

void Screen::print(std::string_view text) {
  while (!text.empty()) {
    const std::string_view codePoint = text.substr(0, lengthOf(text[0]));
    text.remove_prefix(codePoint.size());
    if (codePoint == "\n") {
      ++row_;
      column_ = 0;
    } else if (codePoint == "\r") {
      column_ = 0;
    } else if (codePoint == "\x1b") {
      text = controlSequence(text);
    } else if (static_cast<unsigned char>(codePoint[0]) < 0x20 || codePoint == "\x7f") {
      throw std::runtime_error("a control character");
    } else {
      put(codePoint);
    }
  }
}

std::vector<std::string> Screen::lines() const {
  std::vector<std::string> texts;
  for (const Line& line : lines_) {
    std::string& text = texts.emplace_back();
    for (const std::string& cell : line)
      text += cell;
    text.erase(text.find_last_not_of(' ') + 1);
  }
  while (!texts.empty() && texts.back().empty())
    texts.pop_back();
  return texts;
}

void Screen::put(std::string_view codePoint) {
  const std::size_t width = widthOf(codePoint);
  if (column_ + width > columns_) {
    ++row_;
    column_ = 0;
  }
  Line& cells = line();
  cells.resize(std::max(cells.size(), column_ + width), " ");
  cells[column_] = codePoint;
  if (width == 2) cells[column_ + 1].clear();
  column_ += width;
}

/// Obeys the sequence whose escape character stood before `text`, and gives what follows it.
std::string_view Screen::controlSequence(std::string_view text) {
  std::size_t number = 0;
  const char* end = text.data() + text.size();
  const char* letter = text.starts_with('[') ? std::from_chars(text.data() + 1, end, number).ptr : end;
  if (letter == end) throw std::runtime_error("an escape that begins no sequence");
  if (*letter == 'A') {
    moveUp(std::max<std::size_t>(number, 1));
  } else if (*letter == 'J' && number == 0) {
    line().resize(std::min(line().size(), column_));
    lines_.resize(row_ + 1);
  } else {
    throw std::runtime_error(std::string("an unknown sequence that ends in ") + *letter);
  }
  return {letter + 1, end};
}

/// Stops at the top of the screen: what has scrolled off it is out of reach.
void Screen::moveUp(std::size_t count) {
  const std::size_t lowest = std::max(lines_.size(), row_ + 1);
  const std::size_t top = lowest > rows_ ? lowest - rows_ : 0;
  row_ = std::max(row_ - std::min(count, row_), top);
}

Screen::Line& Screen::line() {
  if (lines_.size() <= row_) lines_.resize(row_ + 1);
  return lines_[row_];
}

}  // namespace tq::test
