#include "TQDescription/FileSizeText.hpp"

#include <array>
#include <string_view>

namespace tq {
namespace {

struct Unit {
  std::string_view name;
  std::uint64_t bytes;
  std::uint64_t parts;  ///< into which its decimals divide it
};

constexpr std::array units{Unit{"KB", 1'000, 1}, Unit{"MB", 1'000'000, 10}, Unit{"GB", 1'000'000'000, 100}};

/// The smallest unit that stays below 1000 once the size is rounded, so that nothing reads "1000 KB".
const Unit& unitFor(std::uint64_t magnitude) {
  for (const Unit& unit : units) {
    const std::uint64_t step = unit.bytes / unit.parts;
    if ((magnitude + step / 2) / step < 1000 * unit.parts) return unit;
  }
  return units.back();
}

std::string decimals(std::uint64_t rest, std::uint64_t parts) {
  std::string digits;
  while (rest != 0) {
    parts /= 10;
    digits += static_cast<char>('0' + rest / parts);
    rest %= parts;
  }
  return digits.empty() ? digits : "." + digits;
}

}  // namespace

std::string fileSizeText(std::int64_t bytes) {
  if (bytes == 0) return "Zero KB";
  const bool negative = bytes < 0;
  const std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(bytes) : static_cast<std::uint64_t>(bytes);
  const Unit& unit = unitFor(magnitude);
  const std::uint64_t step = unit.bytes / unit.parts;
  const std::uint64_t rounded = (magnitude + step / 2) / step;
  return (negative ? "-" : "") + std::to_string(rounded / unit.parts) + decimals(rounded % unit.parts, unit.parts) +
         " " + std::string(unit.name);
}

}  // namespace tq
