#include "TQCore/FileURL.hpp"

#include <array>
#include <charconv>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

/// RFC 3986: unreserved, sub-delims, ":" and "@", and the slash between the segments.
bool standsAsItIs(char c) {
  const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return alphanumeric || std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

/// `text` with its percent escapes resolved; absent for a broken escape and for a zero byte, which no path can hold.
std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] != '%') {
      decoded += text[index];
      continue;
    }
    const std::string_view digits = text.substr(index + 1, 2);
    unsigned char byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2) return std::nullopt;
    decoded += static_cast<char>(byte);
    index += 2;
  }
  if (decoded.find('\0') != std::string::npos) return std::nullopt;
  return decoded;
}

}  // namespace

std::string fileURL(const std::filesystem::path& path) {
  constexpr std::string_view hexadecimal = "0123456789ABCDEF";
  std::string url = "file://";
  for (const char c : std::filesystem::absolute(path).string()) {
    if (standsAsItIs(c)) {
      url += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    url += {'%', hexadecimal[byte >> 4], hexadecimal[byte & 0xF]};
  }
  return url;
}

std::optional<std::filesystem::path> parseFileURL(std::string_view text) {
  if (text.starts_with('/')) return text.find('\0') == std::string_view::npos ? std::optional(text) : std::nullopt;
  constexpr std::string_view scheme = "file://";
  if (lowercased(text.substr(0, scheme.size())) != scheme) return std::nullopt;
  text.remove_prefix(scheme.size());
  const std::string_view host = text.substr(0, text.find('/'));
  if (lowercased(host) == "localhost") text.remove_prefix(host.size());
  if (!text.starts_with('/') || text.find_first_of("?#") != std::string_view::npos) return std::nullopt;
  return percentDecoded(text);
}

}  // namespace tq
