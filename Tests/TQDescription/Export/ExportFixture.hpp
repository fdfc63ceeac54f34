#pragma once

#include <string>
#include <vector>

#include "TQDescription/Export/ExportItem.hpp"

namespace tq::test {

/// A clip "/clips/<filename>" of a minute, with these ranges.
inline ExportItem exportItem(const std::string& filename, std::vector<ExportRange> ranges, double frameRate = 25,
                             double durationSeconds = 60) {
  DescriptionResult result;
  result.source.filename = filename;
  result.source.durationSeconds = durationSeconds;
  result.source.frameRate = frameRate;
  return {.mediaURL = "/clips/" + filename, .result = result, .ranges = std::move(ranges)};
}

/// Valid UTF-8 without line breaks and tabs that a careless writer of text files stumbles over.
inline std::vector<std::string> awkwardTexts() {
  return {"",
          " ",
          R"(<a href="x">Tom & 'Jerry'</a>)",
          "&amp; &lt; &#10; &bogus;",
          "]]> --> <!-- <![CDATA[ <?xml ?>",
          R"(say "hi", ok)",
          R"("")",
          ",,,",
          "=1+1",
          "+49",
          "-dash",
          "@SUM(A1)",
          "50% %s %n $HOME `ls` \\ \\n",
          "name;with|pipes",
          "\U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1F5\U0001F1F9 \u2764\uFE0F",
          "\u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627 \u202Eevil\u202C",
          "e\u0301 \uFEFF \u2028 \u2029 \u0085",
          "\U0001FFFE \U0010FFFF \uFFFD",
          std::string(100'000, 'x'),
          std::string(50'000, '&')};
}

/// Bytes that are no UTF-8: a lone continuation, an overlong slash, a surrogate, a lead byte too many, a cut sequence.
inline std::vector<std::string> malformedTexts() {
  return {"\x80", "a\xC0\xAF.mov", "\xED\xA0\x80", "\xF8\x88\x80\x80\x80", "caf\xC3", "\xFF\xFE", "\xE2\x82,\"b"};
}

/// Every character that XML 1.0 excludes and UTF-8 can spell.
inline std::vector<std::string> charactersOutsideXML() {
  std::vector<std::string> characters{"\uFFFE", "\uFFFF"};
  for (char c = 0; c < 0x20; ++c)
    if (c != '\t' && c != '\n' && c != '\r') characters.emplace_back(1, c);
  return characters;
}

}  // namespace tq::test
