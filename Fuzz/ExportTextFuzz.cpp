#include <algorithm>
#include <array>

#include "Fuzz/Property.hpp"
#include "TQDescription/Export/CSVMarkersExporter.hpp"
#include "TQDescription/Export/EDLExporter.hpp"
#include "TQDescription/Export/FCPXMLExporter.hpp"
#include "TQDescription/Export/XMLText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

using fuzz::require;

std::ptrdiff_t linesIn(std::string_view text) {
  return std::ranges::count(text, '\n');
}

/// What stands for itself once the entities of `escaped` are resolved; all else is a finding.
std::string unescaped(std::string_view escaped) {
  constexpr std::array<std::pair<std::string_view, char>, 5> entities{
      {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
  std::string text;
  while (!escaped.empty()) {
    const auto entity = std::ranges::find_if(entities, [&](const auto& one) { return escaped.starts_with(one.first); });
    if (entity != entities.end()) {
      text += entity->second;
      escaped.remove_prefix(entity->first.size());
      continue;
    }
    const char c = escaped.front();
    require(std::string_view("&<>\"'").find(c) == std::string_view::npos, "no character that means something is left");
    require(static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n' || c == '\r',
            "no control character is left");
    require(!escaped.starts_with("\uFFFE") && !escaped.starts_with("\uFFFF"), "no noncharacter is left");
    text += c;
    escaped.remove_prefix(1);
  }
  return text;
}

void checkXML(const std::string& text) {
  const std::string read = unescaped(xmlEscaped(text));
  require(isValidUTF8(read), "an XML text is UTF-8");
  require(unescaped(xmlEscaped(read)) == read, "what a document can hold stays as it is");
  require(text.empty() == read.empty(), "nothing comes of nothing, and of nothing else");
  const bool isHarmless = std::ranges::all_of(text, [](char c) { return c >= 0x20 && c < 0x7F; });
  if (isHarmless) require(read == text, "plain text is read as it was written");
}

/// The fields of the last line, read as RFC 4180 says.
std::vector<std::string> lastLineOf(std::string_view csv) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t index = 0; index < csv.size(); ++index) {
    const char c = csv[index];
    if (quoted && csv.substr(index).starts_with("\"\"")) {
      fields.back() += csv[index++];
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && c == ',') {
      fields.emplace_back();
    } else if (!quoted && c == '\n' && index + 1 < csv.size()) {
      fields.assign(1, {});
    } else if (quoted || c != '\n') {
      fields.back() += c;
    }
  }
  require(!quoted, "every quote is closed");
  return fields;
}

ExportItem itemNamed(const std::string& name) {
  DescriptionResult result;
  result.source.filename = name;
  return {.mediaURL = "/clips/a.mov", .result = result, .ranges = {{0, 1, name}}};
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::string text(textOf(input));
  checkXML(text);

  const std::string shown = validUTF8(text);
  require(lastLineOf(CSVMarkersExporter::exportItems({itemNamed(text)})) ==
              std::vector<std::string>{shown, "00:00:00:00", "00:00:01:00", shown},
          "markers are read as they were written");

  ExportItem item = itemNamed("a.mov");
  item.ranges.front().name = text;
  const std::string list = EDLExporter::exportItems({item}, text);
  require(isValidUTF8(list) && linesIn(list) == (text.empty() ? 4 : 5), "title and comment stay on their lines");
  require(std::ranges::find(list, '\r') == list.end(), "no other line break is left");

  const std::string project = FCPXMLExporter::exportItems({item}, text);
  item.ranges.front().name = "plain";
  const std::string plain = FCPXMLExporter::exportItems({item}, "plain");
  require(isValidUTF8(project), "a project is UTF-8");
  for (const char c : {'<', '>', '"', '\''})
    require(std::ranges::count(project, c) == std::ranges::count(plain, c), "a name brings no markup in");
}

}  // namespace tq
