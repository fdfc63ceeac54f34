#include <cmath>

#include "Fuzz/Property.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

void fuzz::check(ByteView input) {
  const std::string text(textOf(input));
  const std::optional<double> ratio = FFmpegBridge::parseRatio(text);
  if (text.find('/') == std::string::npos) require(ratio == parseDouble(text), "a number alone is read as a number");
  if (!ratio) return;
  require(std::isfinite(*ratio), "a ratio is finite");
  require(FFmpegBridge::parseRatio(shortestText(*ratio)) == ratio, "a ratio is the same once written and read");
  if (text.find('/') == std::string::npos)
    require(FFmpegBridge::parseRatio(text + "/1") == ratio, "a division by one says nothing");
}

}  // namespace tq
