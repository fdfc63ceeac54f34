#include "TQVision/VisionAnswer.hpp"

#include <algorithm>

#include "TQCore/TQError.hpp"

namespace tq {

VisionAnswer::VisionAnswer(ByteView data) : root_(parseJSON(textOf(data))) {
  if (!root_.asObject()) throw TQError::providerDecodeFailure("response not JSON object");
}

std::string VisionAnswer::modelId(const std::string& ownModelId) const {
  const std::string* named = string(root_, "model");
  return named ? *named : ownModelId;
}

std::optional<std::int64_t> VisionAnswer::usage(std::string_view key) const {
  const JSONValue* counts = root_.find("usage");
  const JSONValue* count = counts ? counts->find(key) : nullptr;
  return count ? count->asInteger() : std::nullopt;
}

const std::string* VisionAnswer::string(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  return member ? member->asString() : nullptr;
}

const JSONValue::Array* VisionAnswer::objects(const JSONValue& object, std::string_view key) {
  const JSONValue* member = object.find(key);
  const JSONValue::Array* array = member ? member->asArray() : nullptr;
  const auto isObject = [](const JSONValue& element) { return element.asObject() != nullptr; };
  return array && std::all_of(array->begin(), array->end(), isObject) ? array : nullptr;
}

std::string VisionAnswer::joinedTexts(const JSONValue::Array& blocks, std::optional<std::string_view> type) {
  std::string joined;
  std::string_view separator = "";
  for (const JSONValue& block : blocks) {
    const std::string* blockType = string(block, "type");
    const std::string* text = string(block, "text");
    if (!text || (type && (!blockType || *blockType != *type))) continue;
    joined.append(separator).append(*text);
    separator = "\n";
  }
  return joined;
}

}  // namespace tq
