#pragma once

#include <string>
#include <string_view>

namespace tq {

/// `text` as it stands inside an attribute or element of an XML 1.0 document. Malformed UTF-8 and the characters that
/// such a document cannot hold in any form (most control characters) become U+FFFD.
std::string xmlEscaped(std::string_view text);

}  // namespace tq
