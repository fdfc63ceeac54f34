#pragma once

#include <string>
#include <string_view>

namespace tq {

/// `text` with "[API key]" wherever it quotes `key`. What a server says of a refused request may do so, and an error is
/// shown and kept. Keys of less than 8 bytes are no secrets: local servers are given words such as "ollama".
std::string withoutKey(const std::string& text, std::string_view key);

}  // namespace tq
