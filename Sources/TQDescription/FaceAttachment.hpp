#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

// Both take detections by frame index. Frames and shots correspond by position; an index without a shot is left out,
// and nothing else in the record changes.

/// Sets `faces` of each named shot, also to an empty list: the frame was looked at and shows nobody.
DescriptionResult attachFaces(DescriptionResult to, const std::map<std::int64_t, std::vector<FaceBox>>& faces);

/// Sets `onScreenText` of each named shot; an empty list leaves the shot as it was.
DescriptionResult attachOnScreenText(DescriptionResult to, const std::map<std::int64_t, std::vector<std::string>>& ocr);

}  // namespace tq
