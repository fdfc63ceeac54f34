#pragma once

#include <cstdint>
#include <string>

namespace tq {

/// A file's size as people read it: "412 KB", "1.2 MB", "4.29 GB". Units are steps of 1000 and start at KB; KB has no
/// decimals, MB up to one and GB up to two, without trailing zeros. No bytes at all are "Zero KB".
std::string fileSizeText(std::int64_t bytes);

}  // namespace tq
