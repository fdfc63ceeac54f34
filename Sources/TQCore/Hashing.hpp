#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace tq {

/// Adds one hash to another, so that the order of the parts counts (the finaliser of MurmurHash3 spreads the bits).
inline void combineHash(std::size_t& seed, std::size_t part) {
  std::uint64_t mixed = seed + 0x9e3779b97f4a7c15 + part;
  mixed = (mixed ^ (mixed >> 33)) * 0xff51afd7ed558ccd;
  mixed = (mixed ^ (mixed >> 33)) * 0xc4ceb9fe1a85ec53;
  seed = static_cast<std::size_t>(mixed ^ (mixed >> 33));
}

}  // namespace tq
