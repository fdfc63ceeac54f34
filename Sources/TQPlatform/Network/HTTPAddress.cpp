#include "TQPlatform/Network/HTTPAddress.hpp"

#include <algorithm>
#include <curl/curl.h>
#include <memory>

#include "TQPlatform/Network/URLSession.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

URLError malformed() {
  return {URLError::Code::badURL, "The address is malformed."};
}

/// libcurl's own reading of a URL, so that what is compared here is what gets connected to.
class ParsedURL {
 public:
  explicit ParsedURL(const std::string& text) : url_(curl_url(), &curl_url_cleanup) {
    if (!url_) throw std::bad_alloc();
    set(CURLUPART_URL, text);
    set(CURLUPART_FRAGMENT, "");
  }

  /// Percent-encoded as written; empty when there is none.
  std::string get(CURLUPart part) const {
    char* value = nullptr;
    const bool found = curl_url_get(url_.get(), part, &value, CURLU_DEFAULT_PORT) == CURLUE_OK;
    const std::unique_ptr<char, decltype(&curl_free)> owner(value, &curl_free);
    return found ? value : "";
  }

  /// An empty value removes the part.
  void set(CURLUPart part, const std::string& value) {
    if (curl_url_set(url_.get(), part, value.empty() ? nullptr : value.c_str(), 0) != CURLUE_OK) throw malformed();
  }

 private:
  std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url_;
};

/// libcurl would convert a name beyond ASCII by the process's locale, which says nothing about it.
void makeHostASCII(ParsedURL& url) {
  const std::string host = url.get(CURLUPART_HOST);
  if (std::all_of(host.begin(), host.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return;
  const std::optional<std::string> ascii = asciiHostName(host);
  if (!ascii) throw malformed();
  url.set(CURLUPART_HOST, *ascii);
}

URLError notOfTheWeb() {
  return {URLError::Code::badURL, "The address has to begin with http:// or https:// and to name a host."};
}

/// libcurl would take the first part of the path for a host that is missing, and send it the keys.
const std::string& textWithHost(const WebURL& url) {
  if (url.host().empty()) throw notOfTheWeb();
  return url.absoluteString();
}

std::string withoutBrackets(const std::string& host) {
  return host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
}

}  // namespace

HTTPAddress::HTTPAddress(const WebURL& url) : HTTPAddress(textWithHost(url)) {}

HTTPAddress::HTTPAddress(const std::string& text, const HTTPAddress* source) {
  ParsedURL written(text);
  if (source) {
    written.set(CURLUPART_USER, source->user_);
    written.set(CURLUPART_PASSWORD, source->password_);
  }
  makeHostASCII(written);
  // A number such as 127.1 that was encoded in the text becomes a whole IPv4 address in the second reading only.
  const ParsedURL parsed(written.get(CURLUPART_URL));
  url_ = parsed.get(CURLUPART_URL);
  scheme_ = parsed.get(CURLUPART_SCHEME);
  host_ = withoutBrackets(parsed.get(CURLUPART_HOST));
  port_ = parsed.get(CURLUPART_PORT);
  user_ = parsed.get(CURLUPART_USER);
  password_ = parsed.get(CURLUPART_PASSWORD);
  if ((scheme_ != "http" && scheme_ != "https") || host_.empty()) throw notOfTheWeb();
}

std::optional<HTTPAddress> HTTPAddress::redirected(const std::string& target) const {
  try {
    HTTPAddress address(target, this);
    const bool sameServer =
        address.scheme_ == scheme_ && lowercased(address.host_) == lowercased(host_) && address.port_ == port_;
    return sameServer ? std::optional(std::move(address)) : std::nullopt;
  } catch (const URLError&) {
    return std::nullopt;
  }
}

}  // namespace tq
