#pragma once

#include <optional>
#include <string>

#include "TQPlatform/Network/WebURL.hpp"

namespace tq {

/// Where a request goes: an http or https URL taken apart as the network library reads it, to compare servers and to
/// name one to a user.
class HTTPAddress {
 public:
  /// Throws `URLError` with `badURL` when `url` has another scheme, no host, or is malformed.
  explicit HTTPAddress(const WebURL& url);

  /// What a redirect to the absolute URL `target` leads to, with the user information of this address and no other.
  /// Absent when that is another server: its scheme, host or port differs, or it cannot be used.
  std::optional<HTTPAddress> redirected(const std::string& target) const;

  const std::string& url() const { return url_; }

  /// As it is looked up, all ASCII; an IPv6 address without its brackets.
  const std::string& host() const { return host_; }

  /// Host and port for a sentence: "127.0.0.1 port 11434".
  std::string place() const { return host_ + " port " + port_; }

 private:
  /// With the user information of `source` in place of that of `text`, where there is a source.
  explicit HTTPAddress(const std::string& text, const HTTPAddress* source = nullptr);

  std::string url_;
  std::string scheme_;
  std::string host_;
  std::string port_;
  std::string user_;      ///< percent-encoded as in the URL
  std::string password_;  ///< likewise
};

}  // namespace tq
