#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

// Text is UTF-8. A character is what a reader takes for one: an extended grapheme cluster (UAX 29). White space is the
// Unicode property White_Space, line breaks included. All functions accept any bytes: a malformed sequence counts as
// the U+FFFD that a reader would see for it, and only `validUTF8` replaces it.

bool isValidUTF8(std::string_view text);

/// `text` with every malformed sequence replaced by U+FFFD.
std::string validUTF8(std::string_view text);

/// True for ASCII in which each byte is a character: any but one with a carriage return, which may be half of CR LF.
bool isPlainASCII(std::string_view text);

std::size_t characterCount(std::string_view text);

/// Goes through a text character by character. Characters are views into the text, which must outlive the walk. Where a
/// boundary can be told from the two code points at it no iterator of the library is made, so most texts cost little.
class CharacterWalk {
 public:
  explicit CharacterWalk(std::string_view text);
  ~CharacterWalk();
  CharacterWalk(const CharacterWalk&) = delete;
  CharacterWalk& operator=(const CharacterWalk&) = delete;

  /// The next character; empty behind the last one.
  std::string_view next() {
    const std::size_t start = position_;
    if (start + 1 < text_.size() && isOneByte(text_[start]) && isOneByte(text_[start + 1]))
      ++position_;
    else
      position_ = nextBoundary();
    return text_.substr(start, position_ - start);
  }

 private:
  struct Breaks;

  /// ASCII that is a character of its own before any other ASCII, which a carriage return before a line feed is not.
  static bool isOneByte(char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\r'; }

  std::size_t nextBoundary();

  std::string_view text_;
  std::size_t position_ = 0;
  std::unique_ptr<Breaks> breaks_;  ///< made when first needed
};

/// All characters, as views into the text.
std::vector<std::string_view> characters(std::string_view text);

/// True for a character of white space: one that begins with such a code point, as CR LF does.
bool isWhiteSpace(std::string_view character);

/// Columns that a terminal needs for printable text: two for the wide code points of East Asian writing (UAX 11) and
/// for those shown as emoji, none for marks and formatting characters, one for any other. Terminals differ on
/// characters of several code points; this is what most of them take.
std::size_t columnWidth(std::string_view text);

/// True for a character that begins with a code point that is alphabetic or has a numeric value.
bool isLetterOrNumber(std::string_view character);

/// The first `count` characters, or the whole text when it has no more.
std::string_view characterPrefix(std::string_view text, std::size_t count);

/// Without white space and line breaks at both ends.
std::string_view trimmed(std::string_view text);

/// Full Unicode lower-casing, root locale.
std::string lowercased(std::string_view text);

/// An internationalised host name as it is looked up, by UTS #46: "xn--bcher-kva.example" for "bücher.example". Absent
/// when it can be none.
std::optional<std::string> asciiHostName(std::string_view name);

}  // namespace tq
