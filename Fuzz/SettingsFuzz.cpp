#include "Fuzz/Property.hpp"
#include "TQPersistence/Settings.hpp"

namespace tq {
namespace {

std::optional<AppSettings> parsed(std::string_view text) {
  try {
    return decode<AppSettings>(parseJSON(text));
  } catch (const JSONError&) {
  } catch (const DecodingError&) {
  }
  return std::nullopt;
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<AppSettings> settings = parsed(textOf(input));
  if (!settings) return;
  const auto again = parsed(writeJSON(encode(*settings), JSONLayout::pretty));
  require(again == settings, "settings are the same once written and read");
  require(hashOf(*again) == hashOf(*settings), "equal settings have equal hashes");
}

}  // namespace tq
