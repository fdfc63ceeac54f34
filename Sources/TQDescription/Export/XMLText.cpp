#include "TQDescription/Export/XMLText.hpp"

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

constexpr std::string_view replacement = "\uFFFD";

/// The entity that stands for `c`; empty when it stands for itself.
std::string_view entityFor(char c) {
  switch (c) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&apos;";
    default: return {};
  }
}

/// XML 1.0, production Char: of the code points below U+0020 only tab, line feed and carriage return.
bool isForbiddenControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

/// U+FFFE and U+FFFF, which the same production leaves out.
bool startsWithNoncharacter(std::string_view text) {
  return text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
}

}  // namespace

std::string xmlEscaped(std::string_view text) {
  const std::string valid = validUTF8(text);
  std::string escaped;
  escaped.reserve(valid.size());
  for (std::size_t index = 0; index < valid.size(); ++index) {
    const char c = valid[index];
    if (const std::string_view entity = entityFor(c); !entity.empty()) {
      escaped += entity;
    } else if (isForbiddenControl(c)) {
      escaped += replacement;
    } else if (startsWithNoncharacter(std::string_view(valid).substr(index))) {
      escaped += replacement;
      index += 2;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace tq
