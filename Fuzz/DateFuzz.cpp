#include "Fuzz/Property.hpp"
#include "TQPlatform/Text/DateText.hpp"

namespace tq {

void fuzz::check(ByteView input) {
  const std::string_view text = textOf(input);
  const std::optional<Date> date = parseISO8601(text);
  if (!date) return;
  const std::string written = iso8601(*date);
  require(parseISO8601(written) == date, "a date is the same once written and read");
  require(!text.ends_with('Z') || written == text, "a date in UTC is written as it was read");
}

}  // namespace tq
