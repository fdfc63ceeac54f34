#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tq {

/// The parts in order, with `separator` between two.
std::string joined(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace tq
