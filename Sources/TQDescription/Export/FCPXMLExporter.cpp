#include "TQDescription/Export/FCPXMLExporter.hpp"

#include <algorithm>

#include "TQCore/FileURL.hpp"
#include "TQDescription/Export/XMLText.hpp"

namespace tq {

namespace {

/// The formats and assets of a document, with their identifiers: "r1", "r2" and so on, formats first.
class Resources {
 public:
  explicit Resources(const std::vector<ExportItem>& items) {
    for (const ExportItem& item : items) {
      const std::string duration = Timecode::fcpxmlFrameDuration(item.frameRate());
      const auto known = std::ranges::find(frameDurations_, duration);
      formatOfItem_.push_back(static_cast<std::size_t>(known - frameDurations_.begin()));
      if (known == frameDurations_.end()) frameDurations_.push_back(duration);
    }
  }

  std::string sequenceFormat() const { return identifier(0); }
  std::string formatOf(std::size_t item) const { return identifier(formatOfItem_[item]); }
  std::string assetOf(std::size_t item) const { return identifier(frameDurations_.size() + item); }

  std::string formats() const {
    std::string text;
    for (std::size_t index = 0; index < frameDurations_.size(); ++index)
      text += "    <format id=\"" + identifier(index) + R"(" name="FFVideoFormat" frameDuration=")" +
              frameDurations_[index] + "\"/>\n";
    return text;
  }

 private:
  static std::string identifier(std::size_t index) { return "r" + std::to_string(index + 1); }

  std::vector<std::string> frameDurations_;
  std::vector<std::size_t> formatOfItem_;
};

std::string assets(const std::vector<ExportItem>& items, const Resources& resources) {
  std::string text;
  for (std::size_t index = 0; index < items.size(); ++index) {
    const ExportItem& item = items[index];
    text += "    <asset id=\"" + resources.assetOf(index) + "\" name=\"" + xmlEscaped(item.result->source.filename) +
            R"(" start="0s" duration=")" + FCPXMLExporter::rationalTime(item.durationSeconds(), item.frameRate()) +
            R"(" hasVideo="1" format=")" + resources.formatOf(index) + "\">\n" +
            R"(      <media-rep kind="original-media" src=")" + xmlEscaped(fileURL(item.mediaURL)) + "\"/>\n" +
            "    </asset>\n";
  }
  return text;
}

/// The clips one behind the other.
struct Spine {
  std::string text;
  double seconds = 0;
};

Spine spine(const std::vector<ExportItem>& items, const Resources& resources) {
  const double timelineRate = timelineFrameRate(items);
  Spine spine;
  for (std::size_t index = 0; index < items.size(); ++index) {
    const ExportItem& item = items[index];
    const auto time = [&](double seconds) { return FCPXMLExporter::rationalTime(seconds, item.frameRate()); };
    for (const ExportRange& range : item.ranges) {
      spine.text += "          <asset-clip ref=\"" + resources.assetOf(index) + "\" offset=\"" +
                    FCPXMLExporter::rationalTime(spine.seconds, timelineRate) + "\" name=\"" +
                    xmlEscaped(range.name.value_or(item.result->source.filename)) + "\" start=\"" +
                    time(range.startSeconds) + "\" duration=\"" + time(range.durationSeconds()) + "\" format=\"" +
                    resources.formatOf(index) + "\"/>\n";
      spine.seconds += range.durationSeconds();
    }
  }
  return spine;
}

}  // namespace

std::string FCPXMLExporter::exportItems(const std::vector<ExportItem>& items, std::string_view projectName) {
  const Resources resources(items);
  const Spine content = spine(items, resources);
  const std::string project = xmlEscaped(projectName);
  std::string text = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.10">
  <resources>
)";
  text += resources.formats() + assets(items, resources);
  text += "  </resources>\n  <library>\n";
  text += "    <event name=\"" + project + "\">\n";
  text += "      <project name=\"" + project + "\">\n";
  text += "        <sequence format=\"" + resources.sequenceFormat() + "\" duration=\"" +
          rationalTime(content.seconds, timelineFrameRate(items)) + "\">\n";
  text += "          <spine>\n" + content.text + "          </spine>\n";
  text += R"(        </sequence>
      </project>
    </event>
  </library>
</fcpxml>
)";
  return text;
}

FrameDuration FCPXMLExporter::frameDurationRational(double frameRate) {
  return Timecode::frameDuration(frameRate);
}

std::string FCPXMLExporter::rationalTime(double seconds, double frameRate) {
  const FrameDuration frame = frameDurationRational(frameRate);
  return std::to_string(Timecode::frames(seconds, frameRate) * frame.num) + "/" + std::to_string(frame.den) + "s";
}

}  // namespace tq
