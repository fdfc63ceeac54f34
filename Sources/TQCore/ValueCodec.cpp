#include "TQCore/ValueCodec.hpp"

#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

void throwUnexpected(JSONView value, const std::string& expected, bool quotesText) {
  constexpr std::size_t longestQuote = 60;
  std::string found(value.kindName());
  if (const auto text = value.asString(); text && quotesText)
    found = '"' + std::string(characterPrefix(*text, longestQuote)) + '"';
  else if (value.isInteger())
    found = std::to_string(*value.asInteger());
  else if (const auto number = value.asDouble())
    found = shortestText(*number);
  throw DecodingError("expected " + expected + ", found " + found);
}

void combineHash(std::size_t& seed, std::size_t part) {
  // The constants of MurmurHash3's finaliser and of the golden ratio spread every bit over the whole word.
  std::uint64_t mixed = seed + 0x9e3779b97f4a7c15 + part;
  mixed = (mixed ^ (mixed >> 33)) * 0xff51afd7ed558ccd;
  mixed = (mixed ^ (mixed >> 33)) * 0xc4ceb9fe1a85ec53;
  seed = static_cast<std::size_t>(mixed ^ (mixed >> 33));
}

}  // namespace tq
