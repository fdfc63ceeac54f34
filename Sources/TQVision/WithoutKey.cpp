#include "TQVision/WithoutKey.hpp"

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

std::string withoutKey(const std::string& text, std::string_view key) {
  constexpr std::size_t shortestSecret = 8;
  constexpr std::string_view substitute = "[API key]";
  key = trimmed(key);  // as it is sent
  if (key.size() < shortestSecret) return text;
  std::string result;
  std::size_t rest = 0;
  for (std::size_t place = 0; (place = text.find(key, rest)) != std::string::npos; rest = place + key.size())
    result.append(text, rest, place - rest).append(substitute);
  return result.append(text, rest);
}

}  // namespace tq
