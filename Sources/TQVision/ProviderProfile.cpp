#include "TQVision/ProviderProfile.hpp"

#include "TQVision/VisionDefaults.hpp"

namespace tq {
namespace {

struct Facts {
  std::string_view displayName;
  std::string_view defaultModelId;
  std::optional<std::string_view> keyConsoleURL;
};

/// In case order.
constexpr std::array facts{
    Facts{"Anthropic-compatible", AnthropicDefaults::defaultModel, "https://console.anthropic.com/settings/keys"},
    Facts{"OpenAI-compatible", OpenAIDefaults::defaultModel, "https://platform.openai.com/api-keys"},
    Facts{"Mock (no API call)", MockDefaults::defaultModel, std::nullopt},
};
static_assert(facts.size() == rawValues<ProviderProfile>.size());

const Facts& factsOf(ProviderProfile profile) {
  return facts.at(static_cast<std::size_t>(profile));
}

}  // namespace

ProviderProfile providerProfile(std::string_view providerId) {
  return fromRawValue<ProviderProfile>(providerId).value_or(ProviderProfile::anthropic);
}

std::string_view displayName(ProviderProfile profile) {
  return factsOf(profile).displayName;
}

std::string_view defaultModelId(ProviderProfile profile) {
  return factsOf(profile).defaultModelId;
}

std::optional<std::string_view> keyConsoleURL(ProviderProfile profile) {
  return factsOf(profile).keyConsoleURL;
}

}  // namespace tq
