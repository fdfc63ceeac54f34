#include "TQDescription/Export/CSVMarkersExporter.hpp"

#include "TQDescription/Export/Timecode.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

std::string field(std::string_view text) {
  if (text.find_first_of(",\"\n\r") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += c;
    quoted += c;
  }
  return quoted + "\"";
}

}  // namespace

std::string CSVMarkersExporter::exportItems(const std::vector<ExportItem>& items) {
  std::string text = "file,tc_in,tc_out,name\n";
  for (const ExportItem& item : items) {
    const auto timecode = [&](double seconds) { return Timecode::smpte(seconds, item.frameRate()).formatted(); };
    for (const ExportRange& range : item.ranges)
      text += field(item.result->source.filename) + "," + timecode(range.startSeconds) + "," +
              timecode(range.endSeconds) + "," + field(range.name.value_or("")) + "\n";
  }
  return validUTF8(text);
}

}  // namespace tq
