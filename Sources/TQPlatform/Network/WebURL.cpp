#include "TQPlatform/Network/WebURL.hpp"

#include <algorithm>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isHexDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool isBeyondASCII(char c) {
  return static_cast<unsigned char>(c) >= 0x80;
}

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

/// RFC 3986, section 2: unreserved and sub-delims.
bool isPlain(char c) {
  return isLetter(c) || isDigit(c) || isOneOf(c, "-._~!$&'()*+,;=");
}

bool isPercentEscape(std::string_view text, std::size_t at) {
  return text[at] == '%' && at + 2 < text.size() && isHexDigit(text[at + 1]) && isHexDigit(text[at + 2]);
}

/// True when every character is plain, a percent escape or one of `others`.
bool holdsOnly(std::string_view text, std::string_view others) {
  for (std::size_t at = 0; at < text.size(); ++at)
    if (!isPlain(text[at]) && !isOneOf(text[at], others) && !isPercentEscape(text, at)) return false;
  return true;
}

/// Section 3.1: a letter, then letters, digits, plus, minus and points.
bool isScheme(std::string_view text) {
  return !text.empty() && isLetter(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "+-."); });
}

/// A registered name or an IPv4 address. Letters beyond ASCII are those of an internationalised name (RFC 3987).
bool isHostName(std::string_view text) {
  std::string ascii(text);
  std::erase_if(ascii, isBeyondASCII);
  return isValidUTF8(text) && holdsOnly(ascii, "");
}

/// Section 3.2.2: what stands between the brackets of an IP literal, a zone (RFC 6874) included.
bool isIPLiteral(std::string_view text) {
  return text.find(':') != std::string_view::npos && holdsOnly(text, ":");
}

/// Takes `text` up to, not including, the first of `ends`, and leaves the rest in `text`.
std::string_view takeUntil(std::string_view& text, std::string_view ends) {
  const std::string_view taken = text.substr(0, std::min(text.find_first_of(ends), text.size()));
  text.remove_prefix(taken.size());
  return taken;
}

/// The host of an authority, section 3.2: [user@]host[:port]. Absent when it is malformed.
std::optional<std::string> hostOf(std::string_view authority) {
  if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {
    if (!holdsOnly(authority.substr(0, at), ":")) return std::nullopt;
    authority.remove_prefix(at + 1);
  }
  std::string_view host;
  if (authority.starts_with('[')) {
    const std::size_t close = authority.find(']');
    if (close == std::string_view::npos) return std::nullopt;
    host = authority.substr(1, close - 1);
    authority.remove_prefix(close + 1);
    if (!isIPLiteral(host)) return std::nullopt;
  } else {
    host = takeUntil(authority, ":");
    if (!isHostName(host)) return std::nullopt;
  }
  const bool hasPort = authority.starts_with(':');
  const std::string_view port = hasPort ? authority.substr(1) : std::string_view();
  if ((!hasPort && !authority.empty()) || !std::all_of(port.begin(), port.end(), isDigit)) return std::nullopt;
  return std::string(host);
}

/// Path, query and fragment with all that the syntax forbids there percent-encoded.
std::string encoded(std::string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  bool inFragment = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const bool opensFragment = c == '#' && !inFragment;
    inFragment = inFragment || opensFragment;
    if (opensFragment || isPlain(c) || isOneOf(c, ":@/?") || isPercentEscape(text, at)) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return result;
}

}  // namespace

std::optional<WebURL> WebURL::parse(std::string_view text) {
  text = trimmed(text);
  if (text.empty()) return std::nullopt;

  WebURL url;
  std::string_view rest = text;
  const std::string_view beforeDelimiter = takeUntil(rest, ":/?#");
  if (rest.starts_with(':')) {
    if (!isScheme(beforeDelimiter)) return std::nullopt;
    url.scheme_ = beforeDelimiter;
    rest.remove_prefix(1);
  } else {
    rest = text;
  }
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const std::optional<std::string> host = hostOf(takeUntil(rest, "/?#"));
    if (!host) return std::nullopt;
    url.host_ = *host;
  }
  url.pathStart_ = text.size() - rest.size();
  url.absoluteString_ = std::string(text.substr(0, url.pathStart_)) + encoded(rest);
  return url;
}

WebURL WebURL::appendingPath(std::string_view path) const {
  const std::size_t pathEnd = std::min(absoluteString_.find_first_of("?#", pathStart_), absoluteString_.size());
  std::string beforePath = absoluteString_.substr(0, pathEnd);
  while (beforePath.size() > pathStart_ && beforePath.ends_with('/'))
    beforePath.pop_back();

  WebURL result = *this;
  result.absoluteString_ = beforePath.append("/").append(path).append(absoluteString_, pathEnd);
  return result;
}

}  // namespace tq
