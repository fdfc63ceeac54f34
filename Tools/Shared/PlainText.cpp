#include "Tools/Shared/PlainText.hpp"

#include <array>
#include <cmath>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq::tools {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

std::string hexEscape(unsigned char value) {
  return {'\\', 'x', hexDigits[value >> 4], hexDigits[value & 15]};
}

/// U+202A to U+202E and U+2066 to U+2069: they turn the direction of the text behind them.
constexpr std::array<std::string_view, 9> directionMarks{"\u202a", "\u202b", "\u202c", "\u202d", "\u202e",
                                                         "\u2066", "\u2067", "\u2068", "\u2069"};

/// At most so many columns. Many terminals draw the parts of a joined character side by side, so all of them count.
std::size_t columnsOf(std::string_view character) {
  std::size_t columns = 0;
  for (const char byte : character) {
    const auto value = static_cast<unsigned char>(byte);
    const bool continues = (value & 0xc0) == 0x80;
    if (!continues) columns += value < 0x80 ? 1 : 2;
  }
  return columns;
}

}  // namespace

std::string printable(std::string_view text) {
  const std::string valid = validUTF8(text);
  std::string result;
  for (std::size_t index = 0; index < valid.size(); ++index) {
    const std::string_view rest = std::string_view(valid).substr(index);
    const auto byte = static_cast<unsigned char>(rest[0]);
    if (byte == '\n') {
      result += "\\n";
    } else if (byte == '\t') {
      result += "\\t";
    } else if (byte < 0x20 || byte == 0x7f) {
      result += hexEscape(byte);
    } else if (byte == 0xc2 && static_cast<unsigned char>(rest[1]) < 0xa0) {
      result += hexEscape(static_cast<unsigned char>(rest[1]));
      ++index;
    } else {
      bool isMark = false;
      for (const std::string_view mark : directionMarks) {
        if (!rest.starts_with(mark)) continue;
        const auto low = static_cast<unsigned char>(((mark[1] & 3) << 6) | (mark[2] & 0x3f));
        result += "\\u20";
        result += hexDigits[low >> 4];
        result += hexDigits[low & 15];
        index += mark.size() - 1;
        isMark = true;
      }
      if (!isMark) result += rest[0];
    }
  }
  return result;
}

std::string fitted(std::string_view text, std::size_t columns) {
  std::size_t used = 0;
  std::size_t fits = 0;  // bytes that leave room for the mark
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view character = characterPrefix(rest, 1);
    used += columnsOf(character);
    if (used > columns) return std::string(text.substr(0, fits)) + "…";
    rest.remove_prefix(character.size());
    if (used + 1 < columns) fits = text.size() - rest.size();
  }
  return std::string(text);
}

std::string roughDuration(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(std::fmax(seconds, 1)));
  if (whole < 100) return "about " + std::to_string(whole) + " s";
  const long long minutes = (whole + 30) / 60;
  if (minutes < 100) return "about " + std::to_string(minutes) + " min";
  return "about " + std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

}  // namespace tq::tools
