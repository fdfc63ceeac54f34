#pragma once

#include <map>
#include <memory>
#include <stop_token>
#include <string>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "TQPlatform/Network/WebURL.hpp"
#include "TQVision/VisionProvider.hpp"

namespace tq {

/// What a provider that speaks HTTP is made from.
struct HTTPProviderConfig {
  std::string providerId;
  std::string modelId;
  std::string apiKey;  ///< empty for a server that asks for none
  WebURL baseURL;
  std::map<std::string, std::string> extraHeaders;  ///< added to every request; they replace those of the same name
  double timeoutSeconds = 0;                        ///< of one attempt
};

/// The road of one request to a vision service, the same for every shape: all frames in one body, sent through
/// `HTTPTransport`.
class HTTPVisionProvider : public VisionProvider {
 public:
  const std::string& providerId() const final { return config_.providerId; }
  const std::string& modelId() const final { return config_.modelId; }

  /// Besides `TQError` and `Cancelled` throws `JSONError`, for a prompt that is not UTF-8 and for an answer that is no
  /// JSON. An answer that cannot be used is never asked for again.
  VisionResponse describe(const VisionRequest& request, std::stop_token stop) const final;

  /// The text for a request that ended without an answer.
  std::string describe(const URLError& urlError) const;

  /// The body as compact JSON. Throws `JSONError` for a prompt that is not UTF-8.
  virtual std::string buildBody(const VisionRequest& request) const = 0;

  /// What the model said in a successful answer. Throws `JSONError` when it is no JSON and
  /// `TQError::providerDecodeFailure` when no usable text is in it.
  virtual VisionResponse parseResponse(ByteView data) const = 0;

 protected:
  HTTPVisionProvider(HTTPProviderConfig config, std::shared_ptr<URLSession> urlSession,
                     std::shared_ptr<const Clock> clock);

  virtual WebURL requestURL(const WebURL& base) const = 0;

  /// Adds what the shape wants to stand in the head: the key, unless it is empty, and the version of the API.
  virtual void addHeaders(URLRequest& request, const std::string& apiKey) const = 0;

 private:
  HTTPProviderConfig config_;
  std::shared_ptr<URLSession> urlSession_;
  std::shared_ptr<const Clock> clock_;
};

}  // namespace tq
