#include "Fuzz/Property.hpp"
#include "TQPlatform/JSON/JSONReader.hpp"

namespace tq {
namespace {

std::optional<JSONValue> patientlyRead(std::string_view text) {
  try {
    return readJSONPatiently(text);
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<JSONValue> patient = patientlyRead(textOf(input));
  if (const std::optional<JSONValue> quick = readJSONQuickly(textOf(input)))
    require(quick == patient, "what the quick reader reads the patient one reads as well, and the same");
  if (!patient) return;
  const JSONValue& value = *patient;
  for (const JSONLayout layout : {JSONLayout::compact, JSONLayout::pretty}) {
    const std::string text = writeJSON(value, layout);
    const JSONValue again = parseJSON(text);
    require(again == value, "a value is the same once written and read");
    require(writeJSON(again, layout) == text, "a value is written the same every time");
  }
}

}  // namespace tq
