#pragma once

#include <string>
#include <string_view>

namespace tq::tools {

/// Text that is safe on a terminal: control characters, line breaks among them, and marks that turn the writing
/// direction are shown as escapes ("\n", "\x1b", "\u202e"), malformed UTF-8 as U+FFFD. File names and answers of
/// servers are not to be trusted.
std::string printable(std::string_view text);

/// As much of printable `text` as fits into that many columns, with "…" where something was cut. A code point
/// beyond ASCII counts as two columns, since some are that wide.
std::string fitted(std::string_view text, std::size_t columns);

/// "about 40 s", "about 3 min", "about 2 h 10 min".
std::string roughDuration(double seconds);

}  // namespace tq::tools
