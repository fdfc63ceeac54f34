#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

/// An address as a user or a configuration gives it: a URI reference in the generic syntax of RFC 3986, split no
/// further than this system asks. It may lack a scheme and a host; whether it can be reached is for the one who
/// connects.
class WebURL {
 public:
  /// Reads `text`, white space at both ends aside. Characters that the syntax forbids in the path, query and fragment
  /// are percent-encoded byte by byte; a host may hold letters beyond ASCII. Absent when no URL can be made of the
  /// text: it is empty, its scheme or host is malformed, or its port is no number.
  static std::optional<WebURL> parse(std::string_view text);

  /// As written; empty when there is none.
  const std::string& scheme() const { return scheme_; }

  /// As written, without user information and port, an IPv6 address without its brackets; empty when there is none.
  const std::string& host() const { return host_; }

  /// The whole address.
  const std::string& absoluteString() const { return absoluteString_; }

  /// This address with `path` behind the end of its own path and exactly one slash between them; query and fragment
  /// stay last. `path` is relative and already encoded.
  WebURL appendingPath(std::string_view path) const;

  bool operator==(const WebURL& other) const { return absoluteString_ == other.absoluteString_; }

 private:
  WebURL() = default;

  std::string scheme_;
  std::string host_;
  std::string absoluteString_;
  std::size_t pathStart_ = 0;  // within absoluteString_
};

}  // namespace tq
