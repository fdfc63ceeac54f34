#include "TQCore/Models/PromptProfile.hpp"

namespace tq {

std::string_view displayName(PromptProfile profile) {
  constexpr auto names = std::to_array<std::string_view>({"Standard", "Unrestricted (cataloging)"});
  static_assert(names.size() == rawValues<PromptProfile>.size());
  return names.at(static_cast<std::size_t>(profile));
}

}  // namespace tq
