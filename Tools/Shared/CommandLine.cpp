#include "Tools/Shared/CommandLine.hpp"

#include "TQPlatform/Network/WebURL.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq::tools {

std::string alternatives(std::span<const std::string_view> words) {
  std::string text;
  for (std::size_t index = 0; index < words.size(); ++index) {
    if (index > 0) text += index + 1 == words.size() ? " or " : ", ";
    text += words[index];
  }
  return text;
}

std::int64_t readCount(std::string_view option, const std::string& value) {
  const auto count = parseInteger(value);
  if (!count || *count < 1) throw UsageError(std::string(option) + " takes a number from 1 up, not \"" + value + "\".");
  return *count;
}

std::string readAddress(std::string_view option, const std::string& value) {
  const auto url = WebURL::parse(value);
  if (!url || url->host().empty())
    throw UsageError(std::string(option) + " takes an address such as http://localhost:8000/v1.");
  return value;
}

}  // namespace tq::tools
