#pragma once

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Network/WebURL.hpp"

namespace tq {

/// Why a request got no answer.
class URLError final : public std::exception {
 public:
  enum class Code {
    badURL,          ///< the request cannot be sent: its address lacks a host or is neither http nor https, or its
                     ///< method or a header holds characters that are not allowed there
    timedOut,        ///< the deadline passed
    cancelled,       ///< a stop was requested
    cannotFindHost,  ///< the name has no address
    cannotConnectToHost,
    networkConnectionLost,        ///< the connection broke while the request was under way
    secureConnectionFailed,       ///< TLS could not be set up
    serverCertificateUntrusted,   ///< the server's certificate is not for this host, expired, or signed by nobody known
    badServerResponse,            ///< what came back is no HTTP
    userAuthenticationRequired,   ///< never raised here: a status 401 or 407 is an answer
    userCancelledAuthentication,  ///< never raised here: nobody is asked for credentials
    unknown,
  };

  URLError(Code code, std::string description) : code_(code), description_(std::move(description)) {}

  Code code() const { return code_; }

  /// A sentence for a user. Holds no header and no body, so no key can be in it.
  const std::string& localizedDescription() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  Code code_;
  std::string description_;
};

struct HTTPHeader {
  std::string name;  ///< as it is sent
  std::string value;

  bool operator==(const HTTPHeader&) const = default;
};

/// One request, built whole. The body is shared and never copied on its way to the network.
struct URLRequest {
  explicit URLRequest(WebURL requestURL) : url(std::move(requestURL)) {}

  /// Replaces a header of the same name, in whatever case, or adds it.
  void setHeader(std::string name, std::string value);

  WebURL url;
  std::string method = "GET";
  std::vector<HTTPHeader> headers;
  std::shared_ptr<const std::string> body;  ///< null: none
  double timeoutInterval = 60.0;            ///< seconds; what is not above zero and finite is no limit
};

struct URLResponse {
  std::optional<int> statusCode;  ///< absent when what answered does not speak HTTP
  Bytes body;
};

/// Performs requests. Many at once from any thread.
class URLSession {
 public:
  virtual ~URLSession() = default;

  /// Blocks until the whole answer is there. `deadline` limits the wall-clock time of everything from the name lookup
  /// to the last byte; absent: no limit. It and a stop request take effect at once in every phase. Throws `URLError`.
  virtual URLResponse data(const URLRequest& request, std::optional<std::chrono::nanoseconds> deadline,
                           std::stop_token stop) = 0;
};

}  // namespace tq
