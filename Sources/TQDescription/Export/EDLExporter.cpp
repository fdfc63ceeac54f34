#include "TQDescription/Export/EDLExporter.hpp"

#include <algorithm>

#include "TQDescription/Export/Timecode.hpp"
#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

std::string onOneLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return line;
}

std::string span(double start, double end, double frameRate) {
  return Timecode::smpte(start, frameRate).formatted() + " " + Timecode::smpte(end, frameRate).formatted();
}

}  // namespace

std::string EDLExporter::exportItems(const std::vector<ExportItem>& items, std::string_view title) {
  std::string text = "TITLE: " + onOneLine(title) + "\nFCM: NON-DROP FRAME\n";
  const double recordRate = timelineFrameRate(items);
  double position = 0;  // seconds
  std::int64_t events = 0;
  for (const ExportItem& item : items) {
    for (const ExportRange& range : item.ranges) {
      const double next = position + range.durationSeconds();
      text += paddedText(++events, 3) + "  AX       V     C        " +
              span(range.startSeconds, range.endSeconds, item.frameRate()) + " " + span(position, next, recordRate) +
              "\n* FROM CLIP NAME: " + item.result->source.filename + "\n";
      if (range.name && !range.name->empty()) text += "* COMMENT: " + onOneLine(*range.name) + "\n";
      position = next;
    }
  }
  return validUTF8(text);
}

}  // namespace tq
