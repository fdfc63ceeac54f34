#include "TQVision/HTTPVisionProvider.hpp"

#include <cmath>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQPlatform/Text/NumberText.hpp"
#include "TQVision/HTTPTransport.hpp"
#include "TQVision/ProviderErrorHints.hpp"
#include "TQVision/WithoutKey.hpp"

namespace tq {

HTTPVisionProvider::HTTPVisionProvider(HTTPProviderConfig config, std::shared_ptr<URLSession> urlSession,
                                       std::shared_ptr<const Clock> clock)
    : config_(std::move(config)), urlSession_(std::move(urlSession)), clock_(std::move(clock)) {}

VisionResponse HTTPVisionProvider::describe(const VisionRequest& request, std::stop_token stop) const {
  URLRequest post(requestURL(config_.baseURL));
  post.method = "POST";
  post.timeoutInterval = config_.timeoutSeconds;
  post.setHeader("content-type", "application/json");
  addHeaders(post, config_.apiKey);
  for (const auto& [name, value] : config_.extraHeaders)
    post.setHeader(name, value);
  post.body = std::make_shared<const std::string>(buildBody(request));

  const HTTPTransport transport(urlSession_, HTTPTransport::providerMaxAttempts, HTTPTransport::providerBackoffBase,
                                clock_);
  const auto annotate = [this](int status, const std::string& body) {
    return ProviderErrorHints::annotateBadRequest(status, withoutKey(body, config_.apiKey));
  };
  const Bytes answer = transport.send(
      post, annotate, [this](const URLError& error) { return describe(error); }, std::move(stop));
  try {
    return parseResponse(answer);
  } catch (const TQError& error) {
    const auto* failure = std::get_if<TQError::ProviderDecodeFailure>(&error.value());
    if (!failure) throw;
    throw TQError::providerDecodeFailure(withoutKey(failure->text, config_.apiKey));
  }
}

std::string HTTPVisionProvider::describe(const URLError& urlError) const {
  switch (urlError.code()) {
    case URLError::Code::timedOut:
      return "request timed out after " + fixedText(std::trunc(config_.timeoutSeconds), 0) +
             "s. If you are using a local LLM server, increase the timeout in Preferences → Output → Request timeout.";
    case URLError::Code::cannotConnectToHost:
      return "cannot connect to host. Is the server running at " + config_.baseURL.absoluteString() + "?";
    case URLError::Code::cancelled: return "request cancelled";
    default: return urlError.localizedDescription();
  }
}

}  // namespace tq
