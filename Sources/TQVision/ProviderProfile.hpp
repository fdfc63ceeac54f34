#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "TQCore/RawValue.hpp"

namespace tq {

/// The shapes of vision service that the preferences offer. The raw value is the provider id.
enum class ProviderProfile { anthropic, openai, mock };

template <>
inline constexpr auto rawValues<ProviderProfile> = std::to_array<std::string_view>({"anthropic", "openai", "mock"});

/// The profile of that id; an unknown id reads as `anthropic`.
ProviderProfile providerProfile(std::string_view providerId);

/// The name that a user reads.
std::string_view displayName(ProviderProfile profile);

/// The model that a new configuration starts with.
std::string_view defaultModelId(ProviderProfile profile);

/// The page where the vendor hands out keys; absent when no key is needed.
std::optional<std::string_view> keyConsoleURL(ProviderProfile profile);

}  // namespace tq
