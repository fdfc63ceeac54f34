#pragma once

#include <array>
#include <string_view>

#include "TQCore/RawValue.hpp"

namespace tq {

/// Which system prompt a run uses.
enum class PromptProfile { standard, unrestricted };

template <>
inline constexpr auto rawValues<PromptProfile> = std::to_array<std::string_view>({"standard", "unrestricted"});

/// The name that the preferences show.
std::string_view displayName(PromptProfile profile);

}  // namespace tq
