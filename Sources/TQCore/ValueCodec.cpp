#include "TQCore/ValueCodec.hpp"

#include "TQPlatform/NumberText.hpp"
#include "TQPlatform/Unicode.hpp"

namespace tq {

void throwUnexpected(const JSONValue& value, const std::string& expected, bool quotesText) {
  constexpr std::size_t longestQuote = 60;
  std::string found(value.kindName());
  if (const std::string* text = value.asString(); text && quotesText)
    found = '"' + std::string(characterPrefix(*text, longestQuote)) + '"';
  else if (const auto number = value.asDouble())
    found = shortestText(*number);
  throw DecodingError("expected " + expected + ", found " + found);
}

}  // namespace tq
