#pragma once

#include <array>
#include <string_view>

#include "TQCore/RawValue.hpp"

namespace tq {

/// What the main window shows. The raw values are what the interface's state remembers, and what people read.
enum class AppMode { queue, library };

template <>
inline constexpr auto rawValues<AppMode> = std::to_array<std::string_view>({"Queue", "Library"});

}  // namespace tq
