#include "TQPlatform/Network/URLSession.hpp"

#include <algorithm>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

void URLRequest::setHeader(std::string name, std::string value) {
  const auto existing = std::find_if(headers.begin(), headers.end(), [&](const HTTPHeader& header) {
    return lowercased(header.name) == lowercased(name);
  });
  if (existing == headers.end())
    headers.push_back({std::move(name), std::move(value)});
  else
    *existing = {std::move(name), std::move(value)};
}

}  // namespace tq
