#include "TQPlatform/Text/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <unicode/ubrk.h>
#include <unicode/ucasemap.h>
#include <unicode/uchar.h>
#include <unicode/uidna.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

namespace tq {

namespace {

/// ICU fails only when its data or the memory is missing: nothing that a caller could mend.
void check(UErrorCode code) {
  if (U_FAILURE(code)) throw std::runtime_error(std::string("Unicode: ") + u_errorName(code));
}

bool isASCII(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

const std::uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::int32_t signedSize(std::string_view text) {
  return static_cast<std::int32_t>(text.size());
}

/// The code point at `position`, which moves behind it; negative for a malformed sequence.
UChar32 nextCodePoint(std::string_view text, std::int32_t& position) {
  UChar32 codePoint = 0;
  U8_NEXT(bytesOf(text), position, signedSize(text), codePoint);
  return codePoint;
}

UChar32 previousCodePoint(std::string_view text, std::int32_t& position) {
  UChar32 codePoint = 0;
  U8_PREV(bytesOf(text), 0, position, codePoint);
  return codePoint;
}

struct BreakIteratorCloser {
  void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};
using BreakIterator = std::unique_ptr<UBreakIterator, BreakIteratorCloser>;

/// Making an iterator reads its rules; a copy of one that is made does not.
BreakIterator characterBreaks() {
  static const BreakIterator prototype = [] {
    UErrorCode code = U_ZERO_ERROR;
    BreakIterator made(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &code));
    check(code);
    return made;
  }();
  UErrorCode code = U_ZERO_ERROR;
  BreakIterator copy(ubrk_clone(prototype.get(), &code));
  check(code);
  return copy;
}

using Text = std::unique_ptr<UText, decltype(&utext_close)>;

Text opened(std::string_view text) {
  UErrorCode code = U_ZERO_ERROR;
  Text source(utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &code), &utext_close);
  check(code);
  return source;
}

/// True for a code point that joins neither what stands before nor what stands behind it, unless that does: between two
/// of them there is always a boundary (UAX 29, GB999). A malformed sequence is one, as U+FFFD is.
bool joinsNothing(UChar32 codePoint) {
  return codePoint < 0 || u_getIntPropertyValue(codePoint, UCHAR_GRAPHEME_CLUSTER_BREAK) == U_GCB_OTHER;
}

/// As `columnWidth` says; a negative value stands for the replacement of a malformed sequence.
std::size_t columnsOf(UChar32 codePoint) {
  if (codePoint < 0) return 1;
  const auto category = u_charType(codePoint);
  if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR ||
      category == U_CONTROL_CHAR)
    return 0;
  const int width = u_getIntPropertyValue(codePoint, UCHAR_EAST_ASIAN_WIDTH);
  const bool isWide = width == U_EA_WIDE || width == U_EA_FULLWIDTH;
  return isWide || u_hasBinaryProperty(codePoint, UCHAR_EMOJI_PRESENTATION) ? 2 : 1;
}

}  // namespace

bool isValidUTF8(std::string_view text) {
  for (std::int32_t position = 0; position < signedSize(text);)
    if (nextCodePoint(text, position) < 0) return false;
  return true;
}

bool isPlainASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return isASCII(c) && c != '\r'; });
}

std::string validUTF8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  for (std::int32_t position = 0; position < signedSize(text);) {
    const std::int32_t start = position;
    if (nextCodePoint(text, position) < 0)
      valid += "\uFFFD";
    else
      valid += text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(position - start));
  }
  return valid;
}

struct CharacterWalk::Breaks {
  explicit Breaks(std::string_view text) : source(opened(text)), iterator(characterBreaks()) {
    UErrorCode code = U_ZERO_ERROR;
    ubrk_setUText(iterator.get(), source.get(), &code);
    check(code);
  }

  Text source;
  BreakIterator iterator;
};

CharacterWalk::CharacterWalk(std::string_view text) : text_(text) {}

CharacterWalk::~CharacterWalk() = default;

std::size_t CharacterWalk::nextBoundary() {
  std::int32_t next = static_cast<std::int32_t>(position_);
  if (next == signedSize(text_)) return position_;
  const bool firstJoinsNothing = joinsNothing(nextCodePoint(text_, next));
  const std::int32_t boundary = next;
  if (boundary == signedSize(text_)) return text_.size();
  if (firstJoinsNothing && joinsNothing(nextCodePoint(text_, next))) return static_cast<std::size_t>(boundary);

  if (!breaks_) breaks_ = std::make_unique<Breaks>(text_);
  return static_cast<std::size_t>(ubrk_following(breaks_->iterator.get(), static_cast<std::int32_t>(position_)));
}

std::vector<std::string_view> characters(std::string_view text) {
  std::vector<std::string_view> all;
  CharacterWalk walk(text);
  for (std::string_view character = walk.next(); !character.empty(); character = walk.next())
    all.push_back(character);
  return all;
}

bool isWhiteSpace(std::string_view character) {
  std::int32_t position = 0;
  return !character.empty() && u_isUWhiteSpace(nextCodePoint(character, position));
}

bool isLetterOrNumber(std::string_view character) {
  std::int32_t position = 0;
  if (character.empty()) return false;
  const UChar32 codePoint = nextCodePoint(character, position);
  return u_isUAlphabetic(codePoint) || u_getIntPropertyValue(codePoint, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

std::size_t characterCount(std::string_view text) {
  if (isPlainASCII(text)) return text.size();
  CharacterWalk walk(text);
  std::size_t count = 0;
  while (!walk.next().empty())
    ++count;
  return count;
}

std::size_t columnWidth(std::string_view text) {
  if (isPlainASCII(text)) return text.size();
  std::size_t columns = 0;
  for (std::int32_t position = 0; position < signedSize(text);)
    columns += columnsOf(nextCodePoint(text, position));
  return columns;
}

std::string_view characterPrefix(std::string_view text, std::size_t count) {
  if (count >= text.size()) return text;
  // The byte behind the prefix counts too: it may belong to the last character.
  if (isPlainASCII(text.substr(0, count + 1))) return text.substr(0, count);
  CharacterWalk walk(text);
  std::size_t size = 0;
  while (count-- > 0)
    size += walk.next().size();
  return text.substr(0, size);
}

std::string_view trimmed(std::string_view text) {
  std::int32_t start = 0;
  for (std::int32_t next = 0; next < signedSize(text); start = next)
    if (!u_isUWhiteSpace(nextCodePoint(text, next))) break;
  std::int32_t end = signedSize(text);
  for (std::int32_t next = end; next > start; end = next)
    if (!u_isUWhiteSpace(previousCodePoint(text, next))) break;
  return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

std::string lowercased(std::string_view text) {
  std::string lower(text);
  if (std::all_of(text.begin(), text.end(), isASCII)) {
    for (char& c : lower)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
  }
  UErrorCode code = U_ZERO_ERROR;
  const std::unique_ptr<UCaseMap, decltype(&ucasemap_close)> map(ucasemap_open("", 0, &code), &ucasemap_close);
  check(code);
  // Most texts keep their length; the second round serves those that grow.
  for (int round = 0; round < 2; ++round) {
    code = U_ZERO_ERROR;
    const std::int32_t size =
        ucasemap_utf8ToLower(map.get(), lower.data(), signedSize(lower), text.data(), signedSize(text), &code);
    lower.resize(static_cast<std::size_t>(size));
    if (code != U_BUFFER_OVERFLOW_ERROR) break;
  }
  check(code);
  return lower;
}

std::optional<std::string> asciiHostName(std::string_view name) {
  constexpr std::uint32_t options = UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ;
  UErrorCode code = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, decltype(&uidna_close)> rules(uidna_openUTS46(options, &code), &uidna_close);
  check(code);
  std::array<char, 256> ascii;  // a host name has at most 253 bytes (RFC 1035)
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const std::int32_t size = uidna_nameToASCII_UTF8(rules.get(), name.data(), signedSize(name), ascii.data(),
                                                   static_cast<std::int32_t>(ascii.size()), &info, &code);
  if (code == U_BUFFER_OVERFLOW_ERROR || info.errors != 0 || size == 0) return std::nullopt;
  check(code);
  return std::string(ascii.data(), static_cast<std::size_t>(size));
}

}  // namespace tq
