#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

// Text is UTF-8. A character is what a reader takes for one: an extended grapheme cluster (UAX 29). White space is the
// Unicode property White_Space, line breaks included. All functions accept any bytes: a malformed sequence counts as
// the U+FFFD that a reader would see for it, and only `validUTF8` replaces it.

bool isValidUTF8(std::string_view text);

/// `text` with every malformed sequence replaced by U+FFFD.
std::string validUTF8(std::string_view text);

std::size_t characterCount(std::string_view text);

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
