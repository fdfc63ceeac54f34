#include "Fuzz/Property.hpp"
#include "TQPlatform/Network/HTTPAddress.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "TQVision/ProviderFactory.hpp"
#include "TQVision/VersionedURL.hpp"

namespace tq {
namespace {

void requireSameWhenReadAgain(const WebURL& url) {
  const std::optional<WebURL> again = WebURL::parse(url.absoluteString());
  fuzz::require(again == url, "an address is the same once written and read");
  fuzz::require(again->scheme() == url.scheme() && again->host() == url.host(), "its scheme and host stay");
}

std::optional<HTTPAddress> reachable(const WebURL& url) {
  try {
    return HTTPAddress(url);
  } catch (const URLError& error) {
    fuzz::require(error.code() == URLError::Code::badURL, "an address fails as a bad one");
    return std::nullopt;
  }
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<WebURL> url = WebURL::parse(textOf(input));
  if (!url) return;
  requireSameWhenReadAgain(*url);
  const std::optional<HTTPAddress> address = reachable(*url);
  if (!address) return;

  requireSameWhenReadAgain(versionedURL(*url, "messages"));
  require(HTTPAddress(versionedURL(*url, "messages")).place() == address->place(), "a path does not change the server");
  require(address->redirected(address->url()).has_value(), "a redirect to itself stays on the server");

  const std::optional<WebURL> connected = WebURL::parse(address->url());
  require(connected.has_value(), "what is connected to is an address");
  require(ProviderFactory::hostLikelyRequiresAPIKey(*url) || !ProviderFactory::hostLikelyRequiresAPIKey(*connected),
          "a host that is taken for this machine is connected to as such");
}

}  // namespace tq
